// SPDX-License-Identifier: Apache-2.0
#ifndef FVIEWCTRL_H
#define FVIEWCTRL_H
#include "fexpr.h"

class QWidget;

/// What the model may ask of the views. The base answers for a program without a display.
class FViewCtrl
{
public:
    virtual ~FViewCtrl() = default;
    static FViewCtrl *instance();
    static void setInstance(FViewCtrl *control);

    virtual bool hasGui() const { return false; }
    virtual bool hasSmallScreen() const { return false; }
    /// A file chosen by the user; empty if there is none or no display. \p directory is where the
    /// choice starts.
    virtual QString getOpenFileName(const QString & /*title*/, std::string * /*directory*/,
                                    const QString & /*filter*/)
    {
        return QString();
    }
    virtual void prepareModalDialog(QWidget *) {}
    virtual void finalizeModalDialog() {}
    virtual void highlight(const std::vector<FExpr<FObject, true>> &) {}
    /// Shows the objects in the object editor.
    virtual void openObjectEditor(const std::vector<FExpr<FObject, true>> &) {}
    /// An object editor of its own for these objects, whose owner is the caller; null without one.
    virtual QWidget *makeObjectEditor(const std::vector<FExpr<FObject, true>> &) { return nullptr; }
};

/// The tree of objects.
class FObjectTree
{
public:
    static FObjectTree *instance();
    void highlight(const std::vector<FExpr<FObject, true>> &objects)
    {
        FViewCtrl::instance()->highlight(objects);
    }
};
#endif

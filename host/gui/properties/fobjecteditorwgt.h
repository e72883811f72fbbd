// SPDX-License-Identifier: Apache-2.0
#ifndef FOBJECTEDITORWGT_H
#define FOBJECTEDITORWGT_H
#include "fproperty.h"

#include <QScrollArea>

class FPropertyEditor;
class QLabel;
class QLineEdit;
class QVBoxLayout;

/// The object editor: the attributes of one or more objects, made from the registry.
///
/// The one of the window follows the selection; others show the objects that they were given.
class FObjectEditorWgt : public QScrollArea
{
    Q_OBJECT
public:
    explicit FObjectEditorWgt(QWidget *parent = nullptr);
    ~FObjectEditorWgt() override;
    /// The editor of the window; one that nobody sees if there is none.
    static FObjectEditorWgt *instance();
    /// Makes the editors of attributes anew where they differ, of this one or of all; what is being
    /// typed stays.
    void reinitialize();
    static void reinitializeAll();

    /// Shows these objects from now on; without a call the selection.
    void setObjects(const std::vector<FExpr<FObject, true>> &objects);
    const FProperty::Objects &objects() const { return mObjects; }
    const std::vector<FPropertyEditor *> &editors() const { return mEditors; }

protected:
    void showEvent(QShowEvent *event) override;

private:
    void followSelection();
    void followSoon();
    void makeHead();
    void showHead();
    void clearBody();
    FProperty::Objects mObjects;
    bool mFollows = true, mIsOld = true, mPending = false;
    QWidget *mContent;
    QLineEdit *mName;
    QLabel *mTitle, *mAbout, *mEmpty;
    QWidget *mBody = nullptr;
    std::vector<FPropertyEditor *> mEditors;
};
#endif

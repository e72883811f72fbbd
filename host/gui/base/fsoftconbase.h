// SPDX-License-Identifier: Apache-2.0
#ifndef FSOFTCONBASE_H
#define FSOFTCONBASE_H
#include "fexterncomputation.h"
#include "fobjectmanager.h"
#include "fwidget.h"

#include <QTabWidget>

/// A tab widget that takes another tab bar.
class FTabWidget : public QTabWidget
{
    Q_OBJECT
public:
    using QTabWidget::QTabWidget;
    using QTabWidget::setTabBar; // before the first tab
};

/// A workbench of one computation: a page with tabs. The program calls the operations below; see
/// each for the moment.
class FSoftConBase : public FWidget
{
    Q_OBJECT
    F_CLASS(FSoftConBase, FWidget)
public:
    explicit FSoftConBase(const std::string &name = std::string(), QWidget *parent = nullptr);
    void constructFObject() override;
    /// Null for a prototype, without a display, and when it has gone.
    FTabWidget *tabWidget() const { return static_cast<FTabWidget *>(widget()); }

    virtual bool containsComputation(const FExpr<FExternComputation> &) const { return false; }
    /// Locks or frees what is shown.
    virtual void disableGui(bool) {}
    /// A run of the computation with the id \p dbId began (false) or ended (true).
    virtual void disableGui(bool, int) {}
    /// The setting of how long a path may be shown is another one.
    virtual void updateInputFileItems() {}
    /// The page is about to be seen: once in a turn of the event loop.
    virtual void paintRequest() {}
    /// The page has another size.
    virtual void resizeRequest() {}
    /// The settings button.
    virtual void settings() {}
    virtual void initScene() {}
    static void initCmds() {}

    /// All workbenches of the project.
    static std::vector<FExpr<FSoftConBase, true>> all() { return getManageds<FSoftConBase>(); }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    /// Watches \p page too, of which a repaint is no repaint of the tab widget.
    void watch(QWidget *page);

private:
    void requestPaint();
    bool mPaintRequested = false;
};
#endif

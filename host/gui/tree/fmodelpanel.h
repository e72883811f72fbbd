// SPDX-License-Identifier: Apache-2.0
#ifndef FMODELPANEL_H
#define FMODELPANEL_H
#include "fexpr.h"

#include <QTreeView>

class FModelTree;
class QLineEdit;
class QSortFilterProxyModel;

/// The panel "Model": the tree of objects with a filter. Selection goes both ways; what can be done
/// with an object stands in its context menu.
class FModelPanel : public QWidget
{
    Q_OBJECT
public:
    explicit FModelPanel(QWidget *parent = nullptr);
    QTreeView *view() const { return mView; }
    /// Shows and marks the objects, and opens what hides them.
    void highlight(const std::vector<FExpr<FObject, true>> &objects);
    /// The selected objects, in their order in the tree.
    std::vector<std::shared_ptr<FObject>> selected() const;
    void editName();
    /// Without a project nothing is shown: the baseline alone is no model.
    void setProjectOpen(bool open);
    void focusFilter();

private:
    void followSelection();
    void tellSelection();
    void openAt(const QModelIndex &index);
    void showMenu(const QPoint &place);
    QModelIndex shownIndexOf(const FObject *object) const;

    FModelTree *mTree;
    QSortFilterProxyModel *mFiltered;
    QTreeView *mView;
    QLineEdit *mFilter;
    bool mTelling = false;
};
#endif

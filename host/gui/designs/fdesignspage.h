// SPDX-License-Identifier: Apache-2.0
#ifndef FDESIGNSPAGE_H
#define FDESIGNSPAGE_H
#include "fexterncomputation.h"

#include <QTableView>

class FDesignsModel;
class FDesignsTable;
class QLabel;
class QLineEdit;
class QSortFilterProxyModel;
class QToolButton;

/// The page "Designs": one row a design against variables, states of computations and the
/// parameters that depend on results.
class FDesignsPage : public QWidget
{
    Q_OBJECT
public:
    explicit FDesignsPage(QWidget *parent = nullptr);
    FDesignsModel *model() const { return mModel; }
    QTableView *table() const;
    /// The designs of the selected rows, in the order shown.
    std::vector<std::shared_ptr<FDesign>> selected() const;
    /// Asks for a file and takes designs from it; see FDesignTable.
    void importTable();
    /// All of the file or nothing; false, with the reason above the table, if it was nothing.
    bool importFrom(const QString &path);
    /// Asks for a file and writes all designs and columns to it, with whole numbers.
    void exportTable();
    /// Commas between the cells of a file .csv, else tabs. False, with the reason above the table.
    bool exportTo(const QString &path);

Q_SIGNALS:
    /// A result value was double clicked: the file, the line (from 1) and the columns (from 0,
    /// length) where the number was read.
    void placeRequested(const QString &file, int line, int column, int length);
    void outputRequested(const std::shared_ptr<FExternComputation> &computation,
                         const std::shared_ptr<FDesign> &design);

private:
    void makeTools(class QHBoxLayout *layout);
    void newDesign();
    void duplicate();
    void remove();
    void copy();
    void paste();
    void clearCells();
    void showMenu(const QPoint &place);
    void openAt(const QModelIndex &index);
    void updateTools();
    /// What went wrong, in a line above the table, until the next step.
    void tell(const QString &reason);
    /// A number with all its digits, or the text that is shown.
    static QString wholeText(const QModelIndex &index);

    FDesignsModel *mModel;
    QSortFilterProxyModel *mShown;
    FDesignsTable *mTable;
    QLabel *mCounts, *mReason;
    QLineEdit *mFilter;
    QToolButton *mDuplicate = nullptr, *mDelete = nullptr, *mRunSelected = nullptr,
                *mRunFailed = nullptr;
};
#endif

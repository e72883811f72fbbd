// SPDX-License-Identifier: Apache-2.0
#ifndef FDESIGNSTABLE_H
#define FDESIGNSTABLE_H
#include <QStyledItemDelegate>
#include <QTableView>

/// Lets a value that is refused stay in its field, with the reason beneath.
class FDesignsDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model,
                      const QModelIndex &index) const override;

Q_SIGNALS:
    void refused(const QString &reason) const;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool accepts(QWidget *editor) const;
};

/// The table of designs: keys of a spreadsheet.
class FDesignsTable : public QTableView
{
    Q_OBJECT
public:
    explicit FDesignsTable(QWidget *parent);

Q_SIGNALS:
    void copyRequested();
    void pasteRequested();
    void clearRequested();
    void duplicateRequested();

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
};
#endif

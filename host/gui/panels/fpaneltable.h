// SPDX-License-Identifier: Apache-2.0
#ifndef FPANELTABLE_H
#define FPANELTABLE_H
#include <QTableView>

/// A table of whole rows in the looks of the panels, which says what belongs there while it is
/// empty. Tab leads out of it.
class FPanelTable : public QTableView
{
    Q_OBJECT
public:
    FPanelTable(QWidget *parent, QString emptyText);
    void setEmptyText(const QString &text);

Q_SIGNALS:
    /// Enter on a row, or a double click.
    void opened(const QModelIndex &index);
    void copyRequested();

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool event(QEvent *event) override;

private:
    QString mEmptyText;
};
#endif

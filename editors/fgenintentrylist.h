// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTENTRYLIST_H
#define FGENINTENTRYLIST_H
#include <QTimer>
#include <QTreeWidget>

class FGenIntCommandFileEditor;

/// The entries beside a template: their values, and how often the templates use them. A click walks
/// through the places in this one.
class FGenIntEntryList : public QTreeWidget
{
    Q_OBJECT
public:
    explicit FGenIntEntryList(FGenIntCommandFileEditor *editor);
    /// Soon, once for many changes.
    void refreshSoon();

protected:
    void showEvent(QShowEvent *event) override;

private:
    void refresh();
    void walk(QTreeWidgetItem *item);
    FGenIntCommandFileEditor *mEditor;
    QTimer mSoon;
};
#endif

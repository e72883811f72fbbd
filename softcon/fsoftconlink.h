// SPDX-License-Identifier: Apache-2.0
#ifndef FSOFTCONLINK_H
#define FSOFTCONLINK_H
#include "fsoftwareconnector.h"

#include <QDialog>

class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

/// Lists what all other connectors leave, to be taken as an input file here.
class FSoftConConnectConnectorDialog : public QDialog
{
    Q_OBJECT
public:
    /// \p connector is the one that takes; null lists the files of all.
    FSoftConConnectConnectorDialog(QWidget *parent,
                                   const std::shared_ptr<FSoftwareConnector> &connector);
    /// Expressions for the names of the chosen files, in the order of their choice.
    std::vector<std::string> getChosenConnectionString() const;

public Q_SLOTS:
    void currentItemChanged(QTreeWidgetItem *current, QTreeWidgetItem *previous);

private:
    void init();
    void addRows(QTreeWidgetItem *top, const FSoftwareConnector &connector);
    std::shared_ptr<FSoftwareConnector> mConnector;
    QTreeWidget *mTree = nullptr;
    QPushButton *mAddButton = nullptr;
};
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FLOGPANEL_H
#define FLOGPANEL_H
#include "flogmsg.h"

#include <QAbstractTableModel>
#include <QWidget>
#include <deque>

class QPlainTextEdit;
class FPanelTable;

/// The message log as a table: time, level, source, message. Takes what is new when it is seen.
class FLogModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { Time, Level, Source, Text, kColumns };
    using QAbstractTableModel::QAbstractTableModel;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex & = {}) const override { return kColumns; }
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    const FLogMsg::Message &at(int row) const { return mMessages[size_t(row)]; }
    /// Reads the log on from where it was read last.
    void follow();

private:
    std::deque<FLogMsg::Message> mMessages;
    size_t mNext = 0;
};

/// The panel "Messages". A click selects the object that a message is about.
class FLogPanel : public QWidget
{
    Q_OBJECT
public:
    explicit FLogPanel(QWidget *parent = nullptr);
    /// Warnings and errors that came while the panel was not seen.
    int unseen() const { return mUnseen; }

Q_SIGNALS:
    void unseenChanged(int count);

protected:
    void showEvent(QShowEvent *event) override;

private:
    void follow();
    void showDetails();
    FLogModel *mModel;
    FPanelTable *mTable;
    QPlainTextEdit *mDetails;
    size_t mCounted = 0;
    int mUnseen = 0;
};
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FPREVIEWDIALOG_H
#define FPREVIEWDIALOG_H
#include "fexpr.h"

#include <QDialog>
#include <map>

class FDesign;
class FEditor;
class FGenIntComputation;
class QComboBox;
class QListWidget;

/// The input files of a computation as they would be written: template and written text side by
/// side, what differs marked, for any design. Follows the model while it is open; nothing is
/// written.
class FPreviewDialog : public QDialog
{
    Q_OBJECT
public:
    static void show(const std::shared_ptr<FGenIntComputation> &computation, QWidget *parent);

private:
    FPreviewDialog(const std::shared_ptr<FGenIntComputation> &computation, QWidget *parent);
    void readAgain();
    void listDesigns();
    void showFile();
    void mark();
    void showFirstChange();

    std::weak_ptr<FGenIntComputation> mComputation;
    std::map<QString, std::pair<QString, QString>> mTexts; // template and written, by file
    QComboBox *mDesign;
    QListWidget *mFiles;
    FEditor *mTemplate, *mWritten;
    QString mShown;
};
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FDIALOG_H
#define FDIALOG_H
#include <QDialog>
#include <string>

class QVBoxLayout;

/// A modal dialog of the program around one widget, with a Close button.
class FDialog : public QDialog
{
    Q_OBJECT
public:
    /// Modal, resizable, with a close button; further flags change nothing.
    FDialog(const std::string &title, const QIcon &icon, bool modal = true, bool resizable = true,
            bool closeButton = true, bool = false, bool = true, bool = false);
    /// The widget goes above the buttons; the dialog owns it.
    void setContent(QWidget *content);

private:
    QVBoxLayout *mLayout;
};
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTCOMMANDFILEBUTTONS_H
#define FGENINTCOMMANDFILEBUTTONS_H
#include "ftoolbutton.h"

#include <QLineEdit>

class FGenIntCommandFileEdit;

/// Renames an entry in place.
class FGenIntCommandFileLineEdit : public QLineEdit
{
    Q_OBJECT
public:
    explicit FGenIntCommandFileLineEdit(FGenIntCommandFileEdit *edit);

protected:
    void focusOutEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    FGenIntCommandFileEdit *mEdit;
};

/// The button over a tag: shows it, and opens its menu.
class FGenIntCommandFileEditEntryButton : public FToolButton
{
    Q_OBJECT
public:
    using FToolButton::FToolButton;
    void setEntryName(const QString &name);
    const QString &entryName() const { return mEntryName; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString mEntryName;
};
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FPROPERTYEDITOR_H
#define FPROPERTYEDITOR_H
#include "fproperty.h"

#include <QWidget>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;

/// One property with its title above and, beneath, what it is now or why it was refused.
///
/// Enter, or leaving the field, commits; Escape puts back. What is refused stays in the field, and
/// what is being typed outlives a change of the model.
class FPropertyEditor : public QWidget
{
    Q_OBJECT
public:
    FPropertyEditor(const FProperty &property, QWidget *parent);
    const FProperty &property() const { return mProperty; }
    /// Shows what the model holds, unless something is being typed.
    void refresh();
    /// Commits what was typed; false if it was refused.
    bool commit();
    bool isTyped() const { return mTyped; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QWidget *makeField();
    QWidget *makeLine();
    QWidget *makeChoice();
    void setFieldText(const QString &text, bool isSame);
    QString fieldText() const;
    void showReason(const QString &reason);
    void browse();
    FProperty mProperty;
    QLineEdit *mLine = nullptr;
    QComboBox *mBox = nullptr;
    QCheckBox *mTick = nullptr;
    QLabel *mNote;
    bool mTyped = false, mCommitting = false;
};
#endif

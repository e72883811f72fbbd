// SPDX-License-Identifier: Apache-2.0
#include "fpropertyeditor.h"

#include "ficons.h"
#include "fobjectmanager.h"
#include "fscriptcompleter.h"
#include "ftheme.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

FPropertyEditor::FPropertyEditor(const FProperty &property, QWidget *parent)
    : QWidget(parent)
    , mProperty(property)
    , mNote(new QLabel(this))
{
    setObjectName("attribute_" + property.id);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    QWidget *field = makeField();
    field->setObjectName("value_" + property.id);
    field->setAccessibleName(property.title);
    field->setAccessibleDescription(property.toolTip);
    field->setToolTip(property.toolTip);
    field->installEventFilter(this);
    if (!mTick) {
        auto *label = new QLabel(property.title, this);
        label->setObjectName(QStringLiteral("muted"));
        label->setToolTip(property.toolTip);
        label->setBuddy(field);
        layout->addWidget(label);
    }
    if (property.kind == FProperty::File) {
        auto *row = new QHBoxLayout;
        row->setSpacing(FTheme::space(1));
        row->addWidget(field);
        auto *button = new QToolButton(this);
        button->setObjectName("browse_" + property.id);
        button->setIcon(FIcons::icon(QStringLiteral(":/folder")));
        button->setToolTip(tr("Choose a file"));
        button->setAccessibleName(tr("Choose a file for %1").arg(property.title));
        connect(button, &QToolButton::clicked, this, &FPropertyEditor::browse);
        row->addWidget(button);
        layout->addLayout(row);
    } else {
        layout->addWidget(field);
    }
    mNote->setObjectName(QStringLiteral("muted"));
    mNote->setWordWrap(true);
    mNote->hide();
    layout->addWidget(mNote);
    refresh();
}

QWidget *FPropertyEditor::makeField()
{
    switch (mProperty.kind) {
    case FProperty::Truth:
        mTick = new QCheckBox(mProperty.title, this);
        connect(mTick, &QCheckBox::clicked, this, [this] {
            mTyped = true;
            commit();
        });
        return mTick;
    case FProperty::Choice:
    case FProperty::Object:
        return makeChoice();
    default:
        return makeLine();
    }
}

QWidget *FPropertyEditor::makeLine()
{
    mLine = new QLineEdit(this);
    mLine->setReadOnly(mProperty.kind == FProperty::ReadOnly);
    if (mProperty.kind == FProperty::Expression)
        new FScriptCompleter(mLine, FScriptCompleter::Expressions);
    connect(mLine, &QLineEdit::textEdited, this, [this] {
        mTyped = true;
        showReason(QString());
    });
    return mLine;
}

QWidget *FPropertyEditor::makeChoice()
{
    mBox = new QComboBox(this);
    mBox->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    mBox->setMinimumContentsLength(8);
    mBox->setFocusPolicy(Qt::StrongFocus); // the wheel scrolls the panel
    if (mProperty.kind == FProperty::Choice)
        mBox->addItems(mProperty.words);
    connect(mBox, qOverload<int>(&QComboBox::activated), this, [this] {
        mTyped = true;
        commit();
    });
    return mBox;
}

void FPropertyEditor::browse()
{
    const QString path = QFileDialog::getOpenFileName(this, mProperty.title, mLine->text());
    if (path.isEmpty())
        return;
    mLine->setText(path);
    mTyped = true;
    commit();
}

QString FPropertyEditor::fieldText() const
{
    if (mTick)
        return mTick->isChecked() ? QStringLiteral("true") : QStringLiteral("false");
    if (mBox)
        return mBox->currentIndex() == 0 && mProperty.kind == FProperty::Object
                   ? QString()
                   : mBox->currentText();
    return mLine->text();
}

void FPropertyEditor::setFieldText(const QString &text, bool isSame)
{
    if (mTick) {
        mTick->setTristate(!isSame);
        mTick->setCheckState(!isSame          ? Qt::PartiallyChecked
                             : text == "true" ? Qt::Checked
                                              : Qt::Unchecked);
        return;
    }
    if (mBox) {
        if (mProperty.kind == FProperty::Object) {
            QStringList names{tr("none")};
            for (const auto &object : FObjectManager::instance()->all())
                if (!mProperty.klass || object->classInfo().isA(*mProperty.klass))
                    names << Q(object->getName());
            QStringList shown;
            for (int i = 0; i < mBox->count(); ++i)
                shown << mBox->itemText(i);
            if (shown != names) {
                mBox->clear();
                mBox->addItems(names);
            }
        }
        mBox->setCurrentIndex(!isSame ? -1
                              : text.isEmpty() && mProperty.kind == FProperty::Object
                                  ? 0
                                  : mBox->findText(text));
        return;
    }
    if (mLine->text() != text) {
        const int cursor = mLine->cursorPosition();
        mLine->setText(text);
        mLine->setCursorPosition(mLine->hasFocus() ? qMin(cursor, text.size()) : 0);
    }
    mLine->setPlaceholderText(isSame ? mProperty.placeholder : tr("several values"));
}

void FPropertyEditor::refresh()
{
    if (mTyped || mCommitting)
        return;
    const QStringList texts = mProperty.texts();
    const bool isSame = !texts.isEmpty();
    setFieldText(isSame ? texts.front() : QString(), isSame);
    const QString now = mProperty.current();
    mNote->setObjectName(QStringLiteral("muted"));
    mNote->style()->polish(mNote);
    mNote->setText(now);
    mNote->setVisible(!now.isEmpty());
}

void FPropertyEditor::showReason(const QString &reason)
{
    if (mLine) {
        mLine->setProperty("wrong", !reason.isEmpty());
        mLine->style()->polish(mLine);
    }
    if (reason.isEmpty() && mNote->objectName() != QLatin1String("reason"))
        return;
    mNote->setObjectName(reason.isEmpty() ? QStringLiteral("muted") : QStringLiteral("reason"));
    mNote->style()->polish(mNote);
    mNote->setText(reason);
    mNote->setVisible(!reason.isEmpty());
}

bool FPropertyEditor::commit()
{
    if (!mTyped || mCommitting || mProperty.kind == FProperty::ReadOnly)
        return true;
    const QStringList texts = mProperty.texts();
    const QString text = fieldText();
    if (!texts.isEmpty() && texts.front() == text) {
        mTyped = false;
        showReason(QString());
        refresh();
        return true;
    }
    mCommitting = true;
    const FReason why = mProperty.commit(text);
    mCommitting = false;
    if (!why.empty()) {
        showReason(Q(why.text()));
        return false;
    }
    mTyped = false;
    showReason(QString());
    refresh();
    return true;
}

bool FPropertyEditor::eventFilter(QObject *watched, QEvent *event)
{
    if (mLine && watched == mLine) {
        if (event->type() == QEvent::FocusOut) {
            commit();
        } else if (event->type() == QEvent::ShortcutOverride &&
                   static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape && mTyped) {
            event->accept();
            return true;
        } else if (event->type() == QEvent::KeyPress) {
            const int key = static_cast<QKeyEvent *>(event)->key();
            if (key == Qt::Key_Return || key == Qt::Key_Enter) {
                if (commit())
                    mLine->selectAll();
                return true;
            }
            if (key == Qt::Key_Escape && mTyped) {
                mTyped = false;
                showReason(QString());
                refresh();
                return true;
            }
        }
    } else if (mBox && watched == mBox && event->type() == QEvent::Wheel && !mBox->hasFocus()) {
        event->ignore();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

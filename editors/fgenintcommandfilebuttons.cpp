// SPDX-License-Identifier: Apache-2.0
#include "fgenintcommandfilebuttons.h"

#include "fgenintcommandfileedit.h"
#include "fgenintcommandfilesyntaxhighlighter.h"
#include "fmanaged.h"

#include <QKeyEvent>
#include <QPainter>
#include <QRegExpValidator>

FGenIntCommandFileLineEdit::FGenIntCommandFileLineEdit(FGenIntCommandFileEdit *edit)
    : QLineEdit(edit)
    , mEdit(edit)
{
    setObjectName(QStringLiteral("entryName"));
    setAccessibleName(tr("Name of the entry"));
    setValidator(
        new QRegExpValidator(QRegExp(Q(FObjectName::mNameRegExp), Qt::CaseSensitive), this));
    hide();
}

void FGenIntCommandFileLineEdit::focusOutEvent(QFocusEvent *event)
{
    QLineEdit::focusOutEvent(event);
    if (isVisible() && event->reason() != Qt::PopupFocusReason)
        mEdit->entryNameChanged();
}

void FGenIntCommandFileLineEdit::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape) {
        mEdit->leaveName();
        event->accept();
        return;
    }
    QLineEdit::keyPressEvent(event);
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && isVisible()) {
        event->accept();
        mEdit->entryNameChanged();
    }
}

void FGenIntCommandFileEditEntryButton::setEntryName(const QString &name)
{
    mEntryName = name;
    setAccessibleName(tr("Entry %1").arg(name));
    setToolTip(tr("Rename, remove, replace or delete %1").arg(name));
}

void FGenIntCommandFileEditEntryButton::paintEvent(QPaintEvent *event)
{
    FToolButton::paintEvent(event);
    using Colours = FGenIntTemplateColours;
    struct Piece
    {
        QString text;
        QColor colour;
        int weight;
    };
    const Piece pieces[] = {
        {QStringLiteral("<entry>"), Colours::sButtonTagColor, QFont::Normal},
        {mEntryName, Colours::sButtonEntryColor, QFont::Bold},
        {QStringLiteral("</entry>"), Colours::sButtonTagColor, QFont::Normal},
    };
    QPainter painter(this);
    int x = getIconSize() + 2;
    for (const Piece &piece : pieces) {
        QFont font = this->font();
        font.setWeight(piece.weight);
        painter.setFont(font);
        painter.setPen(piece.colour);
        painter.drawText(QRect(x, 0, width() - x, height()), Qt::AlignLeft | Qt::AlignVCenter,
                         piece.text);
        x += QFontMetrics(font).horizontalAdvance(piece.text);
    }
}

// SPDX-License-Identifier: Apache-2.0
#include "fresultfilepage.h"

#include "feditor.h"
#include "ftheme.h"

#include <QDir>
#include <QFile>
#include <QLabel>
#include <QTextBlock>
#include <QVBoxLayout>

FResultFilePage::FResultFilePage(QWidget *parent)
    : QWidget(parent)
    , mPlace(new QLabel(this))
    , mEditor(new FEditor(3, 1, this))
{
    mPlace->setObjectName(QStringLiteral("muted"));
    mPlace->setTextInteractionFlags(Qt::TextSelectableByMouse);
    mPlace->setContentsMargins(FTheme::space(3), FTheme::space(2), FTheme::space(3),
                               FTheme::space(2));
    mEditor->setObjectName(QStringLiteral("resultFile"));
    mEditor->setAccessibleName(tr("Result file"));
    mEditor->setReadOnly(true);
    mEditor->setTabChangesFocus(true);
    mEditor->setFrameShape(QFrame::NoFrame);
    mEditor->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(mPlace);
    layout->addWidget(mEditor);
    setFocusProxy(mEditor);
}

void FResultFilePage::show(const QString &path, int line, int column, int length)
{
    mPath = path;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        mPlace->setText(
            tr("%1 can't be read: %2").arg(QDir::toNativeSeparators(path), file.errorString()));
        mEditor->clear();
        return;
    }
    int firstLine = 1;
    QByteArray bytes;
    if (file.size() <= kWhole) {
        bytes = file.readAll();
    } else {
        // The part that holds the line, and as much before it as behind it.
        constexpr qint64 half = kWhole / 4;
        qint64 begin = 0;
        int number = 1;
        QByteArray block;
        while (number < line && !(block = file.read(1 << 20)).isEmpty()) {
            const int lines = int(block.count('\n'));
            if (number + lines >= line)
                break;
            number += lines;
            begin += block.size();
        }
        firstLine = number;
        file.seek(begin);
        bytes = file.read(2 * half);
        if (begin > 0) {
            const int end = bytes.indexOf('\n');
            bytes.remove(0, end + 1);
            ++firstLine;
        }
    }
    bytes.replace('\0', ' ');
    mEditor->setPlainText(QString::fromUtf8(bytes));
    QString place = QDir::toNativeSeparators(path) + tr(", line %1").arg(line);
    if (firstLine > 1)
        place += tr("; shown from line %1 on").arg(firstLine);
    mPlace->setText(place);
    const QTextBlock block = mEditor->document()->findBlockByNumber(line - firstLine);
    if (!block.isValid())
        return;
    QTextEdit::ExtraSelection row, mark;
    row.format.setBackground(FTheme::color("selection"));
    row.format.setProperty(QTextFormat::FullWidthSelection, true);
    row.cursor = QTextCursor(block);
    mark.format.setBackground(FTheme::color("warning-ground"));
    mark.format.setForeground(FTheme::color("warning"));
    mark.format.setFontWeight(QFont::Bold);
    mark.cursor = QTextCursor(block);
    mark.cursor.setPosition(block.position() + qBound(0, column, block.length() - 1));
    mEditor->setTextCursor(mark.cursor);
    mark.cursor.setPosition(block.position() + qBound(0, column + length, block.length() - 1),
                            QTextCursor::KeepAnchor);
    mEditor->setExtraSelections({row, mark});
    mEditor->centerCursor();
}

// SPDX-License-Identifier: Apache-2.0
#include "ftemplatetab.h"

#include "feditor.h"
#include "fhistory.h"
#include "ftheme.h"

#include <QEvent>
#include <QTextBlock>
#include <QVBoxLayout>

namespace {
constexpr int kRestMilliseconds = 1000;

bool isLineEnd(QChar c) { return c == '\n' || c == '\r' || c == QChar::ParagraphSeparator; }

/// Length of the line end at \p at: two for carriage return and line feed.
int lineEndAt(const QString &text, int at)
{
    return text[at] == '\r' && at + 1 < text.size() && text[at + 1] == '\n' ? 2 : 1;
}

/// \p text with single line feeds, as an editor shows it.
QString shownForm(const QString &text)
{
    QString shown;
    shown.reserve(text.size());
    for (int i = 0; i < text.size(); ++i)
        if (isLineEnd(text[i])) {
            i += lineEndAt(text, i) - 1;
            shown += '\n';
        } else {
            shown += text[i];
        }
    return shown;
}

/// Where the letter \p place of the shown form stands in \p text.
int placeIn(const QString &text, int place)
{
    int at = 0;
    for (; place > 0 && at < text.size(); --place)
        at += isLineEnd(text[at]) ? lineEndAt(text, at) : 1;
    return at;
}

/// \p before with what was changed in its shown form, and nothing else: line ends and odd letters
/// stay as they are where nobody typed.
QString edited(const QString &before, const QString &after)
{
    const QString shown = shownForm(before);
    int begin = 0;
    const int least = qMin(shown.size(), after.size());
    while (begin < least && shown[begin] == after[begin])
        ++begin;
    int tail = 0;
    while (tail < least - begin && shown[shown.size() - 1 - tail] == after[after.size() - 1 - tail])
        ++tail;
    QString middle = after.mid(begin, after.size() - begin - tail);
    if (before.contains(QLatin1String("\r\n")))
        middle.replace('\n', QLatin1String("\r\n"));
    return before.left(placeIn(before, begin)) + middle +
           before.mid(placeIn(before, shown.size() - tail));
}
} // namespace

FTemplateTab::FTemplateTab(QWidget *parent, const std::shared_ptr<FGenIntFile> &file)
    : QWidget(parent)
    , mFile(file)
    , mEditor(new FEditor(3, 1, this))
{
    mEditor->setObjectName(QStringLiteral("templateText"));
    mEditor->setFrameShape(QFrame::NoFrame);
    mEditor->setAccessibleName(tr("Text of the template"));
    mEditor->installEventFilter(this);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(mEditor);
    setFocusProxy(mEditor);
    mRest.setSingleShot(true);
    mRest.setInterval(kRestMilliseconds);
    connect(&mRest, &QTimer::timeout, this, &FTemplateTab::commit);
    connect(mEditor, &QPlainTextEdit::textChanged, this, [this] {
        if (mEditor->document()->isModified())
            mRest.start();
    });
}

FTemplateTab::~FTemplateTab() = default;

void FTemplateTab::setFile(const std::shared_ptr<FGenIntFile> &file)
{
    mFile = file;
    mIsLoaded = false;
    if (isVisible())
        load();
}

void FTemplateTab::setFocusToEditor() { mEditor->setFocus(); }

void FTemplateTab::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    load();
}

bool FTemplateTab::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusOut)
        commit();
    else if (event->type() == QEvent::FocusIn)
        Q_EMIT gotFocus();
    return QWidget::eventFilter(watched, event);
}

void FTemplateTab::load()
{
    const auto file = mFile.lock();
    if (!file || (mIsLoaded && mShown == file->text()))
        return;
    mIsLoaded = true;
    mShown = file->text();
    // What is the same stays: place, selection.
    const QString text = shownForm(mShown);
    const QString now = typed();
    if (text != now) {
        int begin = 0, tail = 0;
        const int least = qMin(text.size(), now.size());
        while (begin < least && text[begin] == now[begin])
            ++begin;
        while (tail < least - begin && text[text.size() - 1 - tail] == now[now.size() - 1 - tail])
            ++tail;
        if (now.isEmpty()) {
            mEditor->setPlainText(text);
        } else {
            QTextCursor cursor(mEditor->document());
            cursor.setPosition(begin);
            cursor.setPosition(now.size() - tail, QTextCursor::KeepAnchor);
            cursor.insertText(text.mid(begin, text.size() - begin - tail));
        }
    }
    // Undo is the model's: a step of it is a step here.
    mEditor->setUndoRedoEnabled(false);
    mEditor->document()->setModified(false);
    mRest.stop();
}

QString FTemplateTab::typed() const
{
    // Not the plain text, which changes hard spaces.
    QString text;
    for (QTextBlock block = mEditor->document()->firstBlock(); block.isValid();
         block = block.next()) {
        text += block.text();
        if (block.next().isValid())
            text += '\n';
    }
    return text;
}

void FTemplateTab::refresh()
{
    if (!mIsLoaded)
        return;
    commit();
    load();
}

void FTemplateTab::commit()
{
    mRest.stop();
    const auto file = mFile.lock();
    if (!mIsLoaded || !file || file->isDestroyed() || !mEditor->document()->isModified())
        return;
    if (mShown != file->text()) { // changed elsewhere meanwhile: that was the later step
        load();
        return;
    }
    mEditor->document()->setModified(false);
    const QString text = edited(mShown, typed());
    if (text == mShown)
        return;
    FHistoryTransaction step(nullptr, F_TEXT("edit template"), true);
    file->setContent(text);
    step.addStep(file);
    mShown = text;
}

void FTemplateTab::showPlace(int line, int column, int length)
{
    load();
    const QTextBlock block = mEditor->document()->findBlockByNumber(line - 1);
    if (!block.isValid())
        return;
    QTextCursor cursor(block);
    cursor.setPosition(block.position() + qBound(0, column, block.length() - 1));
    mEditor->setTextCursor(cursor);
    mEditor->centerCursor();
    QTextEdit::ExtraSelection mark;
    mark.format.setBackground(FTheme::color("warning-ground"));
    mark.format.setForeground(FTheme::color("warning"));
    mark.cursor = cursor;
    mark.cursor.setPosition(qMin(cursor.position() + length, block.position() + block.length() - 1),
                            QTextCursor::KeepAnchor);
    mEditor->setExtraSelections(length > 0 ? QList<QTextEdit::ExtraSelection>{mark}
                                           : QList<QTextEdit::ExtraSelection>());
    mEditor->setFocus();
}

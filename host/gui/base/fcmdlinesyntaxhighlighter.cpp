// SPDX-License-Identifier: Apache-2.0
#include "fcmdlinesyntaxhighlighter.h"

#include <QElapsedTimer>

QColor FCmdLineSyntaxHighlighter::sErrorUnderlineColor = Qt::darkRed;
QColor FCmdLineSyntaxHighlighter::sTextColor = Qt::black;
QColor FCmdLineSyntaxHighlighter::sCustomColor = Qt::yellow;
QColor FCmdLineSyntaxHighlighter::sBackgroundColor = Qt::white;

namespace {
constexpr int kLinesAtOnce = 200;
constexpr int kMillisecondsAtOnce = 5;
} // namespace

FCmdLineSyntaxHighlighter::FCmdLineSyntaxHighlighter(QTextDocument *document)
    : QSyntaxHighlighter(static_cast<QObject *>(document))
    , mDocument(document)
{
    setDocument(nullptr);
    connect(document, &QTextDocument::contentsChange, this,
            &FCmdLineSyntaxHighlighter::contentsChange);
    mIdle.setInterval(0);
    connect(&mIdle, &QTimer::timeout, this, &FCmdLineSyntaxHighlighter::workInIdleTime);
    mIdle.start();
}

void FCmdLineSyntaxHighlighter::rehighlight()
{
    ++mGeneration;
    goOn();
}

void FCmdLineSyntaxHighlighter::rehighlightBlock(const QTextBlock &block)
{
    mBlock = block;
    mFormats.clear();
    mFormatOf.fill(-1, block.length() - 1);
    highlightBlock(block.text());
    mBlock.setUserState(2 * mGeneration + (isPartial() ? 1 : 0));
    apply();
    mBlock = QTextBlock();
}

bool FCmdLineSyntaxHighlighter::isDue(const QTextBlock &block) const
{
    const int state = block.userState();
    return state < 0 || state / 2 != mGeneration || (state % 2 && !isPartial());
}

void FCmdLineSyntaxHighlighter::goOn()
{
    mNextLine = 0;
    mIdle.start();
}

void FCmdLineSyntaxHighlighter::ensure(QTextBlock first, const QTextBlock &last)
{
    for (; first.isValid() && first.blockNumber() <= last.blockNumber(); first = first.next())
        if (isDue(first))
            rehighlightBlock(first);
}

void FCmdLineSyntaxHighlighter::setFormat(int start, int count, const QTextCharFormat &format)
{
    const int begin = qMax(0, start), end = qMin(start + count, mFormatOf.size());
    if (begin >= end)
        return;
    if (mFormats.isEmpty() || mFormats.last() != format)
        mFormats.append(format);
    std::fill(mFormatOf.begin() + begin, mFormatOf.begin() + end, mFormats.size() - 1);
}

void FCmdLineSyntaxHighlighter::apply()
{
    QVector<QTextLayout::FormatRange> ranges;
    for (int i = 0; i < mFormatOf.size();) {
        const int format = mFormatOf[i], begin = i;
        while (i < mFormatOf.size() && mFormatOf[i] == format)
            ++i;
        if (format >= 0)
            ranges.append({begin, i - begin, mFormats[format]});
    }
    // A line without colours needs no layout as long as nobody sees it.
    QTextLayout *layout = mBlock.layout();
    if (ranges == layout->formats())
        return;
    layout->setFormats(ranges);
    mDocument->markContentsDirty(mBlock.position(), mBlock.length());
}

void FCmdLineSyntaxHighlighter::contentsChange(int position, int, int added)
{
    QTextBlock first = mDocument->findBlock(position);
    QTextBlock last = mDocument->findBlock(position + added);
    if (!first.isValid())
        return;
    if (!last.isValid())
        last = mDocument->lastBlock();
    // Lines between them are new ones.
    first.setUserState(-1);
    last.setUserState(-1);
    if (last.blockNumber() - first.blockNumber() < kLinesAtOnce) {
        ensure(first, last);
        return;
    }
    mNextLine = qMin(mNextLine, first.blockNumber());
    mIdle.start();
}

void FCmdLineSyntaxHighlighter::workInIdleTime()
{
    QElapsedTimer time;
    time.start();
    QTextBlock block;
    if (mDocument->characterCount() <= kIdleLimit)
        block = mDocument->findBlockByNumber(mNextLine);
    while (block.isValid() && time.elapsed() < kMillisecondsAtOnce) {
        if (isDue(block))
            rehighlightBlock(block);
        block = block.next();
        ++mNextLine;
    }
    if (!block.isValid())
        mIdle.stop();
}

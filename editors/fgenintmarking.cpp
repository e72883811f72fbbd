// SPDX-License-Identifier: Apache-2.0
#include "fgenintmarking.h"

#include "fboundedexpression.h"
#include "fgenintanchors.h"
#include "fgenintcells.h"
#include "fgenintreadercore.h"

#include <QTextBlock>
#include <QTextDocument>

namespace {
bool isBlank(const QString &line)
{
    return std::all_of(
        line.cbegin(), line.cend(), [](QChar c) { return c.isSpace(); });
}

QString withoutIndent(const QString &line)
{
    int at = 0;
    while (at < line.size() && line[at].isSpace())
        ++at;
    return line.mid(at);
}

class Marker
{
public:
    Marker(const QTextDocument &document, const FGenIntRule &rule, const FGenIntColumns &columns)
        : mDocument(document)
        , mRule(rule)
        , mAnchor(QString::fromStdString(rule.anchor))
        , mNumbers(columns.numbers)
    {
        if (!columns.numbers)
            mSeparator = FBoundedExpression::compiled(FGenIntSeparator::pattern(columns));
    }
    void markOne(const FGenIntText &text, const FGenIntMarks::Places &known);
    void markAverage();
    FGenIntMarks marks;

private:
    bool findAnchor(const FGenIntText &text, const FGenIntMarks::Places &known);
    void markLine(const QTextBlock &block, const QString &rest, const QString &anchor);
    const QTextDocument &mDocument;
    const FGenIntRule &mRule;
    QString mAnchor;
    QRegExp mSeparator;
    bool mNumbers;
};

bool Marker::findAnchor(const FGenIntText &text, const FGenIntMarks::Places &known)
{
    const QPair<QString, bool> key(mAnchor, mRule.first);
    auto found = known.constFind(key);
    FGenIntMarks::Places own;
    if (found == known.constEnd()) {
        own = FGenIntMarks::findAnchorsOf({mRule}, text);
        found = own.constFind(key);
    }
    const int at = *found;
    if (at < 0)
        return false;
    marks.hasAnchor = true;
    marks.anchor = {at, mAnchor.size()};
    return true;
}

void Marker::markOne(const FGenIntText &text, const FGenIntMarks::Places &known)
{
    int count = mRule.line;
    bool isUp = count < 0;
    QTextBlock block;
    if (!mAnchor.isEmpty()) {
        if (findAnchor(text, known))
            block = mDocument.findBlock(marks.anchor.begin);
        else
            block = mRule.first ? mDocument.firstBlock() : mDocument.lastBlock();
    } else if (count < 0) {
        count += 1;
        block = mDocument.lastBlock();
        while (isBlank(block.text())) {
            block = block.previous();
            if (!block.isValid())
                return;
        }
    } else {
        block = mDocument.firstBlock();
    }
    const qint64 line = qint64(block.blockNumber()) + (isUp ? -qAbs(count) : count);
    if (line < 0 || line >= mDocument.blockCount())
        return;
    block = mDocument.findBlockByNumber(int(line));
    QString rest = withoutIndent(block.text());
    if (mRule.line == 0 && !mAnchor.isEmpty())
        rest = withoutIndent(rest.mid(rest.lastIndexOf(mAnchor) + mAnchor.size()));
    markLine(block, rest, QString());
}

void Marker::markAverage()
{
    QTextBlock block = mDocument.lastBlock();
    while (block.text().isEmpty() && block.previous().isValid())
        block = block.previous();
    const unsigned rows = qMin(mRule.averageRows, unsigned(FGenIntMarks::kMostRows));
    for (unsigned row = 0; row < rows; ++row) {
        QString rest = withoutIndent(block.text());
        if (mRule.line == 0)
            rest = withoutIndent(rest.mid(mAnchor.size()));
        markLine(block, rest, mAnchor);
        if (!block.previous().isValid())
            break; // the rest of the rows would be marked here again
        block = block.previous();
    }
}

/// Marks the cell in \p rest, the end of the line that counts.
void Marker::markLine(const QTextBlock &block, const QString &rest, const QString &anchor)
{
    const int length = block.length() - 1;
    marks.lines.append({block.position(), length});
    int begin = 0, cell = 0;
    QRegExp separator = mSeparator;
    FGenIntReaderCore::parseLine(begin, cell, separator, mRule.line, anchor, rest, mRule.column,
                                 mNumbers);
    const int at = block.position() + length - rest.size() + begin;
    if (begin >= 0 && cell > 0)
        marks.cells.append({at, cell});
}
} // namespace

FGenIntMarks::Places FGenIntMarks::findAnchorsOf(const QVector<FGenIntRule> &rules,
                                                 const FGenIntText &text)
{
    Places places;
    std::vector<FGenIntAnchor> anchors;
    std::vector<QPair<QString, bool>> keys;
    for (const FGenIntRule &rule : rules) {
        const QPair<QString, bool> key(QString::fromStdString(rule.anchor), rule.first);
        if (rule.anchor.empty() || places.contains(key))
            continue;
        places.insert(key, -1);
        if (key.first.contains('\n'))
            continue; // the text is searched line by line
        FGenIntAnchor anchor;
        anchor.folded = foldAnchor(key.first);
        (rule.first ? anchor.wantFirst : anchor.wantLast) = true;
        anchors.push_back(std::move(anchor));
        keys.push_back(key);
    }
    if (!anchors.empty())
        findAnchors(text, 0, text.size(), &anchors);
    for (size_t i = 0; i < keys.size(); ++i)
        places[keys[i]] = int(keys[i].second ? anchors[i].first : anchors[i].last);
    return places;
}

FGenIntMarks FGenIntMarks::of(const QTextDocument &document, const FGenIntText &text,
                              const FGenIntRule &rule, const FGenIntColumns &columns,
                              const Places &known)
{
    Marker marker(document, rule, columns);
    if (rule.average)
        marker.markAverage();
    else
        marker.markOne(text, known);
    return marker.marks;
}

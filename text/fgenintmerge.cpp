// SPDX-License-Identifier: Apache-2.0
#include "fgenintmerge.h"

#include "fgenintwritercore.h"

#include <QStringList>
#include <algorithm>

namespace {
constexpr qint64 kTable = 16 << 20; // pairs of lines that are compared to find the longest match
constexpr int kAhead = 200;         // lines that are looked ahead in texts beyond that
const auto kMark = QLatin1String("<entry>");

QStringRef withoutReturn(const QStringRef &line)
{
    return line.endsWith('\r') ? line.left(line.size() - 1) : line;
}

/// True if \p fresh is \p old with any text in place of its tags.
bool matches(const QStringRef &oldLine, const QStringRef &freshLine)
{
    const QStringRef old = withoutReturn(oldLine), fresh = withoutReturn(freshLine);
    if (old == fresh)
        return true;
    if (!old.contains(kMark, Qt::CaseInsensitive))
        return false;
    // The fixed pieces stand there in their order, the first and the last at the ends.
    int at = 0, piece = 0;
    for (const FGenIntTag &tag : FGenIntTagScanner::scan(old.toString(), Qt::CaseInsensitive)) {
        const QStringRef fixed = old.mid(piece, tag.start - piece);
        const int found =
            piece == 0 ? (fresh.startsWith(fixed) ? 0 : -1) : fresh.indexOf(fixed, at);
        if (found < 0)
            return false;
        at = found + fixed.size();
        piece = tag.end;
    }
    const QStringRef rest = old.mid(piece);
    return piece > 0 && fresh.size() - rest.size() >= at && fresh.endsWith(rest);
}

class Aligner
{
public:
    Aligner(const QVector<QStringRef> &old, const QVector<QStringRef> &fresh)
        : mOld(old)
        , mFresh(fresh)
    {
    }
    QVector<FGenIntMerge::Line> run();

private:
    bool same(int old, int fresh) const { return matches(mOld[old], mFresh[fresh]); }
    void longest(int oldEnd, int freshEnd);
    void ahead(int oldEnd, int freshEnd);
    void skip(int oldEnd, int freshEnd);
    const QVector<QStringRef> &mOld, &mFresh;
    QVector<FGenIntMerge::Line> mLines;
    int mAtOld = 0, mAtFresh = 0;
};

void Aligner::skip(int oldEnd, int freshEnd)
{
    while (mAtOld < oldEnd)
        mLines.append({mAtOld++, -1, false});
    while (mAtFresh < freshEnd)
        mLines.append({-1, mAtFresh++, false});
}

void Aligner::longest(int oldEnd, int freshEnd)
{
    const int rows = oldEnd - mAtOld, columns = freshEnd - mAtFresh;
    const int oldBegin = mAtOld, freshBegin = mAtFresh;
    std::vector<int> length(size_t(rows + 1) * size_t(columns + 1));
    const auto cell = [&](int row, int column) -> int & {
        return length[size_t(row) * size_t(columns + 1) + size_t(column)];
    };
    for (int row = rows - 1; row >= 0; --row)
        for (int column = columns - 1; column >= 0; --column)
            cell(row, column) = same(oldBegin + row, freshBegin + column)
                                    ? cell(row + 1, column + 1) + 1
                                    : std::max(cell(row + 1, column), cell(row, column + 1));
    for (int row = 0, column = 0; row < rows && column < columns;) {
        if (same(oldBegin + row, freshBegin + column)) {
            skip(oldBegin + row, freshBegin + column);
            mLines.append({mAtOld++, mAtFresh++, true});
            ++row, ++column;
        } else if (cell(row + 1, column) >= cell(row, column + 1)) {
            ++row;
        } else {
            ++column;
        }
    }
}

/// For texts whose middles are too long for the table: the nearest match a little further on.
void Aligner::ahead(int oldEnd, int freshEnd)
{
    while (mAtOld < oldEnd && mAtFresh < freshEnd) {
        if (same(mAtOld, mAtFresh)) {
            mLines.append({mAtOld++, mAtFresh++, true});
            continue;
        }
        int toOld = -1, toFresh = -1;
        for (int sum = 1; sum <= kAhead && toOld < 0; ++sum)
            for (int one = 0; one <= sum; ++one) {
                const int old = mAtOld + one, fresh = mAtFresh + sum - one;
                if (old < oldEnd && fresh < freshEnd && same(old, fresh)) {
                    toOld = old;
                    toFresh = fresh;
                    break;
                }
            }
        if (toOld < 0)
            return;
        skip(toOld, toFresh);
    }
}

QVector<FGenIntMerge::Line> Aligner::run()
{
    int oldEnd = mOld.size(), freshEnd = mFresh.size();
    while (mAtOld < oldEnd && mAtFresh < freshEnd && same(mAtOld, mAtFresh))
        mLines.append({mAtOld++, mAtFresh++, true});
    while (oldEnd > mAtOld && freshEnd > mAtFresh && same(oldEnd - 1, freshEnd - 1)) {
        --oldEnd;
        --freshEnd;
    }
    if (qint64(oldEnd - mAtOld) * (freshEnd - mAtFresh) <= kTable)
        longest(oldEnd, freshEnd);
    else
        ahead(oldEnd, freshEnd);
    skip(oldEnd, freshEnd);
    while (mAtOld < mOld.size())
        mLines.append({mAtOld++, mAtFresh++, true});
    return mLines;
}
} // namespace

QVector<QStringRef> FGenIntMerge::linesOf(const QString &text) { return text.splitRef('\n'); }

QVector<FGenIntMerge::Line> FGenIntMerge::align(const QVector<QStringRef> &old,
                                                const QVector<QStringRef> &fresh)
{
    return Aligner(old, fresh).run();
}

FGenIntMerge::Outcome FGenIntMerge::takeOver(const QString &old, const QString &fresh)
{
    const QVector<QStringRef> oldLines = linesOf(old), freshLines = linesOf(fresh);
    Outcome outcome;
    outcome.text.reserve(fresh.size());
    bool isFirst = true;
    for (const Line &line : align(oldLines, freshLines)) {
        if (line.fresh < 0) {
            outcome.lost += oldLines[line.old].count(kMark, Qt::CaseInsensitive);
            continue;
        }
        if (!isFirst)
            outcome.text += '\n';
        isFirst = false;
        const QStringRef &given = freshLines[line.fresh];
        if (!line.isSame) {
            ++outcome.changed;
            outcome.text += given;
            continue;
        }
        outcome.text += withoutReturn(oldLines[line.old]);
        if (given.endsWith('\r'))
            outcome.text += '\r';
    }
    return outcome;
}

QString FGenIntMerge::difference(const QString &old, const QString &fresh, int most)
{
    constexpr int kAround = 2;
    const QVector<QStringRef> oldLines = linesOf(old), freshLines = linesOf(fresh);
    const QVector<Line> lines = align(oldLines, freshLines);
    QStringList shown;
    int last = -1; // the line that was shown last
    for (int i = 0; i < lines.size() && shown.size() < most; ++i) {
        if (lines[i].isSame)
            continue;
        int from = qMax(last + 1, i - kAround);
        if (from > last + 1)
            shown << QStringLiteral("@@ line %1 @@").arg(qMax(lines[from].fresh, 0) + 1);
        int to = i;
        while (to + 1 < lines.size() && to - i < kAround && lines[to + 1].isSame)
            ++to;
        for (; from <= to; ++from) {
            const Line &line = lines[from];
            shown << (line.isSame    ? QLatin1String("  ") + oldLines[line.old]
                      : line.old < 0 ? QLatin1String("+ ") + freshLines[line.fresh]
                                     : QLatin1String("- ") + oldLines[line.old]);
        }
        last = to;
    }
    return shown.join('\n');
}

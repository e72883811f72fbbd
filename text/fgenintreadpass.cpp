// SPDX-License-Identifier: Apache-2.0
#include "fgenintreadpass.h"

#include "fgenintdoubt.h"

#include <QtAlgorithms>
#include <algorithm>
#include <limits>

namespace {
template <class U>
const U *unitsOf(const FGenIntText &text);
template <>
const uchar *unitsOf(const FGenIntText &text)
{
    return text.bytes();
}
template <>
const char16_t *unitsOf(const FGenIntText &text)
{
    return text.wide();
}

int toLength(qint64 length) { return static_cast<int>(std::min<qint64>(length, (1 << 30) - 64)); }

QString textOf(const uchar *units, qint64 length)
{
    return QString::fromLatin1(reinterpret_cast<const char *>(units), toLength(length));
}
QString textOf(const char16_t *units, qint64 length)
{
    return QString(reinterpret_cast<const QChar *>(units), toLength(length));
}

int toColumn(qint64 column)
{
    return static_cast<int>(std::min<qint64>(column, std::numeric_limits<int>::max()));
}

/// A line of bytes that is longer is not decoded for itself.
constexpr qint64 kLongestDecoded = 1 << 24;

/// A line this long times pattern length may keep the expression engine busy for a second.
constexpr qint64 kLongSearch = 3000;
} // namespace

template <class U>
FGenIntReadPass<U>::FGenIntReadPass(const FGenIntText &text, const QVector<FGenIntRule> &rules,
                                    const FGenIntColumns &columns)
    : mText(text)
    , mRules(rules)
    , mUnits(unitsOf<U>(text))
    , mSeparator(columns)
    , mFinder(mSeparator)
    , mDecodedFinder(mSeparator)
{
    mTrimmed = mText.size();
    while (mTrimmed > 0) {
        if (mTrimmed % FGenIntText::kBlock == 0 || mTrimmed == mText.size())
            mText.examine(mTrimmed - 1, mTrimmed);
        if (sizeof(U) == 1 && mUnits[mTrimmed - 1] >= 0x80)
            mText.giveUpBytes(); // may be white space, or a character that lost its end
        if (!isSpaceUnit(mUnits[mTrimmed - 1]))
            break;
        --mTrimmed;
    }
    findRules();
    sortIndices();
}

template <class U>
void FGenIntReadPass<U>::findRules()
{
    const auto count = static_cast<size_t>(mRules.size());
    std::vector<FGenIntAnchor> anchors;
    std::vector<size_t> anchorOf(count, 0);
    std::map<std::u16string, size_t> known;
    mAnchorAt.assign(count, -1);
    mSortKey.assign(count, 0);
    mAnchorSize.assign(count, 0);
    for (size_t i = 0; i < count; ++i) {
        const FGenIntRule &rule = mRules[static_cast<int>(i)];
        const std::u16string folded = foldAnchor(QString::fromStdString(rule.anchor));
        mAnchorSize[i] = static_cast<int>(folded.size());
        if (folded.empty())
            continue;
        const auto entry = known.emplace(folded, anchors.size());
        if (entry.second) {
            anchors.emplace_back();
            anchors.back().folded = folded;
        }
        anchorOf[i] = entry.first->second;
        (rule.first ? anchors[anchorOf[i]].wantFirst : anchors[anchorOf[i]].wantLast) = true;
    }
    if (anchors.empty())
        return;
    findAnchors(mText, 0, mTrimmed, &anchors);
    // Rules are read from the trimmed text but sorted by the whole one. The two differ only for
    // anchors that end in white space.
    std::vector<FGenIntAnchor> tails(anchors);
    qint64 longest = 0;
    for (const FGenIntAnchor &anchor : anchors)
        if (isSpaceUnit(anchor.folded.back()))
            longest = std::max(longest, static_cast<qint64>(anchor.folded.size()));
    if (longest > 0 && mTrimmed < mText.size())
        findAnchors(mText, std::max<qint64>(0, mTrimmed - longest + 1), mText.size(), &tails);
    else
        tails.clear();
    for (size_t i = 0; i < count; ++i) {
        if (mAnchorSize[i] == 0)
            continue;
        const bool first = mRules[static_cast<int>(i)].first;
        const FGenIntAnchor &anchor = anchors[anchorOf[i]];
        mAnchorAt[i] = first ? anchor.first : anchor.last;
        qint64 key = mAnchorAt[i];
        if (!tails.empty()) {
            const FGenIntAnchor &tail = tails[anchorOf[i]];
            key = first ? (key < 0 ? tail.first : key) : std::max(key, tail.last);
        }
        mSortKey[i] = std::max<qint64>(0, key);
    }
}

template <class U>
void FGenIntReadPass<U>::sortIndices()
{
    std::map<qint64, QVector<int>> groups;
    for (int i = 0; i < mRules.size(); ++i)
        groups[mSortKey[static_cast<size_t>(i)]].append(i);
    const auto before = [this](int a, int b) {
        const FGenIntRule &left = mRules[a];
        const FGenIntRule &right = mRules[b];
        if (left.line != right.line)
            return left.line < right.line;
        return left.column != right.column ? left.column < right.column : left.name < right.name;
    };
    for (auto &group : groups) {
        // The order of equal elements is part of the order that projects rely on, and no other
        // algorithm has it.
        QT_WARNING_PUSH
        QT_WARNING_DISABLE_DEPRECATED
        qSort(group.second.begin(), group.second.end(), before);
        QT_WARNING_POP
        mOrder.insert(mOrder.end(), group.second.begin(), group.second.end());
    }
}

template <class U>
void FGenIntReadPass<U>::start(int timeLimitMs)
{
    mTimeLimitMs = timeLimitMs;
    mClock.start();
}

template <class U>
typename FGenIntReadPass<U>::Outcome FGenIntReadPass<U>::evaluate(int rule, FGenIntReading *reading)
{
    *reading = FGenIntReading();
    reading->rule = rule;
    reading->value = std::numeric_limits<double>::quiet_NaN();
    if (!mRules[rule].average)
        return readSingle(rule, reading);
    if (!mAveragesRead) {
        const Outcome outcome = readAverages();
        if (outcome != Done)
            return outcome;
        mAveragesRead = true;
    }
    report(mAverages[mAverageOf[rule]], reading);
    return Done;
}

template <class U>
typename FGenIntReadPass<U>::Outcome FGenIntReadPass<U>::readSingle(int index,
                                                                    FGenIntReading *reading)
{
    const Line line = pickLine(mRules[index], mAnchorAt[static_cast<size_t>(index)]);
    return withRow(line, [&](const auto &row) { return readCell(index, line, row, reading); });
}

template <class U>
template <class V>
typename FGenIntReadPass<U>::Outcome FGenIntReadPass<U>::readCell(int index, const Line &line,
                                                                  const Row<V> &row,
                                                                  FGenIntReading *reading)
{
    const FGenIntRule &rule = mRules[index];
    const qint64 anchor = mAnchorAt[static_cast<size_t>(index)];
    const int anchorSize = mAnchorSize[static_cast<size_t>(index)];
    const Outcome outcome = prepare(row);
    if (outcome != Done)
        return outcome;
    const auto cell = finder<V>().find(rule.column);
    const qint64 position = row.begin + cell.position;
    bool ok = false;
    if (cell.position >= 0) {
        const double number = toNumber(row.units + position, cell.length, &ok);
        reading->cell = textOf(row.units + position, cell.length);
        reading->value = ok ? number : reading->value;
    }
    if (line.there)
        place(line, position, cell.length, reading);
    QStringList &notes = reading->notes;
    if (anchorSize > 0 && anchor < 0)
        notes << QStringLiteral("anchor not found");
    if (!line.there || line.displaced)
        notes << QStringLiteral("line not there");
    if (line.there && (!cell.found || rule.column < 0))
        notes << QStringLiteral("column not there");
    if (cell.found && qIsNaN(reading->value) && (line.there || cell.length > 0))
        notes << QStringLiteral("not a number");
    if (cell.length > 0) {
        // A file that was cut may have lost the place that this one stands for.
        const bool fromEnd = anchor >= 0 ? !rule.first : rule.line < 0;
        if (isUnfinished(fromEnd ? mTrimmed : line.end))
            notes << QStringLiteral("last line has no line end");
        const bool anchored = anchor >= 0 && rule.line == 0;
        const int doubts = doubtsOf(row, anchored, position, cell.length);
        if (doubts & Touches)
            notes << QStringLiteral("number touches other characters");
        if (doubts & Lacks)
            notes << QStringLiteral("NaN or **** stands before it in the line");
    }
    if (anchor >= 0 && rule.line >= 0) {
        // Reading goes on behind as many units as the anchor has bytes.
        const qint64 right = anchor + anchorSize;
        const qint64 shifted =
            std::min(anchor + static_cast<qint64>(rule.anchor.size()), mText.size());
        const auto readsOther = [&] {
            if (mText.lineFeedFrom(right, 1, shifted) >= 0)
                return true;
            if (rule.line != 0)
                return false;
            Row<V> whole = row;
            whole.begin = right - line.physical;
            if (prepare(whole) != Done)
                return true;
            const auto other = finder<V>().find(rule.column);
            return other.found != cell.found || other.length != cell.length ||
                   whole.begin + other.position != position;
        };
        if (static_cast<size_t>(anchorSize) != rule.anchor.size() && readsOther())
            notes << QStringLiteral("non-ASCII anchor shifts the reading");
    }
    return Done;
}

template <class U>
typename FGenIntReadPass<U>::Line FGenIntReadPass<U>::pickLine(const FGenIntRule &rule,
                                                               qint64 anchor) const
{
    if (anchor < 0) {
        return rule.line >= 0 ? lineFromTop(0, mTrimmed, rule.line)
                              : lineFromEnd(mTrimmed, rule.line);
    }
    if (rule.line >= 0) {
        const qint64 behind = anchor + static_cast<qint64>(rule.anchor.size());
        return lineFromTop(std::min(behind, mText.size()), mText.size(), rule.line);
    }
    // A line feed that the anchor itself begins with counts as well.
    const qint64 feed = mText.lineFeedBefore(anchor + 1, 1);
    if (feed >= 0)
        return lineFromEnd(feed, rule.line);
    Line line = lineFromEnd(mText.size(), rule.line);
    line.displaced = true; // nothing stands above the first line: this is read from the end
    return line;
}

template <class U>
typename FGenIntReadPass<U>::Line FGenIntReadPass<U>::lineFromTop(qint64 from, qint64 limit,
                                                                  qint64 number) const
{
    Line line;
    line.begin = from;
    if (number > 0) {
        const qint64 feed = mText.lineFeedFrom(from, number, limit);
        line.begin = feed < 0 ? limit : feed + 1;
        line.there = line.begin < limit;
    } else {
        line.there = limit > 0;
    }
    const qint64 end = mText.lineFeedFrom(line.begin, 1, limit);
    line.end = end < 0 ? limit : end;
    line.physical = mText.lineFeedBefore(line.begin, 1) + 1;
    return line;
}

template <class U>
typename FGenIntReadPass<U>::Line FGenIntReadPass<U>::lineFromEnd(qint64 limit, qint64 number) const
{
    Line line;
    line.there = false;
    if (limit == 0)
        return line;
    mText.examine(limit - 1, limit);
    const qint64 end = mUnits[limit - 1] == '\n' ? limit - 1 : limit;
    qint64 count = 0;
    qint64 feed = mText.lineFeedBefore(end, -number, &count);
    if (feed < 0) {
        if (count == 0)
            return line; // one line only, and the first one is never taken
        feed = mText.lineFeedFrom(0, 1, end);
        line.displaced = true;
    }
    line.there = true;
    line.begin = line.physical = feed + 1;
    const qint64 next = mText.lineFeedFrom(line.begin, 1, end);
    line.end = next < 0 ? end : next;
    return line;
}

template <class U>
template <class Use>
typename FGenIntReadPass<U>::Outcome FGenIntReadPass<U>::withRow(const Line &line, Use use)
{
    const qint64 from = line.begin - line.physical;
    if (!mText.isForeign(line.physical, line.end))
        return use(trimmed(mUnits + line.physical, from, line.end - line.physical));
    if (line.end - line.physical > kLongestDecoded)
        mText.giveUpBytes();
    if (!mText.isPlain())
        return TooLate; // all is read again
    if (mDecodedBegin != line.physical || mDecodedEnd != line.end) {
        mDecoded = mText.decode(line.physical, line.end);
        mDecodedBegin = line.physical;
        mDecodedEnd = line.end;
    }
    return use(trimmed(reinterpret_cast<const char16_t *>(mDecoded.utf16()),
                       from > 0 ? mText.decode(line.physical, line.begin).size() : 0,
                       mDecoded.size()));
}

template <class U>
template <class V>
typename FGenIntReadPass<U>::template Row<V>
FGenIntReadPass<U>::trimmed(const V *units, qint64 from, qint64 end) const
{
    Row<V> row;
    row.units = units;
    row.from = row.begin = from;
    row.end = end;
    if (row.end > row.begin && units[row.end - 1] == '\r')
        --row.end;
    while (row.begin < row.end && isSpaceUnit(units[row.begin]))
        ++row.begin;
    return row;
}

template <class U>
template <class V>
FGenIntCellFinder<V> &FGenIntReadPass<U>::finder()
{
    if constexpr (sizeof(V) == sizeof(U))
        return mFinder;
    else
        return mDecodedFinder;
}

template <class U>
template <class V>
typename FGenIntReadPass<U>::Outcome FGenIntReadPass<U>::prepare(const Row<V> &row)
{
    const qint64 size = row.end - row.begin;
    if (mSeparator.isExpression()) {
        if (!mLongSearches && size > kLongSearch / (1 + mSeparator.patternLength() / 8))
            return NeedsLongSearch;
        if (mClock.hasExpired(mTimeLimitMs))
            return TooLate;
    }
    finder<V>().setLine(row.units + row.begin, size);
    return Done;
}

template <class U>
template <class V>
int FGenIntReadPass<U>::doubtsOf(const Row<V> &row, bool anchored, qint64 cell, qint64 length) const
{
    if (!mSeparator.isNumber())
        return NoDoubt; // a cell is all there is between two separators, whatever it holds
    // The characters around are those of the physical line, not of the part that is read.
    const bool touches = touchesOthers(row.units, row.end, cell, cell + length, row.from, anchored);
    return (touches ? Touches : NoDoubt) |
           (lacksNumber(row.units, row.end, row.from, cell) ? Lacks : NoDoubt);
}

template <class U>
bool FGenIntReadPass<U>::isUnfinished(qint64 end) const
{
    const qint64 size = mText.size();
    return size > 0 && mText.lineFeedFrom(end, 1, size) < 0 && mUnits[size - 1] != '\r';
}

template <class U>
void FGenIntReadPass<U>::place(const Line &line, qint64 cell, qint64 length,
                               FGenIntReading *reading) const
{
    if (mCountLines)
        reading->line = mText.lineFeedsUpTo(line.physical) + 1;
    if (length > 0) {
        reading->columnFirst = toColumn(cell + 1);
        reading->columnLast = toColumn(cell + length);
    }
}

template <class U>
void FGenIntReadPass<U>::openAverage(Average *average) const
{
    const qint64 rows = average->rows;
    average->start = mTrimmed;
    if (rows <= 0)
        return;
    qint64 count = 0;
    average->start = mText.lineFeedBefore(mTrimmed, rows, &count);
    if (average->start >= 0)
        return;
    average->start = 0;
    average->reachesTop = count + 1 < rows;
    if (count > 0 && mUnits[0] == '\n') {
        // The search goes on ahead of the line feed at 0, that is at -1, which stands for the end:
        // it goes round in a circle.
        average->reachesTop = true;
        average->start = mText.lineFeedBefore(mTrimmed, (rows - 1) % count + 1);
    }
}

template <class U>
typename FGenIntReadPass<U>::Outcome FGenIntReadPass<U>::readAverages()
{
    mAverages.clear();
    mAverageOf.clear();
    qint64 start = mTrimmed;
    for (int i = 0; i < mRules.size(); ++i) {
        if (mRules[i].average) {
            Average average;
            average.rule = i;
            average.rows = static_cast<int>(mRules[i].averageRows);
            openAverage(&average);
            start = std::min(start, average.start);
            mAverages.push_back(average);
        }
    }
    // Cells of a row are found from left to right.
    std::stable_sort(mAverages.begin(), mAverages.end(), [this](const auto &a, const auto &b) {
        return mRules[a.rule].column < mRules[b.rule].column;
    });
    for (size_t i = 0; i < mAverages.size(); ++i)
        mAverageOf[mAverages[i].rule] = i;
    Line row;
    row.begin = start;
    while (row.begin < mTrimmed) {
        const qint64 feed = mText.lineFeedFrom(row.begin, 1, mTrimmed);
        const qint64 next = feed < 0 ? mTrimmed : feed + 1;
        row.end = feed < 0 ? mTrimmed : feed;
        row.physical = row.begin;
        const Outcome outcome = readRow(row);
        if (outcome != Done)
            return outcome;
        row.begin = next;
    }
    return Done;
}

template <class U>
typename FGenIntReadPass<U>::Outcome FGenIntReadPass<U>::readRow(const Line &line)
{
    mText.examine(line.begin, line.end);
    const qint64 size = line.end - line.begin;
    if (size == 0 || (size == 1 && mUnits[line.begin] == '\r'))
        return Done;
    return withRow(line, [&](const auto &row) { return addRow(line, row); });
}

template <class U>
template <class V>
typename FGenIntReadPass<U>::Outcome FGenIntReadPass<U>::addRow(const Line &line, const Row<V> &row)
{
    const Outcome outcome = prepare(row);
    if (outcome != Done)
        return outcome;
    for (Average &average : mAverages) {
        if (average.start > line.begin || average.full)
            continue;
        const auto cell = finder<V>().find(mRules[average.rule].column);
        const bool own = cell.position >= 0;
        if (own) {
            average.cell = row.begin + cell.position;
            average.length = cell.length;
            average.row = line;
            average.number = toNumber(row.units + average.cell, cell.length, &average.hasNumber);
        }
        // A row that is short of the column leaves the cell of the row before in place, and that
        // counts again.
        if (average.hasNumber) {
            average.sum += average.number;
            average.full = ++average.count == average.rows;
            if (own) {
                ++average.numeric;
                average.doubts |= doubtsOf(row, false, average.cell, average.length);
            }
        }
    }
    return Done;
}

template <class U>
void FGenIntReadPass<U>::report(const Average &average, FGenIntReading *reading)
{
    if (average.count > 0)
        reading->value = average.sum / static_cast<double>(average.count);
    if (average.length > 0) {
        withRow(average.row, [&](const auto &row) {
            reading->cell = textOf(row.units + average.cell, average.length);
            return Done;
        });
        place(average.row, average.cell, average.length, reading);
    }
    QStringList &notes = reading->notes;
    if (mRules[average.rule].column < 0)
        notes << QStringLiteral("column not there");
    if (average.count > 0 && qIsNaN(reading->value))
        notes << QStringLiteral("not a number");
    if (average.length > 0 && isUnfinished(average.row.end))
        notes << QStringLiteral("last line has no line end");
    if (average.doubts & Touches)
        notes << QStringLiteral("number touches other characters");
    if (average.doubts & Lacks)
        notes << QStringLiteral("NaN or **** stands before it in the line");
    if (average.rows <= 0 || average.numeric < average.rows) {
        notes << QStringLiteral("average: %1 of %2 rows used")
                     .arg(average.numeric)
                     .arg(mRules[average.rule].averageRows);
    }
    if (average.reachesTop)
        notes << QStringLiteral("average window reaches the top of the file");
}

template class FGenIntReadPass<uchar>;
template class FGenIntReadPass<char16_t>;

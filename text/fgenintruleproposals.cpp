// SPDX-License-Identifier: Apache-2.0
#include "fgenintruleproposals.h"

#include "fgenintanchors.h"
#include "fgenintcells.h"
#include "fgenintlabels.h"
#include "fgenintlines.h"
#include "fgenintreadercore.h"
#include "fgeninttext.h"

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <utility>

namespace {
using FGenIntLines::lineAround;
using Span = FGenIntSpan;

/// Finds the cells of lines.
class FCells
{
public:
    explicit FCells(const FGenIntColumns &columns)
        : mColumns(columns)
        , mSeparator(columns)
    {
    }

    /// Calls \p visit with the column, the begin and the length of all cells of \p row, until it
    /// says true.
    using Visit = std::function<bool(int, int, int)>;
    void find(const QString &row, const Visit &visit) const
    {
        int begin = 0, end = row.size();
        if (end > 0 && row[end - 1] == QLatin1Char('\r'))
            --end;
        while (begin < end && row[begin].isSpace())
            ++begin;
        if (mSeparator.isExpression()) {
            findByReader(row.mid(begin, end - begin), begin, visit);
            return;
        }
        FGenIntCellFinder<char16_t> finder(mSeparator);
        finder.setLine(reinterpret_cast<const char16_t *>(row.utf16()) + begin, end - begin);
        for (int column = 0; column <= end - begin; ++column) {
            const auto cell = finder.find(column);
            if (!cell.found || visit(column, begin + static_cast<int>(cell.position),
                                     static_cast<int>(cell.length)))
                return;
        }
    }

    /// True if it takes time to find them.
    bool isSlow(const QString &row) const { return mSeparator.isExpression() && row.size() > 1000; }

    /// Column of the cell in that part of a line that begins at \p from; -1 if it's none there.
    int columnOf(const QString &line, int from, const Span &wanted) const
    {
        int found = -1;
        find(line.mid(from), [&](int column, int begin, int length) {
            if (begin + from == wanted.begin && begin + from + length == wanted.end)
                found = column;
            return found >= 0 || begin + from > wanted.begin;
        });
        return found;
    }

private:
    /// An expression may take for ever, and the reader knows what to do then.
    void findByReader(const QString &row, int offset, const Visit &visit) const
    {
        if (row.isEmpty())
            return;
        const auto text = FGenIntText::fromString(row);
        FGenIntReaderCore reader(*text);
        reader.setTimeLimit(1000);
        for (int from = 0, count = 64; from <= row.size(); from += count, count *= 4) {
            QVector<FGenIntRule> rules(std::min(count, row.size() - from + 1));
            for (int i = 0; i < rules.size(); ++i)
                rules[i].column = from + i;
            for (const FGenIntReading &reading : reader.read(rules, mColumns)) {
                const int length = reading.columnLast - reading.columnFirst + 1;
                if (reading.columnFirst > 0 &&
                    visit(rules[reading.rule].column, reading.columnFirst - 1 + offset, length))
                    return;
                if (reading.line == 0 || reading.notes.contains(QStringLiteral("column not there")))
                    return;
            }
        }
    }

    const FGenIntColumns mColumns;
    const FGenIntSeparator mSeparator;
};

/// The text for the reader: as bytes if that is all the same, for they are read faster.
std::unique_ptr<FGenIntText> holdText(const QString &text)
{
    std::string bytes(static_cast<size_t>(text.size()), '\0');
    const ushort *units = text.utf16();
    ushort all = 0;
    for (size_t i = 0; i < bytes.size(); ++i) {
        all |= units[i];
        bytes[i] = static_cast<char>(units[i]);
    }
    return all < 0x80 ? FGenIntText::fromBytes(std::move(bytes)) : FGenIntText::fromString(text);
}

/// A rule that may serve.
struct Candidate
{
    FGenIntRule rule;
    QString anchor;
    int at = -1;       ///< where the anchor stands; -1 without one
    double cost = 0.0; ///< how much there is that may change between it and the cell
};

/// Price of what a label itself is like.
double costOf(const FGenIntLabel &label)
{
    double cost = label.kind == FGenIntLabel::WithIndex ? 8.0 : 0.0;
    // Signs tell a name from the same letters in a word, a second column does not.
    const int size = label.hasGaps ? label.letters : std::min(label.length, label.letters + 2);
    cost += size < 2 ? 10.0 : size < 3 ? 6.0 : size < 5 ? 2.0 : 0.0;
    cost += label.digits > 0 ? 1.0 : 0.0;
    cost += label.isForeign ? 6.0 : 0.0; // reading goes on behind more than the anchor
    return cost;
}

/// Collects and weighs the rules that may read one cell.
class FProposer
{
public:
    FProposer(const QString &text, const Span &cell, int column, const FGenIntColumns &columns)
        : mText(text)
        , mCell(cell)
        , mColumns(columns)
        , mCells(columns)
        , mLine(lineAround(text, cell.begin))
        , mRow(text.mid(mLine.begin, mLine.end - mLine.begin))
        , mColumn(column)
    {
    }

    QVector<FGenIntRule> run(int most)
    {
        const Span inRow{mCell.begin - mLine.begin, mCell.end - mLine.begin};
        collectBefore(inRow);
        collectAbove();
        collectBelow();
        mHeld = holdText(mText);
        locate();
        addLastResorts();
        std::stable_sort(mCandidates.begin(), mCandidates.end(),
                         [](const auto &a, const auto &b) { return a.cost < b.cost; });
        pickDifferent(static_cast<size_t>(most) + 8);
        return verified(most);
    }

private:
    static constexpr int kFarUp = 1 << 18, kFarDown = 1 << 12; ///< units looked at
    static constexpr int kLongLine = 600;                      ///< more isn't looked at for labels
    static constexpr size_t kMostAbove = 64;

    void add(const QString &anchor, int at, int line, int column, double cost)
    {
        Candidate candidate;
        candidate.anchor = anchor;
        candidate.rule.anchor = anchor.toStdString();
        candidate.rule.line = line;
        candidate.rule.column = column;
        candidate.at = at;
        candidate.cost = cost;
        mCandidates.push_back(candidate);
    }

    /// Labels ahead of the cell in its own line.
    void collectBefore(const Span &inRow)
    {
        const int from = std::max(0, inRow.begin - kLongLine);
        // With the word that the cell is in, as that tells what the words ahead of it are.
        int to = inRow.end;
        while (to < mRow.size() && !mRow[to].isSpace())
            ++to;
        to = std::min(to, inRow.end + kLongLine);
        collectBefore(mRow.mid(from, to - from), from, inRow);
        if (from > 0)
            collectBefore(mRow.left(std::min(from, kLongLine)), 0, inRow);
    }
    void collectBefore(const QString &part, int offset, const Span &inRow)
    {
        auto labels = FGenIntLabels::labelsOf(part, true);
        std::stable_sort(labels.begin(), labels.end(), [](const auto &a, const auto &b) {
            return a.begin + a.length > b.begin + b.length;
        });
        const bool isSlow = mCells.isSlow(mRow);
        double passed = 0.0;
        size_t tried = 0;
        for (const FGenIntLabel &label : labels) {
            const int end = offset + label.begin + label.length;
            if (end > inRow.begin)
                continue;
            if (++tried > (isSlow ? 2 : 10) && (isSlow || tried + 3 < labels.size()))
                continue; // the nearest ones, and those that name the line
            const int column = mCells.columnOf(mRow, end, inRow);
            if (column >= 0) {
                const double cost = costOf(label) + passed + 0.5 * std::min(column, 10);
                add(part.mid(label.begin, label.length), mLine.begin + offset + label.begin, 0,
                    column,
                    cost + (label.kind == FGenIntLabel::Part ? 0.3 : 0.0) +
                        (label.hasGaps ? 5.0 : 0.0));
            }
            passed += 0.4;
        }
    }

    /// Adds the labels of another line, for rules with the line \p distance.
    void collectLine(const Span &line, int distance, double cost)
    {
        const QString row = FGenIntLines::textOf(mText, line, kLongLine);
        const bool isData = FGenIntLines::numbersIn(row) > 0;
        size_t used = 0;
        for (const FGenIntLabel &label : FGenIntLabels::labelsOf(row, false)) {
            const QString anchor = row.mid(label.begin, label.length);
            if (++used > 6 || !mSeen.insert(anchor.toCaseFolded()).second)
                continue;
            add(anchor, line.begin + label.begin, distance, mColumn,
                cost + costOf(label) + (isData ? 2.0 : 0.0) +
                    (label.kind == FGenIntLabel::Part ? 1.0 : 0.0));
        }
    }

    static double costOfDistance(int lines)
    {
        return std::min(lines, 10) + 0.3 * std::min(std::max(lines - 10, 0), 40) +
               0.002 * std::max(lines - 50, 0);
    }

    void collectAbove()
    {
        const int stop = std::max(0, mCell.begin - kFarUp);
        const size_t before = mCandidates.size();
        Span line = mLine;
        for (int distance = 1; line.begin > stop && mCandidates.size() < before + kMostAbove;
             ++distance) {
            line = lineAround(mText, line.begin - 1);
            collectLine(line, distance, 4.0 + costOfDistance(distance));
        }
    }

    void collectBelow()
    {
        mTable = FGenIntLines::tableEndAt(mText, mLine);
        const int stop = std::min(mText.size(), mLine.end + kFarDown);
        const size_t before = mCandidates.size();
        Span line = mLine;
        mSeen.clear();
        for (int distance = 1; line.end < stop && distance <= 12; ++distance) {
            // An empty line right above an anchor does not count.
            const bool isEmptyAbove = line.begin == line.end;
            line = lineAround(mText, line.end + 1);
            double cost = 11.0 + 1.5 * costOfDistance(distance);
            if (mTable.isLast && mCandidates.size() == before) // nothing but blanks between
                cost = mTable.grows ? 3.0 + distance : 9.0 + distance;
            collectLine(line, isEmptyAbove ? 1 - distance : -distance, cost);
        }
    }

    /// Finds out which anchors stand once, and which others begin or end with the place meant.
    void locate()
    {
        std::vector<FGenIntAnchor> anchors;
        std::map<std::u16string, size_t> known;
        std::vector<size_t> indices;
        for (const Candidate &candidate : mCandidates) {
            const auto entry = known.emplace(foldAnchor(candidate.anchor), anchors.size());
            if (entry.second) {
                anchors.emplace_back();
                anchors.back().folded = entry.first->first;
                anchors.back().wantFirst = anchors.back().wantLast = true;
            }
            indices.push_back(entry.first->second);
        }
        findAnchors(*mHeld, 0, mHeld->size(), &anchors);
        std::vector<Candidate> kept;
        for (size_t i = 0; i < mCandidates.size(); ++i) {
            Candidate &candidate = mCandidates[i];
            const FGenIntAnchor &anchor = anchors[indices[i]];
            const bool isFirst = anchor.first == candidate.at;
            const bool isLast = anchor.last == candidate.at;
            if (!isFirst && !isLast)
                continue;
            candidate.rule.first = isFirst && !isLast;
            candidate.cost += isFirst && isLast ? 0.0 : 4.0;
            if (!(isFirst && isLast) && candidate.rule.line < 0)
                candidate.cost += 4.0;
            kept.push_back(candidate);
        }
        mCandidates = kept;
    }

    void addLastResorts()
    {
        const auto count = [this](int from, int to) {
            return static_cast<int>(
                std::count(mText.begin() + from, mText.begin() + to, QLatin1Char('\n')));
        };
        mLineNumber = count(0, mLine.begin);
        int end = mText.size();
        while (end > mCell.end && mText[end - 1].isSpace())
            --end;
        const int fromEnd = 1 + count(mCell.end, end);
        add(QString(), -1, mLineNumber, mColumn, 16.0 + 1.5 * costOfDistance(mLineNumber));
        const bool isLastRow = fromEnd <= 2 && mTable.isLast && mTable.grows;
        add(QString(), -1, -fromEnd, mColumn,
            (isLastRow ? 4.0 : 18.0) + 1.5 * costOfDistance(fromEnd));
    }

    /// Leaves the cheapest candidates that don't rely on the same text.
    void pickDifferent(size_t most)
    {
        std::vector<Candidate> picked;
        std::map<int, int> perLine;
        for (const Candidate &candidate : mCandidates) {
            const auto isAkin = [&](const Candidate &other) {
                return candidate.at >= 0 && other.at >= 0 &&
                       candidate.at < other.at + other.anchor.size() &&
                       other.at < candidate.at + candidate.anchor.size();
            };
            if (picked.size() >= most || std::any_of(picked.begin(), picked.end(), isAkin))
                continue;
            const bool isOwnLine = candidate.rule.line == 0;
            if (candidate.at >= 0 && ++perLine[candidate.rule.line] > (isOwnLine ? 2 : 1))
                continue;
            picked.push_back(candidate);
        }
        mCandidates = picked;
    }

    QVector<FGenIntRule> verified(int most) const
    {
        QVector<FGenIntRule> rules;
        for (const Candidate &candidate : mCandidates)
            rules.append(candidate.rule);
        std::vector<bool> reads(mCandidates.size(), false);
        FGenIntReaderCore reader(*mHeld);
        for (const FGenIntReading &reading : reader.read(rules, mColumns)) {
            reads[static_cast<size_t>(reading.rule)] =
                reading.line == mLineNumber + 1 &&
                reading.columnFirst == mCell.begin - mLine.begin + 1 &&
                reading.columnLast == mCell.end - mLine.begin;
        }
        QVector<FGenIntRule> good;
        for (int i = 0; i < rules.size() && good.size() < most; ++i)
            if (reads[static_cast<size_t>(i)])
                good.append(rules[i]);
        return good;
    }

    const QString &mText;
    const Span mCell;
    const FGenIntColumns mColumns;
    const FCells mCells;
    const Span mLine;   ///< of the cell
    const QString mRow; ///< its text
    const int mColumn;
    std::unique_ptr<FGenIntText> mHeld;
    std::vector<Candidate> mCandidates;
    std::set<QString> mSeen;
    int mLineNumber = 0; ///< from 0
    FGenIntLines::TableEnd mTable;
};
/// Finds the cell at a position, and its column in the line.
bool findCell(const QString &text, int position, const FGenIntColumns &columns, Span *cell,
              int *column)
{
    if (position < 0 || position > text.size())
        return false;
    const Span line = lineAround(text, position);
    const QString row = text.mid(line.begin, line.end - line.begin);
    const int wanted = position - line.begin;
    bool found = false;
    FCells(columns).find(row, [&](int at, int begin, int length) {
        // Of two that touch it is the second one.
        if (length > 0 && begin <= wanted && wanted <= begin + length) {
            bool ok = false;
            const double value = row.mid(begin, length).toDouble(&ok);
            if (ok && !qIsNaN(value)) {
                found = true;
                *cell = {line.begin + begin, line.begin + begin + length};
                *column = at;
            }
        }
        return begin + length > wanted;
    });
    return found;
}
} // namespace

bool FGenIntRuleProposals::cellAt(const QString &text, int position, const FGenIntColumns &columns,
                                  int *begin, int *length)
{
    Span cell;
    int column = -1;
    const bool found = findCell(text, position, columns, &cell, &column);
    if (found) {
        *begin = cell.begin;
        *length = cell.end - cell.begin;
    }
    return found;
}

QVector<FGenIntRule> FGenIntRuleProposals::propose(const QString &text, int position,
                                                   const FGenIntColumns &columns, int most)
{
    Span cell;
    int column = -1;
    if (most <= 0 || !findCell(text, position, columns, &cell, &column))
        return {};
    return FProposer(text, cell, column, columns).run(most);
}

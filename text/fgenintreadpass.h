// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTREADPASS_H
#define FGENINTREADPASS_H

#include "fgenintanchors.h"
#include "fgenintcells.h"
#include "fgenintreadercore.h"

#include <QElapsedTimer>
#include <map>
#include <vector>

/// Rule by rule pass over a text in one of its forms, bytes or UTF-16. Of bytes a line that holds
/// others than ASCII is decoded, so that columns count characters.
///
/// The results are void if the text is found not to be plain on the way.
template <class U>
class FGenIntReadPass
{
public:
    FGenIntReadPass(const FGenIntText &text, const QVector<FGenIntRule> &rules,
                    const FGenIntColumns &columns);

    /// Indices of the rules in reading order.
    const std::vector<int> &order() const { return mOrder; }

    /// Starts the clock for separator expressions.
    void start(int timeLimitMs);
    void setCountLines(bool count) { mCountLines = count; }
    /// Lets lines be searched on which an expression could run on for long.
    void allowLongSearches() { mLongSearches = true; }

    enum Outcome { Done, TooLate, NeedsLongSearch };
    /// Reads one rule. Anything but Done leaves \p reading unfinished.
    Outcome evaluate(int rule, FGenIntReading *reading);

private:
    /// Stretch that is read as a line, and the physical line it is part of.
    struct Line
    {
        qint64 begin = 0, end = 0;
        qint64 physical = 0;    ///< begin of the physical line
        bool there = true;      ///< false: nothing is read
        bool displaced = false; ///< another line than the one asked for
    };
    /// A line in the form that its cells are looked for; positions count from the physical begin.
    template <class V>
    struct Row
    {
        const V *units = nullptr;
        qint64 from = 0;           ///< where reading begins
        qint64 begin = 0, end = 0; ///< without white space ahead and the line's end mark
    };
    enum Doubt { NoDoubt = 0, Touches = 1, Lacks = 2 };
    struct Average
    {
        int rule = -1;
        int rows = 0;
        qint64 start = 0; ///< of the window
        bool reachesTop = false;
        bool full = false;
        double sum = 0.0;
        qint64 count = 0;   ///< rows added up
        qint64 numeric = 0; ///< rows with a number of their own
        int doubts = NoDoubt;
        bool hasNumber = false;
        double number = 0.0; ///< of the cell read last
        qint64 cell = 0, length = 0;
        Line row;
    };

    void findRules();
    void sortIndices();
    Outcome readSingle(int rule, FGenIntReading *reading);
    template <class V>
    Outcome readCell(int rule, const Line &line, const Row<V> &row, FGenIntReading *reading);
    Outcome readAverages();
    Outcome readRow(const Line &line);
    template <class V>
    Outcome addRow(const Line &line, const Row<V> &row);
    void openAverage(Average *average) const;
    void report(const Average &average, FGenIntReading *reading);
    Line pickLine(const FGenIntRule &rule, qint64 anchor) const;
    Line lineFromTop(qint64 from, qint64 limit, qint64 line) const;
    Line lineFromEnd(qint64 limit, qint64 line) const;
    /// Calls \p use with the row of a line, of bytes or decoded.
    template <class Use>
    Outcome withRow(const Line &line, Use use);
    template <class V>
    Row<V> trimmed(const V *units, qint64 from, qint64 end) const;
    template <class V>
    FGenIntCellFinder<V> &finder();
    template <class V>
    Outcome prepare(const Row<V> &row);
    template <class V>
    int doubtsOf(const Row<V> &row, bool anchored, qint64 cell, qint64 length) const;
    bool isUnfinished(qint64 end) const;
    void place(const Line &line, qint64 cell, qint64 length, FGenIntReading *reading) const;

    const FGenIntText &mText;
    const QVector<FGenIntRule> &mRules;
    const U *mUnits = nullptr;
    qint64 mTrimmed = 0;           ///< size without the white space at the end
    std::vector<qint64> mAnchorAt; ///< of each rule, in the trimmed text
    std::vector<qint64> mSortKey;  ///< of each rule, in the whole text; 0 without a hit
    std::vector<int> mAnchorSize;  ///< of each rule, in units
    std::vector<int> mOrder;
    FGenIntSeparator mSeparator;
    FGenIntCellFinder<U> mFinder;
    FGenIntCellFinder<char16_t> mDecodedFinder;
    QString mDecoded; ///< the stretch of bytes that was decoded last
    qint64 mDecodedBegin = -1, mDecodedEnd = -1;
    std::vector<Average> mAverages; ///< by column
    std::map<int, size_t> mAverageOf;
    bool mAveragesRead = false;
    QElapsedTimer mClock;
    qint64 mTimeLimitMs = 0;
    bool mLongSearches = false;
    bool mCountLines = true;
};
#endif

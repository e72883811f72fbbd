// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTCELLS_H
#define FGENINTCELLS_H

#include "fgenintrules.h"

#include <QElapsedTimer>
#include <QRegExp>
#include <QString>
#include <array>
#include <vector>

/// What stands between columns, or, in number mode, what a column is.
///
/// White space and single characters are found without the expression engine.
class FGenIntSeparator
{
public:
    struct Match
    {
        qint64 position = -1, length = 0;
    };

    /// The expression that separates columns, for number mode the one that finds numbers.
    static QString pattern(const FGenIntColumns &columns);
    explicit FGenIntSeparator(const FGenIntColumns &columns);

    bool isNumber() const { return mKind == Number; }
    /// True if a search may take long: it goes through the expression engine.
    bool isExpression() const { return mKind == Expression; }
    int patternLength() const { return mExpression.pattern().size(); }

    /// First number or separator at or behind \p from. An expression searches \p text instead,
    /// which holds the same line.
    template <class U>
    Match next(const U *line, qint64 size, qint64 from, const QString &text) const;

private:
    enum Kind { Number, Empty, Simple, Expression };
    /// A set of characters, one of them or a run of them.
    struct Alternative
    {
        std::array<bool, 128> ascii = {};
        bool unicodeSpace = false;
        bool run = false;
        bool holds(uint unit) const;
    };
    bool parseSimple(const QString &pattern);

    Kind mKind = Number;
    std::vector<Alternative> mAlternatives;
    std::array<bool, 128> mAny = {};
    bool mAnyUnicodeSpace = false;
    QRegExp mExpression;
};

/// Finds cells of one line after the other; goes on where it stopped when a further cell of the
/// same line is asked for.
template <class U>
class FGenIntCellFinder
{
public:
    struct Cell
    {
        qint64 position = -1, length = 0; ///< as FGenIntReaderCore::parseLine() gives them
        bool found = false;
    };

    explicit FGenIntCellFinder(const FGenIntSeparator &separator)
        : mSeparator(separator)
    {
    }
    void setLine(const U *line, qint64 size);
    Cell find(int column);

private:
    const FGenIntSeparator &mSeparator;
    const U *mLine = nullptr;
    qint64 mSize = 0;
    QString mText; ///< the line again, for the expression engine
    qint64 mColumn = 0, mCursor = 0;
    bool mExhausted = false; ///< no further column behind mCursor
    bool mStuck = false;     ///< the separator matches nothing: all further columns are here
};

/// The number that all of \p text spells, as QString::toDouble() has it.
template <class U>
double toNumber(const U *text, qint64 size, bool *ok);

/// True for white space as expressions know it.
inline bool isSpaceUnit(uint unit)
{
    return unit < 0x80 ? unit == ' ' || (unit >= 9 && unit <= 13)
                       : QChar(static_cast<ushort>(unit)).isSpace();
}
/// True for what expressions take for a digit.
inline bool isDigitUnit(uint unit)
{
    return unit < 0x80 ? unit - '0' < 10U : QChar(static_cast<ushort>(unit)).isDigit();
}
#endif

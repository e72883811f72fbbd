// SPDX-License-Identifier: Apache-2.0
#include "fgenintcells.h"

#include "fboundedexpression.h"

#include <algorithm>
#include <charconv>

namespace {
/// Number of digits from \p i on.
template <class U>
qint64 digits(const U *p, qint64 i, qint64 n)
{
    const qint64 from = i;
    while (i < n && isDigitUnit(p[i]))
        ++i;
    return i - from;
}

bool isSign(uint unit) { return unit == '+' || unit == '-'; }

/// Length of the exponent at \p i; 0 if there is none.
template <class U>
qint64 exponent(const U *p, qint64 i, qint64 n)
{
    if (i >= n || (p[i] != 'e' && p[i] != 'E'))
        return 0;
    const qint64 sign = i + 1 < n && isSign(p[i + 1]) ? 1 : 0;
    const qint64 count = digits(p, i + 1 + sign, n);
    return count ? 1 + sign + count : 0;
}

template <class U>
FGenIntSeparator::Match nextNumber(const U *p, qint64 n, qint64 from)
{
    qint64 i = from;
    while (i < n && !isDigitUnit(p[i]))
        ++i;
    if (i >= n)
        return {};
    // Everything ahead of its first digit that can belong to a number is a point and a sign.
    qint64 begin = i;
    const bool point = begin > from && p[begin - 1] == '.';
    begin -= point;
    begin -= begin > from && isSign(p[begin - 1]);
    i += digits(p, i, n);
    if (!point && i < n && p[i] == '.') {
        const qint64 fraction = digits(p, i + 1, n);
        i += fraction ? 1 + fraction : 0;
    }
    i += exponent(p, i, n);
    return {begin, i - begin};
}

/// True if the text is sign, digits with at most one point among or around them, exponent:
/// spellings that every conversion agrees on.
bool isCommonSpelling(const char *p, qint64 n)
{
    qint64 i = n > 0 && isSign(static_cast<uchar>(p[0])) ? 1 : 0;
    const qint64 whole = digits(p, i, n);
    i += whole;
    if (i < n && p[i] == '.') {
        const qint64 fraction = digits(p, i + 1, n);
        if (whole == 0 || fraction == 0)
            return false;
        i += 1 + fraction;
    } else if (whole == 0) {
        return false;
    }
    return i + exponent(p, i, n) == n;
}
} // namespace

bool FGenIntSeparator::Alternative::holds(uint unit) const
{
    return unit < 0x80 ? ascii[unit] : unicodeSpace && isSpaceUnit(unit);
}

QString FGenIntSeparator::pattern(const FGenIntColumns &columns)
{
    if (columns.numbers)
        return QStringLiteral("[-+]?(\\.\\d+|\\d+(\\.\\d+)?)([Ee][-+]?\\d+)?");
    QString pattern = columns.spacesAndTabs ? QStringLiteral("\\s+") : QString();
    if (!columns.regExp.isEmpty())
        pattern += pattern.isEmpty() ? columns.regExp : QLatin1Char('|') + columns.regExp;
    return pattern;
}

FGenIntSeparator::FGenIntSeparator(const FGenIntColumns &columns)
{
    if (columns.numbers)
        return;
    const QString pattern = FGenIntSeparator::pattern(columns);
    if (pattern.isEmpty()) {
        mKind = Empty;
    } else if (parseSimple(pattern)) {
        mKind = Simple;
    } else {
        mKind = Expression;
        mExpression = FBoundedExpression::compiled(pattern);
    }
}

/// Takes alternatives of one character or one set each, with "+" or without.
bool FGenIntSeparator::parseSimple(const QString &pattern)
{
    static const QString special = QStringLiteral("^$()[]{}?*+.|\\");
    const int n = pattern.size();
    int i = 0;
    const auto takeOne = [&](Alternative *to, bool inSet) {
        QChar c = pattern[i++];
        if (c == QLatin1Char('\\') && i < n) {
            c = pattern[i++];
            if (c == QLatin1Char('s')) {
                for (uint u = 0; u < 0x80; ++u)
                    to->ascii[u] = to->ascii[u] || isSpaceUnit(u);
                to->unicodeSpace = true;
                return true;
            }
            if (c == QLatin1Char('t'))
                c = QLatin1Char('\t');
            else if (c.unicode() >= 0x80 || c.isLetterOrNumber())
                return false;
        } else if (inSet ? c == QLatin1Char('^') || c == QLatin1Char('-') || c == QLatin1Char('[')
                         : special.contains(c)) {
            return false;
        }
        if (c.unicode() >= 0x80 || c.unicode() == 0)
            return false;
        to->ascii[c.unicode()] = true;
        return true;
    };
    for (;;) {
        Alternative one;
        if (i >= n)
            return false;
        if (pattern[i] == QLatin1Char('[')) {
            ++i;
            do {
                if (i >= n || pattern[i] == QLatin1Char(']') || !takeOne(&one, true))
                    return false;
            } while (i >= n || pattern[i] != QLatin1Char(']'));
            ++i;
        } else if (!takeOne(&one, false)) {
            return false;
        }
        if (i < n && pattern[i] == QLatin1Char('+')) {
            one.run = true;
            ++i;
        }
        for (size_t u = 0; u < mAny.size(); ++u)
            mAny[u] = mAny[u] || one.ascii[u];
        mAnyUnicodeSpace = mAnyUnicodeSpace || one.unicodeSpace;
        mAlternatives.push_back(one);
        if (i == n)
            return true;
        if (pattern[i++] != QLatin1Char('|'))
            return false;
    }
}

template <class U>
FGenIntSeparator::Match FGenIntSeparator::next(const U *line, qint64 size, qint64 from,
                                               const QString &text) const
{
    if (mKind == Number)
        return nextNumber(line, size, from);
    if (mKind == Empty)
        return {from, 0};
    if (mKind == Expression) {
        const int at = mExpression.indexIn(text, static_cast<int>(from));
        return {at, at < 0 ? 0 : mExpression.matchedLength()};
    }
    for (qint64 i = from; i < size; ++i) {
        const uint unit = line[i];
        if (unit < 0x80 ? !mAny[unit] : !(mAnyUnicodeSpace && isSpaceUnit(unit)))
            continue;
        qint64 longest = 1;
        for (const Alternative &one : mAlternatives) {
            if (one.run && one.holds(unit)) {
                qint64 end = i + 1;
                while (end < size && one.holds(line[end]))
                    ++end;
                longest = std::max(longest, end - i);
            }
        }
        return {i, longest};
    }
    return {};
}

template <class U>
void FGenIntCellFinder<U>::setLine(const U *line, qint64 size)
{
    if (line == mLine && size == mSize)
        return;
    mLine = line;
    mSize = size;
    mColumn = mCursor = 0;
    mExhausted = mStuck = false;
    if (mSeparator.isExpression()) {
        const int n = static_cast<int>(std::min<qint64>(size, (1 << 30) - 64));
        if constexpr (sizeof(U) == 1)
            mText = QString::fromLatin1(reinterpret_cast<const char *>(line), n);
        else
            mText = QString(reinterpret_cast<const QChar *>(line), n);
    }
}

template <class U>
typename FGenIntCellFinder<U>::Cell FGenIntCellFinder<U>::find(int column)
{
    if (column < mColumn) {
        mColumn = mCursor = 0;
        mExhausted = mStuck = false;
    }
    while (mColumn < column && !mStuck) {
        const FGenIntSeparator::Match match =
            mExhausted ? FGenIntSeparator::Match() : mSeparator.next(mLine, mSize, mCursor, mText);
        if (match.position < 0) {
            mExhausted = true;
            return {};
        }
        mCursor = match.position + match.length;
        mStuck = match.length == 0;
        ++mColumn;
    }
    const FGenIntSeparator::Match match =
        mExhausted ? FGenIntSeparator::Match() : mSeparator.next(mLine, mSize, mCursor, mText);
    if (mSeparator.isNumber()) {
        return match.position < 0 ? Cell{mCursor, 0, false}
                                  : Cell{match.position, match.length, true};
    }
    return {mCursor, (match.position < 0 ? mSize : match.position) - mCursor, true};
}

template <class U>
double toNumber(const U *text, qint64 size, bool *ok)
{
    const U *const whole = text;
    const qint64 wholeSize = size;
    while (size > 0 && isSpaceUnit(text[size - 1]))
        --size;
    while (size > 0 && isSpaceUnit(*text)) {
        ++text;
        --size;
    }
    char buffer[64];
    if (size > 0 && size <= static_cast<qint64>(sizeof buffer)) {
        bool ascii = true;
        for (qint64 i = 0; i < size; ++i) {
            buffer[i] = static_cast<char>(text[i]);
            ascii = ascii && text[i] < 0x80;
        }
        if (ascii && isCommonSpelling(buffer, size)) {
            const char *begin = buffer + (buffer[0] == '+' ? 1 : 0);
            double value = 0.0;
            const auto result = std::from_chars(begin, buffer + size, value);
            if (result.ec == std::errc() && result.ptr == buffer + size) {
                *ok = true;
                return value;
            }
        }
    }
    const int n = static_cast<int>(std::min<qint64>(wholeSize, (1 << 30) - 64));
    if constexpr (sizeof(U) == 1)
        return QString::fromLatin1(reinterpret_cast<const char *>(whole), n).toDouble(ok);
    else
        return QString(reinterpret_cast<const QChar *>(whole), n).toDouble(ok);
}

template class FGenIntCellFinder<uchar>;
template class FGenIntCellFinder<char16_t>;
template double toNumber(const uchar *text, qint64 size, bool *ok);
template double toNumber(const char16_t *text, qint64 size, bool *ok);

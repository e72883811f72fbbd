// SPDX-License-Identifier: Apache-2.0
#include "fgenintdoubt.h"

#include "fgenintcells.h"

#include <algorithm>

namespace {
/// A line with a blank on either side without end.
template <class U>
struct FLine
{
    const U *units;
    qint64 size;
    uint operator[](qint64 i) const { return i >= 0 && i < size ? units[i] : ' '; }
    bool digit(qint64 i) const { return (*this)[i] - '0' < 10U; }
};

bool isWord(uint u)
{
    if (u < 0x80)
        return (u | 0x20) - 'a' < 26U || u == '_';
    return QChar(static_cast<ushort>(u)).isLetter();
}

/// Characters that make something else of a number they touch, whatever follows.
bool isForeign(uint u)
{
    if (u < 0x80)
        return u == '*' || u == '^' || u == 0;
    switch (u) {
    case 0x00B7: // middle dot
    case 0x00D7: // multiplication sign
    case 0x066B: // decimal separator
    case 0xFF0E: // full width stop
    case 0xFFFD: // what could not be decoded
        return true;
    default:
        return QChar(static_cast<ushort>(u)).isNumber();
    }
}

/// Dashes that are printed for a minus but do not count as one.
bool isDash(uint u)
{
    return (u >= 0x2010 && u <= 0x2015) || u == 0x2212 || u == 0xFE63 || u == 0xFF0D;
}

/// Blanks and marks that group digits by three.
bool isGroupMark(uint u)
{
    return u == 0x00A0 || u == 0x2009 || u == 0x202F || u == '\'' || u == 0x2019;
}

template <class U>
bool isSignAt(const FLine<U> &line, qint64 i)
{
    return line[i] == '+' || line[i] == '-';
}

/// True if a number begins at \p i.
template <class U>
bool numberAt(const FLine<U> &line, qint64 i)
{
    i += isSignAt(line, i);
    i += line[i] == '.';
    return line.digit(i);
}

/// True unless the comma at \p comma, between two digits, can only part two numbers.
template <class U>
bool commaInNumber(const FLine<U> &line, qint64 comma)
{
    constexpr qint64 far = 256; // a longer stretch of digits and commas is a list
    const auto belongs = [&](qint64 i) {
        return line.digit(i) || line[i] == '.' || line[i] == ',';
    };
    qint64 begin = comma;
    qint64 end = comma;
    while (belongs(begin - 1) && comma - begin < far)
        --begin;
    while (belongs(end + 1) && end - comma < far)
        ++end;
    ++end;
    while (end > comma && !line.digit(end - 1))
        --end; // "1,2," and "1,2."
    if (comma - begin >= far || end - comma >= far)
        return false;
    const auto isExponent = [&](qint64 i) {
        const qint64 e = i - isSignAt(line, i);
        return (line[e] | 0x20) == 'e' && line.digit(e - 1);
    };
    if (isExponent(begin - 1))
        return false;
    qint64 parts = 1;
    bool groups = true; // all parts behind the first have three digits
    bool whole = true;  // no part has a point
    for (qint64 i = begin, from = begin, point = -1; i <= end; ++i) {
        if (i < end && line[i] == '.') {
            point = point < 0 ? i : point;
            whole = false;
        } else if (i == end || line[i] == ',') {
            const qint64 length = (point < 0 ? i : point) - from;
            groups = groups && (parts == 1 ? point < 0 && length <= 3 && line[from] != '0'
                                           : length == 3 && (point < 0 || i == end));
            parts += i < end;
            from = i + 1;
            point = -1;
        }
    }
    if (groups || parts > 2)
        return groups;
    if (whole)
        return true; // 3,14
    // 1.234,56
    const qint64 lastPoint = comma - 4;
    bool points = lastPoint > begin && line[lastPoint] == '.' && line[begin] != '0';
    for (qint64 i = lastPoint; points && i > begin; i -= 4)
        points = line[i] == '.' && (i - begin <= 3 || line[i - 4] == '.');
    for (qint64 i = comma + 1; points && i < end; ++i)
        points = line.digit(i);
    return points;
}

/// True if the number with the sign at \p sign, behind a digit, is a field of its own: fields of
/// fixed width run into each other when they fill up. "1.5E-05-2.5E-03" and "93-2.5E-03" are two
/// numbers for anybody, and so is "-12.345-67.890" by its decimals; "1.234-105" lacks the letter of
/// an exponent, and "1.5-2.5" is as likely a range.
template <class U>
bool isJoined(const FLine<U> &line, qint64 sign)
{
    const auto isExponent = [&](qint64 i) {
        return (line[i] | 0x20) == 'e' && (line.digit(i - 1) || line[i - 1] == '.');
    };
    qint64 i = sign + 1;
    while (line.digit(i))
        ++i;
    if (line[i] != '.' || !line.digit(i + 1))
        return false;
    const qint64 fraction = i + 1;
    for (++i; line.digit(i);)
        ++i;
    if (isExponent(i) && line.digit(i + 1 + isSignAt(line, i + 1)))
        return true;
    qint64 begin = sign;
    while (line.digit(begin - 1))
        --begin;
    if (isExponent(begin - 1 - isSignAt(line, begin - 1)))
        return true;
    return line[begin - 1] == '.' && i - fraction == sign - begin && sign - begin >= 3;
}

/// True if a time with its unit ends the word that goes on at \p end: "0.25s", "1.5ms". Other units
/// are also names or factors: "2s" may be an orbital, "1k" a thousand.
template <class U>
bool isTime(const FLine<U> &line, qint64 end)
{
    qint64 i = end - 1;
    while (line.digit(i))
        --i;
    const uint after = line[end];
    const qint64 unit = after == 'm' || after == 'u' || after == 'n' ? end + 1 : end;
    return line[i] == '.' && line[unit] == 's' && !isWord(line[unit + 1]) && !line.digit(unit + 1);
}

/// True if the colon at \p colon parts a time of day or a span: "00:01:23.45" is no number of
/// hours.
template <class U>
bool isClock(const FLine<U> &line, qint64 colon)
{
    return line[colon] == ':' && line.digit(colon - 1) && line.digit(colon + 1) &&
           line[colon + 1] <= '5' && line.digit(colon + 2) && !line.digit(colon + 3);
}

/// True if a fraction stands around the slash: "1/3". Longer numbers count something, "12/100".
template <class U>
bool isFraction(const FLine<U> &line, qint64 slash)
{
    return line[slash] == '/' && line.digit(slash - 1) && !line.digit(slash - 2) &&
           line.digit(slash + 1) && !line.digit(slash + 2) && line[slash + 2] != '/';
}

template <class U>
bool touchesBefore(const FLine<U> &line, qint64 begin, qint64 end, bool anchored)
{
    const bool isSigned = isSignAt(line, begin);
    const uint before = line[begin - 1];
    if (anchored) {
        // An anchor may well end in a letter that the number follows; but not within a number.
        return !isSigned && (line.digit(begin - 1) ||
                             ((before == '.' || before == ',') && line.digit(begin - 2)));
    }
    if (isSigned && line.digit(begin - 1))
        return !isJoined(line, begin);
    if (line.digit(begin - 1) || isWord(before) || isForeign(before) || isDash(before))
        return true;
    if (isSigned)
        return isSignAt(line, begin - 1) &&
               !isSignAt(line, begin - 2); // "--5"; not a rule of dashes
    if (isClock(line, begin - 1))
        return true;
    if (before == '/')
        return isFraction(line, begin - 1);
    if (before == '.')
        return true; // dots that lead to a number take its first digits for a fraction
    if (before == ',' && line.digit(begin - 2))
        return line.digit(begin) && commaInNumber(line, begin - 1);
    return isGroupMark(before) && line.digit(begin - 2) && end - begin >= 3 &&
           line.digit(begin + 1) && line.digit(begin + 2);
}

template <class U>
bool touchesAfter(const FLine<U> &line, qint64 end)
{
    const uint after = line[end];
    const uint next = line[end + 1];
    if (isWord(after))
        return !isTime(line, end);
    if (line.digit(end) || isForeign(after) || isClock(line, end))
        return true;
    if (after == '.') {
        qint64 i = end;
        while (line[i] == '.')
            ++i;
        // "1.#QNAN" and "1.#INF" are no one.
        return line.digit(i) || (i == end + 1 && (isWord(next) || next == '#'));
    }
    if (after == ',')
        return line.digit(end + 1) && commaInNumber(line, end);
    if (after == '/')
        return isFraction(line, end);
    if (after == '+' || after == '-')
        return isWord(next) || (numberAt(line, end + 1) && !isJoined(line, end));
    return isGroupMark(after) && line.digit(end - 1) && line.digit(end + 1) &&
           line.digit(end + 2) && line.digit(end + 3) && !line.digit(end + 4);
}

/// Compares with a word in small letters; gives the position behind it, or -1.
template <class U>
qint64 behindWord(const FLine<U> &line, qint64 at, const char *word)
{
    for (; *word; ++word, ++at)
        if ((line[at] | 0x20) != static_cast<uint>(*word))
            return -1;
    return at;
}

/// True if the word that ends at \p end names the value behind it: "inf = 1.5e-03".
template <class U>
bool isLabel(const FLine<U> &line, qint64 end)
{
    while (end < line.size && isSpaceUnit(line[end]))
        ++end;
    return line[end] == '=' || line[end] == ':';
}

/// How many stars frame a heading: "***** Iteration 12 *****"; 0 if the line begins otherwise.
template <class U>
qint64 headingStars(const FLine<U> &line)
{
    qint64 begin = 0;
    while (begin < line.size && isSpaceUnit(line[begin]))
        ++begin;
    qint64 end = begin;
    while (line[end] == '*')
        ++end;
    qint64 text = end;
    while (text < line.size && isSpaceUnit(line[text]))
        ++text;
    return isWord(line[text]) ? end - begin : 0;
}

/// What stands around a field: true if it looks like a place for a number.
template <class U>
bool amongNumbers(const FLine<U> &line, qint64 from, qint64 begin, qint64 end)
{
    while (begin > from && (isSpaceUnit(line[begin - 1]) || isSignAt(line, begin - 1)))
        --begin;
    if (begin > from) {
        const uint before = line[begin - 1];
        if (line.digit(begin - 1) || before == '=' || before == ':' || before == ',' ||
            before == '*' || (before == '.' && line.digit(begin - 2)))
            return true;
    }
    while (end < line.size && isSpaceUnit(line[end]))
        ++end;
    return numberAt(line, end);
}
} // namespace

template <class U>
bool touchesOthers(const U *units, qint64 size, qint64 begin, qint64 end, qint64 from,
                   bool anchored)
{
    const FLine<U> line{units, size};
    return touchesBefore(line, begin, end, anchored && begin == from) || touchesAfter(line, end);
}

template <class U>
bool lacksNumber(const U *units, qint64 size, qint64 from, qint64 to)
{
    const FLine<U> line{units, size};
    for (qint64 i = from; i < to; ++i) {
        const uint u = units[i];
        if (u == '*') {
            qint64 end = i;
            while (line[end] == '*')
                ++end;
            // Few stars that begin a line are a mark of a heading rather than a field.
            const bool begins = std::all_of(units + from, units + i, isSpaceUnit);
            if (end - i >= (begins ? 4 : 2) && end - i != headingStars(line) &&
                amongNumbers(line, from, i, end))
                return true;
            i = end - 1;
        } else if (u == '#') {
            if (behindWord(line, i + 1, "ind") > 0 || behindWord(line, i + 1, "inf") > 0 ||
                behindWord(line, i + 1, "qnan") > 0 || behindWord(line, i + 1, "snan") > 0)
                return true;
        } else if (((u | 0x20) == 'n' || (u | 0x20) == 'i') && !isWord(line[i - 1]) &&
                   !line.digit(i - 1)) {
            qint64 end = behindWord(line, i, "nan");
            if (end > 0 && ((line[end] | 0x20) == 'q' || (line[end] | 0x20) == 's'))
                ++end;
            if (end > 0 && !isWord(line[end]) && !line.digit(end) && !isLabel(line, end))
                return true;
            end = behindWord(line, i, "inf");
            if (end > 0)
                end = std::max(end, behindWord(line, i, "infinity"));
            if (end > 0 && !isWord(line[end]) && !line.digit(end) && line[end] != '-' &&
                !isLabel(line, end) && amongNumbers(line, from, i, end))
                return true;
        }
    }
    return false;
}

template bool touchesOthers(const uchar *, qint64, qint64, qint64, qint64, bool);
template bool touchesOthers(const char16_t *, qint64, qint64, qint64, qint64, bool);
template bool lacksNumber(const uchar *, qint64, qint64, qint64);
template bool lacksNumber(const char16_t *, qint64, qint64, qint64);

// SPDX-License-Identifier: Apache-2.0
#include "ftecplotlexer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

using namespace FTecplot;

namespace {
std::string_view view(const char *from, const char *to) { return {from, size_t(to - from)}; }
bool isSign(char c) { return c == '=' || c == '(' || c == ')' || c == '[' || c == ']'; }
bool isBlank(char c) // commas separate as blanks do
{
    return c == ' ' || (c >= '\t' && c <= '\r') || c == ',';
}

/// Tells infinite from vanishing for a number that no double can hold, by the power of ten of its
/// first digit.
bool isTooLarge(std::string_view word)
{
    const std::string_view mantissa = word.substr(0, word.find_first_of("eE"));
    const auto digit = std::ptrdiff_t(mantissa.find_first_of("123456789"));
    const auto point = std::ptrdiff_t(std::min(mantissa.find('.'), mantissa.size()));
    long exponent = 0;
    if (mantissa.size() < word.size()) {
        std::string_view text = word.substr(mantissa.size() + 1);
        if (text[0] == '+')
            text.remove_prefix(1);
        if (std::from_chars(text.data(), text.data() + text.size(), exponent).ec != std::errc())
            return text[0] != '-';
    }
    return point - digit + exponent > 0;
}

/// A D stands for the exponent as an E does. Beyond the range of a double it becomes infinite or 0.
bool toDouble(std::string_view word, double *value)
{
    std::string copy;
    const size_t d = word.find_first_of("dD");
    if (d != std::string_view::npos && d > 0) {
        copy = word;
        copy[d] = 'e';
        word = copy;
    }
    if (!word.empty() && word[0] == '+') {
        word.remove_prefix(1);
        if (!word.empty() && word[0] == '-')
            return false;
    }
    const char *end = word.data() + word.size();
    const auto result = std::from_chars(word.data(), end, *value);
    if (result.ptr != end || result.ec == std::errc::invalid_argument)
        return false;
    if (result.ec == std::errc::result_out_of_range)
        *value = isTooLarge(word) ? std::numeric_limits<double>::infinity() : 0.0;
    if (result.ec == std::errc::result_out_of_range && word[0] == '-')
        *value = -*value;
    return true;
}
} // namespace

char FTecplot::upper(char c) { return c >= 'a' && c <= 'z' ? char(c - 'a' + 'A') : c; }

bool FTecplot::same(std::string_view text, std::string_view capitals)
{
    return text.size() == capitals.size() && std::equal(
                                                 text.begin(), text.end(), capitals.begin(),
                                                 [](char a, char b) { return upper(a) == b; });
}

bool FTecplot::startsWith(std::string_view text, std::string_view capitals)
{
    return same(text.substr(0, capitals.size()), capitals);
}

bool FTecplot::isRecord(std::string_view word)
{
    static constexpr std::array<std::string_view, 10> kRecords = {
        "TITLE",        "VARIABLES", "ZONE",           "TEXT",       "GEOMETRY",
        "CUSTOMLABELS", "USERREC",   "DATASETAUXDATA", "VARAUXDATA", "FILETYPE"};
    return std::any_of(kRecords.begin(), kRecords.end(),
                       [word](std::string_view record) { return same(word, record); });
}

bool FTecplot::toCount(std::string_view word, quint64 *count)
{
    const char *end = word.data() + word.size();
    const auto result = std::from_chars(word.data(), end, *count);
    return !word.empty() && result.ec == std::errc() && result.ptr == end;
}

bool FTecplot::toNumbers(std::string_view word, quint64 *count, double *value)
{
    *count = 1;
    const char *end = word.data() + word.size();
    const auto result = std::from_chars(word.data(), end, *value);
    if (result.ptr == end && result.ec == std::errc()) // nearly always
        return true;
    const size_t star = word.find('*');
    if (star == std::string_view::npos)
        return toDouble(word, value);
    return toCount(word.substr(0, star), count) && toDouble(word.substr(star + 1), value);
}

std::string FTecplot::unescaped(std::string_view text)
{
    std::string result;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 1 < text.size() && (text[i + 1] == '"' || text[i + 1] == '\\'))
            ++i;
        result += text[i];
    }
    return result;
}

void Lexer::next()
{
    skipBlanks();
    mToken.startsLine = mStartsLine;
    mToken.line = mLine;
    mStartsLine = false;
    if (mAt == mEnd) {
        mToken.kind = Kind::End;
        mToken.text = {};
        return;
    }
    const char *start = mAt;
    if (*mAt == '"' || (*mAt == '\'' && closingQuote() != mEnd)) {
        const char *close = closingQuote();
        if (close == mEnd && mBrokenLine == 0)
            mBrokenLine = mLine;
        mToken.kind = Kind::Text;
        mToken.text = view(start + 1, close);
        mAt = close == mEnd ? mEnd : close + 1;
    } else if (isSign(*mAt)) {
        ++mAt;
        mToken.kind = Kind::Sign;
        mToken.text = view(start, mAt);
    } else {
        do
            ++mAt;
        while (mAt != mEnd && !isBlank(*mAt) && !isSign(*mAt) && *mAt != '"');
        mToken.kind = Kind::Word;
        mToken.text = view(start, mAt);
    }
}

const char *Lexer::closingQuote() const
{
    for (const char *at = mAt + 1; at != mEnd && *at != '\n' && *at != '\r'; ++at) {
        if (*at == *mAt)
            return at;
        if (*at == '\\' && at + 1 != mEnd && (at[1] == '"' || at[1] == '\\'))
            ++at;
    }
    return mEnd;
}

void Lexer::skipBlanks()
{
    for (; mAt != mEnd; ++mAt) {
        if (*mAt == '#') {
            mAt = std::find_if(mAt, mEnd, [](char c) { return c == '\n' || c == '\r'; });
            if (mAt == mEnd)
                return;
        }
        if (!isBlank(*mAt))
            return;
        if (*mAt == '\n' || (*mAt == '\r' && (mAt + 1 == mEnd || mAt[1] != '\n'))) {
            ++mLine;
            mStartsLine = true;
        }
    }
}

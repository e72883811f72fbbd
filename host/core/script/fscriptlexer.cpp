// SPDX-License-Identifier: Apache-2.0
#include "fscriptlexer.h"

#include "ftext.h"

#include <algorithm>
#include <cstring>

namespace {
bool isNameStart(unsigned char c) { return std::isalpha(c) || c == '_' || c >= 0x80; }
bool isNamePart(unsigned char c) { return isNameStart(c) || std::isdigit(c); }
bool isDigit(const std::string &source, size_t at)
{
    return at < source.size() && std::isdigit(static_cast<unsigned char>(source[at]));
}
} // namespace

FScriptLexer::FScriptLexer(std::string source, size_t firstLine)
    : mSource(std::move(source))
    , mKnownLine(firstLine)
{
    if (mSource.compare(0, 3, "\xEF\xBB\xBF") == 0)
        mSource.replace(0, 3, "   ");
    mToken = scan(0);
}

FScriptToken FScriptLexer::take()
{
    FScriptToken taken = std::move(mToken);
    mToken = scan(taken.end);
    return taken;
}

void FScriptLexer::rescan() { mToken = scan(mToken.start); }

FScriptToken FScriptLexer::second() const { return scan(mToken.end); }

size_t FScriptLexer::skipBlanks(size_t at, bool *unclosed) const
{
    *unclosed = false;
    for (;;) {
        at = mSource.find_first_not_of(" \t\r\n\f\v", at);
        if (at == std::string::npos)
            return mSource.size();
        if (mSource[at] != '/')
            return at;
        if (mSource.compare(at, 2, "//") == 0) {
            at = mSource.find('\n', at);
            if (at == std::string::npos)
                return mSource.size();
        } else if (mSource.compare(at, 2, "/*") == 0) {
            const size_t end = mSource.find("*/", at + 2);
            if (end == std::string::npos) {
                *unclosed = true;
                return at;
            }
            at = end + 2;
        } else {
            return at;
        }
    }
}

FScriptToken FScriptLexer::scan(size_t from) const
{
    FScriptToken token;
    bool unclosed;
    const size_t at = skipBlanks(from, &unclosed);
    token.start = token.end = at;
    if (unclosed) {
        token.kind = FScriptToken::Bad;
        token.text = "a comment without end";
        token.end = mSource.size();
        return token;
    }
    if (at >= mSource.size())
        return token;
    const unsigned char c = static_cast<unsigned char>(mSource[at]);
    if (isNameStart(c)) {
        token.kind = FScriptToken::Name;
        while (token.end < mSource.size() &&
               isNamePart(static_cast<unsigned char>(mSource[token.end])))
            ++token.end;
        token.text = mSource.substr(at, token.end - at);
    } else if (std::isdigit(c) || (c == '.' && isDigit(mSource, at + 1))) {
        token.kind = FScriptToken::Number;
        token.whole = true;
        size_t end = at;
        while (isDigit(mSource, end))
            ++end;
        if (end < mSource.size() && mSource[end] == '.') {
            token.whole = false;
            ++end;
            while (isDigit(mSource, end))
                ++end;
        }
        if (end < mSource.size() && (mSource[end] == 'e' || mSource[end] == 'E')) {
            size_t digits = end + 1;
            if (digits < mSource.size() && (mSource[digits] == '+' || mSource[digits] == '-'))
                ++digits;
            if (isDigit(mSource, digits)) {
                token.whole = false;
                while (isDigit(mSource, digits))
                    ++digits;
                end = digits;
            }
        }
        token.end = end;
        token.text = mSource.substr(at, end - at);
    } else if (c == '"') {
        const size_t close = FLiteral::findEnd(mSource, at, mInList);
        if (close == std::string::npos || close - at > kMaxText) {
            token.kind = FScriptToken::Bad;
            token.text = close == std::string::npos ? "a text without closing quote"
                                                    : "a text of more than 1 GiB";
            token.end = close == std::string::npos ? mSource.size() : close + 1;
        } else if (std::memchr(&mSource[at], 0, close - at)) {
            token.kind = FScriptToken::Bad;
            token.text = "a text with a zero character";
            token.end = close + 1;
        } else {
            token.kind = FScriptToken::Text;
            token.text = FLiteral::unquoted(mSource, at, close);
            token.end = close + 1;
        }
    } else {
        token.kind = FScriptToken::Symbol;
        static const char *two[] = {"==", "!=", "<=", ">="};
        token.end = at + 1;
        for (const char *symbol : two)
            if (mSource[at] == symbol[0] && mSource.compare(at, 2, symbol) == 0)
                token.end = at + 2;
        token.text = mSource.substr(at, token.end - at);
    }
    return token;
}

void FScriptLexer::skipStatement()
{
    mInList = false;
    int depth = 0;
    while (mToken.kind != FScriptToken::End) {
        if (isSymbol("{"))
            ++depth;
        if (isSymbol("}")) {
            if (depth == 0)
                return;
            take();
            if (--depth == 0)
                return;
            continue;
        }
        const bool last = isSymbol(";") && depth == 0;
        take();
        if (last)
            return;
    }
}

void FScriptLexer::skipLine()
{
    const size_t end = mSource.find('\n', mToken.start);
    mToken = scan(end == std::string::npos ? mSource.size() : end + 1);
}

// Counts on from the place that was asked for last, or back: a line may hold many errors.
void FScriptLexer::place(size_t offset, size_t *line, size_t *column) const
{
    const auto countIn = [this](size_t from, size_t to) {
        return size_t(std::count_if(
            mSource.begin() + long(from), mSource.begin() + long(to),
            [](char c) { return (c & 0xC0) != 0x80; }));
    };
    const auto linesIn = [this](size_t from, size_t to) {
        return size_t(std::count(mSource.begin() + long(from), mSource.begin() + long(to), '\n'));
    };
    offset = std::min(offset, mSource.size());
    const bool back = offset < mKnownOffset;
    const size_t from = std::min(offset, mKnownOffset), to = std::max(offset, mKnownOffset);
    const size_t lines = linesIn(from, to);
    if (lines == 0) {
        const size_t moved = countIn(from, to);
        mKnownColumn = back ? mKnownColumn - moved : mKnownColumn + moved;
    } else {
        const size_t end = offset == 0 ? std::string::npos : mSource.rfind('\n', offset - 1);
        mKnownColumn = 1 + countIn(end == std::string::npos ? 0 : end + 1, offset);
        mKnownLine = back ? mKnownLine - lines : mKnownLine + lines;
    }
    mKnownOffset = offset;
    *line = mKnownLine;
    *column = mKnownColumn;
}

std::string FScriptLexer::found() const
{
    switch (mToken.kind) {
    case FScriptToken::End:
        return "end of file";
    case FScriptToken::Bad:
        return mToken.text;
    default:
        break;
    }
    std::string text = mSource.substr(mToken.start, mToken.end - mToken.start);
    if (text.size() > 40)
        text = S(Q(text.substr(0, 40)).left(30)) + "...";
    return mToken.kind == FScriptToken::Text ? text : "\"" + text + "\"";
}

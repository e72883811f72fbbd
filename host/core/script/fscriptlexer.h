// SPDX-License-Identifier: Apache-2.0
#ifndef FSCRIPTLEXER_H
#define FSCRIPTLEXER_H
#include <string>

/// A piece of a script.
struct FScriptToken
{
    enum Kind { End, Name, Number, Text, Symbol, Bad };
    Kind kind = End;
    std::string text;   ///< name, number or symbol as written; a text without its quotes
    bool whole = false; ///< a number without point and exponent
    size_t start = 0, end = 0;
};

/// Splits a script (UTF-8) into tokens, one ahead.
class FScriptLexer
{
public:
    /// \p firstLine: the number of the first line, for a part of a file.
    explicit FScriptLexer(std::string source, size_t firstLine = 1);

    const FScriptToken &peek() const { return mToken; }
    FScriptToken take();
    bool isSymbol(const char *symbol) const
    {
        return mToken.kind == FScriptToken::Symbol && mToken.text == symbol;
    }
    bool isName(const char *name) const
    {
        return mToken.kind == FScriptToken::Name && mToken.text == name;
    }
    /// Inside a list, quotes within a text need no escape. Set before its first token is read.
    void setInList(bool inList) { mInList = inList; }
    bool inList() const { return mInList; }
    /// The token behind the present one, without moving.
    FScriptToken second() const;
    /// Skips to behind the next ";" or to the end of the block that encloses it.
    void skipStatement();
    /// Passes over the rest of the present line.
    void skipLine();
    /// Reads the token that stands ahead anew, after the way of reading texts has changed.
    void rescan();
    /// Line and column of a place, from 1; a column counts characters.
    void place(size_t offset, size_t *line, size_t *column) const;
    /// The token in quotes for messages, shortened; "end of file" at the end.
    std::string found() const;
    const std::string &source() const { return mSource; }
    static constexpr size_t kMaxText = size_t(1) << 30;

private:
    FScriptToken scan(size_t from) const;
    size_t skipBlanks(size_t at, bool *unclosed) const;

    std::string mSource;
    FScriptToken mToken;
    bool mInList = false;
    mutable size_t mKnownOffset = 0, mKnownLine, mKnownColumn = 1; // of the place last asked for
};
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FTECPLOTLEXER_H
#define FTECPLOTLEXER_H
#include <QByteArray>
#include <string>
#include <string_view>

/// The words of a Tecplot ASCII file, and what they mean as numbers.
namespace FTecplot {
enum class Kind { Word, Text, Sign, End };

struct Token
{
    Kind kind = Kind::End;
    std::string_view text; // without the quotes; escapes as they stand
    int line = 1;
    bool startsLine = true;

    bool isSign(char sign) const { return kind == Kind::Sign && text[0] == sign; }
};

char upper(char c);
/// Compares ignoring case with a word in capitals.
bool same(std::string_view text, std::string_view capitals);
bool startsWith(std::string_view text, std::string_view capitals);
/// True for a word that begins a record.
bool isRecord(std::string_view word);
/// Reads a whole number from 0 on.
bool toCount(std::string_view word, quint64 *count);
/// One number, or several of the same value in the form "12*0.5".
bool toNumbers(std::string_view word, quint64 *count, double *value);
std::string unescaped(std::string_view text);

/// Splits a file into words, one at a time. The text must outlive it.
class Lexer
{
public:
    explicit Lexer(const QByteArray &text)
        : mAt(text.constData())
        , mEnd(mAt + text.size())
    {
        if (text.startsWith("\xef\xbb\xbf"))
            mAt += 3;
        next();
    }
    const Token &token() const { return mToken; }
    /// Line of a quoted text without an end, 0 if there is none.
    int brokenLine() const { return mBrokenLine; }
    void next();

private:
    /// The end of the quoted text that starts here; it stays on its line. mEnd if there is none.
    const char *closingQuote() const;
    void skipBlanks();

    const char *mAt;
    const char *mEnd;
    int mLine = 1;
    bool mStartsLine = true;
    int mBrokenLine = 0;
    Token mToken;
};
} // namespace FTecplot
#endif

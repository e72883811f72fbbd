// SPDX-License-Identifier: Apache-2.0
#ifndef FTEXT_H
#define FTEXT_H
#include <QRegExp>
#include <QString>
#include <QTextStream>
#include <memory>
#include <string>

using TString = std::string;
template <class T>
using f_shared_ptr = std::shared_ptr<T>;

/// Marks a text that a user sees: it stays as it is in the model, in scripts and in the log, and
/// FText::shown gives it in the user's language. lupdate -tr-function-alias QT_TRID_NOOP+=F_TEXT
/// finds the marks.
#define F_TEXT(text) QT_TRID_NOOP(text)
namespace FText {
QString shown(const std::string &marked);
/// A regular expression of a user; one that matches nothing if its repetitions multiply beyond
/// bounds, invalid if it is none.
QRegExp compiled(const QString &expression, bool caseSensitive);
} // namespace FText

/// Indent width of saved scripts.
constexpr unsigned TAB = 4;

/// Text conversions between the model (UTF-8) and Qt.
inline std::string S(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    return std::string(bytes.constData(), size_t(bytes.size()));
}
inline QString Q(const std::string &text)
{
    // Qt takes a byte order mark at the start for a sign of the encoding; here it is a character.
    const QString rest = QString::fromUtf8(text.data(), int(text.size()));
    return text.compare(0, 3, "\xef\xbb\xbf") == 0 ? QChar(0xfeff) + rest : rest;
}

/// Numbers as text, never localised. \p base is 2 to 36.
std::string fromNumber(int value, int base = 10);
std::string fromNumber(unsigned value, int base = 10);
std::string fromNumber(long long value, int base = 10);
std::string fromNumber(unsigned long value, int base = 10);
std::string fromNumber(double value, char format, int precision);

/// The shortest text that reads back to the same bits; "nan", "inf", "-inf" for the special ones.
std::string shortestNumber(double value);

/// Reads the whole of \p text as a number in C notation.
bool parseNumber(const std::string &text, double *value);

/// Compares \p b with the \p len bytes of \p a from \p pos on.
bool equals(const std::string &a, const std::string &b, bool caseSensitive = true,
            unsigned long pos = 0, unsigned long len = std::string::npos);
bool contains(const std::string &text, const std::string &needle, bool caseSensitive = true);
bool startsWith(const std::string &text, const std::string &needle, bool caseSensitive = true);
bool startsWith(const std::string &text, char needle, bool caseSensitive = true);
bool endsWith(const std::string &text, const std::string &needle, bool caseSensitive = true);
bool endsWith(const std::string &text, char needle, bool caseSensitive = true);

/// Position of the first or last match of the regular expression \p needle, npos if none. Here and
/// below an expression whose repetitions multiply beyond bounds matches nothing.
unsigned long indexOfEx(const std::string &text, const std::string &needle, unsigned long from = 0);
unsigned long lastIndexOfEx(const std::string &text, const std::string &needle,
                            unsigned long from = std::string::npos);

/// Replaces all occurrences in place; the second form takes a regular expression.
void replace(std::string &text, const std::string &from, const std::string &to,
             bool caseSensitive = true);
void replaceEx(std::string &text, const std::string &pattern, const std::string &to);

bool isNan(double value);
double quietNan();

QTextStream &operator<<(QTextStream &stream, const std::string &text);

namespace FFile {
/// Expands $NAME and ${NAME}; a variable that is not set expands to nothing.
std::string resolveEnv(const std::string &path);
} // namespace FFile

namespace FLargeText {
/// Reserves room as std::string does, of large pages where the text is large: it is filled once,
/// and mapping its memory in small pages would take longer than that.
void reserve(std::string *text, size_t size);
} // namespace FLargeText

namespace FUtf8 {
/// Offset of the first byte that isn't part of a UTF-8 text, npos if there is none.
size_t firstBadByte(const char *text, size_t size);
} // namespace FUtf8

/// Text literals of the script language. A backslash is an escape only in a run of backslashes
/// that ends at a double quote; everywhere else it stands for itself.
namespace FLiteral {
/// \p text in double quotes, as it reads back anywhere.
std::string quoted(const std::string &text);
/// End of the literal whose opening quote stands at \p open: the position of the closing quote, or
/// npos. Inside a list a bare quote ends the literal only before a comma, a bracket or the end.
size_t findEnd(const std::string &source, size_t open, bool inList);
/// The text of a literal between its quotes.
std::string unquoted(const std::string &source, size_t open, size_t close);
} // namespace FLiteral
#endif

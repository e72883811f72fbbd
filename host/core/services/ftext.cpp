// SPDX-License-Identifier: Apache-2.0
#include "ftext.h"

#include "fboundedexpression.h"

#include <QCoreApplication>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <sys/mman.h>

namespace {
QString numberText(qlonglong value, int base) { return QString::number(value, base); }
Qt::CaseSensitivity sensitivity(bool caseSensitive)
{
    return caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
}
// Positions in UTF-16 and in UTF-8 differ; the helpers speak of bytes.
unsigned long byteOffset(const QString &text, int position)
{
    return position < 0 ? std::string::npos : (unsigned long)(text.left(position).toUtf8().size());
}
} // namespace

QString FText::shown(const std::string &marked) { return qtTrId(marked.c_str()); }

QRegExp FText::compiled(const QString &expression, bool caseSensitive)
{
    QRegExp compiled = FBoundedExpression::compiled(expression);
    compiled.setCaseSensitivity(sensitivity(caseSensitive));
    return compiled;
}

std::string fromNumber(int value, int base) { return S(numberText(value, base)); }
std::string fromNumber(unsigned value, int base) { return S(numberText(value, base)); }
std::string fromNumber(long long value, int base) { return S(numberText(value, base)); }
std::string fromNumber(unsigned long value, int base)
{
    return S(QString::number(qulonglong(value), base));
}
std::string fromNumber(double value, char format, int precision)
{
    return S(QString::number(value, format, precision));
}

std::string shortestNumber(double value)
{
    if (std::isnan(value))
        return "nan";
    if (std::isinf(value))
        return value < 0 ? "-inf" : "inf";
    char buffer[40];
    const auto end = std::to_chars(buffer, buffer + sizeof buffer, value);
    return std::string(buffer, end.ptr);
}

bool parseNumber(const std::string &text, double *value)
{
    const char *begin = text.data(), *end = begin + text.size();
    if (begin != end && *begin == '+')
        ++begin;
    const auto result = std::from_chars(begin, end, *value);
    return result.ec == std::errc() && result.ptr == end && begin != end;
}

bool equals(const std::string &a, const std::string &b, bool caseSensitive, unsigned long pos,
            unsigned long len)
{
    if (pos > a.size())
        return false;
    const std::string part = pos == 0 && len >= a.size() ? a : a.substr(pos, len);
    return caseSensitive ? part == b : Q(part).compare(Q(b), Qt::CaseInsensitive) == 0;
}

bool contains(const std::string &text, const std::string &needle, bool caseSensitive)
{
    return caseSensitive ? text.find(needle) != std::string::npos
                         : Q(text).contains(Q(needle), Qt::CaseInsensitive);
}

bool startsWith(const std::string &text, const std::string &needle, bool caseSensitive)
{
    return Q(text).startsWith(Q(needle), sensitivity(caseSensitive));
}
bool startsWith(const std::string &text, char needle, bool caseSensitive)
{
    return startsWith(text, std::string(1, needle), caseSensitive);
}
bool endsWith(const std::string &text, const std::string &needle, bool caseSensitive)
{
    return Q(text).endsWith(Q(needle), sensitivity(caseSensitive));
}
bool endsWith(const std::string &text, char needle, bool caseSensitive)
{
    return endsWith(text, std::string(1, needle), caseSensitive);
}

unsigned long indexOfEx(const std::string &text, const std::string &needle, unsigned long from)
{
    if (from > text.size())
        return std::string::npos;
    const QString all = Q(text);
    const int start = Q(text.substr(0, from)).size();
    return byteOffset(all, FBoundedExpression::compiled(Q(needle)).indexIn(all, start));
}

unsigned long lastIndexOfEx(const std::string &text, const std::string &needle, unsigned long from)
{
    const QString all = Q(text);
    const int start = from >= text.size() ? -1 : Q(text.substr(0, from)).size();
    return byteOffset(all, FBoundedExpression::compiled(Q(needle)).lastIndexIn(all, start));
}

void replace(std::string &text, const std::string &from, const std::string &to, bool caseSensitive)
{
    text = S(Q(text).replace(Q(from), Q(to), sensitivity(caseSensitive)));
}
void replaceEx(std::string &text, const std::string &pattern, const std::string &to)
{
    text = S(Q(text).replace(FBoundedExpression::compiled(Q(pattern)), Q(to)));
}

bool isNan(double value) { return std::isnan(value); }
double quietNan() { return std::numeric_limits<double>::quiet_NaN(); }

QTextStream &operator<<(QTextStream &stream, const std::string &text) { return stream << Q(text); }

std::string FFile::resolveEnv(const std::string &path)
{
    static const QRegExp variable("\\$(\\{\\w+\\}|\\w+)");
    QString result;
    const QString text = Q(path);
    int from = 0;
    QRegExp match(variable);
    for (int at; (at = match.indexIn(text, from)) >= 0; from = at + match.matchedLength()) {
        result += text.mid(from, at - from);
        result += QString::fromLocal8Bit(
            qgetenv(match.cap(1).remove('{').remove('}').toLocal8Bit().constData()));
    }
    return S(result + text.mid(from));
}

void FLargeText::reserve(std::string *text, size_t size)
{
    constexpr size_t page = size_t(2) << 20;
    text->reserve(size);
    const size_t begin = (reinterpret_cast<size_t>(text->data()) + page - 1) / page * page;
    const size_t end = reinterpret_cast<size_t>(text->data() + size) / page * page;
    if (size >= 2 * page) // a system that has no large pages goes on without
        ::madvise(reinterpret_cast<void *>(begin), end - begin, MADV_HUGEPAGE);
}

std::string FLiteral::quoted(const std::string &text)
{
    std::string out;
    out.reserve(text.size() + 2);
    out = '"';
    for (size_t from = 0;;) {
        const size_t quote = text.find('"', from), end = std::min(quote, text.size());
        out.append(text, from, end - from);
        size_t run = 0; // of backslashes before the quote or the end: doubled
        while (run < end && text[end - run - 1] == '\\')
            ++run;
        out.append(run, '\\');
        if (quote == std::string::npos)
            return out + '"';
        out += "\\\"";
        from = quote + 1;
    }
}

size_t FLiteral::findEnd(const std::string &source, size_t open, bool inList)
{
    for (size_t i = open; (i = source.find('"', i + 1)) != std::string::npos;) {
        size_t run = i;
        while (run > open + 1 && source[run - 1] == '\\')
            --run;
        if ((i - run) % 2 != 0)
            continue;
        if (!inList)
            return i;
        const size_t next = source.find_first_not_of(" \t\r\n", i + 1);
        if (next == std::string::npos || source[next] == ',' || source[next] == ']')
            return i;
    }
    return std::string::npos;
}

std::string FLiteral::unquoted(const std::string &source, size_t open, size_t close)
{
    std::string out;
    FLargeText::reserve(&out, close - open);
    for (size_t i = open + 1; i < close;) {
        const void *slash = memchr(&source[i], '\\', close - i); // no look behind the literal
        const size_t run = slash ? size_t(static_cast<const char *>(slash) - &source[0]) : close;
        out.append(source, i, run - i);
        i = run;
        while (i < close && source[i] == '\\')
            ++i;
        out.append(source[i] == '"' ? (i - run) / 2 : i - run, '\\');
        if (i > run && i < close)
            out += source[i++];
    }
    return out;
}

size_t FUtf8::firstBadByte(const char *text, size_t size)
{
    const auto *b = reinterpret_cast<const unsigned char *>(text);
    for (size_t i = 0; i < size;) {
        const unsigned char c = b[i];
        if (c < 0x80) {
            constexpr size_t block = 64;
            unsigned char any = 0;
            if (i + block <= size)
                for (size_t k = 0; k < block; ++k)
                    any |= b[i + k];
            i += i + block <= size && any < 0x80 ? block : 1;
            continue;
        }
        const size_t more = c >= 0xC2 && c < 0xE0   ? 1
                            : c >= 0xE0 && c < 0xF0 ? 2
                            : c >= 0xF0 && c < 0xF5 ? 3
                                                    : 0;
        if (more == 0 || i + more >= size)
            return i;
        for (size_t k = 1; k <= more; ++k)
            if ((b[i + k] & 0xC0) != 0x80)
                return i;
        if ((c == 0xE0 && b[i + 1] < 0xA0) || (c == 0xED && b[i + 1] > 0x9F) ||
            (c == 0xF0 && b[i + 1] < 0x90) || (c == 0xF4 && b[i + 1] > 0x8F))
            return i;
        i += more + 1;
    }
    return std::string::npos;
}

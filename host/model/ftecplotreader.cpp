// SPDX-License-Identifier: Apache-2.0
#include "ftecplotreader.h"

#include "ftecplotlexer.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>

using namespace FTecplot;

namespace {
/// Numbers that "N*value" may make out of a small file; 128 MB.
constexpr quint64 kMostRepeated = quint64(16) << 20;

class Parser
{
public:
    explicit Parser(const QByteArray &text)
        : mText(text)
        , mMayRepeat(text.contains('*'))
        , mLexer(text)
    {
    }

    bool read(FTecplotData *data, QString *why)
    {
        const bool good = readAll();
        if (mLexer.brokenLine() > 0 && mWhy.isEmpty())
            fail(mLexer.brokenLine(), QStringLiteral("a quoted text without an end"),
                 QStringLiteral("a closing quote on the same line"));
        if (good && mWhy.isEmpty()) {
            *data = std::move(mData);
            return true;
        }
        if (why)
            *why = mWhy;
        return false;
    }

private:
    struct Zone
    {
        int line = 0;
        bool block = false;
        bool sized = false;
        std::array<quint64, 3> size = {1, 1, 1};
    };

    const Token &token() const { return mLexer.token(); }

    bool fail(int line, const QString &found, const QString &expected)
    {
        // A text that never ends swallows what follows, so it is the true cause.
        if (mLexer.brokenLine() > 0 && mWhy.isEmpty() && line >= mLexer.brokenLine() &&
            !found.startsWith(QLatin1String("a quoted")))
            return fail(mLexer.brokenLine(), QStringLiteral("a quoted text without an end"),
                        QStringLiteral("a closing quote on the same line"));
        mWhy = QStringLiteral("line %1: found %2, expected %3")
                   .arg(QString::number(line), found, expected);
        return false;
    }
    bool unexpected(const QString &expected) { return fail(token().line, shown(), expected); }
    QString shown() const
    {
        if (token().kind == Kind::End)
            return QStringLiteral("the end of the text");
        const QString text =
            QString::fromUtf8(token().text.data(), int(std::min<size_t>(token().text.size(), 60)));
        return QLatin1Char('"') + text + QLatin1Char('"');
    }

    bool atRecord() const
    {
        return token().kind == Kind::Word && token().startsLine && isRecord(token().text);
    }
    bool atNumber() const
    {
        quint64 count;
        double value;
        return token().kind == Kind::Word && toNumbers(token().text, &count, &value);
    }
    bool takeSign(char sign)
    {
        if (!token().isSign(sign))
            return false;
        mLexer.next();
        return true;
    }

    bool readAll()
    {
        if (mText.startsWith("#!TDV") || mText.startsWith("#!SZPLT"))
            return fail(1, QStringLiteral("a binary Tecplot file"),
                        QStringLiteral("Tecplot ASCII text"));
        while (token().kind != Kind::End)
            if (!readRecord())
                return false;
        if (!mHasData)
            return unexpected(mData.variables.empty() ? QStringLiteral("VARIABLES and a ZONE")
                                                      : QStringLiteral("a ZONE"));
        return true;
    }

    bool readRecord()
    {
        if (atNumber()) {
            if (mHasData)
                return unexpected(QStringLiteral("a record such as ZONE or the end of the text"));
            Zone zone;
            zone.line = token().line;
            return readNumbers(zone); // the only zone may have no header
        }
        if (token().kind != Kind::Word || !isRecord(token().text))
            return unexpected(QStringLiteral("a record such as TITLE, VARIABLES or ZONE"));
        const std::string_view record = token().text;
        mLexer.next();
        if (same(record, "TITLE")) {
            readTitle();
            return true;
        }
        if (same(record, "VARIABLES"))
            return readVariables();
        if (same(record, "ZONE"))
            return readZone();
        if (same(record, "FILETYPE"))
            return skipAssignment();
        if (same(record, "DATASETAUXDATA") || same(record, "VARAUXDATA")) {
            if (same(record, "VARAUXDATA"))
                mLexer.next(); // the variable's number
            mLexer.next();     // the name
            return skipAssignment();
        }
        while (token().kind != Kind::End && !atRecord()) // texts and geometries have no other end
            mLexer.next();
        return true;
    }

    void readTitle()
    {
        takeSign('=');
        if (token().startsLine || token().kind == Kind::End)
            return;
        const bool quoted = token().kind == Kind::Text;
        const char *start = token().text.data(), *end = nullptr;
        do {
            end = token().text.data() + token().text.size();
            mLexer.next();
        } while (!quoted && !token().startsLine && token().kind != Kind::End);
        mData.title = QString::fromStdString(unescaped({start, size_t(end - start)}));
    }

    bool skipAssignment()
    {
        takeSign('=');
        return skipValue();
    }

    /// A word, a text or a list in parentheses, whichever comes; nothing if the line ends first.
    bool skipValue()
    {
        if (token().kind == Kind::End || (token().startsLine && !token().isSign('(')))
            return true;
        const int line = token().line;
        int depth = 0;
        do {
            if (token().isSign('(') || token().isSign('['))
                ++depth;
            if (token().isSign(')') || token().isSign(']'))
                --depth;
            if (token().kind == Kind::End)
                return fail(line, QStringLiteral("a list without an end"), QStringLiteral("\")\""));
            mLexer.next();
        } while (depth > 0);
        return true;
    }

    bool readVariables()
    {
        const int line = token().line;
        takeSign('=');
        std::vector<std::string> names;
        bool allQuoted = true;
        for (;; mLexer.next()) {
            if (token().kind == Kind::Text) {
                names.push_back(unescaped(token().text));
                continue;
            }
            const bool first = token().startsLine || (allQuoted && !names.empty());
            if (token().kind != Kind::Word || (first && isRecord(token().text)) ||
                (token().startsLine && atNumber()))
                break;
            allQuoted = false;
            names.emplace_back(token().text);
        }
        if (token().kind == Kind::Sign)
            return unexpected(QStringLiteral("the name of a variable"));
        if (names.empty())
            return fail(line, QStringLiteral("no names"), QStringLiteral("names of variables"));
        if (!mData.variables.empty() && names != mData.variables)
            return fail(line, QStringLiteral("other variables"),
                        QStringLiteral("the same variables for all zones"));
        mData.variables = std::move(names);
        mData.columns.resize(mData.variables.size());
        return true;
    }

    bool readZone()
    {
        Zone zone;
        zone.line = token().line;
        while (token().kind == Kind::Word && !atRecord()) {
            const Token key = token();
            if (toNumberWord(key.text))
                break;
            mLexer.next();
            if (same(key.text, "AUXDATA")) {
                mLexer.next(); // the name
                if (!skipAssignment())
                    return false;
                continue;
            }
            if (!takeSign('='))
                return fail(key.line, QLatin1Char('"') + toQString(key.text) + QLatin1Char('"'),
                            QStringLiteral("a number or an attribute of the zone with \"=\""));
            if (!readAttribute(key.text, &zone))
                return false;
        }
        return readNumbers(zone);
    }

    static QString toQString(std::string_view text)
    {
        return QString::fromUtf8(text.data(), int(std::min<size_t>(text.size(), 60)));
    }
    static bool toNumberWord(std::string_view word)
    {
        quint64 count;
        double value;
        return toNumbers(word, &count, &value);
    }

    bool readAttribute(std::string_view key, Zone *zone)
    {
        const Token value = token();
        const bool isSize = key.size() == 1 && upper(key[0]) >= 'I' && upper(key[0]) <= 'K';
        if (isSize) {
            if (value.kind != Kind::Word || !toCount(value.text, &zone->size[upper(key[0]) - 'I']))
                return unexpected(QStringLiteral("a number of points"));
            zone->sized = true;
        } else if (same(key, "F") || same(key, "DATAPACKING")) {
            zone->block = same(value.text, "BLOCK");
            if (!zone->block && !same(value.text, "POINT"))
                return unexpected(QStringLiteral("POINT or BLOCK packing of an ordered zone"));
        } else if (same(key, "ZONETYPE")) {
            if (!same(value.text, "ORDERED"))
                return unexpected(QStringLiteral("an ordered zone"));
        } else if (same(key, "ET") || same(key, "E") || same(key, "N") || same(key, "NODES") ||
                   same(key, "ELEMENTS")) {
            return fail(value.line, QStringLiteral("a finite element zone"),
                        QStringLiteral("an ordered zone"));
        } else if (same(key, "VARLOCATION")) {
            return checkList("CELLCENTERED", QStringLiteral("values at cell centres"),
                             QStringLiteral("values at the points"));
        } else if (same(key, "VARSHARELIST") || same(key, "PASSIVEVARLIST") || same(key, "D")) {
            return checkList("", QStringLiteral("shared or passive variables"),
                             QStringLiteral("numbers for every variable"));
        }
        return skipValue();
    }

    /// Passes over a list unless it holds \p refused, or anything if that is empty.
    bool checkList(std::string_view refused, const QString &found, const QString &expected)
    {
        const int line = token().line;
        int depth = 0;
        do {
            if (token().isSign('(') || token().isSign('['))
                ++depth;
            else if (token().isSign(')') || token().isSign(']'))
                --depth;
            else if (token().kind == Kind::Word &&
                     (refused.empty() || startsWith(token().text, refused)))
                return fail(line, found, expected);
            if (token().kind == Kind::End)
                return fail(line, QStringLiteral("a list without an end"), QStringLiteral("\")\""));
            mLexer.next();
        } while (depth > 0);
        return true;
    }

    /// Numbers that the file can still bring; repeated ones share one limit.
    quint64 mostNumbers() const
    {
        // One digit and a separator are the least, unless numbers are repeated.
        return mMayRepeat ? quint64(mText.size()) + kMostRepeated - mNumbers
                          : quint64(mText.size()) / 2 + 1;
    }

    /// How many numbers a zone must have; false if that can't be.
    bool countOf(const Zone &zone, quint64 *count)
    {
        *count = mData.variables.size();
        bool tooMany = false;
        for (const quint64 size : zone.size)
            tooMany = __builtin_mul_overflow(*count, size, count) || tooMany;
        const quint64 most = mostNumbers();
        if (!tooMany && *count <= most)
            return true;
        return fail(zone.line,
                    QStringLiteral("a zone of %1 x %2 x %3 points")
                        .arg(zone.size[0])
                        .arg(zone.size[1])
                        .arg(zone.size[2]),
                    QStringLiteral("at most %1 numbers, as the text has %2 bytes")
                        .arg(most)
                        .arg(mText.size()));
    }

    bool readNumbers(const Zone &zone)
    {
        const quint64 columns = mData.variables.size();
        if (columns == 0)
            return fail(zone.line, QStringLiteral("data"), QStringLiteral("VARIABLES before it"));
        quint64 expected = mostNumbers();
        if (zone.sized && !countOf(zone, &expected))
            return false;
        std::vector<double> numbers;
        if (zone.sized)
            numbers.reserve(size_t(std::min(expected, quint64(mText.size()))));
        quint64 found = 0, count;
        int surplusLine = 0;
        double value;
        for (; token().kind == Kind::Word && toNumbers(token().text, &count, &value);
             mLexer.next()) {
            found = count > std::numeric_limits<quint64>::max() - found
                        ? std::numeric_limits<quint64>::max()
                        : found + count;
            if (count == 1 && found <= expected)
                numbers.push_back(value);
            else if (found <= expected)
                numbers.insert(numbers.end(), size_t(count), value);
            else if (surplusLine == 0)
                surplusLine = token().line;
        }
        if (token().kind != Kind::End && !atRecord() && (found < expected || !zone.sized))
            return unexpected(QStringLiteral("a number"));
        const int line = surplusLine > 0 ? surplusLine : token().line;
        const QString numbersFound = QStringLiteral("%1 numbers").arg(found);
        if (zone.sized ? found != expected : surplusLine > 0)
            return fail(line, numbersFound,
                        QStringLiteral("%1 (the zone of line %2: %3 variables at %4 points)")
                            .arg(expected)
                            .arg(zone.line)
                            .arg(columns)
                            .arg(expected / columns));
        if (found == 0 && !zone.sized)
            return unexpected(QStringLiteral("numbers for the zone of line %1").arg(zone.line));
        if (found % columns != 0)
            return fail(line, numbersFound,
                        QStringLiteral("as many for each of %1 variables").arg(columns));
        distribute(numbers, zone.block);
        mHasData = true;
        mNumbers += found;
        return true;
    }

    void distribute(const std::vector<double> &numbers, bool block)
    {
        const size_t columns = mData.columns.size(), points = numbers.size() / columns;
        for (size_t c = 0; c < columns; ++c) {
            std::vector<double> &column = mData.columns[c];
            if (block) {
                const auto from = numbers.begin() + std::ptrdiff_t(c * points);
                column.insert(column.end(), from, from + std::ptrdiff_t(points));
            } else {
                for (size_t i = 0; i < points; ++i)
                    column.push_back(numbers[i * columns + c]);
            }
        }
    }

    const QByteArray &mText;
    const bool mMayRepeat;
    Lexer mLexer;
    FTecplotData mData;
    bool mHasData = false;
    quint64 mNumbers = 0; // read so far
    QString mWhy;
};
} // namespace

bool readTecplot(const QByteArray &text, FTecplotData *data, QString *why)
{
    return Parser(text).read(data, why);
}

// SPDX-License-Identifier: Apache-2.0
#include "fgenintlabels.h"

#include <QRegularExpression>
#include <QStringList>
#include <algorithm>

namespace {
enum Mark : uchar {
    Free,
    Index, ///< a small number that stands for itself
    Value  ///< what another run has differently
};

bool isDigit(QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); }
bool isWordUnit(QChar c) { return c.isLetter() || c == QLatin1Char('_'); }

/// True for what is good at the ends of a label only if it belongs to the words.
bool isLooseAtFront(QChar c)
{
    return c.isSpace() || QStringLiteral(",;:=)]}|%*-+/~_.>&!").contains(c);
}
bool isLooseAtEnd(QChar c) { return c.isSpace() || QStringLiteral(",;([{|*-+~_.'<").contains(c); }

bool isDateWord(const QString &word)
{
    static const QStringList sWords = {
        QStringLiteral("jan"), QStringLiteral("feb"), QStringLiteral("mar"), QStringLiteral("apr"),
        QStringLiteral("may"), QStringLiteral("jun"), QStringLiteral("jul"), QStringLiteral("aug"),
        QStringLiteral("sep"), QStringLiteral("oct"), QStringLiteral("nov"), QStringLiteral("dec"),
        QStringLiteral("mon"), QStringLiteral("tue"), QStringLiteral("wed"), QStringLiteral("thu"),
        QStringLiteral("fri"), QStringLiteral("sat"), QStringLiteral("sun")};
    const QString bare = word.endsWith(QLatin1Char(',')) ? word.chopped(1) : word;
    // A longer name is cut: "September", "Monday".
    static const QStringList sEnds = {QStringLiteral("day"),   QStringLiteral("uary"),
                                      QStringLiteral("mber"),  QStringLiteral("ch"),
                                      QStringLiteral("il"),    QStringLiteral("ne"),
                                      QStringLiteral("ly"),    QStringLiteral("gust"),
                                      QStringLiteral("tober"), QStringLiteral("st")};
    if (bare.size() < 3 || !sWords.contains(bare.left(3).toLower()))
        return false;
    return bare.size() <= 4 || std::any_of(sEnds.begin(), sEnds.end(),
                                           [&](const QString &end) { return bare.endsWith(end); });
}

/// Tells what of a line is a value.
class FMarker
{
public:
    explicit FMarker(const QString &line)
        : mLine(line)
        , mMarks(static_cast<size_t>(line.size()), Free)
    {
    }

    std::vector<Mark> run()
    {
        for (int i = 0; i < mLine.size();) {
            if (mLine[i].isSpace()) {
                if (mLine[i] != QLatin1Char(' '))
                    set(i, i + 1, Value);
                ++i;
                continue;
            }
            int end = i;
            while (end < mLine.size() && !mLine[end].isSpace())
                ++end;
            mTokens.push_back({i, end});
            i = end;
        }
        for (size_t i = 0; i < mTokens.size(); ++i)
            markToken(i);
        return mMarks;
    }

private:
    struct Token
    {
        int begin, end;
    };

    void set(int begin, int end, Mark mark)
    {
        std::fill(mMarks.begin() + begin, mMarks.begin() + end, mark);
    }
    QString textOf(size_t token) const
    {
        return mLine.mid(mTokens[token].begin, mTokens[token].end - mTokens[token].begin);
    }
    bool isPartOfDate(size_t token) const
    {
        if (mTokens[token].end - mTokens[token].begin > 12 || !isDateWord(textOf(token)))
            return false;
        const auto goesWith = [this](size_t other) {
            return other < mTokens.size() &&
                   (isDigit(mLine[mTokens[other].begin]) || isDateWord(textOf(other)));
        };
        return goesWith(token + 1) || (token > 0 && goesWith(token - 1));
    }

    void markToken(size_t token)
    {
        const int begin = mTokens[token].begin, end = mTokens[token].end;
        const QString text = textOf(token);
        const QString lower = text.toLower();
        if (isPath(text) || isClock(text) || isPartOfDate(token) || lower == QLatin1String("nan") ||
            lower == QLatin1String("inf")) {
            set(begin, end, Value);
            return;
        }
        for (int i = begin; i < end;) {
            const QChar c = mLine[i];
            if (c == QLatin1Char('"') || c == QLatin1Char('\\') || c.unicode() < ' ')
                set(i, i + 1, Value);
            i = isDigit(c) ? markNumber(i, begin, end) : i + 1;
        }
    }

    /// True for paths, names of files and what is in quotes.
    static bool isPath(const QString &text)
    {
        static const QRegularExpression sFile(
            QStringLiteral(
                "\\w\\.(dat|inp?|out|txt|log|csv|mod|cir|lp|mps|msh|mesh|frd|sta|res|xyz|"
                "json|xml|cfg|ini|bin|h5|vtk)\\W*$"),
            QRegularExpression::CaseInsensitiveOption);
        if (text.contains(sFile))
            return true;
        const int slashes = text.count(QLatin1Char('/'));
        const bool isRooted = text.size() > 2 && text[0] == QLatin1Char('/') && text[1].isLetter();
        return isRooted || text.contains(QLatin1String("://")) ||
               (slashes > 0 && (text[0] == QLatin1Char('.') || text[0] == QLatin1Char('~'))) ||
               slashes > 3 || text.contains(QLatin1String(":\\")) ||
               ((text[0] == QLatin1Char('\'') || text[0] == QLatin1Char('"')) && text.size() > 3);
    }
    /// True for times of day, dates in figures, versions: figures joined by signs.
    static bool isClock(const QString &text)
    {
        int runs = 0;
        for (int i = 0; i < text.size(); ++i) {
            const QChar c = text[i];
            if (isDigit(c))
                runs += i == 0 || !isDigit(text[i - 1]);
            else if (i == 0 || !QStringLiteral(":/-.,").contains(c))
                return false;
        }
        return runs > 1;
    }

    /// Marks the number at \p i; gives the place behind it.
    int markNumber(int i, int begin, int end)
    {
        int first = i;
        while (i < end && isDigit(mLine[i]))
            ++i;
        const int figures = i - first;
        const bool pointAhead = first > begin && mLine[first - 1] == QLatin1Char('.');
        const bool pointBehind =
            i + 1 < end && mLine[i] == QLatin1Char('.') && isDigit(mLine[i + 1]);
        first -= pointAhead;
        const bool isSigned = first > begin && QStringLiteral("+-").contains(mLine[first - 1]);
        first -= isSigned;
        bool isDecimal = pointBehind || pointAhead;
        if (pointBehind)
            for (++i; i < end && isDigit(mLine[i]);)
                ++i;
        const bool inWord = first > begin && isWordUnit(mLine[first - 1]);
        const int exponent = inWord ? 0 : exponentAt(i, end);
        isDecimal = isDecimal || exponent > 0;
        i += exponent;
        int behind = i;
        while (behind < end && isWordUnit(mLine[behind]))
            ++behind;
        if (isDecimal) {
            while (inWord && first > begin && isWordUnit(mLine[first - 1]))
                --first;
            set(first, behind, Value); // with the unit that hangs on
            return behind;
        }
        const bool isName = inWord       ? figures <= 4
                            : behind > i ? figures <= 2
                                         : isSubscript(first, i);
        if (!isName)
            set(first, behind, figures <= 3 && !isSigned && !inWord ? Index : Value);
        return behind;
    }
    int exponentAt(int i, int end) const
    {
        int at = i + 1;
        if (i >= end || !QStringLiteral("eEdD").contains(mLine[i]))
            return 0;
        if (at < end && QStringLiteral("+-").contains(mLine[at]))
            ++at;
        const int figures = at;
        while (at < end && isDigit(mLine[at]))
            ++at;
        return at > figures ? at - i : 0;
    }
    /// True for the 1 of "x[1]".
    bool isSubscript(int begin, int end) const
    {
        return begin > 1 && end < mLine.size() && end - begin <= 3 &&
               mLine[begin - 1] == QLatin1Char('[') && mLine[end] == QLatin1Char(']') &&
               isWordUnit(mLine[begin - 2]);
    }

    const QString &mLine;
    std::vector<Mark> mMarks;
    std::vector<Token> mTokens;
};

/// Cuts labels out of a line.
class FCutter
{
public:
    FCutter(const QString &line, bool keepEnd)
        : mLine(line)
        , mKeepEnd(keepEnd)
    {
    }

    void add(int begin, int end, FGenIntLabel::Kind kind, bool hasGaps = false)
    {
        const int limit = end;
        trim(&begin, &end);
        if (end - begin > FGenIntLabels::kLongest && !shorten(&begin, &end))
            return;
        FGenIntLabel label;
        label.kind = kind;
        label.begin = begin;
        label.length = end - begin;
        for (int i = begin; i < end; ++i) {
            label.letters += mLine[i].isLetter();
            label.digits += isDigit(mLine[i]);
            label.isForeign = label.isForeign || mLine[i].unicode() >= 0x80;
        }
        label.hasGaps = hasGaps;
        const auto isSame = [&](const FGenIntLabel &other) {
            return other.begin == label.begin && other.length == label.length;
        };
        if (label.letters > 0 && std::none_of(labels.begin(), labels.end(), isSame))
            labels.push_back(label);
        addWithBar(begin, end, limit);
    }

    /// Adds a stretch as a whole, and what gaps part it into.
    void addStretch(int begin, int end)
    {
        std::vector<int> gaps; // where columns begin
        for (int i = begin + 2; i < end; ++i) {
            const bool isGap = mLine[i - 1].isSpace() && mLine[i - 2].isSpace();
            if (isGap && !mLine[i].isSpace() && !QStringLiteral("=:").contains(mLine[i]))
                gaps.push_back(i);
        }
        add(begin, end, FGenIntLabel::Whole, !gaps.empty());
        int from = begin;
        for (int gap : gaps) {
            add(from, gap, FGenIntLabel::Part);
            from = gap;
        }
        if (!gaps.empty())
            add(from, end, FGenIntLabel::Part);
    }

    std::vector<FGenIntLabel> labels;

private:
    /// Adds the name of a row again with the bar behind it, as that stands less often.
    void addWithBar(int begin, int end, int limit)
    {
        int bar = end;
        while (bar < limit && mLine[bar] == QLatin1Char(' '))
            ++bar;
        if (bar >= limit || mLine[bar] != QLatin1Char('|') || labels.empty() ||
            labels.back().begin != begin || labels.back().begin + labels.back().length != end ||
            bar + 1 - begin > FGenIntLabels::kLongest)
            return;
        FGenIntLabel label = labels.back();
        label.kind = FGenIntLabel::Part;
        label.length = bar + 1 - begin;
        labels.push_back(label);
    }
    void trim(int *begin, int *end) const
    {
        while (*begin < *end && isLooseAtFront(mLine[*begin]))
            ++*begin;
        while (*begin < *end && isLooseAtEnd(mLine[*end - 1]))
            --*end;
    }
    bool shorten(int *begin, int *end) const
    {
        if (mKeepEnd) {
            int from = *end - FGenIntLabels::kLongest;
            while (from < *end && !mLine[from - 1].isSpace())
                ++from;
            *begin = from;
        } else {
            int to = *begin + FGenIntLabels::kLongest;
            while (to > *begin && !mLine[to].isSpace())
                --to;
            *end = to;
        }
        trim(begin, end);
        return *begin < *end;
    }

    const QString &mLine;
    const bool mKeepEnd;
};
} // namespace

std::vector<FGenIntLabel> FGenIntLabels::labelsOf(const QString &line, bool keepEnd)
{
    const std::vector<Mark> marks = FMarker(line).run();
    FCutter cutter(line, keepEnd);
    const auto size = static_cast<int>(marks.size());
    for (int begin = 0; begin < size; ++begin) {
        int end = begin;
        while (end < size && marks[static_cast<size_t>(end)] == Free)
            ++end;
        if (end > begin)
            cutter.addStretch(begin, end);
        begin = end;
    }
    for (int begin = 0; begin < size; ++begin) {
        int end = begin;
        bool hasIndex = false;
        for (; end < size && marks[static_cast<size_t>(end)] != Value; ++end)
            hasIndex = hasIndex || marks[static_cast<size_t>(end)] == Index;
        if (hasIndex)
            cutter.add(begin, end, FGenIntLabel::WithIndex);
        begin = end;
    }
    return cutter.labels;
}

// SPDX-License-Identifier: Apache-2.0
#include "fgenintlinespans.h"

#include <QRegExp>
#include <QStringList>
#include <limits>

namespace {
constexpr int kOpenMark = 7, kCloseMark = 8; // lengths of <entry> and </entry>
const double kNoNumber = std::numeric_limits<double>::quiet_NaN();

QRegExp marks() { return QRegExp(QStringLiteral("<\\/?entry>")); }
QRegExp strictTag() { return QRegExp(QStringLiteral("<entry>[\\w|\\d|\\||\\.\\/]*<\\/entry>")); }
QRegExp separators()
{
    return QRegExp(QStringLiteral("[\\s\\:\\=\\#\\,\\;\\[\\]\\(\\)\\{\\}\\\"]+"));
}
QRegExp notOfNumber() { return QRegExp(QStringLiteral("[^\\-\\+\\d\\.eE]")); }

class LineReader
{
public:
    LineReader(const QString &line, FGenIntLineSpans *spans)
        : mLine(line)
        , mSpans(spans)
    {
    }
    void pairTags();
    void nameTags(const QSet<QString> &known);
    void findNumbers();
    void findMarkup();

private:
    void paint(int position, int length, FGenIntLineSpans::Colour colour)
    {
        mSpans->paints.append({position, length, colour});
    }
    int endOfNumber(int from)
    {
        const int end = mNotOfNumber.indexIn(mLine, from);
        return end < 0 ? mLine.size() : end;
    }
    void addValue(int begin, int end, int valueBegin, const QString &name, double value);
    bool openElement(int *position, QString *tag, QString *shown);
    QString attributeBefore(int position) const;

    const QString &mLine;
    FGenIntLineSpans *mSpans;
    // Where the attributes stand first behind the first letter; -1 where they don't
    std::pair<const char *, int> mKeys[3] = {{"name=", -1}, {"title=", -1}, {"id=", -1}};
    QRegExp mStrict = strictTag(), mNotOfNumber = notOfNumber();
};

void LineReader::addValue(int begin, int end, int valueBegin, const QString &name, double value)
{
    mSpans->begins << begin;
    mSpans->ends << end;
    mSpans->valueBegins << valueBegin;
    mSpans->names << name;
    mSpans->values << value;
    mSpans->texts << mLine.mid(begin, end - begin);
    mSpans->types << FGenIntLineSpans::IsPossibleValue;
    paint(begin, end - begin, FGenIntLineSpans::PossibleValue);
}

void LineReader::pairTags()
{
    QRegExp mark = marks();
    bool wantsOpening = true;
    for (int at = mark.indexIn(mLine); at >= 0;) {
        const int behind = at + mark.matchedLength();
        const bool isClosing = mark.matchedLength() == kCloseMark;
        const bool isError = isClosing == wantsOpening;
        if (isClosing && !isError) {
            mSpans->ends << behind;
            const int begin = mSpans->begins.last();
            mSpans->texts << mLine.mid(begin, behind - begin);
            mSpans->values << kNoNumber;
            mSpans->types << FGenIntLineSpans::IsTag;
            wantsOpening = true;
        } else if (!isClosing && !isError) {
            mSpans->begins << at;
            wantsOpening = false;
        }
        paint(at, behind - at, isError ? FGenIntLineSpans::TagError : FGenIntLineSpans::Tag);
        const int next = mark.indexIn(mLine, behind);
        const bool isUnclosed = next < 0 ? mSpans->begins.size() != mSpans->ends.size()
                                         : !wantsOpening && mark.matchedLength() == kOpenMark;
        if (isUnclosed) {
            paint(behind, (next < 0 ? mLine.size() : next) - behind,
                  isError ? FGenIntLineSpans::UnclosedError : FGenIntLineSpans::Unclosed);
            wantsOpening = true;
        }
        at = next;
    }
}

void LineReader::nameTags(const QSet<QString> &known)
{
    for (int at = mStrict.indexIn(mLine); at >= 0;) {
        const int length = mStrict.matchedLength();
        const QString name = mLine.mid(at + kOpenMark, length - kOpenMark - kCloseMark);
        mSpans->valueBegins << at + kOpenMark;
        mSpans->names << name;
        paint(at + kOpenMark, name.size(),
              known.contains(FGenIntLineSpans::folded(name)) ? FGenIntLineSpans::Known
                                                             : FGenIntLineSpans::Unknown);
        at = mStrict.indexIn(mLine, at + length);
    }
}

/// A number that stands behind separators, together with the word before them.
void LineReader::findNumbers()
{
    QRegExp separator = separators();
    int begin = 0;
    bool isNumber = false;
    int end = endOfNumber(0);
    double value = mLine.left(end).toDouble(&isNumber);
    if (isNumber) {
        addValue(0, end, 0, QString(), value);
        begin = end;
    }
    int tag = mStrict.indexIn(mLine, begin), tagLength = mStrict.matchedLength();
    for (int gap; (gap = separator.indexIn(mLine, begin)) >= 0;) {
        const int valueBegin = gap + separator.matchedLength();
        // The next tag is looked for again only when it has been passed.
        while (tag >= 0) {
            if (tag < begin) {
                tag = mStrict.indexIn(mLine, begin);
                tagLength = mStrict.matchedLength();
            } else if (tag + tagLength <= gap) {
                begin = tag + tagLength;
            } else {
                break;
            }
        }
        end = endOfNumber(valueBegin);
        value = mLine.midRef(valueBegin, end - valueBegin).toDouble(&isNumber);
        if (!isNumber) {
            begin = valueBegin;
            continue;
        }
        const QString word = mLine.mid(begin, gap - begin);
        addValue(word.isEmpty() ? valueBegin : begin, end, valueBegin, word, value);
        begin = end;
    }
}

/// The value of an attribute that names an element: the first on the line, even if it belongs to an
/// earlier element.
QString LineReader::attributeBefore(int position) const
{
    for (const auto &[key, at] : mKeys) {
        if (at < 0 || at + int(qstrlen(key)) > position)
            continue;
        const int begin = mLine.indexOf('=', at) + 1;
        const int quote = mLine.indexOf('"', begin);
        int end = -1;
        if (quote >= 0 && quote < position)
            end = mLine.indexOf('"', quote + 1);
        else
            end = QRegExp(QStringLiteral("[ \\/\\>]")).indexIn(mLine, begin);
        if (end < 0 || end >= position)
            return QString();
        QString text = mLine.mid(begin, end - begin);
        while (text.startsWith('"'))
            text.remove(0, 1);
        while (text.endsWith('"'))
            text.chop(1);
        return text.isNull() ? QLatin1String("") : text;
    }
    return QString();
}

/// Goes on to the next element that opens; false if there is none.
bool LineReader::openElement(int *position, QString *tag, QString *shown)
{
    QRegExp nameEnd(QStringLiteral("[ \\>]"));
    for (;;) {
        const int open = mLine.indexOf('<', *position);
        if (open < 0)
            return false;
        if (open == 0 && mStrict.indexIn(mLine, 0) == 0) {
            *position += mStrict.matchedLength() + 1;
            continue;
        }
        const int end = nameEnd.indexIn(mLine, open + 1);
        const int close = end < 0 ? -1 : mLine.indexOf('>', end);
        if (close < 0)
            return false;
        *tag = mLine.mid(open + 1, end - open - 1);
        *position = close + 1;
        if (tag->isEmpty() || tag->startsWith('/'))
            continue;
        const QString attribute = attributeBefore(*position);
        *shown = attribute.isNull() ? *tag : attribute;
        return true;
    }
}

/// Numbers that are the content of an element.
void LineReader::findMarkup()
{
    for (auto &[key, at] : mKeys)
        at = mLine.indexOf(QLatin1String(key), 1);
    const int contentBegin = mLine.indexOf('>') + 1; // of the line's first element
    int position = 0;
    QString tag, shown;
    QSet<QString> unclosed; // looking for one of these once more finds nothing
    while (openElement(&position, &tag, &shown)) {
        const int close =
            unclosed.contains(tag) ? -1 : mLine.indexOf(QLatin1String("</") + tag, position);
        if (close < 0) {
            unclosed.insert(tag);
        } else {
            position = close;
            bool isNumber = false;
            const double value =
                contentBegin < position
                    ? mLine.midRef(contentBegin, position - contentBegin).toDouble(&isNumber)
                    : 0;
            if (isNumber)
                addValue(contentBegin, position, contentBegin, shown, value);
        }
        ++position;
    }
}
} // namespace

QString FGenIntLineSpans::folded(const QString &name)
{
    QString text;
    text.reserve(name.size());
    for (int i = 0; i < name.size(); ++i)
        if (name[i].isHighSurrogate() && i + 1 < name.size() && name[i + 1].isLowSurrogate()) {
            const uint one = QChar::toCaseFolded(QChar::surrogateToUcs4(name[i], name[i + 1]));
            text += QString::fromUcs4(&one, 1);
            ++i;
        } else {
            text += name[i].toCaseFolded();
        }
    return text;
}

FGenIntLineSpans FGenIntLineSpans::of(const QString &line, const QSet<QString> &known,
                                      bool possibleValues)
{
    FGenIntLineSpans spans;
    if (line.isEmpty())
        return spans;
    LineReader reader(line, &spans);
    const bool hasMarkup = line.contains('<');
    if (hasMarkup) {
        reader.pairTags();
        reader.nameTags(known);
    }
    if (!possibleValues)
        return spans;
    reader.findNumbers();
    if (hasMarkup)
        reader.findMarkup();
    return spans;
}

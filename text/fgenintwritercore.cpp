// SPDX-License-Identifier: Apache-2.0
#include "fgenintwritercore.h"

#include <QHash>
#include <QSet>
#include <QStringList>
#include <QStringMatcher>
#include <algorithm>
#include <cstring>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {
constexpr char kOpen[] = "<entry>";
constexpr char kClose[] = "</entry>";
constexpr int kOpenSize = sizeof kOpen - 1;
constexpr int kCloseSize = sizeof kClose - 1;

inline const char *findLess(const char *from, const char *end)
{
    return static_cast<const char *>(memchr(from, '<', size_t(end - from)));
}
inline const QChar *findLess(const QChar *from, const QChar *end)
{
    const qsizetype at = QStringView(from, end).indexOf(QLatin1Char('<'));
    return at < 0 ? nullptr : from + at;
}
inline ushort unitOf(char c) { return uchar(c); }
inline ushort unitOf(QChar c) { return c.unicode(); }

/// Position of \p mark, or nullptr. No character beyond ASCII folds to one of the marks' letters,
/// so that bytes of UTF-8 and units of UTF-16 are alike here.
template <class Char>
const Char *findMark(const Char *from, const Char *end, const char *mark, int size,
                     Qt::CaseSensitivity cs)
{
    while (end - from >= size) {
        const Char *at = findLess(from, end);
        if (!at || end - at < size)
            return nullptr;
        int i = 1;
        for (; i < size; ++i) {
            ushort unit = unitOf(at[i]);
            if (cs == Qt::CaseInsensitive && unit >= 'A' && unit <= 'Z')
                unit |= 0x20;
            if (unit != uchar(mark[i]))
                break;
        }
        if (i == size)
            return at;
        from = at + 1;
    }
    return nullptr;
}

/// Calls \p each for every tag; returns the position of an unclosed opening mark or -1.
template <class Char, class Each>
int forEachTag(const Char *text, int size, Qt::CaseSensitivity marks, Each each)
{
    const Char *end = text + size, *position = text;
    while (const Char *open = findMark(position, end, kOpen, kOpenSize, marks)) {
        const Char *name = open + kOpenSize;
        const Char *close = findMark(name, end, kClose, kCloseSize, marks);
        if (!close)
            return int(open - text);
        position = close + kCloseSize;
        each(FGenIntTag{int(open - text), int(name - text), int(close - name),
                        int(position - text)});
    }
    return -1;
}

/// What two strings must share to be equal ignoring case: the simple foldings of their characters.
/// A pair is folded as a whole behind its unfolded high half, as string comparison does it.
std::u32string folded(const QString &text)
{
    std::u32string result;
    result.reserve(size_t(text.size()));
    uint last = 0;
    for (const QChar c : text) {
        uint character = c.unicode();
        if (character < 0x80) {
            last = 0;
            result += char32_t(character >= 'A' && character <= 'Z' ? character | 0x20 : character);
            continue;
        }
        if (c.isLowSurrogate() && QChar::isHighSurrogate(last))
            character = QChar::surrogateToUcs4(ushort(last), c.unicode());
        last = c.unicode();
        result += char32_t(QChar::toCaseFolded(character));
    }
    return result;
}

/// One pass instead of an in-place replacement, which moves the tail of a long text many times.
template <class Text, class Char>
Text withCarriageReturns(const Text &text, const Char *chars)
{
    const auto count = std::count(chars, chars + text.size(), Char('\n'));
    if (count == 0)
        return text;
    Text result(text.size() + int(count), Qt::Uninitialized);
    auto *out = reinterpret_cast<Char *>(result.data());
    const Char *end = chars + text.size();
    while (chars != end) {
        const Char *line = std::find(chars, end, Char('\n'));
        out = std::copy(chars, line, out);
        chars = line;
        if (line != end) {
            *out++ = Char('\r');
            *out++ = Char('\n');
            ++chars;
        }
    }
    return result;
}
QString withCarriageReturns(const QString &text)
{
    return withCarriageReturns(text, reinterpret_cast<const ushort *>(text.utf16()));
}

QString replaced(const QString &text, const QString &before, const QString &after)
{
    const QStringMatcher matcher(before, Qt::CaseInsensitive);
    QString result;
    int position = 0;
    for (int at; (at = matcher.indexIn(text, position)) >= 0; position = at + before.size()) {
        if (position == 0)
            result.reserve(text.size() + qMax(0, after.size() - before.size()));
        result.append(text.constData() + position, at - position);
        result.append(after);
    }
    if (position == 0)
        return text;
    result.append(text.constData() + position, text.size() - position);
    return result;
}

/// Keeps zero characters and a byte order mark, which the plain conversion of a byte array drops.
QString decoded(const QByteArray &bytes)
{
    if (!bytes.contains('\0') && !bytes.startsWith("\xef\xbb\xbf"))
        return QString::fromUtf8(bytes);
    const std::string guarded = 'x' + bytes.toStdString();
    return QString::fromStdString(guarded).mid(1);
}

/// The general conversion reserves three bytes for each unit; most templates need one.
QByteArray toUtf8(const QString &text)
{
    const int size = text.size();
    const ushort *units = text.utf16();
    QByteArray result(size, Qt::Uninitialized);
    char *bytes = result.data();
    int i = 0;
#ifdef __SSE2__
    for (; i + 16 <= size; i += 16) {
        const auto *from = reinterpret_cast<const __m128i *>(units + i);
        const __m128i first = _mm_loadu_si128(from), second = _mm_loadu_si128(from + 1);
        const __m128i beyond =
            _mm_and_si128(_mm_or_si128(first, second), _mm_set1_epi16(short(0xff80)));
        if (_mm_movemask_epi8(_mm_cmpeq_epi16(beyond, _mm_setzero_si128())) != 0xffff)
            return text.toUtf8();
        _mm_storeu_si128(reinterpret_cast<__m128i *>(bytes + i), _mm_packus_epi16(first, second));
    }
#endif
    for (; i < size; ++i) {
        if (units[i] >= 0x80)
            return text.toUtf8();
        bytes[i] = char(units[i]);
    }
    return result;
}

bool hasSurrogates(const QString &text)
{
    bool found = false; // no way out of the loop, so that it is done in vectors
    for (const QChar c : text)
        found |= (c.unicode() & 0xf800) == 0xd800;
    return found;
}

/// Joins fixed stretches and values as if the whole text were converted at once: a surrogate pair
/// may be split between them.
class Utf8Joiner
{
public:
    explicit Utf8Joiner(const FGenIntExpander::Sink &sink)
        : mSink(sink)
    {
    }

    void add(ushort lowAtStart, const char *bytes, int size, ushort highAtEnd, bool hasZero)
    {
        if (mEnded)
            return;
        if (lowAtStart != 0 || size > 0 || hasZero)
            join(lowAtStart);
        if (size > 0)
            mSink(bytes, size);
        mEnded = hasZero;
        if (highAtEnd != 0 && !mEnded) {
            join(0);
            mHigh = highAtEnd;
        }
    }
    void add(const QString &text)
    {
        if (mEnded || text.isEmpty())
            return;
        char ascii[64]; // most values are short
        int count = 0;
        while (count < text.size() && count < int(sizeof ascii) && text.at(count) > QChar(0) &&
               text.at(count) < QChar(0x80)) {
            ascii[count] = char(text.at(count).unicode());
            ++count;
        }
        if (count == text.size())
            return add(0, ascii, count, 0, false);
        const int zero = text.indexOf(QChar(0));
        const int size = zero < 0 ? text.size() : zero;
        const int first = size > 0 && text.at(0).isLowSurrogate();
        const int last = size > first && zero < 0 && text.at(size - 1).isHighSurrogate();
        const QByteArray bytes =
            QString::fromRawData(text.constData() + first, size - first - last).toUtf8();
        add(first ? text.at(0).unicode() : 0, bytes.constData(), bytes.size(),
            last ? text.at(size - 1).unicode() : 0, zero >= 0);
    }
    void finish()
    {
        if (!mEnded)
            join(0);
    }

private:
    /// Writes the half that waits, with its other half or alone, and a low half without a high one.
    void join(ushort low)
    {
        if (mHigh == 0 && low == 0)
            return;
        QString text;
        if (mHigh != 0)
            text += QChar(mHigh);
        if (low != 0)
            text += QChar(low);
        mHigh = 0;
        const QByteArray bytes = text.toUtf8();
        mSink(bytes.constData(), bytes.size());
    }

    const FGenIntExpander::Sink &mSink;
    ushort mHigh = 0;
    bool mEnded = false;
};
} // namespace

QVector<FGenIntTag> FGenIntTagScanner::scan(const QString &text, Qt::CaseSensitivity marks,
                                            int *unclosedAt)
{
    QVector<FGenIntTag> tags;
    const int unclosed = forEachTag(text.constData(), text.size(), marks,
                                    [&](const FGenIntTag &tag) { tags.append(tag); });
    if (unclosedAt)
        *unclosedAt = unclosed;
    return tags;
}

std::vector<QString> FGenIntTagScanner::names(const QString &text, Qt::CaseSensitivity marks)
{
    std::vector<QString> result;
    forEachTag(text.constData(), text.size(), marks, [&](const FGenIntTag &tag) {
        result.push_back(text.mid(tag.nameStart, tag.nameLength));
    });
    return result;
}

std::vector<QString> FGenIntTagScanner::distinctNames(const QString &text,
                                                      Qt::CaseSensitivity marks)
{
    std::vector<QString> result;
    QSet<QString> seen;
    forEachTag(text.constData(), text.size(), marks, [&](const FGenIntTag &tag) {
        const QString name = text.mid(tag.nameStart, tag.nameLength);
        const int before = seen.size();
        seen.insert(name);
        if (seen.size() != before)
            result.push_back(name);
    });
    return result;
}

QString FGenIntTagText::tag(const QString &name)
{
    return QLatin1String(kOpen) + name + QLatin1String(kClose);
}

bool FGenIntTagText::containsTag(const QString &text, const QString &name)
{
    return text.contains(tag(name), Qt::CaseInsensitive);
}

QString FGenIntTagText::updateTag(const QString &text, const QString &oldName,
                                  const QString &newName)
{
    if (oldName.isEmpty() || newName.isEmpty() || oldName == newName)
        return text;
    return replaced(text, tag(oldName), tag(newName));
}

QString FGenIntTagText::replaceTag(const QString &text, const QString &name, const QString &plain)
{
    return replaced(text, tag(name), plain);
}

FGenIntEntryNames::FGenIntEntryNames(const std::vector<QString> &keysInMapOrder)
{
    mPositions.reserve(keysInMapOrder.size());
    for (size_t i = 0; i < keysInMapOrder.size(); ++i)
        mPositions[folded(stripped(keysInMapOrder[i]))].push_back(int(i));
}

const std::vector<int> &FGenIntEntryNames::candidates(const QString &tagName) const
{
    static const std::vector<int> sNone;
    const auto found = mPositions.find(folded(tagName));
    return found == mPositions.end() ? sNone : found->second;
}

QString FGenIntEntryNames::stripped(const QString &key)
{
    const QLatin1Char separator('|');
    if (!key.contains(QLatin1Char('[')) && !key.startsWith(separator) && !key.endsWith(separator) &&
        !key.contains(QLatin1String("||")))
        return key;
    QStringList parts = key.split(separator, Qt::SkipEmptyParts);
    for (QString &part : parts) {
        const int bracket = part.lastIndexOf(QLatin1Char('['));
        if (bracket >= 0)
            part.truncate(bracket);
    }
    return parts.join(separator);
}

FGenIntExpander::FGenIntExpander(const QString &text, bool forceWindowsLineEndings)
    : mText(text)
    , mForceWindowsLineEndings(forceWindowsLineEndings)
{
    // UTF-8 has no form for half a surrogate pair. Where that could matter, the units count.
    const bool plain = prepare(toUtf8(text));
    if (!plain && hasSurrogates(text))
        prepare(forceWindowsLineEndings ? withCarriageReturns(text) : text);
}

FGenIntExpander::FGenIntExpander(std::shared_ptr<const std::string> text,
                                 bool forceWindowsLineEndings)
    : mUtf8(std::move(text))
    , mForceWindowsLineEndings(forceWindowsLineEndings)
{
    prepare(QByteArray::fromRawData(mUtf8->data(), int(mUtf8->size())));
}

bool FGenIntExpander::isFor(const QString &text, bool forceWindowsLineEndings) const
{
    return mForceWindowsLineEndings == forceWindowsLineEndings && !mUtf8 && mText == text;
}

/// Returns false if a name or the neighbour of a tag holds a question mark, which may stand for
/// half a surrogate pair.
bool FGenIntExpander::prepare(const QByteArray &utf8)
{
    mFixed = mForceWindowsLineEndings ? withCarriageReturns(utf8, utf8.constData()) : utf8;
    bool plain = true;
    Stretch next;
    QHash<QByteArray, int> known;
    const char *bytes = mFixed.constData();
    const int unclosed =
        forEachTag(bytes, mFixed.size(), Qt::CaseInsensitive, [&](const FGenIntTag &tag) {
            addStretch(next, tag.start);
            next.start = tag.end;
            const auto name = QByteArray::fromRawData(bytes + tag.nameStart, tag.nameLength);
            plain = plain && (tag.start == 0 || bytes[tag.start - 1] != '?') &&
                    (tag.end == mFixed.size() || bytes[tag.end] != '?') && !name.contains('?');
            const auto found = known.constFind(name);
            if (found != known.constEnd()) {
                mTagNames.push_back(*found);
            } else {
                known.insert(name, int(mNames.size()));
                addName(decoded(name));
            }
        });
    addStretch(next, unclosed < 0 ? mFixed.size() : unclosed);
    return plain;
}

void FGenIntExpander::prepare(const QString &text)
{
    mFixed.clear();
    mStretches.clear();
    mTagNames.clear();
    mNames.clear();
    const auto add = [this, &text](int from, int to) {
        Stretch stretch;
        stretch.start = mFixed.size();
        if (from < to && text.at(from).isLowSurrogate())
            stretch.lowAtStart = text.at(from++).unicode();
        if (from < to && text.at(to - 1).isHighSurrogate())
            stretch.highAtEnd = text.at(--to).unicode();
        mFixed += QString::fromRawData(text.constData() + from, to - from).toUtf8();
        addStretch(stretch, mFixed.size());
    };
    int position = 0;
    const int unclosed =
        forEachTag(text.constData(), text.size(), Qt::CaseInsensitive, [&](const FGenIntTag &tag) {
            add(position, tag.start);
            position = tag.end;
            addName(text.mid(tag.nameStart, tag.nameLength));
        });
    add(position, unclosed < 0 ? text.size() : unclosed);
}

void FGenIntExpander::addStretch(Stretch stretch, int end)
{
    const char *start = mFixed.constData() + stretch.start;
    stretch.size = end - stretch.start;
    if (const void *zero = memchr(start, 0, size_t(stretch.size))) {
        stretch.size = int(static_cast<const char *>(zero) - start);
        stretch.hasZero = true;
    }
    mStretches.push_back(stretch);
}

void FGenIntExpander::addName(const QString &name)
{
    mTagNames.push_back(int(mNames.size()));
    mNames.push_back(name);
}

void FGenIntExpander::expandTo(const Value &value, const Sink &sink) const
{
    Utf8Joiner joiner(sink);
    for (size_t i = 0; i < mStretches.size(); ++i) {
        const Stretch &fixed = mStretches[i];
        joiner.add(fixed.lowAtStart, mFixed.constData() + fixed.start, fixed.size, fixed.highAtEnd,
                   fixed.hasZero);
        if (i == mTagNames.size())
            break;
        QString text;
        if (value(mNames[size_t(mTagNames[i])], &text))
            joiner.add(text);
    }
    joiner.finish();
}

QByteArray FGenIntExpander::expandUtf8(const Value &value) const
{
    QByteArray result;
    result.reserve(mFixed.size());
    expandTo(value, [&result](const char *data, qint64 size) { result.append(data, int(size)); });
    return result;
}

QString FGenIntExpander::expand(const QString &text, bool forceWindowsLineEndings,
                                const Value &value)
{
    const QString fixed = forceWindowsLineEndings ? withCarriageReturns(text) : text;
    QString result;
    result.reserve(fixed.size());
    int position = 0;
    const int unclosed = forEachTag(
        fixed.constData(), fixed.size(), Qt::CaseInsensitive, [&](const FGenIntTag &tag) {
            result.append(fixed.constData() + position, tag.start - position);
            position = tag.end;
            QString own;
            if (value(fixed.mid(tag.nameStart, tag.nameLength), &own))
                result.append(own);
        });
    result.append(fixed.constData() + position,
                  (unclosed < 0 ? fixed.size() : unclosed) - position);
    return result;
}

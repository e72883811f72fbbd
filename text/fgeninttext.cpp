// SPDX-License-Identifier: Apache-2.0
#include "fgeninttext.h"

#include <QFile>
#include <QTextCodec>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#ifdef __x86_64__
#include <immintrin.h>
#endif

namespace {
/// Counts line feeds one by one, and ors all bytes into \p bits.
quint32 lookSlowly(const uchar *p, qint64 n, uchar *bits)
{
    quint32 count = 0;
    uchar seen = 0;
    for (qint64 i = 0; i < n; ++i) {
        seen |= p[i];
        count += p[i] == '\n';
    }
    *bits |= seen;
    return count;
}

#ifdef __x86_64__
/// Does the same for a multiple of 32 bytes.
__attribute__((target("avx2"))) quint32 lookWide(const uchar *p, qint64 n, uchar *bits)
{
    constexpr qint64 ahead = 2048; // beyond the page that the processor itself reads ahead in
    const __m256i feed = _mm256_set1_epi8('\n');
    const __m256i zero = _mm256_setzero_si256();
    __m256i all = zero;
    __m256i total = zero;
    for (qint64 i = 0; i < n;) {
        // One byte counter holds at most 255 hits, so the counters are emptied in time.
        const qint64 end = std::min(n, i + 128 * 32);
        __m256i hits = zero;
        for (; i < end; i += 32) {
            _mm_prefetch(reinterpret_cast<const char *>(p + i + ahead), _MM_HINT_T0);
            const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(p + i));
            all = _mm256_or_si256(all, v);
            hits = _mm256_sub_epi8(hits, _mm256_cmpeq_epi8(v, feed));
        }
        total = _mm256_add_epi64(total, _mm256_sad_epu8(hits, zero));
    }
    *bits |= _mm256_movemask_epi8(all) != 0 ? 0x80 : 0;
    quint64 counts[4];
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(counts), total);
    return static_cast<quint32>(counts[0] + counts[1] + counts[2] + counts[3]);
}
#endif

quint32 look(const uchar *p, qint64 n, uchar *bits)
{
    *bits = 0;
#ifdef __x86_64__
    static const bool isWide = __builtin_cpu_supports("avx2");
    if (isWide) {
        const qint64 most = n / 32 * 32;
        const quint32 count = lookWide(p, most, bits);
        return count + lookSlowly(p + most, n - most, bits);
    }
#endif
    return lookSlowly(p, n, bits);
}

quint32 look(const char16_t *p, qint64 n)
{
    return static_cast<quint32>(std::count(p, p + n, u'\n'));
}

qint64 nextFeed(const uchar *p, qint64 from, qint64 to)
{
    const void *hit = from < to ? memchr(p + from, '\n', static_cast<size_t>(to - from)) : nullptr;
    return hit ? static_cast<const uchar *>(hit) - p : -1;
}

qint64 nextFeed(const char16_t *p, qint64 from, qint64 to)
{
    const char16_t *hit = std::find(p + from, p + std::max(from, to), u'\n');
    return hit < p + to ? hit - p : -1;
}

template <class U>
qint64 lastFeed(const U *p, qint64 from, qint64 to)
{
    while (to > from)
        if (p[--to] == '\n')
            return to;
    return -1;
}

QString kindOf(const struct stat &info)
{
    if (S_ISDIR(info.st_mode))
        return QStringLiteral("is a directory");
    if (S_ISFIFO(info.st_mode))
        return QStringLiteral("is a FIFO");
    if (S_ISSOCK(info.st_mode))
        return QStringLiteral("is a socket");
    return S_ISREG(info.st_mode) ? QString() : QStringLiteral("is a device");
}

class FDescriptor
{
public:
    explicit FDescriptor(int fd)
        : mFd(fd)
    {
    }
    FDescriptor(const FDescriptor &) = delete;
    FDescriptor &operator=(const FDescriptor &) = delete;
    ~FDescriptor()
    {
        if (mFd >= 0)
            ::close(mFd);
    }
    int get() const { return mFd; }

private:
    int mFd;
};

// The pieces are those a text stream reads; how a sequence that is broken at their border comes out
// depends on them.
constexpr qint64 kPiece = 16384;
constexpr char kMark[] = "\xEF\xBB\xBF";

/// True if the text of \p n bytes stands there; its byte \p rare is looked for first.
bool holds(const uchar *from, const uchar *to, const char *text, int n, int rare)
{
    for (const uchar *p = from + rare; p < to; ++p) {
        p = static_cast<const uchar *>(memchr(p, text[rare], static_cast<size_t>(to - p)));
        if (!p)
            return false;
        if (to - p >= n - rare && memcmp(p - rare, text, static_cast<size_t>(n)) == 0)
            return true;
    }
    return false;
}

QTextCodec *utf8() { return QTextCodec::codecForMib(106); }

// Bytes; below it, reading costs less than the page faults and the unmapping.
constexpr size_t kMapFrom = 65536;

bool readWhole(int fd, std::string *content)
{
    char buffer[1 << 16];
    for (;;) {
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n > 0)
            content->append(buffer, static_cast<size_t>(n));
        else if (n == 0)
            return true;
        else if (errno != EINTR)
            return false;
    }
}
} // namespace

std::unique_ptr<FGenIntText> FGenIntText::fromFile(const QString &path, QString *why)
{
    QString ignored;
    QString &reason = why ? *why : ignored;
    const QByteArray name = QFile::encodeName(path);
    // The kind is asked before opening: opening a device or a FIFO may itself do something.
    struct stat info = {};
    if (::stat(name.constData(), &info) != 0) {
        reason = qt_error_string(errno);
        return nullptr;
    }
    reason = kindOf(info);
    if (!reason.isEmpty())
        return nullptr;
    const FDescriptor file(::open(name.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (file.get() < 0 || ::fstat(file.get(), &info) != 0) {
        reason = qt_error_string(errno);
        return nullptr;
    }
    reason = kindOf(info);
    if (!reason.isEmpty())
        return nullptr;
    std::unique_ptr<FGenIntText> text(new FGenIntText);
    const auto size = static_cast<size_t>(info.st_size);
    if (size >= kMapFrom && text->mMap.open(file.get(), info)) {
        text->setBytes(static_cast<const uchar *>(text->mMap.data()), static_cast<qint64>(size));
        return text;
    }
    // Small, or of no length but with content all the same, or of a file system that cannot map.
    if (!readWhole(file.get(), &text->mRead)) {
        reason = qt_error_string(errno);
        return nullptr;
    }
    struct stat after = {};
    if (::fstat(file.get(), &after) != 0 || after.st_size != info.st_size ||
        memcmp(&after.st_mtim, &info.st_mtim, sizeof info.st_mtim) != 0) {
        reason = QStringLiteral("has changed while it was read");
        return nullptr;
    }
    return fromBytes(std::move(text->mRead));
}

std::unique_ptr<FGenIntText> FGenIntText::fromBytes(std::string bytes)
{
    std::unique_ptr<FGenIntText> text(new FGenIntText);
    text->mRead = std::move(bytes);
    text->setBytes(reinterpret_cast<const uchar *>(text->mRead.data()),
                   static_cast<qint64>(text->mRead.size()));
    return text;
}

std::unique_ptr<FGenIntText> FGenIntText::fromString(const QString &text)
{
    std::unique_ptr<FGenIntText> result(new FGenIntText);
    result->mString = text;
    result->mWide = reinterpret_cast<const char16_t *>(result->mString.utf16());
    result->mSize = text.size();
    result->mBlocks.assign(static_cast<size_t>((result->mSize + kBlock - 1) / kBlock), kUnseen);
    return result;
}

void FGenIntText::setBytes(const uchar *bytes, qint64 size)
{
    mBytes = bytes;
    mSize = size;
    if (size >= 3 && memcmp(bytes, kMark, 3) == 0) {
        mBytes += 3;
        mSize -= 3;
    }
    // Whether such a text is empty at all, or has a second mark, is only known once it is decoded.
    if (mSize > 0 && mBytes[0] >= 0x80 && (mSize < 16 || memcmp(mBytes, kMark, 3) == 0)) {
        widen();
        return;
    }
    const auto *head = reinterpret_cast<const char *>(bytes);
    QTextCodec *codec = QTextCodec::codecForUtfText(
        QByteArray::fromRawData(head, static_cast<int>(std::min<qint64>(size, 16))), nullptr);
    if (codec && codec->mibEnum() != 106) {
        widen();
        return;
    }
    mBlocks.assign(static_cast<size_t>((mSize + kBlock - 1) / kBlock), kUnseen);
}

void FGenIntText::widen() const
{
    const auto size = static_cast<qint64>(mMap.data() ? mMap.size() : mRead.size());
    const auto *source = reinterpret_cast<const char *>(whole());
    QTextCodec *codec = QTextCodec::codecForUtfText(
        QByteArray::fromRawData(source, static_cast<int>(std::min(size, kPiece))), utf8());
    QTextCodec::ConverterState state;
    // No encoding gives more units than it has bytes, but for what a piece keeps from the last.
    mDecoded.reset(new char16_t[static_cast<size_t>(size) + 16]);
    qint64 length = 0;
    for (qint64 i = 0; i < size; i += kPiece) {
        const QString part =
            codec->toUnicode(source + i, static_cast<int>(std::min(kPiece, size - i)), &state);
        memcpy(mDecoded.get() + length, part.utf16(), static_cast<size_t>(part.size()) * 2);
        length += part.size();
    }
    mWide = mDecoded.get();
    mBytes = nullptr;
    mSize = length;
    mPlain = true;
    mBlocks.assign(static_cast<size_t>((mSize + kBlock - 1) / kBlock), kUnseen);
}

QString FGenIntText::mid(qint64 from, qint64 length) const
{
    const int n = static_cast<int>(std::min<qint64>(length, (1 << 30) - 64));
    return mWide ? QString(reinterpret_cast<const QChar *>(mWide + from), n)
                 : QString::fromLatin1(reinterpret_cast<const char *>(mBytes + from), n);
}

quint32 FGenIntText::block(qint64 index) const
{
    quint32 &count = mBlocks[static_cast<size_t>(index)];
    if (count == kUnseen) {
        const qint64 from = index * kBlock;
        const qint64 n = std::min(kBlock, mSize - from);
        if (mWide) {
            count = look(mWide + from, n);
        } else {
            uchar bits = 0;
            count = look(mBytes + from, n, &bits);
            if (bits >= 0x80) {
                count |= kForeign;
                mForeign = true;
                mPlain = mPlain && decodesByLine(from, from + n);
            }
        }
    }
    return count & ~kForeign;
}

const uchar *FGenIntText::whole() const
{
    return mMap.data() ? static_cast<const uchar *>(mMap.data())
                       : reinterpret_cast<const uchar *>(mRead.data());
}

/// True if each line of the stretch comes out of decode() as it comes out of widen(), and no letter
/// but one of ASCII is the other case of one of ASCII.
bool FGenIntText::decodesByLine(qint64 from, qint64 to) const
{
    const uchar *begin = mBytes + std::max<qint64>(from - 2, 0);
    const uchar *end = mBytes + std::min(to + 2, mSize);
    // The long s, and the sign of the unit kelvin by its rarest byte.
    if (holds(begin, end, "\xC5\xBF", 2, 0) || holds(begin, end, "\xE2\x84\xAA", 3, 1))
        return false;
    const qint64 shift = mBytes - whole();
    for (qint64 at = (from + shift + kPiece - 1) / kPiece * kPiece - shift; at <= to;
         at += kPiece) {
        // A mark may be dropped, and a broken sequence across the border counts as one character.
        if (mSize - at >= 3 && memcmp(mBytes + at, kMark, 3) == 0)
            return false;
        for (qint64 lead = at - 1; lead >= std::max<qint64>(at - 3, 0); --lead) {
            const uchar c = mBytes[lead];
            const qint64 n = c >= 0xF0 ? 4 : c >= 0xE0 ? 3 : c >= 0xC0 ? 2 : 1;
            QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
            if (lead + n > mSize)
                return false;
            if (lead + n > at) {
                const auto *bytes = reinterpret_cast<const char *>(mBytes + lead);
                utf8()->toUnicode(bytes, static_cast<int>(n), &state);
                if (state.invalidChars > 0 || state.remainingChars > 0 ||
                    memcmp(bytes, kMark, 3) == 0)
                    return false;
            }
            if (c < 0x80 || c >= 0xC0)
                break;
        }
    }
    return true;
}

bool FGenIntText::isForeign(qint64 from, qint64 to) const
{
    if (mWide)
        return false;
    for (qint64 i = from / kBlock; i * kBlock < to; ++i) {
        block(i);
        if (!(mBlocks[static_cast<size_t>(i)] & kForeign))
            continue;
        const qint64 begin = std::max(from, i * kBlock);
        const qint64 end = std::min(to, (i + 1) * kBlock);
        uchar bits = 0;
        look(mBytes + begin, end - begin, &bits);
        if (bits >= 0x80)
            return true;
    }
    return false;
}

QString FGenIntText::decode(qint64 from, qint64 to) const
{
    // A line end more is taken, else a sequence that it breaks off would be dropped.
    const int more = to > from && to < mSize && mBytes[to - 1] >= 0x80 ? 1 : 0;
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    QString text = utf8()->toUnicode(reinterpret_cast<const char *>(mBytes + from),
                                     static_cast<int>(to - from) + more, &state);
    text.chop(more);
    return text;
}

void FGenIntText::examine(qint64 from, qint64 to) const
{
    for (qint64 i = from / kBlock; i * kBlock < to; ++i)
        block(i);
}

qint64 FGenIntText::lineFeedFrom(qint64 from, qint64 n, qint64 limit) const
{
    while (from < limit) {
        const qint64 index = from / kBlock;
        const qint64 end = std::min((index + 1) * kBlock, limit);
        const quint32 count = block(index);
        // A whole block that does not hold the wanted one is passed over by its number.
        if (count == 0 || (from == index * kBlock && end == from + kBlock && count < n)) {
            n -= count;
            from = end;
            continue;
        }
        const qint64 hit = mWide ? nextFeed(mWide, from, end) : nextFeed(mBytes, from, end);
        if (hit < 0)
            from = end;
        else if (--n == 0)
            return hit;
        else
            from = hit + 1;
    }
    return -1;
}

qint64 FGenIntText::lineFeedBefore(qint64 end, qint64 n, qint64 *found) const
{
    const qint64 wanted = n;
    while (end > 0) {
        const qint64 index = (end - 1) / kBlock;
        const qint64 from = index * kBlock;
        const quint32 count = block(index);
        if (count == 0 || (end == std::min(from + kBlock, mSize) && count < n)) {
            n -= count;
            end = from;
            continue;
        }
        const qint64 hit = mWide ? lastFeed(mWide, from, end) : lastFeed(mBytes, from, end);
        if (hit < 0)
            end = from;
        else if (--n == 0)
            return hit;
        else
            end = hit;
    }
    if (found)
        *found = wanted - n;
    return -1;
}

qint64 FGenIntText::lineFeedsUpTo(qint64 position) const
{
    qint64 count = 0;
    const qint64 last = position / kBlock;
    for (qint64 i = 0; i < last; ++i)
        count += block(i);
    const qint64 from = last * kBlock;
    if (from < position) {
        examine(from, position);
        uchar bits = 0;
        count += mWide ? look(mWide + from, position - from)
                       : look(mBytes + from, position - from, &bits);
    }
    return count;
}

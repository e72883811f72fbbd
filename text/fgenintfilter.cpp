// SPDX-License-Identifier: Apache-2.0
#include "fgenintfilter.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <tuple>
#include <unordered_map>
#ifdef __x86_64__
#include <immintrin.h>
#endif

namespace {
constexpr size_t kCounters = 1 << 14;
constexpr qint64 kPiece = 4096; // places that are sifted before the hits are looked at

uchar foldByte(uint c) { return static_cast<uchar>(c - 'A' < 26U ? c | 0x20 : c); }

/// Folds four ASCII bytes at once.
quint32 foldFour(quint32 v)
{
    // The top bit of each byte says whether it is at least 'A', and beyond 'Z'.
    const quint32 low = v & 0x7F7F7F7FU;
    const quint32 letters = (low + 0x3F3F3F3FU) & ~(low + 0x25252525U) & ~v & 0x80808080U;
    return v | (letters >> 2);
}

/// Makes all digits the same: sets of half bytes cannot tell them apart.
quint32 blurFour(quint32 v)
{
    const quint32 low = v & 0x7F7F7F7FU;
    const quint32 digits = (low + 0x50505050U) & ~(low + 0x46464646U) & ~v & 0x80808080U;
    return v & ~((digits >> 7) * 0x0FU);
}

quint32 hashOf(quint32 key) { return (key * 2654435761U) >> 18; }

quint32 loadKey(const char *p, int length)
{
    quint32 key = 0;
    memcpy(&key, p, static_cast<size_t>(length));
    return key;
}

#ifdef __x86_64__
__attribute__((target("avx2"))) inline __m256i load(const uchar *p)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(p));
}

__attribute__((target("avx2"))) inline __m256i spread(uchar c)
{
    return _mm256_set1_epi8(static_cast<char>(c));
}

/// Notes all places in [0, \p n) where some group of windows may match; reads 35 bytes beyond. All
/// bytes are ASCII, so the low half of a byte need not be cut out for the shuffle.
__attribute__((target("avx2"))) int sift(const uchar *p, qint64 n, const uchar *masks,
                                         quint16 *places)
{
    const __m256i nibble = _mm256_set1_epi8(0x0F);
    const __m256i zero = _mm256_setzero_si256();
    const __m256i low0 = load(masks), high0 = load(masks + 32);
    const __m256i low1 = load(masks + 64), high1 = load(masks + 96);
    const __m256i low2 = load(masks + 128), high2 = load(masks + 160);
    const __m256i low3 = load(masks + 192), high3 = load(masks + 224);
    int count = 0;
    for (qint64 i = 0; i < n; i += 32) {
        const __m256i v0 = load(p + i), v1 = load(p + i + 1);
        const __m256i v2 = load(p + i + 2), v3 = load(p + i + 3);
        const __m256i h0 = _mm256_and_si256(_mm256_srli_epi16(v0, 4), nibble);
        const __m256i h1 = _mm256_and_si256(_mm256_srli_epi16(v1, 4), nibble);
        const __m256i h2 = _mm256_and_si256(_mm256_srli_epi16(v2, 4), nibble);
        const __m256i h3 = _mm256_and_si256(_mm256_srli_epi16(v3, 4), nibble);
        const __m256i g0 =
            _mm256_and_si256(_mm256_shuffle_epi8(low0, v0), _mm256_shuffle_epi8(high0, h0));
        const __m256i g1 =
            _mm256_and_si256(_mm256_shuffle_epi8(low1, v1), _mm256_shuffle_epi8(high1, h1));
        const __m256i g2 =
            _mm256_and_si256(_mm256_shuffle_epi8(low2, v2), _mm256_shuffle_epi8(high2, h2));
        const __m256i g3 =
            _mm256_and_si256(_mm256_shuffle_epi8(low3, v3), _mm256_shuffle_epi8(high3, h3));
        const __m256i groups = _mm256_and_si256(_mm256_and_si256(g0, g1), _mm256_and_si256(g2, g3));
        auto bits = ~static_cast<quint32>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(groups, zero)));
        while (bits) {
            places[count++] = static_cast<quint16>(i + __builtin_ctz(bits));
            bits &= bits - 1;
        }
    }
    return count;
}

/// The same for a single window of full length: \p masks holds its characters, then for each the
/// bits that tell its cases apart.
__attribute__((target("avx2"))) int siftOne(const uchar *p, qint64 n, const uchar *masks,
                                            quint16 *places)
{
    const __m256i c0 = spread(masks[0]), f0 = spread(masks[4]);
    const __m256i c1 = spread(masks[1]), f1 = spread(masks[5]);
    const __m256i c2 = spread(masks[2]), f2 = spread(masks[6]);
    const __m256i c3 = spread(masks[3]), f3 = spread(masks[7]);
    int count = 0;
    for (qint64 i = 0; i < n; i += 32) {
        const __m256i s0 = _mm256_cmpeq_epi8(_mm256_or_si256(load(p + i), f0), c0);
        const __m256i s1 = _mm256_cmpeq_epi8(_mm256_or_si256(load(p + i + 1), f1), c1);
        const __m256i s2 = _mm256_cmpeq_epi8(_mm256_or_si256(load(p + i + 2), f2), c2);
        const __m256i s3 = _mm256_cmpeq_epi8(_mm256_or_si256(load(p + i + 3), f3), c3);
        const __m256i same = _mm256_and_si256(_mm256_and_si256(s0, s1), _mm256_and_si256(s2, s3));
        auto bits = static_cast<quint32>(_mm256_movemask_epi8(same));
        while (bits) {
            places[count++] = static_cast<quint16>(i + __builtin_ctz(bits));
            bits &= bits - 1;
        }
    }
    return count;
}
#else
int sift(const uchar *, qint64 n, const uchar *, quint16 *places)
{
    for (qint64 i = 0; i < n; ++i)
        places[i] = static_cast<quint16>(i);
    return static_cast<int>(n);
}
int siftOne(const uchar *p, qint64 n, const uchar *masks, quint16 *places)
{
    return sift(p, n, masks, places);
}
#endif
} // namespace

bool FGenIntFilter::isSupported()
{
#ifdef __x86_64__
    static const bool supported = __builtin_cpu_supports("avx2");
    return supported;
#else
    return false;
#endif
}

FGenIntFilter::Sample::Sample(const uchar *text, qint64 from, qint64 to)
    : mCounts(kCounters, 0)
    , mBlurred(kCounters, 0)
{
    constexpr qint64 pieces = 16;
    constexpr qint64 length = 4096;
    const qint64 step = std::max((to - from) / pieces, length);
    const auto increase = [](quint16 *count) {
        *count += *count < std::numeric_limits<quint16>::max();
    };
    for (qint64 begin = from; begin < to; begin += step) {
        const qint64 end = std::min(begin + length, to) - (kWindow - 1);
        for (qint64 i = begin; i < end; ++i) {
            quint32 key;
            memcpy(&key, text + i, sizeof key);
            key = foldFour(key);
            increase(&mCounts[hashOf(key)]);
            increase(&mBlurred[hashOf(blurFour(key))]);
        }
    }
}

FGenIntFilter::Sample::Cost FGenIntFilter::Sample::cost(const char *window, int length) const
{
    // A shorter window is taken for frequent: it is only chosen where there is no other.
    if (length < kWindow)
        return {kCounters, kCounters};
    const quint32 key = loadKey(window, length);
    return {mCounts[hashOf(key)], mBlurred[hashOf(blurFour(key))]};
}

FGenIntFilter::FGenIntFilter(const std::vector<std::string> &patterns, const Sample &sample)
    : mPatterns(patterns)
{
    chooseWindows(sample);
    fillMasks();
    fillTable();
}

void FGenIntFilter::chooseWindows(const Sample &sample)
{
    const auto lengthOf = [](const std::string &p) {
        return static_cast<int>(std::min<size_t>(p.size(), kWindow));
    };
    // Only the head of a very long pattern is looked through.
    const auto placesOf = [&](const std::string &p) {
        return std::min<size_t>(p.size(), 64) - static_cast<size_t>(lengthOf(p)) + 1;
    };
    // A pattern that is shorter than a window has one that no longer pattern shares.
    const auto keyOf = [&](const std::string &p, size_t at) {
        return static_cast<quint64>(lengthOf(p)) << 32 | loadKey(p.data() + at, lengthOf(p));
    };
    std::unordered_map<quint64, int> shared; // how many patterns a window could serve for
    std::unordered_map<quint32, int> sharedBlurred;
    for (const std::string &p : mPatterns) {
        for (size_t at = 0; at < placesOf(p); ++at) {
            ++shared[keyOf(p, at)];
            ++sharedBlurred[blurFour(loadKey(p.data() + at, lengthOf(p)))];
        }
    }
    std::unordered_map<quint64, size_t> known;
    for (size_t i = 0; i < mPatterns.size(); ++i) {
        const std::string &p = mPatterns[i];
        const int length = lengthOf(p);
        // What is looked for shall pass the sieve seldom and serve for many patterns; what a hit is
        // checked by first shall tell these patterns apart.
        size_t best = 0;
        size_t check = 0;
        using Cost = std::tuple<quint32, int, quint32>;
        Cost bestCost(std::numeric_limits<quint32>::max(), 0, 0);
        Cost checkCost = bestCost;
        for (size_t at = 0; at < placesOf(p); ++at) {
            const auto cost = sample.cost(p.data() + at, length);
            const int serves = shared[keyOf(p, at)];
            // All that look alike to the sieve share the cost of what passes it.
            const int alike = sharedBlurred[blurFour(loadKey(p.data() + at, length))];
            const quint32 passing = cost.exact + cost.blurred / static_cast<quint32>(alike);
            const Cost lookCost(passing / 8, -serves, cost.exact);
            if (lookCost < bestCost) {
                bestCost = lookCost;
                best = at;
            }
            const Cost tellCost(static_cast<quint32>(serves), 0, cost.exact);
            if (tellCost < checkCost) {
                checkCost = tellCost;
                check = at;
            }
        }
        const auto entry = known.emplace(keyOf(p, best), mWindows.size());
        if (entry.second) {
            Window fresh;
            fresh.length = length;
            fresh.key = loadKey(p.data() + best, length);
            fresh.care = length == kWindow ? ~0U : (1U << (8 * length)) - 1;
            mWindows.push_back(fresh);
        }
        Window &window = mWindows[entry.first->second];
        window.patterns.push_back({i, static_cast<qint64>(best), static_cast<qint64>(check),
                                   loadKey(p.data() + check, length)});
    }
}

void FGenIntFilter::fillMasks()
{
    // Windows that begin alike share a group, so that a group's sets stay small.
    std::vector<size_t> order(mWindows.size());
    for (size_t i = 0; i < order.size(); ++i)
        order[i] = i;
    std::sort(order.begin(), order.end(), [this](size_t a, size_t b) {
        return memcmp(&mWindows[a].key, &mWindows[b].key, sizeof mWindows[a].key) < 0;
    });
    for (size_t i = 0; i < order.size(); ++i) {
        const Window &window = mWindows[order[i]];
        const auto group = static_cast<uchar>(1U << (i * 8 / order.size()));
        char text[kWindow];
        memcpy(text, &window.key, sizeof text);
        for (size_t k = 0; k < kWindow; ++k) {
            auto &low = mMasks[k][0];
            auto &high = mMasks[k][1];
            const auto admit = [&](uint c) {
                low[c & 15] |= group;
                high[c >> 4] |= group;
            };
            if (static_cast<int>(k) >= window.length) {
                for (uint half = 0; half < 16; ++half)
                    admit(half * 17);
                continue;
            }
            const uint c = static_cast<uchar>(text[k]);
            admit(c);
            if (c - 'a' < 26U)
                admit(c & ~0x20U);
        }
    }
    for (auto &masks : mMasks)
        for (auto &set : masks)
            std::copy_n(set.begin(), 16, set.begin() + 16); // once for each half of the register
}

void FGenIntFilter::fillTable()
{
    size_t size = 64;
    while (size < mWindows.size() * 4)
        size *= 2;
    mTable.resize(size);
    for (size_t i = 0; i < mWindows.size(); ++i) {
        if (mWindows[i].length < kWindow) {
            mShort.push_back(static_cast<int>(i));
            continue;
        }
        size_t at = hashOf(mWindows[i].key) & (size - 1);
        while (mTable[at].window >= 0)
            at = (at + 1) & (size - 1);
        mTable[at].key = mWindows[i].key;
        mTable[at].window = static_cast<int>(i);
    }
}

qint64 FGenIntFilter::compare(const Window &window, const uchar *text, qint64 at, qint64 from,
                              qint64 to, const std::function<void(size_t, qint64)> &hit) const
{
    qint64 work = 0;
    for (const Use &use : window.patterns) {
        const std::string &pattern = mPatterns[use.pattern];
        const qint64 begin = at - use.windowAt;
        const auto size = static_cast<qint64>(pattern.size());
        ++work;
        if (begin < from || begin + size > to)
            continue;
        if (window.length == kWindow) {
            quint32 key;
            memcpy(&key, text + begin + use.checkAt, sizeof key);
            if (foldFour(key) != use.checkKey)
                continue;
        }
        qint64 i = 0;
        while (i < size && foldByte(text[begin + i]) == static_cast<uchar>(pattern[size_t(i)]))
            ++i;
        work += i / 8;
        if (i == size)
            hit(use.pattern, begin);
    }
    return work;
}

qint64 FGenIntFilter::verify(const uchar *text, qint64 at, qint64 from, qint64 to,
                             const std::function<void(size_t, qint64)> &hit) const
{
    quint32 key = 0;
    memcpy(&key, text + at, static_cast<size_t>(std::min<qint64>(kWindow, to - at)));
    key = foldFour(key);
    qint64 work = 1;
    const size_t size = mTable.size();
    for (size_t i = hashOf(key) & (size - 1); mTable[i].window >= 0; i = (i + 1) & (size - 1)) {
        if (mTable[i].key == key) {
            work +=
                compare(mWindows[static_cast<size_t>(mTable[i].window)], text, at, from, to, hit);
            break;
        }
    }
    for (int index : mShort) {
        const Window &window = mWindows[static_cast<size_t>(index)];
        ++work;
        if ((key & window.care) == window.key)
            work += compare(window, text, at, from, to, hit);
    }
    return work;
}

bool FGenIntFilter::scan(const uchar *text, qint64 from, qint64 to, qint64 *work,
                         const std::function<void(size_t, qint64)> &hit) const
{
    const qint64 most = *work;
    quint16 places[kPiece + 32];
    uchar rest[kPiece + 64];
    uchar one[2 * kWindow];
    const bool single = mWindows.size() == 1 && mWindows[0].length == kWindow;
    if (single) {
        memcpy(one, &mWindows[0].key, kWindow);
        for (int k = 0; k < kWindow; ++k) {
            const uint c = one[k];
            one[kWindow + k] = c - 'a' < 26U ? 0x20 : 0;
        }
    }
    const uchar *masks = single ? one : mMasks[0][0].data();
    const auto find = single ? siftOne : sift;
    *work = 0;
    for (qint64 begin = from; begin < to; begin += kPiece) {
        const qint64 n = std::min(kPiece, to - begin);
        int count = 0;
        if (to - begin >= kPiece + 64) {
            count = find(text + begin, n, masks, places);
        } else {
            memcpy(rest, text + begin, static_cast<size_t>(n));
            // What follows the last piece matters to windows that begin in this one.
            const qint64 more = std::min<qint64>(64, to - begin - n);
            memcpy(rest + n, text + begin + n, static_cast<size_t>(more));
            memset(rest + n + more, 0, sizeof rest - static_cast<size_t>(n + more));
            count = find(rest, n, masks, places);
        }
        for (int i = 0; i < count; ++i)
            if (places[i] < n)
                *work += verify(text, begin + places[i], from, to, hit);
        if (*work > most)
            return false;
    }
    return true;
}

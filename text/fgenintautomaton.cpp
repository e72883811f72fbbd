// SPDX-License-Identifier: Apache-2.0
#include "fgenintautomaton.h"

#include <QChar>
#include <algorithm>

namespace {
char16_t foldAscii(char16_t u)
{
    return u >= 'A' && u <= 'Z' ? static_cast<char16_t>(u | 0x20) : u;
}

/// Case folding of all single units, made once somebody asks for one that is not ASCII.
const std::vector<char16_t> &foldTable()
{
    static const std::vector<char16_t> table = [] {
        std::vector<char16_t> t(0x10000);
        for (uint u = 0; u < 0x10000; ++u)
            t[u] = static_cast<char16_t>(QChar::toCaseFolded(u));
        return t;
    }();
    return table;
}
} // namespace

char16_t FGenIntAutomaton::fold(const char16_t *text, qint64 i)
{
    if (QChar::isLowSurrogate(text[i]) && i > 0 && QChar::isHighSurrogate(text[i - 1])) {
        return QChar::lowSurrogate(
            QChar::toCaseFolded(QChar::surrogateToUcs4(text[i - 1], text[i])));
    }
    return text[i] < 0x80 ? foldAscii(text[i]) : foldTable()[text[i]];
}

FGenIntAutomaton::FGenIntAutomaton(const std::vector<std::u16string> &patterns)
    : mHits(patterns.size())
{
    char16_t largest = 0;
    for (const std::u16string &pattern : patterns)
        largest = std::max(largest, *std::max_element(pattern.begin(), pattern.end()));
    mClasses.assign(largest + size_t(1), 0);
    size_t states = 1;
    for (const std::u16string &pattern : patterns) {
        states += pattern.size();
        for (char16_t unit : pattern)
            if (mClasses[unit] == 0 && mClassCount < 0xFFFF)
                mClasses[unit] = static_cast<quint16>(mClassCount++);
    }
    mNext.reserve(states * mClassCount);
    mNext.assign(mClassCount, 0);
    for (const std::u16string &pattern : patterns) {
        quint32 state = 0;
        for (char16_t unit : pattern) {
            const size_t slot = state * size_t(mClassCount) + mClasses[unit];
            if (mNext[slot] == 0) {
                mNext[slot] = static_cast<quint32>(mNext.size() / mClassCount);
                mNext.resize(mNext.size() + mClassCount, 0);
            }
            state = mNext[slot];
        }
        mEnds.push_back(state);
        mLengths.push_back(static_cast<qint64>(pattern.size()));
    }
    states = mNext.size() / mClassCount;
    mFail.assign(states, 0);
    mFirst.assign(states, -1);
    mLast.assign(states, -1);
    // By depth, so that the state of the longest suffix is complete before it is borrowed from.
    mOrder.reserve(states);
    mOrder.push_back(0);
    for (size_t i = 0; i < mOrder.size(); ++i) {
        const quint32 state = mOrder[i];
        const size_t row = state * size_t(mClassCount);
        const size_t failRow = mFail[state] * size_t(mClassCount);
        for (quint32 c = 0; c < mClassCount; ++c) {
            const quint32 child = mNext[row + c];
            const quint32 instead = state == 0 ? 0 : mNext[failRow + c];
            if (child != 0) {
                mFail[child] = instead;
                mOrder.push_back(child);
            } else {
                mNext[row + c] = instead;
            }
        }
    }
}

template <class Classify>
void FGenIntAutomaton::run(qint64 from, qint64 to, Classify classify)
{
    std::fill(mFirst.begin(), mFirst.end(), -1);
    std::fill(mLast.begin(), mLast.end(), -1);
    quint32 state = 0;
    for (qint64 i = from; i < to; ++i) {
        state = mNext[state * size_t(mClassCount) + classify(i)];
        mLast[state] = i;
        if (mFirst[state] < 0)
            mFirst[state] = i;
    }
}

const std::vector<FGenIntAutomaton::Hit> &FGenIntAutomaton::collect()
{
    // Where a state was reached, its suffix was reached too.
    for (size_t i = mOrder.size(); i-- > 1;) {
        const quint32 state = mOrder[i];
        if (mLast[state] < 0)
            continue;
        const quint32 suffix = mFail[state];
        mLast[suffix] = std::max(mLast[suffix], mLast[state]);
        if (mFirst[suffix] < 0 || mFirst[suffix] > mFirst[state])
            mFirst[suffix] = mFirst[state];
    }
    for (size_t i = 0; i < mEnds.size(); ++i) {
        const bool hit = mLast[mEnds[i]] >= 0;
        mHits[i].first = hit ? mFirst[mEnds[i]] - mLengths[i] + 1 : -1;
        mHits[i].last = hit ? mLast[mEnds[i]] - mLengths[i] + 1 : -1;
    }
    return mHits;
}

const std::vector<FGenIntAutomaton::Hit> &FGenIntAutomaton::scan(const uchar *text, qint64 from,
                                                                 qint64 to)
{
    quint16 classes[256];
    for (uint u = 0; u < 256; ++u)
        classes[u] = u < 0x80 ? classOf(foldAscii(static_cast<char16_t>(u))) : quint16(0);
    run(from, to, [&](qint64 i) { return classes[text[i]]; });
    return collect();
}

const std::vector<FGenIntAutomaton::Hit> &FGenIntAutomaton::scan(const char16_t *text, qint64 from,
                                                                 qint64 to)
{
    run(from, to, [&](qint64 i) { return classOf(fold(text, i)); });
    return collect();
}

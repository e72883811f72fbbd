// SPDX-License-Identifier: Apache-2.0
#include "fgenintanchors.h"

#include "fgenintautomaton.h"
#include "fgenintfilter.h"
#include "fgeninttext.h"

#include <algorithm>

namespace {
/// One search: which anchors are still open, and the means to look for them.
class FSearch
{
public:
    FSearch(const FGenIntText &text, qint64 from, qint64 to, std::vector<FGenIntAnchor> *anchors)
        : mText(text)
        , mFrom(from)
        , mTo(to)
        , mAnchors(*anchors)
    {
        for (size_t i = 0; i < mAnchors.size(); ++i) {
            FGenIntAnchor &anchor = mAnchors[i];
            anchor.first = anchor.last = -1;
            mLongest = std::max(mLongest, static_cast<qint64>(anchor.folded.size()));
            mOpenFirst.push_back(anchor.wantFirst);
            mOpenLast.push_back(anchor.wantLast);
        }
        mBlock = std::max(FGenIntText::kBlock * 2, mLongest * 8);
        mOpenFirsts = std::count(mOpenFirst.begin(), mOpenFirst.end(), true);
        mOpenLasts = std::count(mOpenLast.begin(), mOpenLast.end(), true);
        mUseFilter = !mText.isWide() && FGenIntFilter::isSupported();
        prepare();
    }

    void run()
    {
        qint64 front = mFrom;
        qint64 back = mTo;
        while (front < back && (mOpenFirsts > 0 || mOpenLasts > 0)) {
            if (mOpenFirsts > 0) {
                const qint64 next = std::min(front + mBlock, back);
                scan(front, next);
                front = next;
                close(&mOpenFirst, &FGenIntAnchor::first, [&](qint64 at) { return at < front; });
            }
            if (mOpenLasts > 0 && front < back) {
                const qint64 next = std::max(back - mBlock, front);
                scan(next, back);
                back = next;
                close(&mOpenLast, &FGenIntAnchor::last, [&](qint64 at) { return at >= back; });
            }
        }
    }

private:
    /// Looks for all open anchors that begin in the stretch. Those that are open at one end only
    /// are noted at the other as well: where the ends meet, nothing is left to look for.
    void scan(qint64 from, qint64 to)
    {
        const qint64 end = std::min(mTo, to + mLongest - 1);
        mText.examine(from, end);
        if (mIndices.empty() || !mText.isPlain())
            return;
        if (mFilter && (mFilter->takesAnyBytes() || !mText.isForeign(from, end))) {
            mWork = std::max<qint64>(end - from, 4096);
            const auto found = [this](size_t pattern, qint64 at) {
                note(mAnchors[mIndices[pattern]], at);
            };
            if (mFilter->scan(mText.bytes(), from, end, &mWork, found))
                return;
            mFilter.reset();
            mUseFilter = false;
        }
        if (!mAutomaton) {
            std::vector<std::u16string> units;
            for (size_t i : mIndices)
                units.push_back(mAnchors[i].folded);
            mAutomaton = std::make_unique<FGenIntAutomaton>(units);
        }
        const auto &hits = mText.isWide() ? mAutomaton->scan(mText.wide(), from, end)
                                          : mAutomaton->scan(mText.bytes(), from, end);
        for (size_t i = 0; i < hits.size(); ++i) {
            if (hits[i].first >= 0) {
                note(mAnchors[mIndices[i]], hits[i].first);
                note(mAnchors[mIndices[i]], hits[i].last);
            }
        }
    }

    static void note(FGenIntAnchor &anchor, qint64 at)
    {
        anchor.first = anchor.first < 0 ? at : std::min(anchor.first, at);
        anchor.last = std::max(anchor.last, at);
    }

    template <class Passed>
    void close(std::vector<bool> *open, qint64 FGenIntAnchor::*hit, Passed passed)
    {
        bool changed = false;
        for (size_t i = 0; i < mAnchors.size(); ++i) {
            if ((*open)[i] && mAnchors[i].*hit >= 0 && passed(mAnchors[i].*hit)) {
                (*open)[i] = false;
                changed = true;
            }
        }
        if (!changed)
            return;
        mOpenFirsts = std::count(mOpenFirst.begin(), mOpenFirst.end(), true);
        mOpenLasts = std::count(mOpenLast.begin(), mOpenLast.end(), true);
        // An automaton is as fast with anchors that are closed; a filter is not.
        size_t left = 0;
        for (size_t i : mIndices)
            left += mOpenFirst[i] || mOpenLast[i];
        if (left == 0)
            mIndices.clear(); // what is left open cannot stand in a plain text
        else if (mFilter && (left * 4 <= mIndices.size() * 3 || mWork > mBlock / 64))
            prepare();
    }

    /// Gets the means to look for all anchors that are open.
    void prepare()
    {
        mIndices.clear();
        std::vector<std::string> bytes;
        mAutomaton.reset();
        for (size_t i = 0; i < mAnchors.size(); ++i) {
            const std::u16string &folded = mAnchors[i].folded;
            const bool ascii =
                std::all_of(folded.begin(), folded.end(), [](char16_t u) { return u < 0x80; });
            if ((mOpenFirst[i] || mOpenLast[i]) && (ascii || mText.isWide())) {
                mIndices.push_back(i);
                bytes.emplace_back(folded.begin(), folded.end());
            }
        }
        if (mUseFilter) {
            if (!mSample)
                mSample = std::make_unique<FGenIntFilter::Sample>(mText.bytes(), mFrom, mTo);
            mFilter = std::make_unique<FGenIntFilter>(bytes, *mSample);
        }
    }

    const FGenIntText &mText;
    const qint64 mFrom, mTo;
    std::vector<FGenIntAnchor> &mAnchors;
    std::vector<bool> mOpenFirst, mOpenLast;
    qint64 mOpenFirsts = 0, mOpenLasts = 0;
    qint64 mLongest = 1;
    qint64 mBlock = 0;
    std::vector<size_t> mIndices; ///< of the anchors that are looked for
    bool mUseFilter = false;
    qint64 mWork = 0; ///< of the last scan with the filter
    std::unique_ptr<FGenIntFilter::Sample> mSample;
    std::unique_ptr<FGenIntFilter> mFilter;
    std::unique_ptr<FGenIntAutomaton> mAutomaton;
};
} // namespace

std::u16string foldAnchor(const QString &anchor)
{
    const auto *units = reinterpret_cast<const char16_t *>(anchor.utf16());
    std::u16string folded(static_cast<size_t>(anchor.size()), u'\0');
    for (int i = 0; i < anchor.size(); ++i)
        folded[static_cast<size_t>(i)] = FGenIntAutomaton::fold(units, i);
    return folded;
}

void findAnchors(const FGenIntText &text, qint64 from, qint64 to,
                 std::vector<FGenIntAnchor> *anchors)
{
    if (from < to && !anchors->empty())
        FSearch(text, from, to, anchors).run();
    else
        for (FGenIntAnchor &anchor : *anchors)
            anchor.first = anchor.last = -1;
}

// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTAUTOMATON_H
#define FGENINTAUTOMATON_H

#include <QtGlobal>
#include <string>
#include <vector>

/// Finds many texts at once, ignoring case, in time that depends on the length of the searched text
/// only: one table look-up a unit, whatever the texts are like.
class FGenIntAutomaton
{
public:
    struct Hit
    {
        qint64 first = -1, last = -1;
    };

    /// \p patterns are folded and not empty.
    explicit FGenIntAutomaton(const std::vector<std::u16string> &patterns);

    /// First and last hit of each pattern that lies wholly in the stretch.
    const std::vector<Hit> &scan(const uchar *text, qint64 from, qint64 to);
    const std::vector<Hit> &scan(const char16_t *text, qint64 from, qint64 to);

    /// Folds the unit at \p i; a low surrogate folds together with the high one ahead of it.
    static char16_t fold(const char16_t *text, qint64 i);

private:
    template <class Classify>
    void run(qint64 from, qint64 to, Classify classify);
    const std::vector<Hit> &collect();
    quint16 classOf(char16_t folded) const
    {
        return folded < mClasses.size() ? mClasses[folded] : quint16(0);
    }

    quint32 mClassCount = 1;       ///< class 0 is all that stands in no pattern
    std::vector<quint16> mClasses; ///< class of each folded unit, up to the last in a pattern
    std::vector<quint32> mNext;    ///< row by row the state that follows
    std::vector<quint32> mFail;    ///< state of the longest proper suffix
    std::vector<quint32> mOrder;   ///< states by depth
    std::vector<quint32> mEnds;    ///< state that each pattern ends in
    std::vector<qint64> mLengths;
    std::vector<qint64> mFirst, mLast; ///< of each state: unit it was reached with, or -1
    std::vector<Hit> mHits;
};
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTLABELS_H
#define FGENINTLABELS_H

#include <QString>
#include <vector>

/// A stretch of a line that is likely to stand in the output of another run as well.
struct FGenIntLabel
{
    enum Kind {
        Whole,    ///< all between two values
        Part,     ///< one column of that
        WithIndex ///< goes over small numbers that stand for themselves
    };
    Kind kind = Whole;
    int begin = 0, length = 0; ///< in the line
    int letters = 0, digits = 0;
    bool hasGaps = false;   ///< goes over several columns
    bool isForeign = false; ///< has characters that are not ASCII
};

namespace FGenIntLabels {
constexpr int kLongest = 60;

/// Labels in \p line: words between numbers, dates, times, paths and quoted texts, without what a
/// saved rule cannot hold. Of a stretch that is too long its whole words at the end, or at the
/// front, are left.
std::vector<FGenIntLabel> labelsOf(const QString &line, bool keepEnd);
} // namespace FGenIntLabels
#endif

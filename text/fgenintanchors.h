// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTANCHORS_H
#define FGENINTANCHORS_H

#include <QString>
#include <string>
#include <vector>

class FGenIntText;

/// A text to be found, whatever the case of its letters, and where it was found.
struct FGenIntAnchor
{
    std::u16string folded;        ///< as foldAnchor() gives it; not empty
    bool wantFirst = false;       ///< otherwise \p first may be any hit, or none
    bool wantLast = false;        ///< otherwise \p last may be any hit, or none
    qint64 first = -1, last = -1; ///< position, -1 if not found
};

/// Folds case unit by unit, as comparison ignoring case does; keeps the length.
std::u16string foldAnchor(const QString &anchor);

/// Finds all \p anchors that lie wholly in the stretch, in one pass at most: from the front until
/// all wanted first hits are known, from the back until all wanted last hits are. Every part of the
/// text that the answer depends on is examined; see FGenIntText::isPlain().
void findAnchors(const FGenIntText &text, qint64 from, qint64 to,
                 std::vector<FGenIntAnchor> *anchors);
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTDOUBT_H
#define FGENINTDOUBT_H

#include <QtGlobal>

/// True if the number at [\p begin, \p end) of a physical line does not stand by itself: it is cut
/// out of a word, an exponent in an unknown spelling, a date, digits with a comma. \p from is where
/// reading of the line began, behind an anchor if \p anchored.
template <class U>
bool touchesOthers(const U *line, qint64 size, qint64 begin, qint64 end, qint64 from,
                   bool anchored);

/// True if NaN, Inf or an overflowed field stands in [\p from, \p to) of a physical line, where a
/// number would have counted as a column.
template <class U>
bool lacksNumber(const U *line, qint64 size, qint64 from, qint64 to);
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTLINES_H
#define FGENINTLINES_H

#include <QString>

/// A stretch of a text, mostly a line without its line end.
struct FGenIntSpan
{
    int begin = 0, end = 0;
};

namespace FGenIntLines {
/// The line around a position.
FGenIntSpan lineAround(const QString &text, int position);
/// At most \p most units of a line.
QString textOf(const QString &text, const FGenIntSpan &line, int most);
/// Number of words that are numbers or the like.
int numbersIn(const QString &line);

/// What a line is in a table, whose rows have as many numbers and other words each.
struct TableEnd
{
    bool isLast = false; ///< the last row of several
    bool grows = false;  ///< a history, which is as long as the run took
};
TableEnd tableEndAt(const QString &text, const FGenIntSpan &line);
} // namespace FGenIntLines
#endif

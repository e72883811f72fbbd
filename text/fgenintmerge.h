// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTMERGE_H
#define FGENINTMERGE_H
#include <QString>
#include <QVector>

/// A template against a newer version of the file that it was made from, line by line.
///
/// A line with tags belongs to a line that is the same but for what stands in place of the tags.
namespace FGenIntMerge {
struct Line
{
    int old, fresh; ///< numbers of the lines, from 0; -1 where one side has none
    bool isSame;    ///< both are there, and what differs stands in place of tags
};
/// The lines of both in an order that keeps either order.
QVector<Line> align(const QVector<QStringRef> &old, const QVector<QStringRef> &fresh);
QVector<QStringRef> linesOf(const QString &text);

struct Outcome
{
    QString text;
    int changed = 0; ///< lines of the file that weren't in the template
    int lost = 0;    ///< tags whose lines the file has no longer
};
/// The new file with the tags of \p old where their lines are still there.
Outcome takeOver(const QString &old, const QString &fresh);
/// What differs, with "-" and "+" ahead of lines and two lines around, as far as \p most lines.
QString difference(const QString &old, const QString &fresh, int most = 2000);
} // namespace FGenIntMerge
#endif

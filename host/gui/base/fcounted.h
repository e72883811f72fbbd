// SPDX-License-Identifier: Apache-2.0
#ifndef FCOUNTED_H
#define FCOUNTED_H
#include <QString>

/// "1 design", "4 designs": the form of the two texts that fits the number, which stands for their
/// %1.
inline QString counted(qint64 number, const QString &one, const QString &many)
{
    return (number == 1 ? one : many).arg(number);
}
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTREADERCORE_H
#define FGENINTREADERCORE_H

#include "fgenintrules.h"
#include "fgeninttext.h"

#include <QRegExp>
#include <QString>
#include <QStringList>
#include <QVector>
#include <string>

/// Reads rules out of a text.
class FGenIntReaderCore
{
public:
    /// \p text must outlive the reader, and may change its form while it is read.
    explicit FGenIntReaderCore(const FGenIntText &text);

    /// Time that separator expressions may take in one read() before the rest of the rules is given
    /// up: NaN with the note "read took too long".
    void setTimeLimit(int milliseconds) { mTimeLimitMs = milliseconds; }

    /// False: FGenIntReading::line stays 0, and the text ahead of what is read need not be looked
    /// at.
    void setCountLines(bool count) { mCountLines = count; }

    /// Readings in reading order: by place of the anchor, line, column, name. An empty text has
    /// none.
    QVector<FGenIntReading> read(const QVector<FGenIntRule> &rules,
                                 const FGenIntColumns &columns) const;

    /// Place of the anchor of \p rule, ignoring case; -1 if it is empty or not in the text.
    static int getAnchorPos(const FGenIntRule &rule, const QString &text);
    /// Finds a cell in a line. \p position is -1 if there are not enough columns; in number mode a
    /// missing last number leaves \p position behind the one before and gives length 0. With
    /// \p line 0 and an anchor, columns count from the end of the anchor.
    static void parseLine(int &position, int &length, QRegExp &separator, int line,
                          const QString &anchor, const QString &text, int column, bool numberMode);
    /// Puts \p rules into reading order. An empty text leaves them as they are.
    static void sortRules(QVector<FGenIntRule> &rules, const QString &text);

private:
    const FGenIntText &mText;
    int mTimeLimitMs = 5000;
    bool mCountLines = true;
};
#endif

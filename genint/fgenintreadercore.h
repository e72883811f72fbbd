// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTREADERCORE_H
#define FGENINTREADERCORE_H

#include "fgeninttext.h"

#include <QRegExp>
#include <QString>
#include <QStringList>
#include <QVector>
#include <string>

/// One rule: what to read and where. Plain copy of a result value of the model.
struct FGenIntRule
{
    std::string name;
    int line = 0, column = 0;
    std::string anchor;       ///< UTF-8; empty: the whole text
    bool first = false;       ///< first or last occurrence of the anchor
    bool average = false;     ///< mean of the last rows; anchor and line play no part then
    unsigned averageRows = 0; ///< taken as int: 0, or more than fits, makes an empty span
};

/// How a line splits into columns; number mode goes before the other two, which are joined.
struct FGenIntColumns
{
    bool numbers = true;
    bool spacesAndTabs = false;
    QString regExp;
};

/// What one rule gave, and from where. Of an average, cell and place are those of its last row.
struct FGenIntReading
{
    int rule = -1;                       ///< index into the rules handed in
    double value = 0.0;                  ///< NaN if there is no number
    QString cell;                        ///< raw text
    qint64 line = 0;                     ///< physical line, from 1; 0 if the line is not there
    int columnFirst = 0, columnLast = 0; ///< characters in that line, from 1; 0 for an empty cell
    QStringList notes;                   ///< empty when there is no doubt
};

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
    /// The expression that separates columns, for number mode the one that finds numbers.
    static QString separatorPattern(const FGenIntColumns &columns);

private:
    const FGenIntText &mText;
    int mTimeLimitMs = 5000;
    bool mCountLines = true;
};
#endif

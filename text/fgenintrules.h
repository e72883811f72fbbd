// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTRULES_H
#define FGENINTRULES_H
#include <QString>
#include <QStringList>
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
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FTABLEROW_H
#define FTABLEROW_H
#include "fplainvalue.h"

#include <QJsonObject>
#include <QStringList>
#include <cmath>

/// One value of a result file: what was read, from where, and what is doubtful about it. Texts are
/// made from it for those who want texts, and never taken apart again.
struct FTableRow
{
    struct Place
    {
        QString file;
        long long line = 0;       ///< from 1; 0 if there is none
        int first = 0, last = 0;  ///< columns, from 1; 0 for an empty cell
        std::string text() const; ///< "path:12:3-9", empty without a line
    };

    std::string name, type; ///< type by its class
    double value = std::nan("");
    bool isNumber = true; ///< by its type; otherwise the cell is what was read
    QString cell;         ///< raw text
    Place place;
    QStringList notes;

    /// The type, of what is no number followed by a bar and the cell.
    std::string toolTip() const { return isNumber ? type : type + "|" + S(cell); }
    std::string note() const { return S(notes.join(QStringLiteral(", "))); }
    /// What a user sees: the number, or the cell of what is none.
    std::string shown() const { return isNumber ? printedNumber(value) : S(cell); }

    /// For reports: name, value, text, note and where; null for what there isn't. A number that
    /// isn't finite has the value null, and infinity tells so in the text.
    QJsonObject report(bool withType) const;
    /// The same with all that is known, for the store.
    QJsonObject toJson() const;
    /// What is missing in \p json, or of another kind, keeps its default.
    static FTableRow fromJson(const QJsonObject &json);
};
#endif

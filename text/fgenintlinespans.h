// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTLINESPANS_H
#define FGENINTLINESPANS_H
#include <QSet>
#include <QString>
#include <QVector>

/// One line of a template as an editor reads it: how it is coloured, and what a mouse can act on.
///
/// Looser than the reading that writes files: it works line by line, marks match case, and a
/// half-typed line gives a sensible answer. Positions are offsets in the line.
struct FGenIntLineSpans
{
    enum Colour {
        Tag,
        TagError,
        Unclosed,      ///< text behind an opening mark that is never closed
        UnclosedError, ///< the same behind a mark that is an error itself
        Known,
        Unknown,
        PossibleValue
    };
    struct Paint
    {
        int position, length;
        Colour colour;
    };
    enum Type : unsigned { IsTag = 0, IsPossibleValue = 1 };

    QVector<Paint> paints; ///< in order; a later one wins

    // Seven parallel sequences. Tags fill them in two goes, so an index holds across them only as
    // long as every pair of marks on the line has a strict name between.
    QVector<int> begins, ends;
    QVector<int> valueBegins; ///< of the name of a tag, of the number of a possible value
    QVector<QString> names;   ///< full name of the entry, or the word before a number
    QVector<double> values;   ///< NaN for a tag
    QVector<QString> texts;   ///< of the whole span
    QVector<unsigned> types;

    /// Names as knownNames() gives them. Without \p possibleValues the table of the line is of no
    /// use: only tags and names are coloured.
    static FGenIntLineSpans of(const QString &line, const QSet<QString> &known,
                               bool possibleValues);
    /// The form in which names are compared: case folded letter by letter.
    static QString folded(const QString &name);
};
#endif

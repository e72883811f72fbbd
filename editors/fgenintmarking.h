// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTMARKING_H
#define FGENINTMARKING_H
#include "fgenintrules.h"

#include <QHash>
#include <QVector>

class FGenIntText;
class QTextDocument;

/// Where a rule reads in a text, to be painted: its anchor, the lines and the cells in them.
///
/// Steps as a user would take them with a cursor; a cell is found by the function that the reader
/// uses. Where the steps and the reader part ways the marks follow the steps.
struct FGenIntMarks
{
    struct Span
    {
        int begin = 0, length = 0;
    };
    static constexpr int kMostRows = 5000; ///< of an average that are marked

    bool hasAnchor = false;
    Span anchor;
    QVector<Span> lines; ///< of an average the last one first
    QVector<Span> cells; ///< fewer if a line has too few columns

    /// Places of anchors that are known already, -1 for one that isn't there; by the anchor and
    /// whether it is the first.
    using Places = QHash<QPair<QString, bool>, int>;
    static Places findAnchorsOf(const QVector<FGenIntRule> &rules, const FGenIntText &text);

    /// \p text is the plain text of \p document.
    static FGenIntMarks of(const QTextDocument &document, const FGenIntText &text,
                           const FGenIntRule &rule, const FGenIntColumns &columns,
                           const Places &known = {});
};
#endif

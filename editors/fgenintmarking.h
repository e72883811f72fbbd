// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTMARKING_H
#define FGENINTMARKING_H
#include "fgenintrules.h"

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

    /// \p text is the plain text of \p document.
    static FGenIntMarks of(const QTextDocument &document, const FGenIntText &text,
                           const FGenIntRule &rule, const FGenIntColumns &columns);
};
#endif

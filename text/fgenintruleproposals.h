// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTRULEPROPOSALS_H
#define FGENINTRULEPROPOSALS_H

#include "fgenintrules.h"

#include <QString>
#include <QVector>

/// Rules that read a number where somebody clicked in a sample.
namespace FGenIntRuleProposals {
/// The cell that holds the unit at \p position of \p text when its line splits by \p columns; in
/// number mode the number there. A position just behind a cell counts as well. False if none does,
/// or the cell holds no number.
bool cellAt(const QString &text, int position, const FGenIntColumns &columns, int *begin,
            int *length);
/// Rules without a name that read the cell at \p position, best first, at most \p most; each was
/// tried with the reader and reads exactly that cell.
QVector<FGenIntRule> propose(const QString &text, int position, const FGenIntColumns &columns,
                             int most = 6);
} // namespace FGenIntRuleProposals
#endif

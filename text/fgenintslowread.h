// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTSLOWREAD_H
#define FGENINTSLOWREAD_H
#include "fgenintrules.h"
#include "fgeninttext.h"

/// Reading by expressions that may run on for ever. The expression engine can't be interrupted, a
/// process can be ended: such rules are read by turnbuckle-reader, a small program beside this one.
/// It is started anew rather than forked from here, so this process may have threads and windows.
namespace FGenIntSlowRead {
/// Reads the rules from place \p first of the reading order on, within \p timeLimitMs; fewer
/// readings come back if the time is up. \p started tells whether the program is there.
QVector<FGenIntReading> read(const FGenIntText &text, const QVector<FGenIntRule> &rules,
                             const FGenIntColumns &columns, bool countLines, int first,
                             int timeLimitMs, bool *started);
/// What turnbuckle-reader does: takes one task from \p fd, and sends readings back as they come.
/// False if there was none.
bool serve(int fd);
} // namespace FGenIntSlowRead
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FDESIGNTABLE_H
#define FDESIGNTABLE_H
#include "fdesign.h"
#include "fscripterror.h"

/// Designs as a table of text, with a design in each line: RFC 4180, and what spreadsheets make of
/// it (semicolons or tabs between the cells, decimal commas where the comma separates nothing).
namespace FDesignTable {
struct Outcome
{
    std::vector<std::shared_ptr<FDesign>> designs; ///< in the order of the lines
    std::vector<FScriptError> errors;
};

/// Takes designs in from UTF-8 text whose first line names parameters. A first column without a
/// name, or called "design", names the designs: one that exists gets the values, others are made;
/// without it all are made, under free names. One step, and none at all if there is any error; the
/// errors have line and column in \p file.
Outcome read(const QByteArray &text, const std::string &file);

/// A line of such a table, with its end.
QByteArray line(const QStringList &cells, char separator);
} // namespace FDesignTable
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FOBJECTCLIPBOARD_H
#define FOBJECTCLIPBOARD_H
#include "fmanaged.h"

/// Copy, paste and delete of objects.
namespace FObjectClipboard {
using Objects = std::vector<std::shared_ptr<FManaged>>;
/// The managed ones among the selected objects; without the baseline.
Objects selected();
/// What a class copies itself, with its name; of the others the script that makes them again.
void copy(const Objects &objects);
/// Why there is nothing to paste; empty if there is.
QString whyNotPaste();
/// Makes what was copied, under free names, as one step. What goes wrong stands in the log, and
/// nothing is left of it.
void paste();
/// Asks if anything else goes along or loses what it refers to, then destroys them as one step.
bool remove(const Objects &objects);
} // namespace FObjectClipboard
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FCLIPBOARD_H
#define FCLIPBOARD_H
#include "ftext.h"

#include <QClipboard>
#include <QGuiApplication>

/// Text on the clipboard of the desktop.
namespace FClipboard {
inline void setText(const std::string &text) { QGuiApplication::clipboard()->setText(Q(text)); }
} // namespace FClipboard
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef DESKTOP_H
#define DESKTOP_H
#include <string>

struct FDesktopOptions
{
    std::string project, theme;
    bool noNativeDialogs = false, commandsJson = false;
};

/// The window with the workbench in it.
namespace FDesktop {
/// Shows the window until it is closed; the exit code.
int run(const FDesktopOptions &options);
/// Prints the registry as JSON.
int printCommands();
} // namespace FDesktop
#endif

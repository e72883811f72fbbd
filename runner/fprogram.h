// SPDX-License-Identifier: Apache-2.0
#ifndef FPROGRAM_H
#define FPROGRAM_H
#include <cstdint>
#include <string>
#include <sys/types.h>

/// Starts an external program in a process group of its own, with default signal handling, no
/// core files, and no open files but the three standard ones.
struct FProgram
{
    char **command = nullptr; // program and arguments, with a null pointer at the end
    int input = -1, output = -1, errors = -1; // what becomes its standard files
    uint64_t fileLimit = 0;                   // bytes of any one file it writes, 0 none

    /// Looks a name without a slash up in PATH. False with the reason in words ("not found", ...).
    bool find(std::string *why);
    /// Its process number, or -1 with the words for it in \p why. The current folder is where it
    /// starts. After find().
    pid_t start(std::string *why) const;

private:
    std::string mPath;
};
#endif

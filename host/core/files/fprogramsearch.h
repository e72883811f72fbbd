// SPDX-License-Identifier: Apache-2.0
#ifndef FPROGRAMSEARCH_H
#define FPROGRAMSEARCH_H
#include <string>

/// Finds programs the way they are started. Without Qt: the runner uses it as well.
namespace FProgramSearch {
/// Why the file \p path can't be executed, in words; null if it can.
const char *problemOf(const std::string &path);

/// Finds \p name along \p folders, the value of PATH or null. Like a shell, passes over what can't
/// be executed, but tells of it if nothing better comes. Null, with the file in \p path, if there
/// is one.
const char *find(const std::string &name, const char *folders, std::string *path);
} // namespace FProgramSearch
#endif

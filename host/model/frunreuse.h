// SPDX-License-Identifier: Apache-2.0
#ifndef FRUNREUSE_H
#define FRUNREUSE_H
#include "frunrecord.h"

#include <optional>

struct FRunJob;

/// Tells whether an earlier run did what a new one would do.
///
/// That is so if all is the same that the program gets: the files in its folder byte for byte, its
/// arguments, the variables that the project sets, the file for its standard input and how its end
/// is told; and if the program is the same, by path, size and time stamp.
namespace FRunReuse {
/// The SHA-256 of what the program of \p job gets, in hexadecimal digits, once its folder is
/// prepared. Empty with the reason in \p why if a file can't be read.
std::string inputsOf(const FRunJob &job, std::string *why);
/// Path, size and time stamp of the program that \p job starts; the path alone if there is none.
std::string programOf(const FRunJob &job);
/// The finished run in the place that \p job would take, whatever it was made from; none if there
/// is none, if the model was edited while it ran, or if its result files aren't as it left them.
std::optional<FRunRecord> finishedRun(const FRunJob &job);
/// Bytes that are to stay free on the disk of \p folder, for FRunPolicy::keepFreeBytes, and those
/// that are free. False if the system doesn't tell.
bool freeSpace(const std::string &folder, double keepFreeBytes, double *kept, double *free);
} // namespace FRunReuse
#endif

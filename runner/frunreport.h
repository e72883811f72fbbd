// SPDX-License-Identifier: Apache-2.0
#ifndef FRUNREPORT_H
#define FRUNREPORT_H
#include "frunneroptions.h"

/// What became of a run, as it goes into the record and to the caller.
struct FRunReport
{
    std::string state, reason;
    int recordFolder = -1; // where the record goes, opened before the program could change it
    int64_t startMs = 0;   // since 1970, UTC
    double seconds = 0, cpuSeconds = 0;
    bool hasExitCode = false, hasSignal = false;
    int exitCode = 0, signal = 0;
    int processesEnded = 0; // that were left when the program's first process had ended
    long peakMemoryKiB = 0;
    uint64_t stdoutBytes = 0, stderrBytes = 0, stdoutOmitted = 0, stderrOmitted = 0;

    void set(const char *newState, const std::string &newReason)
    {
        state = newState;
        reason = newReason;
    }
    /// The JSON text. Bytes that aren't UTF-8 become U+FFFD.
    std::string toJson(const FRunnerOptions &options) const;
};

/// Replaces the file \p name of \p folder by \p text in one step. No sync: the caller makes records
/// durable in batches. False with the reason in \p why, and the file as it was.
bool replaceFile(int folder, const std::string &name, const std::string &text, std::string *why);
/// Splits a path at its last slash; the folder of a name alone is ".".
void splitPath(const std::string &path, std::string *folder, std::string *name);
/// Writes all of \p text. False with errno set.
bool writeAll(int fd, const char *text, size_t size);
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FRUNREPORT_H
#define FRUNREPORT_H
#include "frunneroptions.h"

/// What became of a run, as it goes into the record and to the caller.
struct FRunReport
{
    std::string state, reason;
    bool inDirectory = false; // the run's directory is the current one; for the runner itself
    int64_t startMs = 0;      // since 1970, UTC
    double seconds = 0, cpuSeconds = 0;
    bool hasExitCode = false, hasSignal = false;
    int exitCode = 0, signal = 0;
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

/// Replaces \p file by \p text in one step. No sync: the caller makes records durable in batches.
/// False with the reason in \p why, and \p file as it was.
bool replaceFile(const std::string &file, const std::string &text, std::string *why);
/// Writes all of \p text. False with errno set.
bool writeAll(int fd, const char *text, size_t size);
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FRUNNEROPTIONS_H
#define FRUNNEROPTIONS_H
#include <cstdint>
#include <string>
#include <vector>

/// What the command line of the runner asks for. File names count from the run's directory; an
/// empty one means none.
struct FRunnerOptions
{
    std::string directory, recordFile, stdinFile, stdoutFile, stderrFile;
    std::string computation, design, inputs, program; // for the record only
    std::vector<std::string> variables; // names of those that the record tells, beside a few others
    int control = -1;                   // socket to the caller
    // The folder of the run, opened by the caller; the directory then is only a name for people.
    int folder = -1;
    // A folder that was prepared beside an old one, both by their names in the folder parent: it
    // takes the place of the old one just before the program starts.
    int parent = -1;
    std::string prepared, place;
    bool waitForAll = false;           // a run ends with the last process, not with the first
    double timeLimit = 0;              // seconds, 0 none
    double grace = 2;                  // seconds between SIGTERM and SIGKILL
    uint64_t captureLimit = 104857600; // bytes of each output, 0 none
    uint64_t fileLimit = 0;            // bytes of any one file, 0 none
    std::vector<std::string> expected; // files that a finished run has made
    std::vector<char *> command;       // program and arguments, with a null pointer at the end

    /// False with the message in \p why for wrong usage. The command points into \p argv.
    bool parse(int argc, char **argv, std::string *why);
};
#endif

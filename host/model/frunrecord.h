// SPDX-License-Identifier: Apache-2.0
#ifndef FRUNRECORD_H
#define FRUNRECORD_H
#include <QByteArray>
#include <string>
#include <vector>

enum class FRunState { NotStarted, Finished, Failed, TimeLimit, Cancelled };

/// The outcome of one run, as its record tells it.
struct FRunRecord
{
    std::string computation, design, directory;
    FRunState state = FRunState::NotStarted;
    std::string reason; ///< in words
    bool hasExitCode = false, hasSignal = false;
    int exitCode = 0, signal = 0;
    double seconds = 0;
    int processesEnded = 0;                       ///< that were left when the program had ended
    std::vector<std::string> inputsWithoutNumber; ///< that were nan
    bool inputsChanged = false;                   ///< the model was edited while the program ran
    /// What the run was made from, as FRunReuse tells it; empty if that isn't known.
    std::string inputs, program;
    struct ResultFile
    {
        std::string name;
        long long bytes = 0;
        std::string modified; ///< seconds since 1970, a point and nanoseconds
    };
    std::vector<ResultFile> resultFiles; ///< those that were expected, as the program left them
    bool reused = false;                 ///< of an earlier study; not recorded
    unsigned id = 0;                     ///< of the run in this process; not recorded

    bool succeeded() const { return state == FRunState::Finished; }
    void set(FRunState newState, std::string newReason);
    /// finished, failed, timeout, cancelled, not-started: only for files and JSON.
    const char *stateText() const;
    /// Doubt that all values of the run share; empty if there is none.
    std::string note() const;

    /// Takes state and figures from the text of a run.json; names and directory stay where they
    /// are set. False if it is none.
    bool read(const QByteArray &text);
    /// The text of \p recorded, which a runner wrote or which is empty, with what this record says.
    QByteArray text(const QByteArray &recorded) const;
};
#endif

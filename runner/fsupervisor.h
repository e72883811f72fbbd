// SPDX-License-Identifier: Apache-2.0
#ifndef FSUPERVISOR_H
#define FSUPERVISOR_H
#include "foutputcapture.h"
#include "frunreport.h"

#include <sys/types.h>

/// Carries one program from its start until nothing of it is left, and tells what became of it.
///
/// The program and all it starts end with its first process (with its last one if the options say
/// so), with the time limit, with a word of the caller or with the caller's end. One thread that
/// sleeps until something happens.
class FSupervisor
{
public:
    explicit FSupervisor(const FRunnerOptions &options)
        : mOptions(options)
    {
    }
    ~FSupervisor();
    FSupervisor(const FSupervisor &) = delete;
    FSupervisor &operator=(const FSupervisor &) = delete;

    /// To be called once; makes the run's directory the current one.
    FRunReport run();

private:
    enum class FCause { Program, TimeLimit, Cancelled };
    enum class FPhase { Running, Terminating, Killing };

    bool prepare();
    void openRecordFolder();
    bool startProgram(std::string *why);
    /// Puts the prepared folder in its place, or takes it back.
    bool takePlace(bool back);
    bool openFiles();
    int openInput();
    FOutputCapture *errorCapture();
    void supervise();
    /// Reaps what has ended. False when there is nothing left to wait for.
    bool reap();
    void waitForEvent();
    void checkTimes();
    void readControl();
    void readSignals();
    void stop(FCause cause, double graceSeconds);
    void killAll();
    void judge();
    const std::string *missingFile() const;

    const FRunnerOptions &mOptions;
    FRunReport mReport;
    FOutputCapture mOutput, mErrors;
    FCause mCause = FCause::Program;
    FPhase mPhase = FPhase::Running;
    int mSignals = -1, mNull = -1, mInput = -1;
    bool mControlOpen = true, mTreeKnown = true;
    pid_t mProgram = -1;                       // -1 before it starts and after it was reaped
    int64_t mStart = 0, mDeadline = INT64_MAX; // ns; the time limit, then the grace, then retries
};
#endif

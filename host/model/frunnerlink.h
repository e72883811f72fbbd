// SPDX-License-Identifier: Apache-2.0
#ifndef FRUNNERLINK_H
#define FRUNNERLINK_H
#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>

/// A turnbuckle-runner, which starts the external programs. It carries one run at a time, and stays
/// for further ones: a run then costs no more processes than its program has.
class FRunnerLink
{
public:
    FRunnerLink() = default;
    ~FRunnerLink();
    FRunnerLink(const FRunnerLink &) = delete;
    FRunnerLink &operator=(const FRunnerLink &) = delete;

    /// One that has nothing to do.
    static std::unique_ptr<FRunnerLink> take();
    /// To be called when the run has ended, however it did.
    static void giveBack(std::unique_ptr<FRunnerLink> link);
    static std::string runnerPath();

    /// Starts a run with the options \p words and the \p variables ("NAME=value") beside the
    /// environment of this process. \p files are the runner's end of the control socket and what
    /// else FRunRequests takes; they stay the caller's to close. False with the reason in \p why.
    bool start(const std::vector<std::string> &words, const std::vector<std::string> &variables,
               const std::vector<int> &files, std::string *why);
    /// To be called when a run ended without a report: its runner was killed, and what it left has
    /// come to this process. Ends all of that.
    void endOrphans();

private:
    bool connect(std::string *why);
    void disconnect();

    static void reapEnded();

    int mSocket = -1;
    pid_t mRunner = -1;
    std::string mMadeFor; // path and environment that the runner was started with
};
#endif

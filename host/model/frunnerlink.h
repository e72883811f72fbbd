// SPDX-License-Identifier: Apache-2.0
#ifndef FRUNNERLINK_H
#define FRUNNERLINK_H
#include <string>
#include <sys/types.h>
#include <vector>

/// The way to turnbuckle-runner, which starts the external programs.
///
/// One runner is started with the first run and stays. For each run it makes a copy of itself that
/// has nothing to do with the others, at a fraction of the cost of a program start.
class FRunnerLink
{
public:
    FRunnerLink() = default;
    ~FRunnerLink();
    FRunnerLink(const FRunnerLink &) = delete;
    FRunnerLink &operator=(const FRunnerLink &) = delete;

    static FRunnerLink *instance();
    static std::string runnerPath();

    /// Starts a run with the options \p words and the \p variables ("NAME=value") beside the
    /// environment of this process. \p control is the runner's end of the control socket; it stays
    /// the caller's to close. False with the reason in \p why.
    bool start(const std::vector<std::string> &words, const std::vector<std::string> &variables,
               int control, std::string *why);

private:
    bool connect(std::string *why);
    void disconnect();

    int mSocket = -1;
    pid_t mRunner = -1;
    std::string mMadeFor; // path and environment that the runner was started with
};
#endif

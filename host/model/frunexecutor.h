// SPDX-License-Identifier: Apache-2.0
#ifndef FRUNEXECUTOR_H
#define FRUNEXECUTOR_H
#include <QByteArray>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class FRunFolder;
class FRunLock;

/// What is to be executed for one run.
struct FRunJob
{
    std::string computation, design, directory;
    std::vector<std::string> command;   ///< program and arguments
    std::vector<std::string> variables; ///< "NAME=value", beside the environment of this process
    std::vector<std::string> expected;  ///< files without which the run has failed
    std::string standardInput;          ///< a file of the run folder, empty for none
    double timeLimit = 0;               ///< seconds, 0 for none
    std::string inputs, program;        ///< what the run is made from, for the record
    bool waitForAll = false;            ///< the run ends with the last process, not with the first
    std::shared_ptr<FRunFolder> folder;
    std::shared_ptr<FRunLock> lock;
};

/// A run that is under way. It is ended, without anybody waiting for it, when this object goes.
class FRunExecution
{
public:
    virtual ~FRunExecution() = default;
    virtual void cancel() = 0;
};

/// Who executes runs: this host, or a queue of a cluster.
///
/// It brings the prepared folder into its place when the program is about to start, executes it
/// there, and leaves the record .turnbuckle/run.json in the folder.
class FRunExecutor
{
public:
    virtual ~FRunExecutor() = default;
    /// The text of the record; empty if there is none.
    using Ended = std::function<void(const QByteArray &record)>;

    /// Calls \p ended once, later. Null with the reason in \p why if nothing was started.
    virtual std::unique_ptr<FRunExecution> start(const FRunJob &job, Ended ended,
                                                 std::string *why) = 0;
    /// This host, unless another one was set.
    static FRunExecutor *instance();
    static void setInstance(FRunExecutor *executor);
};
#endif

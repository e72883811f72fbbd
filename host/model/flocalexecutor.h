// SPDX-License-Identifier: Apache-2.0
#ifndef FLOCALEXECUTOR_H
#define FLOCALEXECUTOR_H
#include "frunexecutor.h"

/// Executes runs on this host: a turnbuckle-runner for each ends all of the program when its time
/// is over, when the run is cancelled, or when this process is gone. Its report comes over a
/// socket.
class FLocalExecutor : public FRunExecutor
{
public:
    std::unique_ptr<FRunExecution> start(const FRunJob &job, Ended ended,
                                         std::string *why) override;
};
#endif

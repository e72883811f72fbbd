// SPDX-License-Identifier: Apache-2.0
#ifndef FPROCESSTREE_H
#define FPROCESSTREE_H
#include <sys/types.h>
#include <vector>

/// Sends \p signal to every process that descends from this one, parents before their children.
/// Processes whose parents are gone count, because they come to this process, the subreaper.
/// How many there are that have not ended yet; -1 if the processes of the system can't be listed.
/// With \p roots only those count that descend from its processes, these among them. Without Qt:
/// the runner uses it as well.
int signalDescendants(int signal, const std::vector<pid_t> *roots = nullptr);

/// Children of this process; empty if they can't be listed.
std::vector<pid_t> childrenOfThisProcess();
#endif

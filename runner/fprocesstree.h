// SPDX-License-Identifier: Apache-2.0
#ifndef FPROCESSTREE_H
#define FPROCESSTREE_H
#include <sys/types.h>

/// Sends \p signal to every process that descends from this one, parents before their children.
/// Processes whose parents are gone count, because they come to this process, the subreaper.
/// False if the processes of the system can't be listed.
bool signalDescendants(int signal);
#endif

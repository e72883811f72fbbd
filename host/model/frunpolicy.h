// SPDX-License-Identifier: Apache-2.0
#ifndef FRUNPOLICY_H
#define FRUNPOLICY_H

/// What is done about runs that don't finish, how long one may take, and what becomes of runs of
/// earlier studies.
struct FRunPolicy
{
    enum Earlier {
        Replace, ///< every run is run
        Reuse,   ///< a finished run whose inputs, as written, are the same isn't run again
        Reread   ///< nothing is run: the present result templates read what earlier runs left
    };
    bool keepGoing = true; ///< with false no further design starts after a failure
    int retries = 0;       ///< how often a run that failed or took too long starts again
    double timeout = -1;   ///< seconds in place of the computation's own; negative for its own
    Earlier earlier = Replace;
    bool trustProgram = false; ///< another program file doesn't make a run another one
    /// No further design starts with less space than that on the disk of the runs. Negative: the
    /// smaller one of 1 GiB and 5 %.
    double keepFreeBytes = -1;
};
#endif

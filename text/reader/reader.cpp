// SPDX-License-Identifier: Apache-2.0
// turnbuckle-reader: reads by expressions that may take too long; whoever started it ends it, and
// it ends with who started it.
#include "fgenintslowread.h"

#include <csignal>
#include <sys/prctl.h>

int main()
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    return FGenIntSlowRead::serve(0) ? 0 : 2;
}

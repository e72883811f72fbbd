// SPDX-License-Identifier: Apache-2.0
#include "fgenintworkbench.h"

namespace {
FGenIntWorkbench *&theWorkbench()
{
    static FGenIntWorkbench none;
    static FGenIntWorkbench *workbench = &none;
    return workbench;
}
} // namespace

FGenIntWorkbench *FGenIntWorkbench::instance() { return theWorkbench(); }

void FGenIntWorkbench::setInstance(FGenIntWorkbench *workbench) { theWorkbench() = workbench; }

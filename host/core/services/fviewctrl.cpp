// SPDX-License-Identifier: Apache-2.0
#include "fviewctrl.h"

namespace {
FViewCtrl *&theControl()
{
    static FViewCtrl headless;
    static FViewCtrl *control = &headless;
    return control;
}
} // namespace

FViewCtrl *FViewCtrl::instance() { return theControl(); }

void FViewCtrl::setInstance(FViewCtrl *control) { theControl() = control; }

FObjectTree *FObjectTree::instance()
{
    static FObjectTree tree;
    return &tree;
}

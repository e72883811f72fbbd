// SPDX-License-Identifier: Apache-2.0
#include "fmarloctrl.h"

#include "fhistory.h"

FMarloCtrl *FMarloCtrl::instance()
{
    static FMarloCtrl control;
    return &control;
}

bool FMarloCtrl::isBusy() const { return mLoading || FHistory::instance()->isBusy(); }

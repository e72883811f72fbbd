// SPDX-License-Identifier: Apache-2.0
#include "fmarloctrl.h"

#include "fhistory.h"
#include "fupdates.h"

FMarloCtrl *FMarloCtrl::instance()
{
    static FMarloCtrl control;
    return &control;
}

bool FMarloCtrl::isBusy() const { return mLoading || FHistory::instance()->isBusy(); }

FLoadingScope::~FLoadingScope()
{
    FMarloCtrl::instance()->setLoadingProject(mBefore);
    if (!mBefore)
        FUpdates::released();
}

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

FLoadingScope::FLoadingScope(bool recorded)
    : mBefore(FMarloCtrl::instance()->mLoading)
    , mUnrecordedBefore(FMarloCtrl::instance()->mUnrecorded)
{
    FMarloCtrl::instance()->mLoading = true;
    FMarloCtrl::instance()->mUnrecorded = mUnrecordedBefore || !recorded;
}

FLoadingScope::~FLoadingScope()
{
    FMarloCtrl::instance()->mLoading = mBefore;
    FMarloCtrl::instance()->mUnrecorded = mUnrecordedBefore;
    if (!mBefore)
        FUpdates::released();
}

// SPDX-License-Identifier: Apache-2.0
#include "frunqueue.h"

#include "fdesign.h"
#include "fexternrun.h"
#include "frunsync.h"

#include <QEventLoop>
#include <QTimer>
#include <algorithm>

FRunQueue::FRunQueue() = default;
FRunQueue::~FRunQueue() = default;

FRunQueue *FRunQueue::background()
{
    static FRunQueue queue;
    return &queue;
}

void FRunQueue::add(const std::shared_ptr<FDesign> &design,
                    const std::vector<std::shared_ptr<FExternComputation>> &chain)
{
    auto item = std::make_shared<Chain>();
    item->design = design;
    item->computations.assign(chain.begin(), chain.end());
    mTotal += chain.size();
    mWaiting.push_back(std::move(item));
}

void FRunQueue::run(int jobs)
{
    const auto before = FDesign::current();
    QEventLoop loop;
    mIdle = [&loop] { loop.quit(); };
    start(jobs);
    if (!isIdle())
        loop.exec();
    mIdle = nullptr;
    mEnded.clear();
    FRunSync::instance()->wait();
    FDesign::setCurrent(before);
}

bool FRunQueue::isIdle() const
{
    return mWaiting.empty() && mRunning.empty() && mConcluding.empty();
}

void FRunQueue::start(int jobs)
{
    mJobs = std::max(1, jobs);
    startMore();
}

void FRunQueue::startMore()
{
    if (mStarting)
        return; // a run that ended at once: the loop below goes on
    mStarting = true;
    while (!mWaiting.empty() && int(mRunning.size()) < mJobs) {
        const auto chain = mWaiting.front();
        mWaiting.pop_front();
        if (mCancelled)
            skipRest(*chain, "cancelled");
        else if (mFailed > 0 && !mKeepGoing)
            skipRest(*chain, "stopped after a failure");
        else
            startNext(chain);
    }
    mStarting = false;
    if (isIdle() && mIdle)
        mIdle();
}

void FRunQueue::startNext(const std::shared_ptr<Chain> &chain)
{
    const auto computation = chain->computations.front();
    chain->computations.pop_front();
    mRunning.push_back(std::make_unique<FExternRun>(computation, chain->design, mTimeout));
    FExternRun *run = mRunning.back().get();
    run->start([this, run, chain] { ended(run, chain); });
}

void FRunQueue::ended(FExternRun *run, const std::shared_ptr<Chain> &chain)
{
    const auto at = std::find_if(mRunning.begin(), mRunning.end(),
                                 [run](const auto &other) { return other.get() == run; });
    // The run stands on the stack still; it is deleted from the event loop.
    if (mEnded.empty())
        QTimer::singleShot(0, &mContext, [this] { mEnded.clear(); });
    mEnded.push_back(std::move(*at));
    mRunning.erase(at);
    mConcluding.emplace_back(run, chain);
    if (mConcluding.size() > 1)
        return; // the loop below started it; first come, first recorded
    while (!mConcluding.empty()) {
        const auto [first, its] = mConcluding.front();
        // A program need not wait for the values of another design.
        if (first->record().succeeded() && its->computations.empty() && !mCancelled)
            startMore();
        first->conclude();
        conclude(first, its);
        mConcluding.pop_front();
    }
    startMore();
}

void FRunQueue::conclude(FExternRun *run, const std::shared_ptr<Chain> &chain)
{
    const FRunRecord &result = run->record();
    record(result);
    if (!result.succeeded())
        skipRest(*chain, "computation " + result.computation + " did not finish");
    else if (mCancelled)
        skipRest(*chain, "cancelled");
    else if (!chain->computations.empty())
        startNext(chain);
}

void FRunQueue::skipRest(const Chain &chain, const std::string &why)
{
    FDesign::setCurrent(chain.design); // the listener may ask for its values
    for (const auto &computation : chain.computations) {
        FRunRecord skipped;
        skipped.computation = computation->getName();
        skipped.design = chain.design->getName();
        skipped.state = mCancelled ? "cancelled" : "not-started";
        skipped.reason = why;
        record(skipped);
    }
}

void FRunQueue::record(const FRunRecord &result)
{
    mFailed += !result.succeeded();
    mRecords.push_back(result);
    if (mListener)
        mListener(result);
}

void FRunQueue::cancel()
{
    mCancelled = true;
    for (const auto &run : mRunning)
        run->cancel();
}

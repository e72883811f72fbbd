// SPDX-License-Identifier: Apache-2.0
#include "frunqueue.h"

#include "fchanges.h"
#include "fexternrun.h"
#include "flogmsg.h"
#include "fpathmanager.h"
#include "frunlock.h"
#include "frunreuse.h"
#include "frunsync.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QLocale>
#include <QPointer>
#include <QTimer>
#include <algorithm>

namespace {
std::vector<FRunQueue *> &allQueues()
{
    static std::vector<FRunQueue *> queues;
    return queues;
}

unsigned nextId()
{
    static unsigned last = 0;
    return ++last;
}
} // namespace

FRunQueue::FRunQueue(QObject *parent)
    : QObject(parent)
{
    allQueues().push_back(this);
    connect(FChanges::instance(), &FChanges::projectClosing, this, &FRunQueue::drop);
}

FRunQueue::~FRunQueue()
{
    auto &all = allQueues();
    all.erase(std::find(all.begin(), all.end(), this));
    drop();
}

FRunQueue *FRunQueue::background()
{
    static QPointer<FRunQueue> queue;
    if (!queue)
        queue = new FRunQueue(QCoreApplication::instance());
    return queue;
}

void FRunQueue::add(const std::shared_ptr<FDesign> &design,
                    const std::vector<std::shared_ptr<FExternComputation>> &chain)
{
    if (isIdle() && !mBusy) {
        mRecords.clear();
        mTotal = mFailed = 0;
        mCancelled = false;
        mFailure.clear();
        mNoSpace.clear();
    }
    auto item = std::make_shared<Chain>();
    item->design = design;
    item->policy = mPolicy;
    const QDateTime now = QDateTime::currentDateTimeUtc();
    for (const auto &computation : chain)
        item->steps.push_back({nextId(), computation, now, 0});
    mTotal += chain.size();
    mBusy = true;
    mWaiting.push_back(item);
    for (const Step &step : item->steps)
        Q_EMIT queued(step.id);
}

void FRunQueue::run(int jobs)
{
    const FDesign::Scope restored(nullptr);
    QEventLoop loop;
    connect(this, &FRunQueue::idle, &loop, &QEventLoop::quit);
    start(jobs);
    if (!isIdle())
        loop.exec();
    mEnded.clear();
    FRunSync::instance()->wait();
    noteSyncFailures();
}

bool FRunQueue::isIdle() const
{
    return mWaiting.empty() && mBlocked.empty() && mRunning.empty() && mConcluding.empty();
}

void FRunQueue::start(int jobs)
{
    mJobs = std::max(1, jobs);
    std::string why; // each run asks for itself, and tells
    if (!mLock && !isIdle())
        mLock = FRunLock::take(FPathManager::instance()->getDesignsDirAbs(), &why);
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
            skipRest(*chain, FRunState::Cancelled, "cancelled");
        else if (!mFailure.empty() && !chain->policy.keepGoing)
            skipRest(*chain, FRunState::NotStarted, "not started because " + mFailure);
        else if (const std::string why = spaceProblem(chain->policy); !why.empty())
            skipRest(*chain, FRunState::NotStarted, mNoSpace = why);
        else
            startNext(chain);
    }
    mStarting = false;
    if (isIdle() && mBusy)
        becomeIdle();
}

std::string FRunQueue::spaceProblem(const FRunPolicy &policy)
{
    double kept = 0, free = 0;
    if (policy.earlier == FRunPolicy::Reread ||
        !FRunReuse::freeSpace(FPathManager::instance()->getProjectDirAbs(), policy.keepFreeBytes,
                              &kept, &free) ||
        free >= kept)
        return std::string();
    const auto shown = [](double bytes) {
        return S(QLocale::c().formattedDataSize(qint64(bytes), 1));
    };
    return "not started because only " + shown(free) +
           " are free on the disk of the project, and " + shown(kept) + " are to stay free";
}

void FRunQueue::becomeIdle()
{
    mBusy = false;
    mLock.reset();
    const auto tellSkipped = [this](const std::string &why) {
        const auto count = std::count_if(mRecords.begin(), mRecords.end(),
                                         [&](const auto &one) { return one.reason == why; });
        if (count > 0)
            FLogMsg::error("Run", std::to_string(count) + " runs were " + why, std::string(),
                           nullptr);
    };
    if (!mFailure.empty())
        tellSkipped("not started because " + mFailure);
    if (!mNoSpace.empty())
        tellSkipped(mNoSpace);
    Q_EMIT idle();
}

void FRunQueue::startNext(const ChainPtr &chain)
{
    const Step &step = chain->steps.front();
    if (step.computation->isRunningFor(chain->design.get())) {
        mBlocked.push_back(chain);
        return;
    }
    mRunning.push_back(
        {std::make_unique<FExternRun>(step.computation, chain->design, chain->policy), chain});
    FExternRun *run = mRunning.back().run.get();
    const unsigned id = step.id;
    run->start([this, run] { runEnded(run); });
    Q_EMIT started(id);
}

void FRunQueue::wakeWaiting()
{
    const auto queues = allQueues();
    for (FRunQueue *queue : queues) {
        if (queue->mBlocked.empty())
            continue;
        auto blocked = std::exchange(queue->mBlocked, {});
        for (const ChainPtr &chain : blocked) {
            // What it waited for is done: a supplier that is fresh now needs no second run.
            while (chain->steps.size() > 1 &&
                   chain->steps.front().computation->isUpToDateFor(chain->design)) {
                chain->steps.pop_front();
                --queue->mTotal;
            }
            queue->mWaiting.push_front(chain);
        }
        QTimer::singleShot(0, queue, [queue] { queue->startMore(); });
    }
}

void FRunQueue::runEnded(FExternRun *run)
{
    const auto at = std::find_if(mRunning.begin(), mRunning.end(),
                                 [run](const auto &other) { return other.run.get() == run; });
    mConcluding.push_back(std::move(*at));
    mRunning.erase(at);
    if (mConcluding.size() > 1)
        return;                             // the loop below started it; first come, first recorded
    const FDesign::Scope restored(nullptr); // once for all that ended and started
    while (!mConcluding.empty()) {
        // A program need not wait for the values of another design.
        if (mConcluding.front().run->record().succeeded() &&
            mConcluding.front().chain->steps.size() == 1 && !mCancelled)
            startMore();
        conclude(&mConcluding.front());
        // The run stands on the stack still; it is deleted from the event loop.
        if (mEnded.empty())
            QTimer::singleShot(0, this, [this] { mEnded.clear(); });
        mEnded.push_back(std::move(mConcluding.front().run));
        mConcluding.pop_front();
    }
    wakeWaiting();
    startMore();
}

void FRunQueue::conclude(Running *one)
{
    const ChainPtr chain = one->chain;
    const FDesign::Scope evaluated(chain->design); // the listener may ask for its values
    one->run->conclude();
    FRunRecord result = one->run->record();
    if (chain->steps.empty())
        return; // forgotten meanwhile
    Step step = chain->steps.front();
    const bool mayRetry = result.state == FRunState::Failed || result.state == FRunState::TimeLimit;
    if (mayRetry && step.attempts < chain->policy.retries && !mCancelled && !one->isCancelled) {
        ++chain->steps.front().attempts;
        startNext(chain);
        return;
    }
    chain->steps.pop_front();
    result.id = step.id;
    record(result);
    if (!result.succeeded()) {
        if (mFailure.empty())
            mFailure = "computation " + result.computation + " of design " + result.design +
                       " did not finish";
        skipRest(*chain,
                 result.state == FRunState::Cancelled ? FRunState::Cancelled
                                                      : FRunState::NotStarted,
                 "computation " + result.computation + " did not finish");
    } else if (mCancelled) {
        skipRest(*chain, FRunState::Cancelled, "cancelled");
    } else if (!chain->steps.empty()) {
        startNext(chain);
    }
}

void FRunQueue::skipRest(const Chain &chain, FRunState state, const std::string &why)
{
    if (chain.steps.empty())
        return;
    const FDesign::Scope evaluated(chain.design);
    for (const Step &step : chain.steps) {
        FRunRecord skipped;
        skipped.computation = step.computation->getName();
        skipped.design = chain.design->getName();
        skipped.set(state, why);
        skipped.id = step.id;
        record(skipped);
    }
}

void FRunQueue::record(FRunRecord result)
{
    mFailed += !result.succeeded();
    mRecords.push_back(result);
    if (mListener)
        mListener(result);
    Q_EMIT ended(result);
}

void FRunQueue::noteSyncFailures()
{
    for (const FRunSync::Failure &failure : FRunSync::instance()->takeFailures()) {
        FLogMsg::error("Run", "Could not bring the records of runs to the disk", failure.why,
                       nullptr);
        for (FRunRecord &one : mRecords) {
            if (one.directory != failure.folder || !one.succeeded())
                continue;
            one.set(FRunState::Failed, "the run can't be brought to the disk: " + failure.why);
            ++mFailed;
            if (mListener)
                mListener(one);
            Q_EMIT ended(one);
        }
    }
}

std::vector<FRunQueue::Item> FRunQueue::items() const
{
    std::vector<Item> all;
    const auto addSteps = [&](const Chain &chain, size_t from) {
        for (size_t i = from; i < chain.steps.size(); ++i)
            all.push_back({chain.steps[i].id, chain.steps[i].computation->getName(),
                           chain.design->getName(), std::string(), false, chain.steps[i].since});
    };
    for (const Running &one : mRunning)
        if (!one.chain->steps.empty()) {
            all.push_back({one.chain->steps.front().id, one.run->record().computation,
                           one.run->record().design, one.run->record().directory, true,
                           one.run->since()});
            addSteps(*one.chain, 1);
        }
    for (const auto *chains : {&mBlocked, &mWaiting})
        for (const ChainPtr &chain : *chains)
            addSteps(*chain, 0);
    return all;
}

bool FRunQueue::isQueued(const FExternComputation *computation, const FDesign *design) const
{
    const auto has = [&](const Chain &chain) {
        return chain.design.get() == design &&
               std::any_of(
                   chain.steps.begin(), chain.steps.end(),
                   [&](const Step &step) { return step.computation.get() == computation; });
    };
    return std::any_of(mRunning.begin(), mRunning.end(),
                       [&](const Running &one) { return has(*one.chain); }) ||
           std::any_of(mWaiting.begin(), mWaiting.end(),
                       [&](const ChainPtr &one) { return has(*one); }) ||
           std::any_of(mBlocked.begin(), mBlocked.end(),
                       [&](const ChainPtr &one) { return has(*one); });
}

void FRunQueue::cancel()
{
    mCancelled = true;
    for (Running &one : mRunning)
        one.run->cancel();
    if (!mBlocked.empty())
        wakeWaiting();
    // What waits is recorded when the runs have ended, or now.
    if (mRunning.empty())
        startMore();
}

bool FRunQueue::cancel(unsigned id)
{
    for (Running &one : mRunning)
        if (!one.chain->steps.empty() && one.chain->steps.front().id == id) {
            one.isCancelled = true;
            one.run->cancel();
            return true;
        }
    const auto cut = [&](Chain *chain, size_t from) {
        for (size_t i = from; i < chain->steps.size(); ++i) {
            if (chain->steps[i].id != id)
                continue;
            Chain rest{chain->design, {}};
            rest.steps.assign(chain->steps.begin() + long(i), chain->steps.end());
            chain->steps.erase(chain->steps.begin() + long(i), chain->steps.end());
            skipRest(rest, FRunState::Cancelled, "cancelled");
            return true;
        }
        return false;
    };
    for (Running &one : mRunning)
        if (cut(one.chain.get(), 1))
            return true;
    for (auto *chains : {&mBlocked, &mWaiting})
        for (const ChainPtr &chain : *chains)
            if (cut(chain.get(), 0)) {
                chains->erase(std::remove_if(chains->begin(), chains->end(),
                                             [](const auto &one) { return one->steps.empty(); }),
                              chains->end());
                if (isIdle() && mBusy)
                    becomeIdle();
                return true;
            }
    return false;
}

void FRunQueue::drop()
{
    mWaiting.clear();
    mBlocked.clear();
    for (Running &one : mRunning) {
        one.chain->steps.clear();
        FExternRun::letEnd(std::move(one.run), &FRunQueue::wakeWaiting);
    }
    mRunning.clear();
    mLock.reset();
    if (isIdle() && std::exchange(mBusy, false))
        Q_EMIT idle();
}

void FRunQueue::forget(const FExternComputation *computation, const FDesign *design)
{
    const auto queues = allQueues();
    for (FRunQueue *queue : queues)
        queue->forgetHere(computation, design);
}

void FRunQueue::forgetHere(const FExternComputation *computation, const FDesign *design)
{
    const auto concerns = [&](const Chain &chain) {
        return (design && chain.design.get() == design) ||
               (computation &&
                std::any_of(chain.steps.begin(), chain.steps.end(), [&](const Step &step) {
                    return step.computation.get() == computation;
                }));
    };
    bool some = false;
    for (auto *chains : {&mBlocked, &mWaiting}) {
        const auto end = std::remove_if(chains->begin(), chains->end(),
                                        [&](const ChainPtr &chain) { return concerns(*chain); });
        some = some || end != chains->end();
        chains->erase(end, chains->end());
    }
    for (size_t i = mRunning.size(); i-- > 0;) {
        Running &one = mRunning[i];
        if (!concerns(*one.chain))
            continue;
        const bool itself =
            design == one.run->design().get() || computation == one.run->computation().get();
        if (!itself) { // a later step of the chain
            auto &steps = one.chain->steps;
            steps.erase(std::find_if(steps.begin() + 1, steps.end(),
                                     [&](const Step &step) {
                                         return step.computation.get() == computation;
                                     }),
                        steps.end());
            continue;
        }
        one.chain->steps.clear();
        FExternRun::letEnd(std::move(one.run), &FRunQueue::wakeWaiting);
        mRunning.erase(mRunning.begin() + long(i));
        some = true;
    }
    if (some)
        QTimer::singleShot(0, this, [this] { startMore(); });
}

// SPDX-License-Identifier: Apache-2.0
#ifndef FRUNQUEUE_H
#define FRUNQUEUE_H
#include "fdesign.h"
#include "fexterncomputation.h"

#include <QObject>
#include <deque>
#include <functional>

class FExternRun;

/// Runs chains of computations, each chain for one design, up to N designs at once.
///
/// Everything of the model happens on the calling thread; only the external programs run beside
/// it. A chain goes on with the next computation when one has finished; when one fails the rest
/// of its chain doesn't start. Where nothing speaks against it, the next program starts before the
/// values of the one that ended are read.
class FRunQueue
{
public:
    FRunQueue();
    ~FRunQueue();
    FRunQueue(const FRunQueue &) = delete;
    FRunQueue &operator=(const FRunQueue &) = delete;

    void add(const std::shared_ptr<FDesign> &design,
             const std::vector<std::shared_ptr<FExternComputation>> &chain);
    /// With false no further design starts after a failure.
    void setKeepGoing(bool keepGoing) { mKeepGoing = keepGoing; }
    /// Seconds for every run in place of the computation's own; negative for its own.
    void setTimeout(double seconds) { mTimeout = seconds; }
    /// Called after each run, with its design still the current one.
    void setListener(std::function<void(const FRunRecord &)> listener)
    {
        mListener = std::move(listener);
    }

    /// Runs all and waits in an event loop.
    void run(int jobs);
    /// Starts and returns; runs go on in the application's event loop.
    void start(int jobs);
    /// Ends what runs; nothing further starts.
    void cancel();
    bool isCancelled() const { return mCancelled; }
    bool isIdle() const;

    const std::vector<FRunRecord> &records() const { return mRecords; }
    size_t total() const { return mTotal; }
    size_t running() const { return mRunning.size(); }
    size_t failed() const { return mFailed; }

    /// The queue of runs that were started from the desktop.
    static FRunQueue *background();

private:
    struct Chain
    {
        std::shared_ptr<FDesign> design;
        std::deque<std::shared_ptr<FExternComputation>> computations;
    };
    void startMore();
    void startNext(const std::shared_ptr<Chain> &chain);
    void ended(FExternRun *run, const std::shared_ptr<Chain> &chain);
    void conclude(FExternRun *run, const std::shared_ptr<Chain> &chain);
    void skipRest(const Chain &chain, const std::string &why);
    void record(const FRunRecord &record);

    std::deque<std::shared_ptr<Chain>> mWaiting;
    std::vector<std::unique_ptr<FExternRun>> mRunning, mEnded;
    std::deque<std::pair<FExternRun *, std::shared_ptr<Chain>>> mConcluding; // of mEnded
    std::vector<FRunRecord> mRecords;
    std::function<void(const FRunRecord &)> mListener;
    std::function<void()> mIdle;
    QObject mContext; // what is called later dies with the queue
    size_t mTotal = 0, mFailed = 0;
    int mJobs = 1;
    double mTimeout = -1;
    bool mKeepGoing = true, mCancelled = false, mStarting = false;
};
#endif

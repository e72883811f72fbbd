// SPDX-License-Identifier: Apache-2.0
#ifndef FRUNQUEUE_H
#define FRUNQUEUE_H
#include "fdesign.h"
#include "fexterncomputation.h"
#include "frunpolicy.h"

#include <QDateTime>
#include <QObject>
#include <deque>
#include <functional>

class FExternRun;
class FRunLock;

/// Runs chains of computations, each chain for one design, up to N designs at once.
///
/// Everything of the model happens on the calling thread; only the external programs run beside
/// it. A chain goes on with the next computation when one has finished; when one fails the rest
/// of its chain doesn't start. Where nothing speaks against it, the next program starts before the
/// values of the one that ended are read.
///
/// What is added to an idle queue begins a new study: records, counts and a cancellation are of the
/// study. No run starts while another one of the same computation and design is under way, in
/// whichever queue: it waits for that. Objects that leave the project take their runs with them,
/// and so does a project that closes.
class FRunQueue : public QObject
{
    Q_OBJECT
public:
    explicit FRunQueue(QObject *parent = nullptr);
    ~FRunQueue() override;

    void add(const std::shared_ptr<FDesign> &design,
             const std::vector<std::shared_ptr<FExternComputation>> &chain);
    /// For what is added from now on.
    void setPolicy(const FRunPolicy &policy) { mPolicy = policy; }
    const FRunPolicy &policy() const { return mPolicy; }
    void setKeepGoing(bool keepGoing) { mPolicy.keepGoing = keepGoing; }
    void setTimeout(double seconds) { mPolicy.timeout = seconds; }
    /// Called after each run, with its design still the current one; again for a run whose files
    /// could not be brought to the disk.
    void setListener(std::function<void(const FRunRecord &)> listener)
    {
        mListener = std::move(listener);
    }

    /// Runs all and waits in an event loop: for programs that have none.
    void run(int jobs);
    /// Starts and returns; runs go on in the application's event loop.
    void start(int jobs);
    int jobs() const { return mJobs; }
    /// Ends what runs; nothing further starts.
    void cancel();
    /// The same for one run; the rest of its chain doesn't start. False if there is no such run.
    bool cancel(unsigned id);
    bool isCancelled() const { return mCancelled; }
    bool isIdle() const;

    /// What waits or runs now.
    struct Item
    {
        unsigned id = 0;
        std::string computation, design, directory; ///< the directory of what runs
        bool isRunning = false;
        QDateTime since; ///< when it was queued or started, UTC
    };
    std::vector<Item> items() const;
    bool isQueued(const FExternComputation *computation, const FDesign *design) const;

    const std::vector<FRunRecord> &records() const { return mRecords; }
    size_t total() const { return mTotal; }
    size_t running() const { return mRunning.size(); }
    size_t failed() const { return mFailed; }

    /// The queue of runs that were started from the desktop. The application owns it.
    static FRunQueue *background();
    /// The object leaves the project, and its runs go. Null for any.
    static void forget(const FExternComputation *computation, const FDesign *design);

Q_SIGNALS:
    void queued(unsigned id);
    void started(unsigned id);
    /// \p record tells which one by its id.
    void ended(const FRunRecord &record);
    /// Nothing waits or runs any more.
    void idle();

private:
    struct Step
    {
        unsigned id;
        std::shared_ptr<FExternComputation> computation;
        QDateTime since;
        int attempts;
    };
    struct Chain
    {
        std::shared_ptr<FDesign> design;
        std::deque<Step> steps; // the first one runs, if the chain does
        FRunPolicy policy = {}; // of the time when it was added
    };
    using ChainPtr = std::shared_ptr<Chain>;
    struct Running
    {
        std::unique_ptr<FExternRun> run;
        ChainPtr chain;
        bool isCancelled = false;
    };
    void startMore();
    void startNext(const ChainPtr &chain);
    /// Why no further design may start: there is too little space. Empty if one may.
    static std::string spaceProblem(const FRunPolicy &policy);
    void runEnded(FExternRun *run);
    void conclude(Running *one);
    void skipRest(const Chain &chain, FRunState state, const std::string &why);
    void record(FRunRecord result);
    void noteSyncFailures();
    void becomeIdle();
    void drop();
    void forgetHere(const FExternComputation *computation, const FDesign *design);
    /// Goes on with chains that wait for the same run in another queue or chain.
    static void wakeWaiting();

    std::deque<ChainPtr> mWaiting, mBlocked;
    std::vector<Running> mRunning;
    std::deque<Running> mConcluding;
    std::vector<std::unique_ptr<FExternRun>> mEnded;
    std::vector<FRunRecord> mRecords;
    std::function<void(const FRunRecord &)> mListener;
    std::shared_ptr<FRunLock> mLock; // from the first start until all is done
    FRunPolicy mPolicy;
    std::string mFailure; // the run that ended the study
    std::string mNoSpace; // why designs weren't started
    size_t mTotal = 0, mFailed = 0;
    int mJobs = 1;
    bool mCancelled = false, mStarting = false, mBusy = false;
};
#endif

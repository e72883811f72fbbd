// SPDX-License-Identifier: Apache-2.0
#ifndef FRUNCONTROL_H
#define FRUNCONTROL_H
#include "frunqueue.h"

#include <QTimer>
#include <map>
#include <set>

/// What buttons, menus and pages do about runs, and what they show of them. Drives
/// FRunQueue::background() in the event loop; nothing here waits.
class FRunControl : public QObject
{
    Q_OBJECT
public:
    using Designs = std::vector<std::shared_ptr<FDesign>>;
    static FRunControl *instance();

    /// Queues all computations, with what they need, for each design; runs that are queued or
    /// under way already stay as they are. Without a computation, or with none that can run, the
    /// log tells why.
    void run(const Designs &designs, FRunPolicy::Earlier earlier = FRunPolicy::Replace);
    void runCurrent() { run({FDesign::chosen()}); }
    /// Finished runs whose inputs are the same stay.
    void runAll() { run(FDesign::all(), FRunPolicy::Reuse); }
    void runAllAgain() { run(FDesign::all()); }
    /// The designs whose last run failed, in this session or an earlier one.
    void runFailed() { run(failedDesigns(), FRunPolicy::Reuse); }
    Designs failedDesigns() const;
    void stop();
    /// Why nothing can be run now; empty if something can.
    QString whyNot() const;

    bool isIdle() const;
    /// "3 of 12 designs · 1 failed · 0:12 left"; empty before the first run of a project.
    QString status() const;
    /// 0 to 1 of the study under way.
    double progress() const;
    /// The last run of this session; null if there was none.
    const FRunRecord *lastRun(const std::string &computation, const std::string &design) const;
    /// How many programs run at once; kept in the settings, at least 1.
    int jobs() const;
    void setJobs(int jobs);

Q_SIGNALS:
    /// A run was queued, started or ended, or a second has passed while something runs.
    void changed();

private:
    FRunControl();
    void ended(const FRunRecord &record);
    void changedSoon();

    std::map<std::pair<std::string, std::string>, FRunRecord> mLast;
    std::set<std::string> mDesigns, mFailed; // of the study under way, or of the last one
    double mSeconds = 0;                     // of the runs of the study that ended
    int mRuns = 0;                           // that ended
    QTimer mClock;
    bool mChanging = false;
};
#endif

// SPDX-License-Identifier: Apache-2.0
#include "fruncontrol.h"

#include "fchanges.h"
#include "fcounted.h"
#include "fini.h"
#include "flogmsg.h"
#include "fobjectmanager.h"
#include "fproject.h"
#include "fstudy.h"

#include <QCoreApplication>
#include <QPointer>
#include <QThread>

namespace {
const char *const kJobs = "Desktop/jobs";
constexpr int kClockMilliseconds = 1000, kGatherMilliseconds = 100;

FStudy::Computations computations()
{
    FStudy::Computations found;
    for (const auto &one : getManageds<FExternComputation>())
        if (auto computation = one.getPtr())
            if (!computation->getApplication().empty())
                found.push_back(std::move(computation));
    return found;
}
} // namespace

FRunControl *FRunControl::instance()
{
    static QPointer<FRunControl> control;
    if (!control) {
        control = new FRunControl;
        control->setParent(QCoreApplication::instance());
    }
    return control;
}

FRunControl::FRunControl()
{
    FRunQueue *queue = FRunQueue::background();
    mClock.setInterval(kClockMilliseconds);
    connect(&mClock, &QTimer::timeout, this, &FRunControl::changed);
    connect(queue, &FRunQueue::queued, this, [this, queue](unsigned id) {
        if (!mClock.isActive()) { // the first one of a study
            mDesigns.clear();
            mFailed.clear();
            mSeconds = 0;
            mRuns = 0;
            mClock.start();
        }
        for (const FRunQueue::Item &item : queue->items())
            if (item.id == id)
                mDesigns.insert(item.design);
        changedSoon();
    });
    connect(queue, &FRunQueue::started, this, &FRunControl::changedSoon);
    connect(queue, &FRunQueue::ended, this, &FRunControl::ended);
    connect(queue, &FRunQueue::idle, this, [this] {
        mClock.stop();
        changedSoon();
    });
    connect(FChanges::instance(), &FChanges::projectChanged, this, [this](unsigned events) {
        if (!(events & (FChanges::Opened | FChanges::Closed)))
            return;
        mLast.clear();
        mDesigns.clear();
        mFailed.clear();
        changedSoon();
    });
}

void FRunControl::changedSoon()
{
    if (mChanging)
        return;
    mChanging = true;
    QTimer::singleShot(kGatherMilliseconds, this, [this] {
        mChanging = false;
        Q_EMIT changed();
    });
}

void FRunControl::ended(const FRunRecord &record)
{
    mLast[{record.computation, record.design}] = record;
    if (record.succeeded()) {
        const auto object = FObjectManager::instance()->find(record.computation);
        const FLogMsg::About about(object.get());
        FLogMsg::info(record.design,
                      S(record.reused
                            ? tr("kept from before: its inputs are the same")
                            : tr("finished in %1 s").arg(QString::number(record.seconds, 'f', 1))),
                      record.directory, nullptr);
    } else {
        mFailed.insert(record.design);
    }
    if (record.state != FRunState::NotStarted && !record.reused) {
        mSeconds += record.seconds;
        ++mRuns;
    }
    changedSoon();
}

const FRunRecord *FRunControl::lastRun(const std::string &computation,
                                       const std::string &design) const
{
    const auto found = mLast.find({computation, design});
    return found == mLast.end() ? nullptr : &found->second;
}

QString FRunControl::whyNot() const
{
    if (FProject::instance()->path().isEmpty())
        return tr("save the project first: runs have their folders beside it");
    if (!FProject::instance()->errors().empty())
        return tr("the project was not read whole (see Messages)");
    if (computations().empty())
        return getManageds<FExternComputation>().empty()
                   ? tr("there is nothing to run; insert a connector")
                   : tr("no program is set; select the connector and give its Application");
    return QString();
}

void FRunControl::run(const Designs &designs, FRunPolicy::Earlier earlier)
{
    const QString why = whyNot();
    if (!why.isEmpty()) {
        FLogMsg::error("Run", S(tr("Nothing was run: %1").arg(why)), "", nullptr);
        return;
    }
    FRunQueue *queue = FRunQueue::background();
    FRunPolicy policy;
    policy.earlier = earlier;
    queue->setPolicy(policy);
    const FStudy::Computations all = computations();
    for (const auto &design : designs) {
        FStudy::Computations chain;
        for (const auto &one : FStudy::chain(all, design))
            if (!one->isRunningFor(design.get()) && !queue->isQueued(one.get(), design.get()))
                chain.push_back(one);
        if (!chain.empty())
            queue->add(design, chain);
    }
    queue->setPolicy(FRunPolicy());
    queue->start(jobs());
}

FRunControl::Designs FRunControl::failedDesigns() const
{
    Designs failed;
    for (const auto &design : FDesign::all())
        for (const auto &computation : computations()) {
            const FRunRecord *last = lastRun(computation->getName(), design->getName());
            if (last && !last->succeeded()) {
                failed.push_back(design);
                break;
            }
        }
    return failed;
}

void FRunControl::stop() { FRunQueue::background()->cancel(); }

bool FRunControl::isIdle() const { return FRunQueue::background()->isIdle(); }

double FRunControl::progress() const
{
    if (mDesigns.empty())
        return 0;
    std::set<std::string> left;
    for (const FRunQueue::Item &item : FRunQueue::background()->items())
        left.insert(item.design);
    return 1.0 - double(left.size()) / double(mDesigns.size());
}

QString FRunControl::status() const
{
    if (mDesigns.empty())
        return QString();
    std::set<std::string> left;
    const auto items = FRunQueue::background()->items();
    for (const FRunQueue::Item &item : items)
        left.insert(item.design);
    const int total = int(mDesigns.size()), done = total - int(left.size());
    QString text =
        left.empty()
            ? counted(total, tr("%1 design run"), tr("%1 designs run"))
            : tr("%1 of %2").arg(done).arg(counted(total, tr("%1 design"), tr("%1 designs")));
    if (!mFailed.empty())
        text += tr(" \u00b7 %1 failed").arg(mFailed.size());
    if (!left.empty() && mRuns > 0) {
        const qint64 seconds = qRound64(mSeconds / mRuns * double(items.size()) / jobs());
        text +=
            tr(" \u00b7 %1:%2 left").arg(seconds / 60).arg(seconds % 60, 2, 10, QLatin1Char('0'));
    }
    return text;
}

int FRunControl::jobs() const
{
    bool isNumber = false;
    const int jobs = FIni().value(QLatin1String(kJobs)).toInt(&isNumber);
    return isNumber && jobs > 0 ? jobs : qMax(1, QThread::idealThreadCount());
}

void FRunControl::setJobs(int jobs) { FIni().setValue(QLatin1String(kJobs), qMax(1, jobs)); }

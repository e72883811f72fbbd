// SPDX-License-Identifier: Apache-2.0
#include "fchanges.h"

#include "fhistory.h"
#include "fmanaged.h"
#include "fmarloctrl.h"
#include "fobjectmanager.h"
#include "fupdates.h"

#include <QCoreApplication>
#include <QMetaMethod>
#include <QThread>

int FChanges::sListeners = 0;

FChanges *FChanges::instance()
{
    // Lives as long as the process: objects that end with it still note their end.
    static auto *changes = new FChanges;
    return changes;
}

void FChanges::connectNotify(const QMetaMethod &signal)
{
    if (signal != QMetaMethod::fromSignal(&FChanges::changed))
        return;
    mRecount = true;
    recount();
    if (sListeners == 1) // what is noted from before is nobody's: it walked the model
        forgetObjects();
}

void FChanges::disconnectNotify(const QMetaMethod &)
{
    mRecount = true; // not now: locks of both objects are held
}

bool FChanges::recount()
{
    if (!std::exchange(mRecount, false))
        return true;
    sListeners = receivers(SIGNAL(changed(QVector<FChange>)));
    if (sListeners == 0)
        forgetObjects();
    return sListeners > 0;
}

void FChanges::gather(FObject *object, unsigned what)
{
    if (!recount())
        return;
    const unsigned shown = Created | Removed | Revived | Changed;
    const auto place = mPlaces.find(object);
    if (place != mPlaces.end()) {
        unsigned &known = mEntries[place->second].what;
        const bool isNew = what & shown & ~known;
        known |= what;
        if (isNew)
            gatherTeller(*object);
        return;
    }
    std::shared_ptr<FObject> shared = object->weak_from_this().lock();
    if (!shared || object->isFCmd())
        return;
    const auto *managed = dynamic_cast<const FManaged *>(object);
    if (!managed && !(what & ~unsigned(State)))
        return; // literals and expressions
    const bool was = what & (Created | Revived)     ? false
                     : managed && !(what & Removed) ? FObjectManager::instance()->contains(managed)
                                                    : true;
    mPlaces.emplace(object, mEntries.size());
    mEntries.push_back({std::move(shared), what, was});
    if (what & shown)
        gatherTeller(*object);
    FUpdates::wake();
}

// Entries show in the object that they are saved with, results in their computation.
void FChanges::gatherTeller(const FObject &object)
{
    if (const auto teller = object.toldBy())
        gather(teller.get(), Changed);
}

void FChanges::mark(bool FChanges::*flag)
{
    this->*flag = true;
    FUpdates::wake();
}

void FChanges::noteProject(ProjectEvent event)
{
    instance()->mProject |= event;
    FUpdates::wake();
}

void FChanges::noteLog()
{
    FChanges *self = instance();
    const QCoreApplication *application = QCoreApplication::instance();
    if (!application || QThread::currentThread() == application->thread())
        self->mark(&FChanges::mLog);
    else
        QMetaObject::invokeMethod(
            self, [self] { self->mark(&FChanges::mLog); }, Qt::QueuedConnection);
}

void FChanges::noteBusy()
{
    // Not with the next turn: that comes when the work is done.
    Q_EMIT instance()->busyChanged(FBlockers::waitCursor > 0);
}

void FChanges::forgetObjects()
{
    mEntries.clear();
    mPlaces.clear();
}

bool FChanges::isPending() const
{
    return !mEntries.empty() || mProject || mHistory || mSelection || mDesign || mLog;
}

bool FChanges::isBlocked()
{
    return FUpdates::isHeld() || FBlockers::tree > 0 || FBlockers::editor > 0;
}

void FChanges::deliver()
{
    if (mDelivering || isBlocked() || !isPending())
        return;
    mDelivering = true;
    if (mProject & (Opened | Closed))
        forgetObjects(); // everything is new
    const std::vector<Entry> entries = std::move(mEntries);
    mEntries.clear();
    mPlaces.clear();
    QVector<FChange> changes;
    changes.reserve(int(entries.size()));
    for (const Entry &entry : entries) {
        const auto *managed = dynamic_cast<const FManaged *>(entry.object.get());
        const bool is =
            managed && managed->isRegistered() ? managed->isListed() : !entry.object->isDestroyed();
        unsigned what = entry.what;
        if (!is && !entry.was)
            continue;
        if (!is)
            what = Removed;
        else if (!entry.was)
            what &= ~unsigned(Removed);
        else if (what & (Removed | Created | Revived)) // gone and back
            what = (what & ~unsigned(Removed | Created | Revived)) | Changed | Renamed;
        changes.push_back({entry.object, what});
    }
    const unsigned project = std::exchange(mProject, 0U);
    const bool selection = std::exchange(mSelection, false);
    const bool history = std::exchange(mHistory, false);
    const bool design = std::exchange(mDesign, false);
    const bool log = std::exchange(mLog, false);
    if (project)
        Q_EMIT projectChanged(project);
    if (!changes.isEmpty())
        Q_EMIT changed(changes);
    if (selection)
        Q_EMIT selectionChanged();
    if (design)
        Q_EMIT designChanged();
    if (history)
        Q_EMIT historyChanged();
    if (log)
        Q_EMIT logChanged();
    mDelivering = false;
}

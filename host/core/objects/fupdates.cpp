// SPDX-License-Identifier: Apache-2.0
#include "fupdates.h"

#include "fchanges.h"
#include "fhistory.h"
#include "flogmsg.h"
#include "fmanaged.h"
#include "fmarloctrl.h"

#include <QCoreApplication>
#include <QTimer>
#include <vector>

namespace FBlockers {
int updates = 0, history = 0, results = 0, tree = 0, editor = 0, gl = 0, waitCursor = 0;

void changed(const int *counter)
{
    if (counter == &waitCursor)
        FChanges::noteBusy();
    else if (*counter == 0)
        FUpdates::released();
}
} // namespace FBlockers

namespace {
std::vector<FObject *> gPending; // holes are null
bool gFlushing = false;
bool gPosted = false;

std::string describe(const FObject &object)
{
    const auto managed = dynamic_cast<const FManaged *>(&object);
    return managed ? managed->getName() : object.scriptText();
}
} // namespace

unsigned long FUpdates::nextWalk()
{
    static unsigned long walk = 0;
    return ++walk;
}

bool FUpdates::isBlocked() { return FBlockers::updates > 0; }

bool FUpdates::isHeld()
{
    return isBlocked() || FHistory::instance()->isTransactionOpen() ||
           FMarloCtrl::instance()->isLoadingProject();
}

void FUpdates::wake()
{
    if (gPosted || isHeld() || !QCoreApplication::instance())
        return;
    gPosted = true;
    QTimer::singleShot(0, QCoreApplication::instance(), [] {
        gPosted = false;
        if (isHeld())
            return; // who holds it asks again
        flush();
        FChanges::instance()->deliver();
    });
}

void FUpdates::released()
{
    if (!gPending.empty() || FChanges::instance()->isPending())
        wake();
}

bool FUpdates::isFlushing() { return gFlushing; }

void FUpdates::setOutOfDate(FObject *start)
{
    const unsigned long walk = nextWalk();
    std::vector<FObject *> todo{start};
    start->mVisit = walk;
    while (!todo.empty()) {
        FObject *object = todo.back();
        todo.pop_back();
        if (object->mUpdating)
            continue; // its own update touches it: no news
        if (FBlockers::results > 0 && !object->updatesOnDemand())
            continue;
        object->stalenessPassed();
        if (!object->mStale) {
            object->mStale = true;
            object->doSetOutOfDate();
            FChanges::note(object, FChanges::State);
        }
        if (object->mImmediateUpdate && !object->mDestroyed)
            request(object);
        object->mClients.forEach([&](FObject *client) {
            if (client->mVisit != walk) {
                client->mVisit = walk;
                todo.push_back(client);
            }
        });
    }
}

void FUpdates::update(FObject *start)
{
    if (!start->mStale || start->mUpdating)
        return;
    // Depth first over stale suppliers. An object is entered twice: to push its suppliers, and,
    // when they are done, to be updated itself.
    struct Item
    {
        FObject *object;
        bool entered;
        std::shared_ptr<FObject> kept = nullptr; // once entered: an update may destroy objects
    };
    std::vector<Item> todo{{start, false}};
    while (!todo.empty()) {
        Item &top = todo.back();
        FObject *object = top.object;
        if (!top.entered) {
            if (!object->mStale || object->mUpdating ||
                (object != start && !object->updatesOnDemand())) {
                todo.pop_back();
                continue;
            }
            top.entered = true;
            top.kept = object->weak_from_this().lock();
            object->mUpdating = true;
            object->mSuppliers.forEach([&](FObject *supplier) {
                if (!supplier->mStale || !supplier->updatesOnDemand())
                    return;
                if (supplier->mUpdating) {
                    FLogMsg::error("Update", "Cyclic dependency",
                                   describe(*object) + " and " + describe(*supplier) +
                                       " depend on each other",
                                   nullptr);
                    return;
                }
                todo.push_back({supplier, false});
            });
            continue;
        }
        const std::shared_ptr<FObject> kept = std::move(top.kept);
        todo.pop_back();
        object->doUpdate();
        object->mStale = false;
        object->mUpdating = false;
        FChanges::note(object, FChanges::State);
    }
}

void FUpdates::request(FObject *object)
{
    if (object->mPending || object->weak_from_this().expired())
        return;
    gPending.push_back(object);
    object->mPending = gPending.size();
    wake();
}

void FUpdates::forget(FObject *object)
{
    if (object->mPending > 0)
        gPending[object->mPending - 1] = nullptr;
}

void FUpdates::flush()
{
    if (gFlushing || isHeld())
        return;
    gFlushing = true;
    while (!gPending.empty()) {
        std::vector<std::shared_ptr<FObject>> batch;
        for (FObject *object : gPending) {
            if (!object)
                continue;
            object->mPending = 0;
            if (auto shared = object->weak_from_this().lock())
                batch.push_back(std::move(shared));
        }
        gPending.clear();
        for (const std::shared_ptr<FObject> &object : batch)
            if (object->mStale && object->mImmediateUpdate && !object->mDestroyed &&
                object->updatesOnDemand())
                update(object.get());
    }
    gFlushing = false;
}

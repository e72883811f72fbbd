// SPDX-License-Identifier: Apache-2.0
#include "fhistory.h"

#include "fchangeset.h"
#include "fcmd.h"
#include "fcmdmanager.h"
#include "fmanaged.h"
#include "fmarloctrl.h"
#include "fobjectmanager.h"

#include <algorithm>

namespace {
std::shared_ptr<const FStateVisitor::Values> captured(FObject *object)
{
    auto values = std::make_shared<FStateVisitor::Values>();
    auto visitor = FStateVisitor::capture(values.get());
    object->visitState(visitor);
    return values;
}
} // namespace

FHistory *FHistory::instance()
{
    static FHistory history;
    return &history;
}

bool FHistory::isRecording() const
{
    return FBlockers::history == 0 && !mBusy && !FMarloCtrl::instance()->isLoadingProject();
}

void FHistory::startTransaction(const std::string &text)
{
    if (mDepth++ == 0)
        mCurrent = Step();
    if (mCurrent.text.empty())
        mCurrent.text = text;
}

void FHistory::commit(bool keep)
{
    if (mDepth == 0 || --mDepth > 0)
        return;
    const std::vector<std::shared_ptr<FObject>> touched = std::move(mTouched);
    mTouched.clear();
    if (!keep)
        return;
    for (const std::shared_ptr<FObject> &object : touched) {
        const auto before = object->recordedState();
        const auto after = captured(object.get());
        object->setRecordedState(after);
        if (before)
            mCurrent.changes.push_back({object, before, after});
    }
    if (mCurrent.changes.empty() && mCurrent.created.empty() && mCurrent.removed.empty())
        return;
    mSteps.resize(mPosition);
    mSteps.push_back(std::move(mCurrent));
    ++mPosition;
    mCurrent = Step();
}

void FHistory::addStep(const std::shared_ptr<FObject> &object)
{
    if (!isRecording() || !object)
        return;
    const auto managed = std::dynamic_pointer_cast<FManaged>(object);
    if (managed && !managed->isRegistered())
        return;
    if (mDepth == 0) {
        FHistoryTransaction transaction(nullptr, std::string(), true);
        addStep(object);
        return;
    }
    // A large step asks this often; objects know whether they are in it.
    if (!object->markTouched(true))
        mTouched.push_back(object);
}

void FHistory::recordCreation(const std::shared_ptr<FManaged> &object)
{
    if (!isRecording())
        return;
    FHistoryTransaction transaction(nullptr, "create " + object->getName(), true);
    mCurrent.created.push_back(object);
    addStep(object);
}

void FHistory::recordRemoval(const std::shared_ptr<FManaged> &object)
{
    if (!isRecording())
        return;
    FHistoryTransaction transaction(nullptr, "destroy " + object->getName(), true);
    mCurrent.removed.push_back(object);
}

void FHistory::track(const std::shared_ptr<FObject> &object)
{
    object->setRecordedState(captured(object.get()));
}

void FHistory::apply(const Step &step, bool forward)
{
    mBusy = true;
    FObjectManager *manager = FObjectManager::instance();
    const auto &appear = forward ? step.created : step.removed;
    const auto &vanish = forward ? step.removed : step.created;
    // An object that the step made and removed again was never there.
    const auto inBoth = [&](const auto &list, const std::shared_ptr<FManaged> &object) {
        return std::find(list.begin(), list.end(), object) != list.end();
    };
    for (const auto &object : appear)
        if (!inBoth(vanish, object)) {
            manager->revive(object);
            object->constructFObject();
        }
    for (const Change &change : step.changes) {
        auto values = *(forward ? change.after : change.before);
        auto visitor = FStateVisitor::restore(&values);
        change.object->visitState(visitor);
        change.object->setRecordedState(forward ? change.after : change.before);
    }
    for (const Change &change : step.changes)
        change.object->stateRestored();
    for (const auto &object : vanish)
        if (!inBoth(appear, object)) {
            manager->leave(object);
            object->setDestroyed(true);
        }
    for (const Change &change : step.changes)
        change.object->setOutOfDate(0);
    for (const auto &object : appear)
        object->setOutOfDate(0);
    for (const auto &object : vanish)
        for (FObject *client : object->clients().objects())
            client->setOutOfDate(0);
    mBusy = false;
    FChangeSet::push(FChangeSet::Refresh);
    FUpdates::flush();
}

bool FHistory::undo()
{
    if (!canUndo() || mDepth > 0)
        return false;
    apply(mSteps[--mPosition], false);
    return true;
}

bool FHistory::redo()
{
    if (!canRedo() || mDepth > 0)
        return false;
    apply(mSteps[mPosition++], true);
    return true;
}

void FHistory::clear()
{
    mSteps.clear();
    mTouched.clear();
    mPosition = 0;
}

std::shared_ptr<FObject> FHistory::getCreatorByDbId(int id) const
{
    const auto object = FObjectManager::instance()->findById(id);
    if (!object)
        return nullptr;
    const auto info = FCmdManager::instance()->creatorOf(object->classInfo());
    if (!info)
        return nullptr;
    const auto creator = std::static_pointer_cast<FCreateCmd>(FCmd::make(info));
    creator->setValue(object->getName());
    creator->setMade(FExprBase(object));
    return creator;
}

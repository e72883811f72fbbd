// SPDX-License-Identifier: Apache-2.0
#include "fhistory.h"

#include "fchanges.h"
#include "fcmd.h"
#include "fcmdmanager.h"
#include "flogmsg.h"
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

template <class T>
bool isIn(const std::vector<T> &list, const T &object)
{
    return std::find(list.begin(), list.end(), object) != list.end();
}
} // namespace

FHistory *FHistory::instance()
{
    static FHistory history;
    return &history;
}

bool FHistory::isRecording() const
{
    return FBlockers::history == 0 && !mBusy && !FMarloCtrl::instance()->isUnrecorded();
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
    if (!keep) {
        const Step dropped = std::exchange(mCurrent, Step());
        std::vector<Restore> states;
        states.reserve(touched.size());
        for (const std::shared_ptr<FObject> &object : touched)
            states.push_back({object, object->recordedState(), true});
        putBack(states, dropped.removed, dropped.created);
        forget(dropped.created);
        FUpdates::released();
        return;
    }
    for (const std::shared_ptr<FObject> &object : touched) {
        State before = object->recordedState();
        object->setRecordedState(captured(object.get()));
        if (before)
            mCurrent.changes.push_back({object, std::move(before)});
    }
    if (!mCurrent.isEmpty())
        pushStep();
    mCurrent = Step();
    FUpdates::released();
}

void FHistory::pushStep()
{
    const bool wasClean = isClean();
    const auto nameOf = [](const std::shared_ptr<FObject> &object) {
        const auto managed = std::dynamic_pointer_cast<FManaged>(object);
        return managed ? managed->getName() : std::string();
    };
    if (!mCurrent.created.empty())
        mCurrent.about = nameOf(mCurrent.created.front());
    else if (!mCurrent.removed.empty())
        mCurrent.about = nameOf(mCurrent.removed.front());
    for (const Change &change : mCurrent.changes)
        if (mCurrent.about.empty())
            mCurrent.about = nameOf(change.object);
    if (mCurrent.text.empty())
        mCurrent.text = mCurrent.fallback.empty() ? "change" : mCurrent.fallback;
    // Told once, not kept: it may have a whole text in it.
    const std::string given = std::exchange(mCurrent.line, std::string());
    const QString line = given.empty() ? "// " + title(mCurrent) : Q(given);
    for (size_t i = mPosition; i < mSteps.size(); ++i) {
        mBytes -= mSteps[i].bytes;
        forget(mSteps[i].created);
    }
    mSteps.resize(mPosition);
    if (mClean > mPosition)
        mClean = std::string::npos;
    if (!joinStep()) {
        for (Change &change : mCurrent.changes)
            reduce(&change);
        mSteps.push_back(std::move(mCurrent));
        ++mPosition;
    }
    count(&mSteps.back(), false);
    dropOldest();
    mJoinOpen = true;
    noteChange(wasClean);
    Q_EMIT FChanges::instance()->executed(line);
}

bool FHistory::joinStep()
{
    if (mCurrent.joinKey.empty() || !mJoinOpen || mPosition == 0 || isClean() ||
        mSteps.back().joinKey != mCurrent.joinKey || !mCurrent.created.empty() ||
        !mCurrent.removed.empty())
        return false;
    Step &last = mSteps.back();
    for (Change &change : mCurrent.changes) {
        const auto known =
            std::find_if(last.changes.begin(), last.changes.end(),
                         [&](const Change &other) { return other.object == change.object; });
        if (known == last.changes.end()) {
            reduce(&change);
            last.changes.push_back(std::move(change));
            continue;
        }
        known->kept = FStateDelta::full(known->kept, *change.kept);
        reduce(&*known);
    }
    last.namesOnly = last.namesOnly && mCurrent.namesOnly;
    return true;
}

void FHistory::reduce(Change *change)
{
    change->kept = FStateDelta::reduced(change->kept, *change->object->recordedState());
}

void FHistory::count(Step *step, bool isUndone)
{
    mBytes -= step->bytes;
    step->bytes = sizeof(Step);
    for (const Change &change : step->changes)
        step->bytes +=
            sizeof(Change) + FStateDelta::bytes(*change.kept, *change.object->recordedState());
    // Nobody else holds what isn't in the project now.
    for (const auto &object : isUndone ? step->created : step->removed)
        if (object->recordedState())
            step->bytes += FStateDelta::bytes(*object->recordedState());
    mBytes += step->bytes;
}

void FHistory::dropOldest()
{
    size_t dropped = 0;
    while (mBytes > mLimit && mPosition - dropped > 1) {
        mBytes -= mSteps[dropped].bytes;
        forget(mSteps[dropped++].removed);
    }
    if (dropped == 0)
        return;
    mSteps.erase(mSteps.begin(), mSteps.begin() + std::ptrdiff_t(dropped));
    mPosition -= dropped;
    if (mClean != std::string::npos)
        mClean = mClean < dropped ? std::string::npos : mClean - dropped;
    if (!std::exchange(mToldLimit, true))
        FLogMsg::info("History", "The oldest steps can no longer be undone",
                      "steps keep at most " + fromNumber((unsigned long)(mLimit >> 20)) + " MiB",
                      nullptr);
}

void FHistory::setLimit(size_t bytes)
{
    mLimit = bytes;
    dropOldest();
    FChanges::noteHistory();
}

QString FHistory::title(const Step &step)
{
    const QString text = FText::shown(step.text), about = Q(step.about);
    return about.isEmpty() || text.contains(about) ? text : text + ": " + about;
}

void FHistory::noteChange(bool wasClean)
{
    FChanges::noteHistory();
    if (wasClean != isClean())
        FChanges::noteProject(FChanges::Modified);
}

void FHistory::markClean()
{
    const bool wasClean = isClean();
    mClean = mPosition;
    noteChange(wasClean);
}

void FHistory::setLine(const std::string &line, const std::string &text)
{
    if (mDepth == 0 || !mCurrent.line.empty())
        return;
    mCurrent.line = line;
    mCurrent.fallback = text;
}

void FHistory::addStep(const std::shared_ptr<FObject> &object) { touch(object, false); }

void FHistory::addName(const std::shared_ptr<FObject> &object) { touch(object, true); }

void FHistory::touch(const std::shared_ptr<FObject> &object, bool nameOnly)
{
    if (!object)
        return;
    FChanges::note(object.get(), FChanges::Changed);
    if (!isRecording())
        return;
    const auto managed = std::dynamic_pointer_cast<FManaged>(object);
    if (managed && !managed->isRegistered())
        return;
    if (mDepth == 0) {
        FHistoryTransaction transaction(nullptr, std::string(), true);
        touch(object, nameOnly);
        return;
    }
    mCurrent.namesOnly = mCurrent.namesOnly && nameOnly;
    // A large step asks this often; objects know whether they are in it.
    if (!object->markTouched(true))
        mTouched.push_back(object);
}

void FHistory::recordCreation(const std::shared_ptr<FManaged> &object)
{
    if (!isRecording())
        return;
    FHistoryTransaction transaction(nullptr, F_TEXT("create ") + object->getName(), true);
    mCurrent.created.push_back(object);
    addStep(object);
}

void FHistory::recordRemoval(const std::shared_ptr<FManaged> &object)
{
    if (!isRecording())
        return;
    FHistoryTransaction transaction(nullptr, F_TEXT("destroy ") + object->getName(), true);
    mCurrent.removed.push_back(object);
}

void FHistory::track(const std::shared_ptr<FObject> &object)
{
    const bool touched = object->markTouched(false);
    object->setRecordedState(captured(object.get()));
    object->markTouched(touched); // once in a step, whatever is known of it meanwhile
}

void FHistory::putBack(const std::vector<Restore> &states, const Objects &appear,
                       const Objects &vanish, bool namesOnly)
{
    mBusy = true;
    FObjectManager *manager = FObjectManager::instance();
    // An object that was made and removed again was never there.
    for (const auto &object : appear)
        if (!isIn(vanish, object)) {
            manager->revive(object);
            object->constructFObject();
        }
    for (const Restore &state : states) {
        if (state.values) {
            auto visitor = FStateVisitor::restore(state.values.get());
            state.object->visitState(visitor);
        }
        if (state.recorded)
            state.object->setRecordedState(state.values);
        FChanges::note(state.object.get(), FChanges::Changed);
    }
    for (const Restore &state : states)
        state.object->stateRestored();
    for (const auto &object : vanish)
        if (!isIn(appear, object)) {
            object->setDestroyed(true);
            object->retire();
            manager->leave(object);
        }
    for (const Restore &state : states)
        if (!namesOnly)
            state.object->setOutOfDate(0);
    for (const auto &object : appear)
        object->setOutOfDate(0);
    for (const auto &object : vanish)
        for (FObject *client : object->clients().objects())
            client->setOutOfDate(0);
    mBusy = false;
}

// What they hold may hold them.
void FHistory::forget(const Objects &gone)
{
    for (const std::shared_ptr<FManaged> &object : gone) {
        object->clearChildren();
        object->setRecordedState(nullptr);
    }
}

void FHistory::apply(Step *step, bool forward)
{
    const bool wasClean = isClean();
    std::vector<Restore> states;
    std::vector<State> left;
    for (const Change &change : step->changes) {
        const State &present = change.object->recordedState();
        states.push_back({change.object, FStateDelta::full(change.kept, *present), true});
        left.push_back(FStateDelta::reduced(present, *states.back().values));
    }
    // Only now: memory for long texts may have run out before.
    for (size_t i = 0; i < left.size(); ++i)
        step->changes[i].kept = std::move(left[i]);
    mPosition += forward ? 1 : size_t(-1);
    mJoinOpen = false;
    putBack(states, forward ? step->created : step->removed,
            forward ? step->removed : step->created, step->namesOnly);
    count(step, !forward);
    noteChange(wasClean);
    Q_EMIT FChanges::instance()->executed(forward ? QStringLiteral("redo();")
                                                  : QStringLiteral("undo();"));
    FUpdates::flush();
}

bool FHistory::undo()
{
    if (!canUndo() || mDepth > 0)
        return false;
    apply(&mSteps[mPosition - 1], false);
    return true;
}

bool FHistory::redo()
{
    if (!canRedo() || mDepth > 0)
        return false;
    apply(&mSteps[mPosition], true);
    return true;
}

void FHistory::clear()
{
    const bool wasClean = isClean();
    for (size_t i = 0; i < mSteps.size(); ++i)
        forget(i < mPosition ? mSteps[i].removed : mSteps[i].created);
    mSteps.clear();
    for (const std::shared_ptr<FObject> &object : mTouched)
        object->markTouched(false);
    mTouched.clear();
    mPosition = mClean = mBytes = 0;
    mJoinOpen = mToldLimit = false;
    noteChange(wasClean);
}

FHistorySavepoint::FHistorySavepoint(const std::string &text)
{
    FHistory *history = FHistory::instance();
    history->startTransaction(text);
    if (!history->isRecording())
        return;
    mCreated = history->mCurrent.created;
    mRemoved = history->mCurrent.removed;
    for (const std::shared_ptr<FObject> &object : history->mTouched)
        mTouched.push_back({object, captured(object.get()), false});
}

void FHistorySavepoint::rollback()
{
    FHistory *history = FHistory::instance();
    if (!history->isRecording())
        return;
    const auto since = [](FHistory::Objects *all, const FHistory::Objects &before) {
        FHistory::Objects later(all->begin() + std::ptrdiff_t(before.size()), all->end());
        *all = before;
        return later;
    };
    std::vector<FHistory::Restore> states = mTouched;
    for (size_t i = mTouched.size(); i < history->mTouched.size(); ++i) {
        const std::shared_ptr<FObject> &object = history->mTouched[i];
        states.push_back({object, object->recordedState(), true});
    }
    history->mTouched.resize(mTouched.size());
    const FHistory::Objects created = since(&history->mCurrent.created, mCreated);
    const FHistory::Objects removed = since(&history->mCurrent.removed, mRemoved);
    history->putBack(states, removed, created);
    FHistory::forget(created);
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

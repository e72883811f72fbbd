// SPDX-License-Identifier: Apache-2.0
#include "fexterncomputation.h"

#include "fchanges.h"
#include "fcmdbinder.h"
#include "fdesign.h"
#include "fhistory.h"
#include "flogmsg.h"
#include "fmarloctrl.h"
#include "fobjectmanager.h"
#include "fpathmanager.h"
#include "frunfolder.h"
#include "frunlock.h"
#include "frunqueue.h"
#include "fstudy.h"
#include "fviewctrl.h"

#include <QDir>
#include <algorithm>

F_CLASS_IMPL(FExternComputation)

template <class T>
void FExternComputation::assign(T &field, const T &value, const char *text)
{
    field = value;
    setOutOfDate(0);
    FHistoryTransaction transaction(nullptr, text, true);
    transaction.addStep(shared_from_this());
}

void FExternComputation::setApplication(const std::string &application)
{
    assign(mApplication, application, F_TEXT("set application"));
}
void FExternComputation::setArguments(const std::string &arguments)
{
    assign(mArguments, arguments, F_TEXT("set arguments"));
}
void FExternComputation::setStandardInput(const std::string &fileName)
{
    assign(mStandardInput, fileName, F_TEXT("set standard input"));
}
void FExternComputation::setEnvironment(const std::vector<std::string> &variables)
{
    assign(mEnvironment, variables, F_TEXT("set environment"));
}
FStatus FExternComputation::setTimeout(double seconds)
{
    if (!(seconds >= 0 && seconds < 1e9))
        return {FReason::unexpected("seconds from 0", shortestNumber(seconds))};
    assign(mTimeout, seconds, F_TEXT("set time limit"));
    return {};
}

void FExternComputation::setWaitForAll(bool on)
{
    assign(mWaitForAll, on, F_TEXT("set waiting for all processes"));
}

void FExternComputation::init(const std::shared_ptr<FExternComputation> &source)
{
    if (!source || source->isNull())
        return;
    mApplication = source->mApplication;
    mArguments = source->mArguments;
    mStandardInput = source->mStandardInput;
    mEnvironment = source->mEnvironment;
    mTimeout = source->mTimeout;
    mWaitForAll = source->mWaitForAll;
    setOutOfDate(0);
}

FExternComputation::DesignState &FExternComputation::stateOf(const FDesign *design) const
{
    DesignState &state = mStates[design];
    if (const auto known = state.design.lock(); !known || known.get() != design) {
        state = DesignState(); // a design that is gone may have lain at the same address
        state.design = std::const_pointer_cast<FDesign>(design->shared_from_base<FDesign>());
    }
    return state;
}

FExpr<FComputationResults> FExternComputation::currentResults() const
{
    const auto design = FDesign::current();
    DesignState &state = stateOf(design.get());
    // Results that a project brings know their computation by its id; ids are final after loading.
    if (!state.results && state.searched != FComputationResults::madeById() &&
        !FMarloCtrl::instance()->isLoadingProject()) {
        state.searched = FComputationResults::madeById();
        for (const auto &handle : getManageds<FComputationResults>()) {
            const auto results = handle.getPtr();
            if (results->getVariant().getPtr() == design && results->computationId() == getDbId())
                state.results = FExpr<FComputationResults>(results);
        }
    }
    return state.results;
}

bool FExternComputation::isUpToDateFor(const std::shared_ptr<FDesign> &design) const
{
    return stateOf(design.get()).upToDate;
}

void FExternComputation::stalenessPassed() const
{
    if (FDesign::isSwitching()) {
        // Only the current design is concerned, and its state is looked up afterwards.
        return;
    }
    if (const FDesign *design = FDesign::concerned())
        return stateOf(design).setStale();
    for (auto &state : mStates)
        state.second.setStale();
}

void FExternComputation::designChanged()
{
    const auto design = FDesign::current();
    for (const auto &handle : getManageds<FExternComputation>()) {
        const auto computation = handle.getPtr();
        computation->setUpToDate(computation->isUpToDateFor(design));
        for (FObject *client : computation->clients().objects())
            client->setOutOfDate(0);
        computation->setUpToDate(computation->isUpToDateFor(design));
    }
}

void FExternComputation::designEdited(const FDesign *design)
{
    for (const auto &handle : getManageds<FExternComputation>())
        handle.getPtr()->stateOf(design).setStale();
}

bool FExternComputation::isRunningFor(const FDesign *design) const
{
    return stateOf(design).running;
}

bool FExternComputation::hasRunFor(const FDesign *design) const { return stateOf(design).hasRun; }

unsigned long FExternComputation::editionFor(const FDesign *design) const
{
    return stateOf(design).edition;
}

namespace {
/// Whether the folders of \p object may get other names now.
bool mayMoveRuns(const FManaged &object, const FExternComputation *running)
{
    std::string why;
    const std::string designs = FPathManager::instance()->getDesignsDirAbs();
    if (running)
        why = running->getName() + " runs";
    else if (!QDir(Q(designs)).exists() || FRunLock::take(designs, &why))
        return true;
    FLogMsg::error("Run", object.getName() + " can't be renamed now: its folder has that name", why,
                   nullptr);
    return false;
}

void moveRuns(const std::string &from, const std::string &to)
{
    QString why;
    if (!FMarloCtrl::instance()->isLoadingProject() && !FRunFolder::move(from, to, &why))
        FLogMsg::error("Run", "Could not rename a folder of runs", S(why), nullptr);
}
} // namespace

std::shared_ptr<FManaged> FExternComputation::setName(const std::string &name)
{
    if (name != getName() && isRegistered() && !FMarloCtrl::instance()->isLoadingProject() &&
        !mayMoveRuns(*this, mRunning > 0 ? this : nullptr))
        return shared_from_base<FManaged>();
    return FManaged::setName(name);
}

void FExternComputation::nameChanged(const std::string &before)
{
    for (const auto &design : FDesign::all()) {
        const std::string folder = FPathManager::instance()->getDesignDirAbs(design) + "/";
        moveRuns(folder + before, folder + getName());
    }
}

namespace {
void collectSuppliers(const FExternComputation *computation,
                      std::vector<std::shared_ptr<FExternComputation>> *order,
                      std::set<const FObject *> *seen)
{
    std::set<std::shared_ptr<FObject>> suppliers;
    computation->getSuppliers(suppliers);
    std::vector<std::shared_ptr<FExternComputation>> found;
    for (const auto &supplier : suppliers)
        if (auto other = std::dynamic_pointer_cast<FExternComputation>(supplier))
            found.push_back(std::move(other));
    std::sort(found.begin(), found.end(),
              [](const auto &a, const auto &b) { return a->getDbId() < b->getDbId(); });
    for (const auto &other : found)
        if (other.get() != computation && seen->insert(other.get()).second) {
            collectSuppliers(other.get(), order, seen);
            order->push_back(other);
        }
}
} // namespace

std::vector<std::shared_ptr<FExternComputation>> FExternComputation::supplierComputations() const
{
    std::vector<std::shared_ptr<FExternComputation>> order;
    std::set<const FObject *> seen{this};
    collectSuppliers(this, &order, &seen);
    return order;
}

FStatus FExternComputation::run()
{
    if (FMarloCtrl::instance()->isLoadingProject())
        return {"a run can't start while a project is loading"};
    if (FUpdates::isFlushing())
        return {"a run can't start because a value is updated"};
    if (FViewCtrl::instance()->hasGui())
        return guiRun();
    if (mRunning > 0)
        return {getName() + " is running"};
    FRunQueue queue;
    const auto design = FDesign::chosen();
    queue.add(design, FStudy::chain({shared_from_base<FExternComputation>()}, design));
    queue.run(1);
    const auto &records = queue.records();
    for (const FRunRecord &record : records)
        if (!record.succeeded())
            return {"computation " + record.computation + ": " + record.reason};
    return {};
}

FStatus FExternComputation::guiRun()
{
    if (FMarloCtrl::instance()->isLoadingProject())
        return {"a run can't start while a project is loading"};
    const auto design = FDesign::chosen();
    FRunQueue *queue = FRunQueue::background();
    if (isRunningFor(design.get()) || queue->isQueued(this, design.get()))
        return {getName() + " is running"};
    queue->add(design, FStudy::chain({shared_from_base<FExternComputation>()}, design));
    queue->start(queue->jobs());
    return {};
}

bool FExternComputation::canReread() const
{
    return mRunning == 0 && QDir(Q(FPathManager::instance()->getResultsDirAbs(
                                     std::const_pointer_cast<FExternComputation>(
                                         shared_from_base<FExternComputation>()),
                                     nullptr)))
                                .exists();
}

std::shared_ptr<FComputationResults>
FExternComputation::makeResults(const std::shared_ptr<FDesign> &design)
{
    const auto type = std::dynamic_pointer_cast<FResultsGeneric>(getResultType());
    if (!type)
        return nullptr;
    const FHistoryBlocker unrecorded;
    DesignState &state = stateOf(design.get());
    if (const auto old = state.results.getPtr())
        FManaged::destroy(old, true);
    const auto results = std::dynamic_pointer_cast<FComputationResults>(type->clone(
        FExpr<FDesign>(design), FExpr<FExternComputation>(shared_from_base<FExternComputation>())));
    state.results = FExpr<FComputationResults>(results);
    return results;
}

void FExternComputation::noteResults(FObject *results)
{
    // No step records them, and a computation is saved with its id as long as it has results.
    FChanges::note(this, FChanges::Changed);
    if (results)
        FChanges::note(results, FChanges::Changed);
}

FStatus FExternComputation::rereadResults()
{
    if (!canReread())
        return {"there are no result files of " + getName() + " to read"};
    const auto design = FDesign::current();
    auto results = currentResults().getPtr();
    if (!results)
        results = makeResults(design);
    if (!results)
        return {getName() + " has no results that could be read"};
    if (const auto generic = std::dynamic_pointer_cast<FResultsGeneric>(results))
        generic->setRunNote(std::nullopt);
    processReread(results);
    noteResults(results.get());
    for (FObject *client : clients().objects())
        client->setOutOfDate(0);
    return {};
}

void FExternComputation::runStarted(const FDesign *design)
{
    ++mRunning;
    stateOf(design).running = true;
    FChanges::note(this, FChanges::State);
}

void FExternComputation::runStopped(const FDesign *design)
{
    --mRunning;
    stateOf(design).running = false;
    FChanges::note(this, FChanges::State);
}

void FExternComputation::takeResults(const std::shared_ptr<FDesign> &design,
                                     const FRunRecord &record)
{
    DesignState &state = stateOf(design.get());
    if (record.succeeded()) {
        if (const auto results = makeResults(design)) {
            if (const auto generic = std::dynamic_pointer_cast<FResultsGeneric>(results)) {
                generic->setResultFiles(resultsFileNames());
                generic->setRunNote(record.note());
            }
            applyOutputHandles(results);
        }
    } else {
        const FHistoryBlocker unrecorded;
        if (const auto old = state.results.getPtr())
            FManaged::destroy(old, true);
        state.results = FExpr<FComputationResults>();
    }
    noteResults(state.results.getPtr().get());
    state.hasRun = record.succeeded();
    state.upToDate = record.succeeded() && !record.inputsChanged;
    for (FObject *client : clients().objects())
        client->setOutOfDate(0);
    setUpToDate(state.upToDate);
}

void FExternComputation::retire()
{
    FRunQueue::forget(this, nullptr);
    for (auto &[design, state] : mStates) {
        if (const auto results = state.results.getPtr())
            FManaged::destroy(results, true);
        state.results = FExpr<FComputationResults>();
        state.setStale(); // a run that is being ended still has its folder
    }
    FManaged::retire();
}

void FExternComputation::visitState(FStateVisitor &state)
{
    FManaged::visitState(state);
    state(mApplication)(mArguments)(mStandardInput)(mEnvironment)(mTimeout)(mWaitForAll);
}

bool FExternComputation::hasSavedResults() const
{
    for (const auto &handle : getManageds<FComputationResults>()) {
        const auto results = handle.getPtr();
        if (results->getVariant() && results->computationId() == getDbId())
            return true;
    }
    return false;
}

FStatus FExternComputation::setDbIdCommand(int id)
{
    return FObjectManager::instance()->setId(this, id)
               ? FStatus{}
               : FStatus{FReason::unexpected("an id from 1", fromNumber(id, 10))};
}

void FExternComputation::initCmds()
{
    static struct : FDesignObserver
    {
        void designSwitched() override { FExternComputation::designChanged(); }
        void designEdited(const FDesign *design) override
        {
            FExternComputation::designEdited(design);
        }
        void designRetired(const FDesign *design) override { FRunQueue::forget(nullptr, design); }
        bool mayRename(const FDesign *design) const override
        {
            const FExternComputation *running = nullptr;
            for (const auto &handle : getManageds<FExternComputation>())
                if (handle.getPtr()->isRunningFor(design))
                    running = handle.getPtr().get();
            return FMarloCtrl::instance()->isLoadingProject() || mayMoveRuns(*design, running);
        }
        void designRenamed(const FDesign *design, const std::string &before) override
        {
            const std::string folder = FPathManager::instance()->getDesignsDirAbs() + "/";
            moveRuns(folder + before, folder + design->getName());
        }
    } observer;
    FDesign::addObserver(&observer);
    using T = FExternComputation;
    FCmdBinder<T> c;
    c.attribute("setDbId", &T::setDbIdCommand, &T::dbIdForScript, FArg{"id"})
        .title(F_TEXT("Id"))
        .hidden()
        .savedIf([](const FObject *o) { return static_cast<const T *>(o)->hasSavedResults(); });
    c.attribute("setApplication", &T::setApplication, &T::getApplication, FArg{"application"})
        .title(F_TEXT("Application"));
    c.attribute("setArguments", &T::setArguments, &T::getArguments, FArg{"arguments"})
        .title(F_TEXT("Arguments"));
    c.attribute("setStandardInput", &T::setStandardInput, &T::getStandardInput, FArg{"fileName"})
        .title(F_TEXT("Standard Input"));
    c.attribute("setEnvironment", &T::setEnvironment, &T::getEnvironment, FArg{"variables"})
        .title(F_TEXT("Environment"));
    c.attribute("setTimeout", &T::setTimeout, &T::getTimeout, FArg{"seconds"})
        .title(F_TEXT("Time Limit"));
    c.attribute("setWaitForAll", &T::setWaitForAll, &T::getWaitForAll, FArg{"wait"})
        .title(F_TEXT("Wait For All Processes"))
        .savedIf([](const FObject *o) { return static_cast<const T *>(o)->getWaitForAll(); });
    // Runs are no changes of the project.
    c.member("run", &T::run).disableHistory();
    c.member("rereadResults", &T::rereadResults).disableHistory();
}

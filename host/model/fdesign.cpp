// SPDX-License-Identifier: Apache-2.0
#include "fdesign.h"

#include "fchanges.h"
#include "fcmdbinder.h"
#include "fhistory.h"
#include "fobjectmanager.h"
#include "fproject.h"

F_CLASS_IMPL(FDesign)

namespace {
std::shared_ptr<FDesign> &theBaseline()
{
    static std::shared_ptr<FDesign> design;
    return design;
}
std::weak_ptr<FDesign> gCurrent;
std::weak_ptr<FDesign> gChosen; // while a scope is open
bool gSwitching = false;
int gScopes = 0, gEvaluating = 0;
std::vector<FDesignObserver *> &observers()
{
    static std::vector<FDesignObserver *> all;
    return all;
}
} // namespace

void FDesign::addObserver(FDesignObserver *observer) { observers().push_back(observer); }

std::shared_ptr<FDesign> FDesign::create(const std::string &name)
{
    const auto design = f_make_shared<FDesign>(name);
    design->registerObject();
    return design;
}

std::shared_ptr<FDesign> FDesign::baseline()
{
    std::shared_ptr<FDesign> &design = theBaseline();
    if (!design || design->isDestroyed()) {
        const FHistoryBlocker unrecorded;
        design = create("baseline");
        gCurrent.reset();
        FChanges::noteDesign();
    }
    return design;
}

std::shared_ptr<FDesign> FDesign::current()
{
    const auto design = gCurrent.lock();
    return design && !design->isDestroyed() ? design : baseline();
}

std::shared_ptr<FDesign> FDesign::chosen()
{
    const auto design = gScopes > 0 ? gChosen.lock() : nullptr;
    return design && !design->isDestroyed() ? design : gScopes > 0 ? baseline() : current();
}

bool FDesign::isSwitching() { return gSwitching; }

const FDesign *FDesign::concerned() { return gEvaluating > 0 ? current().get() : nullptr; }

FDesign::Scope::Scope(const std::shared_ptr<FDesign> &design)
    : mEvaluates(design && !design->isDestroyed())
{
    const auto before = current();
    if (gScopes++ == 0)
        gChosen = before;
    gEvaluating += mEvaluates;
    if (mEvaluates)
        evaluateFor(design);
}

FDesign::Scope::~Scope()
{
    gEvaluating -= mEvaluates;
    if (gScopes == 1)
        evaluateFor(chosen());
    --gScopes;
}

std::vector<std::shared_ptr<FDesign>> FDesign::all()
{
    baseline();
    std::vector<std::shared_ptr<FDesign>> designs;
    for (const auto &design : getEntities<FDesign>())
        designs.push_back(design.getPtr());
    return designs;
}

void FDesign::setCurrent(const std::shared_ptr<FDesign> &design)
{
    if (gScopes > 0 && design) {
        const bool isNew = chosen() != design;
        gChosen = design;
        if (isNew)
            FChanges::noteDesign();
        return;
    }
    const auto before = current();
    evaluateFor(design);
    if (current() != before)
        FChanges::noteDesign();
}

void FDesign::evaluateFor(const std::shared_ptr<FDesign> &design)
{
    // The one before may have just left the project: what it set is stale all the same.
    const std::shared_ptr<FDesign> known = gCurrent.lock(), before = known ? known : current();
    if (!design || design == before)
        return;
    gSwitching = true;
    gCurrent = design;
    before->touch();
    design->touch();
    for (FDesignObserver *observer : observers())
        observer->designSwitched();
    gSwitching = false;
}

void FDesign::touch() const
{
    for (const Override &own : mValues)
        if (const auto parameter = own.parameter.getPtr())
            parameter->setOutOfDate(0);
}

FStatus FDesign::setValue(const std::string &name, const FExprBase &value)
{
    const auto parameter =
        std::dynamic_pointer_cast<FParameter>(FObjectManager::instance()->find(name));
    if (!parameter)
        return {FReason::unexpected("the name of a parameter", "\"" + name + "\"")};
    if (this == theBaseline().get())
        return parameter->setValue(value);
    const std::shared_ptr<FObject> target = value.getExpr();
    if (target == parameter || (target && parameter->hasClient(target, true)))
        return {"cyclic dependency: the value " + value.toString() + " of " + name +
                " depends on " + name};
    const auto place = mPlaces.emplace(parameter.get(), mValues.size());
    if (place.second)
        mValues.push_back({FExpr<FParameter, true>(parameter), FExprBase()});
    Override &own = mValues[place.first->second];
    own.value = value;
    connect(&own);
    valueChanged(parameter, F_TEXT("set value in design"));
    return {};
}

FStatus FDesign::unsetValue(const std::string &name)
{
    const auto parameter =
        std::dynamic_pointer_cast<FParameter>(FObjectManager::instance()->find(name));
    const auto place = parameter ? mPlaces.find(parameter.get()) : mPlaces.end();
    if (place == mPlaces.end())
        return {FReason::unexpected("a parameter that " + getName() + " sets", "\"" + name + "\"")};
    // Not by erase(): a handle that is assigned keeps its clients, so each parameter would get
    // those of its neighbour.
    std::vector<Override> left;
    for (size_t i = 0; i < mValues.size(); ++i)
        if (i != place->second)
            left.push_back(std::move(mValues[i]));
    mValues.swap(left);
    mPlaces.clear();
    for (const Override &own : mValues)
        mPlaces.emplace(own.parameter.getExpr().get(), mPlaces.size());
    valueChanged(parameter, F_TEXT("unset value in design"));
    return {};
}

void FDesign::valueChanged(const std::shared_ptr<FParameter> &parameter, const char *text)
{
    for (FDesignObserver *observer : observers())
        observer->designEdited(this);
    if (current().get() == this) {
        gSwitching = true; // other designs are not concerned
        parameter->setOutOfDate(0);
        gSwitching = false;
    }
    FHistoryTransaction transaction(nullptr, text, true);
    transaction.addStep(shared_from_this());
}

FExpr<FDesign> FDesign::duplicate(const std::string &name)
{
    FHistoryTransaction transaction(nullptr, F_TEXT("duplicate design"), true);
    const auto copy = create(name.empty() ? getName() : name);
    for (const Override &own : mValues)
        if (const auto parameter = own.parameter.getPtr())
            copy->setValue(parameter->getName(), own.value);
    return copy;
}

std::shared_ptr<FManaged> FDesign::setName(const std::string &name)
{
    for (const FDesignObserver *observer : observers())
        if (name != getName() && isRegistered() && !observer->mayRename(this))
            return shared_from_base<FManaged>();
    return FEntity::setName(name);
}

void FDesign::nameChanged(const std::string &before)
{
    for (FDesignObserver *observer : observers())
        observer->designRenamed(this, before);
}

const FExprBase *FDesign::valueOf(const FParameter *parameter) const
{
    const auto place = mPlaces.find(parameter);
    return place == mPlaces.end() || !parameter || parameter->isDestroyed()
               ? nullptr
               : &mValues[place->second].value;
}

void FDesign::collectNamed(std::vector<const FObject *> *objects) const
{
    for (const Override &own : mValues) {
        objects->push_back(own.parameter.getExpr().get());
        objects->push_back(own.value.getExpr().get());
    }
}

void FDesign::connect(Override *own)
{
    // Only a value that may change by itself makes the parameter stale, and a design never gets
    // stale. With an edge for each plain number a parameter would drag all designs of a study
    // through every change of design.
    const std::shared_ptr<FObject> value = own->value.getExpr();
    if (value && !(std::dynamic_pointer_cast<FBasicType>(value) && value->suppliers().isEmpty()))
        own->value.registerClient(own->parameter.getExpr(), false);
}

bool FDesign::isSaved() const { return this != theBaseline().get(); }

void FDesign::saveMembers(QTextStream &stream, unsigned level) const
{
    for (const Override &own : mValues)
        if (own.parameter)
            stream << std::string(TAB * level, ' ') << ".setValue("
                   << FLiteral::quoted(own.parameter.getPtr()->getName()) << ","
                   << own.value.toString() << ");\n";
}

void FDesign::visitState(FStateVisitor &state)
{
    FEntity::visitState(state);
    if (!state.isCapture())
        valuesChanged(); // what goes was a value too
    state(mValues);
}

void FDesign::stateRestored()
{
    FEntity::stateRestored();
    mPlaces.clear();
    for (Override &own : mValues) {
        mPlaces.emplace(own.parameter.getExpr().get(), mPlaces.size());
        connect(&own);
    }
    valuesChanged();
}

void FDesign::valuesChanged() const
{
    for (FDesignObserver *observer : observers())
        observer->designEdited(this);
    if (current().get() != this)
        return;
    gSwitching = true; // other designs are not concerned
    touch();
    gSwitching = false;
}

void FDesign::retire()
{
    for (FDesignObserver *observer : observers())
        observer->designRetired(this);
    if (gChosen.lock().get() == this)
        gChosen = baseline();
    if (gCurrent.lock().get() == this) {
        evaluateFor(baseline());
        FChanges::noteDesign();
    }
    for (Override &own : mValues) // else the parameters go on depending on each other
        own.value.deregisterClient(own.parameter.getExpr());
    FEntity::retire();
}

void FDesign::constructFObject()
{
    FEntity::constructFObject();
    for (Override &own : mValues)
        connect(&own);
}

void FDesign::initCmds()
{
    FProject::instance()->addStarter([] { baseline(); });
    FCmdBinder<FDesign> c;
    c.creator("design", &FDesign::create).fills();
    c.member("setValue", &FDesign::setValue, FArg{"parameter"}, FArg{"value"}).fills();
    c.member("unsetValue", &FDesign::unsetValue, FArg{"parameter"});
    c.member("duplicate", &FDesign::duplicate, FArg{"name", ""});
}

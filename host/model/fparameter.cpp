// SPDX-License-Identifier: Apache-2.0
#include "fparameter.h"

#include "fcmdbinder.h"
#include "fexterncomputation.h"
#include "fhistory.h"
#include "fproject.h"

F_CLASS_IMPL(FEntity)
F_CLASS_IMPL(FParameter)
F_CLASS_IMPL(FDesign)

unsigned FParameter::mClassEpoch = 0;

std::shared_ptr<FParameter> FParameter::create(const std::string &name, const FExprBase &value)
{
    const auto parameter = f_make_shared<FParameter>(name);
    parameter->mValue = value;
    parameter->registerObject();
    return parameter;
}

FExpr<FParameter> FParameter::create(const FExprBase &, const std::string &name,
                                     const FDouble &value)
{
    return create(name, FExprBase(value.clone()));
}

void FParameter::constructFObject()
{
    FEntity::constructFObject();
    if (!mInitPrototype)
        mValue.registerClient(shared_from_this(), false);
}

FStatus FParameter::setValue(const FExprBase &value)
{
    const std::shared_ptr<FObject> target = value.getExpr();
    const auto self = shared_from_this();
    if (target == self || (target && !clients().isEmpty() && hasClient(target, true)))
        return {"cyclic dependency: the value " + value.toString() + " of " + getName() +
                " depends on " + getName()};
    mValue = value;
    ++mClassEpoch;
    setOutOfDate(0);
    FHistoryTransaction transaction(nullptr, "set value", true);
    transaction.addStep(self);
    return {};
}

const FExprBase &FParameter::currentValue() const
{
    const FExprBase *own = FDesign::current()->valueOf(this);
    return own ? *own : mValue;
}

std::shared_ptr<FObject> FParameter::valueObject() const { return currentValue().getValueObject(); }

const FClassInfo &FParameter::valueClass() const
{
    if (!mKnownClass || mKnownEpoch != mClassEpoch) {
        mKnownClass = mValue ? mValue.valueClass() : &FObject::staticClass();
        mKnownEpoch = mClassEpoch;
    }
    return *mKnownClass;
}

void FParameter::doUpdate() const { currentValue().getPtr(); }

void FParameter::visitState(FStateVisitor &state)
{
    FEntity::visitState(state);
    state(mValue);
    mClassEpoch += state.isCapture() ? 0 : 1;
}

void FParameter::initCmds()
{
    FCmdBinder<FParameter> c;
    c.creator("parameter", &FParameter::create, FArg{"value", nullptr});
    c.attribute("setValue", &FParameter::setValue, &FParameter::getValue, FArg{"value"})
        .title("Value")
        .disableSaving();
}

namespace {
std::shared_ptr<FDesign> &theBaseline()
{
    static std::shared_ptr<FDesign> design;
    return design;
}
std::weak_ptr<FDesign> gCurrent;
bool gSwitching = false;
} // namespace

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
    }
    return design;
}

std::shared_ptr<FDesign> FDesign::current()
{
    const auto design = gCurrent.lock();
    return design && !design->isDestroyed() ? design : baseline();
}

bool FDesign::isSwitching() { return gSwitching; }

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
    const std::shared_ptr<FDesign> before = current();
    if (!design || design == before)
        return;
    gSwitching = true;
    gCurrent = design;
    before->touch();
    design->touch();
    FExternComputation::designChanged();
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
        return {"expected the name of a parameter, found \"" + name + "\""};
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
    FExternComputation::designEdited(this);
    if (current().get() == this) {
        gSwitching = true; // other designs are not concerned
        parameter->setOutOfDate(0);
        gSwitching = false;
    }
    FHistoryTransaction transaction(nullptr, "set value in design", true);
    transaction.addStep(shared_from_this());
    return {};
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
    touch();
}

void FDesign::destructFObject()
{
    if (current().get() == this)
        setCurrent(baseline());
    FEntity::destructFObject();
}

void FDesign::initCmds()
{
    FProject::instance()->addStarter([] { baseline(); });
    FCmdBinder<FDesign> c;
    c.creator("design", &FDesign::create);
    c.member("setValue", &FDesign::setValue, FArg{"parameter"}, FArg{"value"});
}

// SPDX-License-Identifier: Apache-2.0
#include "fparameter.h"

#include "fcmdbinder.h"
#include "fdesign.h"
#include "fhistory.h"

F_CLASS_IMPL(FEntity)
F_CLASS_IMPL(FParameter)

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
    FHistoryTransaction transaction(nullptr, F_TEXT("set value"), true);
    transaction.addStep(self);
    return {};
}

const FExprBase &FParameter::currentValue() const
{
    const FExprBase *own = FDesign::current()->valueOf(this);
    return own ? *own : mValue;
}

bool FParameter::standsFor(std::shared_ptr<FObject> *value) const
{
    *value = currentValue().getPtr();
    return true;
}

const FClassInfo &FParameter::valueClass() const
{
    // Along the parameters that refer to each other to the first one that is known, and back.
    std::vector<const FParameter *> unknown;
    const FParameter *parameter = this;
    while (parameter && (!parameter->mKnownClass || parameter->mKnownEpoch != mClassEpoch)) {
        parameter->mKnownClass = &FObject::staticClass(); // should the way be a circle
        parameter->mKnownEpoch = mClassEpoch;
        unknown.push_back(parameter);
        const FExprBase &value = parameter->mValue;
        parameter = value ? dynamic_cast<const FParameter *>(value.getExpr().get()) : nullptr;
        if (!parameter && value)
            unknown.back()->mKnownClass = value.valueClass();
    }
    for (size_t i = unknown.size(); i-- > 0; parameter = unknown[i])
        if (parameter)
            unknown[i]->mKnownClass = parameter->mKnownClass;
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
    c.creator("parameter", &FParameter::create, FArg{"value", nullptr}).fills();
    c.attribute("setValue", &FParameter::setValue, &FParameter::getValue, FArg{"value"})
        .title(F_TEXT("Value"))
        .disableSaving();
}

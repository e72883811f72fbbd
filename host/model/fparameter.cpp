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

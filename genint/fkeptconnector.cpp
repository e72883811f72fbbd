// SPDX-License-Identifier: Apache-2.0
#include "fkeptconnector.h"

#include "fcmdbinder.h"

F_CLASS_IMPL(FKeptConnector)
F_ENUM_IMPL(SoftConItemSize, {SoftConItemSize::Large, "Large"}, {SoftConItemSize::Medium, "Medium"},
            {SoftConItemSize::Small, "Small"})

std::shared_ptr<FKeptConnector> FKeptConnector::create(const std::string &name)
{
    const auto kept = f_make_shared<FKeptConnector>(name);
    kept->registerObject();
    return kept;
}

void FKeptConnector::setComputation(const FExpr<FExternComputation> &computation)
{
    mComputation = computation;
}

void FKeptConnector::visitState(FStateVisitor &state)
{
    FManaged::visitState(state);
    state(mComputation)(mItemSize)(mResultsPath);
}

void FKeptConnector::initCmds()
{
    if (FObject::getPrototype("FSoftwareConnector"))
        return; // the workbench itself is there
    using T = FKeptConnector;
    FCmdBinder<T> c;
    c.creator("softwareConnector", &T::create);
    c.attribute("setComputation", &T::setComputation, &T::getComputation, FArg{"computation"})
        .hidden();
    c.attribute("setItemSize", &T::setItemSize, &T::getItemSize, FArg{"size"})
        .hidden()
        .systemFlag(2);
    c.attribute("setResultsPath", &T::setResultsPath, &T::getResultsPath, FArg{"resultsPath"})
        .hidden()
        .systemFlag(2);
}

// SPDX-License-Identifier: Apache-2.0
#include "fcustomcomputation.h"

#include "fcmdbinder.h"
#include "fhistory.h"

F_CLASS_IMPL(FCustomComputation)

void FCustomComputation::constructFObject()
{
    FExternComputation::constructFObject();
    if (!mInitPrototype)
        mConfiguration.registerClient(shared_from_this(), false);
}

void FCustomComputation::setConfiguration(const FExpr<FConfigurationCustom> &configuration)
{
    mConfiguration = configuration;
    setOutOfDate(0);
    FHistoryTransaction transaction(nullptr, F_TEXT("set configuration"), true);
    transaction.addStep(shared_from_this());
}

void FCustomComputation::prepareFileValues() const
{
    if (const auto configuration = mConfiguration.getPtr())
        configuration->prepareFileValues();
}

std::vector<FExpr<FResultsFileName, true>> FCustomComputation::resultsFileNames() const
{
    const auto configuration = mConfiguration.getPtr();
    return configuration ? configuration->getResultsFileNames()
                         : std::vector<FExpr<FResultsFileName, true>>();
}

void FCustomComputation::visitState(FStateVisitor &state)
{
    FExternComputation::visitState(state);
    state(mConfiguration);
}

void FCustomComputation::initCmds()
{
    using T = FCustomComputation;
    FCmdBinder<T> c;
    c.attribute("setConfiguration", &T::setConfiguration, &T::getConfiguration,
                FArg{"configuration"})
        .title(F_TEXT("Configuration"));
    c.attribute("setCmdFile", &T::setCmdFile, &T::getCmdFile, FArg{"fileName"})
        .title(F_TEXT("Command File"));
    c.member("getResults", &T::getResults);
}

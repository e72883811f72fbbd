// SPDX-License-Identifier: Apache-2.0
#include "fgenintcomputation.h"

#include "fchangeset.h"
#include "fcmdbinder.h"
#include "fcmdmanager.h"
#include "fcustomcomputation.h"
#include "fdefinitiongenint.h"
#include "fgenintsetup.h"
#include "fgenintworkbench.h"
#include "fgenintwriter.h"
#include "fhistory.h"
#include "fimportsoftwareconnector.h"
#include "fmarloctrl.h"
#include "fobjectmanager.h"
#include "fpathmanager.h"
#include "fsafefile.h"
#include "fviewctrl.h"

#include <algorithm>
#include <cmath>

F_CLASS_IMPL(FGenIntComputation)

bool FGenIntCompSignalRapper::push(int code) const
{
    const auto computation = mComputation.lock();
    if (!computation)
        return false;
    FChangeSet::push(code, computation->getDbId());
    return true;
}

void FGenIntCompSignalRapper::emitRunStarted() const
{
    if (push(FChangeSet::RunStarted))
        Q_EMIT genIntRunStarted();
}

void FGenIntCompSignalRapper::emitRunEnded() const
{
    if (push(FChangeSet::RunEnded))
        Q_EMIT genIntRunEnded(true);
}

FGenIntComputation::~FGenIntComputation() = default;

std::shared_ptr<FGenIntComputation> FGenIntComputation::create(const std::string &name)
{
    const auto computation = f_make_shared<FGenIntComputation>(name);
    computation->registerObject();
    return computation;
}

void FGenIntComputation::constructFObject()
{
    FCustomComputation::constructFObject();
    if (!mInitPrototype && !mSignalRapper)
        mSignalRapper =
            std::make_unique<FGenIntCompSignalRapper>(shared_from_base<FGenIntComputation>());
}

void FGenIntComputation::destructFObject()
{
    if (mSignalRapper)
        Q_EMIT mSignalRapper->genIntCompDestroyed(); // what goes with it is part of the step
    if (const auto configuration = getConfiguration().getPtr()) {
        const auto definition = configuration->getDefinition().ptr<FDefinitionGenInt>();
        FManaged::destroy(configuration, true);
        if (definition) {
            const auto files = definition->getFiles();
            FManaged::destroy(definition, true);
            for (const auto &file : files)
                FManaged::destroy(file, true);
        }
    }
    FExternComputation::destructFObject();
}

void FGenIntComputation::retire()
{
    mSignalRapper.reset();
    FExternComputation::retire();
}

std::shared_ptr<FObject> FGenIntComputation::clone() const
{
    const auto copy = create(getName());
    copy->init(std::const_pointer_cast<FGenIntComputation>(shared_from_base<FGenIntComputation>()));
    return copy;
}

void FGenIntComputation::init(const std::shared_ptr<FGenIntComputation> &source)
{
    FExternComputation::init(std::static_pointer_cast<FExternComputation>(source));
}

std::shared_ptr<FDefinitionGenInt> FGenIntComputation::definition() const
{
    const auto configuration = getConfiguration().getPtr();
    return configuration ? configuration->getDefinition().ptr<FDefinitionGenInt>() : nullptr;
}

bool FGenIntComputation::writeOutputFile() const
{
    const QString directory = Q(FPathManager::instance()->getInputDirAbs(nullptr, nullptr));
    return FGenIntWriter().write(genIntConfiguration(), directory);
}

std::vector<std::string> FGenIntComputation::inputsWithoutNumber() const
{
    std::vector<std::string> names;
    const auto configuration = genIntConfiguration().getPtr();
    if (!configuration)
        return names;
    for (const auto &item : configuration->getEntryMap()) {
        const auto entry = item.second.ptr<FEntry>();
        const auto number =
            entry ? std::dynamic_pointer_cast<FDouble>(entry->getValue().getValueObject())
                  : nullptr;
        if (number && std::isnan(number->value()))
            names.push_back(S(item.first));
    }
    return names;
}

void FGenIntComputation::applyOutputHandles(std::shared_ptr<FComputationResults> object) const
{
    const auto results = std::dynamic_pointer_cast<FResultsGenInt>(object);
    const auto own = definition();
    if (own && results)
        results->setOutputHandles(own->getFiles(1));
}

void FGenIntComputation::processReread(std::shared_ptr<FComputationResults> object)
{
    const auto results = std::dynamic_pointer_cast<FResultsGenInt>(object);
    const auto configuration = getConfiguration().getPtr();
    if (!results || !configuration)
        return;
    results->setResultFiles(configuration->getResultsFileNames());
    if (const auto own = definition())
        results->setOutputHandles(own->getFiles(1));
}

void FGenIntComputation::computationStarted() const { mSignalRapper->emitRunStarted(); }

void FGenIntComputation::computationFinished() const
{
    if (mSignalRapper)
        mSignalRapper->emitRunEnded();
}

std::vector<std::string> FGenIntComputation::requiredResultFiles() const
{
    const auto own = definition();
    return own ? own->getResultValueFilenames() : std::vector<std::string>();
}

void FGenIntComputation::enableSoftCons(bool enable) const
{
    if (FViewCtrl::instance()->hasGui())
        FGenIntWorkbench::instance()->disableGui(this, !enable);
}

namespace {
/// Never null, as it is no script block.
QByteArray textOf(const FGenIntSetup::Computations &members)
{
    const QByteArray bytes = FGenIntSetup::text(members);
    return bytes.isEmpty() ? QByteArrayLiteral("") : bytes;
}
} // namespace

QByteArray FGenIntComputation::copy() const
{
    const auto self =
        std::const_pointer_cast<FGenIntComputation>(shared_from_base<FGenIntComputation>());
    const auto what = FGenIntSetup::ask(self);
    return what == FGenIntSetup::What::Nothing
               ? QByteArrayLiteral("")
               : textOf(FGenIntSetup::membersOf(self, what == FGenIntSetup::What::Chain));
}

QByteArray FGenIntComputation::copyAmong(std::vector<std::shared_ptr<FManaged>> *others) const
{
    FGenIntSetup::Computations members{
        std::const_pointer_cast<FGenIntComputation>(shared_from_base<FGenIntComputation>())};
    for (const auto &other : *others)
        if (auto computation = std::dynamic_pointer_cast<FGenIntComputation>(other))
            members.push_back(std::move(computation));
    for (const auto &member : members) {
        auto along = FGenIntSetup::companionsOf(*member);
        along.push_back(member);
        others->erase(std::remove_if(others->begin(), others->end(),
                                     [&](const auto &other) {
                                         return std::find(along.begin(), along.end(), other) !=
                                                along.end();
                                     }),
                      others->end());
    }
    return members.size() == 1 ? copy() : textOf(members);
}

bool FGenIntComputation::paste(const QByteArray &bytes) const
{
    QTextStream stream(bytes);
    return FImportSoftwareConnector::paste(stream);
}

void FGenIntComputation::openSoftwareConnector() const { FGenIntWorkbench::instance()->open(this); }

bool FGenIntComputation::doubleClickedInTree()
{
    openSoftwareConnector();
    return true;
}

std::shared_ptr<FManaged> FGenIntComputation::setName(const std::string &name)
{
    static bool inside = false;
    if (inside)
        return FExternComputation::setName(name);
    inside = true;
    FExternComputation::setName(name);
    if (!FMarloCtrl::instance()->isLoadingProject())
        FObjectManager::instance()->emitNameChanged(getPrototype(), getName(), unsigned(getDbId()));
    inside = false;
    return shared_from_base<FManaged>();
}

std::shared_ptr<FGenIntComputation>
FGenIntComputation::setGenIntConfiguration(const FExpr<FConfigurationGenInt> &configuration)
{
    setConfiguration(FExpr<FConfigurationCustom>(static_cast<const FExprBase &>(configuration)));
    return shared_from_base<FGenIntComputation>();
}

FExpr<FConfigurationGenInt> FGenIntComputation::genIntConfiguration() const
{
    return FExpr<FConfigurationGenInt>(static_cast<const FExprBase &>(getConfiguration()));
}

FExpr<FResultsGenInt> FGenIntComputation::genIntResults() const
{
    return FExpr<FResultsGenInt>(static_cast<const FExprBase &>(getResults()));
}

void FGenIntComputation::initCmds()
{
    using T = FGenIntComputation;
    {
        FCmdBinder<T> c;
        c.creator("genericIntegrationComputation", &T::create);
        c.attribute("setConfiguration", &T::setGenIntConfiguration, &T::genIntConfiguration,
                    FArg{"custom configuration"})
            .component("")
            .cmdFlags(128)
            .title("nolabel")
            .category(F_TEXT("Configuration"), 10000.0)
            .attrAsExpr(false)
            .systemFlag(2)
            .requiredCmd("true")
            .userLevel(1);
        c.member("getResults", &T::genIntResults);
        c.member("openSoftwareConnector", &T::openForScript)
            .systemFlag(1)
            .menu(F_TEXT("Open Software Connector"), 1, ":/softConIcon");
    }
    FCmdManager *commands = FCmdManager::instance();
    for (const char *name : {"FMemberCmdconstFCustomComputationgetResults",
                             "FAttribCmdFCustomComputationsetConfigurationFConfigurationCustom",
                             "FAttribCmdFCustomComputationsetCmdFilestring"})
        commands->hide(T::mpNull, FObject::getPrototype(name));
}

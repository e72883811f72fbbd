// SPDX-License-Identifier: Apache-2.0
#include "fconfigurationgenint.h"

#include "fcmdbinder.h"
#include "fcmdmanager.h"
#include "fdefinitiongenint.h"
#include "fgenintdefinitionparser.h"
#include "fgenintwriter.h"
#include "fhistory.h"
#include "fini.h"
#include "fio.h"
#include "fmarloctrl.h"
#include "fpathmanager.h"
#include "fuserfile.h"
#include "fviewctrl.h"

#include <QCoreApplication>
#include <algorithm>

F_CLASS_IMPL(FConfigurationGenInt)

FConfigurationGenInt::FConfigurationGenInt(const FExpr<FScope> &scope, std::string name,
                                           const std::shared_ptr<FDefinitionGenInt> &definition)
    : FConfigurationCustom(scope, std::move(name), FExpr<FDefinitionCustom>(definition))
{
}

std::shared_ptr<FConfigurationGenInt>
FConfigurationGenInt::create(const FExpr<FScope> &scope, const std::string &name, bool initialize,
                             const std::shared_ptr<FDefinitionGenInt> &definition)
{
    FHistoryTransaction transaction(nullptr, std::string(), true);
    const auto configuration = f_make_shared<FConfigurationGenInt>(scope, name, definition);
    configuration->registerObject();
    configuration->init();
    if (definition)
        configuration->setDefinition(FExpr<FDefinitionCustom>(definition));
    if (initialize)
        configuration->initEntireStructure(false);
    return configuration;
}

std::shared_ptr<FConfigurationGenInt> FConfigurationGenInt::createForScript(const std::string &name,
                                                                            bool initialize)
{
    return create(nullptr, name, initialize, nullptr);
}

void FConfigurationGenInt::init(const std::shared_ptr<FConfigurationGenInt> &source)
{
    FConfigurationCustom::init(std::static_pointer_cast<FConfigurationCustom>(source));
}

std::shared_ptr<FObject> FConfigurationGenInt::clone() const
{
    FHistoryTransaction transaction(nullptr, std::string(), true);
    const auto copy = create(nullptr, getName(), false, nullptr);
    copy->init(
        std::const_pointer_cast<FConfigurationGenInt>(shared_from_base<FConfigurationGenInt>()));
    return copy;
}

void FConfigurationGenInt::reassignEntryDefs()
{
    const auto definition = getDefinition().getPtr();
    if (!definition)
        return;
    const auto &wanted = definition->getRootEntries();
    for (const auto &handle : getRootEntries()) {
        const auto entry = handle.ptr<FEntry>();
        if (!entry)
            continue;
        const FExprBase own = entry->getEntryDefinition();
        if (std::find(wanted.begin(), wanted.end(), own) == wanted.end()) {
            const auto match = std::find_if(wanted.begin(), wanted.end(), [&](const auto &other) {
                const auto object = other.template ptr<FEntryDef>();
                return object && object->getName() == entry->getName();
            });
            if (match == wanted.end())
                continue;
            entry->setEntryDefinition(FExpr<FEntryDef>(*match));
            FHistory::instance()->addStep(entry);
        }
        if (entry->isGroup())
            entry->reassignEntryDefs();
    }
}

void FConfigurationGenInt::getDynamicAttributes(
    std::vector<std::shared_ptr<FAttribCmd>> &list) const
{
    const auto definition = getDefinition().getPtr();
    if (!definition)
        return;
    const auto entries = getVisibleRootEntries();
    for (const auto &wanted : definition->getVisibleRootEntries())
        for (const auto &handle : entries) {
            const auto entry = handle.ptr<FEntry>();
            const auto entryDef = wanted.ptr<FEntryDef>();
            if (!entry || entry->getEntryDefinition().getExpr() != wanted.getExpr() ||
                entry->isGroup() || FEntry::mCmds.empty())
                continue;
            auto info = std::make_shared<FCommandInfo>(FEntry::mCmds.front()->info());
            info->title = entry->getName();
            info->category = "Configuration";
            info->attrAsExpr = entryDef->isExpr();
            if (const auto type = entryDef->getType())
                info->args[0].type = type->getClass();
            const auto attribute = std::static_pointer_cast<FAttribCmd>(FCmd::make(info));
            if (attribute->setReceiver(FExprBase(entry)))
                list.push_back(attribute);
        }
}

std::map<std::string, std::string> FConfigurationGenInt::getPreview() const
{
    std::map<std::string, std::string> preview;
    const auto self =
        std::const_pointer_cast<FConfigurationGenInt>(shared_from_base<FConfigurationGenInt>());
    FGenIntWriter().write(FExpr<FConfigurationGenInt>(self), preview);
    return preview;
}

std::shared_ptr<FDefinitionCustom>
FConfigurationGenInt::parseFile(QFile *file, const FExpr<FDefinitionCustom> &definition) const
{
    FReason why;
    return parseFile(file, definition, &why);
}

std::shared_ptr<FDefinitionCustom>
FConfigurationGenInt::parseFile(QFile *file, const FExpr<FDefinitionCustom> &definition,
                                FReason *why) const
{
    FGenIntDefinitionParser parser(definition);
    parser.setFile(S(file->fileName()));
    parser.read(file);
    if (!parser.errors().empty()) {
        *why = "no definition could be read whole from " + S(file->fileName()) +
               ", nothing of it is kept";
        why->causes = parser.errors();
    }
    return parser.getDefinition().getPtr();
}

FExpr<FDefinitionGenInt>
FConfigurationGenInt::importGenIntDefinition(const std::string &fileName) const
{
    FReason why;
    return importGenIntDefinition(fileName, &why);
}

FExpr<FDefinitionGenInt> FConfigurationGenInt::importGenIntDefinition(const std::string &fileName,
                                                                      FReason *why) const
{
    const QString setting = QStringLiteral("OVDL/import/path");
    std::string name = fileName.empty() ? fileName : FFile::resolveEnv(fileName);
    if (name.empty()) {
        std::string start =
            S(FIni().value(setting, Q(FPathManager::instance()->getSamplesDir())).toString());
        FViewCtrl *view = FViewCtrl::instance();
        view->prepareModalDialog(nullptr);
        name = S(view->getOpenFileName(QStringLiteral("Open OVDL File"), &start,
                                       QStringLiteral("OVDL Files (*.ovdl *.xml)")));
        view->finalizeModalDialog();
    }
    if (name.empty())
        return {};
    // A project that is loaded writes nothing, the settings neither: many may load at a time.
    if (!FMarloCtrl::instance()->isLoadingProject())
        FIni().setValue(setting, Q(name));
    QFile file(Q(name));
    QString reason;
    if (!FUserFile::open(&file, &reason, FUserFile::kMostBytes,
                         QIODevice::ReadOnly | QIODevice::Text)) {
        *why = "cannot read file " + name + ": " + S(reason);
        FIO::instance()->information(
            nullptr, FMarloCtrl::instance()->applicationName(),
            S(QCoreApplication::translate("FConfigurationGenInt", "Cannot read file %1:\n%2.")
                  .arg(file.fileName(), reason)),
            "", "", "", 0, -1);
        return {};
    }
    const auto definition =
        parseFile(&file, FExpr<FDefinitionCustom>(FDefinitionGenInt::mpNull), why);
    file.close();
    return FExpr<FDefinitionGenInt>(std::dynamic_pointer_cast<FDefinitionGenInt>(definition));
}

void FConfigurationGenInt::setGenIntDefinition(const FExpr<FDefinitionGenInt> &definition)
{
    setDefinition(FExpr<FDefinitionCustom>(static_cast<const FExprBase &>(definition)));
}

FExpr<FDefinitionGenInt> FConfigurationGenInt::genIntDefinition() const
{
    return FExpr<FDefinitionGenInt>(static_cast<const FExprBase &>(getDefinition()));
}

namespace {
FOutcome<FExpr<FDefinitionGenInt>> importForScript(const std::string &fileName)
{
    FOutcome<FExpr<FDefinitionGenInt>> outcome;
    outcome.value = FConfigurationGenInt::mpNull->importGenIntDefinition(fileName, &outcome.error);
    return outcome;
}
} // namespace

void FConfigurationGenInt::initCmds()
{
    using T = FConfigurationGenInt;
    {
        FCmdBinder<T> c;
        c.creator("genericIntegrationConfiguration", &T::createForScript,
                  FArg{"initializeConfiguration", false})
            .fills();
        c.attribute("setDefinition", &T::setGenIntDefinition, &T::genIntDefinition,
                    FArg{"definition"})
            .title(F_TEXT("Definition"))
            .component("")
            .attrAsExpr(false)
            .needsGuiReinit()
            .userLevel(1)
            .hidden();
        c.global("importGenIntDefinition", &importForScript, FArg{"fileName", ""});
    }
    FCmdManager *commands = FCmdManager::instance();
    commands->hide(T::mpNull, FObject::getPrototype(
                                  "FAttribCmdFConfigurationCustomsetDefinitionFDefinitionCustom"));
    commands->hide(T::mpNull, FObject::getPrototype("FAttribCmdFManagedsetNameFObjectName"));
}

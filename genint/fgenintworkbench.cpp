// SPDX-License-Identifier: Apache-2.0
#include "fgenintworkbench.h"

#include "fchanges.h"
#include "fdefinitiongenint.h"
#include "fgenintcommandfile.h"
#include "fgenintcomputation.h"
#include "fgenintresultsfile.h"
#include "fkeptconnector.h"
#include "fobjectmanager.h"

#include <set>

namespace {
FGenIntWorkbench *&theWorkbench()
{
    static FGenIntWorkbench none;
    static FGenIntWorkbench *workbench = &none;
    return workbench;
}

FDefinitionGenInt *ownerOf(const FObject *file)
{
    FDefinitionGenInt *owner = nullptr;
    file->clients().forEach([&](FObject *client) {
        auto *definition = dynamic_cast<FDefinitionGenInt *>(client);
        if (definition && definition->ownsFile(file))
            owner = definition;
    });
    return owner;
}

/// What a turn changed, as the workbench wants to hear it: each connector once.
void tell(const QVector<FChange> &changes)
{
    std::set<const FDefinitionGenInt *> texts, structures;
    FGenIntWorkbench *workbench = FGenIntWorkbench::instance();
    for (const FChange &change : changes) {
        const FObject *object = change.object.get();
        if (change.what == FChanges::State || change.what & FChanges::Removed)
            continue;
        if (const auto *computation = dynamic_cast<const FGenIntComputation *>(object)) {
            if (change.what & FChanges::Renamed)
                workbench->setTitles(computation, computation->getName());
        } else if (const auto *definition = dynamic_cast<const FDefinitionGenInt *>(object)) {
            structures.insert(definition);
        } else if (const auto *values = dynamic_cast<const FConfigurationGenInt *>(object)) {
            if (const auto owner = values->getDefinition().ptr<FDefinitionGenInt>())
                structures.insert(owner.get());
        } else if (const auto *rules = dynamic_cast<const FGenIntResultsFile *>(object)) {
            workbench->refreshResultsFileEditors(rules);
        } else if (dynamic_cast<const FGenIntCommandFile *>(object)) {
            if (const auto *owner = ownerOf(object))
                texts.insert(owner);
        }
    }
    for (const FDefinitionGenInt *definition : structures)
        workbench->definitionChanged(definition);
    for (const FDefinitionGenInt *definition : texts)
        workbench->refreshCommandFileEditors(definition);
}
} // namespace

FGenIntWorkbench *FGenIntWorkbench::instance() { return theWorkbench(); }

void FGenIntWorkbench::setInstance(FGenIntWorkbench *workbench)
{
    static FGenIntWorkbench none;
    static QMetaObject::Connection feed;
    QObject::disconnect(feed);
    theWorkbench() = workbench ? workbench : &none;
    if (workbench)
        feed = QObject::connect(FChanges::instance(), &FChanges::changed, &tell);
}

std::shared_ptr<FManaged> FGenIntWorkbench::connectorOf(const FGenIntComputation *computation)
{
    for (const auto &one : getManageds<FKeptConnector>()) {
        const auto kept = one.getPtr();
        if (kept && kept->getComputation().getExpr().get() == computation)
            return kept;
    }
    return nullptr;
}

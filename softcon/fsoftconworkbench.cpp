// SPDX-License-Identifier: Apache-2.0
#include "fsoftconworkbench.h"

#include "fchangeset.h"
#include "fgenintcommandfileeditor.h"
#include "fgenintresultsfileeditor.h"
#include "fhistory.h"
#include "fobjectmanager.h"
#include "fsoftconlooks.h"
#include "fsoftconscene.h"
#include "fsoftwareconnector.h"

namespace {
template <class Do>
void forConnectors(Do what)
{
    for (const auto &one : getManageds<FSoftwareConnector>())
        if (const auto connector = one.getPtr())
            what(*connector);
}

bool belongsTo(const FSoftwareConnector &connector, const FDefinitionGenInt *definition)
{
    const auto computation = connector.getComputation().ptr<FGenIntComputation>();
    const auto configuration = computation ? computation->getConfiguration().getPtr() : nullptr;
    return configuration && configuration->getDefinition().getExpr().get() == definition;
}
} // namespace

FSoftConWorkbench::FSoftConWorkbench(QObject *parent)
    : QObject(parent)
{
    FGenIntWorkbench::setInstance(this);
    FChangeSet::setHandler([](const FChangeResponse &response) {
        const bool isStart = response.code == FChangeSet::RunStarted;
        if (!isStart && response.code != FChangeSet::RunEnded)
            return; // views follow the feed
        for (const auto &workbench : FSoftConBase::all())
            if (const auto one = workbench.getPtr())
                one->disableGui(!isStart, response.payload.toInt());
    });
    FChanges *feed = FChanges::instance();
    connect(feed, &FChanges::projectChanged, this, [this](unsigned events) {
        if (events & FChanges::Opened)
            openAll();
    });
    connect(feed, &FChanges::changed, this, &FSoftConWorkbench::follow);
}

FSoftConWorkbench::~FSoftConWorkbench()
{
    FChangeSet::setHandler(nullptr);
    FGenIntWorkbench::setInstance(nullptr);
}

void FSoftConWorkbench::refreshCommandFileEditors(const FDefinitionGenInt *definition)
{
    forConnectors([definition](FSoftwareConnector &connector) {
        if (belongsTo(connector, definition))
            connector.refreshCommandFileEditors();
    });
}

void FSoftConWorkbench::refreshResultsFileEditors(const FGenIntResultsFile *file)
{
    forConnectors([file](FSoftwareConnector &connector) {
        for (const auto &editor : connector.getResultsFileEditors())
            if (editor && editor->file().get() == file)
                editor->refresh();
    });
}

void FSoftConWorkbench::definitionChanged(const FDefinitionGenInt *definition)
{
    forConnectors([definition](FSoftwareConnector &connector) {
        if (belongsTo(connector, definition))
            connector.setOutOfDate(0);
    });
}

void FSoftConWorkbench::setTitles(const FGenIntComputation *computation, const std::string &name)
{
    if (const auto connector = FSoftwareConnector::of(computation))
        connector->setTitles(name);
}

void FSoftConWorkbench::disableGui(const FGenIntComputation *computation, bool disable)
{
    forConnectors([&](FSoftwareConnector &connector) {
        if (connector.getComputation().getExpr().get() == computation)
            connector.disableGui(disable);
    });
}

void FSoftConWorkbench::open(const FGenIntComputation *computation)
{
    openAs(computation, computation->getName() + "_connector");
}

void FSoftConWorkbench::openAs(const FGenIntComputation *computation, const std::string &name)
{
    if (const auto connector = FSoftwareConnector::of(computation)) {
        connector->setVisible(true);
        return;
    }
    const FExpr<FExternComputation> owner(
        std::static_pointer_cast<FExternComputation>(std::const_pointer_cast<FObject>(
            static_cast<const FObject *>(computation)->shared_from_this())));
    FHistory *history = FHistory::instance();
    if (history->isTransactionOpen()) {
        FSoftwareConnector::create(name, owner);
    } else {
        const FHistoryBlocker noStep; // a page is opened, nothing of the project changes
        FSoftwareConnector::create(name, owner);
    }
}

std::shared_ptr<FManaged> FSoftConWorkbench::connectorOf(const FGenIntComputation *computation)
{
    return FSoftwareConnector::of(computation);
}

void FSoftConWorkbench::openFile(const FObject *object, const FGenIntFile *file)
{
    const auto *computation = dynamic_cast<const FGenIntComputation *>(object);
    if (computation && file)
        FSoftConLooks::openFile(*computation, *file);
}

void FSoftConWorkbench::renameTab(const FGenIntFile *file)
{
    const auto object =
        std::const_pointer_cast<FObject>(static_cast<const FObject *>(file)->shared_from_this());
    forConnectors([&](FSoftwareConnector &connector) {
        connector.renameTab(FExpr<FGenIntFile>(std::static_pointer_cast<FGenIntFile>(object)));
    });
}

void FSoftConWorkbench::openAll()
{
    const FHistoryBlocker noStep;
    for (const auto &one : getManageds<FGenIntComputation>())
        if (const auto computation = one.getPtr()) {
            if (const auto connector = FSoftwareConnector::of(computation.get())) {
                connector->setTitles(std::string());
                connector->paintRequest();
            } else {
                open(computation.get());
            }
        }
}

/// Pages come and go with their computations, whoever takes those back.
void FSoftConWorkbench::follow(const QVector<FChange> &changes)
{
    for (const FChange &change : changes) {
        if (!dynamic_cast<const FGenIntComputation *>(change.object.get()))
            continue;
        const auto connector = FSoftwareConnector::of(change.object.get());
        if (!connector)
            continue;
        if (change.what & FChanges::Removed)
            connector->setVisible(false);
        else if (change.what & FChanges::Revived)
            connector->setVisible(true);
    }
}

// SPDX-License-Identifier: Apache-2.0
#include "fsoftconlooks.h"

#include "factions.h"
#include "fconfigurationgenint.h"
#include "fcounted.h"
#include "fdefinitiongenint.h"
#include "fdispatcher.h"
#include "fgenintcheck.h"
#include "fgenintcommandfile.h"
#include "fgenintcomputation.h"
#include "fgenintresultsfile.h"
#include "fhistory.h"
#include "fimportsoftwareconnector.h"
#include "flooks.h"
#include "fmainwindow.h"
#include "fobjectmanager.h"
#include "fpreviewdialog.h"
#include "fproblemspanel.h"
#include "fprojectcontrol.h"
#include "fselectionset.h"
#include "fsoftconchainpage.h"
#include "fsoftconworkbench.h"
#include "fsoftwareconnector.h"
#include "ftemplatetab.h"

#include <QCoreApplication>

namespace {
QString tr(const char *text) { return QCoreApplication::translate("FSoftConLooks", text); }

std::shared_ptr<FConfigurationGenInt> configurationOf(const FObject &object)
{
    const auto *computation = dynamic_cast<const FGenIntComputation *>(&object);
    return computation ? computation->getConfiguration().ptr<FConfigurationGenInt>() : nullptr;
}

std::shared_ptr<FDefinitionGenInt> definitionOf(const FObject &object)
{
    const auto configuration = configurationOf(object);
    return configuration ? configuration->getDefinition().ptr<FDefinitionGenInt>() : nullptr;
}

/// Below a computation stand its template files, and the configuration whose entries they use.
FClassLook::Objects partsOf(const FObject &object)
{
    FClassLook::Objects parts;
    const auto definition = definitionOf(object);
    if (definition)
        for (const auto &file : definition->getFiles())
            if (auto one = file.getPtr())
                parts.push_back(std::move(one));
    if (auto configuration = configurationOf(object))
        parts.push_back(std::move(configuration));
    if (definition)
        parts.push_back(definition);
    return parts;
}

QStringList goingWith(const FObject &object)
{
    QStringList names;
    for (const auto &part : partsOf(object)) {
        const auto *file = dynamic_cast<const FGenIntFile *>(part.get());
        names << (file ? file->getFileName() : FLooks::nameOf(*part));
    }
    return names;
}

/// The computation that a template file belongs to.
std::shared_ptr<FGenIntComputation> computationOf(const FObject &part)
{
    for (const auto &one : getManageds<FGenIntComputation>()) {
        auto computation = one.getPtr();
        if (!computation)
            continue;
        for (const auto &own : partsOf(*computation))
            if (own.get() == &part)
                return computation;
    }
    return nullptr;
}

/// Leads to where a problem can be mended.
void openProblem(const FProblem &problem)
{
    const auto object = FObjectManager::instance()->find(S(problem.object));
    for (const auto &one : getManageds<FGenIntComputation>()) {
        const auto computation = one.getPtr();
        const auto definition = computation ? definitionOf(*computation) : nullptr;
        if (!definition || problem.file.isEmpty())
            continue;
        for (const auto &given : definition->getFiles()) {
            const auto file = given.getPtr();
            if (!file || file->getFileName() != problem.file ||
                (object && object != file && object != computation && object != definition &&
                 object != configurationOf(*computation)))
                continue;
            FSoftConLooks::openFile(*computation, *file);
            const auto connector = FSoftwareConnector::of(computation.get());
            auto *tab = connector && connector->tabWidget()
                            ? qobject_cast<FTemplateTab *>(connector->tabWidget()->currentWidget())
                            : nullptr;
            if (tab && problem.line > 0)
                tab->showPlace(problem.line, qMax(0, problem.column - 1), 1);
            return;
        }
    }
    if (object)
        FSelectionSet::instance()->set({FExprBase(std::shared_ptr<FObject>(object))}, true);
}

/// Takes in a set-up file, or the one that the user chooses.
void importSetup(const QString &path)
{
    const auto before = getManageds<FGenIntComputation>().size();
    FImportSoftwareConnector::mpNull->read(S(path));
    const auto all = getManageds<FGenIntComputation>();
    for (size_t i = before; i < all.size(); ++i)
        all[i]->openSoftwareConnector();
}

QString notOpen()
{
    return FProjectControl::instance()->isOpen() ? QString() : tr("no project is open");
}

/// The computation that is meant: the selected one, the one that a selected part belongs to, or the
/// only one.
std::shared_ptr<FGenIntComputation> meant()
{
    for (const auto &object : FSelectionSet::instance()->getObjects()) {
        auto computation = std::dynamic_pointer_cast<FGenIntComputation>(object.getExpr());
        if (!computation && object.getExpr())
            computation = computationOf(*object.getExpr());
        if (computation)
            return computation;
    }
    const auto all = getManageds<FGenIntComputation>();
    return all.empty() ? nullptr : all.front().getPtr();
}

std::vector<FProblem> problems()
{
    std::vector<FProblem> found;
    for (const FGenIntFinding &finding : FGenIntCheck::run()) {
        std::string message = finding.message;
        if (!finding.found.empty())
            message.append(", found ").append(finding.found);
        if (!finding.expected.empty())
            message.append(", expected ").append(finding.expected);
        found.push_back({finding.severity == FGenIntFinding::Error, Q(finding.object),
                         Q(finding.file), Q(message), finding.line, finding.column});
    }
    return found;
}
} // namespace

void FSoftConLooks::add()
{
    FProblemsPanel::setCheck(&problems);
    FClassLook connector;
    connector.icon = QStringLiteral(":/connector");
    connector.noun = tr("Connector");
    connector.group = tr("Connectors");
    connector.place = 30;
    connector.children = partsOf;
    connector.takesAlong = goingWith;
    FLooks::add(FGenIntComputation::staticClass(), connector);

    FClassLook page;
    page.isHidden = true; // the computation stands for its workbench
    FLooks::add(FSoftwareConnector::staticClass(), page);

    FClassLook file;
    file.icon = QStringLiteral(":/template");
    file.noun = tr("Input template");
    file.open = [](FObject &object) {
        const auto computation = computationOf(object);
        if (!computation)
            return false;
        FSoftConLooks::openFile(*computation, object);
        return true;
    };
    FLooks::add(FGenIntCommandFile::staticClass(), file);
    file.icon = QStringLiteral(":/resultTemplate");
    file.noun = tr("Result template");
    file.detail = [](const FObject &object) {
        const auto *results = dynamic_cast<const FGenIntResultsFile *>(&object);
        return results ? counted(qint64(results->values().size()), tr("%1 value"), tr("%1 values"))
                       : QString();
    };
    FLooks::add(FGenIntResultsFile::staticClass(), file);
}

void FSoftConLooks::openFile(const FGenIntComputation &computation, const FObject &file)
{
    computation.openSoftwareConnector();
    const auto connector = FSoftwareConnector::of(&computation);
    const auto object = std::const_pointer_cast<FObject>(file.shared_from_this());
    if (connector)
        connector->gotoTab(FExpr<FGenIntFile>(std::dynamic_pointer_cast<FGenIntFile>(object)));
}

void FSoftConLooks::addTo(FMainWindow *window)
{
    new FSoftConWorkbench(window);
    QObject::connect(window->problems(), &FProblemsPanel::opened, window, &openProblem);
    FActions *table = FActions::instance();
    FActionInfo info;
    info.id = QStringLiteral("insertConnector");
    info.menu = QStringLiteral("Insert");
    info.place = 2.0;
    info.text = tr("&Connector");
    info.icon = QStringLiteral(":/connector");
    info.toolTip = tr("Couple another program");
    info.run = [] {
        FHistoryTransaction step(nullptr, S(tr("Insert connector")), true);
        const auto made = FDispatcher::create("genericIntegrationComputation", "connector1");
        if (const auto computation = made.value.ptr<FGenIntComputation>())
            computation->openSoftwareConnector();
    };
    info.whyNot = notOpen;
    table->add(info);

    info = FActionInfo();
    info.id = QStringLiteral("insertSetup");
    info.menu = QStringLiteral("Insert");
    info.place = 2.1;
    info.text = tr("Set-up from &file\u2026");
    info.icon = QStringLiteral(":/import");
    info.toolTip = tr("Take a coupling or a chain from a file that was exported");
    info.run = [] { importSetup(QString()); };
    info.whyNot = notOpen;
    table->add(info);
    window->setFileHandler(QStringLiteral("ovdl"), &importSetup);

    info = FActionInfo();
    info.id = QStringLiteral("viewChain");
    info.menu = QStringLiteral("View");
    info.place = 2.1;
    info.text = tr("Picture of the c&hain");
    info.icon = QStringLiteral(":/link");
    info.shortcut = QKeySequence(QStringLiteral("Ctrl+Shift+H"));
    info.toolTip = tr("Show computations, and what flows between them, as a picture");
    info.run = [window] { FSoftConChainPage::show(window->documents()); };
    info.whyNot = notOpen;
    table->add(info);

    info = FActionInfo();
    info.id = QStringLiteral("runRead");
    info.menu = QStringLiteral("Run");
    info.place = 2.0;
    info.text = tr("&Read existing results");
    info.icon = QStringLiteral(":/reread");
    info.toolTip = tr("Take the files on disk as the results of the design that is shown");
    info.run = [] {
        if (const auto computation = meant())
            FDispatcher::execute(FExprBase(computation), "rereadResults");
    };
    info.whyNot = [] {
        const auto computation = meant();
        return !computation                ? tr("there is no connector")
               : !computation->canReread() ? tr("it runs, or it has no results on disk")
                                           : QString();
    };
    table->add(info);

    info = FActionInfo();
    info.id = QStringLiteral("runPreview");
    info.menu = QStringLiteral("Run");
    info.place = 3.1;
    info.text = tr("&Preview");
    info.icon = QStringLiteral(":/configPreview");
    info.shortcut = QKeySequence(Qt::Key_F7);
    info.toolTip = tr("Show the input files as they would be written");
    info.run = [window] {
        if (const auto computation = meant())
            FPreviewDialog::show(computation, window);
    };
    info.whyNot = [] {
        const auto computation = meant();
        return !computation || !configurationOf(*computation) ? tr("there is no connector")
                                                              : QString();
    };
    table->add(info);
    window->addToToolBar(info.id);
}

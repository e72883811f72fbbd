// SPDX-License-Identifier: Apache-2.0
// What the window can do: the action table of the host, menus and tool bar.
#include "factions.h"
#include "fconfiguration.h"
#include "fdesign.h"
#include "fdesignspage.h"
#include "fdispatcher.h"
#include "fdocupopup.h"
#include "ffinder.h"
#include "fhistory.h"
#include "ficons.h"
#include "flogmsg.h"
#include "fmainwindow.h"
#include "fmodelpanel.h"
#include "fobjectclipboard.h"
#include "fobjectmanager.h"
#include "fproblemspanel.h"
#include "fprojectcontrol.h"
#include "fruncontrol.h"
#include "fselectionset.h"
#include "fsettingsdialog.h"
#include "ftheme.h"

#include <QApplication>
#include <QDockWidget>
#include <QFileDialog>
#include <QLabel>
#include <QMenuBar>
#include <QToolBar>
#include <QToolButton>

namespace {
const char *const kMenus[] = {
    QT_TRANSLATE_NOOP("FMainWindow", "File"), QT_TRANSLATE_NOOP("FMainWindow", "Edit"),
    QT_TRANSLATE_NOOP("FMainWindow", "View"), QT_TRANSLATE_NOOP("FMainWindow", "Insert"),
    QT_TRANSLATE_NOOP("FMainWindow", "Run"),  QT_TRANSLATE_NOOP("FMainWindow", "Help")};

QString notOpen()
{
    return FProjectControl::instance()->isOpen() ? QString()
                                                 : FMainWindow::tr("no project is open");
}

QString nothingSelected()
{
    const QString why = notOpen();
    return !why.isEmpty()                         ? why
           : FObjectClipboard::selected().empty() ? FMainWindow::tr("nothing is selected")
                                                  : QString();
}

/// A free name that begins with \p stem: "parameter1".
std::string freeName(const char *stem)
{
    for (int i = 1;; ++i) {
        std::string name = stem + std::to_string(i);
        if (!FObjectManager::instance()->find(name))
            return name;
    }
}

FRunControl::Designs selectedDesigns()
{
    FRunControl::Designs found;
    for (const auto &object : FSelectionSet::instance()->getObjects())
        if (auto design = std::dynamic_pointer_cast<FDesign>(object.getExpr()))
            found.push_back(std::move(design));
    return found;
}

void selectAlone(const FExprBase &object)
{
    if (object)
        FSelectionSet::instance()->set({object}, true);
}
} // namespace

void FMainWindow::makeActions()
{
    FActions *table = FActions::instance();
    FProjectControl *project = FProjectControl::instance();
    FRunControl *runs = FRunControl::instance();
    const auto add = [](const char *id, const char *menu, double place, const QString &text,
                        const char *icon, const QKeySequence &shortcut, const QString &tip,
                        std::function<void()> run,
                        std::function<QString()> whyNot = nullptr) -> FActionInfo {
        FActionInfo info{QLatin1String(id),
                         QLatin1String(menu),
                         place,
                         text,
                         QLatin1String(icon),
                         shortcut,
                         tip,
                         std::move(run),
                         std::move(whyNot),
                         nullptr,
                         nullptr};
        return info;
    };
    const auto enter = [table](const FActionInfo &info) { table->add(info); };

    enter(add(
        "fileNew", "File", 1.0, tr("&New"), ":/fileNew", QKeySequence::New,
        tr("Begin an empty project"), [project] { project->newProject(); }));
    enter(add(
        "fileOpen", "File", 1.1, tr("&Open\u2026"), ":/fileOpen", QKeySequence::Open,
        tr("Open a project"), [project] { project->askAndOpen(); }));
    enter(add(
        "fileSave", "File", 2.0, tr("&Save"), ":/fileSave", QKeySequence::Save,
        tr("Save the project"), [project] { project->save(); },
        [project] { return project->whyNotSaved(); }));
    enter(add(
        "fileSaveAs", "File", 2.1, tr("Save &As\u2026"), ":/filesaveas",
        QKeySequence(QStringLiteral("Ctrl+Shift+S")), tr("Save the project under another name"),
        [project] { project->saveAs(); }, [project] { return project->whyNotSaved(); }));
    enter(add(
        "fileRevert", "File", 2.2, tr("&Revert"), "", {},
        tr("Read the project anew as it was saved"), [project] { project->revert(); },
        [project] {
            const QString why = notOpen();
            return !why.isEmpty() ? why
                   : project->name() == FProjectControl::tr("Untitled")
                       ? tr("the project was never saved")
                   : !project->isModified() ? tr("nothing was changed since it was saved")
                                            : QString();
        }));
    enter(add(
        "fileImportDefinition", "File", 3.0, tr("&Import definition\u2026"), ":/import", {},
        tr("Add a saved definition (.ovdl) to the project"),
        [this] {
            const QString path =
                QFileDialog::getOpenFileName(this, tr("Import definition"), QString(),
                                             tr("Definitions (*.ovdl);;All files (*)"));
            if (path.isEmpty())
                return;
            const FResult result = FDispatcher::call("importGenIntDefinition",
                                                     {FExprBase(f_make_shared<FString>(S(path)))});
            if (!result.error.empty())
                showPanel(QStringLiteral("messages"));
            else
                selectAlone(result.value);
        },
        notOpen));
    enter(add(
        "fileImportDesigns", "File", 3.1, tr("Import &designs\u2026"), "", {},
        tr("Take designs from a table (.csv) whose first line names parameters"),
        [this] {
            FActions::instance()->action(QStringLiteral("viewDesigns"))->trigger();
            mDesigns->importTable();
        },
        notOpen));
    enter(add(
        "fileExportDesigns", "File", 3.2, tr("Ex&port designs\u2026"), "", {},
        tr("Write the table of designs with states and values to a file"),
        [this] { mDesigns->exportTable(); }, notOpen));
    enter(add(
        "fileClose", "File", 4.0, tr("&Close"), ":/close", QKeySequence(QStringLiteral("Ctrl+W")),
        tr("Close the project"), [project] { project->close(); }, notOpen));
    enter(add(
        "fileSettings", "File", 5.0, tr("Se&ttings\u2026"), ":/settings",
        QKeySequence(QStringLiteral("Ctrl+,")), tr("Theme, runs at once, labels"),
        [] {
            FSettingsDialog dialog;
            dialog.exec();
        }));
    enter(add(
        "fileExit", "File", 6.0, tr("E&xit"), ":/exit", QKeySequence::Quit, tr("Close the window"),
        [this] { close(); }));

    const auto history = [&](const char *id, double place, const QString &text, const char *icon,
                             const QKeySequence &keys, const QString &tip, const char *command,
                             bool (FHistory::*can)() const, QString (FHistory::*title)() const,
                             const QString &textWith, const QString &none) {
        FActionInfo info = add(
            id, "Edit", place, text, icon, keys, tip, [command] { FDispatcher::call(command); },
            [can, none] { return (FHistory::instance()->*can)() ? QString() : none; });
        info.textNow = [title, can, textWith] {
            return (FHistory::instance()->*can)()
                       ? textWith.arg((FHistory::instance()->*title)().replace('&', "&&"))
                       : QString();
        };
        enter(info);
    };
    history("editUndo", 1.0, tr("&Undo"), ":/undo", QKeySequence::Undo,
            tr("Take back the last step"), "undo", &FHistory::canUndo, &FHistory::undoTitle,
            tr("&Undo %1"), tr("there is nothing to undo"));
    history("editRedo", 1.1, tr("&Redo"), ":/redo", QKeySequence(QStringLiteral("Ctrl+Shift+Z")),
            tr("Do again what was taken back"), "redo", &FHistory::canRedo, &FHistory::redoTitle,
            tr("&Redo %1"), tr("there is nothing to redo"));
    enter(add(
        "editCut", "Edit", 2.0, tr("Cu&t"), ":/cut", QKeySequence::Cut,
        tr("Copy the selected objects and delete them"),
        [] {
            FObjectClipboard::copy(FObjectClipboard::selected());
            FObjectClipboard::remove(FObjectClipboard::selected());
        },
        nothingSelected));
    enter(add(
        "editCopy", "Edit", 2.1, tr("&Copy"), ":/copy", QKeySequence::Copy,
        tr("Copy the selected objects"),
        [] { FObjectClipboard::copy(FObjectClipboard::selected()); }, nothingSelected));
    enter(add(
        "editPaste", "Edit", 2.2, tr("&Paste"), ":/paste", QKeySequence::Paste,
        tr("Make copied objects under free names"), [] { FObjectClipboard::paste(); },
        [] {
            const QString why = notOpen();
            return why.isEmpty() ? FObjectClipboard::whyNotPaste() : why;
        }));
    enter(add(
        "editDelete", "Edit", 2.3, tr("&Delete"), ":/delete", QKeySequence::Delete,
        tr("Delete the selected objects"),
        [] { FObjectClipboard::remove(FObjectClipboard::selected()); }, nothingSelected));
    enter(add(
        "editRename", "Edit", 2.4, tr("Re&name"), ":/rename", QKeySequence(Qt::Key_F2),
        tr("Give the selected object another name"),
        [this] {
            showPanel(QStringLiteral("model"));
            mModel->editName();
        },
        nothingSelected));
    enter(add("editFind", "Edit", 3.0, tr("&Find anything"), ":/find",
              QKeySequence(QStringLiteral("Ctrl+K")),
              tr("Any action, object or template by typing"), [this] { mFinder->begin(); }));
    enter(add("editFilter", "Edit", 3.1, tr("Filter the &model"), ":/filter",
              QKeySequence(QStringLiteral("Ctrl+Shift+F")), tr("Show only objects of some name"),
              [this] {
                  showPanel(QStringLiteral("model"));
                  mModel->focusFilter();
              }));

    double place = 1;
    for (const auto &[id, icon] : {std::pair{"model", ":/tree"},
                                   {"properties", ":/properties"},
                                   {"messages", ":/log"},
                                   {"problems", ":/problems"},
                                   {"output", ":/output"},
                                   {"script", ":/script"}}) {
        QDockWidget *panel = mPanels[QLatin1String(id)];
        const QString name = QString(panel->windowTitle()).remove(QRegExp(" \\(.*"));
        FActionInfo info = add((std::string("view_") + id).c_str(), "View", place, name, icon, {},
                               tr("Show or hide the panel %1").arg(name),
                               [this, panel, id = std::string(id)] {
                                   if (panel->isVisible() && !panel->visibleRegion().isEmpty())
                                       panel->hide();
                                   else
                                       showPanel(Q(id));
                               });
        info.isOn = [panel] { return panel->isVisible(); };
        enter(info);
        connect(panel, &QDockWidget::visibilityChanged, table, &FActions::refreshSoon);
        place += 0.1;
    }
    enter(add(
        "viewDesigns", "View", 2.0, tr("&Designs"), ":/designs",
        QKeySequence(QStringLiteral("Ctrl+Shift+D")), tr("Show the page of the designs"),
        [this] { showDesigns(); }, notOpen));
    enter(add(
        "viewNextPane", "View", 3.0, tr("Next p&ane"), "", QKeySequence(Qt::Key_F6),
        tr("Move to the next panel"), [this] { nextPane(1); }));
    enter(add("viewPreviousPane", "View", 3.1, tr("Pre&vious pane"), "",
              QKeySequence(QStringLiteral("Shift+F6")), tr("Move to the panel before"),
              [this] { nextPane(-1); }));

    enter(add(
        "insertParameter", "Insert", 1.0, tr("&Parameter"), ":/parameter", {},
        tr("A number that templates and expressions may use"),
        [this] {
            const auto made = FDispatcher::create("parameter", freeName("parameter"),
                                                  {FExprBase(f_make_shared<FDouble>(0.0))});
            selectAlone(made.value);
            showPanel(QStringLiteral("properties"));
        },
        notOpen));
    enter(add(
        "insertDesign", "Insert", 1.1, tr("&Design"), ":/design", {},
        tr("Other values for parameters"),
        [this] {
            selectAlone(FDispatcher::create("design", freeName("design")).value);
            showDesigns();
        },
        notOpen));

    const auto canRun = [runs] {
        const QString why = notOpen();
        return why.isEmpty() ? runs->whyNot() : why;
    };
    enter(add(
        "runCurrent", "Run", 1.0, tr("&Run"), ":/start", QKeySequence(Qt::Key_F5),
        tr("Run the design that is shown"), [runs] { runs->runCurrent(); }, canRun));
    enter(add(
        "runSelected", "Run", 1.1, tr("Run &selected"), ":/runSelected",
        QKeySequence(QStringLiteral("Ctrl+F5")), tr("Run the selected designs"),
        [runs] { runs->run(selectedDesigns()); },
        [canRun] {
            const QString why = canRun();
            return !why.isEmpty()              ? why
                   : selectedDesigns().empty() ? tr("no design is selected")
                                               : QString();
        }));
    enter(add(
        "runAll", "Run", 1.2, tr("Run &all"), ":/runAll", QKeySequence(QStringLiteral("Shift+F5")),
        tr("Run every design; finished runs of the same inputs stay"), [runs] { runs->runAll(); },
        canRun));
    enter(add(
        "runAllAgain", "Run", 1.25, tr("Run all a&gain"), "", {},
        tr("Run every design, the finished ones too"), [runs] { runs->runAllAgain(); }, canRun));
    enter(add(
        "runFailed", "Run", 1.3, tr("Run &failed"), ":/runFailed", {},
        tr("Run the designs whose last run failed again"), [runs] { runs->runFailed(); },
        [canRun, runs] {
            const QString why = canRun();
            return !why.isEmpty()                  ? why
                   : runs->failedDesigns().empty() ? tr("no run has failed")
                                                   : QString();
        }));
    enter(add(
        "runStop", "Run", 1.4, tr("S&top"), ":/stop", QKeySequence(QStringLiteral("Ctrl+.")),
        tr("End what runs; what waits doesn't start"), [runs] { runs->stop(); },
        [runs] { return runs->isIdle() ? tr("nothing runs") : QString(); }));
    enter(add(
        "runCheck", "Run", 3.0, tr("&Check"), ":/check", QKeySequence(Qt::Key_F8),
        tr("Tell what would go wrong in a run"),
        [this] {
            showPanel(QStringLiteral("problems"));
            mProblems->check();
        },
        notOpen));
    enter(add("helpAbout", "Help", 9.0, tr("&About Turnbuckle"), ":/help", {},
              tr("Version and licence"), [] {
                  FDocuPopup::exec(S(tr("<h3>Turnbuckle %1</h3><p>Couples any command-line "
                                        "simulation program to a parametric model.</p><p>Apache "
                                        "License 2.0</p>")
                                         .arg(QApplication::applicationVersion())));
              }));
    connect(table, &FActions::added, this, &FMainWindow::addToMenu);
}

/// Puts an action of the table into its menu, by its place.
void FMainWindow::addToMenu(const QString &id)
{
    FActions *table = FActions::instance();
    std::map<QString, std::vector<const FActionInfo *>> byMenu;
    for (const FActionInfo &info : table->all())
        byMenu[info.menu].push_back(&info);
    for (const char *name : kMenus) {
        auto &infos = byMenu[QLatin1String(name)];
        if (!id.isEmpty() && std::none_of(infos.begin(), infos.end(),
                                          [&id](const auto *info) { return info->id == id; }))
            continue;
        std::stable_sort(infos.begin(), infos.end(),
                         [](const auto *a, const auto *b) { return a->place < b->place; });
        QMenu *menu = mMenus[QLatin1String(name)];
        menu->clear();
        int section = infos.empty() ? 0 : int(infos.front()->place);
        for (const FActionInfo *info : infos) {
            if (int(info->place) != section)
                menu->addSeparator();
            section = int(info->place);
            menu->addAction(table->action(info->id));
            if (info->id == QLatin1String("fileOpen"))
                menu->addMenu(mMenus[QStringLiteral("recent")]);
        }
    }
    for (const FActionInfo &info : table->all())
        addAction(table->action(info.id)); // so that its shortcut works without a menu, too
}

void FMainWindow::makeMenus()
{
    auto *recent = new QMenu(tr("Open r&ecent"), this);
    recent->setObjectName(QStringLiteral("recentMenu"));
    mMenus[QStringLiteral("recent")] = recent;
    connect(recent, &QMenu::aboutToShow, this, [recent] {
        recent->clear();
        for (const QString &path : FProjectControl::recent())
            connect(recent->addAction(QString(path).replace('&', QLatin1String("&&"))),
                    &QAction::triggered, recent,
                    [path] { FProjectControl::instance()->open(path); });
        if (recent->isEmpty())
            recent->addAction(tr("None yet"))->setEnabled(false);
    });
    for (const char *name : kMenus) {
        QMenu *menu = menuBar()->addMenu('&' + tr(name));
        menu->setObjectName("menu" + QLatin1String(name));
        menu->setToolTipsVisible(true);
        mMenus[QLatin1String(name)] = menu;
        connect(menu, &QMenu::aboutToShow, FActions::instance(), &FActions::refresh);
    }
    addToMenu(QString());
}

void FMainWindow::addToToolBar(const QString &id)
{
    QAction *action = FActions::instance()->action(id);
    if (!action || !mToolBar)
        return;
    auto *button = new QToolButton(mToolBar);
    button->setObjectName(id + "Button");
    button->setDefaultAction(action);
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    mToolBar->insertWidget(mToolGap, button);
}

void FMainWindow::makeToolBar()
{
    FActions *table = FActions::instance();
    auto *bar = addToolBar(tr("Tools"));
    bar->setObjectName(QStringLiteral("toolBar"));
    bar->setMovable(false);
    bar->setIconSize(QSize(20, 20));
    bar->setContextMenuPolicy(Qt::PreventContextMenu);
    const auto add = [&](const char *id) { bar->addAction(table->action(QLatin1String(id))); };
    add("fileNew");
    add("fileOpen");
    add("fileSave");
    bar->addSeparator();
    add("editUndo");
    add("editRedo");
    bar->addSeparator();
    auto *run = new QToolButton(bar);
    run->setObjectName(QStringLiteral("runButton"));
    run->setDefaultAction(table->action(QStringLiteral("runCurrent")));
    run->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    run->setPopupMode(QToolButton::MenuButtonPopup);
    auto *menu = new QMenu(run);
    for (const char *id : {"runCurrent", "runSelected", "runAll", "runFailed"})
        menu->addAction(table->action(QLatin1String(id)));
    run->setMenu(menu);
    bar->addWidget(run);
    add("runStop");
    bar->addSeparator();
    mToolBar = bar;
    addToToolBar(QStringLiteral("runCheck"));
    auto *gap = new QWidget(bar);
    gap->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    mToolGap = bar->addWidget(gap);
    mFinder = new FFinder(this);
    bar->addWidget(mFinder);
    auto *end = new QWidget(bar);
    end->setFixedWidth(FTheme::space(2));
    bar->addWidget(end);
}

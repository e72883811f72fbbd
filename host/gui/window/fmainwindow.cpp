// SPDX-License-Identifier: Apache-2.0
#include "fmainwindow.h"

#include "factions.h"
#include "fchanges.h"
#include "fdesign.h"
#include "fdesignspage.h"
#include "ffinder.h"
#include "fguicontrol.h"
#include "ficons.h"
#include "fini.h"
#include "flogpanel.h"
#include "fmodelpanel.h"
#include "fobjecteditorwgt.h"
#include "foutputpanel.h"
#include "fproblemspanel.h"
#include "fprojectcontrol.h"
#include "fresultfilepage.h"
#include "fruncontrol.h"
#include "fscriptpanel.h"
#include "fsoftconbase.h"
#include "ftheme.h"
#include "fwelcomepage.h"
#include "fwidget.h"

#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QDockWidget>
#include <QFileInfo>
#include <QLabel>
#include <QMimeData>
#include <QProgressBar>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTabBar>
#include <QTabWidget>
#include <QToolButton>

namespace {
const char *const kGeometry = "Desktop/geometry";
const char *const kState = "Desktop/state";
constexpr int kStateVersion = 1;
} // namespace

FMainWindow::FMainWindow(QWidget *parent)
    : QMainWindow(parent)
    , mControl(new FGuiControl(this))
    , mPages(new QStackedWidget(this))
    , mWelcome(new FWelcomePage(this))
    , mDocuments(new QTabWidget(this))
{
    setObjectName(QStringLiteral("mainWindow"));
    FWorkspace::setInstance(this);
    setWindowIcon(FIcons::icon(QStringLiteral(":/app")));
    setAcceptDrops(true);
    setDockNestingEnabled(false);
    setTabPosition(Qt::BottomDockWidgetArea, QTabWidget::North);
    mDocuments->setObjectName(QStringLiteral("documents"));
    mDocuments->setAccessibleName(tr("Documents"));
    mDocuments->setDocumentMode(true);
    mDocuments->setMovable(true);
    mDocuments->setTabsClosable(true);
    mDocuments->tabBar()->setExpanding(false);
    mPages->addWidget(mWelcome);
    mPages->addWidget(mDocuments);
    setCentralWidget(mPages);
    connect(mDocuments, &QTabWidget::tabCloseRequested, this, &FMainWindow::hideDocument);

    makePanels();
    mDesigns = new FDesignsPage(this);
    mDesigns->setObjectName(QStringLiteral("designsPage"));
    mDocuments->addTab(mDesigns, FIcons::icon(QStringLiteral(":/designs")), tr("Designs"));
    connect(mDesigns, &FDesignsPage::placeRequested, this, &FMainWindow::showResultFile);
    connect(mDesigns, &FDesignsPage::outputRequested, this,
            [this](const std::shared_ptr<FExternComputation> &computation,
                   const std::shared_ptr<FDesign> &design) {
                if (!computation || !design)
                    return;
                showPanel(QStringLiteral("output"));
                mOutput->showRun(computation, design);
            });
    makeActions();
    makeMenus();
    makeToolBar();
    makeStatusBar();

    FChanges *feed = FChanges::instance();
    connect(feed, &FChanges::projectChanged, this, &FMainWindow::updateTitle);
    connect(feed, &FChanges::historyChanged, this, &FMainWindow::updateTitle);
    connect(feed, &FChanges::historyChanged, FActions::instance(), &FActions::refreshSoon);
    connect(feed, &FChanges::selectionChanged, FActions::instance(), &FActions::refreshSoon);
    connect(feed, &FChanges::designChanged, this, &FMainWindow::updateDesigns);
    connect(
        feed, &FChanges::changed, this,
        [this](const QVector<FChange> &changes) {
            for (const FChange &change : changes)
                if (dynamic_cast<const FDesign *>(change.object.get()) &&
                    change.what & ~unsigned(FChanges::State)) {
                    updateDesigns();
                    break;
                }
        });
    connect(feed, &FChanges::busyChanged, this, [](bool busy) {
        if (busy)
            QApplication::setOverrideCursor(Qt::WaitCursor);
        else
            QApplication::restoreOverrideCursor();
    });
    FProjectControl *project = FProjectControl::instance();
    connect(project, &FProjectControl::opened, this, &FMainWindow::showPages);
    connect(project, &FProjectControl::closed, this, &FMainWindow::showPages);
    connect(FRunControl::instance(), &FRunControl::changed, this, &FMainWindow::updateRuns);
    restorePlaces();
    showPages();
    updateDesigns();
}

FMainWindow::~FMainWindow()
{
    // Documents and panels ask the window while they go.
    delete mPages;
    mDocuments = nullptr;
    mWidgets.clear();
    FActions::instance()->clear();
    FWorkspace::setInstance(nullptr);
    delete mControl;
}

void FMainWindow::restorePlaces()
{
    const FIni settings;
    const QByteArray geometry = settings.value(QLatin1String(kGeometry)).toByteArray();
    const QByteArray state = settings.value(QLatin1String(kState)).toByteArray();
    if (geometry.isEmpty() || !restoreGeometry(geometry))
        resize(1440, 900);
    if (state.isEmpty() || !restoreState(state, kStateVersion)) {
        resizeDocks({mPanels[QStringLiteral("model")], mPanels[QStringLiteral("properties")]},
                    {236, 270}, Qt::Horizontal);
        resizeDocks({mPanels[QStringLiteral("messages")]}, {160}, Qt::Vertical);
        mPanels[QStringLiteral("messages")]->raise();
    }
}

void FMainWindow::closeEvent(QCloseEvent *event)
{
    FIni settings;
    settings.setValue(QLatin1String(kGeometry), saveGeometry());
    settings.setValue(QLatin1String(kState), saveState(kStateVersion));
    if (!FProjectControl::instance()->close()) {
        event->ignore();
        return;
    }
    event->accept();
}

void FMainWindow::dragEnterEvent(QDragEnterEvent *event)
{
    const QList<QUrl> urls = event->mimeData()->urls();
    const QString path = urls.size() == 1 ? urls.front().toLocalFile() : QString();
    const QString suffix = QFileInfo(path).suffix();
    if (suffix == QLatin1String("tbk") ||
        (mFileHandlers.count(suffix) && FProjectControl::instance()->isOpen()))
        event->acceptProposedAction();
}

void FMainWindow::dropEvent(QDropEvent *event)
{
    const QString path = event->mimeData()->urls().front().toLocalFile();
    const auto handler = mFileHandlers.find(QFileInfo(path).suffix());
    if (handler != mFileHandlers.end())
        handler->second(path);
    else
        FProjectControl::instance()->open(path);
}

QDockWidget *FMainWindow::addPanel(const QString &id, const QString &title, QWidget *content,
                                   Qt::DockWidgetArea area)
{
    auto *panel = new QDockWidget(title, this);
    panel->setObjectName(id + "Panel");
    panel->setAccessibleName(title);
    panel->setWidget(content);
    panel->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetClosable);
    addDockWidget(area, panel);
    mPanels[id] = panel;
    return panel;
}

void FMainWindow::makePanels()
{
    mModel = new FModelPanel(this);
    mProperties = FObjectEditorWgt::instance();
    mLog = new FLogPanel(this);
    mProblems = new FProblemsPanel(this);
    mOutput = new FOutputPanel(this);
    mScript = new FScriptPanel(this);
    setCorner(Qt::BottomLeftCorner, Qt::BottomDockWidgetArea);
    setCorner(Qt::BottomRightCorner, Qt::BottomDockWidgetArea);
    addPanel(QStringLiteral("model"), tr("Model"), mModel, Qt::LeftDockWidgetArea);
    addPanel(QStringLiteral("properties"), tr("Properties"), mProperties, Qt::RightDockWidgetArea);
    QDockWidget *messages =
        addPanel(QStringLiteral("messages"), tr("Messages"), mLog, Qt::BottomDockWidgetArea);
    QDockWidget *before = messages;
    for (QDockWidget *panel :
         {addPanel(QStringLiteral("problems"), tr("Problems"), mProblems, Qt::BottomDockWidgetArea),
          addPanel(QStringLiteral("output"), tr("Output of runs"), mOutput,
                   Qt::BottomDockWidgetArea),
          addPanel(QStringLiteral("script"), tr("Script"), mScript, Qt::BottomDockWidgetArea)}) {
        tabifyDockWidget(before, panel);
        before = panel;
    }
    // The tabs say what the panels at the bottom are called.
    for (const char *id : {"messages", "problems", "output", "script"})
        mPanels[QLatin1String(id)]->setTitleBarWidget(new QWidget(this));
    connect(
        mLog, &FLogPanel::unseenChanged, this,
        [this](int count) {
            setTabTitle(mPanels[QStringLiteral("messages")], tr("Messages"), count);
        });
    connect(mProblems, &FProblemsPanel::countChanged, this, [this](int count) {
        setTabTitle(mPanels[QStringLiteral("problems")], tr("Problems"), count);
    });
}

void FMainWindow::setTabTitle(QDockWidget *panel, const QString &title, int count)
{
    panel->setWindowTitle(count > 0 ? QStringLiteral("%1 (%2)").arg(title).arg(count) : title);
}

void FMainWindow::showPanel(const QString &id)
{
    if (QDockWidget *panel = mPanels.value(id)) {
        panel->show();
        panel->raise();
        if (id == QLatin1String("script"))
            mScript->setFocus();
    }
}

void FMainWindow::showDesigns() { mDocuments->setCurrentWidget(mDesigns); }

void FMainWindow::showPages()
{
    const bool open = FProjectControl::instance()->isOpen();
    mPages->setCurrentWidget(open ? static_cast<QWidget *>(mDocuments) : mWelcome);
    for (QDockWidget *panel : qAsConst(mPanels))
        panel->widget()->setEnabled(open || panel == mPanels[QStringLiteral("messages")]);
    for (QWidget *widget : {static_cast<QWidget *>(mDesign), static_cast<QWidget *>(mDesignLabel)})
        if (widget)
            widget->setVisible(open);
    mModel->setProjectOpen(open);
    if (!open) {
        mWelcome->refresh();
        for (int i = mDocuments->count() - 1; i >= 0; --i)
            if (qobject_cast<FResultFilePage *>(mDocuments->widget(i)))
                hideDocument(i);
    }
    updateTitle();
    updateRuns();
    FActions::instance()->refreshSoon();
}

void FMainWindow::updateTitle()
{
    const FProjectControl *project = FProjectControl::instance();
    setWindowTitle(project->isOpen() ? project->name() + "[*] \u2014 Turnbuckle"
                                     : QStringLiteral("Turnbuckle"));
    setWindowModified(project->isModified());
}

// Documents

void FMainWindow::addDocument(FWidget *document)
{
    QWidget *widget = document->widget();
    if (!widget || !mDocuments)
        return;
    if (mDocuments->indexOf(widget) < 0) {
        // Before the page of the designs, in the order in which they come.
        const int place = mDocuments->indexOf(mDesigns);
        mDocuments->insertTab(place < 0 ? mDocuments->count() : place, widget, document->icon(),
                              document->title());
        mWidgets[document] = widget;
    }
    mDocuments->setCurrentWidget(widget);
}

void FMainWindow::removeDocument(FWidget *document)
{
    QWidget *widget = mWidgets.take(document);
    if (!widget || !mDocuments)
        return;
    const int index = mDocuments->indexOf(widget);
    if (index >= 0)
        mDocuments->removeTab(index);
}

void FMainWindow::showDocument(FWidget *document, bool visible)
{
    if (visible) {
        addDocument(document);
    } else if (mDocuments) {
        const int index = mDocuments->indexOf(document->widget());
        if (index >= 0)
            mDocuments->removeTab(index);
    }
}

void FMainWindow::documentChanged(FWidget *document)
{
    const int index = mDocuments ? mDocuments->indexOf(document->widget()) : -1;
    if (index < 0)
        return;
    // A name may hold what a tab would take for a mnemonic.
    mDocuments->setTabText(index, QString(document->title()).replace('&', QLatin1String("&&")));
    mDocuments->setTabIcon(index, document->icon());
}

void FMainWindow::hideDocument(int index)
{
    QWidget *widget = mDocuments->widget(index);
    for (auto it = mWidgets.constBegin(); it != mWidgets.constEnd(); ++it)
        if (it.value() == widget) {
            it.key()->setVisible(false);
            return;
        }
    if (widget != mDesigns) {
        mDocuments->removeTab(index);
        widget->deleteLater();
    }
}

void FMainWindow::showResultFile(const QString &path, int line, int column, int length)
{
    FResultFilePage *page = nullptr;
    for (int i = 0; i < mDocuments->count(); ++i) {
        auto *one = qobject_cast<FResultFilePage *>(mDocuments->widget(i));
        if (one && one->path() == path)
            page = one;
    }
    if (!page) {
        page = new FResultFilePage(this);
        const QString name = QFileInfo(path).fileName();
        mDocuments->addTab(page, FIcons::icon(QStringLiteral(":/results")),
                           QString(name).replace('&', QLatin1String("&&")));
        mDocuments->setTabToolTip(mDocuments->indexOf(page), path);
    }
    page->show(path, line, column, length);
    mDocuments->setCurrentWidget(page);
    page->setFocus();
}

// Runs

void FMainWindow::makeStatusBar()
{
    mRunText = new QLabel(this);
    mRunText->setObjectName(QStringLiteral("runStatus"));
    mProgress = new QProgressBar(this);
    mProgress->setObjectName(QStringLiteral("runProgress"));
    mProgress->setAccessibleName(tr("Progress of the runs"));
    mProgress->setTextVisible(false);
    mProgress->setRange(0, 1000);
    mProgress->setFixedSize(160, 8);
    mStop = new QToolButton(this);
    mStop->setObjectName(QStringLiteral("stopRuns"));
    mStop->setDefaultAction(FActions::instance()->action(QStringLiteral("runStop")));
    mStop->setToolButtonStyle(Qt::ToolButtonTextOnly);
    mStop->setAutoRaise(true);
    auto *label = mDesignLabel = new QLabel(tr("&Design:"), this);
    mDesign = new QComboBox(this);
    mDesign->setObjectName(QStringLiteral("chosenDesign"));
    mDesign->setAccessibleName(tr("Design that is shown"));
    mDesign->setToolTip(tr("The design whose values are shown everywhere"));
    mDesign->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    label->setBuddy(mDesign);
    connect(mDesign, qOverload<int>(&QComboBox::activated), this, [](int index) {
        const auto designs = FDesign::all();
        if (index >= 0 && size_t(index) < designs.size())
            FDesign::setCurrent(designs[size_t(index)]);
    });
    statusBar()->setSizeGripEnabled(false);
    statusBar()->addWidget(mRunText);
    statusBar()->addWidget(mProgress);
    statusBar()->addWidget(mStop);
    statusBar()->addPermanentWidget(label);
    statusBar()->addPermanentWidget(mDesign);
}

void FMainWindow::updateRuns()
{
    if (!mRunText)
        return;
    const FRunControl *runs = FRunControl::instance();
    const bool open = FProjectControl::instance()->isOpen();
    const QString text = open ? runs->status() : QString();
    mRunText->setText(text.isEmpty() ? tr("Ready") : text);
    mProgress->setVisible(!runs->isIdle());
    mStop->setVisible(!runs->isIdle());
    mProgress->setValue(int(runs->progress() * 1000));
    FActions::instance()->refreshSoon();
}

void FMainWindow::updateDesigns()
{
    const auto designs = FDesign::all();
    QStringList names;
    int chosen = 0;
    for (size_t i = 0; i < designs.size(); ++i) {
        names << Q(designs[i]->getName());
        if (designs[i] == FDesign::chosen())
            chosen = int(i);
    }
    QStringList shown;
    for (int i = 0; i < mDesign->count(); ++i)
        shown << mDesign->itemText(i);
    if (shown != names) {
        mDesign->clear();
        mDesign->addItems(names);
    }
    mDesign->setCurrentIndex(chosen);
}

/// F6: from pane to pane, in the order in which they are read.
void FMainWindow::nextPane(int step)
{
    QVector<QWidget *> panes;
    const auto add = [&panes](QWidget *pane) {
        if (pane && pane->isVisible() && !pane->visibleRegion().isEmpty())
            panes << pane;
    };
    add(mModel);
    add(mPages->currentWidget());
    add(mProperties);
    for (const char *id : {"messages", "problems", "output", "script"})
        add(mPanels[QLatin1String(id)]->widget());
    int now = -1;
    for (int i = 0; i < panes.size(); ++i)
        if (panes[i] == QApplication::focusWidget() ||
            panes[i]->isAncestorOf(QApplication::focusWidget()))
            now = i;
    if (panes.isEmpty())
        return;
    QWidget *pane = panes[(now + step + panes.size()) % panes.size()];
    QWidget *target = pane->focusProxy() ? pane->focusProxy() : pane;
    if (!target->focusPolicy() || target == pane)
        for (QWidget *child : pane->findChildren<QWidget *>())
            if (child->focusPolicy() & Qt::TabFocus && child->isVisibleTo(this) &&
                child->isEnabled() && !qobject_cast<QTabBar *>(child)) {
                target = child;
                break;
            }
    target->setFocus(Qt::TabFocusReason);
}

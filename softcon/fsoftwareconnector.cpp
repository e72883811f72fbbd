// SPDX-License-Identifier: Apache-2.0
#include "fsoftwareconnector.h"

#include "fchangeset.h"
#include "fdialog.h"
#include "fentry.h"
#include "fgenintcommandfile.h"
#include "fgenintcommandfileeditor.h"
#include "fgenintresultsfile.h"
#include "fgenintresultsfileeditor.h"
#include "fhistory.h"
#include "ficons.h"
#include "fini.h"
#include "fmarloctrl.h"
#include "fselectionset.h"
#include "fsoftconobjectitem.h"
#include "fsoftconscene.h"
#include "fsoftcontabbar.h"
#include "fsoftconview.h"
#include "fviewctrl.h"

#include <QScrollArea>
#include <ctime>

F_CLASS_IMPL(FSoftwareConnector)

QString FSoftwareConnector::smInputAreaLabel = QStringLiteral("Input Files");
QString FSoftwareConnector::smOutputAreaLabel = QStringLiteral("Result Values");
QString FSoftwareConnector::smExportAreaLabel = QStringLiteral("Input Geometry");
QString FSoftwareConnector::smImportAreaLabel = QStringLiteral("Result Files");
QString FSoftwareConnector::smIconSize_Largest = QStringLiteral("Large");
QString FSoftwareConnector::smIconSize_Medium = QStringLiteral("Medium");
QString FSoftwareConnector::smIconSize_Smallest = QStringLiteral("Small");

namespace {
const char *const kLastItemSize = "SoftwareConnector/lastItemSize";

/// True while saved commands, undo or redo supply what a new connector would make.
bool isRestoring()
{
    return FMarloCtrl::instance()->isLoadingProject() || FHistory::instance()->isBusy();
}
} // namespace

FSoftwareConnector::FSoftwareConnector(const std::string &name, QWidget *parent,
                                       const FExpr<FExternComputation> &computation)
    : FSoftConBase(name, parent)
    , mComputation(computation)
{
}

FSoftwareConnector::~FSoftwareConnector() = default;

std::shared_ptr<FSoftwareConnector>
FSoftwareConnector::create(const std::string &name, const FExpr<FExternComputation> &computation)
{
    auto connector =
        f_make_shared<FSoftwareConnector>(name, static_cast<QWidget *>(nullptr), computation);
    connector->registerObject();
    connector->init(connector);
    return connector;
}

std::shared_ptr<FSoftwareConnector> FSoftwareConnector::of(const FObject *computation)
{
    for (const auto &one : getManageds<FSoftwareConnector>()) {
        auto connector = one.getPtr();
        if (connector && connector->mComputation.getExpr().get() == computation)
            return connector;
    }
    return nullptr;
}

void FSoftwareConnector::init(const std::shared_ptr<FSoftwareConnector> &source)
{
    FManaged::init(source);
}

void FSoftwareConnector::constructFObject()
{
    FSoftConBase::constructFObject();
    if (FObject::mInitPrototype) {
        setSystemFlag(1);
        return;
    }
    setIcon(FIcons::icon(QStringLiteral(":/connector")));
    if (tabWidget())
        tabWidget()->setMinimumSize(10, 10);
    init();
    mComputation.registerClient(shared_from_this(), true);
    mDefinition.registerClient(shared_from_this(), true);
    setAsCentralWidget();
    setImediateUpdate(true, false);
    setVisible(true);
    setOutOfDate(0);
}

void FSoftwareConnector::connectScene(FSoftConScene *scene)
{
    connect(scene, &FSoftConScene::addViewerTab, this, &FSoftwareConnector::addNewTab);
    connect(scene, &FSoftConScene::removeViewerTab, this, &FSoftwareConnector::removeOldTab);
    connect(scene, &FSoftConScene::gotoViewerTab, this, &FSoftwareConnector::gotoTab);
}

void FSoftwareConnector::init()
{
    if (FTabWidget *tabs = tabWidget()) {
        tabs->setObjectName(QStringLiteral("softCon"));
        tabs->setAccessibleName(tr("Workbench"));
        auto *bar = new FSoftConTabBar(tabs);
        bar->setObjectName(QStringLiteral("softConTabBar"));
        tabs->setTabBar(bar);
        tabs->setTabsClosable(true);
        bar->setExpanding(false);
        connect(tabs, &QTabWidget::tabCloseRequested, this, &FSoftwareConnector::closeTab);
        mOverviewView = new FSoftConView(tabs);
        mOverviewView->setObjectName(QStringLiteral("softConOverview"));
        mOverviewView->setAccessibleName(tr("Overview"));
        auto *scene = new FSoftConScene(
            this, FExpr<FSoftwareConnector>(shared_from_base<FSoftwareConnector>()));
        mOverviewView->setScene(scene);
        connectScene(scene);
        tabs->addTab(mOverviewView, FIcons::icon(QStringLiteral(":/softConOverview")),
                     QStringLiteral("Overview"));
        if (QWidget *button = bar->tabButton(0, QTabBar::RightSide))
            button->hide();
        tabs->currentWidget()->setAcceptDrops(true);
        watch(mOverviewView);
        watch(mOverviewView->viewport());
        connect(bar, &QTabBar::currentChanged, this, &FSoftwareConnector::gotFocus);
        connect(bar, &FSoftConTabBar::clicked, this, &FSoftwareConnector::gotFocus);
    }
    const QVariant last = FIni().value(QLatin1String(kLastItemSize));
    setItemSize(last.isValid() && !isRestoring() ? SoftConItemSize(last.toUInt()) : mItemSize);
    if (isRestoring()) {
        if (mComputation && scene())
            setComputation(mComputation, true);
        return; // the saved commands supply the rest
    }
    if (mComputation)
        setComputation(mComputation, false);
    else
        setComputation(FGenIntComputation::create("Connector1"), false);
    const auto computation = mComputation.getPtr();
    setTitles(computation ? computation->getName() : std::string());
    if (scene())
        scene()->setNeedsRedraw();
    if (!computation)
        return;
    FSelectionSet::instance()->clear(false);
    FSelectionSet::instance()->add(mComputation);
    FObjectTree::instance()->highlight({FExpr<FObject, true>(computation)});
}

void FSoftwareConnector::initScene()
{
    if (!mOverviewView)
        return;
    if (FSoftConScene *old = scene()) {
        disconnect(old, nullptr, this, nullptr);
        old->deleteLater();
    }
    auto *scene =
        new FSoftConScene(this, FExpr<FSoftwareConnector>(shared_from_base<FSoftwareConnector>()));
    mOverviewView->setScene(scene);
    connectScene(scene);
    const QVariant last = FIni().value(QLatin1String(kLastItemSize));
    setItemSize(last.isValid() ? SoftConItemSize(last.toUInt()) : mItemSize);
    setComputation(mComputation, true);
    scene->setNeedsRedraw();
}

FSoftConScene *FSoftwareConnector::scene() const
{
    return mOverviewView ? qobject_cast<FSoftConScene *>(mOverviewView->scene()) : nullptr;
}

FSoftConView *FSoftwareConnector::overviewView() const { return mOverviewView; }

std::shared_ptr<FGenIntComputation> FSoftwareConnector::genIntComputation() const
{
    return mComputation.ptr<FGenIntComputation>();
}

void FSoftwareConnector::setComputation(const FExpr<FExternComputation> &computation, bool force)
{
    if (!force)
        for (const auto &one : getManageds<FSoftwareConnector>())
            if (const auto connector = one.getPtr())
                if (connector->containsComputation(computation))
                    return;
    if (const auto old = genIntComputation())
        if (old->getSignalRapper())
            disconnect(old->getSignalRapper(), nullptr, this, nullptr);
    mComputation = computation;
    if (const auto now = genIntComputation())
        if (const auto *relay = now->getSignalRapper()) {
            connect(relay, &FGenIntCompSignalRapper::genIntCompDestroyed, this,
                    &FSoftwareConnector::computationDestroyed);
            connect(relay, &FGenIntCompSignalRapper::genIntRunStarted, this,
                    &FSoftwareConnector::prepareToScanForResults);
            connect(relay, &FGenIntCompSignalRapper::genIntRunEnded, this,
                    &FSoftwareConnector::scanForResults);
        }
    mComputationDestroyed = false;
    if (scene())
        scene()->setComputation(mComputation);
    const auto now = genIntComputation();
    if (!now || isRestoring())
        return;
    if (!now->getConfiguration())
        initNewConfiguration();
    setTitles(now->getName());
    setOutOfDate(0);
}

bool FSoftwareConnector::containsComputation(const FExpr<FExternComputation> &computation) const
{
    return computation.getExpr() && computation.getExpr() == mComputation.getExpr();
}

FExpr<FConfigurationGenInt> FSoftwareConnector::initNewConfiguration() const
{
    const auto computation = genIntComputation();
    const std::string base = mComputation ? mComputation->getName() : "connector1";
    const auto definition =
        FDefinitionGenInt::create(FExpr<FScope>(), base + "_definition", FExpr<FParser>());
    const auto configuration =
        FConfigurationGenInt::create(FExpr<FScope>(), base + "_configuration", true, definition);
    if (computation)
        computation->setConfiguration(FExpr<FConfigurationCustom>(configuration));
    return FExpr<FConfigurationGenInt>(configuration);
}

void FSoftwareConnector::doUpdate() const
{
    const auto computation = genIntComputation();
    if (!computation || !mOverviewView) {
        FManaged::doUpdate();
        return;
    }
    const FResultsOutOfDateBlocker results;
    auto configuration = computation->getConfiguration().ptr<FConfigurationGenInt>();
    if (!configuration && !isRestoring()) {
        const FHistoryBlocker noStep; // the user did nothing
        configuration = initNewConfiguration().getPtr();
    }
    if (configuration) {
        const auto definition = configuration->getDefinition().ptr<FDefinitionGenInt>();
        if (mDefinition.getExpr() != definition)
            mDefinition = FExpr<FDefinitionGenInt>(definition);
    }
    if (scene())
        scene()->doUpdate();
    FManaged::doUpdate();
}

bool FSoftwareConnector::isSaved() const { return bool(mComputation); }

void FSoftwareConnector::setItemSize(SoftConItemSize size)
{
    mItemSize = size;
    if (FSoftConScene *now = scene()) {
        now->setItemSize(size);
        now->calcItemRatios();
        now->doUpdate();
    }
}

void FSoftwareConnector::setItemSizeStr(const QString &text)
{
    SoftConItemSize size;
    if (text == smIconSize_Largest)
        size = SoftConItemSize::Large;
    else if (text == smIconSize_Medium)
        size = SoftConItemSize::Medium;
    else if (text == smIconSize_Smallest)
        size = SoftConItemSize::Small;
    else
        return;
    if (size != mItemSize) {
        FHistoryTransaction step(nullptr, F_TEXT("item size"), true);
        setItemSize(size);
        step.addStep(shared_from_this());
    }
    FIni().setValue(QLatin1String(kLastItemSize), unsigned(size));
    paintRequest();
}

QString FSoftwareConnector::getItemSizeStr() const
{
    return mItemSize == SoftConItemSize::Medium  ? smIconSize_Medium
           : mItemSize == SoftConItemSize::Small ? smIconSize_Smallest
                                                 : smIconSize_Largest;
}

void FSoftwareConnector::setResultsPath(const std::string &path) { mResultsPath = path; }

void FSoftwareConnector::visitState(FStateVisitor &state)
{
    FSoftConBase::visitState(state);
    state(mComputation)(mItemSize)(mResultsPath);
}

void FSoftwareConnector::stateRestored()
{
    FSoftConBase::stateRestored();
    setComputation(mComputation, true);
    setItemSize(mItemSize);
    setOutOfDate(0);
}

void FSoftwareConnector::updateInputFileItems()
{
    if (!scene())
        return;
    scene()->updateInputFileItems();
    scene()->calcItemRatios();
    scene()->redraw();
}

void FSoftwareConnector::setIconSize(const QSize &size)
{
    FSoftConBase::setIconSize(size);
    setOutOfDate(0);
}

void FSoftwareConnector::paintRequest()
{
    if (scene())
        scene()->redraw();
}

void FSoftwareConnector::resizeRequest()
{
    if (scene())
        scene()->setNeedsRedraw();
}

void FSoftwareConnector::setTitles(const std::string &)
{
    const auto computation = mComputation.getPtr();
    FSoftConBase::setTitles(computation ? computation->getName() : getName());
}

void FSoftwareConnector::select() const
{
    if (mComputation)
        FSelectionSet::instance()->add(mComputation);
    else
        FSoftConBase::select();
}

void FSoftwareConnector::settings()
{
    if (!mComputation)
        return;
    auto list = f_make_shared<FObjectList>();
    list->setAsSelectionSet(true);
    list->append(mComputation);
    FDialog dialog(getName() + " Settings", icon(), true, true, true, false, true, false);
    dialog.setObjectName(QStringLiteral("softConSettings"));
    QWidget *editor = FViewCtrl::instance()->makeObjectEditor(list->getObjects());
    if (!editor)
        return;
    auto *area = new QScrollArea(&dialog);
    area->setFrameShape(QFrame::NoFrame);
    auto *content = new QWidget(area);
    content->setObjectName(QStringLiteral("ObjectEditor"));
    auto *layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(editor);
    area->setWidget(content);
    area->setWidgetResizable(true);
    dialog.setContent(area);
    dialog.exec();
}

void FSoftwareConnector::computationDestroyed()
{
    mComputationDestroyed = true;
    if (const auto computation = genIntComputation())
        if (computation->getSignalRapper())
            disconnect(computation->getSignalRapper(),
                       &FGenIntCompSignalRapper::genIntCompDestroyed, this,
                       &FSoftwareConnector::computationDestroyed);
    FManaged::destroy(shared_from_base<FManaged>(), true);
}

void FSoftwareConnector::destructFObject()
{
    const auto computation = genIntComputation();
    if (computation && !mComputationDestroyed)
        FManaged::destroy(std::static_pointer_cast<FManaged>(computation), true);
    FSoftConBase::destructFObject();
}

/// The scene refers back to its connector.
void FSoftwareConnector::dropScene()
{
    if (FSoftConScene *old = scene()) {
        old->setParent(nullptr); // it may be the last to hold the connector
        old->deleteLater();
    }
    mOverviewView = nullptr;
}

void FSoftwareConnector::retire()
{
    dropScene();
    FSoftConBase::retire();
}

void FSoftwareConnector::projectClosed()
{
    dropScene();
    FSoftConBase::projectClosed();
}

void FSoftwareConnector::disableGui(bool disable)
{
    FSoftConScene *now = scene();
    if (!now)
        return;
    for (QGraphicsItem *item : now->items())
        item->setEnabled(!disable);
    for (int i = 0; tabWidget() && i < tabWidget()->count(); ++i)
        if (tabWidget()->widget(i) != mOverviewView)
            tabWidget()->widget(i)->setEnabled(!disable);
}

void FSoftwareConnector::disableGui(bool flag, int dbId)
{
    const auto creator = FHistory::instance()->getCreatorByDbId(dbId);
    const auto *command = creator ? creator->isFCmd() : nullptr;
    if (const auto computation = command ? command->result().ptr<FGenIntComputation>() : nullptr)
        computation->enableSoftCons(flag);
}

void FSoftwareConnector::prepareToScanForResults()
{
    // Time stamps of files come from a clock that lags behind by a tick; what a fast program writes
    // would else look older than its start.
    struct timespec now = {};
    ::clock_gettime(CLOCK_REALTIME_COARSE, &now);
    mScanStartTime =
        QDateTime::fromMSecsSinceEpoch(qint64(now.tv_sec) * 1000 + now.tv_nsec / 1000000 - 1);
}

void FSoftwareConnector::scanForResults(bool run)
{
    if (run && scene())
        scene()->scanForResults(mScanStartTime);
}

// SPDX-License-Identifier: Apache-2.0
// The furniture of the scene, its geometry, menus and keys.
#include "fsoftconscene.h"

#include "fchanges.h"
#include "fdocupopup.h"
#include "fgenintcomputation.h"
#include "fhistory.h"
#include "ficons.h"
#include "fmarloctrl.h"
#include "fobjectmanager.h"
#include "fselectionset.h"
#include "fsoftconcomputationitem.h"
#include "fsoftconlayoutgrids.h"
#include "fsoftconlayoutlist.h"
#include "fsoftcontemplateitems.h"
#include "fsoftwareconnector.h"
#include "ftheme.h"
#include "ftoolbutton.h"

#include <QActionGroup>
#include <QFontMetrics>
#include <QGraphicsProxyWidget>
#include <QGraphicsSceneContextMenuEvent>
#include <QGraphicsView>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QRegularExpression>
#include <QScrollBar>
#include <QSignalMapper>
#include <QTimer>

namespace {
constexpr double kListGap = 10.0;
constexpr int kTitleHeight = 30;
constexpr int kScrollBarWithoutPage = 30;

QString addWords(SoftConArea area) { return "Add " + FSoftConScene::areaLabel(area); }
} // namespace

QString FSoftConScene::areaLabel(SoftConArea area)
{
    switch (area) {
    case SoftConInput:
        return FSoftwareConnector::smInputAreaLabel;
    case SoftConExport:
        return FSoftwareConnector::smExportAreaLabel;
    case SoftConOutput:
        return FSoftwareConnector::smOutputAreaLabel;
    case SoftConImport:
        return FSoftwareConnector::smImportAreaLabel;
    default:
        return QString();
    }
}

FSoftConScene::FSoftConScene(QObject *parent, const FExpr<FSoftwareConnector> &connector)
    : QGraphicsScene(parent)
    , mConnector(connector)
    , mLayout(std::make_shared<FSoftConMediumGridLayout>())
{
    FSoftConScene::init();
    if (const auto own = getConnector())
        if (own->tabWidget())
            connect(own->tabWidget(), &QTabWidget::currentChanged, this,
                    &FSoftConScene::updateItems);
}

FSoftConScene::~FSoftConScene()
{
    // Items tell the scene of their end while it is still a scene.
    clear();
}

std::shared_ptr<FSoftwareConnector> FSoftConScene::getConnector() const
{
    // Not by evaluation: the connector asks for its scene while it is made and while it goes.
    return std::static_pointer_cast<FSoftwareConnector>(mConnector.getExpr());
}

std::shared_ptr<FGenIntComputation> FSoftConScene::genIntComputation() const
{
    return mComputation.ptr<FGenIntComputation>();
}

QGraphicsProxyWidget *FSoftConScene::addFurniture(QWidget *widget)
{
    widget->setAttribute(Qt::WA_TranslucentBackground, !qobject_cast<QFrame *>(widget));
    return addWidget(widget);
}

void FSoftConScene::init()
{
    const auto frame = [this](const char *name) {
        auto *widget = new QFrame;
        widget->setObjectName(QLatin1String(name));
        return addFurniture(widget);
    };
    mInputArea = frame("inputArea");
    mResultArea = frame("resultArea");
    for (QGraphicsProxyWidget **bar : {&mTopTitleBar, &mLeftTitleBar, &mRightTitleBar}) {
        auto *outer = new QWidget;
        outer->setObjectName(QStringLiteral("titleBar_wgt"));
        outer->setGeometry(QRect(0, 0, 0, kTitleHeight));
        auto *layout = new QHBoxLayout(outer);
        layout->setContentsMargins(0, 0, 0, 0);
        auto *inner = new QFrame(outer);
        inner->setObjectName(QStringLiteral("titleBar"));
        layout->addWidget(inner);
        *bar = addFurniture(outer);
    }
    mSplitLine = frame("verticalSplitLine");

    const auto button = [](const char *name, const char *icon, const QString &tip,
                           const QString &accessible) {
        auto *widget = new FToolButton(nullptr);
        widget->setObjectName(QLatin1String(name));
        widget->setAutoRaise(true);
        widget->setIcon(FIcons::icon(QLatin1String(icon)));
        widget->setToolTip(tip);
        widget->setAccessibleName(accessible);
        return widget;
    };
    struct Add
    {
        QGraphicsProxyWidget **proxy;
        const char *name;
        SoftConArea area;
        void (FSoftConScene::*slot)();
    };
    for (const Add &add :
         {Add{&mAddInputButton, "addButtonRight", SoftConInput, &FSoftConScene::addInput},
          {&mAddOutputButton, "addButtonRight", SoftConOutput, &FSoftConScene::addOutput},
          {&mAddExportButton, "addButtonLeft", SoftConExport, &FSoftConScene::addExport},
          {&mAddImportButton, "addButtonLeft", SoftConImport, &FSoftConScene::addImport}}) {
        FToolButton *widget = button(add.name, ":/add", addWords(add.area), addWords(add.area));
        connect(widget, &QToolButton::clicked, this, add.slot);
        *add.proxy = addFurniture(widget);
    }
    FToolButton *scan = button(
        "softConButton", ":/scanForResults",
        QStringLiteral("Automatic scan for results in computation directory. (If you have set up "
                       "the computation already just let it run. All new result files except pure "
                       "text files will be added automatically.)"),
        tr("Scan for results"));
    scan->setCheckable(true);
    connect(scan, &QToolButton::clicked, this, [this](bool checked) {
        if (const auto connector = getConnector())
            connector->scanForResults(checked);
    });
    mScanButton = addFurniture(scan);
    FToolButton *link =
        button("softConButton", ":/softConIcon",
               QStringLiteral(
                   "Connects this Software Connector to the result of another Software Connector."),
               tr("Connect"));
    connect(link, &QToolButton::clicked, this, [this] {
        if (const auto connector = getConnector())
            connector->connectOtherConnector();
    });
    mConnectButton = addFurniture(link);
    auto *tips =
        new QSignalMapper(getConnector() ? static_cast<QObject *>(getConnector().get()) : this);
    for (const auto &[proxy, area] : {std::pair{&mInputTipButton, SoftConInput},
                                      {&mOutputTipButton, SoftConOutput},
                                      {&mExportTipButton, SoftConExport},
                                      {&mImportTipButton, SoftConImport}}) {
        FToolButton *widget =
            button("softConButton", ":/quickTip", tr("What belongs to %1").arg(areaLabel(area)),
                   tr("Help: %1").arg(areaLabel(area)));
        tips->setMapping(widget, areaLabel(area));
        connect(widget, &QToolButton::clicked, tips, qOverload<>(&QSignalMapper::map));
        *proxy = addFurniture(widget);
    }
    connect(tips, qOverload<const QString &>(&QSignalMapper::mappedString), this,
            &FSoftConScene::showDocu);
    for (const auto &[proxy, area] : {std::pair{&mInputLabel, SoftConInput},
                                      {&mExportLabel, SoftConExport},
                                      {&mOutputLabel, SoftConOutput},
                                      {&mImportLabel, SoftConImport}}) {
        auto *label = new QLabel(areaLabel(area));
        label->setObjectName(QStringLiteral("headerLabel"));
        label->setAttribute(Qt::WA_TransparentForMouseEvents);
        *proxy = addFurniture(label);
    }
    auto *timer = new QTimer(this);
    timer->setSingleShot(true);
    connect(FTheme::instance(), &FTheme::changed, this, [this] {
        for (FSoftwareConnectorItem *item : mItems) {
            if (auto *page = dynamic_cast<FSoftConTemplateItem *>(item))
                page->setIconNeedsRedraw();
            if (auto *one = dynamic_cast<FSoftConObjectItem *>(item))
                one->updateIcon();
        }
        update();
    });
}

void FSoftConScene::setComputation(const FExpr<FExternComputation> &computation)
{
    mComputation = computation;
    connect(FChanges::instance(), &FChanges::nameChanged, this,
            &FSoftConScene::computationNameChanged, Qt::UniqueConnection);
}

void FSoftConScene::setComputationItemSize(const QSizeF &size)
{
    mComputationItemSize = size;
    const QSizeF grown = size + QSizeF(100.0, 100.0);
    mComputationItemRect = QRectF(QPointF(-0.5 * grown.width(), -0.5 * grown.height()), grown);
}

void FSoftConScene::setItemSize(SoftConItemSize size)
{
    std::shared_ptr<FSoftConLayout> layout;
    switch (size) {
    case SoftConItemSize::Medium:
        if (!std::dynamic_pointer_cast<FSoftConMediumGridLayout>(mLayout))
            layout = std::make_shared<FSoftConMediumGridLayout>();
        break;
    case SoftConItemSize::Small:
        if (!std::dynamic_pointer_cast<FSoftConListLayout>(mLayout))
            layout = std::make_shared<FSoftConListLayout>(kListGap);
        break;
    case SoftConItemSize::Large:
        if (!std::dynamic_pointer_cast<FSoftConLargeGridLayout>(mLayout))
            layout = std::make_shared<FSoftConLargeGridLayout>();
        break;
    }
    if (!layout)
        return;
    mLayout = layout;
    for (QGraphicsItem *item : items()) {
        auto *one = dynamic_cast<FSoftConObjectItem *>(item);
        if (!one)
            continue;
        if (auto *page = dynamic_cast<FSoftConTemplateItem *>(one))
            page->setIconNeedsRedraw();
        one->updateIcon();
        if (one->getArea() == SoftConComputation)
            mLayout->setComputationPos(one);
    }
}

void FSoftConScene::calcItemRatios() const
{
    mLayout->calcItemRatios(items());
    mNeedsRedraw = true;
}

void FSoftConScene::redraw() const
{
    if (!mNeedsRedraw)
        return;
    if (FMarloCtrl::instance()->isLoadingProject()) {
        mNeedsRedraw = true;
        return;
    }
    mNeedsRedraw = false;
    const auto connector = getConnector();
    if (!connector || !connector->widget())
        return;
    QWidget *page = connector->tabWidget() ? connector->tabWidget()->widget(0) : nullptr;
    QRect view = page ? page->rect() : connector->widget()->rect();
    double scrollExtent = kScrollBarWithoutPage;
    if (page)
        scrollExtent = QScrollBar(Qt::Horizontal, page).sizeHint().height();
    // A view that is too low has a vertical scroll bar: that must not make it too narrow, too.
    if (page && view.height() < 2 * mLayout->getMinHeight())
        view.setWidth(view.width() - int(scrollExtent));
    const QSize button = mAddInputButton->size().toSize();
    const int titleHeight = int(qMax(mTopTitleBar->geometry().height(), double(button.height())));
    QRectF sceneRect = this->sceneRect(), ground;
    mLayout->redraw(view, scrollExtent, titleHeight, 0, 0, sceneRect, ground);
    const double right = ground.x() + ground.width(), bottom = ground.y() + ground.height();
    mAreas[SoftConExport] = QRectF(ground.x(), ground.y(), -ground.x(), -ground.y());
    mAreas[SoftConInput] = QRectF(0, ground.y(), right, -ground.y());
    mAreas[SoftConImport] = QRectF(ground.x(), 0, -ground.x(), bottom);
    mAreas[SoftConOutput] = QRectF(0, 0, right, bottom);
    placeFurniture(ground, titleHeight, button);
    const_cast<FSoftConScene *>(this)->setSceneRect(sceneRect);
    const_cast<FSoftConScene *>(this)->update();
}

void FSoftConScene::placeFurniture(const QRectF &ground, double titleHeight,
                                   const QSize &button) const
{
    const double left = ground.x(), top = ground.y();
    const double right = left + ground.width(), bottom = top + ground.height();
    const double half = 0.5 * mComputationItemSize.width();
    mSplitLine->setGeometry(QRectF(0, top, 1.0, ground.height()));
    mInputArea->setGeometry(QRectF(left, top, ground.width(), -top));
    mResultArea->setGeometry(QRectF(left, 0, ground.width(), bottom));
    mTopTitleBar->setGeometry(QRectF(left, top, ground.width(), titleHeight));
    mLeftTitleBar->setGeometry(QRectF(left, 0, -(half + left), titleHeight));
    mRightTitleBar->setGeometry(QRectF(half, 0, right - half, titleHeight));

    const double width = button.width();
    const double margin = 0.5 * (mTopTitleBar->size().height() - button.height());
    const auto beside = [](const QGraphicsProxyWidget *item, double dx) {
        return item->pos() + QPointF(dx, 0);
    };
    mAddInputButton->setPos(right - (width + margin), top + margin);
    mConnectButton->setPos(beside(mAddInputButton, -width - margin));
    mAddExportButton->setPos(left + margin, top + margin);
    mAddOutputButton->setPos(right - (width + margin), margin);
    mAddImportButton->setPos(left + margin, margin);
    mScanButton->setPos(beside(mAddImportButton, width + margin));
    mExportTipButton->setPos(beside(mAddExportButton, width + margin));
    mInputTipButton->setPos(beside(mConnectButton, -width - margin));
    mImportTipButton->setPos(beside(mScanButton, width + margin));
    mOutputTipButton->setPos(beside(mAddOutputButton, -width - margin));

    const auto *label = static_cast<QLabel *>(mInputLabel->widget());
    const QFontMetrics metrics(label->font());
    const double above = 0.5 * (mTopTitleBar->size().height() - metrics.height());
    const auto widthOf = [&metrics](const QGraphicsProxyWidget *proxy) {
        return double(metrics.horizontalAdvance(static_cast<QLabel *>(proxy->widget())->text()));
    };
    // Each header is measured by the text of a neighbour, so that all stand as they always stood.
    const double input = widthOf(mOutputLabel), geometry = widthOf(mInputLabel);
    const double values = widthOf(mImportLabel), files = widthOf(mExportLabel);
    mInputLabel->setPos(0.5 * (right - input), top + above);
    mExportLabel->setPos(left - 0.5 * (left + geometry), top + above);
    mOutputLabel->setPos(0.5 * (right - values), above);
    mImportLabel->setPos(left - 0.5 * (left + files), above);
}

SoftConArea FSoftConScene::getArea(const QPointF &point) const
{
    for (const SoftConArea area : {SoftConOutput, SoftConImport, SoftConInput, SoftConExport}) {
        const auto found = mAreas.find(area);
        if (found != mAreas.end() && found->second.contains(point))
            return area;
    }
    return SoftConNoArea;
}

/// An area without items says what belongs there and how it gets there.
void FSoftConScene::drawForeground(QPainter *painter, const QRectF &rect)
{
    QGraphicsScene::drawForeground(painter, rect);
    const std::pair<SoftConArea, QString> hints[] = {
        {SoftConExport, tr("Drag geometry here from the tree,\nor press + for an empty export.")},
        {SoftConInput, tr("Drop the program's input files here,\nor press + to choose them.")},
        {SoftConImport, tr("Drop files here that the program leaves,\nor press + to name them.")},
        {SoftConOutput,
         tr("Drop a result file here to read values from it,\nor press + to choose one.")}};
    painter->setPen(FTheme::color("muted"));
    for (const auto &[area, text] : hints) {
        const auto &byArea = mLayout->items();
        const auto own = byArea.find(area);
        const auto room = mAreas.find(area);
        if (room == mAreas.end() || (own != byArea.end() && !own->second.empty()))
            continue;
        const QRectF place =
            room->second.adjusted(FTheme::space(4), kTitleHeight + FTheme::space(2),
                                  -FTheme::space(4), -kTitleHeight - FTheme::space(2));
        painter->drawText(place, Qt::AlignCenter | Qt::TextWordWrap, text);
    }
}

void FSoftConScene::callEditor(const FSoftConObjectItem *item)
{
    if (!item)
        return;
    mCurrentObject = item->getEditorItemObject();
    selectItem();
}

void FSoftConScene::selectItem()
{
    if (!mCurrentObject)
        return;
    FSelectionSet *selection = FSelectionSet::instance();
    const bool isAlone = selection->getObjects().size() == 1 && selection->contains(mCurrentObject);
    if (!isAlone) {
        selection->clear(false);
        selection->set({mCurrentObject}, false);
    }
    mCurrentObject = FExpr<FObject>();
}

void FSoftConScene::updateItems(int index)
{
    const auto connector = getConnector();
    if (connector && connector->overviewButton())
        connector->overviewButton()->setChecked(index == 0);
    if (index != 0)
        return;
    for (QGraphicsItem *item : items())
        if (auto *page = dynamic_cast<FSoftConTemplateItem *>(item))
            page->updateIcon();
}

void FSoftConScene::computationNameChanged(const std::shared_ptr<FObject> &, const QString &,
                                           unsigned dbId)
{
    const auto computation = mComputation.getPtr();
    if (!computation || unsigned(computation->getDbId()) != dbId)
        return;
    for (QGraphicsItem *item : items())
        if (auto *card = dynamic_cast<FSoftConComputationItem *>(item)) {
            if (card->getHandle())
                card->getHandle()->setOutOfDate(0);
            card->updateItem();
            return;
        }
}

void FSoftConScene::showDocu(QString label)
{
    if (!getConnector())
        return;
    const QString text = Q(FSoftwareConnector::mpNull->getDocuString(1));
    const QRegularExpression own("(<strong>|<b>)" + QRegularExpression::escape(label));
    const QRegularExpression any(QStringLiteral("(<strong>|<b>)"));
    const int begin = text.indexOf(own);
    if (begin < 0)
        return;
    const int end = text.indexOf(any, begin + 1);
    FDocuPopup::exec(S(text.mid(begin, end < 0 ? -1 : end - begin)));
}

void FSoftConScene::runComputation()
{
    if (const auto computation = mComputation.getPtr())
        computation->guiRun();
}

void FSoftConScene::readResults()
{
    if (const auto computation = mComputation.getPtr())
        computation->rereadResults();
}

void FSoftConScene::resizeItem(QAction *action)
{
    action->setChecked(true);
    if (const auto connector = getConnector())
        connector->setItemSizeStr(action->text());
}

QGraphicsItem *FSoftConScene::itemUnder(const QPointF &place) const
{
    return itemAt(place, QTransform());
}

void FSoftConScene::fillMenu(QMenu *menu, const QPointF &place)
{
    struct Entry
    {
        SoftConArea area;
        void (FSoftConScene::*slot)();
    };
    const SoftConArea area = getArea(place);
    for (const Entry &entry : {Entry{SoftConInput, &FSoftConScene::addInput},
                               {SoftConOutput, &FSoftConScene::addOutput},
                               {SoftConExport, &FSoftConScene::addExport},
                               {SoftConImport, &FSoftConScene::addImport}})
        if (entry.area == area) {
            QAction *add = menu->addAction(FIcons::icon(QStringLiteral(":/add")), addWords(area));
            connect(add, &QAction::triggered, this, entry.slot);
        }
    menu->addSeparator();
    auto *sizes = new QActionGroup(menu);
    const auto connector = getConnector();
    const QString now = connector ? connector->getItemSizeStr() : QString();
    for (const QString &size :
         {FSoftwareConnector::smIconSize_Largest, FSoftwareConnector::smIconSize_Medium,
          FSoftwareConnector::smIconSize_Smallest}) {
        QAction *action = menu->addAction(FIcons::icon(":/softConItemSize_" + size), size);
        action->setCheckable(true);
        action->setChecked(size == now);
        sizes->addAction(action);
    }
    connect(sizes, &QActionGroup::triggered, this, &FSoftConScene::resizeItem);
    for (QGraphicsItem *item = itemUnder(place); item; item = item->parentItem())
        if (auto *own = dynamic_cast<FSoftwareConnectorItem *>(item)) {
            QAction *copy = menu->addAction(FIcons::icon(QStringLiteral(":/copy")),
                                            QStringLiteral("Copy File Name"));
            connect(copy, &QAction::triggered, own, &FSoftwareConnectorItem::copyFileName);
            break;
        }
}

void FSoftConScene::contextMenuEvent(QGraphicsSceneContextMenuEvent *event)
{
    QPointF place = event->scenePos();
    QPoint screen = event->screenPos();
    const FSoftConObjectItem *focused = focusedItem();
    if (event->reason() == QGraphicsSceneContextMenuEvent::Keyboard && focused) {
        place = focused->sceneBoundingRect().center();
        if (!views().isEmpty())
            screen = views().front()->viewport()->mapToGlobal(views().front()->mapFromScene(place));
        event->setScenePos(place);
        event->setScreenPos(screen);
    }
    const QGraphicsItem *item = itemUnder(place);
    if (dynamic_cast<const FSoftConComputationItem *>(item) ||
        (item && dynamic_cast<const FSoftConComputationItem *>(item->parentItem()))) {
        event->ignore();
        QGraphicsScene::contextMenuEvent(event);
        return;
    }
    QMenu menu;
    menu.setObjectName(QStringLiteral("sceneMenu"));
    fillMenu(&menu, place);
    menu.exec(screen);
    event->accept();
}

void FSoftConScene::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    if (getArea(event->scenePos()) == SoftConInput) {
        FSelectionSet::instance()->clear(false);
        if (const auto computation = genIntComputation())
            if (const auto configuration = computation->getConfiguration().getPtr())
                FSelectionSet::instance()->add(FExprBase(configuration));
    }
    QGraphicsScene::mousePressEvent(event);
}

// Keys

FSoftConObjectItem *FSoftConScene::focusedItem() const
{
    return dynamic_cast<FSoftConObjectItem *>(focusItem());
}

void FSoftConScene::focusInEvent(QFocusEvent *event)
{
    QGraphicsScene::focusInEvent(event);
    if (focusItem() || event->reason() == Qt::MouseFocusReason)
        return;
    moveFocus(0);
}

/// To the next item in the direction of an arrow; with 0 to the computation.
void FSoftConScene::moveFocus(int key)
{
    const FSoftConObjectItem *from = focusedItem();
    FSoftConObjectItem *best = nullptr;
    double least = 0;
    for (FSoftwareConnectorItem *one : mItems) {
        auto *item = dynamic_cast<FSoftConObjectItem *>(one);
        if (!item || item == from || item->scene() != this || !item->isEnabled())
            continue;
        if (!from) {
            if (!best || item->getArea() == SoftConComputation)
                best = item;
            continue;
        }
        const QPointF way = item->sceneBoundingRect().center() - from->sceneBoundingRect().center();
        double along = 0, across = 0;
        switch (key) {
        case Qt::Key_Left:
        case Qt::Key_Right:
            along = key == Qt::Key_Left ? -way.x() : way.x();
            across = way.y();
            break;
        default:
            along = key == Qt::Key_Up ? -way.y() : way.y();
            across = way.x();
        }
        if (along <= 1.0)
            continue;
        const double cost = along + 3.0 * qAbs(across);
        if (!best || cost < least) {
            best = item;
            least = cost;
        }
    }
    if (!best)
        return;
    setFocusItem(best, Qt::TabFocusReason);
    callEditor(best);
    for (QGraphicsView *view : views())
        view->ensureVisible(best, 20, 20);
}

void FSoftConScene::keyPressEvent(QKeyEvent *event)
{
    FSoftConObjectItem *item = focusedItem();
    if (focusItem() && !item) { // a button
        QGraphicsScene::keyPressEvent(event);
        if (event->isAccepted())
            return;
    }
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
        moveFocus(event->key());
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter: {
        if (!item)
            break;
        const auto file = item->getItemObject().ptr<FGenIntFile>();
        if (file)
            gotoTab(FExpr<FGenIntFile>(file));
        else
            callEditor(item);
        break;
    }
    case Qt::Key_Delete:
        if (item && item->getArea() != SoftConComputation)
            deleteItem(item);
        break;
    case Qt::Key_Insert:
        addIn(item ? item->getArea() : SoftConInput);
        break;
    case Qt::Key_Menu:
    case Qt::Key_F10: {
        if (event->key() == Qt::Key_F10 && !(event->modifiers() & Qt::ShiftModifier)) {
            QGraphicsScene::keyPressEvent(event);
            return;
        }
        QGraphicsSceneContextMenuEvent menu(QEvent::GraphicsSceneContextMenu);
        menu.setReason(QGraphicsSceneContextMenuEvent::Keyboard);
        if (!views().isEmpty())
            menu.setWidget(views().front()->viewport());
        contextMenuEvent(&menu);
        break;
    }
    default:
        QGraphicsScene::keyPressEvent(event);
        return;
    }
    event->accept();
}

void FSoftConScene::addIn(SoftConArea area)
{
    switch (area) {
    case SoftConExport:
        addExport();
        break;
    case SoftConOutput:
        addOutput();
        break;
    case SoftConImport:
        addImport();
        break;
    default:
        addInput();
    }
}

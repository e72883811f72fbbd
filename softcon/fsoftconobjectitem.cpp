// SPDX-License-Identifier: Apache-2.0
#include "fsoftconobjectitem.h"

#include "fchanges.h"
#include "fgenintcomputation.h"
#include "fgenintfile.h"
#include "ficons.h"
#include "fselectionset.h"
#include "fsoftconlayout.h"
#include "fsoftconscene.h"
#include "ftheme.h"
#include "ftoolbutton.h"

#include <QAction>
#include <QGraphicsProxyWidget>
#include <QGraphicsSceneMouseEvent>
#include <QGuiApplication>
#include <QPainter>
#include <QStyleOptionGraphicsItem>

void FSoftConItemFrame::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    const auto *item = static_cast<const FSoftConObjectItem *>(parentItem());
    const bool isFocused = item->hasFocus() && item->scene() && item->scene()->isActive();
    if (!mHovered && !item->isMarked() && !isFocused)
        return;
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(isFocused ? QPen(FTheme::color("accent"), 1.5) : QPen(Qt::NoPen));
    painter->setBrush(item->isMarked() ? FTheme::color("selection") : FTheme::color("hover"));
    painter->drawRoundedRect(rect().adjusted(1, 1, -1, -1), 6, 6);
}

void FSoftConItemFrame::setHovered(bool hovered)
{
    mHovered = hovered;
    update();
}

FSoftConObjectItem::FSoftConObjectItem(FSoftConScene *scene, QGraphicsItem *parent,
                                       const FExpr<FObject> &object, SoftConArea area,
                                       const QString &image)
    : FSoftwareConnectorItem(scene, parent, area, image)
    , mObject(object)
    , mHandle(f_make_shared<FSoftwareConnectorItemHandle>(this))
{
    setFlags(ItemIsSelectable | ItemIsFocusable);
    mLabel = new FSoftConLabelItem(this);
    mLabel->setAcceptedMouseButtons(Qt::NoButton);
    mObject.registerClient(mHandle, false);
    connect(FChanges::instance(), &FChanges::selectionChanged, this,
            &FSoftConObjectItem::followSelection);
}

FSoftConObjectItem::~FSoftConObjectItem() { mObject.deregisterClient(mHandle); }

void FSoftConObjectItem::init()
{
    mBackground = new FSoftConItemFrame(this);
    mBackground->setFlag(ItemStacksBehindParent);
    mBackground->setAcceptHoverEvents(true);
    mBackground->setData(0, QStringLiteral("hoverFrame"));

    auto *button = new FToolButton(nullptr);
    button->setObjectName(QStringLiteral("deleteButton"));
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::NoFocus); // the Delete key does it
    button->setAttribute(Qt::WA_TranslucentBackground);
    mDeleteButton = new QGraphicsProxyWidget(this);
    mDeleteButton->setWidget(button);
    auto *action = new QAction(FIcons::icon(QStringLiteral(":/erase")), tr("Delete"),
                               static_cast<QObject *>(mDeleteButton));
    button->setDefaultAction(action);
    button->setAccessibleName(tr("Delete"));
    FSoftConScene *scene = connectorScene();
    if (scene) {
        mBackground->installSceneEventFilter(this);
        connect(button, &QToolButton::triggered, scene,
                qOverload<QAction *>(&FSoftConScene::deleteItem));
    }
    mDeleteButton->setVisible(false);
    followSelection();
}

void FSoftConObjectItem::followSelection()
{
    const auto object = getItemObject().getExpr();
    setSelected(object && FSelectionSet::instance()->contains(getItemObject()));
    if (mBackground)
        mBackground->update();
}

FSoftConLayout *FSoftConObjectItem::layout() const
{
    return connectorScene() ? connectorScene()->getLayout() : nullptr;
}

std::shared_ptr<FGenIntComputation> FSoftConObjectItem::genIntComputation() const
{
    return connectorScene() ? connectorScene()->genIntComputation() : nullptr;
}

qreal FSoftConObjectItem::pixelRatio() const { return qGuiApp->devicePixelRatio(); }

bool FSoftConObjectItem::getIconContent(QString &) const { return false; }

void FSoftConObjectItem::callEditor() const
{
    FSelectionSet::instance()->set({FExprBase(getItemObject())}, true);
}

void FSoftConObjectItem::updateIcon() const
{
    FSoftConLayout *own = layout();
    if (own) {
        mLabel->setBrush(FTheme::color("text"));
        own->reinitItemIcon(mBackground, mDeleteButton, pixmap(), mIconName, mLabel, getArea(),
                            false);
    }
    const_cast<FSoftConObjectItem *>(this)->prepareGeometryChange();
    mHandle->setOutOfDate(0);
}

QRectF FSoftConObjectItem::boundingRect() const
{
    const QRectF picture = QGraphicsPixmapItem::boundingRect();
    const FSoftConLayout *own = layout();
    return mLabel && own ? picture.united(own->labelField(*mLabel)) : picture;
}

QPainterPath FSoftConObjectItem::shape() const
{
    QPainterPath path;
    path.addRect(boundingRect());
    return path;
}

void FSoftConObjectItem::paint(QPainter *painter, const QStyleOptionGraphicsItem *option,
                               QWidget *widget)
{
    // The ground shows what is chosen; the dashed frame of the base would say it again.
    QStyleOptionGraphicsItem plain(*option);
    plain.state &= ~(QStyle::State_Selected | QStyle::State_HasFocus);
    QGraphicsPixmapItem::paint(painter, &plain, widget);
}

QPainterPath FSoftConObjectItem::getIconPath(const QSize &size, QPolygonF *fold) const
{
    const double r = 0.04 * size.width() + 2.0;
    const double left = 1, top = 1, right = size.width() - 2, bottom = size.height() - 2;
    const QPointF cut(right - r, top), edge(right, top + r);
    if (fold)
        *fold = QPolygonF({cut, QPointF(right - r, top + r), edge});
    QPainterPath path(cut);
    path.lineTo(edge);
    path.lineTo(right, bottom - r);
    path.arcTo(QRectF(right - 2 * r, bottom - 2 * r, 2 * r, 2 * r), 0, -90);
    path.lineTo(left + r, bottom);
    path.arcTo(QRectF(left, bottom - 2 * r, 2 * r, 2 * r), -90, -90);
    path.lineTo(left, top + r);
    path.arcTo(QRectF(left, top, 2 * r, 2 * r), 180, -90);
    path.closeSubpath();
    return path;
}

void FSoftConObjectItem::setItemObject(const FExpr<FObject> &object) const
{
    mObject.setExpr(object.getExpr());
}

void FSoftConObjectItem::setIconName(const QString &name) const
{
    if (mIconName == name)
        return;
    mIconName = name;
    auto *self = const_cast<FSoftConObjectItem *>(this);
    self->setData(0, name);
    if (FSoftConLayout *own = layout()) {
        own->reinitItemIcon(mBackground, mDeleteButton, pixmap(), name, mLabel, getArea(), false);
        if (mBackground) // else it is still being made, and its maker lays out
            own->iconNameHasChanged(connectorScene());
    }
}

void FSoftConObjectItem::showPixmap(const QPixmap &pixmap) const
{
    const_cast<FSoftConObjectItem *>(this)->setPixmap(pixmap);
}

// Events

void FSoftConObjectItem::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    setFocus(Qt::MouseFocusReason);
    FSoftwareConnectorItem::mousePressEvent(event);
}

void FSoftConObjectItem::mouseReleaseEvent(QGraphicsSceneMouseEvent *)
{
    if (mDoubleClick) {
        mDoubleClick = false;
        return;
    }
    if (connectorScene())
        connectorScene()->callEditor(this);
}

void FSoftConObjectItem::mouseDoubleClickEvent(QGraphicsSceneMouseEvent *)
{
    const auto file = getItemObject().ptr<FGenIntFile>();
    if (!connectorScene() || !file)
        return;
    mDoubleClick = true;
    connectorScene()->gotoTab(FExpr<FGenIntFile>(file));
}

void FSoftConObjectItem::showDeleteButton()
{
    if (mDeleteButton)
        mDeleteButton->setVisible(mBackground->isHovered() || hasFocus());
}

void FSoftConObjectItem::hoverEnterEvent(QGraphicsSceneHoverEvent *event)
{
    FSoftwareConnectorItem::hoverEnterEvent(event);
    if (mBackground)
        mBackground->setHovered(true);
    showDeleteButton();
}

void FSoftConObjectItem::hoverLeaveEvent(QGraphicsSceneHoverEvent *event)
{
    FSoftwareConnectorItem::hoverLeaveEvent(event);
    if (mBackground)
        mBackground->setHovered(false);
    showDeleteButton();
}

void FSoftConObjectItem::focusInEvent(QFocusEvent *event)
{
    FSoftwareConnectorItem::focusInEvent(event);
    showDeleteButton();
}

void FSoftConObjectItem::focusOutEvent(QFocusEvent *event)
{
    FSoftwareConnectorItem::focusOutEvent(event);
    showDeleteButton();
}

bool FSoftConObjectItem::sceneEventFilter(QGraphicsItem *watched, QEvent *event)
{
    if (watched == mBackground) {
        if (event->type() == QEvent::GraphicsSceneHoverEnter)
            hoverEnterEvent(static_cast<QGraphicsSceneHoverEvent *>(event));
        else if (event->type() == QEvent::GraphicsSceneHoverLeave)
            hoverLeaveEvent(static_cast<QGraphicsSceneHoverEvent *>(event));
        if (event->type() == QEvent::GraphicsSceneHoverEnter)
            mBackground->setToolTip(getToolTip());
    }
    return false;
}

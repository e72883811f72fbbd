// SPDX-License-Identifier: Apache-2.0
#include "fsoftwareconnectoritem.h"

#include "fclipboard.h"
#include "ficons.h"
#include "fsoftconlayout.h"
#include "fsoftconscene.h"

#include <QGraphicsSceneContextMenuEvent>
#include <QMenu>

F_CLASS_IMPL(FSoftwareConnectorItemHandle)

FSoftwareConnectorItem::FSoftwareConnectorItem(FSoftConScene *scene, QGraphicsItem *parent,
                                               SoftConArea area, const QString &image)
    : QGraphicsPixmapItem(parent)
    , mScene(scene)
    , mArea(area)
{
    setAcceptHoverEvents(true);
    setTransformationMode(Qt::SmoothTransformation);
    setPixmap(FIcons::pixmap(image, FIcons::sizeOf(image)));
    if (scene && !parent)
        scene->addItem(this);
}

FSoftwareConnectorItem::~FSoftwareConnectorItem()
{
    if (FSoftConScene *scene = connectorScene())
        scene->forget(this);
}

FSoftConScene *FSoftwareConnectorItem::connectorScene() const
{
    return static_cast<FSoftConScene *>(mScene.data());
}

QString FSoftwareConnectorItem::getToolTip() const { return QString(); }

void FSoftwareConnectorItem::setPixmapSize(const QSize &size)
{
    const qreal ratio = pixmap().devicePixelRatio();
    QPixmap scaled = pixmap().scaled(size * ratio, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    scaled.setDevicePixelRatio(ratio);
    setPixmap(scaled);
}

void FSoftwareConnectorItem::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    event->accept(); // else the release goes elsewhere
}

void FSoftwareConnectorItem::hoverEnterEvent(QGraphicsSceneHoverEvent *event)
{
    setToolTip(getToolTip());
    QGraphicsPixmapItem::hoverEnterEvent(event);
}

void FSoftwareConnectorItem::hoverLeaveEvent(QGraphicsSceneHoverEvent *event)
{
    QGraphicsPixmapItem::hoverLeaveEvent(event);
}

void FSoftwareConnectorItem::dragEnterEvent(QGraphicsSceneDragDropEvent *event)
{
    QGraphicsPixmapItem::dragEnterEvent(event);
}

void FSoftwareConnectorItem::contextMenuEvent(QGraphicsSceneContextMenuEvent *event)
{
    QMenu menu;
    connect(
        menu.addAction(FIcons::icon(QStringLiteral(":/copy")), QStringLiteral("Copy File Name")),
        &QAction::triggered, this, &FSoftwareConnectorItem::copyFileName);
    menu.exec(event->screenPos());
}

void FSoftwareConnectorItem::copyFileName()
{
    if (getLabelItem())
        FClipboard::setText(S(getToolTip()));
}

FSoftwareConnectorItemHandle::FSoftwareConnectorItemHandle(FSoftwareConnectorItem *item)
    : mItem(item)
{
}

void FSoftwareConnectorItemHandle::doUpdate() const
{
    if (mItem)
        mItem->updateItem();
    FObject::doUpdate();
}

void FSoftwareConnectorItemHandle::doSetOutOfDate() const
{
    if (mItem)
        mItem->outdateItem();
}

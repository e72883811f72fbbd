// SPDX-License-Identifier: Apache-2.0
#ifndef FSOFTWARECONNECTORITEM_H
#define FSOFTWARECONNECTORITEM_H
#include "fobject.h"
#include "fsoftconarea.h"

#include <QGraphicsPixmapItem>
#include <QGraphicsSimpleTextItem>
#include <QObject>
#include <QPointer>

class FSoftConScene;
class FSoftwareConnectorItem;

/// The text below or beside an icon.
///
/// In a grid the field of a label is as wide as its longest text may be, so that all items of a
/// grid are equally wide and none stands over its neighbour.
class FSoftConLabelItem : public QGraphicsSimpleTextItem
{
public:
    enum { Type = UserType + 20 };
    using QGraphicsSimpleTextItem::QGraphicsSimpleTextItem;
    int type() const override { return Type; }
};

/// Anything on the scene: it has an area that it belongs to, a picture and perhaps a label.
class FSoftwareConnectorItem : public QObject, public QGraphicsPixmapItem
{
    Q_OBJECT
    Q_INTERFACES(QGraphicsItem)
public:
    enum { Type = UserType + 1 };
    /// Enters itself in the scene; \p image is the key of the first picture.
    FSoftwareConnectorItem(FSoftConScene *scene, QGraphicsItem *parent, SoftConArea area,
                           const QString &image);
    ~FSoftwareConnectorItem() override;
    int type() const override { return Type; }

    virtual SoftConArea getArea() const { return mArea; }
    virtual QGraphicsSimpleTextItem *getLabelItem() const { return mLabel; }
    virtual QString getToolTip() const;
    /// Scales the picture.
    virtual void setPixmapSize(const QSize &size);
    /// The model object is up to date again, or has another state.
    virtual void updateItem() const {}
    /// The model object is out of date.
    virtual void outdateItem() const {}
    /// Makes the parts of the item; called once, by the scene.
    virtual void init() {}
    FSoftConScene *connectorScene() const;

public Q_SLOTS:
    /// Puts the tool tip, which is the name of the file, on the clipboard.
    void copyFileName();

protected:
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void hoverEnterEvent(QGraphicsSceneHoverEvent *event) override;
    void hoverLeaveEvent(QGraphicsSceneHoverEvent *event) override;
    void dragEnterEvent(QGraphicsSceneDragDropEvent *event) override;
    void contextMenuEvent(QGraphicsSceneContextMenuEvent *event) override;

    FSoftConLabelItem *mLabel = nullptr; ///< a child; null without one

private:
    QPointer<QObject> mScene;
    SoftConArea mArea;
};

/// The bridge to the update model: a client of the model object that hands on what becomes of it.
class FSoftwareConnectorItemHandle : public FObject
{
    F_CLASS(FSoftwareConnectorItemHandle, FObject)
public:
    explicit FSoftwareConnectorItemHandle(FSoftwareConnectorItem *item = nullptr);
    FSoftwareConnectorItem *item() const { return mItem; }
    void doUpdate() const override;
    void doSetOutOfDate() const override;
    bool needsUpdateInGuiThread() const override { return true; }
    static void initCmds() {}

private:
    QPointer<FSoftwareConnectorItem> mItem;
};
#endif

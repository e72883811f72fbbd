// SPDX-License-Identifier: Apache-2.0
#ifndef FSOFTCONOBJECTITEM_H
#define FSOFTCONOBJECTITEM_H
#include "fexpr.h"
#include "fsoftwareconnectoritem.h"

#include <QGraphicsRectItem>
#include <QPainterPath>

class FGenIntComputation;
class FSoftConLayout;
class QAction;
class QGraphicsProxyWidget;
class QPolygonF;

/// The ground behind an item, which shows that it is chosen, under the pointer or has the focus.
class FSoftConItemFrame : public QGraphicsRectItem
{
public:
    enum { Type = UserType + 21 };
    using QGraphicsRectItem::QGraphicsRectItem;
    int type() const override { return Type; }
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    void setHovered(bool hovered);
    bool isHovered() const { return mHovered; }

private:
    bool mHovered = false;
};

/// An item with a model object: a view with behaviour. It holds no data of the model.
class FSoftConObjectItem : public FSoftwareConnectorItem
{
    Q_OBJECT
public:
    enum { Type = UserType + 2 };
    FSoftConObjectItem(FSoftConScene *scene, QGraphicsItem *parent, const FExpr<FObject> &object,
                       SoftConArea area, const QString &image);
    ~FSoftConObjectItem() override;
    int type() const override { return Type; }

    void init() override;
    virtual FExpr<FObject> getItemObject() const { return mObject; }
    /// What the object editor shows when the item is chosen.
    virtual FExpr<FObject> getEditorItemObject() const { return getItemObject(); }
    /// The text that the picture shows in small; false if the picture need not change.
    virtual bool getIconContent(QString &content) const;
    /// Selects the object, so that the object editor shows it.
    virtual void callEditor() const;
    /// Makes the model object of a new item. \p path is the file, \p base the folder that its name
    /// is relative to.
    virtual void createItemObject(const QString & /*path*/, const QString & /*base*/) const {}
    /// The item is about to be deleted, and its object with it.
    virtual void prepareToBeDestroyed() {}
    /// Draws the item anew, with the layout of the scene.
    virtual void updateIcon() const;
    /// The picture, and the field of the label.
    QRectF boundingRect() const override;
    QPainterPath shape() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

    /// The outline of a page with a folded corner, of \p size; \p fold takes the three points of
    /// the fold.
    virtual QPainterPath getIconPath(const QSize &size, QPolygonF *fold) const;
    const std::shared_ptr<FSoftwareConnectorItemHandle> &getHandle() const { return mHandle; }
    /// The name or path that the label is made of.
    QString getIconName() const { return mIconName; }
    FSoftConItemFrame *getBackground() const { return mBackground; }
    QGraphicsProxyWidget *getDeleteButton() const { return mDeleteButton; }
    /// True if the object, or the item itself, is selected.
    bool isMarked() const { return isSelected(); }

protected:
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseDoubleClickEvent(QGraphicsSceneMouseEvent *event) override;
    void hoverEnterEvent(QGraphicsSceneHoverEvent *event) override;
    void hoverLeaveEvent(QGraphicsSceneHoverEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    bool sceneEventFilter(QGraphicsItem *watched, QEvent *event) override;

    /// Binds the item to another model object; its clients follow.
    void setItemObject(const FExpr<FObject> &object) const;
    void setIconName(const QString &name) const;
    /// setPixmap for operations that are constant for the model.
    void showPixmap(const QPixmap &pixmap) const;
    /// The layout of the scene; null without a scene.
    FSoftConLayout *layout() const;
    std::shared_ptr<FGenIntComputation> genIntComputation() const;
    /// Pixels of the screen for one pixel of the layout.
    qreal pixelRatio() const;

private:
    void followSelection();
    void showDeleteButton();

    bool mDoubleClick = false;
    mutable FExpr<FObject> mObject;
    std::shared_ptr<FSoftwareConnectorItemHandle> mHandle;
    FSoftConItemFrame *mBackground = nullptr;
    QGraphicsProxyWidget *mDeleteButton = nullptr;
    mutable QString mIconName;
};
#endif

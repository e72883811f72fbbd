// SPDX-License-Identifier: Apache-2.0
#ifndef FSOFTCONLAYOUT_H
#define FSOFTCONLAYOUT_H
#include "fsoftconarea.h"

#include <QList>
#include <QRectF>
#include <QString>
#include <array>
#include <map>
#include <vector>

class FSoftConObjectItem;
class FSoftConScene;
class QGraphicsItem;
class QGraphicsProxyWidget;
class QGraphicsRectItem;
class QGraphicsSimpleTextItem;
class QPixmap;

/// Sizes of the short text on the icon of a file.
class FSoftConLayoutIconTextMeasurements
{
public:
    virtual ~FSoftConLayoutIconTextMeasurements() = default;
    int mFontSizeOfThree = 0; ///< for a text of three characters, in points
    int mFontSize = 0;        ///< for other texts
    double mStartX = 0, mStartY = 0, mEndX = 0, mEndY = 0; ///< of the gradient, in pixels
    bool mIsOutline = true; ///< the text is an outline filled with the gradient
};

/// Decides where the items of a scene stand: in four areas around the centre, outward from it.
class FSoftConLayout
{
public:
    virtual ~FSoftConLayout() = default;
    /// Takes the items by area and counts how much room each area wants. To be called whenever the
    /// items or their names change.
    virtual void calcItemRatios(const QList<QGraphicsItem *> &items);
    /// Places the items. \p rect is the viewport's, \p scrollExtent the thickness of a scroll bar.
    /// \p sceneRect takes what the scene covers, \p bgRect what its ground covers.
    virtual void redraw(const QRect &rect, double scrollExtent, double centreHeight, int insetX,
                        int insetY, QRectF &sceneRect, QRectF &bgRect);
    /// The same without the rectangles; the top left of the scene.
    virtual QPointF layout(const QRect &, double, double) { return {}; }
    /// Arranges label, ground and button of one item around its picture.
    virtual void reinitItemIcon(QGraphicsRectItem *, QGraphicsProxyWidget *, const QPixmap &,
                                const QString &, QGraphicsSimpleTextItem *, SoftConArea, bool)
    {
    }
    virtual void iconNameHasChanged(const FSoftConScene *) {}
    virtual void setComputationPos(FSoftConObjectItem *item);
    virtual int getPixmapWidth() const { return 0; }
    virtual int getPixmapHeight() const { return 0; }
    virtual double getMinWidth() const { return 0; }
    virtual double getMinHeight() const { return 0; }
    virtual double getItemOffset() const { return 0; }
    virtual double getBgLeftOffset() const { return 0; }
    virtual double getBgTopOffset() const { return 0; }
    virtual double getBgRightOffset() const { return 0; }
    virtual double getBgBottomOffset() const { return 0; }
    virtual FSoftConLayoutIconTextMeasurements getIconTextMeasurements() const { return {}; }
    virtual QString getIconSizeStr() const { return QString(); }
    /// The field of a label as it counts for the size of an item, in the item's coordinates.
    virtual QRectF labelField(const QGraphicsSimpleTextItem &label) const;

    using Items = std::map<SoftConArea, std::vector<FSoftConObjectItem *>>;
    const Items &items() const { return mItems; }
    /// What all placed items cover, with the margins of the layout.
    const QRectF &boundingRect() const { return mBoundingRect; }
    static bool lessThanItem(const FSoftConObjectItem *a, const FSoftConObjectItem *b);
    static bool greaterThanItem(const FSoftConObjectItem *a, const FSoftConObjectItem *b);

protected:
    /// What each area wants.
    struct Sizes
    {
        double width[4] = {0, 0, 0, 0}, height[4] = {0, 0, 0, 0};
    };
    using Areas = std::array<QSizeF, 4>;
    /// The room of each area when \p size is divided by what the areas want.
    Areas divide(const QSizeF &size, double leastLeft, double leastRight) const;
    void takeItems(const QList<QGraphicsItem *> &items);
    void takeShares(const Sizes &wanted);
    void sortItems(bool reverseTop);

    QRectF mBoundingRect;
    Items mItems;
    double mLeftWidth = 0, mRightWidth = 0, mTopHeight = 0, mBottomHeight = 0;
};
#endif

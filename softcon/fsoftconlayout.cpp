// SPDX-License-Identifier: Apache-2.0
#include "fsoftconlayout.h"

#include "fsoftconobjectitem.h"

#include <algorithm>
#include <cmath>

void FSoftConLayout::takeItems(const QList<QGraphicsItem *> &items)
{
    mItems.clear();
    for (const SoftConArea area : {SoftConInput, SoftConOutput, SoftConExport, SoftConImport})
        mItems[area];
    for (QGraphicsItem *one : items) {
        auto *item = dynamic_cast<FSoftConObjectItem *>(one);
        if (item && item->getItemObject() && item->getArea() < SoftConComputation)
            mItems[item->getArea()].push_back(item);
    }
}

void FSoftConLayout::takeShares(const Sizes &wanted)
{
    const auto larger = [](const double *sizes, SoftConArea a, SoftConArea b, double least) {
        return std::max({sizes[a], sizes[b], least});
    };
    mLeftWidth = larger(wanted.width, SoftConImport, SoftConExport, getMinWidth());
    mRightWidth = larger(wanted.width, SoftConOutput, SoftConInput, getMinWidth());
    mTopHeight = larger(wanted.height, SoftConInput, SoftConExport, getMinHeight());
    mBottomHeight = larger(wanted.height, SoftConOutput, SoftConImport, getMinHeight());
}

void FSoftConLayout::calcItemRatios(const QList<QGraphicsItem *> &items)
{
    takeItems(items);
    Sizes wanted;
    for (const auto &area : mItems) {
        if (area.second.empty())
            continue;
        const QSizeF size = area.second.front()->boundingRect().size();
        const double side = std::sqrt(double(area.second.size()) * size.width() * size.height());
        wanted.width[area.first] = wanted.height[area.first] = side;
    }
    takeShares(wanted);
    sortItems(false);
}

bool FSoftConLayout::lessThanItem(const FSoftConObjectItem *a, const FSoftConObjectItem *b)
{
    return a && b &&
           QString::localeAwareCompare(a->getLabelItem()->text(), b->getLabelItem()->text()) < 0;
}

bool FSoftConLayout::greaterThanItem(const FSoftConObjectItem *a, const FSoftConObjectItem *b)
{
    return lessThanItem(b, a);
}

void FSoftConLayout::sortItems(bool reverseTop)
{
    // The upper areas grow upward, and a list reads from top to bottom.
    for (auto &area : mItems) {
        const bool isTop = area.first == SoftConInput || area.first == SoftConExport;
        std::stable_sort(area.second.begin(), area.second.end(),
                         reverseTop && isTop ? greaterThanItem : lessThanItem);
    }
}

void FSoftConLayout::setComputationPos(FSoftConObjectItem *item)
{
    item->setPos(-item->boundingRect().width() / 2, -30.0);
}

QRectF FSoftConLayout::labelField(const QGraphicsSimpleTextItem &label) const
{
    return label.mapRectToParent(label.boundingRect());
}

FSoftConLayout::Areas FSoftConLayout::divide(const QSizeF &size, double leastLeft,
                                             double leastRight) const
{
    const auto scale = [](double room, double a, double b) {
        return a + b == 0 ? room : room / (a + b);
    };
    // The upper bound comes last: in a tiny rectangle it wins.
    const auto clamped = [](double value, double least, double most) {
        return std::min(std::max(value, least), most);
    };
    const double x = scale(size.width(), mLeftWidth, mRightWidth);
    const double y = scale(size.height(), mTopHeight, mBottomHeight);
    const double left = clamped(mLeftWidth * x, leastLeft, size.width() - leastRight);
    const double right = clamped(mRightWidth * x, leastRight, size.width() - leastLeft);
    const double most = size.height() - getMinHeight();
    const double top = clamped(mTopHeight * y, getMinHeight(), most);
    const double bottom = clamped(mBottomHeight * y, getMinHeight(), most);
    return {{{right, top}, {left, top}, {right, bottom}, {left, bottom}}};
}

void FSoftConLayout::redraw(const QRect &rect, double scrollExtent, double centreHeight, int insetX,
                            int insetY, QRectF &sceneRect, QRectF &bgRect)
{
    const QPointF corner = layout(rect, scrollExtent, centreHeight);
    const QRectF &items = mBoundingRect;
    const int halfX = insetX / 2, halfY = insetY / 2;
    sceneRect = QRectF(std::min(corner.x(), -getMinWidth()), std::min(corner.y(), -getMinHeight()),
                       rect.width(), rect.height());
    const bool isTall = sceneRect.height() < 2 * getMinHeight();
    if (isTall) {
        sceneRect.moveTop(-getMinHeight());
        sceneRect.setHeight(2 * getMinHeight());
    }
    bgRect = sceneRect;
    const auto reachItems = [&] { sceneRect.setRight(items.right() + getItemOffset()); };
    const bool reachesLeft = items.left() < sceneRect.left();
    if (!reachesLeft && items.right() <= sceneRect.right())
        return;
    if (reachesLeft) {
        sceneRect.setLeft(items.left() - getItemOffset());
        if (isTall) {
            bgRect.setTop(sceneRect.top() + halfY);
            bgRect.setBottom(sceneRect.bottom() - halfY);
        } else {
            sceneRect.setHeight(sceneRect.height() - scrollExtent);
            bgRect.setHeight(sceneRect.height());
        }
        if (items.right() > sceneRect.right())
            reachItems();
    } else {
        sceneRect.setHeight(sceneRect.height() - scrollExtent);
        reachItems();
    }
    bgRect.moveLeft(sceneRect.left() + halfX);
    bgRect.setWidth(sceneRect.width() - insetX);
}

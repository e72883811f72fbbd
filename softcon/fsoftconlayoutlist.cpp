// SPDX-License-Identifier: Apache-2.0
#include "fsoftconlayoutlist.h"

#include "fsoftconobjectitem.h"
#include "fsoftconscene.h"
#include "fsoftwareconnector.h"

#include <QFontMetrics>
#include <QGraphicsProxyWidget>
#include <algorithm>
#include <cmath>

namespace {
const double kMargin = 30.0;      // beside the lines between the areas
const double kLeftMargin = 100.0; // that the left half of the scene keeps
} // namespace

double FSoftConListLayout::columnWidth(SoftConArea area) const
{
    const auto found = mColumnWidths.find(area);
    return found == mColumnWidths.end() ? 0 : found->second;
}

double FSoftConListLayout::getMinWidth(SoftConArea area) const
{
    return std::max(columnWidth(area), getMinWidth()) + 80.0;
}

void FSoftConListLayout::calcItemRatios(const QList<QGraphicsItem *> &items)
{
    takeItems(items);
    Sizes wanted;
    for (const auto &area : mItems) {
        double width = 0;
        for (const FSoftConObjectItem *item : area.second)
            width = std::max(width, item->getLabelItem()->boundingRect().width());
        const double label = width;
        for (const FSoftConObjectItem *item : area.second) {
            FSoftConItemFrame *frame = item->getBackground();
            const QPixmap pixmap = item->pixmap();
            const double button =
                item->getDeleteButton() ? item->getDeleteButton()->size().width() : 0;
            width = getBgRightOffset() + pixmap.width() / pixmap.devicePixelRatio() +
                    getBgLeftOffset() + button + mGap + label + mGap;
            if (frame) {
                QRectF rect = frame->rect();
                rect.setWidth(width);
                frame->setRect(rect);
                width = frame->boundingRect().width();
            }
        }
        mColumnWidths[area.first] = width;
        if (area.second.empty())
            continue;
        mRowHeight = area.second.front()->boundingRect().height();
        wanted.width[area.first] = double(area.second.size()) * width;
        wanted.height[area.first] = double(area.second.size()) * mRowHeight;
    }
    takeShares(wanted);
    sortItems(true);
}

namespace {
/// How many items stand in the room of an area.
struct Fit
{
    Fit(size_t items, double height, double width, const QSizeF &room, double offset,
        double scrollExtent)
        : rows(std::max(
              1.0, std::floor((room.height() - 2 * kMargin - scrollExtent) / (offset + height))))
        , columns(std::max(1.0, std::floor((room.width() - 2 * kMargin) / (offset + width))))
        , extra(std::ceil((double(items) - rows * columns) / rows))
    {
    }
    double rows, columns;
    double extra; // columns that are missing; negative if there are too many
};
} // namespace

QPointF FSoftConListLayout::layout(const QRect &rect, double scrollExtent, double centreHeight)
{
    static bool again = false; // the room is that beside a scroll bar
    const double offset = getItemOffset();
    mBoundingRect = QRectF();
    const double widest = std::max(getMinWidth(SoftConImport) + getMinWidth(SoftConOutput),
                                   getMinWidth(SoftConExport) + getMinWidth(SoftConInput));
    const QSize size =
        rect.size().expandedTo(QSize(int(std::ceil(widest)), int(std::ceil(2 * getMinHeight()))));
    Areas rooms;
    rooms.fill(QSize(size.width() / 2, size.height() / 2));
    const auto fit = [&](const Items::value_type &area, double extent) {
        return Fit(area.second.size(), area.second.front()->boundingRect().height(),
                   columnWidth(area.first), rooms[size_t(area.first)], offset, extent);
    };
    const auto overflows = [&](const Items::value_type &area) {
        return !area.second.empty() && fit(area, 0).extra > 0;
    };
    if (again || std::any_of(mItems.begin(), mItems.end(), overflows))
        rooms = divide(size, std::max(getMinWidth(SoftConImport), getMinWidth(SoftConExport)),
                       std::max(getMinWidth(SoftConOutput), getMinWidth(SoftConInput)));
    const QPointF corner(-rooms[SoftConExport].width(), -rooms[SoftConExport].height());

    for (const auto &area : mItems) {
        if (area.second.empty())
            continue;
        const Fit found = fit(area, scrollExtent);
        if (found.extra > 0 && !again) {
            again = true; // a scroll bar takes room, once
            const QPointF moved = layout(
                QRect(rect.topLeft(), QSize(size.width(), int(size.height() - scrollExtent))),
                scrollExtent, centreHeight);
            again = false;
            return moved;
        }
        const bool isRight = area.first == SoftConInput || area.first == SoftConOutput;
        const bool isTop = area.first == SoftConInput || area.first == SoftConExport;
        const double width = columnWidth(area.first);
        const auto rows = size_t(found.rows);
        for (size_t i = 0; i < area.second.size(); ++i) {
            FSoftConObjectItem *item = area.second[i];
            const QRectF own = item->boundingRect();
            const double dx = (width + offset) * double(i / rows);
            const double dy = (offset + own.height()) * double(i % rows);
            const double x = isRight ? dx + kMargin : -(width + kMargin) - dx;
            const double y =
                isTop ? -(mRowHeight + kMargin + 3 * offset) - dy : dy + mRowHeight + kMargin;
            item->setPos(x - own.x(), y - own.y());
            mBoundingRect = mBoundingRect.united(
                QRectF(item->x() - (isRight ? 0 : kLeftMargin), item->y(), width, own.height()));
        }
    }
    return corner;
}

void FSoftConListLayout::reinitItemIcon(QGraphicsRectItem *background, QGraphicsProxyWidget *proxy,
                                        const QPixmap &pixmap, const QString &text,
                                        QGraphicsSimpleTextItem *label, SoftConArea area, bool)
{
    const QSize picture = pixmap.size() / pixmap.devicePixelRatio();
    const double button = proxy ? proxy->size().width() : 0;
    if (label) {
        const int top = (picture.height() - QFontMetrics(label->font()).height()) / 2;
        label->setText(text);
        label->setPos(picture.width() + mGap, top);
    }
    if (background) {
        background->setRect(-(getBgLeftOffset() + button + mGap), -getBgTopOffset(),
                            columnWidth(area),
                            picture.height() + getBgTopOffset() + getBgBottomOffset());
        background->setVisible(true);
    }
    if (proxy)
        proxy->setPos(-(mGap + button), 0);
}

void FSoftConListLayout::iconNameHasChanged(const FSoftConScene *scene)
{
    scene->calcItemRatios();
    scene->redraw();
}

FSoftConLayoutIconTextMeasurements FSoftConListLayout::getIconTextMeasurements() const
{
    FSoftConLayoutIconTextMeasurements found;
    found.mFontSizeOfThree = 7;
    found.mFontSize = 5;
    found.mIsOutline = false;
    return found;
}

QString FSoftConListLayout::getIconSizeStr() const
{
    return FSoftwareConnector::smIconSize_Smallest;
}

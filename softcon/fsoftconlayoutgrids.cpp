// SPDX-License-Identifier: Apache-2.0
#include "fsoftconlayoutgrids.h"

#include "fsoftconobjectitem.h"
#include "fsoftwareconnector.h"
#include "ftoolbutton.h"

#include <QFontMetrics>
#include <QGraphicsProxyWidget>
#include <QRegularExpression>
#include <algorithm>
#include <cmath>

namespace {
/// How many items stand in the room of an area.
struct Fit
{
    Fit(size_t items, const QSizeF &item, const QSizeF &room, double offset, double scrollExtent)
        : rows(std::max(1.0, std::floor((room.height() - 2 * offset - scrollExtent) /
                                        (offset + item.height()))))
        , columns(std::max(1.0, std::floor((room.width() - offset) / (offset + item.width()))))
        , extra(std::ceil((double(items) - rows * columns) / rows))
    {
    }
    double total() const { return columns + std::max(0.0, extra); }
    double rows, columns;
    double extra; // columns that are missing; negative if there are too many
};
} // namespace

QPointF FSoftConGridLayout::layout(const QRect &rect, double scrollExtent, double centreHeight)
{
    static bool again = false; // the room is that beside a scroll bar
    const double offset = getItemOffset();
    mBoundingRect = QRectF();
    const QSize size = rect.size().expandedTo(
        QSize(int(std::ceil(2 * getMinWidth())), int(std::ceil(2 * getMinHeight()))));
    Areas rooms;
    rooms.fill(QSize(size.width() / 2, size.height() / 2));
    const auto overflows = [&](const Items::value_type &area) {
        return !area.second.empty() &&
               Fit(area.second.size(), area.second.front()->boundingRect().size(),
                   rooms[size_t(area.first)], offset, 0)
                       .extra > 0;
    };
    if (again || std::any_of(mItems.begin(), mItems.end(), overflows))
        rooms = divide(size, getMinWidth(), getMinWidth());
    const QPointF corner(-rooms[SoftConExport].width(), -rooms[SoftConExport].height());

    const double sides = getBgRightOffset() + getPixmapWidth() + getBgLeftOffset();
    const double above = getPixmapHeight() + getBgTopOffset() + getBgBottomOffset() + 2 * offset;
    for (const auto &area : mItems) {
        if (area.second.empty())
            continue;
        const Fit fit(area.second.size(), area.second.front()->boundingRect().size(),
                      rooms[size_t(area.first)], offset, scrollExtent);
        if (fit.extra > 0 && !again) {
            again = true; // a scroll bar takes room, once
            const QPointF found = layout(
                QRect(rect.topLeft(), QSize(size.width(), int(size.height() - scrollExtent))),
                scrollExtent, centreHeight);
            again = false;
            return found;
        }
        const bool isRight = area.first == SoftConInput || area.first == SoftConOutput;
        const bool isTop = area.first == SoftConInput || area.first == SoftConExport;
        const auto columns = size_t(fit.total());
        for (size_t i = 0; i < area.second.size(); ++i) {
            FSoftConObjectItem *item = area.second[i];
            const QRectF own = item->boundingRect();
            const double dx = (offset + own.width()) * double(i % columns);
            const double dy = (offset + own.height()) * double(i / columns);
            const double x = isRight ? dx + offset : -(sides + offset) - dx;
            const double y = isTop ? -above - dy : dy + 2 * offset + centreHeight;
            item->setPos(x - own.x(), y - own.y());
            mBoundingRect = mBoundingRect.united(own.translated(item->pos()));
        }
    }
    mBoundingRect.setTop(mBoundingRect.top() - offset);
    return corner;
}

double FSoftConGridLayout::labelWidth() const
{
    return getPixmapWidth() + getBgRightOffset() + getBgLeftOffset() - 4.0;
}

QRectF FSoftConGridLayout::labelField(const QGraphicsSimpleTextItem &label) const
{
    return {-(getBgLeftOffset() + 4.0) * 0.5, label.y(), labelWidth(),
            label.boundingRect().height()};
}

void FSoftConGridLayout::reinitItemIcon(QGraphicsRectItem *background, QGraphicsProxyWidget *proxy,
                                        const QPixmap &pixmap, const QString &text,
                                        QGraphicsSimpleTextItem *label, SoftConArea,
                                        bool noBackground)
{
    static const QRegularExpression separator(QStringLiteral("/|\\\\"));
    const QSizeF picture = QSizeF(pixmap.size()) / pixmap.devicePixelRatio();
    const double left = getBgLeftOffset(), right = getBgRightOffset();
    const double width = picture.width() + right + left - 4.0;
    if (label) {
        const QFontMetrics metrics(label->font());
        const QString name = text.mid(text.lastIndexOf(separator) + 1);
        const QString shown = metrics.elidedText(name, Qt::ElideMiddle, int(width));
        label->setText(shown);
        label->setPos((width - left - 4.0 - metrics.horizontalAdvance(shown)) * 0.5,
                      picture.height() + 2.0);
    }
    if (noBackground)
        return;
    if (background) {
        background->setRect(-left, -getBgTopOffset(), picture.width() + left + right + 2.0,
                            picture.height() + getBgTopOffset() + getBgBottomOffset());
        background->setVisible(true);
    }
    if (proxy)
        proxy->setPos(picture.width() + 1, 0);
}

int FSoftConGridLayout::getPixmapHeight() const
{
    return int(std::floor(getPixmapWidth() * 1.4142135623730951 + 0.5));
}

double FSoftConGridLayout::getBgRightOffset() const { return FToolButton::getIconSize() + 7; }

double FSoftConGridLayout::getBgBottomOffset() const { return FToolButton::getIconSize() + 5; }

namespace {
FSoftConLayoutIconTextMeasurements measurements(int three, int other, double x, double from,
                                                double to)
{
    FSoftConLayoutIconTextMeasurements found;
    found.mFontSizeOfThree = three;
    found.mFontSize = other;
    found.mStartX = found.mEndX = x;
    found.mStartY = from;
    found.mEndY = to;
    return found;
}
} // namespace

int FSoftConLargeGridLayout::getPixmapWidth() const
{
    return int(FToolButton::getIconSize() * 5.4);
}

FSoftConLayoutIconTextMeasurements FSoftConLargeGridLayout::getIconTextMeasurements() const
{
    return measurements(35, 27, 16.0, 80.0, 120.0);
}

QString FSoftConLargeGridLayout::getIconSizeStr() const
{
    return FSoftwareConnector::smIconSize_Largest;
}

int FSoftConMediumGridLayout::getPixmapWidth() const
{
    return int(FToolButton::getIconSize() * 2.7);
}

FSoftConLayoutIconTextMeasurements FSoftConMediumGridLayout::getIconTextMeasurements() const
{
    return measurements(18, 14, 8.0, 40.0, 58.0);
}

QString FSoftConMediumGridLayout::getIconSizeStr() const
{
    return FSoftwareConnector::smIconSize_Medium;
}

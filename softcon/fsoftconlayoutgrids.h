// SPDX-License-Identifier: Apache-2.0
#ifndef FSOFTCONLAYOUTGRIDS_H
#define FSOFTCONLAYOUTGRIDS_H
#include "fsoftconlayout.h"

/// Pages side by side, the label below each.
class FSoftConGridLayout : public FSoftConLayout
{
public:
    QPointF layout(const QRect &rect, double scrollExtent, double centreHeight) override;
    void reinitItemIcon(QGraphicsRectItem *background, QGraphicsProxyWidget *proxy,
                        const QPixmap &pixmap, const QString &text, QGraphicsSimpleTextItem *label,
                        SoftConArea area, bool noBackground) override;
    int getPixmapHeight() const override;
    double getMinWidth() const override { return 300.0; }
    double getItemOffset() const override { return 30.0; }
    double getBgLeftOffset() const override { return 10.0; }
    double getBgTopOffset() const override { return 10.0; }
    double getBgRightOffset() const override;
    double getBgBottomOffset() const override;
    QRectF labelField(const QGraphicsSimpleTextItem &label) const override;

private:
    double labelWidth() const;
};

class FSoftConLargeGridLayout : public FSoftConGridLayout
{
public:
    int getPixmapWidth() const override;
    double getMinHeight() const override { return 372.0; }
    FSoftConLayoutIconTextMeasurements getIconTextMeasurements() const override;
    QString getIconSizeStr() const override;
};

class FSoftConMediumGridLayout : public FSoftConGridLayout
{
public:
    int getPixmapWidth() const override;
    double getMinHeight() const override { return 266.0; }
    FSoftConLayoutIconTextMeasurements getIconTextMeasurements() const override;
    QString getIconSizeStr() const override;
};
#endif

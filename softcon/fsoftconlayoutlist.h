// SPDX-License-Identifier: Apache-2.0
#ifndef FSOFTCONLAYOUTLIST_H
#define FSOFTCONLAYOUTLIST_H
#include "fsoftconlayout.h"

#include <unordered_map>

/// One item below the other, the label beside the icon.
class FSoftConListLayout : public FSoftConLayout
{
public:
    /// \p gap stands between button and picture, in pixels.
    explicit FSoftConListLayout(double gap)
        : mGap(gap)
    {
    }
    void calcItemRatios(const QList<QGraphicsItem *> &items) override;
    QPointF layout(const QRect &rect, double scrollExtent, double centreHeight) override;
    void reinitItemIcon(QGraphicsRectItem *background, QGraphicsProxyWidget *proxy,
                        const QPixmap &pixmap, const QString &text, QGraphicsSimpleTextItem *label,
                        SoftConArea area, bool noBackground) override;
    void iconNameHasChanged(const FSoftConScene *scene) override;
    double getMinWidth() const override { return 220.0; }
    virtual double getMinWidth(SoftConArea area) const;
    double getMinHeight() const override { return 240.0; }
    double getItemOffset() const override { return 5.0; }
    double getBgLeftOffset() const override { return 10.0; }
    double getBgTopOffset() const override { return 5.0; }
    double getBgRightOffset() const override { return 30.0; }
    double getBgBottomOffset() const override { return 5.0; }
    FSoftConLayoutIconTextMeasurements getIconTextMeasurements() const override;
    QString getIconSizeStr() const override;

private:
    double columnWidth(SoftConArea area) const;
    std::unordered_map<SoftConArea, double> mColumnWidths;
    double mRowHeight = 0;
    double mGap;
};
#endif

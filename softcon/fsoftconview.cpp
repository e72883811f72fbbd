// SPDX-License-Identifier: Apache-2.0
#include "fsoftconview.h"

FSoftConView::FSoftConView(QWidget *parent)
    : QGraphicsView(parent)
{
    setFrameShape(QFrame::NoFrame);
    setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing |
                   QPainter::SmoothPixmapTransform);
    setAccessibleName(tr("Overview of the connector"));
}

void FSoftConView::dragEnterEvent(QDragEnterEvent *event) { QGraphicsView::dragEnterEvent(event); }

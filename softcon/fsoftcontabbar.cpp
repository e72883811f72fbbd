// SPDX-License-Identifier: Apache-2.0
#include "fsoftcontabbar.h"

#include "fsoftwareconnector.h"

void FSoftConTabBar::mousePressEvent(QMouseEvent *event)
{
    Q_EMIT clicked();
    QTabBar::mousePressEvent(event);
}

void FSoftConTabBar::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (dynamic_cast<FSoftwareConnector *>(parent()))
        setCurrentIndex(0);
    QWidget::mouseDoubleClickEvent(event);
}

void FSoftConTabBar::initStyleOption(QStyleOptionTab *option, int tabIndex) const
{
    QTabBar::initStyleOption(option, tabIndex);
}

void FSoftConTabBar::paintEvent(QPaintEvent *event) { QTabBar::paintEvent(event); }

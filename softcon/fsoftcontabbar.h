// SPDX-License-Identifier: Apache-2.0
#ifndef FSOFTCONTABBAR_H
#define FSOFTCONTABBAR_H
#include <QTabBar>

/// The tabs of a workbench; a press on the current one is told too.
class FSoftConTabBar : public QTabBar
{
    Q_OBJECT
public:
    using QTabBar::QTabBar;

Q_SIGNALS:
    void clicked();

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void initStyleOption(QStyleOptionTab *option, int tabIndex) const;
    void paintEvent(QPaintEvent *event) override;
};
#endif

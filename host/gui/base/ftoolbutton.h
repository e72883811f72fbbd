// SPDX-License-Identifier: Apache-2.0
#ifndef FTOOLBUTTON_H
#define FTOOLBUTTON_H
#include <QToolButton>

class FToolButton : public QToolButton
{
    Q_OBJECT
public:
    explicit FToolButton(QWidget *parent = nullptr)
        : QToolButton(parent)
    {
        setIconSize(QSize(getIconSize(), getIconSize()));
    }
    /// Width and height of icons, in pixels of the layout.
    static int getIconSize() { return 20; }
};
#endif

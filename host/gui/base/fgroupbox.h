// SPDX-License-Identifier: Apache-2.0
#ifndef FGROUPBOX_H
#define FGROUPBOX_H
#include <QGroupBox>

/// Controls that belong together, under a heading and without a frame.
class FGroupBox : public QGroupBox
{
    Q_OBJECT
public:
    explicit FGroupBox(const QString &title, QWidget *parent = nullptr)
        : QGroupBox(title, parent)
    {
        setFlat(true);
    }
};
#endif

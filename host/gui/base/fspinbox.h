// SPDX-License-Identifier: Apache-2.0
#ifndef FSPINBOX_H
#define FSPINBOX_H
#include <QFocusEvent>
#include <QSpinBox>

/// A field of whole numbers. The wheel scrolls what is around it, unless it has the focus.
class FSpinBox : public QSpinBox
{
    Q_OBJECT
public:
    explicit FSpinBox(QWidget *parent = nullptr)
        : QSpinBox(parent)
    {
        setFocusPolicy(Qt::StrongFocus);
    }

protected:
    void wheelEvent(QWheelEvent *event) override
    {
        if (hasFocus())
            QSpinBox::wheelEvent(event);
        else
            event->ignore();
    }
};
#endif

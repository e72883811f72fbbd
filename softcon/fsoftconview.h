// SPDX-License-Identifier: Apache-2.0
#ifndef FSOFTCONVIEW_H
#define FSOFTCONVIEW_H
#include <QGraphicsView>

/// Shows the scene of a workbench.
class FSoftConView : public QGraphicsView
{
    Q_OBJECT
public:
    explicit FSoftConView(QWidget *parent = nullptr);

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
};
#endif

// SPDX-License-Identifier: Apache-2.0
#include "fsoftconbase.h"

#include "fviewctrl.h"

#include <QEvent>
#include <QTimer>

F_CLASS_IMPL(FSoftConBase)

FSoftConBase::FSoftConBase(const std::string &name, QWidget *parent)
    : FWidget(name, parent)
{
}

void FSoftConBase::constructFObject()
{
    FWidget::constructFObject();
    if (FObject::mInitPrototype || !FViewCtrl::instance()->hasGui())
        return;
    auto *tabs = new FTabWidget(parentWidget());
    tabs->setDocumentMode(true);
    tabs->installEventFilter(this);
    setWidget(tabs);
}

void FSoftConBase::watch(QWidget *page)
{
    if (page)
        page->installEventFilter(this);
}

bool FSoftConBase::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::Resize:
        resizeRequest();
        requestPaint();
        break;
    case QEvent::Show:
    case QEvent::Paint:
        requestPaint();
        break;
    default:
        break;
    }
    return FWidget::eventFilter(watched, event);
}

void FSoftConBase::requestPaint()
{
    if (mPaintRequested)
        return;
    mPaintRequested = true;
    QTimer::singleShot(0, this, [this] {
        mPaintRequested = false;
        if (widget() && !isDestroyed())
            paintRequest();
    });
}

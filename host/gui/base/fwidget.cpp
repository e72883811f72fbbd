// SPDX-License-Identifier: Apache-2.0
#include "fwidget.h"

#include "fworkspace.h"

F_CLASS_IMPL(FWidget)

namespace {
FWorkspace *&theWorkspace()
{
    static FWorkspace none;
    static FWorkspace *workspace = &none;
    return workspace;
}
} // namespace

FWorkspace *FWorkspace::instance() { return theWorkspace(); }

void FWorkspace::setInstance(FWorkspace *workspace)
{
    static FWorkspace none;
    theWorkspace() = workspace ? workspace : &none;
}

FWidget::FWidget(const std::string &name, QWidget *parent)
    : FManaged(name)
    , mParent(parent)
{
}

FWidget::~FWidget()
{
    if (mWidget)
        FWorkspace::instance()->removeDocument(this);
    delete mWidget.data();
}

void FWidget::setAsCentralWidget()
{
    if (mWidget)
        FWorkspace::instance()->addDocument(this);
}

void FWidget::setVisible(bool visible)
{
    mVisible = visible;
    if (mWidget)
        FWorkspace::instance()->showDocument(this, visible);
}

void FWidget::setTitles(const std::string &title)
{
    mTitle = Q(title);
    if (mWidget)
        FWorkspace::instance()->documentChanged(this);
}

void FWidget::setIcon(const QIcon &icon)
{
    mIcon = icon;
    if (mWidget)
        FWorkspace::instance()->documentChanged(this);
}

void FWidget::destructFObject() { FManaged::destructFObject(); }

void FWidget::dropPage()
{
    if (!mWidget)
        return;
    FWorkspace::instance()->removeDocument(this);
    mWidget->deleteLater(); // an event of it may be under way
    mWidget = nullptr;
}

void FWidget::retire()
{
    dropPage();
    FManaged::retire();
}

void FWidget::projectClosed()
{
    dropPage(); // which may refer back to the object
    FManaged::projectClosed();
}

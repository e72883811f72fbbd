// SPDX-License-Identifier: Apache-2.0
#include "fdialog.h"

#include "ftext.h"
#include "ftheme.h"
#include "fworkspace.h"

#include <QDialogButtonBox>
#include <QIcon>
#include <QVBoxLayout>

FDialog::FDialog(const std::string &title, const QIcon &icon, bool modal, bool resizable,
                 bool closeButton, bool, bool, bool)
    : QDialog(FWorkspace::instance()->window())
    , mLayout(new QVBoxLayout(this))
{
    setWindowTitle(Q(title));
    setWindowIcon(icon);
    setModal(modal);
    const int space = FTheme::space(3);
    mLayout->setContentsMargins(space, space, space, space);
    mLayout->setSpacing(space);
    if (resizable)
        resize(480, 560);
    else
        mLayout->setSizeConstraint(QLayout::SetFixedSize);
    if (closeButton) {
        auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
        connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
        mLayout->addWidget(buttons);
    }
}

void FDialog::setContent(QWidget *content) { mLayout->insertWidget(0, content, 1); }

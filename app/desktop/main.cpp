// SPDX-License-Identifier: Apache-2.0
#include "fobject.h"
#include "fproject.h"
#include "ftheme.h"

#include <QApplication>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QApplication::setApplicationName("turnbuckle-desktop");
    QApplication::setApplicationVersion(F_VERSION);
    FTheme::instance()->setChoice(FTheme::Choice::System);
    FObject::initPrototypes();
    FProject::instance()->clear();
    return 0;
}

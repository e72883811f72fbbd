// SPDX-License-Identifier: Apache-2.0
#include "desktop.h"

#include "fcmdmanager.h"
#include "fmainwindow.h"
#include "fprojectcontrol.h"
#include "fsettingsdialog.h"
#include "fsoftconlooks.h"
#include "ftheme.h"

#include <QApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTimer>
#include <iostream>

int FDesktop::run(const FDesktopOptions &options)
{
    FTheme::Choice choice;
    if (FTheme::fromText(Q(options.theme), &choice))
        FTheme::instance()->setChoice(choice);
    else
        FSettingsDialog::applyTheme();
    FSettingsDialog::applyHistoryLimit();
    FSoftConLooks::add();
    FMainWindow window;
    FSoftConLooks::addTo(&window);
    window.show();
    if (!options.project.empty()) {
        const QString path = Q(options.project);
        // The window takes input first.
        QTimer::singleShot(0, &window, [path] { FProjectControl::instance()->open(path); });
    }
    return QApplication::exec();
}

int FDesktop::printCommands()
{
    QJsonArray list;
    for (const auto &info : FCmdManager::instance()->all())
        list.append(FCommands::json(*info));
    std::cout << QJsonDocument(list).toJson().constData();
    return std::cout.flush() ? 0 : 1;
}

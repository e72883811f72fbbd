// SPDX-License-Identifier: Apache-2.0
#include "factions.h"

#include "ficons.h"

#include <QCoreApplication>
#include <QPointer>
#include <QTimer>

FActions *FActions::instance()
{
    // The application takes the actions along: they may not outlive it.
    static QPointer<FActions> actions;
    if (!actions) {
        actions = new FActions;
        actions->setParent(QCoreApplication::instance());
    }
    return actions;
}

QAction *FActions::add(const FActionInfo &info)
{
    auto *action = new QAction(FIcons::icon(info.icon), info.text, this);
    action->setObjectName(info.id);
    action->setShortcut(info.shortcut);
    action->setCheckable(bool(info.isOn));
    mInfos.push_back(info);
    mActions[info.id] = action;
    connect(action, &QAction::triggered, this, [this, run = info.run] {
        Q_EMIT aboutToRun();
        if (run)
            run();
        refreshSoon();
    });
    refreshSoon();
    Q_EMIT added(info.id);
    return action;
}

void FActions::clear()
{
    for (const auto &one : mActions)
        delete one.second;
    mActions.clear();
    mInfos.clear();
}

QAction *FActions::action(const QString &id) const
{
    const auto found = mActions.find(id);
    return found == mActions.end() ? nullptr : found->second;
}

void FActions::refresh()
{
    for (const FActionInfo &info : mInfos) {
        QAction *action = mActions[info.id];
        const QString why = info.whyNot ? info.whyNot() : QString();
        action->setEnabled(why.isEmpty());
        const QString now = info.textNow ? info.textNow() : QString();
        action->setText(now.isEmpty() ? info.text : now);
        QString tip = info.toolTip;
        if (!info.shortcut.isEmpty())
            tip += QStringLiteral(" (%1)").arg(info.shortcut.toString(QKeySequence::NativeText));
        if (!why.isEmpty())
            tip += QStringLiteral("\n") + tr("Not now: %1").arg(why);
        action->setToolTip(tip);
        action->setStatusTip(why.isEmpty() ? info.toolTip : why);
        if (info.isOn)
            action->setChecked(info.isOn());
    }
}

void FActions::refreshSoon()
{
    if (mRefreshing)
        return;
    mRefreshing = true;
    QTimer::singleShot(0, this, [this] {
        mRefreshing = false;
        refresh();
    });
}

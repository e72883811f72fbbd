// SPDX-License-Identifier: Apache-2.0
#include "fsettingsdialog.h"

#include "fhistory.h"
#include "fini.h"
#include "fruncontrol.h"
#include "fsoftconbase.h"
#include "ftheme.h"

#include <QComboBox>
#include <QFormLayout>
#include <QIcon>
#include <QSpinBox>

namespace {
const char *const kTheme = "Desktop/theme";
const char *const kPathLength = "Software Connector/Input File Path Length";
const char *const kHistoryLimit = "Desktop/historyLimit"; // MiB
constexpr int kUsualPathLength = 30;
} // namespace

void FSettingsDialog::applyTheme()
{
    FTheme::Choice choice = FTheme::Choice::System;
    FTheme::fromText(FIni().value(QLatin1String(kTheme)).toString(), &choice);
    FTheme::instance()->setChoice(choice);
}

void FSettingsDialog::applyHistoryLimit()
{
    bool isNumber = false;
    const int limit = FIni().value(QLatin1String(kHistoryLimit)).toInt(&isNumber);
    if (isNumber && limit > 0)
        FHistory::instance()->setLimit(size_t(limit) << 20);
}

FSettingsDialog::FSettingsDialog()
    : FDialog(S(tr("Settings")), QIcon(), true, false, true)
{
    setObjectName(QStringLiteral("settingsDialog"));
    auto *content = new QWidget(this);
    auto *form = new QFormLayout(content);
    form->setContentsMargins(0, 0, 0, 0);
    form->setHorizontalSpacing(FTheme::space(4));
    form->setVerticalSpacing(FTheme::space(2));

    auto *theme = new QComboBox(content);
    theme->setObjectName(QStringLiteral("theme"));
    const QStringList words{tr("As the system"), tr("Light"), tr("Dark")};
    for (int i = 0; i < 3; ++i)
        theme->addItem(words[i], FTheme::toText(FTheme::Choice(i)));
    theme->setCurrentIndex(int(FTheme::instance()->choice()));
    connect(theme, qOverload<int>(&QComboBox::activated), this, [theme] {
        FIni().setValue(QLatin1String(kTheme), theme->currentData());
        applyTheme();
    });
    form->addRow(tr("&Theme"), theme);

    auto *jobs = new QSpinBox(content);
    jobs->setObjectName(QStringLiteral("jobs"));
    jobs->setRange(1, 1000);
    jobs->setValue(FRunControl::instance()->jobs());
    jobs->setToolTip(tr("How many programs run side by side"));
    connect(jobs, qOverload<int>(&QSpinBox::valueChanged), FRunControl::instance(),
            &FRunControl::setJobs);
    form->addRow(tr("Runs at &once"), jobs);

    auto *length = new QSpinBox(content);
    length->setObjectName(QStringLiteral("pathLength"));
    length->setRange(-1, 1000);
    length->setSpecialValueText(tr("whole"));
    length->setSuffix(tr(" letters"));
    bool isNumber = false;
    const int set = FIni().value(QLatin1String(kPathLength)).toInt(&isNumber);
    length->setValue(isNumber ? set : kUsualPathLength);
    length->setToolTip(tr("How much of a file's path a label of the workbench shows"));
    connect(length, qOverload<int>(&QSpinBox::valueChanged), this, [](int value) {
        FIni().setValue(QLatin1String(kPathLength), value);
        for (const auto &workbench : FSoftConBase::all())
            if (const auto one = workbench.getPtr())
                one->updateInputFileItems();
    });
    form->addRow(tr("&Paths in labels"), length);

    auto *history = new QSpinBox(content);
    history->setObjectName(QStringLiteral("historyLimit"));
    history->setRange(16, 1 << 16);
    history->setSuffix(tr(" MB"));
    history->setValue(int(FHistory::instance()->limit() >> 20));
    history->setToolTip(tr("Memory that steps which can be undone may take; the oldest go first"));
    connect(history, qOverload<int>(&QSpinBox::valueChanged), this, [](int value) {
        FIni().setValue(QLatin1String(kHistoryLimit), value);
        applyHistoryLimit();
    });
    form->addRow(tr("&Undo keeps"), history);
    setContent(content);
}

// SPDX-License-Identifier: Apache-2.0
#ifndef FSETTINGSDIALOG_H
#define FSETTINGSDIALOG_H
#include "fdialog.h"

/// The settings of the program. Each takes effect at once.
class FSettingsDialog : public FDialog
{
    Q_OBJECT
public:
    FSettingsDialog();
    /// The theme that the settings ask for.
    static void applyTheme();
    /// Takes the limit of the history from the settings.
    static void applyHistoryLimit();
};
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FATTRIBCMDSETAVERAGEROWS_H
#define FATTRIBCMDSETAVERAGEROWS_H
#include "fcmd.h"

#include <QPointer>

class FGenIntResultsFileEditor;

/// Sets over how many last rows the value under edit is averaged; the row "Average" of the editor
/// of a result template holds one.
class FAttribCmdSetAverageRows : public FAttribCmd
{
    F_CLASS(FAttribCmdSetAverageRows, FAttribCmd)
public:
    explicit FAttribCmdSetAverageRows(FGenIntResultsFileEditor *editor = nullptr);
    ~FAttribCmdSetAverageRows() override;
    /// The rows of the value under edit as they are given; 0 without a template.
    FExprBase getCurrentValue(bool *differs = nullptr) const;
    /// Hands the argument to the editor, if that still lives. Without one the result is cleared.
    void doUpdate() const override;
    /// Sets the argument and hands it on; the reason if it is no number of rows.
    FReason take(const FExprBase &rows);
    static void initCmds() {}

private:
    QPointer<FGenIntResultsFileEditor> mEditor;
};
#endif

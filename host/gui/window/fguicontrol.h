// SPDX-License-Identifier: Apache-2.0
#ifndef FGUICONTROL_H
#define FGUICONTROL_H
#include "fviewctrl.h"

class FMainWindow;

/// What the model asks of the views, answered by the window; and the dialogs behind FIO.
class FGuiControl : public FViewCtrl
{
public:
    explicit FGuiControl(FMainWindow *window);
    ~FGuiControl() override;
    bool hasGui() const override { return true; }
    bool hasSmallScreen() const override;
    QString getOpenFileName(const QString &title, std::string *directory,
                            const QString &filter) override;
    void highlight(const std::vector<FExpr<FObject, true>> &objects) override;
    void openObjectEditor(const std::vector<FExpr<FObject, true>> &objects) override;
    QWidget *makeObjectEditor(const std::vector<FExpr<FObject, true>> &objects) override;

private:
    FMainWindow *mWindow;
};
#endif

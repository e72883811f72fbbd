// SPDX-License-Identifier: Apache-2.0
#ifndef FPROBLEMSPANEL_H
#define FPROBLEMSPANEL_H
#include <QStandardItemModel>
#include <QWidget>
#include <functional>
#include <vector>

class FPanelTable;

/// One thing that would go wrong in a run, or might.
struct FProblem
{
    bool isError = true;
    QString object, file, message; ///< the message tells what was found and expected
    int line = 0, column = 0;      ///< from 1; 0 where there is none
};

/// The panel "Problems": what the check finds. Who checks and who shows a place are given: the
/// panel knows no library.
class FProblemsPanel : public QWidget
{
    Q_OBJECT
public:
    using Check = std::function<std::vector<FProblem>()>;
    explicit FProblemsPanel(QWidget *parent = nullptr);
    static void setCheck(Check check);
    static bool hasCheck();
    /// Checks now; while the panel is seen, again when the model has been changed and is at rest.
    void check();
    int count() const { return int(mProblems.size()); }

Q_SIGNALS:
    void countChanged(int count);
    void opened(const FProblem &problem);

protected:
    void showEvent(QShowEvent *event) override;

private:
    void modelChanged();
    std::vector<FProblem> mProblems;
    QStandardItemModel *mModel;
    FPanelTable *mTable;
    class QTimer *mRest;
    bool mIsOld = true, mWasChecked = false;
};
#endif

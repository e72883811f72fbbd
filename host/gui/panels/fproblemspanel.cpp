// SPDX-License-Identifier: Apache-2.0
#include "fproblemspanel.h"

#include "fchanges.h"
#include "ficons.h"
#include "fpaneltable.h"

#include <QHeaderView>
#include <QTimer>
#include <QVBoxLayout>

namespace {
FProblemsPanel::Check &theCheck()
{
    static FProblemsPanel::Check check;
    return check;
}
constexpr int kRestMilliseconds = 800;
} // namespace

void FProblemsPanel::setCheck(Check check) { theCheck() = std::move(check); }
bool FProblemsPanel::hasCheck() { return bool(theCheck()); }

FProblemsPanel::FProblemsPanel(QWidget *parent)
    : QWidget(parent)
    , mModel(new QStandardItemModel(this))
    , mTable(new FPanelTable(this, tr("Not checked yet. Check (F8) tells what would go wrong in a "
                                      "run, before anything is run.")))
    , mRest(new QTimer(this))
{
    mTable->setObjectName(QStringLiteral("problems"));
    mTable->setAccessibleName(tr("Problems"));
    mModel->setHorizontalHeaderLabels({tr("Kind"), tr("Object"), tr("Place"), tr("Problem")});
    mTable->setModel(mModel);
    const int letter = fontMetrics().averageCharWidth();
    mTable->setColumnWidth(0, letter * 12);
    mTable->setColumnWidth(1, letter * 22);
    mTable->setColumnWidth(2, letter * 24);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(mTable);
    mRest->setSingleShot(true);
    mRest->setInterval(kRestMilliseconds);
    connect(
        mRest, &QTimer::timeout, this,
        [this] {
            if (isVisible() && mIsOld)
                check();
        });
    connect(mTable, &FPanelTable::opened, this, [this](const QModelIndex &index) {
        if (index.row() < count())
            Q_EMIT opened(mProblems[size_t(index.row())]);
    });
    FChanges *feed = FChanges::instance();
    connect(feed, &FChanges::historyChanged, this, &FProblemsPanel::modelChanged);
    connect(feed, &FChanges::projectChanged, this, [this](unsigned events) {
        if (!(events & (FChanges::Opened | FChanges::Closed)))
            return;
        mProblems.clear();
        mModel->setRowCount(0);
        mWasChecked = false;
        mIsOld = true;
        Q_EMIT countChanged(0);
    });
}

void FProblemsPanel::modelChanged()
{
    mIsOld = true;
    if (mWasChecked)
        mRest->start();
}

void FProblemsPanel::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (mWasChecked && mIsOld)
        mRest->start();
}

void FProblemsPanel::check()
{
    if (!theCheck())
        return;
    const std::vector<FProblem> before = std::exchange(mProblems, theCheck()());
    mIsOld = false;
    mWasChecked = true;
    mTable->setEmptyText(tr("Nothing to complain of: a run can start."));
    const int current = mTable->currentIndex().row();
    mModel->setRowCount(count());
    for (int row = 0; row < count(); ++row) {
        const FProblem &problem = mProblems[size_t(row)];
        QString place = problem.file;
        if (problem.line > 0)
            place += QStringLiteral(":%1").arg(problem.line);
        if (problem.line > 0 && problem.column > 0)
            place += QStringLiteral(":%1").arg(problem.column);
        const QStringList texts{problem.isError ? tr("Error") : tr("Hint"), problem.object, place,
                                problem.message};
        for (int column = 0; column < texts.size(); ++column) {
            auto *item = new QStandardItem(texts[column]);
            item->setToolTip(texts[column]);
            if (column == 0)
                item->setIcon(FIcons::icon(problem.isError ? QStringLiteral(":/logError")
                                                           : QStringLiteral(":/logWarning")));
            mModel->setItem(row, column, item);
        }
    }
    if (current >= 0 && current < count())
        mTable->selectRow(current);
    Q_EMIT countChanged(count());
}

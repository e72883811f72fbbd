// SPDX-License-Identifier: Apache-2.0
#include "fdesignspage.h"

#include "factions.h"
#include "fcounted.h"
#include "fdesignsmodel.h"
#include "fdesignstable.h"
#include "fdispatcher.h"
#include "fhistory.h"
#include "ficons.h"
#include "flogmsg.h"
#include "fobjectclipboard.h"
#include "fobjectmanager.h"
#include "fpathmanager.h"
#include "fruncontrol.h"
#include "fscripterror.h"
#include "fselectionset.h"
#include "ftheme.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QDir>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QSortFilterProxyModel>
#include <QToolButton>
#include <QUrl>
#include <QVBoxLayout>

FDesignsPage::FDesignsPage(QWidget *parent)
    : QWidget(parent)
    , mModel(new FDesignsModel(this))
    , mShown(new QSortFilterProxyModel(this))
    , mTable(new FDesignsTable(this))
    , mCounts(new QLabel(this))
    , mReason(new QLabel(this))
    , mFilter(new QLineEdit(this))
{
    mShown->setSourceModel(mModel);
    mShown->setSortRole(FDesignsModel::SortRole);
    mShown->setDynamicSortFilter(false); // a run that ends moves no row
    mShown->setFilterKeyColumn(-1);
    mShown->setFilterCaseSensitivity(Qt::CaseInsensitive);
    mTable->setModel(mShown);
    mTable->setSortingEnabled(true);
    mTable->horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
    mShown->sort(-1);
    auto *delegate = new FDesignsDelegate(mTable);
    mTable->setItemDelegate(delegate);
    mTable->setContextMenuPolicy(Qt::CustomContextMenu);

    auto *tools = new QHBoxLayout;
    tools->setContentsMargins(FTheme::space(3), FTheme::space(2), FTheme::space(3),
                              FTheme::space(2));
    tools->setSpacing(FTheme::space(1));
    makeTools(tools);
    mReason->setObjectName(QStringLiteral("reason"));
    mReason->setWordWrap(true);
    mReason->setContentsMargins(FTheme::space(3), 0, FTheme::space(3), FTheme::space(2));
    mReason->hide();
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(tools);
    layout->addWidget(mReason);
    layout->addWidget(mTable);
    setFocusProxy(mTable);

    connect(delegate, &FDesignsDelegate::refused, this, &FDesignsPage::tell);
    connect(mTable, &FDesignsTable::copyRequested, this, &FDesignsPage::copy);
    connect(mTable, &FDesignsTable::pasteRequested, this, &FDesignsPage::paste);
    connect(mTable, &FDesignsTable::clearRequested, this, &FDesignsPage::clearCells);
    connect(mTable, &FDesignsTable::duplicateRequested, this, &FDesignsPage::duplicate);
    connect(mTable, &QTableView::customContextMenuRequested, this, &FDesignsPage::showMenu);
    connect(mTable, &QTableView::doubleClicked, this, &FDesignsPage::openAt);
    connect(mTable->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        std::vector<FExprBase> objects;
        for (const auto &design : selected())
            objects.emplace_back(design);
        if (mTable->hasFocus())
            FSelectionSet::instance()->set(objects, true);
        updateTools();
    });
    connect(mModel, &FDesignsModel::countsChanged, this, &FDesignsPage::updateTools);
    connect(FRunControl::instance(), &FRunControl::changed, this, &FDesignsPage::updateTools);
    connect(FChanges::instance(), &FChanges::historyChanged, mReason, &QWidget::hide);
    updateTools();
}

QTableView *FDesignsPage::table() const { return mTable; }

void FDesignsPage::makeTools(QHBoxLayout *layout)
{
    const auto add = [this, layout](const char *name, const char *icon, const QString &text,
                                    const QString &tip, auto run) {
        auto *button = new QToolButton(this);
        button->setObjectName(QLatin1String(name));
        button->setText(text);
        button->setToolTip(tip);
        button->setAutoRaise(true);
        button->setIconSize(QSize(18, 18));
        button->setFocusPolicy(Qt::TabFocus);
        if (*icon) {
            button->setIcon(FIcons::icon(QLatin1String(icon)));
            button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        }
        connect(button, &QToolButton::clicked, this, run);
        layout->addWidget(button);
        return button;
    };
    add(
        "newDesign", ":/add", tr("New"), tr("A design with the baseline's values"),
        [this] { newDesign(); });
    mDuplicate = add(
        "duplicateDesign", ":/duplicate", tr("Duplicate"),
        tr("Designs of the same values (Ctrl+D)"), [this] { duplicate(); });
    mDelete = add("deleteDesign", ":/delete", tr("Delete"), tr("Delete the selected designs"),
                  [this] { remove(); });
    auto *line = new QFrame(this);
    line->setObjectName(QStringLiteral("verticalSplitLine"));
    line->setFixedSize(1, 20);
    layout->addSpacing(FTheme::space(1));
    layout->addWidget(line);
    layout->addSpacing(FTheme::space(1));
    mRunSelected = add(
        "runSelectedDesigns", ":/start", tr("Run selected"), tr("Run the selected designs"),
        [this] { FRunControl::instance()->run(selected()); });
    mRunFailed = add(
        "runFailedDesigns", "", tr("Run failed"), tr("Run the designs whose last run failed again"),
        [] { FRunControl::instance()->runFailed(); });
    add("runAllDesigns", "", tr("Run all"),
        tr("Run every design; finished runs of the same inputs stay"),
        [] { FRunControl::instance()->runAll(); });
    layout->addStretch();
    mCounts->setObjectName(QStringLiteral("muted"));
    layout->addWidget(mCounts);
    layout->addSpacing(FTheme::space(2));
    mFilter->setObjectName(QStringLiteral("designsFilter"));
    mFilter->setAccessibleName(tr("Filter of the designs"));
    mFilter->setPlaceholderText(tr("Filter"));
    mFilter->setClearButtonEnabled(true);
    mFilter->setMaximumWidth(160);
    mFilter->addAction(FIcons::icon(QStringLiteral(":/find")), QLineEdit::LeadingPosition);
    connect(mFilter, &QLineEdit::textChanged, mShown, &QSortFilterProxyModel::setFilterFixedString);
    layout->addWidget(mFilter);
}

void FDesignsPage::updateTools()
{
    const auto designs = selected();
    const bool onlyBaseline =
        designs.empty() || (designs.size() == 1 && designs.front() == FDesign::baseline());
    const FRunControl *runs = FRunControl::instance();
    const QString why = runs->whyNot();
    mDuplicate->setEnabled(!designs.empty());
    mDelete->setEnabled(!onlyBaseline);
    mRunSelected->setEnabled(why.isEmpty() && !designs.empty());
    const auto counts = mModel->finishedAndFailed();
    mRunFailed->setEnabled(why.isEmpty() && counts.second > 0);
    QString text = counted(mModel->rowCount(), tr("%1 design"), tr("%1 designs"));
    if (counts.first > 0)
        text += tr(", %1 finished").arg(counts.first);
    if (counts.second > 0)
        text += tr(", %1 failed").arg(counts.second);
    mCounts->setText(text);
}

void FDesignsPage::tell(const QString &reason)
{
    mReason->setText(reason);
    mReason->setVisible(!reason.isEmpty());
}

std::vector<std::shared_ptr<FDesign>> FDesignsPage::selected() const
{
    std::set<int> rows;
    for (const QItemSelectionRange &range : mTable->selectionModel()->selection())
        for (int row = range.top(); row <= range.bottom(); ++row)
            rows.insert(row);
    std::vector<std::shared_ptr<FDesign>> designs;
    designs.reserve(rows.size());
    for (const int row : rows)
        designs.push_back(mModel->design(mShown->mapToSource(mShown->index(row, 0)).row()));
    return designs;
}

namespace {
std::string freeDesignName()
{
    for (int i = 1;; ++i) {
        std::string name = "d" + std::to_string(i);
        if (!FObjectManager::instance()->find(name))
            return name;
    }
}
} // namespace

void FDesignsPage::newDesign()
{
    const FResult made = FDispatcher::create("design", freeDesignName());
    if (!made.error.empty())
        tell(Q(made.error.text()));
    else
        FSelectionSet::instance()->set({made.value}, true);
}

void FDesignsPage::duplicate()
{
    const auto designs = selected();
    if (designs.empty())
        return;
    const std::vector<FExprBase> receivers(designs.begin(), designs.end());
    const FResult result = FDispatcher::execute(receivers, "duplicate");
    if (!result.error.empty())
        tell(Q(result.error.text()));
}

void FDesignsPage::remove()
{
    FObjectClipboard::Objects objects;
    for (const auto &design : selected())
        if (design != FDesign::baseline())
            objects.push_back(design);
    FObjectClipboard::remove(objects);
}

QString FDesignsPage::wholeText(const QModelIndex &index)
{
    const QVariant number = index.data(FDesignsModel::SortRole);
    return number.type() == QVariant::Double ? Q(printedNumber(number.toDouble()))
                                             : index.data().toString();
}

void FDesignsPage::copy()
{
    const QItemSelection selection = mTable->selectionModel()->selection();
    if (selection.isEmpty())
        return;
    QRect room;
    for (const QItemSelectionRange &range : selection)
        room |= QRect(QPoint(range.left(), range.top()), QPoint(range.right(), range.bottom()));
    QStringList lines;
    const auto line = [&](auto textOf) {
        QStringList cells;
        for (int visual = 0; visual < mShown->columnCount(); ++visual) {
            const int column = mTable->horizontalHeader()->logicalIndex(visual);
            if (column >= room.left() && column <= room.right())
                cells << QString(textOf(column)).replace('\t', ' ').replace('\n', ' ');
        }
        lines << cells.join('\t');
    };
    const bool isWhole = room.left() == 0 && room.width() == mShown->columnCount();
    if (isWhole)
        line([this](int column) { return mShown->headerData(column, Qt::Horizontal).toString(); });
    for (int row = room.top(); row <= room.bottom(); ++row)
        line([&](int column) {
            const QModelIndex index = mShown->index(row, column);
            return wholeText(index);
        });
    QGuiApplication::clipboard()->setText(lines.join('\n') + '\n');
}

/// Rows of tabs: from the current cell on, or by the names of columns in a first row. All of it or
/// nothing.
void FDesignsPage::paste()
{
    QString text = QGuiApplication::clipboard()->text();
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    while (text.endsWith('\n'))
        text.chop(1);
    if (text.isEmpty())
        return;
    QStringList lines = text.split('\n');
    QVector<int> columns; // of the model, by cell
    const QStringList first = lines.front().split('\t');
    for (const QString &cell : first)
        for (int column = 0; column < mModel->columnCount(); ++column)
            if (mModel->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString() ==
                cell.trimmed())
                columns << column;
    const bool hasHeader = columns.size() == first.size();
    int row = mTable->currentIndex().isValid() ? mTable->currentIndex().row() : mShown->rowCount();
    if (hasHeader) {
        lines.removeFirst();
        row = mShown->rowCount(); // named columns: designs of their own
    } else {
        columns.clear();
        const QHeaderView *header = mTable->horizontalHeader();
        bool isNumber = false;
        first.front().trimmed().toDouble(&isNumber);
        int visual = mTable->currentIndex().isValid()
                         ? header->visualIndex(mTable->currentIndex().column())
                         : int(isNumber); // rows that begin with a name bring it
        for (int i = 0; i < first.size() && visual < mShown->columnCount(); ++i, ++visual)
            columns << header->logicalIndex(visual);
    }
    struct Origin
    {
        int row, column;
    };
    QStringList script;
    std::vector<Origin> origins; // of the lines of the script
    std::set<std::string> given;
    int next = 1;
    for (int i = 0; i < lines.size(); ++i, ++row) {
        const QStringList cells = lines[i].split('\t');
        QString design;
        if (row < mShown->rowCount()) {
            design = Q(mModel->design(mShown->mapToSource(mShown->index(row, 0)).row())->getName());
        } else {
            std::string name;
            const int nameCell = columns.indexOf(0);
            if (nameCell >= 0 && nameCell < cells.size())
                name = S(cells[nameCell].trimmed());
            while (name.empty() || given.count(name) || FObjectManager::instance()->find(name)) {
                if (!name.empty() && name[0] != 'd' && !given.count(name)) {
                    name += "_1"; // taken already
                    continue;
                }
                name = "d" + std::to_string(next++);
            }
            given.insert(name);
            design = Q(name);
            script << QStringLiteral("design %1();").arg(design);
            origins.push_back({i, 0});
        }
        for (int k = 0; k < cells.size() && k < columns.size(); ++k) {
            const QString cell = cells[k].trimmed();
            const FDesignsModel::Kind kind = mModel->kind(columns[k]);
            if (kind == FDesignsModel::Variable) {
                if (cell.isEmpty() && row >= mShown->rowCount())
                    continue;
                script << mModel->assignment(design, columns[k], cell);
                origins.push_back({i, k});
            } else if (!hasHeader && kind != FDesignsModel::Name) {
                tell(tr("Nothing was pasted: row %1, column %2: %3 can't be edited")
                         .arg(i + 1)
                         .arg(k + 1)
                         .arg(mModel->headerData(columns[k], Qt::Horizontal, Qt::DisplayRole)
                                  .toString()));
                return;
            }
        }
        if (!hasHeader && cells.size() > columns.size()) {
            tell(tr("Nothing was pasted: row %1 has %2 cells, and there is room for %3")
                     .arg(i + 1)
                     .arg(cells.size())
                     .arg(columns.size()));
            return;
        }
    }
    std::vector<FScriptError> errors;
    const FHistoryTransaction step(nullptr, S(tr("Paste designs")), true);
    const FResult result = FDispatcher::script(S(script.join('\n')), &errors);
    if (result.error.empty())
        return;
    const size_t line = errors.empty() ? 0 : errors.front().line;
    if (line >= 1 && line <= origins.size())
        tell(tr("Nothing was pasted: row %1, column %2: %3")
                 .arg(origins[line - 1].row + 1)
                 .arg(origins[line - 1].column + 1)
                 .arg(Q(errors.front().reason.text())));
    else
        tell(tr("Nothing was pasted: %1").arg(Q(result.error.text())));
}

/// Back to the baseline's values.
void FDesignsPage::clearCells()
{
    QStringList script;
    for (const QModelIndex &shown : mTable->selectionModel()->selectedIndexes()) {
        const QModelIndex index = mShown->mapToSource(shown);
        const auto &design = mModel->design(index.row());
        if (mModel->kind(index.column()) != FDesignsModel::Variable ||
            design == FDesign::baseline())
            continue;
        const auto &parameter = static_cast<const FParameter &>(*mModel->object(index.column()));
        if (design->valueOf(&parameter))
            script << mModel->assignment(Q(design->getName()), index.column(), QString());
    }
    if (script.isEmpty())
        return;
    const FHistoryTransaction step(nullptr, S(tr("Clear values")), true);
    FDispatcher::script(S(script.join('\n')));
}

void FDesignsPage::openAt(const QModelIndex &shown)
{
    const QModelIndex index = mShown->mapToSource(shown);
    switch (mModel->kind(index.column())) {
    case FDesignsModel::Output: {
        const FTableRow::Place place = mModel->place(index.row(), index.column());
        if (place.line <= 0)
            break;
        Q_EMIT placeRequested(place.file, int(place.line), qMax(0, place.first - 1),
                              place.first > 0 ? place.last - place.first + 1 : 0);
        break;
    }
    case FDesignsModel::State:
        Q_EMIT outputRequested(
            std::static_pointer_cast<FExternComputation>(mModel->object(index.column())),
            mModel->design(index.row()));
        break;
    default:
        break;
    }
}

void FDesignsPage::showMenu(const QPoint &place)
{
    const QModelIndex shown = mTable->indexAt(place);
    const QModelIndex index = mShown->mapToSource(shown);
    QMenu menu(this);
    menu.setObjectName(QStringLiteral("designsMenu"));
    const auto add = [&](const char *icon, const QString &text, bool enabled, auto run) {
        QAction *action = menu.addAction(FIcons::icon(QLatin1String(icon)), text);
        action->setEnabled(enabled);
        connect(action, &QAction::triggered, this, run);
    };
    if (index.isValid()) {
        const auto design = mModel->design(index.row());
        add(":/start", tr("Run"), FRunControl::instance()->whyNot().isEmpty(),
            [this] { FRunControl::instance()->run(selected()); });
        std::vector<unsigned> ids;
        for (const FRunQueue::Item &item : FRunQueue::background()->items())
            if (item.design == design->getName())
                ids.push_back(item.id);
        add(":/stop", tr("Stop the runs of this design"), !ids.empty(), [ids] {
            for (const unsigned id : ids)
                FRunQueue::background()->cancel(id);
        });
        std::shared_ptr<FExternComputation> computation;
        if (mModel->kind(index.column()) == FDesignsModel::State)
            computation =
                std::static_pointer_cast<FExternComputation>(mModel->object(index.column()));
        else
            for (const auto &one : getManageds<FExternComputation>())
                if (!computation)
                    computation = one.getPtr();
        const QString folder =
            computation ? Q(FPathManager::instance()->getResultsDirAbs(computation, design))
                        : QString();
        add(
            ":/folder", tr("Open the run's folder"), QDir(folder).exists(),
            [folder] { QDesktopServices::openUrl(QUrl::fromLocalFile(folder)); });
        add(":/output", tr("Show the run's output"), QDir(folder).exists(),
            [this, computation, design] { Q_EMIT outputRequested(computation, design); });
        menu.addSeparator();
        add(":/design", tr("Show this design everywhere"), design != FDesign::chosen(),
            [design] { FDesign::setCurrent(design); });
        menu.addSeparator();
    }
    add(
        ":/add", tr("New"), true, [this] { newDesign(); });
    add(
        ":/duplicate", tr("Duplicate"), index.isValid(), [this] { duplicate(); });
    add(
        ":/copy", tr("Copy"), index.isValid(), [this] { copy(); });
    add(
        ":/paste", tr("Paste"), !QGuiApplication::clipboard()->text().isEmpty(),
        [this] { paste(); });
    add(":/delete", tr("Delete"), mDelete->isEnabled(), [this] { remove(); });
    menu.exec(mTable->viewport()->mapToGlobal(place));
}

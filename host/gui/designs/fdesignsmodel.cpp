// SPDX-License-Identifier: Apache-2.0
#include "fdesignsmodel.h"

#include "fdispatcher.h"
#include "ficons.h"
#include "fobjectmanager.h"
#include "fproperty.h"
#include "fruncontrol.h"
#include "fstudy.h"
#include "ftheme.h"

#include <QFont>
#include <algorithm>

namespace {
constexpr int kTellMilliseconds = 40;
/// What a parameter reads when it is the value of one result and nothing else.
struct Reading
{
    std::shared_ptr<FExternComputation> computation;
    std::string table, value;
};

std::string textOf(const FExprBase &argument)
{
    const auto text = argument.ptr<FString>();
    return text ? text->value() : std::string();
}

Reading readingOf(const FParameter &parameter)
{
    Reading reading;
    const auto root = parameter.getValue().getExpr();
    const FCmd *element = root ? root->isFCmd() : nullptr;
    const auto inner = element ? element->getReceiver().getExpr() : nullptr;
    const FCmd *table = inner ? inner->isFCmd() : nullptr;
    const auto first = table ? table->getReceiver().getExpr() : nullptr;
    const FCmd *results = first ? first->isFCmd() : nullptr;
    if (!results || element->info().name != "getElementAt" || table->info().name != "getTable" ||
        results->info().name != "getResults")
        return reading;
    reading.computation =
        std::dynamic_pointer_cast<FExternComputation>(results->getReceiver().getExpr());
    reading.table = textOf(table->getArgument(0));
    reading.value = textOf(element->getArgument(0));
    return reading;
}

const FTableRow *find(const std::vector<FRunStore::Table> &tables, const Reading &reading)
{
    for (const FRunStore::Table &table : tables)
        if (table.name == reading.table)
            for (const FTableRow &row : table.rows)
                if (row.name == reading.value)
                    return &row;
    return nullptr;
}
} // namespace

FDesignsModel::FDesignsModel(QObject *parent)
    : QAbstractTableModel(parent)
{
    FChanges *feed = FChanges::instance();
    connect(feed, &FChanges::changed, this, &FDesignsModel::follow);
    connect(feed, &FChanges::projectChanged, this, [this](unsigned events) {
        if (events & (FChanges::Opened | FChanges::Closed))
            restructure();
    });
    connect(feed, &FChanges::projectClosing, this, [this] {
        syncRows({});
        syncColumns({nullptr}, 0, 0);
    });
    mTell.setSingleShot(true);
    mTell.setInterval(kTellMilliseconds);
    connect(
        &mTell, &QTimer::timeout, this,
        [this] {
            if (!mRows.empty())
                Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
        });
    connect(feed, &FChanges::designChanged, this,
            [this] { Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, 0), {Qt::FontRole}); });
    const FRunQueue *queue = FRunQueue::background();
    const auto oneChanged = [this, queue](unsigned id) {
        mItemsKnown = false;
        for (const FRunQueue::Item &item : queue->items())
            if (item.id == id)
                forgetRow(rowOf(item.design));
    };
    connect(queue, &FRunQueue::queued, this, oneChanged);
    connect(queue, &FRunQueue::started, this, oneChanged);
    connect(
        queue, &FRunQueue::ended, this,
        [this](const FRunRecord &record) {
            mItemsKnown = false;
            forgetRow(rowOf(record.design));
            Q_EMIT countsChanged();
        });
    connect(queue, &FRunQueue::idle, this, [this] { mItemsKnown = false; });
    // Seconds go on.
    connect(FRunControl::instance(), &FRunControl::changed, this, [this, queue] {
        mItemsKnown = false;
        for (const FRunQueue::Item &item : queue->items())
            if (item.isRunning)
                forgetRow(rowOf(item.design));
    });
    mColumns.push_back(nullptr);
    restructure();
}

FDesignsModel::~FDesignsModel() = default;

int FDesignsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(mDesigns.size());
}

int FDesignsModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(mColumns.size());
}

FDesignsModel::Kind FDesignsModel::kind(int column) const
{
    const auto place = size_t(column);
    return place == 0                      ? Name
           : place <= mVariables           ? Variable
           : place <= mVariables + mStates ? State
                                           : Output;
}

int FDesignsModel::rowOf(const std::string &design) const
{
    for (size_t i = 0; i < mDesigns.size(); ++i)
        if (mDesigns[i]->getName() == design)
            return int(i);
    return -1;
}

// Structure

void FDesignsModel::follow(const QVector<FChange> &changes)
{
    bool isStructural = false, isValue = false;
    for (const FChange &change : changes) {
        const FObject *object = change.object.get();
        const bool mine = dynamic_cast<const FDesign *>(object) ||
                          dynamic_cast<const FParameter *>(object) ||
                          dynamic_cast<const FExternComputation *>(object);
        isStructural = isStructural || (mine && change.what != FChanges::State);
        isValue = true;
    }
    if (isStructural)
        restructure();
    if (isValue)
        forgetAll();
}

void FDesignsModel::restructure()
{
    Objects variables, states, outputs;
    std::set<const FObject *> dependent;
    for (const auto &one : getManageds<FExternComputation>())
        if (const auto computation = one.getPtr()) {
            states.push_back(computation);
            std::set<std::shared_ptr<FObject>> clients;
            computation->getClients(clients);
            for (const auto &client : clients)
                dependent.insert(client.get());
        }
    for (const auto &one : getEntities<FParameter>())
        if (const auto parameter = one.getPtr()) {
            if (dependent.count(parameter.get()))
                outputs.push_back(parameter);
            else if (!parameter->getValue().isExpression())
                variables.push_back(parameter);
        }
    Objects columns{nullptr};
    for (const Objects *part : {&variables, &states, &outputs})
        columns.insert(columns.end(), part->begin(), part->end());
    syncColumns(columns, variables.size(), states.size());
    auto designs = FDesign::all();
    std::stable_partition(designs.begin(), designs.end(),
                          [](const auto &design) { return design == FDesign::baseline(); });
    syncRows(designs);
    Q_EMIT countsChanged();
}

void FDesignsModel::syncRows(const std::vector<std::shared_ptr<FDesign>> &designs)
{
    const std::set<std::shared_ptr<FDesign>> wanted(designs.begin(), designs.end());
    for (int row = int(mDesigns.size()) - 1; row >= 0; --row) {
        if (wanted.count(mDesigns[size_t(row)]))
            continue;
        int first = row;
        while (first > 0 && !wanted.count(mDesigns[size_t(first) - 1]))
            --first;
        beginRemoveRows({}, first, row);
        mDesigns.erase(mDesigns.begin() + first, mDesigns.begin() + row + 1);
        mRows.erase(mRows.begin() + first, mRows.begin() + row + 1);
        endRemoveRows();
        row = first;
    }
    const std::set<std::shared_ptr<FDesign>> known(mDesigns.begin(), mDesigns.end());
    for (size_t i = 0; i < designs.size(); ++i) {
        if (known.count(designs[i]))
            continue;
        size_t end = i + 1;
        while (end < designs.size() && !known.count(designs[end]))
            ++end;
        const auto place = long(std::min(i, mDesigns.size()));
        beginInsertRows({}, int(place), int(place + long(end - i)) - 1);
        mDesigns.insert(mDesigns.begin() + place, designs.begin() + long(i),
                        designs.begin() + long(end));
        mRows.insert(mRows.begin() + place, end - i, Row());
        endInsertRows();
        i = end - 1;
    }
    if (mDesigns != designs) { // in another order
        beginResetModel();
        mDesigns = designs;
        mRows.assign(mDesigns.size(), Row());
        endResetModel();
    }
}

void FDesignsModel::syncColumns(const Objects &columns, size_t variables, size_t states)
{
    if (columns == mColumns && variables == mVariables && states == mStates) {
        Q_EMIT headerDataChanged(Qt::Horizontal, 0, columnCount() - 1);
        return;
    }
    const std::set<std::shared_ptr<FManaged>> wanted(columns.begin(), columns.end());
    for (int column = int(mColumns.size()) - 1; column >= 0; --column) {
        if (wanted.count(mColumns[size_t(column)]))
            continue;
        beginRemoveColumns({}, column, column);
        const Kind what = kind(column);
        mColumns.erase(mColumns.begin() + column);
        mVariables -= what == Variable;
        mStates -= what == State;
        for (Row &row : mRows)
            row.cells.clear();
        endRemoveColumns();
    }
    const std::set<std::shared_ptr<FManaged>> known(mColumns.begin(), mColumns.end());
    for (size_t i = 0; i < columns.size(); ++i) {
        if (known.count(columns[i]))
            continue;
        size_t end = i + 1;
        while (end < columns.size() && !known.count(columns[end]))
            ++end;
        const auto place = long(std::min(i, mColumns.size()));
        beginInsertColumns({}, int(place), int(place + long(end - i)) - 1);
        mColumns.insert(mColumns.begin() + place, columns.begin() + long(i),
                        columns.begin() + long(end));
        for (size_t k = i; k < end; ++k) {
            mVariables += k >= 1 && k <= variables;
            mStates += k > variables && k <= variables + states;
        }
        for (Row &row : mRows)
            row.cells.clear();
        endInsertColumns();
        i = end - 1;
    }
    if (mColumns != columns || mVariables != variables || mStates != states) {
        beginResetModel();
        mColumns = columns;
        mVariables = variables;
        mStates = states;
        mRows.assign(mDesigns.size(), Row());
        endResetModel();
    }
}

void FDesignsModel::forgetAll()
{
    mItemsKnown = false;
    for (Row &row : mRows)
        row.cells.clear();
    if (!mTell.isActive()) // runs that end by the hundred a second are shown a few times in it
        mTell.start();
}

void FDesignsModel::forgetRow(int row)
{
    if (row < 0)
        return;
    mRows[size_t(row)].cells.clear();
    Q_EMIT dataChanged(index(row, 0), index(row, columnCount() - 1));
}

// Values

FDesignsModel::Cell FDesignsModel::stateCell(const FExternComputation &computation,
                                             const FDesign &design) const
{
    if (!mItemsKnown) {
        mItems.clear();
        for (const FRunQueue::Item &item : FRunQueue::background()->items())
            mItems[{item.computation, item.design}] = item;
        mItemsKnown = true;
    }
    Cell cell;
    const auto item = mItems.find({computation.getName(), design.getName()});
    if (item != mItems.end()) {
        cell.isMuted = !item->second.isRunning;
        cell.text = tr("waiting");
        cell.icon = QStringLiteral(":/stateWaiting");
        if (item->second.isRunning) {
            const qint64 now = item->second.since.msecsTo(QDateTime::currentDateTimeUtc());
            cell.text = tr("running %1 s").arg(now / 1000);
            cell.icon = QStringLiteral(":/stateRunning");
        }
    }
    return cell;
}

FDesignsModel::Cell FDesignsModel::variableCell(const FParameter &parameter,
                                                const FDesign &design) const
{
    Cell cell;
    const FExprBase *own = design.valueOf(&parameter);
    const bool isBaseline = &design == FDesign::baseline().get();
    const FExprBase &value = own ? *own : parameter.getValue();
    cell.isMuted = !own && !isBaseline;
    const FPlainValue plain = FPlainValue::of(value);
    cell.isNumber = plain.kind == FPlainValue::Number;
    cell.number = plain.number;
    cell.text = Q(plain.kind == FPlainValue::None ? value.toString() : plain.shown("", 7));
    if (cell.isMuted)
        cell.reason = tr("the baseline's value");
    else if (value.isExpression())
        cell.reason = Q(value.toString());
    return cell;
}

void FDesignsModel::evaluate(int row) const
{
    const std::shared_ptr<FDesign> &design = mDesigns[size_t(row)];
    std::vector<Cell> cells(mColumns.size());
    cells[0].text = Q(design->getName());
    std::map<const FObject *, FStudy::Cell> runs;
    for (size_t column = 1; column < mColumns.size(); ++column) {
        Cell &cell = cells[column];
        if (kind(int(column)) == Variable) {
            cell = variableCell(static_cast<const FParameter &>(*mColumns[column]), *design);
            continue;
        }
        if (kind(int(column)) != State)
            continue;
        const auto computation = std::static_pointer_cast<FExternComputation>(mColumns[column]);
        const FStudy::Cell &run = runs[computation.get()] = FStudy::cell(computation, design);
        cell = stateCell(*computation, *design);
        const FRunRecord *last =
            FRunControl::instance()->lastRun(computation->getName(), design->getName());
        if (!cell.text.isEmpty())
            continue;
        if (last && !last->succeeded()) {
            cell.text = Q(last->reason);
            cell.icon = QStringLiteral(":/stateFailed");
            cell.reason = Q(last->reason);
            continue;
        }
        switch (run.state) {
        case FStudy::NotRun:
            cell.text = tr("not run");
            cell.isMuted = true;
            break;
        case FStudy::Running:
            cell.text = tr("running");
            cell.icon = QStringLiteral(":/stateRunning");
            break;
        case FStudy::UpToDate:
            cell.text = tr("finished");
            cell.icon = QStringLiteral(":/stateFinished");
            break;
        case FStudy::Stale:
            cell.text = tr("stale");
            cell.icon = QStringLiteral(":/stateStale");
            cell.reason = tr("inputs changed since it ran");
            break;
        case FStudy::Earlier:
            cell.text = tr("ran earlier");
            cell.icon = QStringLiteral(":/stateFinished");
            cell.isMuted = true;
            cell.reason = tr("in an earlier session; what changed since is not known");
            break;
        case FStudy::Failed:
            cell.text = Q(run.reason);
            cell.icon = QStringLiteral(":/stateFailed");
            cell.reason = Q(run.reason);
            break;
        }
    }
    // Values last, all for the same design.
    std::optional<FDesign::Scope> scope;
    for (size_t column = 1 + mVariables + mStates; column < mColumns.size(); ++column) {
        Cell &cell = cells[column];
        const auto parameter = std::static_pointer_cast<FParameter>(mColumns[column]);
        const Reading reading = readingOf(*parameter);
        std::set<std::shared_ptr<FObject>> suppliers;
        parameter->getSuppliers(suppliers);
        bool hasAll = true, isFresh = true;
        for (const auto &supplier : suppliers)
            if (const auto one = std::dynamic_pointer_cast<FExternComputation>(supplier)) {
                hasAll = hasAll && one->hasRunFor(design.get());
                isFresh = isFresh && one->isUpToDateFor(design);
            }
        const FTableRow *read = reading.computation && runs.count(reading.computation.get())
                                    ? find(runs[reading.computation.get()].tables, reading)
                                    : nullptr;
        if (read) {
            cell.place = read->place;
            if (!read->notes.isEmpty()) {
                cell.isDoubtful = true;
                cell.reason = Q(read->note());
            }
        }
        if (hasAll || isFresh) {
            if (!scope)
                scope.emplace(design);
            const FPlainValue value = FPlainValue::of(FExprBase(parameter));
            cell.isNumber = value.kind == FPlainValue::Number && !std::isnan(value.number);
            cell.number = value.number;
            cell.text = Q(value.shown("", 7));
            if (value.kind == FPlainValue::Number && std::isnan(value.number))
                cell.text = read ? tr("no number") : QString();
            if (!isFresh) {
                cell.isMuted = true;
                cell.reason = tr("stale: inputs changed since the run") +
                              (cell.reason.isEmpty() ? QString() : "\n" + cell.reason);
            }
        } else if (read) {
            cell.isNumber = read->isNumber && !std::isnan(read->value);
            cell.number = read->value;
            cell.text = Q(read->shown());
            cell.isMuted = true;
            cell.reason = tr("from an earlier session") +
                          (cell.reason.isEmpty() ? QString() : "\n" + cell.reason);
        }
    }
    mRows[size_t(row)].cells = std::move(cells);
}

const FDesignsModel::Cell &FDesignsModel::cell(int row, int column) const
{
    if (mRows[size_t(row)].cells.size() != mColumns.size())
        evaluate(row);
    return mRows[size_t(row)].cells[size_t(column)];
}

FTableRow::Place FDesignsModel::place(int row, int column) const { return cell(row, column).place; }

QVariant FDesignsModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount() || index.column() >= columnCount())
        return {};
    const Kind what = kind(index.column());
    switch (role) {
    case Qt::FontRole: {
        QFont font;
        font.setBold(what == Name && mDesigns[size_t(index.row())] == FDesign::chosen());
        return font;
    }
    case Qt::TextAlignmentRole:
        return int((what == Variable || what == Output ? Qt::AlignRight : Qt::AlignLeft) |
                   Qt::AlignVCenter);
    default:
        break;
    }
    const Cell &value = cell(index.row(), index.column());
    switch (role) {
    case Qt::DisplayRole:
        return value.text;
    case Qt::EditRole: {
        if (what != Variable)
            return value.text;
        const auto &parameter = static_cast<const FParameter &>(*mColumns[size_t(index.column())]);
        const FExprBase *own = mDesigns[size_t(index.row())]->valueOf(&parameter);
        return FProperties::fieldText(own ? *own : parameter.getValue());
    }
    case Qt::ToolTipRole:
        return value.reason.isEmpty() ? value.text : value.reason;
    case ReasonRole:
        return value.reason;
    case Qt::DecorationRole:
        return value.isDoubtful       ? QVariant(FIcons::icon(QStringLiteral(":/stateDoubt")))
               : value.icon.isEmpty() ? QVariant()
                                      : QVariant(FIcons::icon(value.icon));
    case Qt::ForegroundRole:
        return value.isMuted      ? QVariant(FTheme::color("muted"))
               : value.isDoubtful ? QVariant(FTheme::color("warning"))
                                  : QVariant();
    case SortRole:
        return value.isNumber ? QVariant(value.number) : QVariant(value.text);
    case IsDoubtfulRole:
        return value.isDoubtful;
    case IsMutedRole:
        return value.isMuted;
    default:
        return {};
    }
}

QVariant FDesignsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount())
        return {};
    if (role == Qt::DisplayRole)
        return section == 0 ? tr("Design") : Q(mColumns[size_t(section)]->getName());
    if (role == Qt::ToolTipRole)
        switch (kind(section)) {
        case Name:
            return tr("Name of the design");
        case Variable:
            return tr("Variable: a design may give it another value");
        case State:
            return tr("What the computation does, or has done, for the design");
        case Output:
            return tr("Depends on results; read only");
        }
    if (role == Qt::TextAlignmentRole)
        return int((kind(section) == Variable || kind(section) == Output ? Qt::AlignRight
                                                                         : Qt::AlignLeft) |
                   Qt::AlignVCenter);
    return {};
}

Qt::ItemFlags FDesignsModel::flags(const QModelIndex &index) const
{
    Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    const Kind what = kind(index.column());
    if (what == Variable || (what == Name && mDesigns[size_t(index.row())] != FDesign::baseline()))
        flags |= Qt::ItemIsEditable;
    return flags;
}

QString FDesignsModel::assignment(const QString &design, int column, const QString &text) const
{
    const QString parameter = Q(mColumns[size_t(column)]->getName());
    if (design == Q(FDesign::baseline()->getName()))
        return QStringLiteral("%1.setValue(%2);").arg(parameter, text);
    return text.isEmpty() ? QStringLiteral("%1.unsetValue(\"%2\");").arg(design, parameter)
                          : QStringLiteral("%1.setValue(\"%2\",%3);").arg(design, parameter, text);
}

bool FDesignsModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    mReason.clear();
    if (role != Qt::EditRole || !index.isValid())
        return false;
    const QString text = value.toString().trimmed();
    if (text == data(index, Qt::EditRole).toString())
        return true;
    const auto design = mDesigns[size_t(index.row())];
    FResult result;
    if (kind(index.column()) == Name) {
        result = FDispatcher::execute(FExprBase(design), "setName",
                                      {FExprBase(f_make_shared<FString>(S(text)))});
        if (result.error.empty() && Q(design->getName()) != text && !text.isEmpty())
            mReason = tr("the name became %1").arg(Q(design->getName()));
    } else {
        const auto &parameter = static_cast<const FParameter &>(*mColumns[size_t(index.column())]);
        if (text.isEmpty() && !design->valueOf(&parameter))
            return true;
        result = FDispatcher::script(S(assignment(Q(design->getName()), index.column(), text)));
    }
    if (!result.error.empty())
        mReason = Q(result.error.text());
    return result.error.empty();
}

std::pair<int, int> FDesignsModel::finishedAndFailed() const
{
    int finished = 0, failed = 0;
    for (const auto &design : mDesigns) {
        bool isFinished = mStates > 0, hasFailed = false;
        for (size_t column = 1 + mVariables; column < 1 + mVariables + mStates; ++column) {
            const auto &computation = static_cast<const FExternComputation &>(*mColumns[column]);
            const FRunRecord *last =
                FRunControl::instance()->lastRun(computation.getName(), design->getName());
            hasFailed = hasFailed || (last && !last->succeeded());
            isFinished = isFinished && computation.hasRunFor(design.get());
        }
        failed += hasFailed;
        finished += isFinished && !hasFailed;
    }
    return {finished, failed};
}

// SPDX-License-Identifier: Apache-2.0
#include "fstudy.h"

#include "flogmsg.h"
#include "fobjectmanager.h"
#include "frunqueue.h"

#include <algorithm>
#include <cmath>

FStudy::Computations FStudy::chain(const Computations &asked,
                                   const std::shared_ptr<FDesign> &design)
{
    const std::set<std::shared_ptr<FExternComputation>> wanted(asked.begin(), asked.end());
    std::set<const FObject *> seen;
    Computations chain;
    for (const auto &one : asked) {
        for (const auto &supplier : one->supplierComputations())
            if ((!design || wanted.count(supplier) || !supplier->isUpToDateFor(design)) &&
                seen.insert(supplier.get()).second)
                chain.push_back(supplier);
        if (seen.insert(one.get()).second)
            chain.push_back(one);
    }
    return chain;
}

FStudy::FStudy(Designs designs, const Computations &asked)
    : mDesigns(std::move(designs))
{
    const Computations all = chain(asked, nullptr);
    const std::set<std::shared_ptr<FExternComputation>> wanted(asked.begin(), asked.end());
    for (const auto &design : mDesigns) {
        Row &row = mRows[design->getName()];
        for (const auto &one : all)
            if (wanted.count(one) || !one->isUpToDateFor(design))
                row.chain.push_back(one);
    }
}

void FStudy::addTo(FRunQueue *queue) const
{
    for (const auto &design : mDesigns)
        queue->add(design, row(design->getName()).chain);
}

std::vector<FStudy::Table> FStudy::note(const FRunRecord &record)
{
    Row &row = mRows[record.design];
    for (FRunRecord &known : row.runs)
        if (known.id == record.id) {
            known = record;
            return {};
        }
    row.runs.push_back(record);
    const auto computation = std::dynamic_pointer_cast<FExternComputation>(
        FObjectManager::instance()->find(record.computation));
    const auto tables =
        record.succeeded() && computation ? tablesOf(*computation) : std::vector<Table>();
    for (const Table &table : tables)
        for (const FTableRow &value : table.rows)
            if (!value.notes.empty())
                row.doubts.push_back(record.computation + " " + table.name + " " + value.name +
                                     ": " + value.note());
    if (!row.chain.empty() && record.computation == row.chain.back()->getName()) {
        noteParameters(record.design, &row);
        row.isComplete = true;
    }
    return tables;
}

namespace {
/// False while a run is missing without which the parameter has no value.
bool isDue(const FParameter &parameter, const std::shared_ptr<FDesign> &design, bool *computed)
{
    std::set<std::shared_ptr<FObject>> suppliers;
    parameter.getSuppliers(suppliers);
    for (const auto &supplier : suppliers)
        if (const auto computation = std::dynamic_pointer_cast<FExternComputation>(supplier)) {
            *computed = true;
            if (!computation->isUpToDateFor(design))
                return false;
        }
    return true;
}
} // namespace

void FStudy::noteParameters(const std::string &design, Row *row)
{
    for (const auto &handle : getEntities<FParameter>()) {
        const auto parameter = handle.getPtr();
        const FPlainValue value = FPlainValue::of(FExprBase(parameter));
        row->parameters[parameter->getName()] = value;
        if (mNames.insert(parameter->getName()).second)
            mParameters.push_back(parameter->getName());
        const FExprBase &expr = parameter->currentValue();
        const bool isNan = value.kind == FPlainValue::Number && std::isnan(value.number);
        bool computed = false;
        if ((value.kind != FPlainValue::None && !isNan) || !expr.isExpression() ||
            !isDue(*parameter, FDesign::current(), &computed))
            continue;
        std::string failure = FPlainValue::failureOf(expr).text();
        if (failure.empty() && isNan && !computed) // values that weren't found have their own note
            failure = "it gives no number";
        if (failure.empty())
            continue;
        failure.insert(0, "parameter " + parameter->getName() + " doesn't resolve: ");
        row->failures.push_back(failure);
        failure.insert(0, "design " + design + ": ");
        FLogMsg::error("Run", failure, expr.toString(), nullptr);
        mFailedParameters = true;
    }
}

const FStudy::Row &FStudy::row(const std::string &design) const { return mRows.at(design); }

std::vector<FStudy::Table> FStudy::tablesOf(const FExternComputation &computation)
{
    std::vector<Table> tables;
    const auto results = computation.currentResults().ptr<FResultsGeneric>();
    if (results && results->fetchResults())
        for (const auto &handle : results->tables())
            if (const auto table = handle.getPtr())
                tables.push_back({table->getName(), table->values()});
    return tables;
}

FStudy::Cell FStudy::cell(const std::shared_ptr<FExternComputation> &computation,
                          const std::shared_ptr<FDesign> &design)
{
    Cell cell;
    if (const auto run = FRunStore::lookup(computation, design)) {
        cell.state = run->record.succeeded() ? Earlier : Failed;
        cell.reason = run->record.reason;
        cell.tables = run->tables;
    }
    if (computation->isRunningFor(design.get())) {
        cell.state = Running;
    } else if (computation->isUpToDateFor(design) || computation->hasRunFor(design.get())) {
        const FDesign::Scope evaluated(design);
        cell.state = computation->isUpToDateFor(design) ? UpToDate : Stale;
        cell.tables = tablesOf(*computation);
    }
    return cell;
}

size_t FStudy::completed() const
{
    return size_t(std::count_if(
        mRows.begin(), mRows.end(), [](const auto &row) { return row.second.isComplete; }));
}

std::vector<std::pair<std::string, size_t>> FStudy::doubts(bool withValues) const
{
    std::vector<std::pair<std::string, size_t>> all;
    std::map<std::string, size_t> places;
    const auto add = [&](const std::vector<std::string> &texts) {
        for (const std::string &text : texts) {
            const auto [place, isNew] = places.emplace(text, all.size());
            if (isNew)
                all.emplace_back(text, 0);
            ++all[place->second].second;
        }
    };
    for (const auto &design : mDesigns) {
        const Row &one = row(design->getName());
        if (withValues)
            add(one.doubts);
        add(one.failures);
    }
    return all;
}

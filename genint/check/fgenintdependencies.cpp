// SPDX-License-Identifier: Apache-2.0
#include "fexterncomputation.h"
#include "fgenintcheckparts.h"
#include "fobjectmanager.h"

#include <algorithm>

namespace {
std::vector<FObject *> suppliersOf(const FObject *object) { return object->suppliers().objects(); }

/// Name of a node that a user knows; empty for parts of expressions.
std::string nameOf(const FObject *object)
{
    if (const auto managed = dynamic_cast<const FManaged *>(object))
        return managed->getName();
    if (const auto entry = dynamic_cast<const FEntry *>(object))
        return "entry " + entry->getFullName();
    return std::string();
}
} // namespace

FGenIntDependencies::FGenIntDependencies()
{
    std::vector<FObject *> nodes, unknown;
    std::unordered_set<const FObject *> seen;
    for (const auto &object : FObjectManager::instance()->all()) {
        std::vector<FObject *> todo{object.get()};
        while (!todo.empty()) {
            FObject *node = todo.back();
            todo.pop_back();
            if (!seen.insert(node).second)
                continue;
            nodes.push_back(node);
            const FCmd *command = node->isFCmd();
            if (!node->updatesOnDemand() || (command && !command->info().isPure()))
                unknown.push_back(node);
            for (FObject *supplier : suppliersOf(node))
                todo.push_back(supplier);
        }
    }
    spread(unknown);
    findCycles(nodes);
}

void FGenIntDependencies::spread(std::vector<FObject *> todo)
{
    while (!todo.empty()) {
        const FObject *node = todo.back();
        todo.pop_back();
        if (!mUnknown.insert(node).second)
            continue;
        for (FObject *client : node->clients().objects())
            todo.push_back(client);
    }
}

bool FGenIntDependencies::isKnown(const FExprBase &value) const
{
    return !value || !mUnknown.count(value.getExpr().get());
}

// Strongly connected parts, with a stack of its own: chains may be long.
void FGenIntDependencies::findCycles(const std::vector<FObject *> &nodes)
{
    struct State
    {
        int index = -1, low = 0;
        bool open = false;
    };
    struct Step
    {
        FObject *node;
        std::vector<FObject *> suppliers;
        size_t next;
    };
    std::unordered_map<const FObject *, State> states;
    std::vector<FObject *> open;
    std::vector<Step> steps;
    int counter = 0;
    const auto enter = [&](FObject *node) {
        State &state = states[node];
        state.index = state.low = counter++;
        state.open = true;
        open.push_back(node);
        steps.push_back({node, suppliersOf(node), 0});
    };
    for (FObject *root : nodes) {
        if (states[root].index < 0)
            enter(root);
        while (!steps.empty()) {
            Step &step = steps.back();
            FObject *node = step.node;
            if (step.next < step.suppliers.size()) {
                FObject *supplier = step.suppliers[step.next++];
                const State &other = states[supplier];
                if (other.index < 0)
                    enter(supplier);
                else if (other.open)
                    states[node].low = std::min(states[node].low, other.index);
                continue;
            }
            steps.pop_back();
            const State state = states[node];
            if (!steps.empty()) {
                State &above = states[steps.back().node];
                above.low = std::min(above.low, state.low);
            }
            if (state.low != state.index)
                continue;
            const auto begin = std::find(open.rbegin(), open.rend(), node).base() - 1;
            const std::vector<FObject *> members(begin, open.end());
            open.erase(begin, open.end());
            for (const FObject *member : members)
                states[member].open = false;
            if (members.size() > 1 || node->suppliers().contains(node))
                addCycle(members);
        }
    }
}

void FGenIntDependencies::addCycle(const std::vector<FObject *> &members)
{
    spread(members);
    // A computation is what a user looks for; without one, the parameter that was made first.
    const auto rank = [](const FManaged *object) {
        const bool isRun = dynamic_cast<const FExternComputation *>(object);
        return std::make_pair(isRun                                      ? 0
                              : dynamic_cast<const FParameter *>(object) ? 1
                                                                         : 2,
                              object->getDbId());
    };
    FManaged *start = nullptr;
    for (FObject *member : members)
        if (auto *managed = dynamic_cast<FManaged *>(member))
            if (!start || rank(managed) < rank(start))
                start = managed;
    if (!start)
        return;
    // The shortest way back to the start.
    const std::unordered_set<const FObject *> inside(members.begin(), members.end());
    std::unordered_map<const FObject *, FObject *> from;
    std::vector<FObject *> level{start};
    while (!from.count(start) && !level.empty()) {
        std::vector<FObject *> next;
        for (FObject *node : level)
            for (FObject *supplier : suppliersOf(node))
                if (inside.count(supplier) && from.emplace(supplier, node).second)
                    next.push_back(supplier);
        level.swap(next);
    }
    Cycle cycle;
    cycle.object = start;
    cycle.way.push_back(start->getName());
    for (const FObject *node = from[start]; node && node != start; node = from[node])
        if (const std::string name = nameOf(node); !name.empty())
            cycle.way.push_back(name);
    cycle.way.push_back(start->getName());
    std::reverse(cycle.way.begin(), cycle.way.end());
    mCycles.push_back(std::move(cycle));
}

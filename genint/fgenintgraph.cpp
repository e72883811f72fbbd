// SPDX-License-Identifier: Apache-2.0
#include "fgenintgraph.h"

#include "fcmd.h"
#include "fconfigurationgenint.h"
#include "fdefinitiongenint.h"
#include "fgenintcomputation.h"
#include "fgenintresultsfile.h"
#include "fobjectmanager.h"
#include "fplainvalue.h"

#include <QJsonArray>
#include <algorithm>

namespace {
constexpr double kBetweenLayers = 72, kBetweenBoxes = 18, kMargin = 24;
constexpr int kSweeps = 6;

const FCmd *commandOf(const FExprBase &expr)
{
    return expr.isExpression() ? static_cast<const FCmd *>(expr.getExpr().get()) : nullptr;
}

/// The command that \p command is called on, if it has that name.
const FCmd *receiverNamed(const FCmd &command, const char *name)
{
    const FCmd *receiver = commandOf(command.getReceiver());
    return receiver && receiver->info().name == name ? receiver : nullptr;
}

std::string plain(const FCmd &command, unsigned argument)
{
    return command.getArgument(argument).toPlainString();
}
} // namespace

const char *FGenIntGraph::kindText(Kind kind)
{
    static constexpr const char *kTexts[] = {"parameter", "computation", "file", "value"};
    return kTexts[kind];
}

const char *FGenIntGraph::stateText(FStudy::State state)
{
    switch (state) {
    case FStudy::Running:
        return "running";
    case FStudy::UpToDate:
        return "finished";
    case FStudy::Stale:
        return "stale";
    case FStudy::Earlier:
        return "ran earlier";
    case FStudy::Failed:
        return "failed";
    case FStudy::NotRun:
        break;
    }
    return "not run";
}

FGenIntGraph FGenIntGraph::ofProject(const LastRun &lastRun)
{
    FGenIntGraph graph;
    const auto all = getManageds<FGenIntComputation>();
    for (const auto &handle : all)
        if (const auto computation = handle.getPtr())
            graph.addComputation(computation, lastRun);
    // Parameters are found on the way; what feeds them is looked up behind all entries.
    for (size_t i = 0; i < graph.mNodes.size(); ++i)
        if (graph.mNodes[i].kind == Parameter)
            if (const auto parameter =
                    std::dynamic_pointer_cast<FParameter>(graph.mNodes[i].object))
                graph.addSuppliers(parameter->currentValue(), i, std::string());
    graph.findLayers();
    return graph;
}

size_t FGenIntGraph::node(Kind kind, const std::string &id, const std::string &label)
{
    const auto [at, isNew] = mPlaces.emplace(std::string(kindText(kind)) + " " + id, mNodes.size());
    if (isNew) {
        mNodes.emplace_back();
        mNodes.back().kind = kind;
        mNodes.back().id = at->first;
        mNodes.back().label = label;
    }
    return at->second;
}

void FGenIntGraph::addComputation(const std::shared_ptr<FGenIntComputation> &computation,
                                  const LastRun &lastRun)
{
    const size_t own = node(Computation, computation->getName(), computation->getName());
    const std::shared_ptr<FDesign> design = FDesign::chosen();
    FStudy::Cell cell = FStudy::cell(computation, design);
    const FRunRecord *last =
        lastRun && design ? lastRun(computation->getName(), design->getName()) : nullptr;
    if (last && !last->succeeded() && cell.state != FStudy::Running) {
        cell.state = FStudy::Failed;
        cell.reason = last->reason;
    }
    mNodes[own].object = mNodes[own].computation = computation;
    mNodes[own].state = cell.state;
    mNodes[own].reason = cell.reason;
    const auto configuration = computation->getConfiguration().ptr<FConfigurationGenInt>();
    mNodes[own].detail = !configuration ? "no configuration"
                         : computation->getApplication().empty()
                             ? "no program"
                             : computation->getApplication() + " " + computation->getArguments();
    if (!configuration)
        return;
    for (const auto &item : configuration->getEntryMap())
        if (const auto entry = item.second.ptr<FEntry>())
            addSuppliers(entry->getValue(), own, entry->getName());
}

void FGenIntGraph::addSuppliers(const FExprBase &value, size_t target, const std::string &label)
{
    const std::shared_ptr<FObject> object = value.getExpr();
    if (!object)
        return;
    if (!value.isExpression()) {
        if (const auto file = std::dynamic_pointer_cast<FInputFile>(object)) {
            addSuppliers(file->getFileName(), target, label);
            addSuppliers(file->getDirectory(), target, label);
        } else if (const auto list = std::dynamic_pointer_cast<FObjectList>(object)) {
            for (const auto &one : list->getObjects())
                addSuppliers(one, target, label);
        } else {
            addSupplier(object, target, label);
        }
        return;
    }
    std::set<const FCmd *> told; // calls that a file or a value stands for
    const auto commands = FCmd::commandsIn(value);
    for (auto at = commands.rbegin(); at != commands.rend(); ++at) { // the last call first
        const FCmd &command = **at;
        const std::string &name = command.info().name;
        const bool isFile = name == "getResultTemplateName" || name == "getResultFileName";
        const FCmd *table = name == "getElementAt" ? receiverNamed(command, "getTable") : nullptr;
        const FCmd *results = isFile  ? receiverNamed(command, "getResults")
                              : table ? receiverNamed(*table, "getResults")
                                      : nullptr;
        if (results) {
            addFlow(isFile ? File : Value, results->getReceiver().getExpr(),
                    plain(table ? *table : command, 0), table ? plain(command, 0) : std::string(),
                    target, label);
            told.insert(results);
        }
    }
    for (const FCmd *command : commands) {
        if (!told.count(command) && !commandOf(command->getReceiver()))
            addSupplier(command->getReceiver().getExpr(), target, label);
        for (const FExprBase &argument : command->arguments())
            if (!argument.isExpression())
                addSuppliers(argument, target, label);
    }
}

void FGenIntGraph::addSupplier(const std::shared_ptr<FObject> &object, size_t target,
                               const std::string &label)
{
    if (const auto parameter = std::dynamic_pointer_cast<FParameter>(object)) {
        const size_t own = node(Parameter, parameter->getName(), parameter->getName());
        if (!mNodes[own].object) {
            mNodes[own].object = parameter;
            mNodes[own].detail = FPlainValue::of(FExprBase(parameter)).shown("no value", 7);
        }
        connect(own, target, label);
    } else if (const auto other = std::dynamic_pointer_cast<FGenIntComputation>(object)) {
        connect(node(Computation, other->getName(), other->getName()), target, label);
    }
}

void FGenIntGraph::addFlow(Kind kind, const std::shared_ptr<FObject> &from, const std::string &file,
                           const std::string &value, size_t target, const std::string &label)
{
    const auto computation = std::dynamic_pointer_cast<FGenIntComputation>(from);
    if (!computation)
        return;
    const size_t supplier = node(Computation, computation->getName(), computation->getName());
    const size_t own =
        node(kind, computation->getName() + " " + file + " " + value, kind == File ? file : value);
    Node &flow = mNodes[own];
    if (!flow.computation) {
        flow.computation = computation;
        if (kind == Value)
            flow.detail = file;
        const auto configuration = computation->getConfiguration().getPtr();
        if (const auto definition =
                configuration ? configuration->getDefinition().ptr<FDefinitionGenInt>() : nullptr)
            flow.object = definition->getFile(file).ptr<FGenIntResultsFile>();
    }
    connect(supplier, own, std::string());
    connect(own, target, label);
}

void FGenIntGraph::connect(size_t from, size_t to, const std::string &label)
{
    if (mKnown.insert({{from, to}, label}).second)
        mEdges.push_back({from, to, label, false});
}

// The longest way from a start. Edges back to what is being walked close a circle.
void FGenIntGraph::findLayers()
{
    std::vector<std::vector<size_t>> leaving(mNodes.size());
    std::vector<int> entering(mNodes.size(), 0);
    for (size_t i = 0; i < mEdges.size(); ++i)
        leaving[mEdges[i].from].push_back(i);
    enum Mark : char { New, Open, Done };
    std::vector<Mark> marks(mNodes.size(), New);
    std::vector<std::pair<size_t, size_t>> path; // node and its next edge
    for (size_t root = 0; root < mNodes.size(); ++root) {
        if (marks[root] != New)
            continue;
        marks[root] = Open;
        path.emplace_back(root, 0);
        while (!path.empty()) {
            auto &[at, next] = path.back();
            if (next == leaving[at].size()) {
                marks[at] = Done;
                path.pop_back();
                continue;
            }
            Edge &edge = mEdges[leaving[at][next++]];
            edge.isBack = marks[edge.to] == Open;
            if (marks[edge.to] == New) {
                marks[edge.to] = Open;
                path.emplace_back(edge.to, 0);
            }
        }
    }
    for (const Edge &edge : mEdges)
        entering[edge.to] += !edge.isBack;
    std::vector<size_t> ready;
    for (size_t i = 0; i < mNodes.size(); ++i)
        if (entering[i] == 0)
            ready.push_back(i);
    for (size_t i = 0; i < ready.size(); ++i)
        for (const size_t out : leaving[ready[i]]) {
            const Edge &edge = mEdges[out];
            if (edge.isBack)
                continue;
            mNodes[edge.to].layer = std::max(mNodes[edge.to].layer, mNodes[edge.from].layer + 1);
            if (--entering[edge.to] == 0)
                ready.push_back(edge.to);
        }
    // What feeds only one layer stands just before it.
    for (size_t i = ready.size(); i-- > 0;) {
        Node &one = mNodes[ready[i]];
        int nearest = -1;
        for (const size_t out : leaving[ready[i]])
            if (!mEdges[out].isBack && (nearest < 0 || mNodes[mEdges[out].to].layer < nearest))
                nearest = mNodes[mEdges[out].to].layer;
        if (one.kind == Parameter && nearest > 0)
            one.layer = nearest - 1;
    }
}

// Each node goes to the mean place of those that it is linked with, in sweeps to and fro.
void FGenIntGraph::orderLayers(std::vector<std::vector<size_t>> *layers) const
{
    std::vector<std::vector<size_t>> before(mNodes.size()), behind(mNodes.size());
    for (const Edge &edge : mEdges)
        if (!edge.isBack) {
            before[edge.to].push_back(edge.from);
            behind[edge.from].push_back(edge.to);
        }
    std::vector<double> places(mNodes.size(), 0);
    const auto note = [&](const std::vector<size_t> &layer) {
        for (size_t i = 0; i < layer.size(); ++i)
            places[layer[i]] = (double(i) + 0.5) / double(layer.size());
    };
    for (const auto &layer : *layers)
        note(layer);
    for (int sweep = 0; sweep < kSweeps; ++sweep)
        for (size_t i = 0; i < layers->size(); ++i) {
            auto &layer = (*layers)[sweep % 2 == 0 ? i : layers->size() - 1 - i];
            const auto &linked = sweep % 2 == 0 ? before : behind;
            std::map<size_t, double> wanted;
            for (const size_t one : layer) {
                double sum = 0;
                for (const size_t other : linked[one])
                    sum += places[other];
                wanted[one] = linked[one].empty() ? places[one] : sum / double(linked[one].size());
            }
            std::stable_sort(layer.begin(), layer.end(),
                             [&](size_t a, size_t b) { return wanted[a] < wanted[b]; });
            note(layer);
        }
}

void FGenIntGraph::layOut(const std::function<Size(const Node &)> &sizeOf)
{
    std::vector<std::vector<size_t>> layers;
    for (size_t i = 0; i < mNodes.size(); ++i) {
        Node &one = mNodes[i];
        const Size size = sizeOf(one);
        one.width = size.width;
        one.height = size.height;
        layers.resize(std::max(layers.size(), size_t(one.layer) + 1));
        layers[size_t(one.layer)].push_back(i);
    }
    orderLayers(&layers);
    std::vector<double> heights;
    for (const auto &layer : layers) {
        double height = -kBetweenBoxes;
        for (const size_t one : layer)
            height += mNodes[one].height + kBetweenBoxes;
        heights.push_back(height);
    }
    const double highest = heights.empty() ? 0 : *std::max_element(heights.begin(), heights.end());
    double x = kMargin;
    for (size_t i = 0; i < layers.size(); ++i) {
        double width = 0, y = kMargin + (highest - heights[i]) / 2;
        for (const size_t one : layers[i])
            width = std::max(width, mNodes[one].width);
        for (const size_t one : layers[i]) {
            mNodes[one].x = x + (width - mNodes[one].width) / 2;
            mNodes[one].y = y;
            y += mNodes[one].height + kBetweenBoxes;
        }
        x += width + kBetweenLayers;
    }
}

FGenIntGraph::Size FGenIntGraph::size() const
{
    Size size{0, 0};
    for (const Node &one : mNodes) {
        size.width = std::max(size.width, one.x + one.width);
        size.height = std::max(size.height, one.y + one.height);
    }
    return {size.width + kMargin, size.height + kMargin};
}

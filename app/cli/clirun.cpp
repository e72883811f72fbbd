// SPDX-License-Identifier: Apache-2.0
#include "cli.h"
#include "fdesign.h"
#include "fexterncomputation.h"
#include "flogmsg.h"
#include "fobjectmanager.h"
#include "fparameter.h"
#include "fproject.h"
#include "frunqueue.h"

#include <QElapsedTimer>
#include <QSocketNotifier>
#include <QThread>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <set>
#include <sys/signalfd.h>
#include <unistd.h>

namespace {
/// Turns SIGINT and SIGTERM into a cancellation of the queue.
class FSignals
{
public:
    explicit FSignals(FRunQueue *queue)
    {
        sigset_t set;
        sigemptyset(&set);
        sigaddset(&set, SIGINT);
        sigaddset(&set, SIGTERM);
        sigprocmask(SIG_BLOCK, &set, &mBefore);
        mFile = signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
        mNotifier = std::make_unique<QSocketNotifier>(mFile, QSocketNotifier::Read);
        QObject::connect(mNotifier.get(), &QSocketNotifier::activated, mNotifier.get(),
                         [this, queue] {
                             signalfd_siginfo info;
                             while (::read(mFile, &info, sizeof info) > 0) {
                             }
                             queue->cancel();
                         });
    }
    ~FSignals()
    {
        mNotifier.reset();
        ::close(mFile);
        sigprocmask(SIG_SETMASK, &mBefore, nullptr);
    }
    FSignals(const FSignals &) = delete;
    FSignals &operator=(const FSignals &) = delete;

private:
    int mFile;
    sigset_t mBefore;
    std::unique_ptr<QSocketNotifier> mNotifier;
};

std::string duration(double seconds)
{
    char text[40];
    if (seconds < 100)
        std::snprintf(text, sizeof text, "%.1f s", seconds);
    else
        std::snprintf(text, sizeof text, "%d:%02d min", int(seconds) / 60, int(seconds) % 60);
    return text;
}

/// One line on a terminal that tells how far the study is.
class FProgress
{
public:
    explicit FProgress(bool on)
        : mOn(on && isatty(STDERR_FILENO))
    {
        mClock.start();
    }
    void show(const FRunQueue &queue)
    {
        if (!mOn)
            return;
        const size_t done = queue.records().size();
        const double elapsed = double(mClock.elapsed()) / 1000;
        std::string line = "\r\033[K" + std::to_string(done) + "/" + std::to_string(queue.total()) +
                           " done, " + std::to_string(queue.failed()) + " failed, " +
                           std::to_string(queue.running()) + " running";
        if (done > 0 && done < queue.total())
            line += ", about " + duration(elapsed / double(done) * double(queue.total() - done)) +
                    " left";
        std::cerr << line << (done == queue.total() ? "\n" : "") << std::flush;
    }

private:
    bool mOn;
    QElapsedTimer mClock;
};

QJsonObject runJson(const FRunRecord &record, const QJsonArray &tables)
{
    return {{"computation", Q(record.computation)},
            {"design", Q(record.design)},
            {"state", record.stateText()},
            {"reason", Q(record.reason)},
            {"exitCode", record.hasExitCode ? QJsonValue(record.exitCode) : QJsonValue()},
            {"signal", record.hasSignal ? QJsonValue(record.signal) : QJsonValue()},
            {"seconds", record.seconds},
            {"directory", Q(record.directory)},
            {"tables", tables}};
}

std::vector<std::shared_ptr<FTableData>> tablesOf(const std::string &computation)
{
    std::vector<std::shared_ptr<FTableData>> tables;
    const auto object = std::dynamic_pointer_cast<FExternComputation>(
        FObjectManager::instance()->find(computation));
    const auto results = object ? object->currentResults().ptr<FResultsGeneric>() : nullptr;
    if (results && results->fetchResults())
        for (const auto &table : results->tables())
            if (auto one = table.getPtr())
                tables.push_back(std::move(one));
    return tables;
}

void printRun(const FRunRecord &record, const std::vector<std::shared_ptr<FTableData>> &tables)
{
    FCli::out(record.computation + "  " + record.design + "  " + record.reason +
              (record.seconds > 0 ? "  " + duration(record.seconds) : ""));
    for (const auto &table : tables) {
        FCli::out(" " + table->getName());
        FCli::print(*table);
    }
}

/// A table of designs and parameters, as it stands after each design. Designs stand in the order
/// in which they were asked for, whichever ends first.
class FSummary
{
public:
    explicit FSummary(const std::vector<std::shared_ptr<FDesign>> &designs)
    {
        for (const auto &design : designs)
            mDesigns.push_back(design->getName());
    }
    void note(const std::string &design)
    {
        auto &row = mRows[design];
        for (const auto &handle : getEntities<FParameter>()) {
            const auto parameter = handle.getPtr();
            row[parameter->getName()] = FCli::jsonOf(FExprBase(parameter));
            if (mNames.insert(parameter->getName()).second)
                mColumns.push_back(parameter->getName());
        }
    }
    /// Takes down what is doubtful in the results of a run.
    void doubts(const FRunRecord &record, const std::vector<std::shared_ptr<FTableData>> &tables)
    {
        const auto add = [&](const FTableData &table, const std::string &name,
                             const std::string &note) {
            if (note.empty())
                return;
            mDoubts[record.design].push_back(record.computation + " " + table.getName() + " " +
                                             name + ": " + note);
        };
        for (const auto &table : tables) {
            for (size_t i = 0; i < table->origins().size() && i < table->rowHeaders().size(); ++i)
                add(*table, table->rowHeaders()[i], table->origins()[i].note);
            for (const FTableData::Missing &missing : table->missing())
                add(*table, missing.name, missing.note);
        }
    }
    QJsonObject toJson() const
    {
        QJsonObject all;
        for (const auto &[design, row] : mRows) {
            QJsonObject values;
            for (const auto &[name, value] : row)
                values[Q(name)] = value;
            all[Q(design)] = values;
        }
        return all;
    }
    void print() const
    {
        if (mRows.empty() || mColumns.empty())
            return;
        std::vector<std::vector<std::string>> table{{"design"}};
        table[0].insert(table[0].end(), mColumns.begin(), mColumns.end());
        if (!mDoubts.empty())
            table[0].push_back("doubts");
        std::vector<std::string> texts;
        std::map<std::string, size_t> designs; // by text
        for (const std::string &design : mDesigns) {
            const auto doubts = mDoubts.find(design);
            if (doubts != mDoubts.end())
                for (const std::string &text : doubts->second)
                    if (designs[text]++ == 0)
                        texts.push_back(text);
            const auto row = mRows.find(design);
            if (row == mRows.end())
                continue;
            std::vector<std::string> line{design};
            for (const std::string &name : mColumns) {
                const auto at = row->second.find(name);
                const QJsonValue value = at == row->second.end() ? QJsonValue() : at->second;
                line.push_back(value.isDouble()   ? S(QString::number(value.toDouble(), 'g', 7))
                               : value.isString() ? S(value.toString())
                               : value.isBool()   ? (value.toBool() ? "true" : "false")
                                                  : "-");
            }
            if (!mDoubts.empty())
                line.push_back(
                    doubts == mDoubts.end() ? "-" : "! " + std::to_string(doubts->second.size()));
            table.push_back(line);
        }
        std::vector<size_t> widths(table[0].size());
        for (const auto &line : table)
            for (size_t i = 0; i < line.size(); ++i)
                widths[i] = std::max(widths[i], size_t(Q(line[i]).size()));
        FCli::out("");
        for (const auto &line : table) {
            std::string text;
            for (size_t i = 0; i < line.size(); ++i)
                text += i + 1 < line.size() ? FCli::padded(line[i], widths[i]) + "  " : line[i];
            FCli::out(text);
        }
        for (const std::string &text : texts)
            FCli::out("! " + text +
                      (mRows.size() > 1 ? " (" + std::to_string(designs[text]) + " of " +
                                              std::to_string(mRows.size()) + " designs)"
                                        : std::string()));
    }

private:
    std::map<std::string, std::map<std::string, QJsonValue>> mRows;
    std::vector<std::string> mDesigns, mColumns;
    std::set<std::string> mNames;
    std::map<std::string, std::vector<std::string>> mDoubts; // by design
};

QJsonObject parametersNow()
{
    QJsonObject all;
    for (const auto &handle : getEntities<FParameter>())
        all[Q(handle.getPtr()->getName())] = FCli::jsonOf(FExprBase(handle.getPtr()));
    return all;
}

/// The computations to run, each behind the ones that it needs. False for an unknown name.
bool choose(const FCliOptions &options, std::vector<std::shared_ptr<FExternComputation>> *chain)
{
    std::set<const FObject *> seen;
    const auto add = [&](const std::shared_ptr<FExternComputation> &one) {
        for (const auto &supplier : one->supplierComputations())
            if (seen.insert(supplier.get()).second)
                chain->push_back(supplier);
        if (seen.insert(one.get()).second)
            chain->push_back(one);
    };
    for (const std::string &name : options.computations) {
        const auto one =
            std::dynamic_pointer_cast<FExternComputation>(FObjectManager::instance()->find(name));
        if (!one) {
            FCli::err("there is no computation " + name);
            return false;
        }
        add(one);
    }
    if (options.computations.empty())
        for (const auto &handle : getManageds<FExternComputation>())
            add(handle.getPtr());
    return true;
}

bool chooseDesigns(const FCliOptions &options, std::vector<std::shared_ptr<FDesign>> *designs)
{
    if (options.allDesigns) {
        *designs = FDesign::all();
        return true;
    }
    if (options.design.empty()) {
        designs->push_back(FDesign::current());
        return true;
    }
    const auto design =
        std::dynamic_pointer_cast<FDesign>(FObjectManager::instance()->find(options.design));
    if (!design)
        FCli::err("there is no design " + options.design);
    else
        designs->push_back(design);
    return bool(design);
}
} // namespace

int FCli::run(const FCliOptions &options)
{
    const int loaded = load(options);
    if (loaded != kDone)
        return refuse(loaded, "nothing was run");
    std::vector<std::shared_ptr<FExternComputation>> chain;
    std::vector<std::shared_ptr<FDesign>> designs;
    if (!choose(options, &chain) || !chooseDesigns(options, &designs))
        return kUsage;
    if (chain.empty()) {
        err("the project has no computation");
        return kFailed;
    }
    FRunQueue queue;
    queue.setKeepGoing(options.keepGoing);
    queue.setTimeout(options.timeout);
    for (const auto &design : designs)
        queue.add(design, chain);
    FProgress progress(!options.json);
    FSummary summary(designs);
    std::map<std::string, std::vector<QJsonObject>> runsOf; // by design
    queue.setListener([&](const FRunRecord &record) {
        const auto tables = record.succeeded() ? tablesOf(record.computation)
                                               : std::vector<std::shared_ptr<FTableData>>();
        if (options.json) {
            QJsonArray json;
            for (const auto &table : tables)
                json.append(
                    QJsonObject{{"name", Q(table->getName())}, {"rows", rowsOf(*table, false)}});
            runsOf[record.design].push_back(runJson(record, json));
        } else {
            if (designs.size() == 1)
                printRun(record, tables);
            else
                summary.doubts(record, tables);
        }
        if (record.computation == chain.back()->getName())
            summary.note(record.design);
        progress.show(queue);
    });
    {
        const FSignals signals(&queue);
        queue.run(options.jobs > 0 ? options.jobs : QThread::idealThreadCount());
    }
    if (options.json) {
        FDesign::setCurrent(designs.back());
        QJsonArray runs;
        for (const auto &design : designs)
            for (const QJsonObject &run : runsOf[design->getName()])
                runs.append(run);
        print(QJsonObject{{"project", Q(options.project)},
                          {"runs", runs},
                          {"parameters", parametersNow()},
                          {"designs", summary.toJson()},
                          {"log", log()}});
    } else {
        summary.print();
    }
    if (queue.isCancelled())
        return kCancelled;
    return queue.failed() > 0 ? kFailed : kDone;
}

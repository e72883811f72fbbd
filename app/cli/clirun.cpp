// SPDX-License-Identifier: Apache-2.0
#include "cli.h"
#include "fdesign.h"
#include "fdesigntable.h"
#include "flogmsg.h"
#include "fobjectmanager.h"
#include "fparameter.h"
#include "fproject.h"
#include "frunqueue.h"
#include "fsafefile.h"
#include "fstudy.h"
#include "fuserfile.h"

#include <QElapsedTimer>
#include <QSocketNotifier>
#include <QThread>
#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <iostream>
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
            {"reused", record.reused},
            {"directory", Q(record.directory)},
            {"tables", tables}};
}

void printRun(const FRunRecord &record, const std::vector<FStudy::Table> &tables)
{
    FCli::out(record.computation + "  " + record.design + "  " + record.reason +
              (record.reused ? ", kept" : "") +
              (record.seconds > 0 ? "  " + duration(record.seconds) : ""));
    for (const FStudy::Table &table : tables) {
        FCli::out(" " + table.name);
        FCli::print(table.rows);
    }
}

/// An infinite number as an object with its text, else the value alone.
QJsonValue jsonOf(const FPlainValue &value)
{
    if (value.special().empty())
        return value.json();
    return QJsonObject{{"value", value.json()}, {"text", Q(value.special())}};
}

QJsonObject designsJson(const FStudy &study)
{
    QJsonObject all;
    for (const auto &design : study.designs()) {
        const FStudy::Row &row = study.row(design->getName());
        QJsonObject values;
        for (const auto &[name, value] : row.parameters)
            values[Q(name)] = jsonOf(value);
        if (row.isComplete)
            all[Q(design->getName())] = values;
    }
    return all;
}

/// Designs and parameters as a table, and what is doubtful.
void printSummary(const FStudy &study)
{
    const bool withValues = study.designs().size() > 1; // of a single one they stand above
    const auto doubts = study.doubts(withValues);
    if (study.completed() == 0 || study.parameters().empty())
        return;
    std::vector<std::vector<std::string>> table{{"design"}};
    table[0].insert(table[0].end(), study.parameters().begin(), study.parameters().end());
    if (!doubts.empty())
        table[0].push_back("doubts");
    for (const auto &design : study.designs()) {
        const FStudy::Row &row = study.row(design->getName());
        if (!row.isComplete)
            continue;
        std::vector<std::string> line{design->getName()};
        for (const std::string &name : study.parameters()) {
            const auto at = row.parameters.find(name);
            line.push_back(at == row.parameters.end() ? "-" : at->second.shown("-", 7));
        }
        const size_t count = (withValues ? row.doubts.size() : 0) + row.failures.size();
        if (!doubts.empty())
            line.push_back(count == 0 ? "-" : "! " + std::to_string(count));
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
    const std::string of = " of " + std::to_string(study.completed()) + " designs)";
    for (const auto &[text, count] : doubts)
        FCli::out("! " + text +
                  (study.completed() > 1 ? " (" + std::to_string(count) + of : std::string()));
}

QJsonObject parametersNow()
{
    QJsonObject all;
    for (const auto &handle : getEntities<FParameter>())
        all[Q(handle.getPtr()->getName())] = jsonOf(FPlainValue::of(FExprBase(handle.getPtr())));
    return all;
}

/// The computations that are asked for. False for an unknown name.
bool choose(const FCliOptions &options, FStudy::Computations *asked)
{
    for (const std::string &name : options.computations) {
        asked->push_back(
            std::dynamic_pointer_cast<FExternComputation>(FObjectManager::instance()->find(name)));
        if (!asked->back()) {
            FCli::err("there is no computation " + name);
            return false;
        }
    }
    if (options.computations.empty())
        for (const auto &handle : getManageds<FExternComputation>())
            asked->push_back(handle.getPtr());
    return true;
}

/// Bytes of "500M"; false if it is no size.
bool readSize(const std::string &text, double *bytes)
{
    static const std::string kUnits = "KMGT";
    const bool hasUnit = !text.empty() && kUnits.find(text.back()) != std::string::npos;
    bool isNumber = false;
    *bytes = Q(text.substr(0, text.size() - hasUnit)).toDouble(&isNumber);
    for (size_t i = 0; hasUnit && i <= kUnits.find(text.back()); ++i)
        *bytes *= 1024;
    return isNumber && std::isfinite(*bytes) && *bytes >= 0;
}

bool choosePolicy(const FCliOptions &options, FRunPolicy *policy)
{
    policy->keepGoing = options.keepGoing;
    policy->timeout = options.timeout;
    policy->retries = options.retries;
    policy->trustProgram = options.trustProgram;
    if (options.reread)
        policy->earlier = FRunPolicy::Reread;
    else if ((options.allDesigns || options.failed || !options.designTable.empty()) &&
             !options.fresh)
        policy->earlier = FRunPolicy::Reuse;
    if (options.keepFree.empty() || readSize(options.keepFree, &policy->keepFreeBytes))
        return true;
    FCli::err("--keep-free: expected a size such as 500M or 2G, found " + options.keepFree);
    return false;
}

/// Designs of which a run was recorded that didn't finish, or that was torn.
FStudy::Designs failedAmong(const FStudy::Designs &designs, const FStudy::Computations &asked)
{
    FStudy::Designs failed;
    for (const auto &design : designs)
        if (std::any_of(asked.begin(), asked.end(), [&](const auto &computation) {
                return FRunStore::hasFailed(computation, design);
            }))
            failed.push_back(design);
    return failed;
}

bool readDesigns(const std::string &path, FStudy::Designs *designs)
{
    QFile file(Q(path));
    QString why;
    if (!FUserFile::open(&file, &why, FUserFile::kMostBytes)) {
        FCli::err("cannot read " + path + ": " + S(why));
        return false;
    }
    const auto outcome = FDesignTable::read(file.readAll(), path);
    for (const FScriptError &error : outcome.errors)
        FCli::err(error.toString());
    if (!outcome.errors.empty())
        FCli::err("nothing was run");
    *designs = outcome.designs;
    return outcome.errors.empty();
}

/// Designs, how their runs ended, and the parameters.
bool writeTable(const std::string &path, const FStudy &study)
{
    const char separator = Q(path).endsWith(".tsv", Qt::CaseInsensitive) ? '\t' : ',';
    QStringList header{"design", "state"};
    for (const std::string &name : study.parameters())
        header << Q(name);
    QByteArray text = FDesignTable::line(header, separator);
    for (const auto &design : study.designs()) {
        const FStudy::Row &row = study.row(design->getName());
        std::string state = row.isComplete ? "finished" : "not run";
        for (const FRunRecord &run : row.runs)
            if (!run.succeeded()) {
                state = run.computation + ": " + run.reason;
                break;
            }
        QStringList cells{Q(design->getName()), Q(state)};
        for (const std::string &name : study.parameters()) {
            const auto at = row.parameters.find(name);
            cells << (at == row.parameters.end() ? QString() : Q(at->second.shown("")));
        }
        text += FDesignTable::line(cells, separator);
    }
    QString why;
    if (FSafeFile::write(Q(path), text, &why))
        return true;
    FCli::err("cannot write " + path + ": " + S(why));
    return false;
}

bool chooseDesigns(const FCliOptions &options, FStudy::Designs *designs)
{
    if (options.allDesigns) {
        *designs = FDesign::all();
        return true;
    }
    if (!options.designTable.empty())
        return readDesigns(options.designTable, designs);
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
    FStudy::Computations asked;
    FStudy::Designs designs;
    if (!choose(options, &asked) || !chooseDesigns(options, &designs))
        return kUsage;
    if (options.failed) {
        const bool isGiven = !options.design.empty() || !options.designTable.empty();
        designs = failedAmong(isGiven ? designs : FDesign::all(), asked);
        if (designs.empty()) {
            err("no run has failed");
            return kDone;
        }
    }
    if (asked.empty()) {
        err("the project has no computation");
        return kFailed;
    }
    FRunQueue queue;
    FRunPolicy policy;
    if (!choosePolicy(options, &policy))
        return kUsage;
    queue.setPolicy(policy);
    FStudy study(designs, asked);
    study.addTo(&queue);
    FProgress progress(!options.json);
    std::map<std::string, std::map<unsigned, QJsonObject>> runsOf; // by design and id
    queue.setListener([&](const FRunRecord &record) {
        const auto tables = study.note(record);
        if (options.json) {
            QJsonArray json;
            for (const FStudy::Table &table : tables)
                json.append(
                    QJsonObject{{"name", Q(table.name)}, {"rows", rowsOf(table.rows, false)}});
            runsOf[record.design][record.id] = runJson(record, json);
        } else if (designs.size() == 1) {
            printRun(record, tables);
        }
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
            for (const auto &run : runsOf[design->getName()])
                runs.append(run.second);
        print(QJsonObject{{"project", Q(options.project)},
                          {"runs", runs},
                          {"parameters", parametersNow()},
                          {"designs", designsJson(study)},
                          {"log", log()}});
    } else {
        printSummary(study);
    }
    const bool isWritten = options.resultTable.empty() || writeTable(options.resultTable, study);
    if (queue.isCancelled())
        return kCancelled;
    if (!isWritten)
        return kUnwritable;
    return queue.failed() > 0 || study.hasFailedParameters() ? kFailed : kDone;
}

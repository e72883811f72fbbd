// SPDX-License-Identifier: Apache-2.0
#ifndef FEXTERNRUN_H
#define FEXTERNRUN_H
#include "fdesign.h"
#include "fexterncomputation.h"

#include <QSocketNotifier>
#include <functional>
#include <memory>

class FRunnerLink;

/// One run of one computation for one design: a fresh folder, the input files, the program under
/// supervision, its report.
///
/// The program is started by turnbuckle-runner, which ends all of it when its time is over, when
/// the run is cancelled, or when this process is gone. Its report comes over a socket.
class FExternRun
{
public:
    FExternRun(std::shared_ptr<FExternComputation> computation, std::shared_ptr<FDesign> design,
               double timeout);
    ~FExternRun();
    FExternRun(const FExternRun &) = delete;
    FExternRun &operator=(const FExternRun &) = delete;

    /// Calls \p ended exactly once, later or at once, when the program has ended or could not be
    /// started. The run may be deleted only afterwards.
    void start(std::function<void()> ended);
    /// Tells the model, and keeps what the results read. Once, after the end.
    void conclude();
    void cancel();
    const FRunRecord &record() const { return mRecord; }
    /// Splits as a POSIX shell does. False for a quote without end.
    static bool splitWords(const std::string &text, std::vector<std::string> *words);
    /// The program that is started: a name to be found along PATH, or a path. A relative path
    /// counts from the project's folder; what isn't there may be an input file of the run.
    static std::string programOf(const FExternComputation &computation);

private:
    bool prepare();
    bool launch();
    void readReport();
    void fail(const std::string &reason);
    std::vector<std::string> commandLine(const std::vector<std::string> &words) const;
    void writeRecord() const;
    /// What was read, with place and doubt of each number; empty if there is nothing.
    QByteArray valuesText() const;
    void writeValues() const;
    /// Our own files stand in a folder of their own, where no file of a program collides with them.
    bool writeOwn(const char *name, const QByteArray &bytes, QString *why) const;

    std::shared_ptr<FExternComputation> mComputation;
    std::shared_ptr<FDesign> mDesign;
    FRunRecord mRecord;
    double mTimeout;
    std::function<void()> mEnded;
    std::unique_ptr<QSocketNotifier> mNotifier;
    std::unique_ptr<FRunnerLink> mRunner; // while the program runs
    std::string mReport;
    int mSocket = -1;
    bool mReported = false, mCancelled = false;
};
#endif

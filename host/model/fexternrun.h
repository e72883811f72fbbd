// SPDX-License-Identifier: Apache-2.0
#ifndef FEXTERNRUN_H
#define FEXTERNRUN_H
#include "fdesign.h"
#include "fexterncomputation.h"
#include "frunexecutor.h"
#include "frunpolicy.h"

#include <QDateTime>
#include <functional>
#include <memory>

/// One run of one computation for one design: a fresh folder, the input files, the program under an
/// executor, its record, and what the model makes of that.
class FExternRun
{
public:
    FExternRun(std::shared_ptr<FExternComputation> computation, std::shared_ptr<FDesign> design,
               const FRunPolicy &policy);
    ~FExternRun();
    FExternRun(const FExternRun &) = delete;
    FExternRun &operator=(const FExternRun &) = delete;

    /// Calls \p ended exactly once, later or at once, when the program has ended or could not be
    /// started. The run may be deleted only afterwards; see letEnd().
    void start(std::function<void()> ended);
    /// Tells the model, and keeps what the results read. Once, after the end. A model that is gone
    /// is told nothing.
    void conclude();
    void cancel();
    /// Ends \p run, keeps it until that is done, and calls \p done then; nobody waits, and the
    /// model is told nothing.
    static void letEnd(std::unique_ptr<FExternRun> run, std::function<void()> done);
    const FRunRecord &record() const { return mRecord; }
    const std::shared_ptr<FExternComputation> &computation() const { return mComputation; }
    const std::shared_ptr<FDesign> &design() const { return mDesign; }
    const QDateTime &since() const { return mSince; }
    /// Splits as a POSIX shell does. False for a quote without end.
    static bool splitWords(const std::string &text, std::vector<std::string> *words);
    /// The program that is started: a name to be found along PATH, or a path. A relative path
    /// counts from the project's folder; what isn't there may be an input file of the run.
    static std::string programOf(const FExternComputation &computation);

private:
    bool prepare();
    bool makeJob();
    /// True if nothing need be run: an earlier run stands for this one.
    bool takeEarlier();
    bool launch();
    bool isGone() const;
    bool fail(const std::string &reason);
    /// Another name of this run's folder, for file systems that don't tell names apart by case.
    bool sharesItsFolder() const;
    void takeRecord(const QByteArray &record);
    void writeRecord();
    /// What was read, with place and doubt of each number; empty if there is nothing.
    bool writeValues(std::string *why) const;

    std::shared_ptr<FExternComputation> mComputation;
    std::shared_ptr<FDesign> mDesign;
    FRunRecord mRecord;
    FRunPolicy mPolicy;
    FRunJob mJob;
    QDateTime mSince;
    unsigned long mEdition = 0; // of what the results depend on, when the inputs were written
    std::function<void()> mEnded;
    std::shared_ptr<FRunLock> mLock;
    std::shared_ptr<FRunFolder> mFolder;
    std::unique_ptr<FRunExecution> mExecution;
    std::unique_ptr<QObject> mLater; // the end of a run that needed no program comes by it
    QByteArray mReport;              // the text of the record as the executor left it
    bool mStarted = false;
};
#endif

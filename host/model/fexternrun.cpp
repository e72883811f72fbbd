// SPDX-License-Identifier: Apache-2.0
#include "fexternrun.h"

#include "fdesign.h"
#include "flogmsg.h"
#include "fobjectmanager.h"
#include "fpathmanager.h"
#include "frunfolder.h"
#include "frunlock.h"
#include "frunreuse.h"
#include "frunstore.h"
#include "frunsync.h"
#include "fsafefile.h"
#include "fstudy.h"

#include <QFileInfo>
#include <QTimer>
#include <algorithm>
#include <cstring>

namespace {
bool hasFinished(const std::string &directory)
{
    FRunRecord old;
    QByteArray text;
    return FRunFolder::read(directory, "run.json", &text) && old.read(text) && old.succeeded();
}
} // namespace

FExternRun::FExternRun(std::shared_ptr<FExternComputation> computation,
                       std::shared_ptr<FDesign> design, const FRunPolicy &policy)
    : mComputation(std::move(computation))
    , mDesign(std::move(design))
    , mPolicy(policy)
{
    mRecord.computation = mComputation->getName();
    mRecord.design = mDesign->getName();
}

FExternRun::~FExternRun()
{
    if (mStarted)
        mComputation->runStopped(mDesign.get());
}

void FExternRun::letEnd(std::unique_ptr<FExternRun> run, std::function<void()> done)
{
    // Not destroyed with the program: what still runs then is ended by its executor alone.
    static auto *ending = new std::vector<std::unique_ptr<FExternRun>>;
    FExternRun *own = run.get();
    own->mEnded = [own, done = std::move(done)] {
        if (own->mFolder)
            own->mFolder->settle();
        QTimer::singleShot(0, [own, done] {
            ending->erase(std::remove_if(ending->begin(), ending->end(),
                                         [own](const auto &other) { return other.get() == own; }),
                          ending->end());
            done();
        });
    };
    ending->push_back(std::move(run));
    own->cancel();
}

std::string FExternRun::programOf(const FExternComputation &computation)
{
    const std::string application = FFile::resolveEnv(computation.getApplication());
    if (application.find('/') != std::string::npos && application[0] != '/') {
        const std::string inProject =
            FPathManager::instance()->getProjectDirAbs() + "/" + application;
        if (QFileInfo::exists(Q(inProject)))
            return inProject;
    }
    return application;
}

bool FExternRun::splitWords(const std::string &text, std::vector<std::string> *words)
{
    std::string word;
    bool inWord = false;
    char quote = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (quote == '\'') {
            if (c == '\'')
                quote = 0;
            else
                word += c;
        } else if (c == '\\' && i + 1 < text.size() &&
                   (quote == 0 || std::strchr("\"\\$`", text[i + 1]))) {
            word += text[++i];
            inWord = true;
        } else if (quote == '"') {
            if (c == '"')
                quote = 0;
            else
                word += c;
        } else if (c == '\'' || c == '"') {
            quote = c;
            inWord = true;
        } else if (c == ' ' || c == '\t' || c == '\n') {
            if (inWord)
                words->push_back(word);
            word.clear();
            inWord = false;
        } else {
            word += c;
            inWord = true;
        }
    }
    if (inWord)
        words->push_back(word);
    return quote == 0;
}

void FExternRun::start(std::function<void()> ended)
{
    mEnded = std::move(ended);
    mSince = QDateTime::currentDateTimeUtc();
    const FDesign::Scope evaluated(mDesign);
    mComputation->runStarted(mDesign.get());
    mStarted = true;
    bool launched = false;
    std::string why;
    FPathManager *paths = FPathManager::instance();
    mRecord.directory = paths->getResultsDirAbs(mComputation, mDesign);
    const bool mayStart = mPolicy.earlier != FRunPolicy::Reread || hasFinished(mRecord.directory);
    if (!mayStart)
        why = "there is no finished run to read";
    else
        mLock = FRunLock::take(paths->getDesignsDirAbs(), &why);
    if (mLock)
        mFolder = FRunFolder::prepare(mLock, mRecord.directory, &why);
    {
        const FPathManager::RunScope scope(mComputation, mDesign,
                                           mFolder ? mFolder->path() : mRecord.directory);
        const_cast<const FExternComputation &>(*mComputation).prepareRun();
        mComputation->prepareRun();
        mComputation->computationStarted();
        launched = (mFolder || fail(why)) && prepare() && makeJob() && (takeEarlier() || launch());
        mEdition = mComputation->editionFor(mDesign.get());
    }
    if (!launched)
        mEnded();
}

bool FExternRun::prepare()
{
    if (sharesItsFolder())
        return false;
    FPathManager *paths = FPathManager::instance();
    const QString directory = Q(mFolder->path());
    QString why;
    const auto isInside = [&](const std::string &name, const char *what) {
        return !safeJoin(directory, Q(name), &why).isEmpty() ||
               fail(std::string("name of ") + what + ": " + S(why));
    };
    for (const std::string &name : mComputation->requiredResultFiles())
        if (!isInside(name, "a result file"))
            return false;
    const std::string &input = mComputation->getStandardInput();
    if (!input.empty() && !isInside(input, "the standard input"))
        return false;
    mComputation->prepareFileValues();
    const size_t before = FLogMsg::count();
    const bool written = mComputation->writeOutputFile();
    mRecord.inputsWithoutNumber = mComputation->inputsWithoutNumber();
    const std::string &failure = paths->runFailure();
    if (!failure.empty())
        return fail(failure);
    return written ||
           fail("cannot write the input files" +
                (FLogMsg::count() > before ? ": " + FLogMsg::last().message : std::string()));
}

bool FExternRun::sharesItsFolder() const
{
    QByteArray text;
    FRunRecord old;
    if (mFolder->prepared().empty() || !FRunFolder::read(mRecord.directory, "run.json", &text) ||
        !old.read(text))
        return false;
    const std::pair<std::string, std::string> names[] = {{old.design, mRecord.design},
                                                         {old.computation, mRecord.computation}};
    for (const auto &[other, own] : names)
        if (other != own && Q(other).compare(Q(own), Qt::CaseInsensitive) == 0 &&
            FObjectManager::instance()->find(other)) {
            const_cast<FExternRun *>(this)->fail(
                "the folder is the one of " + other +
                ": this file system takes the names for one; rename one of them");
            return true;
        }
    return false;
}

bool FExternRun::makeJob()
{
    FRunJob &job = mJob;
    job.command.push_back(programOf(*mComputation));
    if (job.command[0].empty())
        return fail("no program is set");
    if (!splitWords(mComputation->getArguments(), &job.command))
        return fail("a quote without end in the arguments " + mComputation->getArguments());
    job.computation = mRecord.computation;
    job.design = mRecord.design;
    job.directory = mRecord.directory;
    job.variables = mComputation->getEnvironment();
    job.expected = mComputation->requiredResultFiles();
    job.standardInput = mComputation->getStandardInput();
    job.timeLimit = mPolicy.timeout >= 0 ? mPolicy.timeout : mComputation->getTimeout();
    job.waitForAll = mComputation->getWaitForAll();
    job.folder = mFolder;
    job.lock = mLock;
    std::string why;
    job.program = FRunReuse::programOf(job);
    job.inputs = FRunReuse::inputsOf(job, &why);
    return !job.inputs.empty() || fail(why);
}

bool FExternRun::takeEarlier()
{
    if (mPolicy.earlier == FRunPolicy::Replace || mFolder->prepared().empty())
        return false;
    auto old = FRunReuse::finishedRun(mJob);
    const bool isSame =
        old && old->inputs == mJob.inputs && (old->program == mJob.program || mPolicy.trustProgram);
    if (!old || (!isSame && mPolicy.earlier != FRunPolicy::Reread))
        return false;
    std::string why;
    auto folder = FRunFolder::earlier(mLock, mRecord.directory, &why);
    if (!folder)
        return false;
    mFolder->dropReplaced();
    mFolder = std::move(folder);
    mJob.folder.reset();
    // Names are those of now; the folder may have had others.
    old->computation = mRecord.computation;
    old->design = mRecord.design;
    old->directory = mRecord.directory;
    old->reused = true;
    old->inputsChanged = !isSame;
    mRecord = std::move(*old);
    mLater = std::make_unique<QObject>();
    QTimer::singleShot(0, mLater.get(), [this] { mEnded(); });
    return true;
}

bool FExternRun::launch()
{
    if (mPolicy.earlier == FRunPolicy::Reread)
        return fail("the files of the finished run aren't as it left them");
    std::string why;
    mExecution = FRunExecutor::instance()->start(
        mJob,
        [this](const QByteArray &record) {
            takeRecord(record);
            mEnded();
        },
        &why);
    return mExecution || fail(why);
}

void FExternRun::cancel()
{
    if (mExecution)
        mExecution->cancel();
}

void FExternRun::takeRecord(const QByteArray &record)
{
    mReport = record;
    if (!mRecord.read(record))
        mRecord.set(FRunState::Failed, "turnbuckle-runner ended without a report");
}

bool FExternRun::fail(const std::string &reason)
{
    mRecord.set(FRunState::NotStarted, reason);
    return false;
}

bool FExternRun::isGone() const { return mComputation->isDestroyed() || mDesign->isDestroyed(); }

void FExternRun::writeRecord()
{
    QString why;
    if (!mFolder || mFolder->write("run.json", mRecord.text(mReport), &why))
        return;
    // Better none than one that tells something else.
    mFolder->remove("run.json");
    FLogMsg::error("Run", "Could not write the record of the run in " + mRecord.directory, S(why),
                   nullptr);
}

bool FExternRun::writeValues(std::string *why) const
{
    const auto tables = FStudy::tablesOf(*mComputation);
    QString reason;
    if (tables.empty() || FRunStore::write(*mFolder, tables, &reason))
        return true;
    *why = "the values can't be written: " + S(reason);
    return false;
}

void FExternRun::conclude()
{
    const FDesign::Scope evaluated(mDesign);
    mStarted = false;
    mComputation->runStopped(mDesign.get());
    if (isGone()) {
        mRecord.set(FRunState::Cancelled, "removed from the project while it ran");
        if (mFolder)
            mFolder->settle();
        return;
    }
    const FRunState ended = mRecord.state;
    if (!mRecord.reused) {
        mRecord.inputsChanged =
            mRecord.succeeded() && mComputation->editionFor(mDesign.get()) != mEdition;
        if (mRecord.inputsChanged)
            mRecord.reason += ", but inputs changed during the run";
        if (mReport.isEmpty() || mRecord.inputsChanged || !mRecord.inputsWithoutNumber.empty())
            writeRecord();
    } else if (mRecord.inputsChanged || mComputation->editionFor(mDesign.get()) != mEdition) {
        mRecord.inputsChanged = true;
        mRecord.reason += ", but of other inputs than those of now";
    }
    if (mFolder)
        mFolder->settle();
    if (ended != FRunState::NotStarted)
        mRecord.directory = FPathManager::instance()->getResultsDirAbs(mComputation, mDesign);
    {
        const FPathManager::RunScope scope(mComputation, mDesign, std::string());
        mComputation->takeResults(mDesign, mRecord);
        std::string why;
        if (mRecord.succeeded() && !writeValues(&why)) {
            mRecord.set(FRunState::Failed, why);
            if (!mRecord.reused)
                writeRecord();
            mComputation->takeResults(mDesign, mRecord);
        }
        mComputation->computationFinished();
        const_cast<const FExternComputation &>(*mComputation).finalizeRun();
        mComputation->finalizeRun();
    }
    if (!mRecord.succeeded())
        FLogMsg::error("Run",
                       "computation " + mRecord.computation + ", design " + mRecord.design + ": " +
                           mRecord.reason,
                       mRecord.directory, nullptr);
    if (mFolder && !mRecord.reused)
        FRunSync::instance()->add(mRecord.directory);
    mFolder.reset();
    mLock.reset();
}

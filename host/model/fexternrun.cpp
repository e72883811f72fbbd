// SPDX-License-Identifier: Apache-2.0
#include "fexternrun.h"

#include "fdesign.h"
#include "flogmsg.h"
#include "fpathmanager.h"
#include "frunnerlink.h"
#include "frunsync.h"
#include "fsafefile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>

FExternRun::FExternRun(std::shared_ptr<FExternComputation> computation,
                       std::shared_ptr<FDesign> design, double timeout)
    : mComputation(std::move(computation))
    , mDesign(std::move(design))
    , mTimeout(timeout >= 0 ? timeout : mComputation->getTimeout())
{
    mRecord.computation = mComputation->getName();
    mRecord.design = mDesign->getName();
    mRecord.state = "not-started";
}

FExternRun::~FExternRun()
{
    mNotifier.reset();
    if (mSocket >= 0) {
        ::shutdown(mSocket, SHUT_WR); // the runner ends its program, and closes when that is done
        char rest[512];
        for (ssize_t got = 1; got > 0 || (got < 0 && errno == EINTR);)
            got = ::read(mSocket, rest, sizeof rest);
        ::close(mSocket);
    }
    FRunnerLink::giveBack(std::move(mRunner));
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
    FDesign::setCurrent(mDesign);
    mComputation->runStarted();
    bool launched = false;
    {
        const FPathManager::RunScope scope(mComputation, mDesign);
        const_cast<const FExternComputation &>(*mComputation).prepareRun();
        mComputation->prepareRun();
        mComputation->computationStarted();
        launched = prepare() && launch();
    }
    if (!launched)
        mEnded();
}

bool FExternRun::prepare()
{
    FPathManager *paths = FPathManager::instance();
    mRecord.directory = paths->getResultsDirAbs(mComputation, mDesign);
    const QString directory = Q(mRecord.directory);
    QString why;
    if (QFileInfo::exists(directory) && !FSafeFile::removeTree(directory, &why)) {
        fail("cannot empty the run folder " + mRecord.directory + ": " + S(why));
        return false;
    }
    if (!QDir().mkpath(directory + "/.turnbuckle")) {
        fail("cannot make the run folder " + mRecord.directory + ": " + std::strerror(errno));
        return false;
    }
    const auto isInside = [&](const std::string &name, const char *what) {
        if (safeJoin(directory, Q(name), &why).isEmpty())
            fail(std::string("name of ") + what + ": " + S(why));
        return why.isEmpty();
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
    const std::string &failure = paths->runFailure();
    if (!failure.empty()) {
        fail(failure);
        return false;
    }
    if (!written) {
        fail("cannot write the input files" +
             (FLogMsg::count() > before ? ": " + FLogMsg::last().message : std::string()));
        return false;
    }
    return true;
}

std::vector<std::string> FExternRun::commandLine(const std::vector<std::string> &words) const
{
    std::vector<std::string> line{FRunnerLink::runnerPath(),
                                  "--directory",
                                  mRecord.directory,
                                  "--control",
                                  "3",
                                  "--record",
                                  ".turnbuckle/run.json",
                                  "--stdout",
                                  "stdout.txt",
                                  "--stderr",
                                  "stderr.txt",
                                  "--computation",
                                  mRecord.computation,
                                  "--design",
                                  mRecord.design};
    if (mTimeout > 0) {
        line.push_back("--time-limit");
        line.push_back(shortestNumber(mTimeout));
    }
    if (!mComputation->getStandardInput().empty()) {
        line.push_back("--stdin");
        line.push_back(mComputation->getStandardInput());
    }
    for (const std::string &file : mComputation->requiredResultFiles()) {
        line.push_back("--expect");
        line.push_back(file);
    }
    line.push_back("--");
    line.insert(line.end(), words.begin(), words.end());
    return line;
}

bool FExternRun::launch()
{
    const std::string application = programOf(*mComputation);
    std::vector<std::string> words;
    if (application.empty()) {
        fail("no program is set");
        return false;
    }
    words.push_back(application);
    if (!splitWords(mComputation->getArguments(), &words)) {
        fail("a quote without end in the arguments " + mComputation->getArguments());
        return false;
    }
    int sockets[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0) {
        fail(std::string("cannot make a socket: ") + std::strerror(errno));
        return false;
    }
    std::string why;
    mRunner = FRunnerLink::take();
    const bool started =
        mRunner->start(commandLine(words), mComputation->getEnvironment(), sockets[1], &why);
    ::close(sockets[1]);
    if (!started) {
        ::close(sockets[0]);
        fail(why);
        return false;
    }
    mSocket = sockets[0];
    mNotifier = std::make_unique<QSocketNotifier>(mSocket, QSocketNotifier::Read);
    QObject::connect(mNotifier.get(), &QSocketNotifier::activated, mNotifier.get(),
                     [this] { readReport(); });
    return true;
}

void FExternRun::cancel()
{
    mCancelled = true;
    if (mSocket >= 0)
        (void)!::send(mSocket, "c", 1, MSG_NOSIGNAL);
}

void FExternRun::readReport()
{
    char buffer[4096];
    const ssize_t got = ::read(mSocket, buffer, sizeof buffer);
    if (got < 0 && (errno == EINTR || errno == EAGAIN))
        return;
    if (got > 0)
        mReport.append(buffer, size_t(got));
    // Only the last line of a report is a brace alone, so its end needn't be waited for.
    if (got > 0 && (mReport.size() < 3 || mReport.compare(mReport.size() - 3, 3, "\n}\n") != 0))
        return;
    mNotifier->setEnabled(false);
    mNotifier.release()->deleteLater(); // we stand in its signal
    ::close(mSocket);
    mSocket = -1;
    FRunnerLink::giveBack(std::move(mRunner));
    const QJsonObject report = QJsonDocument::fromJson(QByteArray::fromStdString(mReport)).object();
    if (report.isEmpty()) {
        mRecord.state = "failed";
        mRecord.reason = "turnbuckle-runner ended without a report";
    } else {
        mReported = true;
        mRecord.state = S(report["state"].toString());
        mRecord.reason = S(report["reason"].toString());
        mRecord.hasExitCode = report["exitCode"].isDouble();
        mRecord.exitCode = report["exitCode"].toInt();
        mRecord.hasSignal = report["signal"].isDouble();
        mRecord.signal = report["signal"].toInt();
        mRecord.seconds = report["seconds"].toDouble();
    }
    mEnded();
}

void FExternRun::fail(const std::string &reason)
{
    mRecord.state = "not-started";
    mRecord.reason = reason;
}

bool FExternRun::writeOwn(const char *name, const QByteArray &bytes, QString *why) const
{
    return FSafeFile::write(Q(mRecord.directory) + "/.turnbuckle/" + name, bytes, why,
                            FSafeFile::Durability::Later);
}

void FExternRun::writeRecord() const
{
    const QJsonObject json{{"computation", Q(mRecord.computation)},
                           {"design", Q(mRecord.design)},
                           {"directory", Q(mRecord.directory)},
                           {"state", Q(mRecord.state)},
                           {"reason", Q(mRecord.reason)},
                           {"exitCode", QJsonValue::Null},
                           {"signal", QJsonValue::Null},
                           {"seconds", mRecord.seconds}};
    QString why;
    if (QFileInfo(Q(mRecord.directory)).isDir() &&
        !writeOwn("run.json", QJsonDocument(json).toJson(), &why))
        FLogMsg::error("Run", "Could not write the record of the run", S(why), nullptr);
}

QByteArray FExternRun::valuesText() const
{
    const auto results = mComputation->currentResults().ptr<FResultsGeneric>();
    if (!results || !results->fetchResults())
        return {};
    QJsonArray tables;
    for (const auto &handle : results->tables())
        if (const auto table = handle.getPtr())
            tables.append(QJsonObject{{"name", Q(table->getName())}, {"rows", table->rowsJson()}});
    return tables.isEmpty() ? QByteArray()
                            : QJsonDocument(QJsonObject{{"tables", tables}}).toJson();
}

void FExternRun::writeValues() const
{
    const QByteArray text = valuesText();
    QString why;
    if (!text.isEmpty() && !writeOwn("values.json", text, &why))
        FLogMsg::error("Run", "Could not write the values of the run", S(why), nullptr);
}

void FExternRun::conclude()
{
    FDesign::setCurrent(mDesign);
    if (!mReported)
        writeRecord();
    if (!mRecord.succeeded())
        FLogMsg::error("Run",
                       "computation " + mRecord.computation + ", design " + mRecord.design + ": " +
                           mRecord.reason,
                       mRecord.directory, nullptr);
    {
        const FPathManager::RunScope scope(mComputation, mDesign);
        mComputation->runEnded(mDesign, mRecord.succeeded());
        mComputation->computationFinished();
        const_cast<const FExternComputation &>(*mComputation).finalizeRun();
        mComputation->finalizeRun();
    }
    if (mRecord.succeeded())
        writeValues();
    FRunSync::instance()->add(mRecord.directory);
}

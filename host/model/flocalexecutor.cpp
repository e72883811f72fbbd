// SPDX-License-Identifier: Apache-2.0
#include "flocalexecutor.h"

#include "frunfolder.h"
#include "frunlock.h"
#include "frunnerlink.h"
#include "fscripttype.h"

#include <QSocketNotifier>
#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>

namespace {
std::vector<std::string> commandLine(const FRunJob &job)
{
    // The numbers are those of the files that go with the request.
    std::vector<std::string> line{
        FRunnerLink::runnerPath(),
        "--directory",
        job.directory,
        "--control",
        "3",
        "--folder",
        "4",
        "--record",
        std::string(FRunFolder::kOwn) + "/run.json",
        "--stdout",
        "stdout.txt",
        "--stderr",
        "stderr.txt",
        "--computation",
        job.computation,
        "--design",
        job.design,
    };
    const auto add = [&line](const char *option, const std::string &value) {
        line.emplace_back(option);
        line.push_back(value);
    };
    if (!job.folder->prepared().empty()) {
        add("--parent", "5");
        add("--prepared", job.folder->prepared());
        add("--place", job.folder->place());
    }
    add("--inputs", job.inputs);
    add("--program", job.program);
    if (job.timeLimit > 0)
        add("--time-limit", shortestNumber(job.timeLimit));
    if (job.waitForAll)
        add("--wait-for", "all");
    if (!job.standardInput.empty())
        add("--stdin", job.standardInput);
    for (const std::string &file : job.expected)
        add("--expect", file);
    for (const std::string &variable : job.variables)
        add("--variable", variable.substr(0, variable.find('=')));
    line.emplace_back("--");
    line.insert(line.end(), job.command.begin(), job.command.end());
    return line;
}

class FLocalExecution : public FRunExecution
{
public:
    FLocalExecution(int socket, std::unique_ptr<FRunnerLink> runner,
                    std::shared_ptr<FRunFolder> folder, FRunExecutor::Ended ended)
        : mSocket(socket)
        , mRunner(std::move(runner))
        , mFolder(std::move(folder))
        , mEnded(std::move(ended))
        , mNotifier(std::make_unique<QSocketNotifier>(socket, QSocketNotifier::Read))
    {
        QObject::connect(
            mNotifier.get(), &QSocketNotifier::activated, mNotifier.get(), [this] { read(); });
    }
    /// The runner ends its program when the socket closes, and itself with its own socket.
    ~FLocalExecution() override
    {
        mNotifier.reset();
        if (mSocket >= 0)
            ::close(mSocket);
    }
    FLocalExecution(const FLocalExecution &) = delete;
    FLocalExecution &operator=(const FLocalExecution &) = delete;

    void cancel() override
    {
        if (mSocket >= 0)
            (void)!::send(mSocket, "c", 1, MSG_NOSIGNAL);
    }

private:
    void read()
    {
        static const char started[] = "started\n";
        char buffer[4096];
        const ssize_t got = ::read(mSocket, buffer, sizeof buffer);
        if (got < 0 && (errno == EINTR || errno == EAGAIN))
            return;
        if (got > 0)
            mReport.append(buffer, int(got));
        if (mReport.startsWith(started)) {
            mReport.remove(0, int(sizeof started - 1));
            mFolder->dropReplaced();
        }
        // Only the last line of a report is a brace alone, so its end needn't be waited for.
        if (got > 0 && !mReport.endsWith("\n}\n"))
            return;
        mNotifier->setEnabled(false);
        mNotifier.release()->deleteLater(); // we stand in its signal
        ::close(mSocket);
        mSocket = -1;
        if (!mReport.endsWith("\n}\n")) {
            mReport.clear();
            mRunner->endOrphans();
        }
        FRunnerLink::giveBack(std::move(mRunner));
        const auto ended = std::move(mEnded); // may delete this
        const QByteArray report = mReport;
        ended(report);
    }

    int mSocket;
    std::unique_ptr<FRunnerLink> mRunner;
    std::shared_ptr<FRunFolder> mFolder;
    FRunExecutor::Ended mEnded;
    std::unique_ptr<QSocketNotifier> mNotifier;
    QByteArray mReport;
};

FRunExecutor *&current()
{
    static FLocalExecutor local;
    static FRunExecutor *executor = &local;
    return executor;
}
} // namespace

FRunExecutor *FRunExecutor::instance() { return current(); }

void FRunExecutor::setInstance(FRunExecutor *executor)
{
    static FLocalExecutor local;
    current() = executor ? executor : &local;
}

std::unique_ptr<FRunExecution> FLocalExecutor::start(const FRunJob &job, Ended ended,
                                                     std::string *why)
{
    int sockets[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0) {
        *why = std::string("cannot make a socket: ") + std::strerror(errno);
        return nullptr;
    }
    auto variables = job.variables;
    variables.push_back("TURNBUCKLE_RUN=" + job.directory); // whose run a process belongs to
    auto runner = FRunnerLink::take();
    const bool started = runner->start(
        commandLine(job), variables,
        {sockets[1], job.folder->folder(), job.folder->parent(), job.lock->file()}, why);
    ::close(sockets[1]);
    if (started)
        return std::make_unique<FLocalExecution>(sockets[0], std::move(runner), job.folder,
                                                 std::move(ended));
    ::close(sockets[0]);
    return nullptr;
}

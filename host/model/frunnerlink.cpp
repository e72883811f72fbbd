// SPDX-License-Identifier: Apache-2.0
#include "frunnerlink.h"

#include "flogmsg.h"
#include "fprocesstree.h"
#include "ftext.h"
#include "fviewctrl.h"

#include <QCoreApplication>
#include <QFile>
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <set>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace {
constexpr int kOrphanAttempts = 200;
constexpr useconds_t kOrphanPause = 2000; // µs

std::vector<std::unique_ptr<FRunnerLink>> &idleLinks()
{
    static std::vector<std::unique_ptr<FRunnerLink>> links;
    return links;
}

/// Runners that were let go and may not have ended yet. Links go at the end of the process, when
/// nothing that could be destroyed is there for sure.
std::vector<pid_t> &leaving()
{
    static auto *runners = new std::vector<pid_t>;
    return *runners;
}

/// All runners of this process.
std::set<pid_t> &runners()
{
    static auto *all = new std::set<pid_t>;
    return *all;
}

bool startsInRun(pid_t process)
{
    QFile file(QStringLiteral("/proc/%1/environ").arg(process));
    return file.open(QIODevice::ReadOnly) && ('\0' + file.readAll()).contains("\0TURNBUCKLE_RUN=");
}

/// Path and environment, each text with a zero byte behind it.
std::string surroundings()
{
    std::string all = FRunnerLink::runnerPath() + '\0';
    for (char **entry = environ; *entry; ++entry)
        all.append(*entry, std::strlen(*entry) + 1);
    return all;
}

/// Sends all of \p text behind the two \p sizes, and the \p files with them.
bool sendRequest(int socket, const uint32_t (&sizes)[2], const std::string &text,
                 const std::vector<int> &files)
{
    alignas(cmsghdr) char room[CMSG_SPACE(8 * sizeof(int))] = {};
    const size_t length = files.size() * sizeof(int);
    iovec parts[] = {{const_cast<uint32_t *>(sizes), sizeof sizes},
                     {const_cast<char *>(text.data()), text.size()}};
    msghdr message = {};
    message.msg_iov = parts;
    message.msg_iovlen = 2;
    message.msg_control = room;
    message.msg_controllen = CMSG_SPACE(length);
    cmsghdr *header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(length);
    std::memcpy(CMSG_DATA(header), files.data(), length);
    while (message.msg_iovlen > 0) {
        ssize_t sent = ::sendmsg(socket, &message, MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR)
            continue;
        if (sent < 0)
            return false;
        message.msg_controllen = 0; // once only
        for (; message.msg_iovlen > 0 && size_t(sent) >= message.msg_iov->iov_len;
             ++message.msg_iov, --message.msg_iovlen)
            sent -= ssize_t(message.msg_iov->iov_len);
        if (message.msg_iovlen > 0) {
            message.msg_iov->iov_base = static_cast<char *>(message.msg_iov->iov_base) + sent;
            message.msg_iov->iov_len -= size_t(sent);
        }
    }
    return true;
}
} // namespace

FRunnerLink::~FRunnerLink() { disconnect(); }

std::unique_ptr<FRunnerLink> FRunnerLink::take()
{
    auto &idle = idleLinks();
    if (idle.empty())
        return std::make_unique<FRunnerLink>();
    auto link = std::move(idle.back());
    idle.pop_back();
    return link;
}

void FRunnerLink::giveBack(std::unique_ptr<FRunnerLink> link)
{
    if (link)
        idleLinks().push_back(std::move(link));
}

std::string FRunnerLink::runnerPath()
{
    const QByteArray chosen = qgetenv("TURNBUCKLE_RUNNER");
    return chosen.isEmpty() ? S(QCoreApplication::applicationDirPath() + "/turnbuckle-runner")
                            : chosen.toStdString();
}

bool FRunnerLink::start(const std::vector<std::string> &words,
                        const std::vector<std::string> &variables, const std::vector<int> &files,
                        std::string *why)
{
    std::string request;
    for (const auto *texts : {&words, &variables})
        for (const std::string &text : *texts)
            request.append(text.c_str(), std::strlen(text.c_str()) + 1);
    const uint32_t sizes[] = {uint32_t(words.size()), uint32_t(request.size())};
    // A runner that is gone, or takes no more runs, is replaced, once.
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (!connect(why))
            return false;
        if (sendRequest(mSocket, sizes, request, files))
            return true;
        *why = "cannot reach " + words[0] + ": " + std::strerror(errno);
        if (errno != EPIPE && errno != ECONNRESET)
            return false;
        disconnect();
    }
    return false;
}

bool FRunnerLink::connect(std::string *why)
{
    const std::string now = surroundings();
    if (mSocket >= 0 && now == mMadeFor)
        return true;
    disconnect();
    // Descendants of a runner that is killed come to this process.
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    std::string path = runnerPath(), option = "--serve", number = "3";
    int sockets[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0) {
        *why = std::string("cannot make a socket: ") + std::strerror(errno);
        return false;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, sockets[1], 3);
    char *const line[] = {path.data(), option.data(), number.data(), nullptr};
    const int error = ::posix_spawn(&mRunner, path.c_str(), &actions, nullptr, line, environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(sockets[1]);
    if (error != 0) {
        mRunner = -1;
        ::close(sockets[0]);
        *why = "cannot start " + path + ": " + std::strerror(error);
        return false;
    }
    runners().insert(mRunner);
    mSocket = sockets[0];
    mMadeFor = now;
    return true;
}

void FRunnerLink::disconnect()
{
    if (mSocket >= 0)
        ::close(mSocket); // ends the runner, after the run that it carries
    mSocket = -1;
    if (mRunner > 0)
        leaving().push_back(mRunner);
    mRunner = -1;
    reapEnded();
}

void FRunnerLink::reapEnded()
{
    auto &all = leaving();
    all.erase(std::remove_if(all.begin(), all.end(),
                             [](pid_t runner) {
                                 if (::waitpid(runner, nullptr, WNOHANG) == 0)
                                     return false;
                                 runners().erase(runner);
                                 return true;
                             }),
              all.end());
}

void FRunnerLink::endOrphans()
{
    if (mRunner <= 0)
        return;
    // What it left comes to us with its end, and its socket closes a little before.
    ::kill(mRunner, SIGKILL);
    while (::waitpid(mRunner, nullptr, 0) < 0 && errno == EINTR) {
    }
    runners().erase(mRunner);
    mRunner = -1;
    disconnect();
    const bool hasGui = FViewCtrl::instance()->hasGui();
    for (int attempt = 0; attempt < kOrphanAttempts; ++attempt) {
        std::vector<pid_t> orphans;
        // A window starts other programs too, and those are nobody's orphans.
        for (const pid_t child : childrenOfThisProcess())
            if (runners().count(child) == 0 && (!hasGui || startsInRun(child)))
                orphans.push_back(child);
        if (orphans.empty())
            return;
        signalDescendants(SIGKILL, &orphans);
        for (const pid_t orphan : orphans)
            ::waitpid(orphan, nullptr, WNOHANG);
        ::usleep(kOrphanPause);
    }
    FLogMsg::error("Run", "Could not end what a killed turnbuckle-runner left", std::string(),
                   nullptr);
}

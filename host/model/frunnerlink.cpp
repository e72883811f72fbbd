// SPDX-License-Identifier: Apache-2.0
#include "frunnerlink.h"

#include "ftext.h"

#include <QCoreApplication>
#include <cerrno>
#include <cstring>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace {
std::vector<std::unique_ptr<FRunnerLink>> &idleLinks()
{
    static std::vector<std::unique_ptr<FRunnerLink>> links;
    return links;
}

/// Path and environment, each text with a zero byte behind it.
std::string surroundings()
{
    std::string all = FRunnerLink::runnerPath() + '\0';
    for (char **entry = environ; *entry; ++entry)
        all.append(*entry, std::strlen(*entry) + 1);
    return all;
}

/// Sends all of \p text behind the two \p sizes, and the file \p control with them.
bool sendRequest(int socket, const uint32_t (&sizes)[2], const std::string &text, int control)
{
    alignas(cmsghdr) char room[CMSG_SPACE(sizeof(int))] = {};
    iovec parts[] = {{const_cast<uint32_t *>(sizes), sizeof sizes},
                     {const_cast<char *>(text.data()), text.size()}};
    msghdr message = {};
    message.msg_iov = parts;
    message.msg_iovlen = 2;
    message.msg_control = room;
    message.msg_controllen = sizeof room;
    cmsghdr *header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(int));
    std::memcpy(CMSG_DATA(header), &control, sizeof control);
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
                        const std::vector<std::string> &variables, int control, std::string *why)
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
        if (sendRequest(mSocket, sizes, request, control))
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
        while (::waitpid(mRunner, nullptr, 0) < 0 && errno == EINTR) {
        }
    mRunner = -1;
}

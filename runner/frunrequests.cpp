// SPDX-License-Identifier: Apache-2.0
#include "frunrequests.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>

namespace {
const int kControl = 3;

/// Reads \p size bytes, and the file that came with them if there is one. False at the end.
bool receiveAll(int socket, void *bytes, size_t size, int *file)
{
    while (size > 0) {
        alignas(cmsghdr) char room[CMSG_SPACE(sizeof(int))];
        iovec part = {bytes, size};
        msghdr message = {};
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        message.msg_control = room;
        message.msg_controllen = sizeof room;
        const ssize_t got = ::recvmsg(socket, &message, MSG_CMSG_CLOEXEC);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return false;
        const cmsghdr *header = CMSG_FIRSTHDR(&message);
        if (header && header->cmsg_type == SCM_RIGHTS)
            std::memcpy(file, CMSG_DATA(header), sizeof *file);
        bytes = static_cast<char *>(bytes) + got;
        size -= size_t(got);
    }
    return true;
}
} // namespace

bool FRunRequests::receive(int socket)
{
    // A pipe of the caller must not stay open because of this process. The socket is the last of
    // the files that are meant for it.
    ::close_range(unsigned(socket) + 1, ~0U, 0);
    // The end of the caller is what ends this process. Each run hears of these signals by itself.
    sigset_t held;
    ::sigemptyset(&held);
    for (int signal : {SIGINT, SIGTERM, SIGHUP})
        ::sigaddset(&held, signal);
    ::sigprocmask(SIG_BLOCK, &held, nullptr);
    std::signal(SIGCHLD, SIG_IGN); // nobody waits for the processes of the runs
    for (;;) {
        uint32_t sizes[2];
        int control = -1;
        if (!receiveAll(socket, sizes, sizeof sizes, &control))
            return false;
        mText.resize(sizes[1]);
        if (!receiveAll(socket, mText.data(), mText.size(), &control) || control < 0)
            return false;
        // A process that can't be made shows as a control socket that closes without a report.
        if (::fork() == 0) {
            std::signal(SIGCHLD, SIG_DFL);
            ::close(socket); // a runner that ended must not look alive because of its runs
            if (control != kControl) {
                ::dup2(control, kControl);
                ::close(control);
            }
            unpack(sizes[0]);
            return true;
        }
        ::close(control);
    }
}

void FRunRequests::unpack(size_t words)
{
    mText.push_back(0);
    char *const end = mText.data() + mText.size() - 1;
    for (char *text = mText.data(); text < end; text += std::strlen(text) + 1) {
        if (mWords.size() < words)
            mWords.push_back(text);
        else
            ::putenv(text);
    }
    mWords.push_back(nullptr);
}

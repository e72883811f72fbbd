// SPDX-License-Identifier: Apache-2.0
#include "frunrequests.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {
/// Reads \p size bytes, and the files that came with them if there are any. False at the end.
bool receiveAll(int socket, void *bytes, size_t size, int *files, int *count)
{
    while (size > 0) {
        alignas(cmsghdr) char room[CMSG_SPACE(FRunRequests::kFiles * sizeof(int))];
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
        if (header && header->cmsg_type == SCM_RIGHTS) {
            const size_t length = header->cmsg_len - CMSG_LEN(0);
            std::memcpy(files, CMSG_DATA(header), length);
            *count = int(length / sizeof(int));
        }
        bytes = static_cast<char *>(bytes) + got;
        size -= size_t(got);
    }
    return true;
}
} // namespace

FRunRequests::FRunRequests(int socket)
{
    // A pipe of the caller must not stay open because of this process. The socket is the last of
    // the files that are meant for it.
    ::close_range(unsigned(socket) + 1, ~0U, 0);
    mSocket = ::fcntl(socket, F_DUPFD_CLOEXEC, kControl + kFiles);
    ::close(socket);
    // Between two runs only the end of the caller ends this process.
    for (int signal : {SIGINT, SIGTERM, SIGHUP})
        ::sigaddset(&mHeld, signal);
    ::sigprocmask(SIG_BLOCK, &mHeld, nullptr);
    for (char **entry = environ; *entry; ++entry)
        mEnvironment.push_back(*entry);
    mEnvironment.push_back(nullptr);
}

bool FRunRequests::receive()
{
    (void)!::chdir("/"); // the folder of the last run may go
    uint32_t sizes[2];
    int files[kFiles], count = 0;
    if (mSocket < 0 || !receiveAll(mSocket, sizes, sizeof sizes, files, &count))
        return false;
    mText.resize(sizes[1]);
    if (!receiveAll(mSocket, mText.data(), mText.size(), files, &count) || count == 0)
        return false;
    place(files, count);
    // What was meant for an earlier run, or for none.
    const timespec atOnce = {};
    while (::sigtimedwait(&mHeld, nullptr, &atOnce) > 0) {
    }
    unpack(sizes[0]);
    return true;
}

void FRunRequests::place(const int *files, int count)
{
    bool right = true;
    for (int i = 0; i < count; ++i)
        right = right && files[i] == kControl + i;
    if (right)
        return; // as it is unless a standard file was missing
    int above[kFiles];
    for (int i = 0; i < count; ++i) {
        above[i] = ::fcntl(files[i], F_DUPFD_CLOEXEC, kControl + kFiles);
        ::close(files[i]);
    }
    for (int i = 0; i < count; ++i) {
        ::dup2(above[i], kControl + i);
        ::close(above[i]);
    }
}

void FRunRequests::closeFiles() { ::close_range(kControl, kControl + kFiles - 1, 0); }

void FRunRequests::close()
{
    ::close(mSocket);
    mSocket = -1;
}

void FRunRequests::unpack(size_t words)
{
    mVariables = mEnvironment; // which putenv() changes
    environ = mVariables.data();
    mWords.clear();
    mText.push_back(0);
    char *const end = mText.data() + mText.size() - 1;
    for (char *text = mText.data(); text < end; text += std::strlen(text) + 1)
        if (mWords.size() < words)
            mWords.push_back(text);
        else
            ::putenv(text);
    mWords.push_back(nullptr);
}

// SPDX-License-Identifier: Apache-2.0
#include "foutputcapture.h"

#include "frunreport.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {
constexpr uint64_t kMostTail = 4 << 20; // it stays in memory, one for each output
char sBuffer[256 * 1024];
} // namespace

FOutputCapture::~FOutputCapture()
{
    for (int fd : {mFile, mReadEnd, mWriteEnd})
        if (fd >= 0)
            ::close(fd);
    if (mTail)
        ::munmap(mTail, mTailSize);
}

bool FOutputCapture::open(const char *file, uint64_t limit)
{
    mTailLimit = std::min(limit - limit / 2, kMostTail);
    mHeadLimit = limit == 0 ? UINT64_MAX : limit - mTailLimit;
    mFile = ::open(file, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOCTTY | O_NOFOLLOW, 0666);
    int ends[2];
    if (mFile < 0 || ::pipe2(ends, O_CLOEXEC) != 0) {
        mError = errno;
        return false;
    }
    mReadEnd = ends[0];
    mWriteEnd = ends[1];
    return true;
}

void FOutputCapture::closeWriteEnd()
{
    if (mWriteEnd >= 0)
        ::close(mWriteEnd);
    mWriteEnd = -1;
}

void FOutputCapture::read()
{
    char *into = sBuffer;
    uint64_t room = sizeof sBuffer;
    const bool inHead = mHead < mHeadLimit;
    if (inHead) {
        room = std::min(room, mHeadLimit - mHead);
    } else {
        if (mTailTotal == 0)
            makeTail(mTailLimit);
        if (mTail) {
            const uint64_t at = mTailTotal % mTailSize;
            into = mTail + at;
            room = mTailSize - at;
        }
    }
    const ssize_t got = ::read(mReadEnd, into, room);
    if (got < 0 && (errno == EINTR || errno == EAGAIN))
        return;
    if (got <= 0) {
        ::close(mReadEnd);
        mReadEnd = -1;
        return;
    }
    mTotal += uint64_t(got);
    if (inHead) {
        write(into, size_t(got));
        mHead += uint64_t(got);
        mLast = into[got - 1];
    } else {
        mTailTotal += uint64_t(got);
    }
    // A program that fills the pipe gets a larger one, for fewer changes between the two.
    if (got >= 65536 && !mWidened) {
        mWidened = true;
        (void)::fcntl(mReadEnd, F_SETPIPE_SZ, int(sizeof sBuffer));
    }
}

void FOutputCapture::finish()
{
    closeWriteEnd();
    int waiting = 0;
    // Someone else may still hold the writing end, so an end of file is not waited for.
    while (mReadEnd >= 0 && ::ioctl(mReadEnd, FIONREAD, &waiting) == 0 && waiting > 0)
        read();
    writeTail();
    if (mFile >= 0 && ::close(mFile) != 0 && mError == 0)
        mError = errno;
    mFile = -1;
}

void FOutputCapture::write(const char *text, size_t size)
{
    if (mError == 0 && !writeAll(mFile, text, size))
        mError = errno;
}

void FOutputCapture::makeTail(uint64_t size)
{
    // Pages cost memory only once they are written to. Where even that is refused, a shorter
    // tail is better than none.
    for (; size > 0 && !mTail; size /= 2) {
        void *memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (memory != MAP_FAILED) {
            mTail = static_cast<char *>(memory);
            mTailSize = size;
        }
    }
}

void FOutputCapture::writeTail()
{
    mOmitted = mTailTotal - std::min(mTailTotal, mTailSize);
    if (mOmitted > 0) {
        const std::string line =
            (mLast == '\n' ? "[" : "\n[") + std::to_string(mOmitted) + " bytes left out]\n";
        write(line.data(), line.size());
        const uint64_t oldest = mTail ? mTailTotal % mTailSize : 0;
        write(mTail + oldest, mTailSize - oldest);
        write(mTail, oldest);
    } else if (mTailTotal > 0) {
        write(mTail, mTailTotal);
    }
}

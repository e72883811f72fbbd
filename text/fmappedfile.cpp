// SPDX-License-Identifier: Apache-2.0
#include "fmappedfile.h"

#include <atomic>
#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <mutex>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
/// What the handler of the signal looks at: it may take no lock and allocate nothing.
struct Place
{
    std::atomic<uintptr_t> begin{0}; ///< 0: free
    std::atomic<size_t> size{0};
    std::atomic<bool> cut{false};
};
constexpr int kPlaces = 256;
Place gPlaces[kPlaces];
std::mutex gMutex; // of those who take and give back places
struct sigaction gBefore;
uintptr_t gPageMask;

void onBusError(int signal, siginfo_t *info, void *context)
{
    const auto address = reinterpret_cast<uintptr_t>(info->si_addr);
    for (Place &place : gPlaces) {
        const uintptr_t begin = place.begin.load();
        const size_t size = place.size.load();
        if (begin == 0 || address < begin || address >= begin + size)
            continue;
        // The rest of the file is gone, or its disk is: zeros take its place.
        const uintptr_t page = address & gPageMask;
        place.cut.store(true);
        if (::mmap(reinterpret_cast<void *>(page), begin + size - page, PROT_READ,
                   MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) != MAP_FAILED)
            return;
    }
    // None of ours: whoever was there before.
    if (gBefore.sa_flags & SA_SIGINFO)
        gBefore.sa_sigaction(signal, info, context);
    else if (gBefore.sa_handler != SIG_DFL && gBefore.sa_handler != SIG_IGN)
        gBefore.sa_handler(signal);
    else
        ::sigaction(SIGBUS, &gBefore, nullptr); // the same access raises it again
}

void install()
{
    static std::once_flag once;
    std::call_once(once, [] {
        gPageMask = ~uintptr_t(::sysconf(_SC_PAGESIZE) - 1);
        struct sigaction action = {};
        action.sa_sigaction = &onBusError;
        action.sa_flags = SA_SIGINFO;
        sigemptyset(&action.sa_mask);
        ::sigaction(SIGBUS, &action, &gBefore);
    });
}
} // namespace

bool FMappedFile::open(int fd, const struct stat &info)
{
    const auto size = static_cast<size_t>(info.st_size);
    install();
    void *data = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
    if (data == MAP_FAILED)
        return false;
    const std::lock_guard<std::mutex> lock(gMutex);
    for (int i = 0; i < kPlaces; ++i)
        if (gPlaces[i].begin.load() == 0) {
            gPlaces[i].cut.store(false);
            gPlaces[i].size.store(size);
            gPlaces[i].begin.store(reinterpret_cast<uintptr_t>(data));
            mPlace = i;
            mFd = ::fcntl(fd, F_DUPFD_CLOEXEC, 0);
            mData = data;
            mSize = size;
            mTime = info.st_mtim;
            return true;
        }
    ::munmap(data, size);
    return false;
}

FMappedFile::~FMappedFile()
{
    if (mPlace < 0)
        return;
    const std::lock_guard<std::mutex> lock(gMutex);
    gPlaces[mPlace].begin.store(0);
    ::munmap(mData, mSize);
    if (mFd >= 0)
        ::close(mFd);
}

bool FMappedFile::hasChanged() const
{
    if (mPlace < 0)
        return false;
    // The rest of the page in which a file ends reads as zeros without a signal, and so does what
    // was cut and is there again.
    struct stat info = {};
    return gPlaces[mPlace].cut.load() ||
           (mFd >= 0 && ::fstat(mFd, &info) == 0 &&
            (info.st_size != off_t(mSize) || info.st_mtim.tv_sec != mTime.tv_sec ||
             info.st_mtim.tv_nsec != mTime.tv_nsec));
}

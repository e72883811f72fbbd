// SPDX-License-Identifier: Apache-2.0
#include "frunsync.h"

#include "flogmsg.h"
#include "fsafefile.h"
#include "ftext.h"

#include <QFileInfo>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <pthread.h>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr std::chrono::milliseconds kBatch{900}; // leaves time for the sync itself
constexpr size_t kFew = 4; // folders that are synced one by one: nobody waits for others' data

void failed(const std::string &what)
{
    FLogMsg::error("Run", "Could not bring the records of runs to the disk", what, nullptr);
}

/// A whole file system, with whatever else lies there.
void syncAround(const std::string &folder)
{
    const int file = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (file < 0 || ::syncfs(file) != 0)
        failed(folder + ": " + std::strerror(errno));
    if (file >= 0)
        ::close(file);
}

/// A run's folder, and the folders of the design and the study that it hangs on.
void syncOne(const std::string &folder)
{
    QString why;
    const QString design = QFileInfo(Q(folder)).path();
    if (!FSafeFile::syncTree(Q(folder), &why) || !FSafeFile::syncPath(design, &why) ||
        !FSafeFile::syncPath(QFileInfo(design).path(), &why))
        failed(S(why));
}

void sync(const std::vector<std::string> &folders)
{
    std::set<dev_t> done;
    for (const std::string &folder : folders) {
        struct stat info = {};
        if (::stat(folder.c_str(), &info) != 0)
            continue; // gone already, or never made
        if (folders.size() <= kFew)
            syncOne(folder);
        else if (done.insert(info.st_dev).second)
            syncAround(folder);
    }
}
} // namespace

FRunSync::~FRunSync()
{
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mEnd = true;
    }
    mNews.notify_all();
    if (mThread.joinable())
        mThread.join();
}

FRunSync *FRunSync::instance()
{
    static FRunSync sync;
    return &sync;
}

void FRunSync::add(const std::string &folder)
{
    const std::lock_guard<std::mutex> lock(mMutex);
    mFolders.push_back(folder);
    if (!mThread.joinable()) {
        // Signals are the main thread's business.
        sigset_t all, before;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before);
        mThread = std::thread(&FRunSync::work, this);
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }
    if (mFolders.size() == 1)
        mNews.notify_all();
}

void FRunSync::wait()
{
    std::unique_lock<std::mutex> lock(mMutex);
    mWanted = true;
    mNews.notify_all();
    mSynced.wait(lock, [this] { return mFolders.empty() && !mBusy; });
    mWanted = false;
}

uint64_t FRunSync::batches()
{
    const std::lock_guard<std::mutex> lock(mMutex);
    return mBatches;
}

void FRunSync::work()
{
    std::unique_lock<std::mutex> lock(mMutex);
    for (;;) {
        mNews.wait(lock, [this] { return !mFolders.empty() || mEnd; });
        if (mFolders.empty())
            return;
        mNews.wait_for(lock, kBatch, [this] { return mWanted || mEnd; });
        const std::vector<std::string> batch = std::move(mFolders);
        mFolders.clear();
        mBusy = true;
        lock.unlock();
        sync(batch);
        lock.lock();
        mBusy = false;
        ++mBatches;
        mSynced.notify_all();
    }
}

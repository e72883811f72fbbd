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
#include <map>
#include <pthread.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace {
constexpr std::chrono::milliseconds kBatch{900}; // leaves time for the sync itself
constexpr size_t kFew = 4; // folders that are synced one by one: nobody waits for others' data

/// A whole file system, with whatever else lies there. The reason, empty if that was done.
std::string syncAround(const std::string &folder)
{
    const int file = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::string why = file < 0 || ::syncfs(file) != 0 ? std::strerror(errno) : "";
    if (file >= 0)
        ::close(file);
    return why;
}

/// A run's folder, and the folders of the design and the study that it hangs on.
std::string syncOne(const std::string &folder)
{
    QString why;
    const QString design = QFileInfo(Q(folder)).path();
    if (!FSafeFile::syncTree(Q(folder), &why) || !FSafeFile::syncPath(design, &why) ||
        !FSafeFile::syncPath(QFileInfo(design).path(), &why))
        return S(why);
    return std::string();
}

std::vector<FRunSync::Failure> sync(const std::vector<std::string> &folders)
{
    std::vector<FRunSync::Failure> failures;
    std::map<dev_t, std::string> done; // and why not
    for (const std::string &folder : folders) {
        struct stat info = {};
        if (::stat(folder.c_str(), &info) != 0)
            continue; // gone already, or never made
        std::string why;
        if (folders.size() <= kFew) {
            why = syncOne(folder);
        } else {
            auto device = done.find(info.st_dev);
            if (device == done.end())
                device = done.emplace(info.st_dev, syncAround(folder)).first;
            why = device->second;
        }
        if (!why.empty())
            failures.push_back({folder, why});
    }
    return failures;
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
    startThread();
    if (mFolders.size() == 1)
        mNews.notify_all();
}

void FRunSync::remove(const std::string &folder)
{
    const std::lock_guard<std::mutex> lock(mMutex);
    mRemovals.push_back(folder);
    startThread();
    mNews.notify_all();
}

void FRunSync::startThread()
{
    if (mThread.joinable())
        return;
    // Signals are the main thread's business.
    sigset_t all, before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    try {
        mThread = std::thread(&FRunSync::work, this);
    } catch (const std::system_error &) {
        // There are too many; whoever waits does the work.
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void FRunSync::wait()
{
    std::unique_lock<std::mutex> lock(mMutex);
    if (!mThread.joinable())
        return doWork(&lock);
    mWanted = true;
    mNews.notify_all();
    mSynced.wait(lock, [this] { return mFolders.empty() && !mBusy; });
    mWanted = false;
}

void FRunSync::finishRemovals()
{
    std::unique_lock<std::mutex> lock(mMutex);
    if (mRemovals.empty() && !mBusy)
        return;
    if (!mThread.joinable())
        return doWork(&lock);
    mWanted = true;
    mNews.notify_all();
    mSynced.wait(lock, [this] { return mRemovals.empty() && !mBusy; });
    mWanted = false;
}

std::vector<FRunSync::Failure> FRunSync::takeFailures()
{
    const std::lock_guard<std::mutex> lock(mMutex);
    return std::exchange(mFailures, {});
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
        mNews.wait(lock, [this] { return !mFolders.empty() || !mRemovals.empty() || mEnd; });
        if (mFolders.empty() && mRemovals.empty())
            return;
        if (mRemovals.empty())
            mNews.wait_for(lock, kBatch, [this] { return mWanted || mEnd || !mRemovals.empty(); });
        doWork(&lock);
    }
}

void FRunSync::doWork(std::unique_lock<std::mutex> *lock)
{
    const std::vector<std::string> removals = std::exchange(mRemovals, {});
    // A removal doesn't wait for a batch, and none is cut short by it.
    const bool onlyRemovals = !removals.empty() && !mWanted && !mEnd && mThread.joinable();
    const std::vector<std::string> batch =
        onlyRemovals ? std::vector<std::string>() : std::exchange(mFolders, {});
    mBusy = true;
    lock->unlock();
    QString why;
    for (const std::string &folder : removals)
        if (!FSafeFile::removeTree(Q(folder), &why))
            FLogMsg::error("Run", "Could not remove what a run replaced", S(why), nullptr);
    std::vector<Failure> failures = sync(batch);
    lock->lock();
    mBusy = false;
    mBatches += !batch.empty();
    for (Failure &failure : failures)
        mFailures.push_back(std::move(failure));
    mSynced.notify_all();
}

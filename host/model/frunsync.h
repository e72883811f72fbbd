// SPDX-License-Identifier: Apache-2.0
#ifndef FRUNSYNC_H
#define FRUNSYNC_H
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// Brings the folders of runs to the disk in batches, and removes the ones that were replaced, on a
/// thread of its own. Where no thread can be made, wait() does the work.
///
/// A batch begins with the first folder and lasts a second at most. A large one is synced by its
/// file system as a whole, which costs about the same however many designs ended in that second;
/// a few folders are synced alone. A run never waits for the disk, only the end of a queue does.
class FRunSync
{
public:
    FRunSync() = default;
    ~FRunSync();
    FRunSync(const FRunSync &) = delete;
    FRunSync &operator=(const FRunSync &) = delete;

    static FRunSync *instance();
    /// Takes note of a folder that is complete.
    void add(const std::string &folder);
    /// Returns when all that was added is on the disk.
    void wait();
    struct Failure
    {
        std::string folder, why;
    };
    /// The folders that could not be brought to the disk since the last call.
    std::vector<Failure> takeFailures();
    /// Removes \p folder with all that it holds.
    void remove(const std::string &folder);
    /// Returns when nothing is left to be removed.
    void finishRemovals();
    /// Batches that were synced, for tests.
    uint64_t batches();

private:
    void startThread();
    void work();
    /// Does what waits; \p lock is held before and after.
    void doWork(std::unique_lock<std::mutex> *lock);

    std::mutex mMutex;
    std::condition_variable mNews, mSynced;
    std::vector<std::string> mFolders, mRemovals;
    std::vector<Failure> mFailures;
    bool mWanted = false, mBusy = false, mEnd = false;
    uint64_t mBatches = 0;
    std::thread mThread;
};
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FCHANGESET_H
#define FCHANGESET_H
#include <QVariant>
#include <deque>
#include <functional>
#include <mutex>

/// A notice for the views: a code and its payload.
struct FChangeResponse
{
    int code = 0;
    QVariant payload;
};

/// A queue that any thread may push to.
template <class T>
class FConcurrentQueue
{
public:
    void push(T item)
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mItems.push_back(std::move(item));
    }
    bool tryPop(T *item)
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        if (mItems.empty())
            return false;
        *item = std::move(mItems.front());
        mItems.pop_front();
        return true;
    }

private:
    std::mutex mMutex;
    std::deque<T> mItems;
};

/// How changes reach the views, from any thread: records are handled in order on the main thread.
class FChangeSet
{
public:
    enum Code { RunStarted = 19, RunEnded = 20, Refresh = 34 };
    static FConcurrentQueue<FChangeResponse> mChangeResponses;
    /// On the main thread handles what waits; elsewhere only wakes the main thread. Without a
    /// handler records are dropped.
    static void processEvents();
    static void push(int code, const QVariant &payload = QVariant());
    static void setHandler(std::function<void(const FChangeResponse &)> handler);
};
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FUPDATES_H
#define FUPDATES_H
class FObject;

/// The update engine: passes staleness on, brings objects up to date in the order of their
/// dependencies, and keeps the objects that update by themselves until the next flush.
///
/// Both walks use a stack of their own, so a chain may be as long as memory lasts.
class FUpdates
{
public:
    static void setOutOfDate(FObject *object);
    static void update(FObject *object);
    /// Notes that \p object wants to be brought up to date by the next flush.
    static void request(FObject *object);
    static void forget(FObject *object);
    /// Updates all objects that wait, unless updates are blocked.
    static void flush();
    static bool isBlocked();
    /// True while nothing may be updated or told: updates are blocked, a transaction is open, a
    /// project loads.
    static bool isHeld();
    /// Asks for a turn of the event loop that updates what waits and tells the views. Whoever held
    /// it back asks again when it lets go, so nothing that waits is forgotten.
    static void wake();
    /// The same, if there is anything to do.
    static void released();
    /// True while objects are updated by themselves, without anybody having asked for a value.
    static bool isFlushing();
    /// A number of its own for each walk over the graph, left as a mark on the objects it met.
    static unsigned long nextWalk();
};

namespace FBlockers {
extern int updates, history, results, tree, editor, gl, waitCursor;
/// Called when a counter leaves zero or comes back to it.
void changed(const int *counter);
} // namespace FBlockers

/// A counted guard: the constructor blocks, the destructor releases. \p Count is the counter.
template <int *Count>
class FBlocker
{
public:
    FBlocker() { block(); }
    ~FBlocker() { unblock(); }
    FBlocker(const FBlocker &) = delete;
    FBlocker &operator=(const FBlocker &) = delete;
    void block()
    {
        if (!mHeld && ++*Count == 1)
            FBlockers::changed(Count);
        mHeld = true;
    }
    void unblock()
    {
        if (mHeld && --*Count == 0)
            FBlockers::changed(Count);
        mHeld = false;
    }

private:
    bool mHeld = false;
};

using FImmediateUpdateBlocker = FBlocker<&FBlockers::updates>;
using FHistoryBlocker = FBlocker<&FBlockers::history>;
using FResultsOutOfDateBlocker = FBlocker<&FBlockers::results>;
using FObjectTreeBlocker = FBlocker<&FBlockers::tree>;
using FEditorUpdateBlocker = FBlocker<&FBlockers::editor>;
using FGlUpdateBlocker = FBlocker<&FBlockers::gl>;
using FWaitCursor = FBlocker<&FBlockers::waitCursor>;
#endif

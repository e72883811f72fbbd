// SPDX-License-Identifier: Apache-2.0
#ifndef FCHANGES_H
#define FCHANGES_H
#include <QObject>
#include <QVector>
#include <memory>
#include <unordered_map>
#include <vector>

class FObject;

/// What became of one object since the last turn.
struct FChange
{
    std::shared_ptr<FObject> object; ///< never null; gone from the project if Removed
    unsigned what = 0;               ///< bits of FChanges::What
};

/// The one way from the model to those who show it.
///
/// Whatever changes the model notes it here; notes are gathered by object and told once in a turn
/// of the event loop: after updates, never inside a transaction, while a project loads, or while
/// views are blocked. Nothing is lost in between. What is told is the net change: an object that
/// came and went within a turn was never there. Listeners read the model; they may change it, which
/// is told in the next turn. Without a listener a note costs a comparison.
///
/// A listener that comes later walks the model once and is told from then on. The first one is told
/// of nothing that was noted before it; one more joins best when nothing is pending.
class FChanges : public QObject
{
    Q_OBJECT
public:
    enum What : unsigned {
        Created = 1,
        Removed = 2,
        Revived = 4,   ///< came back by undo or redo
        Renamed = 8,   ///< the name or the id
        Changed = 16,  ///< fields, or lists of other objects
        Children = 32, ///< children came or went
        State = 64     ///< up to date or not, running or not; the value may be another one
    };
    enum ProjectEvent : unsigned {
        Opened = 1,
        Saved = 2,
        Modified = 4, ///< the clean mark was left or reached
        Closed = 8
    };

    static FChanges *instance();

    /// Notes a change of \p object. O(1); on the model's thread only. An object that no
    /// std::shared_ptr holds yet, or any more, is nobody's to show.
    static void note(FObject *object, unsigned what)
    {
        if (sListeners > 0)
            instance()->gather(object, what);
    }
    static bool isListening() { return sListeners > 0; }
    static void noteHistory() { instance()->mark(&FChanges::mHistory); }
    static void noteSelection() { instance()->mark(&FChanges::mSelection); }
    static void noteDesign() { instance()->mark(&FChanges::mDesign); }
    static void noteProject(ProjectEvent event);
    /// From any thread.
    static void noteLog();
    static void noteBusy();

    /// Forgets what is not told yet: the objects belong to a project that is closed.
    void forgetObjects();
    /// Tells at once what waits, unless something blocks; for programs without an event loop.
    void deliver();
    bool isPending() const;
    static bool isBlocked();

Q_SIGNALS:
    /// What happened to objects, in the order in which it was noted first.
    void changed(const QVector<FChange> &changes);
    void selectionChanged();
    void historyChanged();
    /// The design that the user sees is another one.
    void designChanged();
    /// Bits of ProjectEvent. Opened and Closed mean that everything is new: walk the model.
    void projectChanged(unsigned events);
    /// There are messages, or fewer: read FLogMsg::since.
    void logChanged();
    /// The application is busy, or no longer.
    void busyChanged(bool busy);
    /// At once, before the objects of the project go.
    void projectClosing();
    /// At once: an object was given another name; \p object is the prototype of its class.
    void nameChanged(const std::shared_ptr<FObject> &object, const QString &name, unsigned id);
    /// At once: a step of the user as the script line that does it.
    void executed(const QString &line);

protected:
    void connectNotify(const QMetaMethod &signal) override;
    void disconnectNotify(const QMetaMethod &signal) override;

private:
    struct Entry
    {
        std::shared_ptr<FObject> object;
        unsigned what;
        bool was; // in the project when the turn began
    };
    FChanges() = default;
    bool recount();
    void gather(FObject *object, unsigned what);
    void gatherTeller(const FObject &object);
    void mark(bool FChanges::*flag);

    static int sListeners; // of changed()
    std::vector<Entry> mEntries;
    std::unordered_map<const FObject *, size_t> mPlaces;
    unsigned mProject = 0;
    bool mHistory = false, mSelection = false, mDesign = false, mLog = false, mBusy = false;
    bool mDelivering = false;
    bool mRecount = false; // a listener left
};
#endif

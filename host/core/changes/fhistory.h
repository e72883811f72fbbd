// SPDX-License-Identifier: Apache-2.0
#ifndef FHISTORY_H
#define FHISTORY_H
#include "fexpr.h"
#include "fstatedelta.h"
#include "fupdates.h"

class FManaged;
enum TTransactionType { kTransactionDefault = 0 };

/// Undo and redo. A step keeps the fields of every object it touched, and the objects that it made
/// and removed; no class has undo code of its own.
///
/// Of an object a step keeps the state on its far side: before the step while it can be undone,
/// after it while it can be redone. The near side is what is recorded of the object when the step's
/// turn comes, so of long texts what differs from there is enough.
///
/// Setters call addStep after the change, so "before" is what was recorded last.
class FHistory
{
public:
    static FHistory *instance();

    void startTransaction(const std::string &text);
    /// Ends the innermost transaction; the outermost one becomes a step if anything was recorded.
    /// With \p keep false everything since the start of the outermost transaction is put back.
    void commit(bool keep);
    void addStep(const std::shared_ptr<FObject> &object);
    void addStep(const std::shared_ptr<FObject> &object, TTransactionType, bool)
    {
        addStep(object);
    }
    /// The same for a new name alone: undo and redo of it leave what was calculated up to date.
    void addName(const std::shared_ptr<FObject> &object);
    void recordCreation(const std::shared_ptr<FManaged> &object);
    void recordRemoval(const std::shared_ptr<FManaged> &object);
    /// Takes the object's present fields as known, without a step.
    void track(const std::shared_ptr<FObject> &object);

    // Inside a transaction
    /// The script line that does what the step does, and a text for a step that nobody names; the
    /// first ones count.
    void setLine(const std::string &line, const std::string &text);
    /// Steps with the same key that follow each other without endJoin() become one: typing in a
    /// field, a spin box that is held, a drag.
    void setJoinKey(const std::string &key) { mCurrent.joinKey = key; }
    void endJoin() { mJoinOpen = false; }

    bool undo();
    bool redo();
    bool canUndo() const { return mPosition > 0; }
    bool canRedo() const { return mPosition < mSteps.size(); }
    /// The texts of the transactions, as they were given.
    std::string undoText() const { return canUndo() ? mSteps[mPosition - 1].text : std::string(); }
    std::string redoText() const { return canRedo() ? mSteps[mPosition].text : std::string(); }
    /// The same in the user's language, with the object that the step was about.
    QString undoTitle() const { return canUndo() ? title(mSteps[mPosition - 1]) : QString(); }
    QString redoTitle() const { return canRedo() ? title(mSteps[mPosition]) : QString(); }
    size_t stepCount() const { return mPosition; }
    void clear();

    /// The present state is what is on disk.
    void markClean();
    bool isClean() const { return mClean == mPosition; }

    /// Bytes that steps may keep; beyond, the oldest ones go when one is added. The last step
    /// always stays. Undo and redo only exchange what a step keeps for what an object holds.
    void setLimit(size_t bytes);
    size_t limit() const { return mLimit; }
    size_t bytes() const { return mBytes; }

    bool isTransactionOpen() const { return mDepth > 0; }
    /// True while undo, redo or a rollback puts things back.
    bool isBusy() const { return mBusy; }
    std::shared_ptr<FObject> getCreatorByDbId(int id) const;

private:
    friend class FHistorySavepoint;
    using State = FStateDelta::State;
    using Objects = std::vector<std::shared_ptr<FManaged>>;
    struct Change
    {
        std::shared_ptr<FObject> object;
        State kept; ///< reduced against the near side; full in the step that is open
    };
    struct Step
    {
        std::string text, fallback, about, line, joinKey;
        std::vector<Change> changes;
        Objects created, removed;
        size_t bytes = 0;
        bool namesOnly = true;
        bool isEmpty() const { return changes.empty() && created.empty() && removed.empty(); }
    };
    struct Restore
    {
        std::shared_ptr<FObject> object;
        State values;
        bool recorded; ///< history knows the object so from now on
    };
    static QString title(const Step &step);
    bool isRecording() const;
    void putBack(const std::vector<Restore> &states, const Objects &appear, const Objects &vanish,
                 bool namesOnly = false);
    /// Breaks up objects that won't come back.
    static void forget(const Objects &gone);
    void touch(const std::shared_ptr<FObject> &object, bool nameOnly);
    void apply(Step *step, bool forward);
    static void reduce(Change *change);
    void count(Step *step, bool isUndone);
    void pushStep();
    bool joinStep();
    void dropOldest();
    void noteChange(bool wasClean);

    std::vector<Step> mSteps;
    size_t mPosition = 0;
    size_t mClean = 0; // npos: no position of the history is on disk
    size_t mBytes = 0, mLimit = size_t(512) << 20;
    Step mCurrent;
    std::vector<std::shared_ptr<FObject>> mTouched;
    int mDepth = 0;
    bool mBusy = false, mJoinOpen = false, mToldLimit = false;
};

/// A scoped undo step. Nested ones join the outer one; the outermost text that isn't empty names
/// the step.
class FHistoryTransaction
{
public:
    FHistoryTransaction(const FManaged *, const std::string &text, bool)
    {
        FHistory::instance()->startTransaction(text);
    }
    ~FHistoryTransaction() { FHistory::instance()->commit(true); }
    FHistoryTransaction(const FHistoryTransaction &) = delete;
    FHistoryTransaction &operator=(const FHistoryTransaction &) = delete;
    void addStep(const std::shared_ptr<FObject> &object) { FHistory::instance()->addStep(object); }
};

/// A transaction that can be taken back alone: rollback() puts back what was changed, made and
/// removed since it began, and leaves what an outer transaction did before.
class FHistorySavepoint
{
public:
    explicit FHistorySavepoint(const std::string &text);
    ~FHistorySavepoint() { FHistory::instance()->commit(true); }
    FHistorySavepoint(const FHistorySavepoint &) = delete;
    FHistorySavepoint &operator=(const FHistorySavepoint &) = delete;
    void rollback();

private:
    FHistory::Objects mCreated, mRemoved;    // before
    std::vector<FHistory::Restore> mTouched; // before, as they were then
};
#endif

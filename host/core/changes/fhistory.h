// SPDX-License-Identifier: Apache-2.0
#ifndef FHISTORY_H
#define FHISTORY_H
#include "fexpr.h"
#include "fupdates.h"

class FManaged;
enum TTransactionType { kTransactionDefault = 0 };

/// Undo and redo. A step keeps the fields of every object it touched, before and after, and the
/// objects that it made and removed; no class has undo code of its own.
///
/// Setters call addStep after the change, so "before" is what was recorded last.
class FHistory
{
public:
    static FHistory *instance();

    void startTransaction(const std::string &text);
    /// Ends the innermost transaction; the outermost one becomes a step if anything was recorded.
    /// With \p keep false what was recorded is dropped.
    void commit(bool keep);
    void addStep(const std::shared_ptr<FObject> &object);
    void addStep(const std::shared_ptr<FObject> &object, TTransactionType, bool)
    {
        addStep(object);
    }
    void recordCreation(const std::shared_ptr<FManaged> &object);
    void recordRemoval(const std::shared_ptr<FManaged> &object);
    /// Takes the object's present fields as known, without a step.
    void track(const std::shared_ptr<FObject> &object);

    bool undo();
    bool redo();
    bool canUndo() const { return mPosition > 0; }
    bool canRedo() const { return mPosition < mSteps.size(); }
    std::string undoText() const { return canUndo() ? mSteps[mPosition - 1].text : std::string(); }
    std::string redoText() const { return canRedo() ? mSteps[mPosition].text : std::string(); }
    size_t stepCount() const { return mPosition; }
    void clear();

    bool isTransactionOpen() const { return mDepth > 0; }
    /// True while undo or redo puts things back.
    bool isBusy() const { return mBusy; }
    std::shared_ptr<FObject> getCreatorByDbId(int id) const;

private:
    using Values = FStateVisitor::Values;
    struct Change
    {
        std::shared_ptr<FObject> object;
        std::shared_ptr<const Values> before, after;
    };
    struct Step
    {
        std::string text;
        std::vector<Change> changes;
        std::vector<std::shared_ptr<FManaged>> created, removed;
    };
    bool isRecording() const;
    void apply(const Step &step, bool forward);

    std::vector<Step> mSteps;
    size_t mPosition = 0;
    Step mCurrent;
    std::vector<std::shared_ptr<FObject>> mTouched;
    int mDepth = 0;
    bool mBusy = false;
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
#endif

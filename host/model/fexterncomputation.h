// SPDX-License-Identifier: Apache-2.0
#ifndef FEXTERNCOMPUTATION_H
#define FEXTERNCOMPUTATION_H
#include "fconfiguration.h"
#include "fdesign.h"
#include "fresults.h"
#include "frunrecord.h"

#include <QMap>

/// A run of an external program, for each design on its own. What is told here is the same for
/// every kind of computation; derived classes write the input and read the results.
class FExternComputation : public FManaged
{
    F_CLASS(FExternComputation, FManaged)
public:
    explicit FExternComputation(std::string name = std::string())
        : FManaged(std::move(name))
    {
    }

    void setApplication(const std::string &application);
    const std::string &getApplication() const { return mApplication; }
    /// Split into words as a POSIX shell does; no shell is involved.
    void setArguments(const std::string &arguments);
    const std::string &getArguments() const { return mArguments; }
    /// A file of the run folder; empty for none.
    void setStandardInput(const std::string &fileName);
    const std::string &getStandardInput() const { return mStandardInput; }
    /// "NAME=value" each, beside the environment of this program.
    void setEnvironment(const std::vector<std::string> &variables);
    const std::vector<std::string> &getEnvironment() const { return mEnvironment; }
    /// Seconds, 0 for no limit.
    FStatus setTimeout(double seconds);
    double getTimeout() const { return mTimeout; }
    /// Whether a run ends with the last process that the program started and left behind. Else such
    /// processes are ended when the program has ended.
    void setWaitForAll(bool on);
    bool getWaitForAll() const { return mWaitForAll; }

    /// Refused with a message while a run is under way: its folder has that name.
    std::shared_ptr<FManaged> setName(const std::string &name) override;

    using FManaged::init;
    void init(const std::shared_ptr<FExternComputation> &source);

    /// Runs for the user's design; what the computation depends on runs first if it is out of date.
    /// Waits for the end, but with a window only queues the run. Refused while a project loads, and
    /// while the same run is queued or under way.
    FStatus run();
    /// Queues the same and returns; nothing blocks.
    FStatus guiRun();
    /// Takes the files on disk as the results of the current design.
    FStatus rereadResults();
    bool isRunning() const { return mRunning > 0; }
    bool canReread() const;
    /// Other computations whose results this one needs, directly or not, in the order of running.
    std::vector<std::shared_ptr<FExternComputation>> supplierComputations() const;
    bool isUpToDateFor(const std::shared_ptr<FDesign> &design) const;
    bool isRunningFor(const FDesign *design) const;
    /// True if a run of this session has given the results for \p design.
    bool hasRunFor(const FDesign *design) const;
    /// Changes with everything that makes the results for \p design stale.
    unsigned long editionFor(const FDesign *design) const;

    /// Results of the current design, null before its first run. Never starts one.
    FExpr<FComputationResults> currentResults() const;

    // What a run calls, in this order
    virtual void prepareRun() {}
    virtual void prepareRun() const {}
    virtual void computationStarted() const {}
    virtual bool writeOutputFile() const { return true; }
    virtual std::shared_ptr<FObject> getResultType() const { return nullptr; }
    /// Names of the inputs that are no number now, though a number is what they should be.
    virtual std::vector<std::string> inputsWithoutNumber() const { return {}; }
    virtual void applyOutputHandles(std::shared_ptr<FComputationResults>) const {}
    virtual void computationFinished() const {}
    virtual void finalizeRun() {}
    virtual void finalizeRun() const {}
    /// Files, relative to the run folder, without which a run has failed.
    virtual std::vector<std::string> requiredResultFiles() const { return {}; }
    virtual std::vector<FExpr<FResultsFileName, true>> resultsFileNames() const { return {}; }
    virtual void processReread(std::shared_ptr<FComputationResults>) {}
    virtual void prepareFileValues() const {}
    virtual bool isGeneric() const { return false; }
    virtual void openSoftwareConnector() const {}

    // For the run driver
    void runStarted(const FDesign *design);
    /// Nothing runs for \p design any more.
    void runStopped(const FDesign *design);
    /// Makes the results of a run known; without success there are none. If the inputs changed
    /// while it ran, the results are stale.
    void takeResults(const std::shared_ptr<FDesign> &design, const FRunRecord &record);
    static void designChanged();
    static void designEdited(const FDesign *design);

    bool updatesOnDemand() const override { return false; }
    void stalenessPassed() const override;
    void retire() override;
    void visitState(FStateVisitor &state) override;
    /// Results refer to the computation by its id, so that has to be saved with them.
    bool hasSavedResults() const;

    static void initCmds();

protected:
    void nameChanged(const std::string &before) override;

private:
    struct DesignState
    {
        std::weak_ptr<FDesign> design;
        FExpr<FComputationResults> results;
        bool upToDate = false, running = false, hasRun = false;
        unsigned long edition = 0;
        void setStale()
        {
            upToDate = false;
            ++edition;
        }
        unsigned searched = 0; ///< FComputationResults::madeById() when saved results were sought
    };
    DesignState &stateOf(const FDesign *design) const;
    void noteResults(FObject *results);
    std::shared_ptr<FComputationResults> makeResults(const std::shared_ptr<FDesign> &design);
    template <class T>
    void assign(T &field, const T &value, const char *text);
    FStatus setDbIdCommand(int id);
    int dbIdForScript() const { return getDbId(); }

    std::string mApplication, mArguments, mStandardInput;
    std::vector<std::string> mEnvironment;
    double mTimeout = 0;
    bool mWaitForAll = false;
    int mRunning = 0;
    mutable std::map<const FDesign *, DesignState> mStates;
};
#endif

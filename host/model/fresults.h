// SPDX-License-Identifier: Apache-2.0
#ifndef FRESULTS_H
#define FRESULTS_H
#include "fdesign.h"
#include "ffilevalues.h"
#include "fparameter.h"
#include "ftabledata.h"

#include <mutex>
#include <optional>

class FExternComputation;

/// What belongs to a design.
class FResults : public FManaged
{
    F_CLASS(FResults, FManaged)
public:
    FResults() = default;
    FResults(std::string name, const FExpr<FDesign> &variant)
        : FManaged(std::move(name))
        , mVariant(variant)
    {
    }
    virtual void init() {}
    using FManaged::init;
    const FExpr<FDesign> &getVariant() const { return mVariant; }
    /// The design, which the creator names.
    void collectNamed(std::vector<const FObject *> *objects) const override;
    /// Absolute folder of the result files, ends in "/".
    virtual std::string getResultPath() const { return std::string(); }

private:
    FExpr<FDesign> mVariant;
};

/// The results of a computation, which is known by its id: it may be loaded later.
class FComputationResults : public FResults
{
    F_CLASS(FComputationResults, FResults)
public:
    FComputationResults() = default;
    FComputationResults(std::string name, const FExpr<FDesign> &variant,
                        const FExpr<FExternComputation> &computation);
    FComputationResults(std::string name, const FExpr<FDesign> &variant, int computationId);

    FExpr<FExternComputation> getComputation() const;
    int computationId() const;
    /// Counts the results that were made by the id of their computation.
    static unsigned madeById() { return sMadeById; }
    std::string getResultPath() const override;
    /// The computation is saved with its id as long as there are results.
    std::shared_ptr<FObject> toldBy() const override;
    void visitState(FStateVisitor &state) override;

private:
    mutable std::weak_ptr<FExternComputation> mComputation; // the computation holds its results
    int mComputationId = 0;
    static unsigned sMadeById;
};

/// Results as tables. The files are read when the first table is asked for.
class FResultsGeneric : public FComputationResults
{
    F_CLASS(FResultsGeneric, FComputationResults)
public:
    using FComputationResults::FComputationResults;
    FResultsGeneric() = default;
    using FComputationResults::init;
    void init(const std::shared_ptr<FResultsGeneric> &) {}

    /// Reads the files unless that was done and nothing has changed since. True when done.
    bool fetchResults() const;
    virtual void readOutputFiles() const {}
    /// A table by exact name, null if there is none.
    virtual FExpr<FTableData> getData(const std::string &name) const;
    /// A new table; one of the same name is replaced.
    std::shared_ptr<FTableData> addTable(const std::string &name, int rows, int columns) const;
    void setResultFiles(const std::vector<FExpr<FResultsFileName, true>> &files)
    {
        mResultFiles = files;
    }
    const std::vector<FExpr<FTableData, true>> &tables() const { return mTables; }
    /// Doubt that all values of these results share. Without one the record of the run is asked
    /// when the files are read.
    void setRunNote(std::optional<std::string> note) { mRunNote = std::move(note); }
    std::string getResultFileName(const std::string &name) const;
    /// An imported table; null if there is none.
    FExpr<FTableData> getImport(const std::string &name) const;
    virtual std::shared_ptr<FObject> clone(const FExpr<FDesign> &design,
                                           const FExpr<FExternComputation> &computation) const;
    using FObject::clone;
    /// Kind of a result file by its name: 1 image, 2 table, 4 simulation data, 3 pure text, 0 else.
    static unsigned getResultsFileType(const std::string &path);

    /// Stale results are read again, whoever brings them up to date.
    void doSetOutOfDate() const override { mFilesRead = false; }

    static void initCmds();

protected:
    void noteDoubtOfRun() const;
    FExpr<FTableData> tableCommand(const std::string &name) const;
    mutable std::recursive_mutex mMutex;
    mutable std::vector<FExpr<FTableData, true>> mTables;
    mutable std::unordered_map<std::string, FExpr<FObject>> mImportedObjects;
    mutable bool mFilesRead = false;
    mutable std::optional<std::string> mRunNote;
    std::vector<FExpr<FResultsFileName, true>> mResultFiles;
};
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FPATHMANAGER_H
#define FPATHMANAGER_H
#include "fdesign.h"
#include "fparameter.h"

class FExternComputation;

/// Where things lie on disk. A run of computation c for design d of project p.tbk has the folder
/// p_designs/d/c/ beside the project; it is input, working and result folder at once.
class FPathManager
{
public:
    static FPathManager *instance();

    std::string getProjectDirAbs() const;
    std::string getSamplesDir() const;
    /// The folder above all designs. No "/" at the end.
    std::string getDesignsDirAbs() const;
    /// No "/" at the end. Null means the current design.
    std::string getDesignDirAbs(const std::shared_ptr<FDesign> &design) const;
    /// Ends in "/". Nulls mean the run in progress.
    std::string getInputDirAbs(const std::shared_ptr<FExternComputation> &computation,
                               const std::shared_ptr<FDesign> &design) const;
    /// No "/" at the end. Without a computation the folder above all computations.
    std::string getResultsDirAbs(const std::shared_ptr<FExternComputation> &computation,
                                 const std::shared_ptr<FDesign> &design) const;

    /// The run whose virtuals are being called; null outside.
    const FExternComputation *runInProgress() const { return mComputation; }
    /// Notes why the run in progress cannot go on; the first reason counts.
    void failRun(const std::string &why);
    const std::string &runFailure() const { return mFailure; }

    /// Sets the run in progress for its lifetime. Until the program starts, its folder may lie
    /// elsewhere: \p folder, without a slash at the end.
    class RunScope
    {
    public:
        RunScope(const std::shared_ptr<FExternComputation> &computation,
                 const std::shared_ptr<FDesign> &design, const std::string &folder);
        ~RunScope();
        RunScope(const RunScope &) = delete;
        RunScope &operator=(const RunScope &) = delete;
    };

private:
    FExternComputation *mComputation = nullptr;
    std::shared_ptr<FDesign> mDesign;
    std::string mFailure, mFolder;
    mutable QString mProjectPath; // an absolute path, and its resolved folder
    mutable std::string mProjectDir;
};
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FKEPTCONNECTOR_H
#define FKEPTCONNECTOR_H
#include "fexterncomputation.h"
#include "fsoftconitemsize.h"

/// What a project keeps of a workbench in programs that have none: the same block is read and
/// written, with references to the objects. A program with workbenches doesn't use it.
class FKeptConnector : public FManaged
{
    F_CLASS(FKeptConnector, FManaged)
public:
    explicit FKeptConnector(std::string name = std::string())
        : FManaged(std::move(name))
    {
        mManageFlag = 2;
    }
    static std::shared_ptr<FKeptConnector> create(const std::string &name);
    void setComputation(const FExpr<FExternComputation> &computation);
    FExpr<FExternComputation> getComputation() const { return mComputation; }
    void setItemSize(SoftConItemSize size) { mItemSize = size; }
    SoftConItemSize getItemSize() const { return mItemSize; }
    void setResultsPath(const std::string &path) { mResultsPath = path; }
    const std::string &getResultsPath() const { return mResultsPath; }
    bool isSaved() const override { return bool(mComputation); }
    void visitState(FStateVisitor &state) override;
    static void initCmds();

private:
    FExpr<FExternComputation> mComputation;
    SoftConItemSize mItemSize = SoftConItemSize::Medium;
    std::string mResultsPath;
};
#endif

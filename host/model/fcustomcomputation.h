// SPDX-License-Identifier: Apache-2.0
#ifndef FCUSTOMCOMPUTATION_H
#define FCUSTOMCOMPUTATION_H
#include "fexterncomputation.h"

/// A computation with a configuration.
class FCustomComputation : public FExternComputation
{
    F_CLASS(FCustomComputation, FExternComputation)
public:
    explicit FCustomComputation(std::string name = std::string())
        : FExternComputation(std::move(name))
    {
    }
    const FExpr<FConfigurationCustom> &getConfiguration() const { return mConfiguration; }
    void setConfiguration(const FExpr<FConfigurationCustom> &configuration);
    virtual FExpr<FComputationResults> getResultsImpl() const { return currentResults(); }
    FExpr<FComputationResults> getResults() const { return getResultsImpl(); }

    void constructFObject() override;
    void prepareFileValues() const override;
    std::vector<FExpr<FResultsFileName, true>> resultsFileNames() const override;
    void visitState(FStateVisitor &state) override;

    static void initCmds();

private:
    void setCmdFile(const std::string &) {}
    std::string getCmdFile() const { return std::string(); }
    FExpr<FConfigurationCustom> mConfiguration;
};
#endif

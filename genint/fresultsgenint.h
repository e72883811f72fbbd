// SPDX-License-Identifier: Apache-2.0
#ifndef FRESULTSGENINT_H
#define FRESULTSGENINT_H
#include "fdesign.h"
#include "fgenintfile.h"
#include "fresults.h"

/// One run of one computation for one design, read by the result templates.
class FResultsGenInt : public FResultsGeneric
{
    F_CLASS(FResultsGenInt, FResultsGeneric)
public:
    using Handles = std::vector<FExpr<FGenIntFile, true>>;

    FResultsGenInt() = default;
    using FResultsGeneric::FResultsGeneric;
    static std::shared_ptr<FResultsGenInt> create(const std::string &name,
                                                  const FExpr<FDesign> &design, int computationId);
    std::shared_ptr<FObject> clone(const FExpr<FDesign> &design,
                                   const FExpr<FExternComputation> &computation) const override;
    using FResultsGeneric::init;
    virtual void init(const std::shared_ptr<FResultsGenInt> &source);

    /// The templates to read; the next access reads the files again.
    virtual void setOutputHandles(const Handles &handles);
    virtual const Handles &getOutputHandles() const { return mOutputHandles; }
    void readOutputFiles() const override;
    /// A table by the file name or the managed name of its template.
    FExpr<FTableData> getData(const std::string &name) const override;

    // Cells of the first table; NaN without one
    double getElementAt(int row, int column) const;
    double getElementAt(const std::string &rowHeader, int column) const;
    double getElementAt(int row, const std::string &columnHeader) const;
    double getElementAt(const std::string &rowHeader, const std::string &columnHeader) const;
    double getLastElementOfRow(int row) const;
    double getLastElementOfColumn(int column) const;
    double getAverageOfLastRows(int numberOfRows, int column) const;
    /// Path of the result file that a template of that file name reads; else empty.
    std::string getResultTemplateName(const std::string &fileName) const;

    void saveScopeManner(QTextStream &stream, unsigned level, bool plainCreator,
                         bool flag) const override;
    void visitState(FStateVisitor &state) override;
    void stateRestored() override;

    static void initCmds();

private:
    template <class F>
    double ofFirstTable(F function) const;
    double dataAtCells(unsigned row, unsigned column) const;
    double dataAtHeaderCell(const std::string &rowHeader, unsigned column) const;
    double dataAtCellHeader(double row, const std::string &columnHeader) const;
    double dataAtHeaders(const std::string &rowHeader, const std::string &columnHeader) const;

    Handles mOutputHandles;
};
#endif

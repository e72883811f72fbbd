// SPDX-License-Identifier: Apache-2.0
#ifndef FFILEVALUES_H
#define FFILEVALUES_H
#include "fbasictype.h"
#include "fcmd.h"

/// A file of the user that goes into the input folder of each run. Tags write where it stands
/// there.
class FInputFile : public FBasicType
{
    F_CLASS(FInputFile, FBasicType)
public:
    FInputFile() = default;
    explicit FInputFile(const FExprBase &fileName, const FExprBase &directory = FExprBase());

    const FExprBase &getFileName() const { return mFileName; }
    void setFileName(const FExprBase &fileName) { mFileName = fileName; }
    const FExprBase &getDirectory() const { return mDirectory; }
    void setDirectory(const FExprBase &directory) { mDirectory = directory; }

    void constructFObject() override;
    std::string toString() const override;
    std::string toPlainString() const override;
    std::shared_ptr<FObject> getType() const override;
    std::shared_ptr<FObject> clone() const override;
    /// Copies the file into the input folder of the run in progress, with its time stamp. Outside
    /// a run nothing is copied.
    void doUpdate() const override;
    void visitState(FStateVisitor &state) override { state(mFileName)(mDirectory); }
    /// Absolute path of the file; relative names count from the project's folder.
    std::string sourcePath() const;
    /// Where the copy stands, relative to the input folder.
    std::string targetName() const;

private:
    FExprBase mFileName, mDirectory;
};

/// The name of a file that the external program leaves.
class FResultsFileName : public FBasicType
{
    F_CLASS(FResultsFileName, FBasicType)
public:
    FResultsFileName() = default;
    explicit FResultsFileName(const FExprBase &fileName)
        : mFileName(fileName)
    {
    }
    const FExprBase &getFileName() const { return mFileName; }
    std::string toString() const override
    {
        return "resultsFileName(" + mFileName.toString() + ")";
    }
    std::string toPlainString() const override { return mFileName.toPlainString(); }
    std::shared_ptr<FObject> clone() const override;
    void visitState(FStateVisitor &state) override { state(mFileName); }

private:
    FExprBase mFileName;
};

/// Geometry that is written for the external program. The kernel that writes it is not part of
/// this host: a run takes the file of that name from the project's folder and else fails by name.
class FGeometryExport : public FBasicType
{
    F_CLASS(FGeometryExport, FBasicType)
public:
    FGeometryExport() = default;
    explicit FGeometryExport(std::string fileName)
        : mFileName(std::move(fileName))
    {
    }
    const std::string &getFileName() const { return mFileName; }
    unsigned kind() const { return mKind; }
    const FExpr<FObject> &getFeatureDefinition() const { return mFeatureDefinition; }
    void setFeatureDefinition(const FExpr<FObject> &definition)
    {
        mFeatureDefinition = definition;
        mKind = 1;
    }
    /// What is exported, kept unevaluated; null for nothing.
    const std::shared_ptr<FObjectList> &getGeometryObjects() const { return mGeometryObjects; }
    void setGeometryObjects(const std::shared_ptr<FObjectList> &objects);
    /// Adds those that aren't there yet.
    void addGeometryObjects(const std::shared_ptr<FObjectList> &objects);
    std::string toString() const override;
    std::string toPlainString() const override { return mFileName; }
    std::shared_ptr<FObject> getType() const override;
    std::shared_ptr<FObject> clone() const override;
    void constructFObject() override;
    void doUpdate() const override;
    void visitState(FStateVisitor &state) override
    {
        state(mFileName)(mKind)(mFeatureDefinition)(mGeometryObjects);
    }

    static void initCmds();

private:
    std::string mFileName;
    unsigned mKind = 0;
    FExpr<FObject> mFeatureDefinition;
    std::shared_ptr<FObjectList> mGeometryObjects;
};
#endif

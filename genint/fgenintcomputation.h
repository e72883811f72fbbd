// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTCOMPUTATION_H
#define FGENINTCOMPUTATION_H
#include "fconfigurationgenint.h"
#include "fcustomcomputation.h"
#include "fexterncomputation.h"
#include "fresultsgenint.h"

#include <QObject>

class FGenIntComputation;

/// Tells the views of the start and end of runs.
class FGenIntCompSignalRapper : public QObject
{
    Q_OBJECT
public:
    explicit FGenIntCompSignalRapper(const std::shared_ptr<FGenIntComputation> &computation)
        : mComputation(computation)
    {
    }
    void emitRunStarted() const;
    void emitRunEnded() const;

Q_SIGNALS:
    void genIntRunStarted() const;
    /// True whatever the outcome: nobody may read a failure from it.
    void genIntRunEnded(bool) const;
    void genIntCompDestroyed() const;

private:
    bool push(int code) const;
    std::weak_ptr<FGenIntComputation> mComputation;
};

/// The object that the user runs: writes the input files from templates and reads the results by
/// templates. It holds configuration, definition and files for life.
class FGenIntComputation : public FCustomComputation
{
    F_CLASS(FGenIntComputation, FCustomComputation)
public:
    explicit FGenIntComputation(std::string name = std::string())
        : FCustomComputation(std::move(name))
    {
    }
    ~FGenIntComputation() override;
    static std::shared_ptr<FGenIntComputation> create(const std::string &name);

    void constructFObject() override;
    void destructFObject() override;
    void retire() override;
    std::shared_ptr<FObject> clone() const override;
    using FCustomComputation::init;
    virtual void init(const std::shared_ptr<FGenIntComputation> &source);

    void prepareRun() override { FCustomComputation::prepareRun(); }
    void finalizeRun() override { FCustomComputation::finalizeRun(); }
    using FCustomComputation::finalizeRun;
    using FCustomComputation::prepareRun;
    FExpr<FComputationResults> getResultsImpl() const override
    {
        return FCustomComputation::getResultsImpl();
    }
    std::shared_ptr<FObject> getResultType() const override { return FResultsGenInt::mpNull; }
    bool isGeneric() const override { return true; }
    bool writeOutputFile() const override;
    std::vector<std::string> inputsWithoutNumber() const override;
    void applyOutputHandles(std::shared_ptr<FComputationResults> results) const override;
    void processReread(std::shared_ptr<FComputationResults> results) override;
    void computationStarted() const override;
    void computationFinished() const override;
    std::vector<std::string> requiredResultFiles() const override;

    void enableSoftCons(bool enable) const;
    /// The whole coupling as a set-up, with its chain if the user wants that. Among other chosen
    /// objects the chosen computations travel together and nobody is asked.
    QByteArray copy() const override;
    QByteArray copyAmong(std::vector<std::shared_ptr<FManaged>> *others) const override;
    bool paste(const QByteArray &bytes) const override;

    void openSoftwareConnector() const override;
    bool doubleClickedInTree() override;
    std::shared_ptr<FManaged> setName(const std::string &name) override;
    virtual FGenIntCompSignalRapper *getSignalRapper() const { return mSignalRapper.get(); }

    static void initCmds();

private:
    std::shared_ptr<FGenIntComputation>
    setGenIntConfiguration(const FExpr<FConfigurationGenInt> &configuration);
    FExpr<FConfigurationGenInt> genIntConfiguration() const;
    FExpr<FResultsGenInt> genIntResults() const;
    void openForScript() { openSoftwareConnector(); }
    std::shared_ptr<FDefinitionGenInt> definition() const;

    std::unique_ptr<FGenIntCompSignalRapper> mSignalRapper;
};
#endif

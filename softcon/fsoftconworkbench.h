// SPDX-License-Identifier: Apache-2.0
#ifndef FSOFTCONWORKBENCH_H
#define FSOFTCONWORKBENCH_H
#include "fchanges.h"
#include "fgenintworkbench.h"

/// The open workbenches, as the model asks for them.
class FSoftConWorkbench : public QObject, public FGenIntWorkbench
{
    Q_OBJECT
public:
    explicit FSoftConWorkbench(QObject *parent);
    ~FSoftConWorkbench() override;
    void refreshCommandFileEditors(const FDefinitionGenInt *definition) override;
    void refreshResultsFileEditors(const FGenIntResultsFile *file) override;
    void definitionChanged(const FDefinitionGenInt *definition) override;
    void setTitles(const FGenIntComputation *computation, const std::string &name) override;
    void disableGui(const FGenIntComputation *computation, bool disable) override;
    void open(const FGenIntComputation *computation) override;
    void openAs(const FGenIntComputation *computation, const std::string &name) override;
    std::shared_ptr<FManaged> connectorOf(const FGenIntComputation *computation) override;
    void openFile(const FObject *computation, const FGenIntFile *file) override;
    void renameTab(const FGenIntFile *file) override;

private:
    /// Pages for the connectors of a project, and for computations that have none yet.
    void openAll();
    void follow(const QVector<FChange> &changes);
};
#endif

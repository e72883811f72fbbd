// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTWORKBENCH_H
#define FGENINTWORKBENCH_H
#include "fexpr.h"

class FDefinitionGenInt;
class FGenIntComputation;
class FGenIntFile;
class FManaged;
class FGenIntResultsFile;

/// What the model asks of an open workbench. Without one every call is a no-op. Notices of changes
/// come from the change feed, once in a turn, after undo and redo as after anything else.
class FGenIntWorkbench
{
public:
    virtual ~FGenIntWorkbench() = default;
    static FGenIntWorkbench *instance();
    static void setInstance(FGenIntWorkbench *workbench);

    virtual void refreshCommandFileEditors(const FDefinitionGenInt *) {}
    virtual void refreshResultsFileEditors(const FGenIntResultsFile *) {}
    /// Scenes of a definition are rebuilt.
    virtual void definitionChanged(const FDefinitionGenInt *) {}
    virtual void setTitles(const FGenIntComputation *, const std::string &) {}
    virtual void disableGui(const FGenIntComputation *, bool) {}
    virtual void open(const FGenIntComputation *) {}
    /// The same; a connector that has to be made gets that name.
    virtual void openAs(const FGenIntComputation *, const std::string &) {}
    /// The connector of a computation; null if it has none.
    virtual std::shared_ptr<FManaged> connectorOf(const FGenIntComputation *computation);
    /// Shows the editor of a template file.
    virtual void openFile(const FObject *, const FGenIntFile *) {}
    /// The tabs of a template file take its present name.
    virtual void renameTab(const FGenIntFile *) {}
};
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTEDITORHANDLES_H
#define FGENINTEDITORHANDLES_H
#include "fobject.h"

#include <QPointer>

class FGenIntCommandFileEditor;
class FGenIntResultsFileEditor;

/// Hands an update of a template file on to its editor. The model knows objects of its own kind
/// only, so each editor holds one of these.
class FGenIntCommandFileEditorHandle : public FObject
{
    F_CLASS(FGenIntCommandFileEditorHandle, FObject)
public:
    explicit FGenIntCommandFileEditorHandle(FGenIntCommandFileEditor *editor = nullptr);
    ~FGenIntCommandFileEditorHandle() override;
    bool needsUpdateInGuiThread() const override { return true; }
    void doUpdate() const override;
    static void initCmds() {}

private:
    QPointer<FGenIntCommandFileEditor> mEditor;
};

/// The same for the editor of a result template.
class FGenIntResultsFileEditorHandle : public FObject
{
    F_CLASS(FGenIntResultsFileEditorHandle, FObject)
public:
    explicit FGenIntResultsFileEditorHandle(FGenIntResultsFileEditor *editor = nullptr);
    ~FGenIntResultsFileEditorHandle() override;
    bool needsUpdateInGuiThread() const override { return true; }
    void doUpdate() const override;
    static void initCmds() {}

private:
    QPointer<FGenIntResultsFileEditor> mEditor;
};
#endif

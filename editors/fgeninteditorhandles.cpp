// SPDX-License-Identifier: Apache-2.0
#include "fgeninteditorhandles.h"

#include "fgenintcommandfileeditor.h"
#include "fgenintresultsfileeditor.h"

F_CLASS_IMPL(FGenIntCommandFileEditorHandle)
F_CLASS_IMPL(FGenIntResultsFileEditorHandle)

FGenIntCommandFileEditorHandle::FGenIntCommandFileEditorHandle(FGenIntCommandFileEditor *editor)
    : mEditor(editor)
{
}

FGenIntCommandFileEditorHandle::~FGenIntCommandFileEditorHandle() = default;

void FGenIntCommandFileEditorHandle::doUpdate() const
{
    if (mEditor)
        mEditor->refresh();
    FObject::doUpdate();
}

FGenIntResultsFileEditorHandle::FGenIntResultsFileEditorHandle(FGenIntResultsFileEditor *editor)
    : mEditor(editor)
{
}

FGenIntResultsFileEditorHandle::~FGenIntResultsFileEditorHandle() = default;

void FGenIntResultsFileEditorHandle::doUpdate() const
{
    if (mEditor)
        mEditor->refresh();
    FObject::doUpdate();
}

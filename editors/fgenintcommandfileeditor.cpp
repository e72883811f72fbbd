// SPDX-License-Identifier: Apache-2.0
#include "fgenintcommandfileeditor.h"

FGenIntCommandFileEditor::FGenIntCommandFileEditor(QWidget *parent,
                                                   const FExpr<FGenIntCommandFile> &file,
                                                   const FExpr<FExternComputation> &)
    : FTemplateTab(parent, file.getPtr())
{
}

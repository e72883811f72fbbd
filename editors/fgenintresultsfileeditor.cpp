// SPDX-License-Identifier: Apache-2.0
#include "fgenintresultsfileeditor.h"

FGenIntResultsFileEditor::FGenIntResultsFileEditor(QWidget *parent,
                                                   const FExpr<FGenIntResultsFile> &file,
                                                   const FExpr<FExternComputation> &)
    : FTemplateTab(parent, file.getPtr())
{
}

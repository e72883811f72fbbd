// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTRESULTSFILEEDITOR_H
#define FGENINTRESULTSFILEEDITOR_H
#include "fexterncomputation.h"
#include "fgenintresultsfile.h"
#include "ftemplatetab.h"

/// The editor of a result template.
class FGenIntResultsFileEditor : public FTemplateTab
{
    Q_OBJECT
public:
    FGenIntResultsFileEditor(QWidget *parent, const FExpr<FGenIntResultsFile> &file,
                             const FExpr<FExternComputation> &computation);
    void setResultsFile(const FExpr<FGenIntResultsFile> &file) { setFile(file.getPtr()); }
};
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTCOMMANDFILEEDITOR_H
#define FGENINTCOMMANDFILEEDITOR_H
#include "fexterncomputation.h"
#include "fgenintcommandfile.h"
#include "ftemplatetab.h"

/// The editor of an input template.
class FGenIntCommandFileEditor : public FTemplateTab
{
    Q_OBJECT
public:
    FGenIntCommandFileEditor(QWidget *parent, const FExpr<FGenIntCommandFile> &file,
                             const FExpr<FExternComputation> &computation);
    void setCommandFile(const FExpr<FGenIntCommandFile> &file) { setFile(file.getPtr()); }
};
#endif

// SPDX-License-Identifier: Apache-2.0
#include "fobjecteditorwgt.h"

#include <QPointer>

FObjectEditorWgt::FObjectEditorWgt(QWidget *parent)
    : QScrollArea(parent)
{
}
FObjectEditorWgt::~FObjectEditorWgt() = default;

FObjectEditorWgt *FObjectEditorWgt::instance()
{
    static QPointer<FObjectEditorWgt> editor;
    if (!editor)
        editor = new FObjectEditorWgt;
    return editor;
}

void FObjectEditorWgt::reinitialize() {}
void FObjectEditorWgt::reinitializeAll() {}

void FObjectEditorWgt::setObjects(const std::vector<FExpr<FObject, true>> &objects)
{
    mObjects = objects;
}

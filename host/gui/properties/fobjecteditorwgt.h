// SPDX-License-Identifier: Apache-2.0
#ifndef FOBJECTEDITORWGT_H
#define FOBJECTEDITORWGT_H
#include "fbasictype.h"

#include <QScrollArea>

/// The object editor: the attributes of one or more objects, made from the registry.
///
/// The one of the window follows the selection; others show the objects that they were given.
class FObjectEditorWgt : public QScrollArea
{
    Q_OBJECT
public:
    explicit FObjectEditorWgt(QWidget *parent = nullptr);
    ~FObjectEditorWgt() override;
    /// The editor of the window; one that nobody sees if there is none.
    static FObjectEditorWgt *instance();
    /// Makes the editors of attributes anew, of this one or of all; what is being typed stays.
    void reinitialize();
    static void reinitializeAll();

    /// Shows these objects from now on; without a call the selection.
    void setObjects(const std::vector<FExpr<FObject, true>> &objects);
    const std::vector<FExpr<FObject, true>> &objects() const { return mObjects; }

private:
    std::vector<FExpr<FObject, true>> mObjects;
};
#endif

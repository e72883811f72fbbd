// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTRESULTSFILEEDIT_H
#define FGENINTRESULTSFILEEDIT_H
#include "feditor.h"

#include <QPointer>

class FDefinitionGenInt;
class FGenIntResultsFileEditor;
class QMenu;

/// The sample of a result template, or a result file of a run; read only.
class FGenIntResultsFileEdit : public FEditor
{
    Q_OBJECT
public:
    explicit FGenIntResultsFileEdit(FGenIntResultsFileEditor *editor, QWidget *parent);
    std::shared_ptr<FDefinitionGenInt> getDefinition() const;

protected:
    void focusInEvent(QFocusEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    QPointer<FGenIntResultsFileEditor> mEditor;
};
#endif

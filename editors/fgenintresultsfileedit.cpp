// SPDX-License-Identifier: Apache-2.0
#include "fgenintresultsfileedit.h"

#include "fdefinitiongenint.h"
#include "fentry.h"
#include "fgenintresultsfileeditor.h"

#include <QContextMenuEvent>
#include <QMenu>

FGenIntResultsFileEdit::FGenIntResultsFileEdit(FGenIntResultsFileEditor *editor, QWidget *parent)
    : FEditor(3, 0, parent)
    , mEditor(editor)
{
    setReadOnly(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setTabChangesFocus(true);
}

std::shared_ptr<FDefinitionGenInt> FGenIntResultsFileEdit::getDefinition() const
{
    return mEditor ? mEditor->definition() : nullptr;
}

void FGenIntResultsFileEdit::focusInEvent(QFocusEvent *event)
{
    if (mEditor)
        Q_EMIT mEditor->gotFocus();
    FEditor::focusInEvent(event);
}

void FGenIntResultsFileEdit::mouseDoubleClickEvent(QMouseEvent *event)
{
    FEditor::mouseDoubleClickEvent(event);
    if (mEditor && event->button() == Qt::LeftButton)
        mEditor->readValueAt(cursorForPosition(event->pos()).position(), event->globalPos());
}

void FGenIntResultsFileEdit::keyPressEvent(QKeyEvent *event)
{
    if (mEditor && event->modifiers() == Qt::ControlModifier && event->key() == Qt::Key_E)
        mEditor->readValueAt(textCursor().position(),
                             viewport()->mapToGlobal(cursorRect().bottomLeft()));
    else
        FEditor::keyPressEvent(event);
}

namespace {
/// Entries can't be put into a sample: the items are there as in a template, and do nothing.
void addIdleEntries(QMenu *menu, const std::vector<FExpr<FEntryBase, true>> &entries)
{
    for (const auto &one : entries) {
        const auto entry = one.ptr<FEntryDef>();
        if (!entry)
            continue;
        if (!entry->getChildren().empty() || entry->isGroup())
            addIdleEntries(menu->addMenu(Q(entry->getName())), entry->getChildren());
        else
            menu->addAction(Q(entry->getName()))->setData(Q(entry->getFullName()));
    }
}
} // namespace

void FGenIntResultsFileEdit::contextMenuEvent(QContextMenuEvent *event)
{
    const QPointer<QMenu> menu(createStandardContextMenu(event->pos()));
    menu->setObjectName(QStringLiteral("sampleMenu"));
    const auto definition = getDefinition();
    if (definition) {
        QAction *first = menu->actions().value(0);
        const bool isByKey = event->reason() == QContextMenuEvent::Keyboard;
        const int position =
            isByKey ? textCursor().position() : cursorForPosition(event->pos()).position();
        const QPoint place = event->globalPos();
        auto *entry = new QAction(tr("New Entry"), menu);
        menu->insertAction(first, entry);
        auto *entries = new QMenu(tr("Entries"), menu);
        addIdleEntries(entries, definition->getRootEntries());
        menu->insertMenu(first, entries);
        menu->insertSeparator(first);
        menu->addSeparator();
        QAction *read = menu->addAction(tr("Read this value"), this, [this, position, place] {
            if (mEditor)
                mEditor->readValueAt(position, place);
        });
        read->setShortcut(QKeySequence(Qt::CTRL + Qt::Key_E));
        QAction *numbers = menu->addAction(tr("Show line numbers"));
        numbers->setCheckable(true);
        numbers->setChecked(hasLineNumbers());
        connect(numbers, &QAction::triggered, this, &FEditor::setLineNumbers);
    }
    menu->exec(event->globalPos());
    if (menu)
        menu->deleteLater();
}

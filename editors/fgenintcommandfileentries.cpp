// SPDX-License-Identifier: Apache-2.0
// What the editor of a template does to entries, and the menus that offer it.
#include "factions.h"
#include "fdefinitiongenint.h"
#include "fgenintcommandfilebuttons.h"
#include "fgenintcommandfileedit.h"
#include "fgenintcommandfileeditor.h"
#include "fhistory.h"
#include "ficons.h"
#include "fobjecteditorwgt.h"

#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QMenu>

namespace {
constexpr int kLongestName = 40;

QString tagOf(const QString &fullName) { return "<entry>" + fullName + "</entry>"; }
} // namespace

void FGenIntCommandFileEdit::insertEntry()
{
    const auto *action = qobject_cast<QAction *>(sender());
    if (!action)
        return;
    FHistoryTransaction step(nullptr, F_TEXT("insert commandfile entry"), true);
    QTextCursor cursor = textCursor();
    cursor.insertText(tagOf(action->data().toString()));
}

QString FGenIntCommandFileEdit::proposedName(const QString &line)
{
    const int end = QRegExp(QStringLiteral("\\:|=|\\d|#|\\,|\\;")).indexIn(line);
    QString name = (end < 0 ? line : line.left(end)).simplified();
    name.replace(QRegExp(QStringLiteral("\\W")), QStringLiteral("_"));
    name.replace(QRegExp(QStringLiteral("\\_+")), QStringLiteral("_"));
    while (name.size() > kLongestName && name.contains('_'))
        name.truncate(name.lastIndexOf('_'));
    return name.left(kLongestName);
}

void FGenIntCommandFileEdit::addEntryViaContextMenu()
{
    const QTextCursor cursor = textCursor();
    const QString text = cursor.selectedText();
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    std::shared_ptr<FBasicType> value;
    if (isNumber)
        value = f_make_shared<FDouble>(number);
    else
        value = f_make_shared<FString>(S(text));
    if (mEditor)
        mEditor->commit(); // what was typed is a step of its own
    FHistoryTransaction step(nullptr, F_TEXT("create commandfile entry"), true);
    addEntry(proposedName(cursor.block().text()), value, cursor);
}

void FGenIntCommandFileEdit::addEntryViaButton()
{
    mAddButton->hide();
    const auto *data = currentData();
    if (!data)
        return;
    const double value = data->getValue(mCurrentIndex);
    const QString name = data->getName(mCurrentIndex);
    const QTextCursor cursor = data->getCurCursor();
    if (mEditor)
        mEditor->commit();
    FHistoryTransaction step(nullptr, F_TEXT("create commandfile entry"), true);
    addEntry(name, f_make_shared<FDouble>(value), cursor);
}

void FGenIntCommandFileEdit::addEntry(QString name, const std::shared_ptr<FBasicType> &value,
                                      QTextCursor cursor)
{
    if (!value || cursor.isNull())
        return;
    if (name.isEmpty() || name == QLatin1String("_"))
        name = QStringLiteral("newEntry");
    const auto definition = getDefinition();
    if (!definition || !mEditor)
        return;
    {
        const FGenIntCommandFileEditor::FUpdateBlocker later(mEditor);
        FHistoryTransaction step(nullptr, std::string(), true);
        // It may end up under another name, so the tag takes the one that it has.
        const auto entry = FEntryDef::create(S(name), definition, 1, 1, false, true, std::string(),
                                             FExprBase(value));
        if (!entry)
            return;
        setFollowsText(false);
        cursor.insertText(tagOf(Q(entry->getFullName())));
        mEditor->setAlteredText();
        setFollowsText(true);
    }
    FObjectEditorWgt::instance()->reinitialize();
}

void FGenIntCommandFileEdit::replaceEntry()
{
    const auto *action = qobject_cast<QAction *>(sender());
    const auto *data = currentData();
    QTextCursor cursor = data ? data->getCurCursor() : QTextCursor();
    if (!action || cursor.isNull())
        return;
    setFollowsText(false);
    cursor.removeSelectedText();
    setFollowsText(true);
    cursor.insertText(tagOf(action->data().toString()));
    const auto definition = getDefinition();
    const auto entry = getCurEntry(definition);
    if (entry && !definition->commandFileReferencesEntry(FExpr<FEntryBase>(entry)))
        removeEntry(entry);
}

void FGenIntCommandFileEdit::removeEntry()
{
    const auto definition = getDefinition();
    if (!definition)
        return;
    const auto entry = getCurEntry(definition);
    QString plain;
    if (entry) {
        const auto value = entry->getDefaultValue().getPtr();
        if (!value)
            return;
        plain = Q(value->toPlainString());
    }
    const auto *data = currentData();
    QTextCursor cursor = data ? data->getCurCursor() : QTextCursor();
    if (!cursor.isNull()) {
        setFollowsText(false);
        cursor.insertText(plain);
        setFollowsText(true);
        textAltered();
    }
    if (entry && !definition->commandFileReferencesEntry(FExpr<FEntryBase>(entry)))
        removeEntry(entry);
}

void FGenIntCommandFileEdit::removeEntry(const std::shared_ptr<FEntryDef> &entry)
{
    const auto definition = getDefinition();
    if (!definition || !mEditor)
        return;
    mEditor->commit();
    FHistoryTransaction step(nullptr, F_TEXT("remove commandfile entry"), true);
    const FGenIntCommandFileEditor::FUpdateBlocker later(mEditor);
    definition->removeEntry(FExpr<FEntryBase>(entry));
    mEditor->refresh();
    FObjectEditorWgt::instance()->reinitialize();
}

void FGenIntCommandFileEdit::deleteEntry()
{
    if (const auto entry = getCurEntry(nullptr))
        removeEntry(entry);
    else
        removeEntry();
}

void FGenIntCommandFileEdit::renameEntry()
{
    if (mCurrentEntry.empty())
        return;
    const QString name = Q(mCurrentEntry);
    mNameField->setFont(font());
    mNameField->setText(name.mid(name.lastIndexOf('|') + 1));
    mNameField->selectAll();
    const QPoint place =
        mEditButton->isVisible() ? mEditButton->pos() : mapFromGlobal(QCursor::pos());
    mNameField->setGeometry(
        place.x(), place.y(),
        qMax(120, mNameField->fontMetrics().horizontalAdvance(mNameField->text()) + 29),
        mNameField->sizeHint().height());
    hideAddEditButtons();
    mNameField->show();
    mNameField->setFocus();
}

void FGenIntCommandFileEdit::leaveName()
{
    mNameField->hide();
    setFocus();
}

void FGenIntCommandFileEdit::entryNameChanged()
{
    mNameField->hide();
    const auto entry = getCurEntry(nullptr);
    if (!entry)
        return;
    QString name = mNameField->text();
    mCurrentEntry.clear();
    name = name.mid(name.lastIndexOf('|') + 1);
    if (!name.isEmpty() && S(name) != entry->getName()) {
        if (mEditor)
            mEditor->commit();
        FHistoryTransaction step(nullptr, F_TEXT("rename commandfile entry"), true);
        entry->setName(S(name));
    }
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    if (mEditor)
        mEditor->refresh();
    FObjectEditorWgt::instance()->reinitialize();
}

void FGenIntCommandFileEdit::forceWindowsLineEndings(bool force)
{
    if (const auto file = getCommandFile())
        file->setForceWindowsLineEndings(force);
}

void FGenIntCommandFileEdit::buildContextMenu(QMenu *menu, const EntryList &entries, bool insert)
{
    for (const auto &one : entries) {
        const auto entry = one.ptr<FEntryDef>();
        if (!entry)
            continue;
        const QString name = Q(entry->getName());
        if (!entry->getChildren().empty() || entry->isGroup()) {
            buildContextMenu(menu->addMenu(name), entry->getChildren(), insert);
            continue;
        }
        QAction *action = menu->addAction(name);
        action->setData(Q(entry->getFullName()));
        connect(action, &QAction::triggered, this,
                insert ? &FGenIntCommandFileEdit::insertEntry
                       : &FGenIntCommandFileEdit::replaceEntry);
    }
}

void FGenIntCommandFileEdit::addEntriesMenu(QMenu *menu, const FDefinitionGenInt &definition,
                                            bool insert)
{
    buildContextMenu(menu, definition.getRootEntries(), insert);
    const QString exports = Q(ENTRYGROUP_EXPORTS);
    for (QAction *group : menu->actions()) {
        if (!group->menu() || group->menu()->title() != exports)
            continue;
        for (const auto &file : const_cast<FDefinitionGenInt &>(definition).getFiles()) {
            const auto one = file.getPtr();
            if (!one)
                continue;
            QAction *action = group->menu()->addAction(one->getFileName());
            action->setData(exports + '|' + one->getFileName());
            connect(action, &QAction::triggered, this,
                    insert ? &FGenIntCommandFileEdit::insertEntry
                           : &FGenIntCommandFileEdit::replaceEntry);
        }
        break;
    }
}

void FGenIntCommandFileEdit::addViewItems(QMenu *menu)
{
    menu->addSeparator();
    QAction *numbers = menu->addAction(tr("Show line numbers"));
    numbers->setCheckable(true);
    numbers->setChecked(hasLineNumbers());
    connect(numbers, &QAction::triggered, this, &FGenIntCommandFileEdit::toggleLineNumbers);
    if (const auto file = getCommandFile()) {
        QAction *ends = menu->addAction(tr("Force Windows line endings"));
        ends->setCheckable(true);
        ends->setChecked(file->getForceWindowsLineEndings());
        connect(ends, &QAction::triggered, this, &FGenIntCommandFileEdit::forceWindowsLineEndings);
    }
    QAction *blanks = menu->addAction(tr("Show blanks"));
    blanks->setCheckable(true);
    blanks->setChecked(showsBlanks());
    connect(blanks, &QAction::triggered, this, &FEditor::setShowBlanks);
    menu->addSeparator();
    menu->addAction(tr("Find"), this, qOverload<>(&FGenIntCommandFileEdit::startSearch),
                    QKeySequence::Find);
    menu->addAction(tr("Go to line\u2026"), this, &FEditor::goToLine,
                    QKeySequence(Qt::CTRL + Qt::Key_G));
}

void FGenIntCommandFileEdit::contextMenuEvent(QContextMenuEvent *event)
{
    const auto definition = getDefinition();
    if (!definition) {
        FEditor::contextMenuEvent(event);
        return;
    }
    hideAddEditButtons();
    const QPointer<QMenu> menu(createStandardContextMenu());
    menu->setObjectName(QStringLiteral("templateMenu"));
    // Undo is the project's.
    for (QAction *action : menu->actions())
        for (const char *name : {"undo", "redo"})
            if (action->objectName() == QLatin1String("edit-") + name)
                if (QAction *own = FActions::instance()->action(
                        name[0] == 'u' ? QStringLiteral("editUndo") : QStringLiteral("editRedo"))) {
                    action->setEnabled(own->isEnabled());
                    action->disconnect(SIGNAL(triggered(bool)));
                    connect(action, &QAction::triggered, own, &QAction::trigger);
                }
    QAction *first = menu->actions().value(0);
    auto *create = new QAction(tr("New Entry"), menu);
    connect(create, &QAction::triggered, this, &FGenIntCommandFileEdit::addEntryViaContextMenu);
    menu->insertAction(first, create);
    auto *entries = new QMenu(tr("Entries"), menu);
    addEntriesMenu(entries, *definition, true);
    menu->insertMenu(first, entries);
    menu->insertSeparator(first);
    addViewItems(menu);
    menu->exec(event->globalPos());
    if (menu)
        menu->deleteLater();
}

void FGenIntCommandFileEdit::editEntry()
{
    const auto definition = getDefinition();
    if (!definition)
        return;
    const QPointer<FGenIntCommandFileEdit> self(this);
    const QPointer<QMenu> menu(new QMenu(this));
    menu->setObjectName(QStringLiteral("tagMenu"));
    menu->addAction(FIcons::icon(QStringLiteral(":/pen")), tr("Rename"), this,
                    &FGenIntCommandFileEdit::renameEntry);
    menu->addAction(FIcons::icon(QStringLiteral(":/delete")), tr("Remove"), this,
                    qOverload<>(&FGenIntCommandFileEdit::removeEntry));
    QMenu *replace = menu->addMenu(FIcons::icon(QStringLiteral(":/refresh")), tr("Replace"));
    addEntriesMenu(replace, *definition, false);
    menu->addAction(FIcons::icon(QStringLiteral(":/erase")), tr("Delete (from all files)"), this,
                    &FGenIntCommandFileEdit::deleteEntry);
    mPopup = menu;
    menu->exec(mOpensAtCaret ? viewport()->mapToGlobal(cursorRect().bottomLeft()) : QCursor::pos());
    if (self)
        mPopup = nullptr;
    if (menu)
        menu->deleteLater();
}

/// What a click does to the number or the tag at the caret.
void FGenIntCommandFileEdit::editAtCaret()
{
    QTextCursor cursor = textCursor();
    auto *data = dynamic_cast<FGenIntCommandFileEntryData *>(cursor.block().userData());
    const int index = data ? data->getCurIdx(cursor.positionInBlock()) : -1;
    if (index < 0 || isWriteModeActivated())
        return;
    const bool isTag = data->getType(index) == FGenIntLineSpans::IsTag;
    const int begin = cursor.block().position();
    mCurrentData = data;
    mCurrentBlock = cursor.block();
    mCurrentIndex = index;
    cursor.setPosition(begin + data->getEnd(index));
    cursor.setPosition(begin + (isTag ? data->getBegin(index) : data->getValueBegin(index)),
                       QTextCursor::KeepAnchor);
    data->setCurCursor(cursor);
    if (!isTag) {
        addEntryViaButton();
        return;
    }
    mCurrentEntry = S(data->getName(index));
    mOpensAtCaret = true;
    editEntry();
    mOpensAtCaret = false;
}

// SPDX-License-Identifier: Apache-2.0
#include "fgenintcommandfileeditor.h"

#include "fcustomcomputation.h"
#include "fdefinitiongenint.h"
#include "fgenintcommandfileedit.h"
#include "fgeninteditorhandles.h"
#include "fgenintentrylist.h"
#include "fgenintworkbench.h"
#include "fhistory.h"
#include "ficons.h"
#include "fini.h"
#include "fsoftconbase.h"
#include "ftheme.h"
#include "ftoolbutton.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QSplitter>

namespace {
constexpr int kRestMilliseconds = 1000;
constexpr int kEnoughMilliseconds = 899; // of rest; a shot that was fired earlier finds less
const auto kListKey = QStringLiteral("TemplateEditor/entryList");
} // namespace

FGenIntCommandFileEditor::FUpdateBlocker::FUpdateBlocker(const FGenIntCommandFileEditor *editor)
    : mWorkbenches(editor->workbenches())
{
    for (const auto &workbench : mWorkbenches)
        workbench->setImediateUpdate(false, false);
}

FGenIntCommandFileEditor::FUpdateBlocker::~FUpdateBlocker()
{
    for (const auto &workbench : mWorkbenches) {
        workbench->setImediateUpdate(true, false);
        workbench->update(nullptr);
    }
}

FGenIntCommandFileEditor::FGenIntCommandFileEditor(QWidget *parent,
                                                   const FExpr<FGenIntCommandFile> &file,
                                                   const FExpr<FExternComputation> &computation)
    : FTemplateTab(parent, computation)
    , mHandle(f_make_shared<FGenIntCommandFileEditorHandle>(this))
    , mCommandFile(file)
{
    mHandle->setImediateUpdate(true);
    setFile(file.getPtr());
    registerHandle();
}

FGenIntCommandFileEditor::~FGenIntCommandFileEditor() = default;

std::shared_ptr<FGenIntCommandFile> FGenIntCommandFileEditor::commandFile() const
{
    return mCommandFile.getPtr();
}

void FGenIntCommandFileEditor::setCommandFile(const FExpr<FGenIntCommandFile> &file)
{
    if (mCommandFile.getExpr() == file.getExpr())
        return;
    mCommandFile.deregisterClient(mHandle);
    mCommandFile = file;
    setFile(file.getPtr());
    showName();
    registerHandle();
}

/// The colours of names follow the entries, so a change of the definition is told too.
void FGenIntCommandFileEditor::registerHandle()
{
    mCommandFile.registerClient(mHandle, false);
    mDefinition.deregisterClient(mHandle);
    mDefinition = FExprBase(definition());
    mDefinition.registerClient(mHandle, false);
}

void FGenIntCommandFileEditor::init()
{
    mName = new QLineEdit(this);
    mMode = new FToolButton(this);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    auto *row = new QWidget(this);
    row->setObjectName(QStringLiteral("AttributeRow"));
    mRow = new QHBoxLayout(row);
    mRow->setContentsMargins(FTheme::space(2), 2, FTheme::space(2), 2);
    mMode->setObjectName(QStringLiteral("templateMode"));
    mMode->setIcon(FIcons::icon(QStringLiteral(":/templateEditorAssistedMode")));
    mMode->setToolTip(tr("Enter plain mode"));
    mMode->setAccessibleName(tr("Assisted mode"));
    mMode->setAutoRaise(true);
    mMode->setCheckable(true);
    mMode->setChecked(true);
    connect(mMode, &QToolButton::clicked, this, &FGenIntCommandFileEditor::refresh);
    mRow->addWidget(mMode);
    auto *label = new QLabel(tr("Template Name"), row);
    label->setBuddy(mName);
    mRow->addWidget(label);
    mName->setObjectName(QStringLiteral("templateName"));
    mName->setAccessibleName(tr("Template Name"));
    connect(mName, &QLineEdit::editingFinished, this, &FGenIntCommandFileEditor::fileNameChanged);
    mRow->addWidget(mName, 1);

    auto *second = new QWidget(this);
    second->setObjectName(QStringLiteral("AttributeRow"));
    second->setProperty("last", 1);
    auto *body = new QHBoxLayout(second);
    body->setContentsMargins(0, 0, 0, 0);
    auto *splitter = new QSplitter(second);
    splitter->setChildrenCollapsible(false);
    body->addWidget(splitter);
    mEdit = new FGenIntCommandFileEdit(this);
    mEdit->setLineWrapMode(QPlainTextEdit::NoWrap);
    setEditor(mEdit);
    mList = new FGenIntEntryList(this);
    splitter->addWidget(mEdit);
    splitter->addWidget(mList);
    splitter->setStretchFactor(0, 1);
    splitter->setSizes({700, 240});

    auto *list = new FToolButton(row);
    list->setObjectName(QStringLiteral("showEntries"));
    list->setIcon(FIcons::icon(QStringLiteral(":/entry")));
    list->setToolTip(tr("Entries and where they are used"));
    list->setAccessibleName(tr("Entries"));
    list->setAutoRaise(true);
    list->setCheckable(true);
    list->setChecked(FIni().value(kListKey, true).toBool());
    mList->setVisible(list->isChecked());
    connect(list, &QToolButton::toggled, this, [this](bool shown) {
        mList->setVisible(shown);
        FIni().setValue(kListKey, shown);
    });
    mRow->addWidget(list);
    layout->addWidget(row);
    makeNotice(layout);
    layout->addWidget(second, 1);
    takeTheme();
    connect(FTheme::instance(), &FTheme::changed, this, [this] {
        takeTheme();
        mEdit->highlighter()->rehighlight();
        mEdit->viewport()->update();
    });
    showName();
}

void FGenIntCommandFileEditor::addBackButton(QWidget *button)
{
    mRow->insertWidget(0, button);
    mRow->insertSpacing(1, 8 - mRow->spacing());
}

bool FGenIntCommandFileEditor::isAssisted() const { return !mMode || mMode->isChecked(); }

void FGenIntCommandFileEditor::showName()
{
    const auto file = commandFile();
    if (!file || !mName || mName->text() == file->getFileName() ||
        (mName->hasFocus() && mName->isModified()))
        return;
    mName->setText(file->getFileName());
}

void FGenIntCommandFileEditor::refreshNames()
{
    const QStringList names = FGenIntCommandFileSyntaxHighlighter::knownNames(mEdit);
    if (names == mKnownNames)
        return;
    mKnownNames = names;
    mEdit->highlighter()->forgetNames();
    mEdit->highlighter()->rehighlight();
    mEdit->updateLineMarks();
    mEdit->viewport()->update();
}

void FGenIntCommandFileEditor::refresh()
{
    if (!isBuilt())
        return;
    mMode->setToolTip(isAssisted() ? tr("Enter plain mode") : tr("Enter assisted mode"));
    if (isAssisted())
        mEdit->highlighter()->goOn();
    else
        mEdit->hideAddEditButtons();
    if (isLoaded()) {
        commit();
        load();
        refreshNames();
        if (!mNotice->isHidden())
            checkSource();
    }
    showName();
    mList->refreshSoon();
}

void FGenIntCommandFileEditor::showEvent(QShowEvent *event)
{
    if (!mDefinition)
        registerHandle();
    FTemplateTab::showEvent(event);
    refreshNames();
    checkSource();
}

void FGenIntCommandFileEditor::loadText(const QString &text)
{
    const int x = mEdit->horizontalScrollBar()->value(), y = mEdit->verticalScrollBar()->value();
    mEdit->setFollowsText(false);
    mEdit->clearEntryData();
    showText(text);
    mEdit->setFollowsText(true);
    mEdit->horizontalScrollBar()->setValue(x);
    mEdit->verticalScrollBar()->setValue(y);
    mIsTyped = false;
    mEdit->updateLineMarks();
}

void FGenIntCommandFileEditor::fileNameChanged()
{
    const auto file = commandFile();
    if (!file || mName->text() == file->getFileName())
        return;
    mName->setModified(false);
    {
        const QSignalBlocker quiet(mName);
        FHistoryTransaction step(nullptr, F_TEXT("template name changed"), true);
        file->setFileName(mName->text());
        step.addStep(file);
    }
    FGenIntWorkbench::instance()->renameTab(file.get());
}

void FGenIntCommandFileEditor::restartTimer()
{
    mIsTyped = true;
    mAltered.start();
    QTimer::singleShot(kRestMilliseconds, this, &FGenIntCommandFileEditor::startTextAltering);
}

void FGenIntCommandFileEditor::startTextAltering()
{
    if (mIsTyped && mAltered.isValid() && mAltered.elapsed() > kEnoughMilliseconds)
        setAlteredText();
}

void FGenIntCommandFileEditor::commit()
{
    if (mIsTyped)
        setAlteredText();
}

void FGenIntCommandFileEditor::setAlteredText()
{
    mIsTyped = false;
    const auto file = commandFile();
    if (!isLoaded() || !file || file->isDestroyed())
        return;
    if (loadedText() != file->text()) { // changed elsewhere meanwhile: that was the later step
        load();
        return;
    }
    const QString text = edited(loadedText(), textOf(mEdit));
    if (text == loadedText())
        return;
    FHistoryTransaction step(nullptr, F_TEXT("text altered"), true);
    setLoaded(text);
    file->setContent(text);
    if (const auto custom = std::dynamic_pointer_cast<FCustomComputation>(computation()))
        if (const auto configuration = custom->getConfiguration().getPtr())
            configuration->setOutOfDate(0);
    step.addStep(file);
    mEdit->updateLineMarks();
}

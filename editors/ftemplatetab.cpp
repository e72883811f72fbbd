// SPDX-License-Identifier: Apache-2.0
#include "ftemplatetab.h"

#include "factions.h"
#include "fdefinitiongenint.h"
#include "feditor.h"
#include "ficons.h"
#include "fsoftconbase.h"
#include "ftheme.h"
#include "ftoolbutton.h"

#include <QEvent>
#include <QTabBar>
#include <QTextBlock>

namespace {
bool isLineEnd(QChar c) { return c == '\n' || c == '\r' || c == QChar::ParagraphSeparator; }

/// Length of the line end at \p at: two for carriage return and line feed.
int lineEndAt(const QString &text, int at)
{
    return text[at] == '\r' && at + 1 < text.size() && text[at + 1] == '\n' ? 2 : 1;
}

/// Where the letter \p place of the shown form stands in \p text.
int placeIn(const QString &text, int place)
{
    int at = 0;
    for (; place > 0 && at < text.size(); --place)
        at += isLineEnd(text[at]) ? lineEndAt(text, at) : 1;
    return at;
}

} // namespace

QString FTemplateTab::shownForm(const QString &text)
{
    QString shown;
    shown.reserve(text.size());
    for (int i = 0; i < text.size(); ++i)
        if (isLineEnd(text[i])) {
            i += lineEndAt(text, i) - 1;
            shown += '\n';
        } else {
            shown += text[i];
        }
    return shown;
}

QString FTemplateTab::edited(const QString &before, const QString &after)
{
    const QString shown = shownForm(before);
    int begin = 0;
    const int least = qMin(shown.size(), after.size());
    while (begin < least && shown[begin] == after[begin])
        ++begin;
    int tail = 0;
    while (tail < least - begin && shown[shown.size() - 1 - tail] == after[after.size() - 1 - tail])
        ++tail;
    QString middle = after.mid(begin, after.size() - begin - tail);
    if (before.contains(QLatin1String("\r\n")))
        middle.replace('\n', QLatin1String("\r\n"));
    return before.left(placeIn(before, begin)) + middle +
           before.mid(placeIn(before, shown.size() - tail));
}
QString FTemplateTab::textOf(const FEditor *editor)
{
    QString text;
    text.reserve(editor->document()->characterCount());
    for (QTextBlock block = editor->document()->firstBlock(); block.isValid();
         block = block.next()) {
        text += block.text();
        if (block.next().isValid())
            text += '\n';
    }
    return text;
}

FTemplateTab::FTemplateTab(QWidget *parent, const FExpr<FExternComputation> &computation)
    : QFrame(parent)
    , mComputation(computation)
{
    setFrameStyle(QFrame::NoFrame);
    setFocusPolicy(Qt::WheelFocus);
    setAccessibleName(tr("Template"));
    connect(FActions::instance(), &FActions::aboutToRun, this, [this] { commit(); });
}

FTemplateTab::~FTemplateTab() = default;

void FTemplateTab::ensureBuilt() const
{
    if (!mEditor)
        const_cast<FTemplateTab *>(this)->build();
}

FEditor *FTemplateTab::editor() const
{
    ensureBuilt();
    return mEditor;
}

void FTemplateTab::setEditor(FEditor *editor)
{
    mEditor = editor;
    editor->setObjectName(QStringLiteral("templateText"));
    editor->setFrameShape(QFrame::NoFrame);
    editor->setAccessibleName(tr("Text of the template"));
    editor->setUndoRedoEnabled(false); // undo is the model's
    editor->installEventFilter(this);
    setFocusProxy(editor);
}

void FTemplateTab::setFile(const std::shared_ptr<FGenIntFile> &file)
{
    mFile = file;
    mIsLoaded = false;
    if (isVisible())
        load();
}

void FTemplateTab::setFocusToEditor() { editor()->setFocus(Qt::OtherFocusReason); }

void FTemplateTab::load()
{
    const auto file = mFile.lock();
    if (!file || (mIsLoaded && mLoaded == file->text()))
        return;
    ensureBuilt();
    mIsLoaded = true;
    mLoaded = file->text();
    loadText(shownForm(mLoaded));
}

void FTemplateTab::showText(const QString &text)
{
    const QString now = textOf(mEditor);
    if (text == now)
        return;
    if (now.isEmpty()) {
        mEditor->setPlainText(text);
        return;
    }
    int begin = 0, tail = 0;
    const int least = qMin(text.size(), now.size());
    while (begin < least && text[begin] == now[begin])
        ++begin;
    while (tail < least - begin && text[text.size() - 1 - tail] == now[now.size() - 1 - tail])
        ++tail;
    QTextCursor cursor(mEditor->document());
    cursor.setPosition(begin);
    cursor.setPosition(now.size() - tail, QTextCursor::KeepAnchor);
    cursor.insertText(text.mid(begin, text.size() - begin - tail));
}

void FTemplateTab::showEvent(QShowEvent *event)
{
    ensureBuilt();
    makeBackButton();
    QFrame::showEvent(event);
    load();
}

void FTemplateTab::focusInEvent(QFocusEvent *event)
{
    Q_EMIT gotFocus();
    QFrame::focusInEvent(event);
}

bool FTemplateTab::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == mEditor && event->type() == QEvent::FocusOut)
        commit();
    else if (watched == mEditor && event->type() == QEvent::FocusIn)
        Q_EMIT gotFocus();
    return QFrame::eventFilter(watched, event);
}

void FTemplateTab::makeBackButton()
{
    if (mHasBack || !parentWidget() || !qobject_cast<QTabWidget *>(parentWidget()->parentWidget()))
        return;
    mHasBack = true;
    auto *back = new FToolButton(this);
    back->setObjectName(QStringLiteral("back"));
    back->setText(tr("Back"));
    back->setToolTip(tr("Back to overview"));
    back->setIcon(FIcons::icon(QStringLiteral(":/prev")));
    back->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    back->setAutoRaise(true);
    connect(back, &QToolButton::clicked, this, &FTemplateTab::goBack);
    addBackButton(back);
}

void FTemplateTab::goBack()
{
    auto *tabs = qobject_cast<QTabWidget *>(parentWidget()->parentWidget());
    if (!tabs)
        return;
    tabs->setCurrentIndex(0);
    // The count falls as the index rises: every second tab stays.
    if (tabs->tabBar()->isHidden())
        for (int index = 1; tabs->count() > index; ++index)
            tabs->removeTab(index);
}

void FTemplateTab::showPlace(int line, int column, int length)
{
    load();
    const QTextBlock block = mEditor->document()->findBlockByNumber(line - 1);
    if (!block.isValid())
        return;
    mEditor->goTo(line, column);
    QTextEdit::ExtraSelection mark;
    mark.format.setBackground(FTheme::color("warning-ground"));
    mark.format.setForeground(FTheme::color("warning"));
    mark.cursor = mEditor->textCursor();
    mark.cursor.setPosition(
        qMin(mark.cursor.position() + length, block.position() + block.length() - 1),
        QTextCursor::KeepAnchor);
    mEditor->setExtraSelections(length > 0 ? QList<QTextEdit::ExtraSelection>{mark}
                                           : QList<QTextEdit::ExtraSelection>());
    mEditor->setFocus();
}

std::shared_ptr<FDefinitionGenInt> FTemplateTab::definition() const
{
    const auto own = mFile.lock();
    if (!own)
        return nullptr;
    for (const auto &one : getManageds<FDefinitionGenInt>())
        if (auto definition = one.getPtr())
            for (const auto &file : definition->getFiles())
                if (file.getExpr() == own)
                    return definition;
    return nullptr;
}

std::vector<std::shared_ptr<FSoftConBase>> FTemplateTab::workbenches() const
{
    std::vector<std::shared_ptr<FSoftConBase>> found;
    for (const auto &one : FSoftConBase::all())
        if (auto workbench = one.getPtr();
            workbench && workbench->containsComputation(mComputation))
            found.push_back(std::move(workbench));
    return found;
}

// SPDX-License-Identifier: Apache-2.0
#include "fgenintcommandfileedit.h"

#include "fdefinitiongenint.h"
#include "fgenintcommandfilebuttons.h"
#include "fgenintcommandfileeditor.h"
#include "fgenintworkbench.h"
#include "ficons.h"
#include "fmarloctrl.h"
#include "fsearchdialog.h"
#include "ftheme.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QKeyEvent>
#include <QStringListModel>
#include <QTabWidget>

FGenIntCommandFileEdit::FGenIntCommandFileEdit(QWidget *parent)
    : FEditor(3, 1, parent)
    , mEditor(qobject_cast<FGenIntCommandFileEditor *>(parent))
{
    init();
}

FGenIntCommandFileEdit::~FGenIntCommandFileEdit()
{
    disconnect();
    setHighlighter(nullptr);
    delete mHighlighter;
}

void FGenIntCommandFileEdit::init()
{
    setSyntaxHighlighter();
    setFollowsText(true);
    setAttribute(Qt::WA_Hover);
    setMouseTracking(true);
    viewport()->setMouseTracking(true);
    setTabChangesFocus(false);

    mAddButton = new FToolButton(this);
    mAddButton->setObjectName(QStringLiteral("addEntryButton"));
    mAddButton->setIcon(FIcons::icon(QStringLiteral(":/add")));
    mAddButton->setToolTip(tr("Make this number an entry"));
    connect(mAddButton, &QToolButton::clicked, this, &FGenIntCommandFileEdit::addEntryViaButton);
    mEditButton = new FGenIntCommandFileEditEntryButton(this);
    mEditButton->setObjectName(QStringLiteral("editEntryButton"));
    mEditButton->setIcon(FIcons::icon(QStringLiteral(":/editor")));
    connect(mEditButton, &QToolButton::clicked, this, &FGenIntCommandFileEdit::editEntry);
    for (FToolButton *button : {mAddButton, static_cast<FToolButton *>(mEditButton)}) {
        button->setAutoRaise(true);
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setFocusPolicy(Qt::NoFocus);
        button->setCursor(Qt::PointingHandCursor);
        button->hide();
    }
    mNameField = new FGenIntCommandFileLineEdit(this);
    mCompleter = new QCompleter(new QStringListModel(this), this);
    mCompleter->setWidget(this);
    mCompleter->setCaseSensitivity(Qt::CaseInsensitive);
    mCompleter->popup()->setObjectName(QStringLiteral("entryNames"));
    connect(mCompleter, qOverload<const QString &>(&QCompleter::activated), this,
            [this](const QString &name) {
                QTextCursor cursor = textCursor();
                const QString prefix = tagPrefix();
                cursor.setPosition(cursor.position() - prefix.size(), QTextCursor::KeepAnchor);
                const QString behind =
                    cursor.block().text().mid(cursor.selectionEnd() - cursor.block().position());
                cursor.insertText(behind.startsWith(QLatin1String("</")) ? name
                                                                         : name + "</entry>");
                setTextCursor(cursor);
            });
    connect(this, &QPlainTextEdit::cursorPositionChanged, this,
            &FGenIntCommandFileEdit::markPartner);
    updateLineNumberAreaWidth(0);
    lineNumberDisplay()->installEventFilter(this);
}

void FGenIntCommandFileEdit::setSyntaxHighlighter()
{
    setHighlighter(nullptr);
    delete mHighlighter;
    mHighlighter = new FGenIntCommandFileSyntaxHighlighter(this);
    setHighlighter(mHighlighter);
}

void FGenIntCommandFileEdit::setFollowsText(bool follows)
{
    disconnect(this, &QPlainTextEdit::textChanged, this, &FGenIntCommandFileEdit::textAltered);
    if (follows)
        connect(this, &QPlainTextEdit::textChanged, this, &FGenIntCommandFileEdit::textAltered);
}

std::shared_ptr<FGenIntCommandFile> FGenIntCommandFileEdit::getCommandFile() const
{
    return mEditor ? mEditor->commandFile() : nullptr;
}

std::shared_ptr<FDefinitionGenInt> FGenIntCommandFileEdit::getDefinition() const
{
    return mEditor ? mEditor->definition() : nullptr;
}

std::shared_ptr<FEntryDef>
FGenIntCommandFileEdit::getCurEntry(std::shared_ptr<FDefinitionGenInt> definition) const
{
    if (mCurrentEntry.empty())
        return nullptr;
    if (!definition)
        definition = getDefinition();
    return definition ? definition->getEntryOfScope(mCurrentEntry).ptr<FEntryDef>() : nullptr;
}

bool FGenIntCommandFileEdit::isWriteModeActivated() const
{
    return mEditor && !mEditor->isAssisted();
}

FGenIntCommandFileEntryData *FGenIntCommandFileEdit::currentData() const
{
    return mCurrentData && mCurrentBlock.isValid() && mCurrentBlock.userData() == mCurrentData
               ? mCurrentData
               : nullptr;
}

void FGenIntCommandFileEdit::clearEntryData()
{
    mCurrentData = nullptr;
    mCurrentBlock = QTextBlock();
    mHighlighter->rehighlight(); // tables are made anew for what is seen
}

void FGenIntCommandFileEdit::hideAddEditButtons()
{
    mAddButton->hide();
    mEditButton->hide();
}

void FGenIntCommandFileEdit::textAltered()
{
    if (FMarloCtrl::instance()->isBusy() || FMarloCtrl::instance()->isLoadingProject() || !mEditor)
        return;
    mEditor->restartTimer();
}

bool FGenIntCommandFileEdit::event(QEvent *event)
{
    // The buttons follow the mouse at the next paint.
    if (event->type() == QEvent::Enter || event->type() == QEvent::HoverMove ||
        event->type() == QEvent::MouseMove)
        viewport()->update();
    return FEditor::event(event);
}

void FGenIntCommandFileEdit::paintEvent(QPaintEvent *event)
{
    FEditor::paintEvent(event);
    if (!isWriteModeActivated() && !mPopup && !mNameField->isVisible())
        placeButtons();
}

void FGenIntCommandFileEdit::placeButtons()
{
    const QPoint mouse = viewport()->mapFromGlobal(QCursor::pos());
    QTextCursor cursor = cursorForPosition(mouse);
    const QTextBlock block = cursor.block();
    auto *data = dynamic_cast<FGenIntCommandFileEntryData *>(block.userData());
    if (!data || !viewport()->rect().contains(mouse)) {
        hideAddEditButtons();
        return;
    }
    mCurrentIndex = data->getCurIdx(cursor.positionInBlock());
    if (mCurrentIndex < 0 || data->getEnd(mCurrentIndex) >= block.length()) {
        hideAddEditButtons();
        return;
    }
    cursor.setPosition(block.position() + data->getBegin(mCurrentIndex));
    const QPoint topLeft = cursorRect(cursor).topLeft();
    cursor.setPosition(block.position() + data->getEnd(mCurrentIndex));
    const QPoint offset(lineNumberAreaWidth(), 1);
    const QRect room(topLeft + offset, cursorRect(cursor).bottomRight() + offset);
    mCurrentData = data;
    mCurrentBlock = block;
    if (data->getType(mCurrentIndex) == FGenIntLineSpans::IsTag)
        placeEditButton(&cursor, room);
    else
        placeAddButton(&cursor, room);
    data->setCurCursor(cursor);
}

namespace {
void place(FToolButton *button, const QRect &room, const QFont &font)
{
    button->setFont(font);
    button->setFixedWidth(room.width() + FToolButton::getIconSize() + 10);
    if (button->geometry().topLeft() != room.topLeft() || button->height() != room.height())
        button->setGeometry(QRect(room.topLeft(), QSize(button->width(), room.height())));
    if (button->isHidden())
        button->show();
}
} // namespace

void FGenIntCommandFileEdit::placeEditButton(QTextCursor *cursor, const QRect &room)
{
    const QString name = mCurrentData->getName(mCurrentIndex);
    mEditButton->setEntryName(name);
    place(mEditButton, room, font());
    mAddButton->hide();
    cursor->setPosition(mCurrentBlock.position() + mCurrentData->getBegin(mCurrentIndex),
                        QTextCursor::KeepAnchor);
    mCurrentEntry = S(name);
}

void FGenIntCommandFileEdit::placeAddButton(QTextCursor *cursor, const QRect &room)
{
    const QString text = QString(mCurrentData->getText(mCurrentIndex)).replace('&', "&&");
    if (mAddButton->text() != text)
        mAddButton->setText(text);
    place(mAddButton, room, font());
    mEditButton->hide();
    cursor->setPosition(mCurrentBlock.position() + mCurrentData->getValueBegin(mCurrentIndex),
                        QTextCursor::KeepAnchor);
}

void FGenIntCommandFileEdit::focusInEvent(QFocusEvent *event)
{
    if (mEditor)
        Q_EMIT mEditor->gotFocus();
    FEditor::focusInEvent(event);
}

void FGenIntCommandFileEdit::keepIndent()
{
    const QString line = textCursor().block().text();
    int spaces = 0, tabs = 0;
    while (spaces < line.size() && line[spaces] == ' ')
        ++spaces;
    while (spaces + tabs < line.size() && line[spaces + tabs] == '\t')
        ++tabs;
    // One step of typing: line end and indentation.
    QTextCursor cursor = textCursor();
    cursor.beginEditBlock();
    cursor.insertBlock();
    cursor.insertText(QString(spaces, ' ') + QString(tabs, '\t'));
    cursor.endEditBlock();
    setTextCursor(cursor);
    ensureCursorVisible();
}

void FGenIntCommandFileEdit::keyPressEvent(QKeyEvent *event)
{
    if (completes(event))
        return;
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const auto modifiers = event->modifiers();
    if (modifiers == Qt::ControlModifier && event->key() == Qt::Key_F) {
        startSearch(false);
    } else if (modifiers == Qt::ControlModifier && event->key() == Qt::Key_H) {
        startSearch(true);
    } else if (modifiers == Qt::ControlModifier && event->key() == Qt::Key_E) {
        editAtCaret();
    } else if (modifiers == Qt::ControlModifier && event->key() == Qt::Key_Space) {
        offerNames();
    } else if (isReturn && (modifiers == Qt::NoModifier || modifiers == Qt::KeypadModifier)) {
        keepIndent();
    } else {
        FEditor::keyPressEvent(event);
        if (!event->text().isEmpty() && event->text()[0].isPrint())
            offerNames();
    }
}

/// What stands between the last opening mark ahead of the caret and the caret; null outside a tag.
QString FGenIntCommandFileEdit::tagPrefix() const
{
    const QTextCursor cursor = textCursor();
    const QString ahead = cursor.block().text().left(cursor.positionInBlock());
    const int open = ahead.lastIndexOf(QLatin1String("<entry>"));
    if (open < 0 || ahead.indexOf('<', open + 1) >= 0)
        return QString();
    const QString prefix = ahead.mid(open + 7);
    return prefix.isNull() ? QLatin1String("") : prefix;
}

void FGenIntCommandFileEdit::offerNames()
{
    const QString prefix = tagPrefix();
    if (prefix.isNull()) {
        mCompleter->popup()->hide();
        return;
    }
    auto *names = static_cast<QStringListModel *>(mCompleter->model());
    const QStringList known = FGenIntCommandFileSyntaxHighlighter::knownNames(this);
    if (names->stringList() != known)
        names->setStringList(known);
    mCompleter->setCompletionPrefix(prefix);
    if (mCompleter->completionCount() == 0 || mCompleter->currentCompletion() == prefix) {
        mCompleter->popup()->hide();
        return;
    }
    QRect room = cursorRect();
    room.translate(viewport()->x(), 0);
    room.setWidth(qMax(200, mCompleter->popup()->sizeHintForColumn(0) + FTheme::space(8)));
    mCompleter->complete(room);
    mCompleter->popup()->setCurrentIndex(mCompleter->completionModel()->index(0, 0));
}

/// Keys that belong to the open list of names.
bool FGenIntCommandFileEdit::completes(QKeyEvent *event)
{
    if (!mCompleter->popup()->isVisible())
        return false;
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Tab:
    case Qt::Key_Escape:
    case Qt::Key_Backtab:
        event->ignore(); // the completer does it
        return true;
    default:
        return false;
    }
}

void FGenIntCommandFileEdit::startSearch(bool replace)
{
    const bool isNew = !hasSearch();
    FSearchDialog *search = searchDialog();
    if (isNew) {
        connect(search, &FSearchDialog::highlightingRequested, this,
                &FGenIntCommandFileEdit::highlightSearch);
        connect(search, &FSearchDialog::resetHighlighting, this,
                &FGenIntCommandFileEdit::resetHighlight);
        search->setElsewhere(tr("All templates"),
                             [this](const FSearchDialog &given, bool backward) {
                                 return findElsewhere(given, backward);
                             });
    }
    search->setReplace(replace);
    search->open();
}

/// Opens the next input template with a hit.
bool FGenIntCommandFileEdit::findElsewhere(const FSearchDialog &search, bool backward)
{
    const auto definition = getDefinition();
    if (!definition)
        return false;
    std::vector<std::shared_ptr<FGenIntFile>> files;
    for (const auto &file : definition->getFiles(0))
        if (auto one = file.getPtr())
            files.push_back(std::move(one));
    if (backward)
        std::reverse(files.begin(), files.end());
    const auto own = std::find(files.begin(), files.end(), mEditor->file());
    if (own == files.end())
        return false;
    std::rotate(files.begin(), own + 1, files.end());
    files.pop_back();
    for (const auto &file : files) {
        if (search.expression().indexIn(file->text()) < 0)
            continue;
        auto *tabs = qobject_cast<QTabWidget *>(mEditor->parentWidget()->parentWidget());
        FGenIntWorkbench::instance()->openFile(mEditor->computation().get(), file.get());
        auto *other =
            tabs ? qobject_cast<FGenIntCommandFileEditor *>(tabs->currentWidget()) : nullptr;
        if (!other || other == mEditor)
            return false;
        QTextCursor start = other->edit()->textCursor();
        start.movePosition(backward ? QTextCursor::End : QTextCursor::Start);
        other->edit()->setTextCursor(start);
        other->edit()->startSearch(false);
        other->edit()->searchDialog()->setExpression(search);
        other->edit()->searchDialog()->repeat(backward);
        return true;
    }
    return false;
}

void FGenIntCommandFileEdit::highlightSearch(const QRegExp &expression)
{
    mHighlighter->setSearch(expression);
    mHighlighter->rehighlight();
    viewport()->update();
}

void FGenIntCommandFileEdit::resetHighlight()
{
    mHighlighter->setSearch(QRegExp());
    mHighlighter->rehighlight();
    viewport()->update();
    if (!hasSearch() || searchDialog()->isHidden())
        setFocus();
}

void FGenIntCommandFileEdit::toggleLineNumbers() { setLineNumbers(!hasLineNumbers()); }

/// Lines are selected by the numbers beside them.
bool FGenIntCommandFileEdit::eventFilter(QObject *watched, QEvent *event)
{
    const auto mouse = [event] { return static_cast<QMouseEvent *>(event); };
    switch (watched == lineNumberDisplay() ? event->type() : QEvent::None) {
    case QEvent::MouseButtonPress:
        if (mouse()->button() != Qt::LeftButton)
            break;
        mSelectsLines = true;
        selectLine(mouse()->localPos(), true);
        return true;
    case QEvent::MouseMove:
        if (!mSelectsLines)
            break;
        selectLine(mouse()->localPos(), false);
        return true;
    case QEvent::MouseButtonRelease:
        mSelectsLines = false;
        break;
    default:
        break;
    }
    return FEditor::eventFilter(watched, event);
}

void FGenIntCommandFileEdit::selectLine(const QPointF &position, bool isStart)
{
    QTextCursor cursor = cursorForPosition(position.toPoint());
    cursor.select(QTextCursor::LineUnderCursor);
    cursor.movePosition(QTextCursor::Right, QTextCursor::KeepAnchor);
    const int begin = cursor.selectionStart(), end = cursor.selectionEnd();
    if (isStart) {
        mLineSelectionBegin = begin;
        mLineSelectionEnd = end;
    } else if (mLineSelectionBegin >= begin) {
        cursor.setPosition(begin);
        cursor.setPosition(qMax(mLineSelectionEnd, end), QTextCursor::KeepAnchor);
    } else {
        cursor.setPosition(mLineSelectionBegin);
        cursor.setPosition(end, QTextCursor::KeepAnchor);
    }
    setTextCursor(cursor);
}

void FGenIntCommandFileEdit::markPartner()
{
    const QTextCursor cursor = textCursor();
    const QTextBlock block = cursor.block();
    const QString line = block.text();
    QList<QTextEdit::ExtraSelection> marks;
    if (line.size() < 10000 && line.contains(QLatin1String("entry>"))) {
        const FGenIntLineSpans spans = FGenIntLineSpans::of(line, {}, false);
        const int at = cursor.positionInBlock();
        for (int i = 0; spans.begins.size() == spans.ends.size() && i < spans.begins.size(); ++i) {
            if (spans.begins[i] > at || spans.ends[i] < at)
                continue;
            for (const QPair<int, int> &mark :
                 {qMakePair(spans.begins[i], 7), qMakePair(spans.ends[i] - 8, 8)}) {
                QTextEdit::ExtraSelection one;
                one.cursor = QTextCursor(block);
                one.cursor.setPosition(block.position() + mark.first);
                one.cursor.setPosition(block.position() + mark.first + mark.second,
                                       QTextCursor::KeepAnchor);
                one.format.setBackground(FTheme::color("selection"));
                marks << one;
            }
            break;
        }
    }
    if (!marks.isEmpty() || !extraSelections().isEmpty())
        setExtraSelections(marks);
}

void FGenIntCommandFileEdit::updateLineMarks()
{
    constexpr int kMost = 20000; // of tags; more would make a solid bar
    QVector<LineMark> marks;
    const QString &text = mEditor ? FTemplateTab::shownForm(mEditor->loadedText()) : QString();
    QSet<QString> known;
    for (const QString &name : FGenIntCommandFileSyntaxHighlighter::knownNames(this))
        known.insert(FGenIntLineSpans::folded(name));
    int line = 0, counted = 0;
    for (int at = text.indexOf(QLatin1String("entry>")); at >= 0 && marks.size() < kMost;) {
        const int begin = at == 0 ? 0 : text.lastIndexOf('\n', at) + 1;
        line += int(std::count(text.cbegin() + counted, text.cbegin() + begin, QChar('\n')));
        counted = begin;
        const int end = text.indexOf('\n', at) < 0 ? text.size() : text.indexOf('\n', at);
        const char *role = "tag";
        for (const auto &paint :
             FGenIntLineSpans::of(text.mid(begin, end - begin), known, false).paints)
            if (paint.colour != FGenIntLineSpans::Tag && paint.colour != FGenIntLineSpans::Known)
                role = "bad";
        marks.append({line, role});
        at = text.indexOf(QLatin1String("entry>"), end);
    }
    setLineMarks(marks);
}

bool FGenIntCommandFileEdit::goToTag(const QString &name)
{
    const QRegExp tag("<entry>" + QRegExp::escape(name) + "</entry>", Qt::CaseInsensitive);
    QTextCursor hit = FSearchDialog::find(document(), tag, textCursor().selectionEnd(), false);
    if (hit.isNull())
        hit = FSearchDialog::find(document(), tag, 0, false);
    if (hit.isNull())
        return false;
    setTextCursor(hit);
    centerCursor();
    return true;
}

// SPDX-License-Identifier: Apache-2.0
#include "feditor.h"

#include "fcmdlinesyntaxhighlighter.h"
#include "fsearchdialog.h"
#include "ftheme.h"

#include <QInputDialog>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <QTextBlock>
#include <QWheelEvent>

FLineNumberDisplay::FLineNumberDisplay(FEditor *editor)
    : QWidget(editor)
    , mEditor(editor)
{
    setObjectName(QStringLiteral("lineNumbers"));
}

FLineMap::FLineMap(FEditor *editor)
    : QWidget(editor)
    , mEditor(editor)
{
    setObjectName(QStringLiteral("lineMap"));
    setCursor(Qt::PointingHandCursor);
    hide();
}

void FLineMap::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), FTheme::color("alternate"));
    const double lines = qMax(1, mEditor->blockCount());
    int last = -1;
    const char *role = nullptr;
    for (const FEditor::LineMark &mark : mEditor->lineMarks()) {
        const int y = int(mark.line / lines * (height() - 2));
        if (y == last && role == mark.role)
            continue;
        last = y;
        role = mark.role;
        painter.fillRect(1, y, width() - 2, 2, FTheme::color(role));
    }
}

void FLineMap::mousePressEvent(QMouseEvent *event)
{
    // To the mark that is nearest, else to the place itself.
    const double lines = qMax(1, mEditor->blockCount());
    const auto yOf = [&](int line) { return line / lines * (height() - 2); };
    int line = int(event->pos().y() / double(qMax(1, height())) * lines);
    double nearest = 6;
    for (const FEditor::LineMark &mark : mEditor->lineMarks()) {
        const double distance = qAbs(yOf(mark.line) - event->pos().y());
        if (distance < nearest) {
            nearest = distance;
            line = mark.line;
        }
    }
    mEditor->goTo(line + 1);
}

FEditor::FEditor(int, int lineNumbers, QWidget *parent)
    : QPlainTextEdit(parent)
    , mLineNumbers(lineNumbers != 0)
    , mDisplay(new FLineNumberDisplay(this))
    , mMap(new FLineMap(this))
{
    setLineWrapMode(NoWrap);
    setFont(FTheme::fixedFont());
    connect(this, &QPlainTextEdit::blockCountChanged, this, &FEditor::updateLineNumberAreaWidth);
    connect(this, &QPlainTextEdit::updateRequest, this, &FEditor::updateLineNumberArea);
    connect(FTheme::instance(), &FTheme::changed, mDisplay, qOverload<>(&QWidget::update));
    updateLineNumberAreaWidth(0);
}

int FEditor::lineNumberAreaWidth() const
{
    if (!mLineNumbers)
        return leftMargin();
    int digits = 2;
    for (int lines = blockCount(); lines >= 100; lines /= 10)
        ++digits;
    return leftMargin() + fontMetrics().horizontalAdvance('9') * digits + FTheme::space(4);
}

void FEditor::updateLineNumberAreaWidth(int)
{
    const int left = lineNumberAreaWidth();
    const int right = mMap->isHidden() ? 0 : FLineMap::kWidth;
    const int bottom = mBottomBar && !mBottomBar->isHidden() ? mBottomBar->sizeHint().height() : 0;
    setViewportMargins(left, 0, right, bottom);
    const QRect room = contentsRect();
    const QRect inner = viewport()->geometry();
    mDisplay->setGeometry(room.left(), room.top(), left, inner.height());
    mMap->setGeometry(inner.right() + 1, room.top(), right, inner.height());
    if (bottom > 0)
        mBottomBar->setGeometry(room.left(), inner.bottom() + 1, left + inner.width() + right,
                                bottom);
}

void FEditor::setLineNumbers(bool shown)
{
    mLineNumbers = shown;
    updateLineNumberAreaWidth(0);
    mDisplay->repaint();
}

void FEditor::setBottomBar(QWidget *bar)
{
    mBottomBar = bar;
    bar->installEventFilter(this);
    updateLineNumberAreaWidth(0);
}

bool FEditor::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == mBottomBar && (event->type() == QEvent::Show || event->type() == QEvent::Hide ||
                                  event->type() == QEvent::LayoutRequest)) {
        updateLineNumberAreaWidth(0);
        if (event->type() == QEvent::Hide && isVisible())
            setFocus();
    }
    return QPlainTextEdit::eventFilter(watched, event);
}

void FEditor::setLineMarks(const QVector<LineMark> &marks)
{
    mLineMarks = marks;
    if (marks.isEmpty() != mMap->isHidden()) {
        mMap->setVisible(!marks.isEmpty());
        updateLineNumberAreaWidth(0);
    }
    mMap->update();
}

FSearchDialog *FEditor::searchDialog()
{
    if (!mSearch)
        mSearch = new FSearchDialog(this);
    return mSearch;
}

bool FEditor::showsBlanks() const
{
    return document()->defaultTextOption().flags() & QTextOption::ShowTabsAndSpaces;
}

void FEditor::setShowBlanks(bool shown)
{
    QTextOption option = document()->defaultTextOption();
    option.setFlags(shown ? option.flags() | QTextOption::ShowTabsAndSpaces
                          : option.flags() & ~QTextOption::ShowTabsAndSpaces);
    document()->setDefaultTextOption(option);
    viewport()->update();
}

void FEditor::goTo(int line, int column)
{
    const QTextBlock block =
        document()->findBlockByNumber(qBound(0, line - 1, qMax(0, blockCount() - 1)));
    QTextCursor cursor(block);
    cursor.setPosition(block.position() + qBound(0, column, block.length() - 1));
    setTextCursor(cursor);
    centerCursor();
}

void FEditor::goToLine()
{
    bool isGiven = false;
    const int line =
        QInputDialog::getInt(this, tr("Go to line"), tr("Line, 1 to %1").arg(blockCount()),
                             textCursor().blockNumber() + 1, 1, blockCount(), 1, &isGiven);
    if (isGiven)
        goTo(line);
}

QTextBlock FEditor::lastSeenBlock() const
{
    QTextBlock block = firstVisibleBlock();
    qreal top = blockBoundingGeometry(block).translated(contentOffset()).top();
    while (block.isValid() && block.next().isValid() && top <= viewport()->height()) {
        top += blockBoundingRect(block).height();
        block = block.next();
    }
    return block;
}

void FEditor::paintEvent(QPaintEvent *event)
{
    if (mHighlighter)
        mHighlighter->ensure(firstVisibleBlock(), lastSeenBlock());
    QPlainTextEdit::paintEvent(event);
}

/// Keys of this editor go ahead of the same ones of the window.
bool FEditor::event(QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (key->modifiers() == Qt::ControlModifier &&
            (key->key() == Qt::Key_F || key->key() == Qt::Key_H || key->key() == Qt::Key_G)) {
            event->accept();
            return true;
        }
    }
    return QPlainTextEdit::event(event);
}

void FEditor::updateLineNumberArea(const QRect &rect, int dy)
{
    if (dy)
        mDisplay->scroll(0, dy);
    else
        mDisplay->update(0, rect.y(), mDisplay->width(), rect.height());
}

void FEditor::resizeEvent(QResizeEvent *event)
{
    QPlainTextEdit::resizeEvent(event);
    updateLineNumberAreaWidth(0);
}

void FEditor::paintLineNumbers(QPaintEvent *event)
{
    QPainter painter(mDisplay);
    painter.fillRect(event->rect(), FTheme::color("alternate"));
    if (!mLineNumbers)
        return;
    painter.setPen(FTheme::color("muted"));
    painter.setFont(font());
    QTextBlock block = firstVisibleBlock();
    qreal top = blockBoundingGeometry(block).translated(contentOffset()).top();
    while (block.isValid() && top <= event->rect().bottom()) {
        const qreal height = blockBoundingRect(block).height();
        if (block.isVisible() && top + height >= event->rect().top())
            painter.drawText(QRectF(0, top, mDisplay->width() - FTheme::space(2), height),
                             Qt::AlignRight | Qt::AlignTop,
                             QString::number(block.blockNumber() + 1));
        top += height;
        block = block.next();
    }
}

void FEditor::zoom(int steps)
{
    steps = qBound(-6 - mZoom, steps, 24 - mZoom);
    mZoom += steps;
    if (steps > 0)
        zoomIn(steps);
    else if (steps < 0)
        zoomOut(-steps);
    updateLineNumberAreaWidth(0);
}

void FEditor::resetZoom() { zoom(-mZoom); }

void FEditor::wheelEvent(QWheelEvent *event)
{
    if (!(event->modifiers() & Qt::ControlModifier)) {
        QPlainTextEdit::wheelEvent(event);
        return;
    }
    zoom(event->angleDelta().y() > 0 ? 1 : -1);
    event->accept();
}

void FEditor::keyPressEvent(QKeyEvent *event)
{
    if (event->modifiers() & Qt::ControlModifier) {
        switch (event->key()) {
        case Qt::Key_Plus:
        case Qt::Key_Equal:
            zoom(1);
            return;
        case Qt::Key_Minus:
            zoom(-1);
            return;
        case Qt::Key_0:
            resetZoom();
            return;
        case Qt::Key_F:
        case Qt::Key_H:
            searchDialog()->setReplace(event->key() == Qt::Key_H);
            searchDialog()->open();
            return;
        case Qt::Key_G:
            goToLine();
            return;
        default:
            break;
        }
    }
    if (event->key() == Qt::Key_F3 && mSearch)
        mSearch->repeat(event->modifiers() & Qt::ShiftModifier);
    if (event->key() == Qt::Key_Escape && mSearch && !mSearch->isHidden())
        mSearch->hide();
    QPlainTextEdit::keyPressEvent(event);
}

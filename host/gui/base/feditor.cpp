// SPDX-License-Identifier: Apache-2.0
#include "feditor.h"

#include "ftheme.h"

#include <QKeyEvent>
#include <QPainter>
#include <QTextBlock>
#include <QWheelEvent>

FLineNumberDisplay::FLineNumberDisplay(FEditor *editor)
    : QWidget(editor)
    , mEditor(editor)
{
    setObjectName(QStringLiteral("lineNumbers"));
}

FEditor::FEditor(int, int lineNumbers, QWidget *parent)
    : QPlainTextEdit(parent)
    , mLineNumbers(lineNumbers != 0)
    , mDisplay(new FLineNumberDisplay(this))
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
    setViewportMargins(lineNumberAreaWidth(), 0, 0, 0);
    const QRect room = contentsRect();
    mDisplay->setGeometry(room.left(), room.top(), lineNumberAreaWidth(), room.height());
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
        default:
            break;
        }
    }
    QPlainTextEdit::keyPressEvent(event);
}

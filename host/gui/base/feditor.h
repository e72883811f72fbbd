// SPDX-License-Identifier: Apache-2.0
#ifndef FEDITOR_H
#define FEDITOR_H
#include <QPlainTextEdit>

class FLineNumberDisplay;

/// A plain text with line numbers, in the font of text files.
class FEditor : public QPlainTextEdit
{
    Q_OBJECT
public:
    /// With \p lineNumbers 1 they are shown, with 0 not.
    FEditor(int, int lineNumbers, QWidget *parent = nullptr);
    /// Width of what stands left of the text, in pixels.
    int lineNumberAreaWidth() const;
    /// Paints the numbers of the lines that \p event exposes; called by the display.
    void paintLineNumbers(QPaintEvent *event);
    FLineNumberDisplay *lineNumberDisplay() const { return mDisplay; }
    void zoom(int steps);
    void resetZoom();

public Q_SLOTS:
    void updateLineNumberAreaWidth(int);

protected:
    /// Pixels that a derived editor keeps left of the line numbers.
    virtual int leftMargin() const { return 0; }
    void resizeEvent(QResizeEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool mLineNumbers;

private:
    void updateLineNumberArea(const QRect &rect, int dy);
    FLineNumberDisplay *mDisplay;
    int mZoom = 0;
};

/// The strip of line numbers of an editor.
class FLineNumberDisplay : public QWidget
{
    Q_OBJECT
public:
    explicit FLineNumberDisplay(FEditor *editor);
    QSize sizeHint() const override { return QSize(mEditor->lineNumberAreaWidth(), 0); }

protected:
    void paintEvent(QPaintEvent *event) override { mEditor->paintLineNumbers(event); }

private:
    FEditor *mEditor;
};
#endif

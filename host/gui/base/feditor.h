// SPDX-License-Identifier: Apache-2.0
#ifndef FEDITOR_H
#define FEDITOR_H
#include <QPlainTextEdit>
#include <QPointer>
#include <QTextBlock>

class FCmdLineSyntaxHighlighter;
class FLineNumberDisplay;
class FLineMap;
class FSearchDialog;

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
    bool hasLineNumbers() const { return mLineNumbers; }
    void setLineNumbers(bool shown);
    void zoom(int steps);
    void resetZoom();
    /// Blanks and tabs as dots and arrows.
    bool showsBlanks() const;
    void setShowBlanks(bool shown);
    /// Asks for a line, and goes there.
    void goToLine();
    /// Shows a line, from 1, with the caret at a column, from 0.
    void goTo(int line, int column = 0);
    /// Colours the lines that are about to be seen.
    void setHighlighter(FCmdLineSyntaxHighlighter *highlighter) { mHighlighter = highlighter; }
    /// A widget at the foot, as long as it isn't hidden.
    void setBottomBar(QWidget *bar);
    /// The lines of the whole text that something is to be told about, beside the scroll bar.
    struct LineMark
    {
        int line;         ///< from 0
        const char *role; ///< of the theme
    };
    void setLineMarks(const QVector<LineMark> &marks);
    const QVector<LineMark> &lineMarks() const { return mLineMarks; }
    /// Made when it is first asked for.
    FSearchDialog *searchDialog();
    bool hasSearch() const { return mSearch != nullptr; }
    QTextBlock firstSeenBlock() const { return firstVisibleBlock(); }
    QTextBlock lastSeenBlock() const;

public Q_SLOTS:
    void updateLineNumberAreaWidth(int);

protected:
    /// Pixels that a derived editor keeps left of the line numbers.
    virtual int leftMargin() const { return 0; }
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool mLineNumbers;

private:
    void updateLineNumberArea(const QRect &rect, int dy);
    FLineNumberDisplay *mDisplay;
    FLineMap *mMap;
    QVector<LineMark> mLineMarks;
    QPointer<QWidget> mBottomBar;
    FSearchDialog *mSearch = nullptr;
    FCmdLineSyntaxHighlighter *mHighlighter = nullptr;
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

/// The marks of a whole text beside its scroll bar; a click goes to the place.
class FLineMap : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kWidth = 8;
    explicit FLineMap(FEditor *editor);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    FEditor *mEditor;
};
#endif

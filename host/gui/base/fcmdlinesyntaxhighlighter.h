// SPDX-License-Identifier: Apache-2.0
#ifndef FCMDLINESYNTAXHIGHLIGHTER_H
#define FCMDLINESYNTAXHIGHLIGHTER_H
#include <QColor>
#include <QSyntaxHighlighter>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>
#include <QTimer>

/// Colours a text line by line: what is seen at once, the rest in idle time.
///
/// A derived class writes highlightBlock() as for any highlighter. The machinery of the base class
/// is not used: it goes over a whole text at once, and each pass counts as a change of the text.
class FCmdLineSyntaxHighlighter : public QSyntaxHighlighter
{
    Q_OBJECT
public:
    /// Characters above which lines that nobody sees are left alone: their colours and tables would
    /// take many times the memory of the text.
    static constexpr int kIdleLimit = 4 << 20;
    static QColor sErrorUnderlineColor, sTextColor, sCustomColor, sBackgroundColor;

    explicit FCmdLineSyntaxHighlighter(QTextDocument *document);
    QTextDocument *document() const { return mDocument; }
    /// All lines are due again.
    void rehighlight();
    void rehighlightBlock(const QTextBlock &block);
    /// What isPartial() says is another thing now: lines that were done in part are due.
    void goOn();
    /// Brings lines up to date now that are about to be seen, those from \p first to \p last.
    void ensure(QTextBlock first, const QTextBlock &last);

protected:
    // In the words of the base class, for highlightBlock()
    void setFormat(int start, int count, const QTextCharFormat &format);
    QTextBlock currentBlock() const { return mBlock; }
    void setCurrentBlockUserData(QTextBlockUserData *data) { mBlock.setUserData(data); }
    /// True as long as highlightBlock() leaves out something that it does otherwise.
    virtual bool isPartial() const { return false; }

private:
    void contentsChange(int position, int removed, int added);
    void workInIdleTime();
    void apply();
    bool isDue(const QTextBlock &block) const;
    QTextDocument *mDocument;
    QTextBlock mBlock;
    QVector<QTextCharFormat> mFormats;
    QVector<int> mFormatOf; // of each character; -1 for none
    QTimer mIdle;
    int mNextLine = 0;
    int mGeneration = 0; // half the state of a line that is up to date; odd if that was in part
};
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTCOMMANDFILESYNTAXHIGHLIGHTER_H
#define FGENINTCOMMANDFILESYNTAXHIGHLIGHTER_H
#include "fcmdlinesyntaxhighlighter.h"
#include "fgenintlinespans.h"

#include <QRegExp>
#include <QTextBlockUserData>
#include <QTextCursor>

class FGenIntCommandFileEdit;

/// Colours of a template's text.
struct FGenIntTemplateColours
{
    static QColor sTagForeground, sTagBackground;
    static QColor sTagErrorForeground, sTagErrorBackground;
    static QColor sValueForeground, sValueBackground;
    static QColor sValueErrorForeground, sValueErrorBackground;
    static QColor sPossibleValueForeground, sPossibleValueBackground;
    static QColor sButtonTagColor, sButtonEntryColor;
    /// Takes them from the theme.
    static void takeTheme();
};

/// What the mouse can act on in a line: tags, and numbers that could become entries.
class FGenIntCommandFileEntryData : public QTextBlockUserData
{
public:
    explicit FGenIntCommandFileEntryData(const FGenIntLineSpans &spans)
        : mSpans(spans)
    {
        mSpans.paints.clear();
    }
    // 0, no text or NaN for an index that isn't there
    int getBegin(int index) const { return mSpans.begins.value(index, 0); }
    int getEnd(int index) const { return mSpans.ends.value(index, 0); }
    int getValueBegin(int index) const { return mSpans.valueBegins.value(index, 0); }
    QString getName(int index) const { return mSpans.names.value(index); }
    double getValue(int index) const;
    QString getText(int index) const { return mSpans.texts.value(index); }
    unsigned getType(int index) const { return mSpans.types.value(index, 0); }
    /// The first span around \p position, its end included; -1 if there is none, or if a mark of
    /// the line isn't closed.
    int getCurIdx(int position) const;
    QTextCursor getCurCursor() const { return mCursor; }
    void setCurCursor(const QTextCursor &cursor) { mCursor = cursor; }
    const FGenIntLineSpans &spans() const { return mSpans; }

private:
    FGenIntLineSpans mSpans;
    QTextCursor mCursor;
};

/// Colours a template line by line, and makes the table of what the mouse can act on.
class FGenIntCommandFileSyntaxHighlighter : public FCmdLineSyntaxHighlighter,
                                            public FGenIntTemplateColours
{
    Q_OBJECT
public:
    explicit FGenIntCommandFileSyntaxHighlighter(FGenIntCommandFileEdit *edit);
    void setSearch(const QRegExp &expression) { mSearch = expression; }
    /// Marks the hits of the search in a line.
    void highlightSearch(const QString &text);
    /// The names of entries or files are others now, or the definition is.
    void forgetNames() { mNamesKnown = false; }
    /// Full names of the entries and of the files, as tags say them.
    static QStringList knownNames(FGenIntCommandFileEdit *edit);

protected:
    void highlightBlock(const QString &text) override;
    bool isPartial() const override;

private:
    FGenIntCommandFileEdit *mEdit;
    QRegExp mSearch;
    QSet<QString> mNames;
    bool mNamesKnown = false, mHasDefinition = false;
};
#endif

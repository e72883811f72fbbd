// SPDX-License-Identifier: Apache-2.0
#include "fgenintcommandfilesyntaxhighlighter.h"

#include "fdefinitiongenint.h"
#include "fgenintcommandfileedit.h"
#include "ftheme.h"

#include <limits>

QColor FGenIntTemplateColours::sTagForeground = Qt::blue;
QColor FGenIntTemplateColours::sTagBackground = Qt::white;
QColor FGenIntTemplateColours::sTagErrorForeground = Qt::darkRed;
QColor FGenIntTemplateColours::sTagErrorBackground = Qt::white;
QColor FGenIntTemplateColours::sValueForeground = Qt::darkGreen;
QColor FGenIntTemplateColours::sValueBackground = Qt::white;
QColor FGenIntTemplateColours::sValueErrorForeground = Qt::darkRed;
QColor FGenIntTemplateColours::sValueErrorBackground = Qt::white;
QColor FGenIntTemplateColours::sPossibleValueForeground = Qt::black;
QColor FGenIntTemplateColours::sPossibleValueBackground = QColor(207, 246, 207);
QColor FGenIntTemplateColours::sButtonTagColor = Qt::blue;
QColor FGenIntTemplateColours::sButtonEntryColor = Qt::darkGreen;

void FGenIntTemplateColours::takeTheme()
{
    const auto take = [](QColor *colour, const char *role) { *colour = FTheme::color(role); };
    take(&sTagForeground, "tag");
    take(&sTagErrorForeground, "tag-error");
    take(&sValueForeground, "tag-name");
    take(&sValueErrorForeground, "tag-error");
    for (QColor *ground :
         {&sTagBackground, &sTagErrorBackground, &sValueBackground, &sValueErrorBackground})
        take(ground, "base");
    take(&sPossibleValueForeground, "possible");
    take(&sPossibleValueBackground, "possible-ground");
    take(&sButtonTagColor, "tag");
    take(&sButtonEntryColor, "tag-name");
    take(&FCmdLineSyntaxHighlighter::sErrorUnderlineColor, "tag-error");
    take(&FCmdLineSyntaxHighlighter::sTextColor, "found");
    take(&FCmdLineSyntaxHighlighter::sCustomColor, "found-ground");
    take(&FCmdLineSyntaxHighlighter::sBackgroundColor, "base");
}

double FGenIntCommandFileEntryData::getValue(int index) const
{
    return mSpans.values.value(index, std::numeric_limits<double>::quiet_NaN());
}

int FGenIntCommandFileEntryData::getCurIdx(int position) const
{
    if (mSpans.begins.size() != mSpans.ends.size())
        return -1;
    for (int i = 0; i < mSpans.begins.size(); ++i)
        if (mSpans.begins[i] <= position && position <= mSpans.ends[i])
            return i;
    return -1;
}

FGenIntCommandFileSyntaxHighlighter::FGenIntCommandFileSyntaxHighlighter(
    FGenIntCommandFileEdit *edit)
    : FCmdLineSyntaxHighlighter(edit->document())
    , mEdit(edit)
{
}

QStringList FGenIntCommandFileSyntaxHighlighter::knownNames(FGenIntCommandFileEdit *edit)
{
    QStringList names;
    const auto definition = edit->getDefinition();
    if (!definition)
        return names;
    for (const auto &entry : definition->getNameMap())
        names << Q(entry.first);
    for (const auto &file : definition->getFiles())
        if (const auto one = file.getPtr())
            names << Q(ENTRYGROUP_EXPORTS) + '|' + one->getFileName();
    return names;
}

/// In plain mode a line keeps the table that it had.
bool FGenIntCommandFileSyntaxHighlighter::isPartial() const
{
    return mEdit && mEdit->isWriteModeActivated();
}

void FGenIntCommandFileSyntaxHighlighter::highlightBlock(const QString &text)
{
    if (text.isEmpty() || !mEdit) {
        setCurrentBlockUserData(nullptr);
        return;
    }
    if (!mNamesKnown) {
        mNamesKnown = true;
        mHasDefinition = mEdit->getDefinition() != nullptr;
        mNames.clear();
        for (const QString &name : knownNames(mEdit))
            mNames.insert(FGenIntLineSpans::folded(name));
    }
    if (!mHasDefinition)
        return;
    const bool isPlainMode = mEdit->isWriteModeActivated();
    const FGenIntLineSpans spans = FGenIntLineSpans::of(text, mNames, !isPlainMode);
    struct Look
    {
        QColor foreground, background;
        int weight;
    };
    // In the order of FGenIntLineSpans::Colour
    const Look looks[] = {{sTagForeground, sTagBackground, QFont::Normal},
                          {sTagErrorForeground, sTagErrorBackground, QFont::Normal},
                          {sErrorUnderlineColor, sTagBackground, QFont::Normal},
                          {sErrorUnderlineColor, sTagErrorBackground, QFont::Normal},
                          {sValueForeground, sValueBackground, QFont::Bold},
                          {sValueErrorForeground, sValueErrorBackground, QFont::Bold},
                          {sPossibleValueForeground, sPossibleValueBackground, QFont::Normal}};
    for (const FGenIntLineSpans::Paint &paint : spans.paints) {
        const Look &look = looks[paint.colour];
        QTextCharFormat format;
        format.setForeground(look.foreground);
        format.setBackground(look.background);
        if (paint.colour >= FGenIntLineSpans::Known)
            format.setFontWeight(look.weight);
        setFormat(paint.position, paint.length, format);
    }
    if (!isPlainMode)
        setCurrentBlockUserData(spans.begins.isEmpty() ? nullptr
                                                       : new FGenIntCommandFileEntryData(spans));
    highlightSearch(text);
}

void FGenIntCommandFileSyntaxHighlighter::highlightSearch(const QString &text)
{
    if (mSearch.isEmpty())
        return;
    QTextCharFormat format;
    format.setBackground(sCustomColor);
    format.setForeground(sTextColor);
    format.setFontWeight(QFont::Normal);
    for (int at = mSearch.indexIn(text); at >= 0 && at < text.size();) {
        const int length = mSearch.matchedLength();
        setFormat(at, length, format);
        at = mSearch.indexIn(text, at + qMax(1, length));
    }
}

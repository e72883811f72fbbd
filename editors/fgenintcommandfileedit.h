// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTCOMMANDFILEEDIT_H
#define FGENINTCOMMANDFILEEDIT_H
#include "fbasictype.h"
#include "feditor.h"
#include "fentry.h"

#include <QPointer>
#include <QRegExp>
#include <QTextCursor>

class FDefinitionGenInt;
class FGenIntCommandFile;
class FGenIntCommandFileEditEntryButton;
class FGenIntCommandFileEditor;
class FGenIntCommandFileEntryData;
class FGenIntCommandFileLineEdit;
class FGenIntCommandFileSyntaxHighlighter;
class FToolButton;
class QCompleter;
class QMenu;

/// The text of an input template. In assisted mode a button stands over the number or the tag under
/// the mouse.
class FGenIntCommandFileEdit : public FEditor
{
    Q_OBJECT
public:
    explicit FGenIntCommandFileEdit(QWidget *parent);
    ~FGenIntCommandFileEdit() override;

    /// The entry of the tag that was last under the mouse; null if there is none.
    std::shared_ptr<FEntryDef> getCurEntry(std::shared_ptr<FDefinitionGenInt> definition) const;
    std::shared_ptr<FDefinitionGenInt> getDefinition() const;
    std::shared_ptr<FGenIntCommandFile> getCommandFile() const;
    bool isWriteModeActivated() const;
    void setText(const QString &text);
    /// Forgets what the mouse can act on.
    void clearEntryData();
    void hideAddEditButtons();
    void setSyntaxHighlighter();
    FGenIntCommandFileSyntaxHighlighter *highlighter() const { return mHighlighter; }
    FToolButton *addButton() const { return mAddButton; }
    FGenIntCommandFileEditEntryButton *editButton() const { return mEditButton; }
    FGenIntCommandFileLineEdit *nameField() const { return mNameField; }
    /// Text changes of the program itself: textAltered() isn't called meanwhile.
    void setFollowsText(bool follows);
    /// Leaves the field of the name; the entry keeps its own.
    void leaveName();
    /// Places of tags and faulty marks for the map beside the scroll bar.
    void updateLineMarks();
    /// Selects the next tag of the entry of that full name; false if there is none.
    bool goToTag(const QString &name);

public Q_SLOTS:
    void insertEntry();
    void addEntryViaContextMenu();
    void addEntryViaButton();
    void textAltered();
    void editEntry();
    void renameEntry();
    void entryNameChanged();
    void deleteEntry();
    void removeEntry();
    void replaceEntry();
    void startSearch(bool replace);
    void startSearch() { startSearch(false); }
    void toggleLineNumbers();
    void forceWindowsLineEndings(bool force);
    void highlightSearch(const QRegExp &expression);
    void resetHighlight();

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;

private:
    using EntryList = std::vector<FExpr<FEntryBase, true>>;
    void init();
    void placeButtons();
    void placeEditButton(QTextCursor *cursor, const QRect &room);
    void placeAddButton(QTextCursor *cursor, const QRect &room);
    /// The table of the line that was last under the mouse; null if it is another one by now.
    FGenIntCommandFileEntryData *currentData() const;
    void addEntry(QString name, const std::shared_ptr<FBasicType> &value, QTextCursor cursor);
    void removeEntry(const std::shared_ptr<FEntryDef> &entry);
    void buildContextMenu(QMenu *menu, const EntryList &entries, bool insert);
    void addEntriesMenu(QMenu *menu, const FDefinitionGenInt &definition, bool insert);
    void addViewItems(QMenu *menu);
    static QString proposedName(const QString &line);
    void selectLine(const QPointF &position, bool isStart);
    void keepIndent();
    bool completes(QKeyEvent *event);
    void offerNames();
    bool findElsewhere(const class FSearchDialog &search, bool backward);
    QString tagPrefix() const;
    void markPartner();
    void editAtCaret();

    QPointer<FGenIntCommandFileEditor> mEditor;
    FGenIntCommandFileSyntaxHighlighter *mHighlighter = nullptr;
    FToolButton *mAddButton = nullptr;
    FGenIntCommandFileEntryData *mCurrentData = nullptr;
    QTextBlock mCurrentBlock;
    FGenIntCommandFileEditEntryButton *mEditButton = nullptr;
    std::string mCurrentEntry;
    int mCurrentIndex = -1;
    FGenIntCommandFileLineEdit *mNameField = nullptr;
    QMenu *mPopup = nullptr;
    QCompleter *mCompleter = nullptr;
    bool mSelectsLines = false, mOpensAtCaret = false;
    int mLineSelectionBegin = 0, mLineSelectionEnd = 0;
};
#endif

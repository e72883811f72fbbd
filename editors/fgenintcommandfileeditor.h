// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTCOMMANDFILEEDITOR_H
#define FGENINTCOMMANDFILEEDITOR_H
#include "fgenintcommandfile.h"
#include "fgenintcommandfilesyntaxhighlighter.h"
#include "ftemplatetab.h"

#include <QElapsedTimer>

class FGenIntCommandFileEdit;
class FGenIntCommandFileEditorHandle;
class FGenIntEntryList;
class FToolButton;
class QHBoxLayout;
class QLabel;
class QLayout;
class QLineEdit;

/// The editor of an input template. In assisted mode numbers become entries by one click, in plain
/// mode it is a text editor with colours.
class FGenIntCommandFileEditor : public FTemplateTab, private FGenIntTemplateColours
{
    Q_OBJECT
    Q_PROPERTY(QColor highlight_color_TagForeground MEMBER sTagForeground)
    Q_PROPERTY(QColor highlight_color_TagBackground MEMBER sTagBackground)
    Q_PROPERTY(QColor highlight_color_TagErrorForeground MEMBER sTagErrorForeground)
    Q_PROPERTY(QColor highlight_color_TagErrorBackground MEMBER sTagErrorBackground)
    Q_PROPERTY(QColor highlight_color_ValueForeground MEMBER sValueForeground)
    Q_PROPERTY(QColor highlight_color_ValueBackground MEMBER sValueBackground)
    Q_PROPERTY(QColor highlight_color_ValueErrorForeground MEMBER sValueErrorForeground)
    Q_PROPERTY(QColor highlight_color_ValueErrorBackground MEMBER sValueErrorBackground)
    Q_PROPERTY(QColor highlight_color_PossibleValueForeground MEMBER sPossibleValueForeground)
    Q_PROPERTY(QColor highlight_color_PossibleValueBackground MEMBER sPossibleValueBackground)
    Q_PROPERTY(QColor highlight_color_ButtonTagColor MEMBER sButtonTagColor)
    Q_PROPERTY(QColor highlight_color_ButtonEntryColor MEMBER sButtonEntryColor)
public:
    FGenIntCommandFileEditor(QWidget *parent, const FExpr<FGenIntCommandFile> &file,
                             const FExpr<FExternComputation> &computation);
    ~FGenIntCommandFileEditor() override;
    void setCommandFile(const FExpr<FGenIntCommandFile> &file);
    std::shared_ptr<FGenIntCommandFile> commandFile() const;
    FGenIntCommandFileEdit *edit() const
    {
        ensureBuilt();
        return mEdit;
    }
    /// False in plain mode.
    bool isAssisted() const;
    /// Puts the text into the model now.
    void setAlteredText();
    /// Typing goes on: the text is put into the model when it rests for a second.
    void restartTimer();
    void commit() override;
    /// Brings entries of the workbenches up to date once, behind what is done meanwhile.
    class FUpdateBlocker
    {
    public:
        explicit FUpdateBlocker(const FGenIntCommandFileEditor *editor);
        ~FUpdateBlocker();

    private:
        std::vector<std::shared_ptr<FSoftConBase>> mWorkbenches;
    };

public Q_SLOTS:
    void refresh() override;
    void fileNameChanged();
    void startTextAltering();

protected:
    void build() override { init(); }
    void loadText(const QString &text) override;
    void addBackButton(QWidget *button) override;
    void showEvent(QShowEvent *event) override;

private:
    void init();
    void registerHandle();
    void refreshNames();
    void makeNotice(QLayout *layout);
    void checkSource();
    void showDifference();
    void takeSource();
    void ignoreSource();
    void showName();
    std::shared_ptr<FGenIntCommandFileEditorHandle> mHandle;
    FExpr<FGenIntCommandFile> mCommandFile;
    FExprBase mDefinition;
    FGenIntCommandFileEdit *mEdit = nullptr;
    QLineEdit *mName = nullptr;
    FToolButton *mMode = nullptr;
    FGenIntEntryList *mList = nullptr;
    QWidget *mNotice = nullptr;
    QLabel *mNoticeText = nullptr;
    QHBoxLayout *mRow = nullptr;
    QElapsedTimer mAltered;
    QStringList mKnownNames;
    bool mIsTyped = false;
};
#endif

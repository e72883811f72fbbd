// SPDX-License-Identifier: Apache-2.0
#ifndef FTEMPLATETAB_H
#define FTEMPLATETAB_H
#include "fexterncomputation.h"
#include "fgenintfile.h"

#include <QFrame>

class FEditor;
class FDefinitionGenInt;
class FSoftConBase;
class QBoxLayout;

/// The tab of a template file: its text as an editor shows it. The text is loaded when the tab is
/// first seen.
class FTemplateTab : public QFrame
{
    Q_OBJECT
public:
    FTemplateTab(QWidget *parent, const FExpr<FExternComputation> &computation);
    ~FTemplateTab() override;
    std::shared_ptr<FGenIntFile> file() const { return mFile.lock(); }
    std::shared_ptr<FExternComputation> computation() const { return mComputation.getPtr(); }
    void setComputation(const FExpr<FExternComputation> &computation)
    {
        mComputation = computation;
    }
    FEditor *editor() const;
    /// The model's text as it was loaded or put there last.
    const QString &loadedText() const { return mLoaded; }
    void setFocusToEditor();
    /// Takes over what the model holds.
    virtual void refresh() = 0;
    /// Puts what was typed into the model.
    virtual void commit() {}
    /// Shows a line, from 1, and marks columns in it, from 0; nothing is marked with the length 0.
    virtual void showPlace(int line, int column, int length);
    /// The first definition that holds the file; null if there is none.
    std::shared_ptr<FDefinitionGenInt> definition() const;
    /// The workbenches of the computation.
    std::vector<std::shared_ptr<FSoftConBase>> workbenches() const;

    /// \p text with single line feeds, as an editor shows it.
    static QString shownForm(const QString &text);
    /// \p before with what was changed in its shown form, and nothing else: line ends and odd
    /// letters stay as they are where nobody typed.
    static QString edited(const QString &before, const QString &after);
    /// The text of an editor; not the plain text of Qt, which changes hard spaces.
    static QString textOf(const FEditor *editor);

Q_SIGNALS:
    void gotFocus();

protected:
    /// Makes the widgets, when the tab is first seen or asked for one.
    virtual void build() = 0;
    void ensureBuilt() const;
    bool isBuilt() const { return mEditor != nullptr; }
    void setEditor(FEditor *editor);
    void setFile(const std::shared_ptr<FGenIntFile> &file);
    /// Puts \p text into the editor; what is the same stays, with place and selection.
    void showText(const QString &text);
    bool isLoaded() const { return mIsLoaded; }
    void load();
    /// The model's text is \p text now, and the editor shows it already.
    void setLoaded(const QString &text) { mLoaded = text; }
    /// The text of the model has changed, or is shown first.
    virtual void loadText(const QString &text) = 0;
    /// A button that leads back to the overview, once the tab stands in a tab widget.
    virtual void addBackButton(QWidget *button) = 0;
    void showEvent(QShowEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void makeBackButton();
    void goBack();
    std::weak_ptr<FGenIntFile> mFile;
    FExpr<FExternComputation> mComputation;
    FEditor *mEditor = nullptr;
    QString mLoaded;
    bool mIsLoaded = false, mHasBack = false;
};
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FMAINWINDOW_H
#define FMAINWINDOW_H
#include "fworkspace.h"

#include <QMainWindow>
#include <QMap>
#include <QPointer>
#include <functional>
#include <map>

class FDesignsPage;
class FFinder;
class FGuiControl;
class FLogPanel;
class FModelPanel;
class FObjectEditorWgt;
class FOutputPanel;
class FProblemsPanel;
class FScriptPanel;
class FWelcomePage;
class QComboBox;
class QDockWidget;
class QLabel;
class QProgressBar;
class QStackedWidget;
class QTabWidget;
class QToolBar;
class QToolButton;

/// The window: documents in the middle, panels around them, one action table for all menus.
class FMainWindow : public QMainWindow, public FWorkspace
{
    Q_OBJECT
public:
    explicit FMainWindow(QWidget *parent = nullptr);
    ~FMainWindow() override;

    FModelPanel *modelPanel() const { return mModel; }
    FObjectEditorWgt *properties() const { return mProperties; }
    FProblemsPanel *problems() const { return mProblems; }
    FOutputPanel *output() const { return mOutput; }
    FDesignsPage *designs() const { return mDesigns; }
    QTabWidget *documents() const { return mDocuments; }
    /// Opens and raises a panel: "model", "properties", "messages", "problems", "output", "script".
    void showPanel(const QString &id);
    void showDesigns();
    /// Opens a file of a run at a place: line from 1, column from 0.
    void showResultFile(const QString &path, int line, int column, int length);
    /// A button with text for an action of the table, behind those that are there.
    void addToToolBar(const QString &id);
    void updateTitle();

    // FWorkspace
    void addDocument(FWidget *document) override;
    void removeDocument(FWidget *document) override;
    void showDocument(FWidget *document, bool visible) override;
    void documentChanged(FWidget *document) override;
    QWidget *window() override { return this; }
    /// What is done with a file of that suffix that is dropped on the window.
    void setFileHandler(const QString &suffix, std::function<void(const QString &)> take)
    {
        mFileHandlers[suffix] = std::move(take);
    }

protected:
    void closeEvent(QCloseEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    std::map<QString, std::function<void(const QString &)>> mFileHandlers;
    void makePanels();
    void makeActions();
    void makeMenus();
    void makeToolBar();
    void makeStatusBar();
    QDockWidget *addPanel(const QString &id, const QString &title, QWidget *content,
                          Qt::DockWidgetArea area);
    void setTabTitle(QDockWidget *panel, const QString &title, int count);
    void showPages();
    void hideDocument(int index);
    void updateRuns();
    void updateDesigns();
    void nextPane(int step);
    void restorePlaces();
    void addToMenu(const QString &id);
    void deleteSelected();
    void copySelected();
    void paste();

    FGuiControl *mControl;
    QStackedWidget *mPages;
    FWelcomePage *mWelcome;
    QTabWidget *mDocuments;
    FDesignsPage *mDesigns = nullptr;
    FModelPanel *mModel = nullptr;
    FObjectEditorWgt *mProperties = nullptr;
    FLogPanel *mLog = nullptr;
    FProblemsPanel *mProblems = nullptr;
    FOutputPanel *mOutput = nullptr;
    FScriptPanel *mScript = nullptr;
    FFinder *mFinder = nullptr;
    QToolBar *mToolBar = nullptr;
    QAction *mToolGap = nullptr;
    QMap<QString, QDockWidget *> mPanels;
    QMap<FWidget *, QWidget *> mWidgets; // of documents
    QMap<QString, QMenu *> mMenus;
    QLabel *mRunText = nullptr;
    QProgressBar *mProgress = nullptr;
    QToolButton *mStop = nullptr;
    QComboBox *mDesign = nullptr;
    QLabel *mDesignLabel = nullptr;
};
#endif

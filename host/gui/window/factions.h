// SPDX-License-Identifier: Apache-2.0
#ifndef FACTIONS_H
#define FACTIONS_H
#include <QAction>
#include <QKeySequence>
#include <functional>
#include <map>
#include <vector>

/// One action: what it is called, how it looks, how it is reached, when it can't be used.
struct FActionInfo
{
    QString id;   ///< unique, also the object name of the QAction, as "fileSave"
    QString menu; ///< title of the menu: "File", "Edit", "View", "Insert", "Run", "Help"; empty
                  ///< for an action that only the finder and its shortcut reach
    double place; ///< within the menu, by size; a whole number more begins a new section
    QString text; ///< with its mnemonic
    QString icon; ///< key, empty for none
    QKeySequence shortcut;
    QString toolTip; ///< what it does, in a sentence
    std::function<void()> run;
    /// Why it can't be used now, in words that its tool tip shows; empty if it can. May be null.
    std::function<QString()> whyNot;
    /// For actions that are on or off: whether it is on. May be null.
    std::function<bool()> isOn;
    /// Another text for now, as "Undo move"; empty for the usual one. May be null.
    std::function<QString()> textNow;
};

/// All actions of the program in one table: menus, tool bar, finder, context menus and shortcuts
/// show what stands here. Libraries add theirs with their prototypes' commands or at start.
class FActions : public QObject
{
    Q_OBJECT
public:
    static FActions *instance();
    QAction *add(const FActionInfo &info);
    /// Null for an unknown id.
    QAction *action(const QString &id) const;
    const std::vector<FActionInfo> &all() const { return mInfos; }
    /// The window goes, and all actions with it.
    void clear();
    /// Asks every action again whether it can be used; called once a turn after changes.
    void refresh();
    /// The same, in the next turn of the event loop.
    void refreshSoon();

Q_SIGNALS:
    /// An action is about to be run: what was typed belongs into the model first.
    void aboutToRun();
    void added(const QString &id);

private:
    FActions() = default;
    std::vector<FActionInfo> mInfos;
    std::map<QString, QAction *> mActions;
    bool mRefreshing = false;
};
#endif

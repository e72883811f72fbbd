// SPDX-License-Identifier: Apache-2.0
#ifndef MIRROR_H
#define MIRROR_H
#include "fchanges.h"
#include "fdesign.h"
#include "fhistory.h"
#include "flogmsg.h"
#include "fobjectmanager.h"
#include "fselectionset.h"

#include <QtTest>
#include <map>

/// All that a window could show of an object.
inline QString rowOf(const FManaged &object)
{
    QString text;
    QTextStream stream(&text);
    stream << object.getName() << " " << object.getClass() << " " << object.getDbId() << " "
           << quintptr(object.treeParent().get()) << " " << object.isUpToDate();
    for (const auto &child : object.getChildren<FManaged>())
        stream << " " << child->getDbId();
    if (dynamic_cast<const FParameter *>(&object))
        stream << " = "
               << FExprBase(std::const_pointer_cast<FObject>(object.shared_from_this()))
                      .toPlainString();
    object.saveScopeManner(stream, 0, false, false);
    stream.flush();
    return text;
}

struct Picture
{
    std::map<const FObject *, QString> rows;
    QStringList selection;
    QString undo, redo;
    bool clean = true;
    QString design;
    size_t messages = 0;

    void readSelection()
    {
        selection.clear();
        for (const auto &object : FSelectionSet::instance()->getObjects())
            selection << QString::number(quintptr(object.getExpr().get()));
    }
    void readHistory()
    {
        undo = FHistory::instance()->undoTitle();
        redo = FHistory::instance()->redoTitle();
    }
    void readClean() { clean = FHistory::instance()->isClean(); }
    void readDesign() { design = Q(FDesign::current()->getName()); }
    void readRows()
    {
        rows.clear();
        for (const auto &object : FObjectManager::instance()->all())
            rows[object.get()] = rowOf(*object);
    }
    static Picture fresh()
    {
        Picture picture;
        picture.readRows();
        picture.readSelection();
        picture.readHistory();
        picture.readClean();
        picture.readDesign();
        picture.messages = FLogMsg::count();
        return picture;
    }
    QString difference(const Picture &other) const
    {
        for (const auto &row : rows) {
            const auto at = other.rows.find(row.first);
            if (at == other.rows.end())
                return "only in one: " + row.second;
            if (at->second != row.second)
                return row.second + "\nand\n" + at->second;
        }
        if (rows.size() != other.rows.size())
            return "other objects";
        if (selection != other.selection)
            return "selection " + selection.join(",") + " and " + other.selection.join(",");
        if (undo != other.undo || redo != other.redo || clean != other.clean)
            return "history " + undo + "|" + redo + " and " + other.undo + "|" + other.redo;
        return design != other.design || messages != other.messages ? "design or log" : "";
    }
};

/// Listens to the feed and to nothing else.
class Mirror : public QObject
{
public:
    Picture picture = Picture::fresh();
    int turns = 0;

    Mirror()
    {
        FChanges *feed = FChanges::instance();
        connect(feed, &FChanges::projectChanged, this, [this](unsigned events) {
            if (events & (FChanges::Opened | FChanges::Closed))
                picture.readRows();
            picture.readClean();
        });
        connect(
            feed, &FChanges::changed, this,
            [this](const QVector<FChange> &changes) {
                ++turns;
                for (const FChange &change : changes)
                    if (const auto managed = std::dynamic_pointer_cast<FManaged>(change.object))
                        take(*managed, change.what);
            });
        connect(
            feed, &FChanges::selectionChanged, this, [this] { picture.readSelection(); });
        connect(
            feed, &FChanges::historyChanged, this, [this] { picture.readHistory(); });
        connect(
            feed, &FChanges::designChanged, this, [this] { picture.readDesign(); });
        connect(feed, &FChanges::logChanged, this, [this] { picture.messages = FLogMsg::count(); });
    }

private:
    void take(const FManaged &object, unsigned what)
    {
        const bool known = picture.rows.count(&object) > 0;
        QVERIFY2(bool(what & (FChanges::Created | FChanges::Revived)) == !known,
                 qPrintable(Q(object.getName()) + (known ? " came twice" : " never came")));
        if (what & FChanges::Removed)
            picture.rows.erase(&object);
        else
            picture.rows[&object] = rowOf(object);
    }
};
#endif

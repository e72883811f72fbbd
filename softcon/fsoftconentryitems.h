// SPDX-License-Identifier: Apache-2.0
#ifndef FSOFTCONENTRYITEMS_H
#define FSOFTCONENTRYITEMS_H
#include "fsoftconobjectitem.h"

class FEntry;
class QColor;

/// An entry of the configuration whose value is a file or geometry.
class FSoftConEntryItem : public FSoftConObjectItem
{
    Q_OBJECT
public:
    enum { Type = UserType + 6 };
    using FSoftConObjectItem::FSoftConObjectItem;
    int type() const override { return Type; }

    /// Opens the object editor for the entry, unless a project loads.
    void launchEditor() const;
    /// A new entry \p name of the type's class in \p group, which is made if there is none. Null,
    /// and a message, if that fails.
    FExpr<FEntry> getEntry(const std::string &group, const std::string &name,
                           const std::shared_ptr<FObject> &type) const;
    /// Renames the entry after its file, unless the user has given it another name meanwhile.
    void updateEntryName(const FExpr<FEntry> &entry) const;
    /// The name of the file behind the entry. With \p force an expression is evaluated even if
    /// what it needs is out of date.
    virtual std::string getItemObjectName(const FExpr<FEntry> &entry, bool force) const;
    void updateItem() const override;
    void prepareToBeDestroyed() override;

protected:
    /// Paints the icon of a file with a short text that names its kind: \p text up to the last ".",
    /// or a picture if it begins with ":/".
    void updateIconText(const QString &imagePath, const QString &text, const QColor &first,
                        const QColor &second, const QColor &third, const QColor &fourth) const;
    std::shared_ptr<FEntry> entry() const;

    mutable bool mIsNew = false; // the item made its entry

private:
    mutable std::string mGivenName; // that the item gave the entry last
};

/// Geometry that is exported.
class FSoftConExportItem : public FSoftConEntryItem
{
    Q_OBJECT
public:
    enum { Type = UserType + 7 };
    FSoftConExportItem(FSoftConScene *scene, QGraphicsItem *parent, const FExpr<FObject> &object);
    int type() const override { return Type; }
    QString getToolTip() const override;
    std::string getItemObjectName(const FExpr<FEntry> &entry, bool force) const override;
    void updateIcon() const override;
    /// Makes the export of the object list that the item was made with.
    void createItemObject(const QString &path, const QString &base) const override;

protected:
    void dragEnterEvent(QGraphicsSceneDragDropEvent *event) override;
    void dragMoveEvent(QGraphicsSceneDragDropEvent *event) override;
    void dropEvent(QGraphicsSceneDragDropEvent *event) override;
    bool sceneEventFilter(QGraphicsItem *watched, QEvent *event) override;
};

/// An input file that goes to the external program as it is.
class FSoftConFileNameItem : public FSoftConEntryItem
{
    Q_OBJECT
public:
    enum { Type = UserType + 8 };
    FSoftConFileNameItem(FSoftConScene *scene, QGraphicsItem *parent, const FExpr<FObject> &object,
                         bool isRef);
    int type() const override { return Type; }
    QString getToolTip() const override;
    std::string getItemObjectName(const FExpr<FEntry> &entry, bool force) const override;
    /// True if the file is a result of another computation.
    virtual bool getIsRef() const { return mIsRef; }
    virtual void setIsRef(bool isRef) { mIsRef = isRef; }
    void updateIcon() const override;
    void createItemObject(const QString &path, const QString &base) const override;

protected:
    /// Turns the input file into a template.
    void mouseDoubleClickEvent(QGraphicsSceneMouseEvent *event) override;

private:
    bool mIsRef;
};

/// A link to a result file of another computation.
class FSoftConFileNameRefItem : public FSoftConFileNameItem
{
    Q_OBJECT
public:
    enum { Type = UserType + 9 };
    FSoftConFileNameRefItem(FSoftConScene *scene, QGraphicsItem *parent,
                            const FExpr<FObject> &object);
    int type() const override { return Type; }
};

/// A result file that is taken over.
class FSoftConImportItem : public FSoftConEntryItem
{
    Q_OBJECT
public:
    enum { Type = UserType + 10 };
    FSoftConImportItem(FSoftConScene *scene, QGraphicsItem *parent, const FExpr<FObject> &object);
    int type() const override { return Type; }
    QString getToolTip() const override;
    std::string getItemObjectName(const FExpr<FEntry> &entry, bool force) const override;
    void updateIcon() const override;
    void createItemObject(const QString &path, const QString &base) const override;
};
#endif

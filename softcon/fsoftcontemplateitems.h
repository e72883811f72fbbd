// SPDX-License-Identifier: Apache-2.0
#ifndef FSOFTCONTEMPLATEITEMS_H
#define FSOFTCONTEMPLATEITEMS_H
#include "fsoftconobjectitem.h"

class FGenIntFile;

/// A template file, shown as a page with its text in small.
class FSoftConTemplateItem : public FSoftConObjectItem
{
    Q_OBJECT
public:
    enum { Type = UserType + 3 };
    FSoftConTemplateItem(FSoftConScene *scene, QGraphicsItem *parent, const FExpr<FObject> &object,
                         SoftConArea area);
    int type() const override { return Type; }

    QString getToolTip() const override;
    bool getIconContent(QString &content) const override;
    void updateIcon() const override;
    void updateItem() const override;
    void outdateItem() const override
    {
        if (!mIsPainting)
            mIconNeedsRedraw = true;
    }
    void prepareToBeDestroyed() override;
    void setIconNeedsRedraw() { mIconNeedsRedraw = true; }
    /// Adds the file to the definition of the computation, and then the tab.
    void addTemplateObject(const FExpr<FGenIntFile> &file) const;

protected:
    std::shared_ptr<FGenIntFile> file() const;

private:
    mutable bool mIconNeedsRedraw = true, mIsPainting = false;
};

/// An input template.
class FSoftConInputTemplateItem : public FSoftConTemplateItem
{
    Q_OBJECT
public:
    enum { Type = UserType + 4 };
    FSoftConInputTemplateItem(FSoftConScene *scene, QGraphicsItem *parent,
                              const FExpr<FObject> &object);
    int type() const override { return Type; }
    /// The configuration, so that selecting a template shows the entries.
    FExpr<FObject> getEditorItemObject() const override;
    void createItemObject(const QString &path, const QString &base) const override;
};

/// A result template.
class FSoftConOutputTemplateItem : public FSoftConTemplateItem
{
    Q_OBJECT
public:
    enum { Type = UserType + 5 };
    FSoftConOutputTemplateItem(FSoftConScene *scene, QGraphicsItem *parent,
                               const FExpr<FObject> &object);
    int type() const override { return Type; }
    void createItemObject(const QString &path, const QString &base) const override;
};
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FWIDGET_H
#define FWIDGET_H
#include "fmanaged.h"

#include <QIcon>
#include <QObject>
#include <QPointer>
#include <QWidget>

/// An object of the model that is a page of the window. Its widget is made with the object and is
/// gone with it; closing the page hides it.
class FWidget : public QObject, public FManaged
{
    Q_OBJECT
    F_CLASS(FWidget, FManaged)
public:
    explicit FWidget(const std::string &name = std::string(), QWidget *parent = nullptr);
    ~FWidget() override;
    using FManaged::init;
    using FManaged::parent;

    /// The page; null for a prototype, without a display, and when it has gone.
    QWidget *widget() const { return mWidget; }
    /// Makes the widget a page of the window.
    void setAsCentralWidget();
    /// Brings the page to the front, or hides it.
    void setVisible(bool visible);
    bool isPageVisible() const { return mVisible; }
    const QString &title() const { return mTitle; }
    virtual void setTitles(const std::string &title);
    QIcon icon() const { return mIcon; }
    void setIcon(const QIcon &icon);
    virtual void setIconSize(const QSize &) {}
    void destructFObject() override;
    /// Undone or destroyed: the page goes; constructFObject makes it anew.
    void retire() override;
    void projectClosed() override;
    bool needsUpdateInGuiThread() const override { return true; }
    static void initCmds() {}

protected:
    void setWidget(QWidget *widget) { mWidget = widget; }
    QWidget *parentWidget() const { return mParent; }

private:
    void dropPage();
    QPointer<QWidget> mWidget, mParent;
    QString mTitle;
    QIcon mIcon;
    bool mVisible = false;
};
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FWORKSPACE_H
#define FWORKSPACE_H
#include <QString>

class FWidget;
class QWidget;

/// Where documents are shown: the main window. Without one every call does nothing.
class FWorkspace
{
public:
    virtual ~FWorkspace() = default;
    static FWorkspace *instance();
    static void setInstance(FWorkspace *workspace);

    /// Makes \p document a page and shows it.
    virtual void addDocument(FWidget *) {}
    /// The page goes; the widget stays its owner's.
    virtual void removeDocument(FWidget *) {}
    /// Brings the page to the front, or hides it.
    virtual void showDocument(FWidget *, bool) {}
    /// Title or icon are others.
    virtual void documentChanged(FWidget *) {}
    /// The window, as parent of dialogs; may be null.
    virtual QWidget *window() { return nullptr; }
};
#endif

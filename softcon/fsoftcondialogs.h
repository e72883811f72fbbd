// SPDX-License-Identifier: Apache-2.0
#ifndef FSOFTCONDIALOGS_H
#define FSOFTCONDIALOGS_H
#include <QDialog>
#include <QFileDialog>
#include <QFileInfo>
#include <QItemSelection>
#include <QPointer>

class FSoftConScene;
class QCheckBox;
class QLineEdit;
class QTreeWidgetItem;

/// A file dialog that takes files and folders at once, and names that don't exist.
class FSoftConDialog : public QFileDialog
{
    Q_OBJECT
public:
    FSoftConDialog(QWidget *parent, const QString &caption, const QString &directory);
    /// True if one of the chosen paths at least exists.
    bool existSelection() const;

public Q_SLOTS:
    void accept() override;
    /// Keeps the field of the file name in step with the selection, folders included.
    virtual void updateLineEdit(const QItemSelection &selected, const QItemSelection &deselected);
    virtual void lineEditChanged(const QString &) {}

protected:
    QLineEdit *lineEdit() const;
};

/// The same; its button tells whether what is typed exists.
class FSoftConResultFilesDialog : public FSoftConDialog
{
    Q_OBJECT
public:
    using FSoftConDialog::FSoftConDialog;

public Q_SLOTS:
    void lineEditChanged(const QString &text) override;
};

/// The dialog for input files, which may become templates at once.
class FSoftConInputDialog : public FSoftConResultFilesDialog
{
    Q_OBJECT
public:
    FSoftConInputDialog(QWidget *parent, const QString &caption, const QString &directory,
                        bool convertToTemplate);
    QCheckBox *mConvertCheckBox = nullptr;
    bool mAddNew = false; ///< nothing of what was accepted exists

public Q_SLOTS:
    void accept() override;
};

/// The folder that files lie in.
class FSoftConItemRequestDialog : public QDialog
{
    Q_OBJECT
public:
    FSoftConItemRequestDialog(QWidget *parent, const QStringList &files);
    /// Adds an item for each file and folder below \p parent, and what lies in the folders.
    void buildTree(QTreeWidgetItem *parent, const QList<QFileInfo> &infos);

private:
    void init();
    QStringList mFiles;
};

/// Makes an export of what is selected in the tree of objects.
class FSoftConAddExportDialog : public QDialog
{
    Q_OBJECT
public:
    FSoftConAddExportDialog(QWidget *parent, FSoftConScene *scene);

public Q_SLOTS:
    void addGeometry();

private:
    void init();
    QPointer<QObject> mScene;
};
#endif

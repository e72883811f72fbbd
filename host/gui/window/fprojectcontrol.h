// SPDX-License-Identifier: Apache-2.0
#ifndef FPROJECTCONTROL_H
#define FPROJECTCONTROL_H
#include <QObject>
#include <QStringList>

/// Opening, saving and closing of the project with the questions that belong to it.
class FProjectControl : public QObject
{
    Q_OBJECT
public:
    static FProjectControl *instance();

    /// False before a project is begun or opened: the welcome page is shown then.
    bool isOpen() const { return mOpen; }
    /// Each of these asks first about changes that are not saved and runs under way; false if the
    /// user thought better of it, or if it failed: the log tells why.
    bool newProject();
    bool open(const QString &path);
    bool askAndOpen();
    /// Opens a copy of an example in a folder that the user chooses.
    bool openExample(const QString &name);
    bool close();
    bool revert();
    bool save();
    bool saveAs();

    /// Why the project can't be saved; empty if it can.
    QString whyNotSaved() const;
    bool isModified() const;
    /// "beam.tbk", "Untitled" for a project without a file; empty without a project.
    QString name() const;
    static QStringList recent();
    /// Folders of the examples, as installed or in the sources.
    static QStringList examples();
    static QString examplePath(const QString &name);

Q_SIGNALS:
    void opened();
    void closed();
    void recentChanged();

private:
    FProjectControl();
    bool mayLeave(const QString &what);
    bool write(const QString &path);
    void remember(const QString &path);
    void begin();
    bool mOpen = false, mIsWhole = true;
};
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FPROJECT_H
#define FPROJECT_H
#include <QString>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class FManaged;
class FProjectFolder;
struct FReason;
struct FScriptError;

/// The project: a script that makes its objects.
class FProject
{
public:
    static FProject *instance();
    FProject();
    ~FProject();

    /// Executes a project file; a folder stands for the project in it. False if the file can't be
    /// read or a statement failed; what could be read is there. The reasons stand in the log.
    bool load(const QString &path);
    /// Closes what is open and loads \p path; the feed tells of both at once. A file that can't be
    /// read leaves the open project as it is; one with a failed statement is there as far as it
    /// could be read. True and false as of load.
    bool open(const QString &path);
    /// What was wrong with the project that was loaded last; errors of the file as a whole have no
    /// line.
    const std::vector<FScriptError> &errors() const { return mErrors; }
    /// Objects of that project that got other names than its file gives them.
    const std::vector<FScriptError> &renamings() const { return mRenamings; }
    /// Adds to errors() what goes wrong behind a statement, while a project is loaded; what is
    /// there is as good as before.
    void noteLoadError(const std::string &object, const FReason &reason);
    /// Writes the project whole or not at all: into the folder that \p path names or whose script
    /// it is, else as one file.
    bool save(const QString &path, QString *why);
    /// The project as a script: suppliers before what refers to them, else in the order of
    /// registration. A project loaded from it gives the same text again.
    QString text() const;
    QByteArray utf8() const;
    /// Removes all objects, history and messages, and makes those that every project has.
    void clear();
    /// Adds a maker of objects that every project has.
    void addStarter(std::function<void()> starter);

    /// Absolute path of the file, empty for a project that has none yet.
    const QString &path() const { return mPath; }
    /// Where the text that is being made will lie: paths in it count from there.
    const QString &savedPath() const { return mTarget.isEmpty() ? mPath : mTarget; }
    /// The folder that texts go to while the project is saved in that form, else null.
    FProjectFolder *savedFolder() const { return mSavedFolder; }
    /// The folder that texts come from while a project is loaded from its own file, else null.
    FProjectFolder *loadedFolder() const { return mLoadedFolder; }
    /// A place for a project that was not loaded.
    void setPath(const QString &path);
    /// The project lives at \p path from now on, where it was saved just now.
    void takePath(const QString &path);
    static std::vector<std::shared_ptr<FManaged>> savingOrder();

private:
    bool execute(std::string text, const std::string &name, FProjectFolder *folder);
    bool write(const QString &script, bool asFolder, QString *why);

    QString mPath;
    QString mTarget; // while it is saved
    std::vector<FScriptError> mErrors, mRenamings;
    bool mIsLoading = false;
    FProjectFolder *mSavedFolder = nullptr, *mLoadedFolder = nullptr;
    std::vector<std::function<void()>> mStarters;
};
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FRUNFOLDER_H
#define FRUNFOLDER_H
#include "fsafefile.h"

#include <QByteArray>
#include <QString>
#include <memory>
#include <string>

class FRunLock;

/// The folder of one run.
///
/// What an earlier run left stays until the program of the new one starts: the new folder is
/// prepared beside the old one and takes its place just before. Every step to it is an open folder
/// and never a link, and our own files stand in a folder .turnbuckle inside it.
class FRunFolder
{
public:
    static constexpr const char *kOwn = ".turnbuckle";

    /// An empty folder for the run whose place is \p directory, a computation's folder in a
    /// design's folder in the one that is locked. Null with the reason in \p why.
    static std::shared_ptr<FRunFolder> prepare(const std::shared_ptr<FRunLock> &lock,
                                               const std::string &directory, std::string *why);
    /// The folder of an earlier run in its place, to keep what is read from it anew.
    static std::shared_ptr<FRunFolder> earlier(const std::shared_ptr<FRunLock> &lock,
                                               const std::string &directory, std::string *why);
    ~FRunFolder();
    FRunFolder(const FRunFolder &) = delete;
    FRunFolder &operator=(const FRunFolder &) = delete;

    /// Where the folder is now, without a slash at the end.
    std::string path() const;
    int folder() const { return mFolder; }
    int parent() const { return mParent; }
    /// Name of the prepared folder in its parent; empty if it was made in its place.
    const std::string &prepared() const { return mPrepared; }
    const std::string &place() const { return mPlace; }

    /// Removes in the background what was replaced, once the new folder is in its place; or the
    /// prepared folder, if it isn't wanted. A run that was torn, by a kill or a power cut, is set
    /// aside as PLACE.interrupted-N.
    void dropReplaced();
    /// To be called at the end: a folder whose program could not be started goes, and the old one
    /// stays, if that one holds a finished run. Otherwise this one takes its place.
    void settle();

    /// Replaces a file of ours.
    bool write(const char *name, const QByteArray &bytes, QString *why) const;
    bool remove(const char *name) const;

    /// Reads a file of ours in the run folder \p directory. False if there is none that could be
    /// read.
    static bool read(const std::string &directory, const char *name, QByteArray *bytes);
    /// As safeJoin(), for a file that is made in a run folder: ours are refused as well.
    static QString join(const QString &folder, const QString &relative, QString *why,
                        LastPart lastPart = LastPart::Checked);
    /// Why nothing may be read below the run folder \p directory: one of its steps is a link. Empty
    /// if it may.
    static QString problemOf(const std::string &directory);
    /// Moves what lies at \p from to \p to. What lies there goes to \p from, so that nothing is
    /// lost. True as well if there is nothing.
    static bool move(const std::string &from, const std::string &to, QString *why);

    /// Opens the folder \p name in \p folder, if need be after making it. Never a link; -1 and
    /// errno on failure.
    static int step(int folder, const char *name, bool make);
    /// What an errno means, in English.
    static std::string words(int error);

private:
    FRunFolder() = default;
    bool isInPlace() const;

    std::string mParentPath, mPlace, mPrepared;
    int mParent = -1, mFolder = -1, mOwn = -1;
    bool mDropped = false, mReplacesTorn = false;
};
#endif

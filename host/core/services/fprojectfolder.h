// SPDX-License-Identifier: Apache-2.0
#ifndef FPROJECTFOLDER_H
#define FPROJECTFOLDER_H
#include <QByteArray>
#include <QSet>
#include <QString>
#include <map>
#include <memory>
#include <string>
#include <vector>

/// A project that is kept as a folder: the script `project.tbk`, and long texts of its objects as
/// the plain UTF-8 files that they are in `files/`.
///
/// A save writes only what changed. What it writes is staged in a folder beside, and the rename of
/// that folder is the one step by which the project becomes the new one; moving the files to their
/// places is gone on with by whoever opens or saves the project next. Whoever can't write reads
/// through. The folder is locked meanwhile, shared by readers.
class FProjectFolder
{
public:
    /// The script of the project that \p path names: a folder with one, or a name with a slash at
    /// its end, stands for the script in it.
    static QString scriptOf(const QString &path);
    /// True if \p script is a project of this kind rather than a single file.
    static bool isAt(const QString &script);

    /// The folder of such a project, not open yet; null for a single file.
    static std::unique_ptr<FProjectFolder> at(const QString &script);

    explicit FProjectFolder(const QString &script);
    ~FProjectFolder();
    FProjectFolder(const FProjectFolder &) = delete;
    FProjectFolder &operator=(const FProjectFolder &) = delete;

    /// Locks the folder for reading and ends a save that was cut short. True without a folder.
    bool open(QString *why);
    /// Where the script can be read now.
    QString script() const { return place(QStringLiteral("project.tbk")); }
    /// Reads a text; \p relative is what store() gave. Nothing outside of `files/` is read.
    bool read(const QString &relative, std::string *bytes, QString *why) const;

    /// Locks the folder for writing, makes it if there is none, and refuses one of somebody else;
    /// ends a save that was cut short.
    bool beginSave(QString *why);
    /// Notes the text of \p owner and gives the path that the script shall name: \p kept if that is
    /// free, else one made of the file name \p wanted. \p bytes must live until save().
    QString store(const void *owner, const QString &kept, const QString &wanted,
                  const QByteArray &bytes);
    /// Writes what differs from the disk, and removes the texts that the script there names and
    /// this one doesn't. On failure the project on disk is the old one.
    bool save(const QByteArray &script, QString *why);

private:
    struct Change
    {
        QByteArray name;
        QByteArray bytes;
    };
    bool lock(bool exclusive, QString *why);
    bool settle(QString *why);
    bool stage(const std::vector<Change> &changes, QString *why);
    QString place(const QString &relative) const;
    QString freeName(const QString &wanted) const;

    QString mFolder;
    int mFile = -1;           // the open folder, locked
    QSet<QByteArray> mOwn;    // texts that the script on disk names
    QSet<QString> mStrangers; // other entries of files/, in small letters
    std::map<const void *, QString> mStored;
    QSet<QString> mTaken; // names of this save, in small letters
    std::vector<Change> mChanges;
};
#endif

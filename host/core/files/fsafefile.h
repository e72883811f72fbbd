// SPDX-License-Identifier: Apache-2.0
#ifndef FSAFEFILE_H
#define FSAFEFILE_H
#include <QByteArray>
#include <QString>
#include <string>
#include <sys/types.h>

/// The system calls behind FSafeFile. Each returns -1 and sets errno when it fails. Tests put
/// failing ones in their place; everything else leaves them alone.
struct FFileCalls
{
    int (*openAt)(int folder, const char *name, int flags, mode_t mode);
    ssize_t (*read)(int file, void *bytes, size_t count);
    ssize_t (*write)(int file, const void *bytes, size_t count);
    ssize_t (*copyRange)(int from, int to, size_t count);
    int (*setMode)(int file, mode_t mode);
    int (*setTimes)(int file, const struct timespec times[2]);
    int (*sync)(int file);
    int (*close)(int file);
    int (*rename)(int folder, const char *from, const char *to, unsigned flags);
    int (*unlinkAt)(int folder, const char *name, int flags);

    static const FFileCalls &system();
};

/// Replaces files whole or not at all.
///
/// Every function returns false and says why in \p *why: the place and the system's words. Names
/// are UTF-8 on disk, whatever the locale. May be called from any thread.
class FSafeFile
{
public:
    /// Now: file and folder are on the disk before success is told. Later: the file is in its place
    /// for every reader, but the caller syncs it (syncPath, syncTree) before it may count on it
    /// after a power cut.
    enum class Durability { Now, Later };

    /// Puts \p bytes in the place of \p path. On failure the old file, or its absence, is kept (but
    /// where a file system cannot exchange names, a failing sync of the folder comes too late). An
    /// old file keeps its permissions; a link is followed to the file that it names. A file that
    /// the caller may not write is refused, as is anything that is no file; a character device
    /// such as /dev/null is written directly.
    static bool write(const QString &path, const QByteArray &bytes, QString *why,
                      Durability durability = Durability::Now);

    /// Creates or overwrites \p path in one go, without a temporary file and without syncing: for
    /// the input files of a run in its fresh folder. Never writes through a link. A file that
    /// could not be written to its end is removed.
    static bool writePlain(const QString &path, const char *data, qint64 size, QString *why);

    /// Copies the file \p from with its time stamp and permissions. \p to appears whole or not at
    /// all; a link that stands there is replaced, not followed. Not synced. Only regular files are
    /// copied.
    static bool copyFile(const QString &from, const QString &to, QString *why);

    /// Puts \p bytes in the place of the entry \p name of the open \p folder. A link that stands
    /// there is replaced, not followed. Not synced.
    static bool replaceIn(int folder, const char *name, const QByteArray &bytes, QString *why);

    /// Brings a file or the names in a folder to the disk.
    static bool syncPath(const QString &path, QString *why);

    /// The same for a folder with all that it holds. Links are not followed.
    static bool syncTree(const QString &folder, QString *why);

    /// Removes a file or a folder with all that it holds; a link goes, what it names stays. True
    /// when there is nothing. Goes on after a failure and tells the first one.
    static bool removeTree(const QString &path, QString *why);

    /// For tests: nullptr puts the system's own calls back.
    static void setCalls(const FFileCalls *calls);
};

/// Writes one file piece by piece from start to end: the road of FSafeFile::writePlain for text
/// that is made while it is written. Small pieces are gathered; the first failure is kept until the
/// end.
class FPlainFile
{
public:
    FPlainFile() = default;
    /// Removes the file unless finish() succeeded.
    ~FPlainFile();
    FPlainFile(const FPlainFile &) = delete;
    FPlainFile &operator=(const FPlainFile &) = delete;

    /// Creates or empties the file \p path. Once per object.
    bool open(const QString &path, QString *why);
    void append(const char *data, qint64 size);
    /// True when every byte was taken and the file is closed.
    bool finish(QString *why);

private:
    void flush();

    QString mPath;
    QByteArray mNative;
    int mFile = -1;
    bool mIsRegular = false;
    qint64 mSize = 0;
    std::string mGathered;
    QString mReason; // of the first failure
};

/// Why \p relative is no path to a file below the folder that it counts from, whatever lies in that
/// folder; empty if it is one. See safeJoin.
QString relativePathProblem(const QString &relative);

/// Joins \p relative, a path that comes from a project, to \p folder. The result is empty, and
/// \p *why says the reason, if it would leave the folder (a ".." segment anywhere, an absolute
/// path, a link on the way that leads out or nowhere) or names no file (nothing, a slash at the
/// end, a zero character). Backslashes are ordinary characters. Nothing of the path need exist.
/// LastPart::Unchecked is for callers that refuse a link at the end of the path when they open it,
/// as FPlainFile does.
enum class LastPart { Checked, Unchecked };
QString safeJoin(const QString &folder, const QString &relative, QString *why,
                 LastPart lastPart = LastPart::Checked);
#endif

// SPDX-License-Identifier: Apache-2.0
#include "fsafecalls.h"

#include <QCryptographicHash>
#include <QStringList>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <limits.h>
#include <sys/file.h>
#include <unistd.h>
#include <vector>

using namespace FSafeCalls;

namespace {
constexpr int kMostLinks = 40;
constexpr size_t kCopyStep = size_t(1) << 30;
// Most files fit into the first size, which malloc has at hand; long ones write faster with the
// other.
constexpr int kGather = 32 * 1024;
constexpr int kGatherLong = 256 * 1024;
constexpr unsigned kExchange = 1u << 1; // RENAME_EXCHANGE, absent from older headers

/// Replaces a link by what it names, step by step, so that a link to a file that isn't there yet
/// works as well.
bool followLinks(QByteArray *native)
{
    for (int i = 0; i < kMostLinks; ++i) {
        struct stat info;
        if (lstat(native->constData(), &info) != 0)
            return errno == ENOENT;
        if (!S_ISLNK(info.st_mode))
            return true;
        char target[PATH_MAX];
        const ssize_t length = readlink(native->constData(), target, sizeof target);
        if (length <= 0)
            return false;
        QByteArray next(target, int(length));
        if (!next.startsWith('/')) {
            QByteArray folder, name;
            splitPath(*native, &folder, &name);
            next = folder + '/' + next;
        }
        *native = next;
    }
    errno = ELOOP;
    return false;
}

bool writeAll(int file, const char *data, qint64 size, QString *reason)
{
    qint64 done = 0;
    while (done < size) {
        const ssize_t count = calls().write(file, data + done, size_t(size - done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0) {
            *reason =
                QStringLiteral("%1 (%2 of %3 bytes written)")
                    .arg(count < 0 ? systemWords(errno) : QStringLiteral("nothing more is taken"))
                    .arg(done)
                    .arg(size);
            return false;
        }
        done += count;
    }
    return true;
}

bool hasSize(int file, qint64 size, QString *reason)
{
    struct stat info;
    if (fstat(file, &info) != 0) {
        *reason = systemWords(errno);
        return false;
    }
    if (info.st_size != size) {
        *reason = QStringLiteral("%1 bytes were written, but the file has %2")
                      .arg(size)
                      .arg(qint64(info.st_size));
        return false;
    }
    return true;
}

/// The beginning of the names of temporary files for the file \p name.
QByteArray temporaryPrefix(const QByteArray &name)
{
    const auto hash = QCryptographicHash::hash(name, QCryptographicHash::Sha1).toHex().left(16);
    return ".turnbuckle-" + hash + "-";
}

/// Removes what killed saves of the file have left, as far as that is possible. Whoever is still at
/// work holds a lock.
void removeLeftovers(int folder, const QByteArray &prefix)
{
    const int again = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR *listing = again >= 0 ? fdopendir(again) : nullptr;
    if (!listing)
        return;
    while (const dirent *entry = readdir(listing)) {
        const QByteArray name = entry->d_name;
        if (!name.startsWith(prefix) || !name.endsWith(".tmp"))
            continue;
        const int file = ::openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
        if (file >= 0 && flock(file, LOCK_EX | LOCK_NB) == 0)
            ::unlinkat(folder, name, 0);
        if (file >= 0)
            ::close(file);
    }
    closedir(listing);
}

/// A file with a name of its own beside the one that it shall replace; gone with this object
/// unless it was put into its place. With a prefix it is locked, so that it can be told from the
/// leftovers of a killed process.
class TemporaryFile
{
public:
    TemporaryFile(int folder, mode_t mode, const QByteArray &prefix = QByteArray())
        : mFolder(folder)
        , mFile(create(mode, prefix))
    {
    }
    ~TemporaryFile()
    {
        const int kept = errno;
        if (mExists)
            calls().unlinkAt(mFolder, mName, 0);
        if (mLock >= 0)
            ::close(mLock);
        errno = kept;
    }
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;

    Descriptor &file() { return mFile; }
    const char *name() const { return mName; }
    /// \p name now is the new file, and nothing stands under the temporary name.
    bool moveTo(const char *name)
    {
        if (calls().rename(mFolder, mName, name, 0) != 0)
            return false;
        mExists = false;
        return true;
    }
    /// \p name now is the new file, and the old one has the temporary name until this object ends
    /// or moveTo brings it back. False where the file system can't do that.
    bool exchangeWith(const char *name)
    {
        return calls().rename(mFolder, mName, name, kExchange) == 0;
    }
    void keep() { mExists = false; }

private:
    int create(mode_t mode, const QByteArray &prefix)
    {
        static std::atomic<unsigned> sCounter{0};
        for (int i = 0; i < 100; ++i) {
            struct timespec now;
            clock_gettime(CLOCK_MONOTONIC, &now);
            snprintf(mName, sizeof mName, "%s%lx-%lx-%x.tmp",
                     prefix.isEmpty() ? ".turnbuckle-" : prefix.constData(), long(getpid()),
                     long(now.tv_nsec), sCounter.fetch_add(1));
            const int file =
                openRetrying(mFolder, mName, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, mode);
            if (file >= 0 && !prefix.isEmpty() && !lock(file)) {
                calls().close(file);
                continue;
            }
            mExists = file >= 0;
            if (mExists || errno != EEXIST)
                return file;
        }
        return -1;
    }

    /// False if another save took the file for a leftover before the lock was there. The lock
    /// outlasts the closing of \p file.
    bool lock(int file)
    {
        struct stat info;
        flock(file, LOCK_EX | LOCK_NB);
        mLock = fcntl(file, F_DUPFD_CLOEXEC, 0);
        if (fstat(file, &info) != 0 || info.st_nlink > 0)
            return true;
        ::close(mLock);
        mLock = -1;
        return false;
    }

    int mFolder;
    int mLock = -1;
    bool mExists = false;
    char mName[64];
    Descriptor mFile;
};

/// Gives the finished temporary file its name and makes that durable. Should the last step fail,
/// the old state comes back.
bool replaceDurably(TemporaryFile &temporary, int folder, const char *name, bool oldExists)
{
    const bool exchanged = oldExists && temporary.exchangeWith(name);
    if (!exchanged && !temporary.moveTo(name))
        return false;
    if (syncFolder(folder))
        return true;
    const int error = errno;
    if (exchanged) {
        if (!temporary.moveTo(name))
            temporary.keep(); // the only copy of the old file
    } else if (!oldExists) {
        calls().unlinkAt(folder, name, 0);
    }
    errno = error;
    return false;
}

/// Moves all bytes of a regular file; \p expected is the size that it had before.
bool copyBytes(int from, int to, qint64 expected, QString *reason)
{
    qint64 done = 0;
    bool fallback = false;
    while (!fallback) {
        const ssize_t count = calls().copyRange(from, to, kCopyStep);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0) {
            fallback = errno == ENOSYS || errno == EXDEV || errno == EINVAL ||
                       errno == EOPNOTSUPP || errno == EPERM || errno == EBADF;
            if (!fallback) {
                *reason = systemWords(errno);
                return false;
            }
        } else if (count == 0) {
            // Files that the kernel makes up answer 0 here although they can be read.
            fallback = done == 0;
            if (!fallback)
                break;
        } else {
            done += count;
        }
    }
    if (fallback) {
        std::vector<char> buffer(256 * 1024);
        for (;;) {
            const ssize_t count = calls().read(from, buffer.data(), buffer.size());
            if (count < 0 && errno == EINTR)
                continue;
            if (count < 0) {
                *reason = systemWords(errno);
                return false;
            }
            if (count == 0)
                break;
            if (!writeAll(to, buffer.data(), count, reason))
                return false;
            done += count;
        }
    }
    if (done < expected) {
        *reason = QStringLiteral("it got shorter meanwhile, %1 of %2 bytes were there")
                      .arg(done)
                      .arg(expected);
        return false;
    }
    return hasSize(to, done, reason);
}

} // namespace

bool FSafeFile::write(const QString &path, const QByteArray &bytes, QString *why,
                      Durability durability)
{
    const QString what = QStringLiteral("write");
    QByteArray native, folderName, name;
    if (!nativePath(path, &native, why))
        return false;
    if (path.endsWith(QLatin1Char('/')))
        return fail(why, what, path, QStringLiteral("it names a directory"));
    if (!followLinks(&native))
        return fail(why, what, path, systemWords(errno));

    struct stat old;
    const bool oldExists = lstat(native.constData(), &old) == 0;
    if (!oldExists && errno != ENOENT)
        return fail(why, what, path, systemWords(errno));
    if (oldExists && S_ISCHR(old.st_mode))
        return writePlain(QString::fromUtf8(native), bytes.constData(), bytes.size(), why);
    if (oldExists && !S_ISREG(old.st_mode))
        return fail(why, what, path, kindOf(old.st_mode));
    // A rename asks only for rights on the folder; a write-protected file shall stay.
    if (oldExists && faccessat(AT_FDCWD, native.constData(), W_OK, AT_EACCESS) != 0)
        return fail(why, what, path, systemWords(errno));

    splitPath(native, &folderName, &name);
    Descriptor folder(openRetrying(AT_FDCWD, folderName, O_RDONLY | O_DIRECTORY));
    if (!folder.isOpen())
        return fail(why, what, path, systemWords(errno));
    const bool isSave = durability == Durability::Now;
    const QByteArray prefix = isSave ? temporaryPrefix(name) : QByteArray();
    if (isSave)
        removeLeftovers(folder, prefix);
    TemporaryFile temporary(folder, oldExists ? old.st_mode & 0600 : 0666, prefix);
    Descriptor &file = temporary.file();
    if (!file.isOpen())
        return fail(why, what, path, systemWords(errno));
    if (oldExists) {
        // The owner is kept where the system allows that; for others' files it doesn't.
        if ((old.st_uid != geteuid() || old.st_gid != getegid()) &&
            fchown(file, old.st_uid, old.st_gid) != 0)
            errno = 0;
        if (calls().setMode(file, old.st_mode & 0777) != 0)
            return fail(why, what, path, systemWords(errno));
    }
    QString reason;
    if (!writeAll(file, bytes.constData(), bytes.size(), &reason) ||
        !hasSize(file, bytes.size(), &reason))
        return fail(why, what, path, reason);
    if (isSave && syncRetrying(file) != 0)
        return fail(why, what, path, systemWords(errno));
    if (!file.close())
        return fail(why, what, path, systemWords(errno));
    const bool placed =
        isSave ? replaceDurably(temporary, folder, name, oldExists) : temporary.moveTo(name);
    return placed || fail(why, what, path, systemWords(errno));
}

bool FSafeFile::replaceIn(int folder, const char *name, const QByteArray &bytes, QString *why)
{
    const QString what = QStringLiteral("write"), path = QString::fromUtf8(name);
    TemporaryFile temporary(folder, 0666);
    Descriptor &file = temporary.file();
    if (!file.isOpen())
        return fail(why, what, path, systemWords(errno));
    QString reason;
    if (!writeAll(file, bytes.constData(), bytes.size(), &reason) ||
        !hasSize(file, bytes.size(), &reason))
        return fail(why, what, path, reason);
    return (file.close() && temporary.moveTo(name)) || fail(why, what, path, systemWords(errno));
}

bool FSafeFile::writePlain(const QString &path, const char *data, qint64 size, QString *why)
{
    FPlainFile file;
    if (!file.open(path, why))
        return false;
    file.append(data, size);
    return file.finish(why);
}

bool FSafeFile::copyFile(const QString &from, const QString &to, QString *why)
{
    const QString what = QStringLiteral("copy %1 to").arg(from);
    QByteArray source, target, folderName, name;
    if (!nativePath(from, &source, why) || !nativePath(to, &target, why))
        return false;

    const Descriptor input(openRetrying(AT_FDCWD, source, O_RDONLY | O_NONBLOCK | O_NOCTTY));
    struct stat info;
    if (!input.isOpen() || fstat(input, &info) != 0)
        return fail(why, QStringLiteral("copy"), from, systemWords(errno));
    if (!S_ISREG(info.st_mode))
        return fail(why, QStringLiteral("copy"), from, kindOf(info.st_mode));
    struct stat old;
    if (lstat(target.constData(), &old) == 0 && !S_ISREG(old.st_mode) && !S_ISLNK(old.st_mode))
        return fail(why, what, to, kindOf(old.st_mode));

    splitPath(target, &folderName, &name);
    const Descriptor folder(openRetrying(AT_FDCWD, folderName, O_RDONLY | O_DIRECTORY));
    if (!folder.isOpen())
        return fail(why, what, to, systemWords(errno));
    TemporaryFile temporary(folder, info.st_mode & 0777);
    Descriptor &file = temporary.file();
    if (!file.isOpen())
        return fail(why, what, to, systemWords(errno));
    QString reason;
    if (!copyBytes(input, file, info.st_size, &reason))
        return fail(why, what, to, reason);
    const struct timespec times[2] = {info.st_atim, info.st_mtim};
    if (calls().setTimes(file, times) != 0 || !file.close() || !temporary.moveTo(name))
        return fail(why, what, to, systemWords(errno));
    return true;
}

FPlainFile::~FPlainFile()
{
    if (mFile < 0)
        return;
    calls().close(mFile);
    if (mIsRegular)
        calls().unlinkAt(AT_FDCWD, mNative, 0);
}

bool FPlainFile::open(const QString &path, QString *why)
{
    const QString what = QStringLiteral("write");
    mPath = path;
    if (!nativePath(path, &mNative, why))
        return false;
    // A name that is free becomes a regular file, whatever else goes on in the folder.
    mFile = openRetrying(AT_FDCWD, mNative, O_WRONLY | O_CREAT | O_EXCL, 0666);
    mIsRegular = mFile >= 0;
    if (mIsRegular)
        return true;
    if (errno != EEXIST)
        return fail(why, what, path, systemWords(errno));
    // Non-blocking, so that a pipe without a reader is an error and no endless wait.
    const int file = openRetrying(
        AT_FDCWD, mNative, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY, 0666);
    struct stat info;
    if (file < 0) {
        const int error = errno;
        const bool isLink = error == ELOOP && lstat(mNative, &info) == 0 && S_ISLNK(info.st_mode);
        return fail(why, what, path, isLink ? kindOf(info.st_mode) : systemWords(error));
    }
    const bool known = fstat(file, &info) == 0;
    if (!known || (!S_ISREG(info.st_mode) && !S_ISCHR(info.st_mode))) {
        const QString reason = known ? kindOf(info.st_mode) : systemWords(errno);
        calls().close(file);
        return fail(why, what, path, reason);
    }
    mIsRegular = S_ISREG(info.st_mode);
    mFile = file;
    return true;
}

void FPlainFile::append(const char *data, qint64 size)
{
    mSize += size;
    if (size >= kGather / 4) {
        flush();
        if (mReason.isEmpty())
            writeAll(mFile, data, size, &mReason);
        return;
    }
    if (mGathered.size() + size_t(size) > mGathered.capacity()) {
        const bool first = mGathered.empty();
        flush();
        mGathered.reserve(first ? kGather : kGatherLong);
    }
    mGathered.append(data, size_t(size));
}

bool FPlainFile::finish(QString *why)
{
    flush();
    if (mReason.isEmpty() && mIsRegular)
        hasSize(mFile, mSize, &mReason);
    const int file = mFile;
    mFile = -1;
    if (calls().close(file) != 0 && mReason.isEmpty())
        mReason = systemWords(errno);
    if (mReason.isEmpty())
        return true;
    if (mIsRegular)
        calls().unlinkAt(AT_FDCWD, mNative, 0);
    return fail(why, QStringLiteral("write"), mPath, mReason);
}

void FPlainFile::flush()
{
    if (mReason.isEmpty())
        writeAll(mFile, mGathered.data(), qint64(mGathered.size()), &mReason);
    mGathered.clear();
}

QString relativePathProblem(const QString &relative)
{
    if (relative.isEmpty())
        return QStringLiteral("it is empty");
    if (relative.contains(QChar(0)))
        return QStringLiteral("it holds a zero character");
    if (relative.startsWith(QLatin1Char('/')))
        return QStringLiteral("it is absolute");
    const QStringRef last = relative.midRef(relative.lastIndexOf(QLatin1Char('/')) + 1);
    if (last.isEmpty() || last == QLatin1String("."))
        return QStringLiteral("it names no file");
    const QString up = QStringLiteral("..");
    if (relative.contains(up) && relative.split(QLatin1Char('/')).contains(up))
        return QStringLiteral("\"..\" may leave the folder");
    return QString();
}

QString safeJoin(const QString &folder, const QString &relative, QString *why, LastPart lastPart)
{
    const auto refuse = [&](const QString &reason) {
        if (why)
            *why = QStringLiteral("The path \"%1\" is refused: %2").arg(relative, reason);
        return QString();
    };
    const QString problem = relativePathProblem(relative);
    if (!problem.isEmpty())
        return refuse(problem);
    if (folder.isEmpty())
        return refuse(QStringLiteral("there is no folder for it"));
    if (folder.contains(QChar(0)))
        return refuse(QStringLiteral("it holds a zero character"));

    QString path = folder;
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    const QString top = path;
    bool exists = true;
    for (int from = 0, to; from < relative.size(); from = to + 1) {
        to = relative.indexOf(QLatin1Char('/'), from);
        if (to < 0)
            to = relative.size();
        const QStringRef part = relative.midRef(from, to - from);
        if (part.isEmpty() || part == QLatin1String("."))
            continue;
        if (!path.endsWith(QLatin1Char('/')))
            path += QLatin1Char('/');
        path += part;
        if (!exists || (lastPart == LastPart::Unchecked && to == relative.size()))
            continue;
        const QByteArray native = path.toUtf8();
        struct stat info;
        if (lstat(native.constData(), &info) != 0) {
            if (errno != ENOENT)
                return refuse(QStringLiteral("%1: %2").arg(path, systemWords(errno)));
            exists = false;
        } else if (S_ISLNK(info.st_mode)) {
            char *real = realpath(native.constData(), nullptr);
            const QByteArray target(real);
            free(real);
            real = realpath(top.toUtf8().constData(), nullptr);
            const QByteArray root(real);
            free(real);
            if (target.isEmpty())
                return refuse(QStringLiteral("the link %1 leads nowhere").arg(path));
            if (target != root && root != "/" && !target.startsWith(root + '/'))
                return refuse(QStringLiteral("the link %1 leads out of the folder to %2")
                                  .arg(path, QString::fromUtf8(target)));
        }
    }
    return path;
}

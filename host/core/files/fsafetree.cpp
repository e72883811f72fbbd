// SPDX-License-Identifier: Apache-2.0
#include "fsafecalls.h"

#include <QByteArray>
#include <cstring>
#include <dirent.h>
#include <memory>
#include <unistd.h>
#include <vector>

using namespace FSafeCalls;

namespace {
struct FolderCloser
{
    void operator()(DIR *folder) const { closedir(folder); }
};

/// The names in a folder, read to the end first: it may change under the caller's hands.
bool listFolder(int folder, std::vector<QByteArray> *names)
{
    const int copy = openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (copy < 0)
        return false;
    std::unique_ptr<DIR, FolderCloser> list(fdopendir(copy));
    if (!list) {
        close(copy);
        return false;
    }
    errno = 0;
    while (const dirent *entry = readdir(list.get()))
        if (strcmp(entry->d_name, ".") != 0 && strcmp(entry->d_name, "..") != 0)
            names->push_back(entry->d_name);
    return errno == 0;
}

/// Keeps the first failure of a walk.
struct WalkError
{
    const QString what;
    QString first;
    bool note(const QByteArray &path)
    {
        const int error = errno;
        if (first.isEmpty())
            fail(&first, what, QString::fromUtf8(path), systemWords(error));
        return false;
    }
};

bool removeEntry(int folder, const QByteArray &name, const QByteArray &path, WalkError *error)
{
    struct stat info;
    if (fstatat(folder, name, &info, AT_SYMLINK_NOFOLLOW) != 0)
        return errno == ENOENT || error->note(path);
    if (!S_ISDIR(info.st_mode))
        return calls().unlinkAt(folder, name, 0) == 0 || errno == ENOENT || error->note(path);
    bool good = true;
    {
        const Descriptor inner(
            openRetrying(folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK));
        std::vector<QByteArray> names;
        if (!inner.isOpen() || !listFolder(inner, &names))
            return error->note(path);
        for (const QByteArray &each : names)
            good = removeEntry(inner, each, path + '/' + each, error) && good;
    }
    if (!good)
        return false;
    return calls().unlinkAt(folder, name, AT_REMOVEDIR) == 0 || errno == ENOENT ||
           error->note(path);
}

bool syncEntry(int folder, const QByteArray &name, const QByteArray &path, WalkError *error)
{
    struct stat info;
    if (fstatat(folder, name, &info, AT_SYMLINK_NOFOLLOW) != 0)
        return errno == ENOENT || error->note(path);
    const bool isFolder = S_ISDIR(info.st_mode);
    if (!isFolder && !S_ISREG(info.st_mode))
        return true;
    Descriptor file(openRetrying(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK));
    if (!file.isOpen())
        return errno == ENOENT || error->note(path);
    bool good = true;
    if (isFolder) {
        std::vector<QByteArray> names;
        if (!listFolder(file, &names))
            return error->note(path);
        for (const QByteArray &each : names)
            good = syncEntry(file, each, path + '/' + each, error) && good;
    }
    if (isFolder ? !syncFolder(file) : syncRetrying(file) != 0)
        return error->note(path);
    return (file.close() || error->note(path)) && good;
}
} // namespace

bool FSafeFile::syncPath(const QString &path, QString *why)
{
    QByteArray native;
    if (!nativePath(path, &native, why))
        return false;
    Descriptor file(openRetrying(AT_FDCWD, native, O_RDONLY | O_NONBLOCK | O_NOCTTY));
    struct stat info;
    const bool good = file.isOpen() && fstat(file, &info) == 0 &&
                      (S_ISDIR(info.st_mode) ? syncFolder(file) : syncRetrying(file) == 0) &&
                      file.close();
    return good || fail(why, QStringLiteral("sync"), path, systemWords(errno));
}

bool FSafeFile::syncTree(const QString &folder, QString *why)
{
    QByteArray native;
    struct stat info;
    if (!nativePath(folder, &native, why))
        return false;
    WalkError error{QStringLiteral("sync"), {}};
    const bool good = lstat(native.constData(), &info) == 0
                          ? syncEntry(AT_FDCWD, native, native, &error)
                          : error.note(native);
    if (!good && why)
        *why = error.first;
    return good;
}

bool FSafeFile::removeTree(const QString &path, QString *why)
{
    QByteArray native, folder, name;
    if (!nativePath(path, &native, why))
        return false;
    splitPath(native, &folder, &name);
    if (name.isEmpty() || name == "." || name == "..")
        return fail(why, QStringLiteral("remove"), path,
                    QStringLiteral("it is no name within a folder"));
    WalkError error{QStringLiteral("remove"), {}};
    const bool good = removeEntry(AT_FDCWD, native, native, &error);
    if (!good && why)
        *why = error.first;
    return good;
}

// SPDX-License-Identifier: Apache-2.0
#include "fsafecalls.h"

#include <atomic>
#include <cstdio>
#include <cstring>
#include <sys/syscall.h>
#include <unistd.h>

namespace {
std::atomic<const FFileCalls *> sCalls{nullptr};
} // namespace

const FFileCalls &FFileCalls::system()
{
    static const FFileCalls sSystem = {
        [](int folder, const char *name, int flags, mode_t mode) {
            return ::openat(folder, name, flags, mode);
        },
        [](int file, void *bytes, size_t count) { return ::read(file, bytes, count); },
        [](int file, const void *bytes, size_t count) { return ::write(file, bytes, count); },
        [](int from, int to, size_t count) {
            return ::copy_file_range(from, nullptr, to, nullptr, count, 0);
        },
        [](int file, mode_t mode) { return ::fchmod(file, mode); },
        [](int file, const struct timespec times[2]) { return ::futimens(file, times); },
        [](int file) { return ::fsync(file); },
        [](int file) { return ::close(file); },
        [](int folder, const char *from, const char *to, unsigned flags) {
            // Straight to the kernel only for the kind that plain renameat doesn't know.
            return flags == 0 ? ::renameat(folder, from, folder, to)
                              : int(syscall(SYS_renameat2, folder, from, folder, to, flags));
        },
        [](int folder, const char *name, int flags) { return ::unlinkat(folder, name, flags); }};
    return sSystem;
}

void FSafeFile::setCalls(const FFileCalls *set) { sCalls.store(set, std::memory_order_release); }

const FFileCalls &FSafeCalls::calls()
{
    const FFileCalls *set = sCalls.load(std::memory_order_acquire);
    return set ? *set : FFileCalls::system();
}

QString FSafeCalls::systemWords(int error)
{
    const char *words = strerrordesc_np(error); // in English whatever the locale, any thread
    return words ? QString::fromLatin1(words) : QStringLiteral("error %1").arg(error);
}

bool FSafeCalls::fail(QString *why, const QString &what, const QString &path, const QString &reason)
{
    if (why)
        *why = QStringLiteral("Cannot %1 %2: %3").arg(what, path, reason);
    return false;
}

bool FSafeCalls::nativePath(const QString &path, QByteArray *native, QString *why)
{
    if (path.isEmpty() || path.contains(QChar(0)))
        return fail(why, QStringLiteral("use the path"), path,
                    path.isEmpty() ? QStringLiteral("it is empty")
                                   : QStringLiteral("it holds a zero character"));
    *native = path.toUtf8();
    while (native->size() > 1 && native->endsWith('/'))
        native->chop(1);
    return true;
}

void FSafeCalls::splitPath(const QByteArray &native, QByteArray *folder, QByteArray *name)
{
    const int slash = native.lastIndexOf('/');
    *folder = slash < 0 ? QByteArray(".") : slash == 0 ? QByteArray("/") : native.left(slash);
    *name = native.mid(slash + 1);
}

QString FSafeCalls::kindOf(mode_t mode)
{
    if (S_ISDIR(mode))
        return QStringLiteral("it is a directory");
    if (S_ISFIFO(mode))
        return QStringLiteral("it is a named pipe");
    if (S_ISSOCK(mode))
        return QStringLiteral("it is a socket");
    return S_ISLNK(mode) ? QStringLiteral("it is a symbolic link")
                         : QStringLiteral("it is a device");
}

int FSafeCalls::openRetrying(int folder, const char *name, int flags, mode_t mode)
{
    int file;
    do
        file = calls().openAt(folder, name, flags | O_CLOEXEC, mode);
    while (file < 0 && errno == EINTR);
    return file;
}

int FSafeCalls::syncRetrying(int file)
{
    int status;
    do
        status = calls().sync(file);
    while (status < 0 && errno == EINTR);
    return status;
}

bool FSafeCalls::syncFolder(int folder)
{
    return syncRetrying(folder) == 0 || errno == EINVAL || errno == EOPNOTSUPP || errno == EROFS;
}

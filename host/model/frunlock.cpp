// SPDX-License-Identifier: Apache-2.0
#include "frunlock.h"

#include "frunfolder.h"
#include "ftext.h"

#include <QStringList>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace {
struct FHolder
{
    QString user, host;
    pid_t pid = 0;
};

FHolder thisProcess()
{
    char host[256] = {};
    ::gethostname(host, sizeof host - 1);
    const passwd *user = ::getpwuid(::geteuid());
    return {user ? QString::fromUtf8(user->pw_name) : QString::number(::geteuid()),
            QString::fromUtf8(host), ::getpid()};
}

/// A holder without a number if there is none, or if its text isn't written yet.
FHolder holderIn(int file)
{
    char text[1024] = {};
    FHolder holder;
    if (::pread(file, text, sizeof text - 1, 0) <= 0)
        return holder;
    const QStringList lines = QString::fromUtf8(text).split('\n');
    if (lines.size() < 3)
        return holder;
    holder.user = lines[0];
    holder.host = lines[1];
    holder.pid = lines[2].toInt();
    return holder;
}

/// Locks of these may end at this host.
bool isNetwork(int file)
{
    struct statfs info = {};
    if (::fstatfs(file, &info) != 0)
        return false;
    switch (static_cast<unsigned long>(info.f_type)) {
    case 0x6969:     // NFS
    case 0x517B:     // SMB
    case 0xFE534D42: // SMB 2
    case 0xFF534D42: // CIFS
    case 0x0BD00BD0: // Lustre
    case 0x47504653: // GPFS
    case 0x00C36400: // Ceph
    case 0x01021997: // 9P
    case 0x5346414F: // AFS
    case 0x65735546: // FUSE
        return true;
    default:
        return false;
    }
}
} // namespace

std::shared_ptr<FRunLock> FRunLock::take(const std::string &designs, std::string *why)
{
    static std::map<std::string, std::weak_ptr<FRunLock>> held;
    std::weak_ptr<FRunLock> &known = held[designs];
    if (auto lock = known.lock())
        return lock;
    std::shared_ptr<FRunLock> lock(new FRunLock);
    if (!lock->open(designs, why) || !lock->lock(designs, why))
        return nullptr;
    known = lock;
    return lock;
}

FRunLock::~FRunLock()
{
    if (mHeld)
        (void)!::ftruncate(mFile, 0);
    for (int file : {mFile, mFolder})
        if (file >= 0)
            ::close(file);
}

bool FRunLock::open(const std::string &designs, std::string *why)
{
    const auto fail = [&] {
        *why = "cannot make the run folder " + designs + ": " + FRunFolder::words(errno);
        return false;
    };
    const size_t slash = designs.rfind('/');
    const int project = ::open(designs.substr(0, slash).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (project < 0)
        return fail();
    mFolder = FRunFolder::step(project, designs.c_str() + slash + 1, true);
    const int error = errno;
    ::close(project);
    errno = error;
    if (mFolder < 0)
        return fail();
    const int own = FRunFolder::step(mFolder, FRunFolder::kOwn, true);
    if (own < 0)
        return fail();
    mFile = ::openat(own, "lock", O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0666);
    if (mFile < 0 && errno == EACCES) // of another user
        mFile = ::openat(own, "lock", O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
    const int lockError = errno;
    ::close(own);
    errno = lockError;
    return mFile >= 0 || fail();
}

bool FRunLock::lock(const std::string &designs, std::string *why)
{
    const bool locked = ::flock(mFile, LOCK_EX | LOCK_NB) == 0;
    const bool refused = !locked && errno == EWOULDBLOCK;
    const FHolder own = thisProcess(), holder = holderIn(mFile);
    bool taken = refused;
    std::string advice;
    // Without a lock of the kernel, or with one that may not reach the other host, only the text is
    // left.
    if (!refused && holder.pid > 0 && (!locked || isNetwork(mFile))) {
        const bool isHere = holder.host == own.host;
        taken = !isHere || (!locked && holder.pid != own.pid &&
                            (::kill(holder.pid, 0) == 0 || errno == EPERM));
        if (!isHere)
            advice = "; if that has ended, remove " + designs + "/" + FRunFolder::kOwn + "/lock";
    }
    if (taken) {
        *why = "the runs in " + designs + " belong to ";
        *why += holder.pid > 0 ? "user " + S(holder.user) + " on " + S(holder.host) + ", process " +
                                     std::to_string(holder.pid) + advice
                               : "another process";
        return false;
    }
    const std::string text =
        S(own.user) + "\n" + S(own.host) + "\n" + std::to_string(own.pid) + "\n";
    mHeld = true;
    // A full disk doesn't keep anyone from locking; the text is for the others' messages.
    if (::ftruncate(mFile, 0) == 0)
        (void)!::pwrite(mFile, text.data(), text.size(), 0);
    return true;
}

bool FRunLock::claim(ino_t inode, const std::string &name, std::string *other)
{
    *other = mNames.emplace(inode, name).first->second;
    return *other == name;
}

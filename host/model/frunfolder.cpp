// SPDX-License-Identifier: Apache-2.0
#include "frunfolder.h"

#include "frunlock.h"
#include "frunrecord.h"
#include "frunsync.h"
#include "fsafecalls.h"
#include "ftext.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {
constexpr unsigned kExchange = 1u << 1; // RENAME_EXCHANGE, absent from older headers
constexpr off_t kMostBytes = 256 << 20; // of a file of ours

void splitLast(const std::string &path, std::string *folder, std::string *name)
{
    const size_t slash = path.rfind('/');
    *folder = path.substr(0, slash);
    *name = path.substr(slash + 1);
}

/// The three steps from the project to a run folder.
std::vector<std::string> stepsOf(std::string directory, std::string *project)
{
    std::vector<std::string> steps(3);
    while (directory.size() > 1 && directory.back() == '/')
        directory.pop_back();
    for (size_t i = 3; i-- > 0;)
        splitLast(std::string(directory), &directory, &steps[i]);
    *project = directory;
    return steps;
}

bool exchange(int fromFolder, const char *from, int toFolder, const char *to)
{
    if (::syscall(SYS_renameat2, fromFolder, from, toFolder, to, kExchange) == 0)
        return true;
    if (errno == ENOENT)
        return ::renameat(fromFolder, from, toFolder, to) == 0;
    if (errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP && errno != EPERM)
        return false;
    const std::string aside = std::string(from) + ".aside";
    return ::renameat(toFolder, to, fromFolder, aside.c_str()) == 0 &&
           ::renameat(fromFolder, from, toFolder, to) == 0 &&
           ::renameat(fromFolder, aside.c_str(), fromFolder, from) == 0;
}

/// Ours, but without a record: nobody saw the end of the run.
bool isTorn(int parent, const std::string &place)
{
    struct stat info = {};
    const std::string own = place + "/" + FRunFolder::kOwn;
    return ::fstatat(parent, own.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISDIR(info.st_mode) &&
           ::fstatat(parent, (own + "/run.json").c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0 &&
           errno == ENOENT;
}

bool setAside(int parent, const std::string &name, const std::string &place)
{
    for (int i = 1; i < 1000; ++i) {
        const std::string aside = place + ".interrupted-" + std::to_string(i);
        if (::renameat2(parent, name.c_str(), parent, aside.c_str(), RENAME_NOREPLACE) == 0)
            return true;
        if (errno != EEXIST)
            break;
    }
    return false;
}
} // namespace

std::string FRunFolder::words(int error)
{
    return error == ELOOP || error == ENOTDIR ? "it is a symbolic link or no folder"
                                              : S(FSafeCalls::systemWords(error));
}

int FRunFolder::step(int folder, const char *name, bool make)
{
    // Most folders are there; a new one costs a second look.
    const int flags = O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    const int found = ::openat(folder, name, flags);
    if (found >= 0 || errno != ENOENT || !make)
        return found;
    if (::mkdirat(folder, name, 0777) != 0 && errno != EEXIST)
        return -1;
    return ::openat(folder, name, flags);
}

std::shared_ptr<FRunFolder> FRunFolder::prepare(const std::shared_ptr<FRunLock> &lock,
                                                const std::string &directory, std::string *why)
{
    std::string project;
    const auto steps = stepsOf(directory, &project);
    std::shared_ptr<FRunFolder> run(new FRunFolder);
    run->mParentPath = project + "/" + steps[0] + "/" + steps[1];
    run->mPlace = steps[2];
    const auto fail = [&] {
        *why = "cannot make the run folder " + directory + ": " + words(errno);
        return nullptr;
    };
    run->mParent = step(lock->folder(), steps[1].c_str(), true);
    struct stat info;
    if (run->mParent < 0 || ::fstat(run->mParent, &info) != 0)
        return fail();
    std::string other;
    if (!lock->claim(info.st_ino, steps[1], &other)) {
        *why = "the designs " + other + " and " + steps[1] +
               " share a folder: this file system takes their names for one";
        return nullptr;
    }
    std::string name = run->mPlace;
    if (::mkdirat(run->mParent, name.c_str(), 0777) != 0) {
        if (errno != EEXIST || ::fstatat(run->mParent, name.c_str(), &info, AT_SYMLINK_NOFOLLOW))
            return fail();
        if (!S_ISDIR(info.st_mode)) {
            errno = ENOTDIR;
            return fail();
        }
        run->mReplacesTorn = isTorn(run->mParent, run->mPlace);
        name = run->mPrepared = "." + run->mPlace + ".new";
        if (::mkdirat(run->mParent, name.c_str(), 0777) != 0) {
            // What a run left that was killed, or what is being removed still.
            QString reason;
            FRunSync::instance()->finishRemovals();
            if (!FSafeFile::removeTree(Q(run->mParentPath + "/" + name), &reason)) {
                *why = "cannot empty the run folder " + directory + ": " + S(reason);
                return nullptr;
            }
            if (::mkdirat(run->mParent, name.c_str(), 0777) != 0)
                return fail();
        }
    }
    run->mFolder = step(run->mParent, name.c_str(), false);
    run->mOwn = run->mFolder < 0 ? -1 : step(run->mFolder, kOwn, true);
    if (run->mOwn < 0)
        return fail();
    return run;
}

std::shared_ptr<FRunFolder> FRunFolder::earlier(const std::shared_ptr<FRunLock> &lock,
                                                const std::string &directory, std::string *why)
{
    std::string project;
    const auto steps = stepsOf(directory, &project);
    std::shared_ptr<FRunFolder> run(new FRunFolder);
    run->mParentPath = project + "/" + steps[0] + "/" + steps[1];
    run->mPlace = steps[2];
    run->mParent = step(lock->folder(), steps[1].c_str(), false);
    run->mFolder = run->mParent < 0 ? -1 : step(run->mParent, run->mPlace.c_str(), false);
    run->mOwn = run->mFolder < 0 ? -1 : step(run->mFolder, kOwn, true);
    if (run->mOwn >= 0)
        return run;
    *why = "cannot open the run folder " + directory + ": " + words(errno);
    return nullptr;
}

FRunFolder::~FRunFolder()
{
    for (int file : {mOwn, mFolder, mParent})
        if (file >= 0)
            ::close(file);
}

bool FRunFolder::isInPlace() const
{
    if (mPrepared.empty())
        return true;
    struct stat own, there;
    return ::fstat(mFolder, &own) == 0 &&
           ::fstatat(mParent, mPlace.c_str(), &there, AT_SYMLINK_NOFOLLOW) == 0 &&
           own.st_dev == there.st_dev && own.st_ino == there.st_ino;
}

std::string FRunFolder::path() const
{
    return mParentPath + "/" + (isInPlace() ? mPlace : mPrepared);
}

void FRunFolder::dropReplaced()
{
    if (mPrepared.empty() || mDropped)
        return;
    mDropped = true;
    if (mReplacesTorn && isInPlace() && setAside(mParent, mPrepared, mPlace))
        return;
    FRunSync::instance()->remove(mParentPath + "/" + mPrepared);
}

void FRunFolder::settle()
{
    if (!isInPlace()) {
        FRunRecord old;
        QByteArray text;
        const bool keep = read(mParentPath + "/" + mPlace, "run.json", &text) && old.read(text) &&
                          old.succeeded();
        if (!keep)
            exchange(mParent, mPrepared.c_str(), mParent, mPlace.c_str());
    }
    dropReplaced();
}

bool FRunFolder::write(const char *name, const QByteArray &bytes, QString *why) const
{
    return FSafeFile::replaceIn(mOwn, name, bytes, why);
}

bool FRunFolder::remove(const char *name) const
{
    return ::unlinkat(mOwn, name, 0) == 0 || errno == ENOENT;
}

bool FRunFolder::read(const std::string &directory, const char *name, QByteArray *bytes)
{
    std::string project;
    auto steps = stepsOf(directory, &project);
    steps.emplace_back(kOwn);
    int folder = ::open(project.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    for (size_t i = 0; i < steps.size() && folder >= 0; ++i) {
        const int next = step(folder, steps[i].c_str(), false);
        ::close(folder);
        folder = next;
    }
    if (folder < 0)
        return false;
    const FSafeCalls::Descriptor file(
        FSafeCalls::openRetrying(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
    ::close(folder);
    struct stat info;
    if (!file.isOpen() || ::fstat(file, &info) != 0 || !S_ISREG(info.st_mode) ||
        info.st_size > kMostBytes)
        return false;
    bytes->resize(int(info.st_size));
    int done = 0;
    while (done < bytes->size()) {
        const ssize_t got =
            FSafeCalls::calls().read(file, bytes->data() + done, size_t(bytes->size() - done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return false;
        done += int(got);
    }
    return true;
}

QString FRunFolder::join(const QString &folder, const QString &relative, QString *why,
                         LastPart lastPart)
{
    const QString path = safeJoin(folder, relative, why, lastPart);
    // Parts that lead nowhere are left out of the path, but only of it.
    const QString first = path.mid(folder.size()).section('/', 0, 0, QString::SectionSkipEmpty);
    if (first != QLatin1String(kOwn))
        return path;
    *why = QStringLiteral("The path \"%1\" is refused: it leads into the folder of the records")
               .arg(relative);
    return QString();
}

QString FRunFolder::problemOf(const std::string &directory)
{
    std::string path;
    for (const std::string &name : stepsOf(directory, &path)) {
        path += "/" + name;
        struct stat info;
        if (::lstat(path.c_str(), &info) == 0 && S_ISLNK(info.st_mode))
            return Q(path) + QStringLiteral(" is a symbolic link, nothing is read through it");
    }
    return QString();
}

bool FRunFolder::move(const std::string &from, const std::string &to, QString *why)
{
    struct stat info;
    if (::lstat(from.c_str(), &info) != 0 || exchange(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str()))
        return true;
    return FSafeCalls::fail(why, QStringLiteral("move"), Q(from), FSafeCalls::systemWords(errno));
}

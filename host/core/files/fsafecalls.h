// SPDX-License-Identifier: Apache-2.0
#ifndef FSAFECALLS_H
#define FSAFECALLS_H
#include "fsafefile.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

/// What safe writing and the walks through folders share: system calls that go on after a signal,
/// and words for what went wrong.
namespace FSafeCalls {
const FFileCalls &calls();
/// What an errno means, in English.
QString systemWords(int error);
/// False, with a sentence in \p why.
bool fail(QString *why, const QString &what, const QString &path, const QString &reason);
/// The file system's form of a path, without slashes at the end.
bool nativePath(const QString &path, QByteArray *native, QString *why);
void splitPath(const QByteArray &native, QByteArray *folder, QByteArray *name);
QString kindOf(mode_t mode);
int openRetrying(int folder, const char *name, int flags, mode_t mode = 0);
int syncRetrying(int file);
/// Some network and user space file systems can't sync a folder and say so by these codes; they
/// leave nothing that could be done better.
bool syncFolder(int folder);

/// Closes on the way out when an error came first, so that errno of that error survives.
class Descriptor
{
public:
    explicit Descriptor(int file)
        : mFile(file)
    {
    }
    ~Descriptor()
    {
        const int kept = errno;
        if (mFile >= 0)
            calls().close(mFile);
        errno = kept;
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    bool close()
    {
        const int file = mFile;
        mFile = -1;
        return calls().close(file) == 0;
    }
    bool isOpen() const { return mFile >= 0; }
    operator int() const { return mFile; }

private:
    int mFile;
};
} // namespace FSafeCalls
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FRUNLOCK_H
#define FRUNLOCK_H
#include <map>
#include <memory>
#include <string>
#include <sys/types.h>

/// Keeps other processes from running what lies in one folder of designs: two of them would mix
/// their files.
///
/// The lock is a file .turnbuckle/lock in that folder. The kernel lets go of it when its holder
/// ends, however that happens; its text names the holder for people and for file systems whose
/// locks don't reach other hosts. Reading results needs no lock.
class FRunLock
{
public:
    /// The lock of the folder \p designs, which is made if it is missing and must be no link. All
    /// who take it in this process share it. Null with the reason in \p why, which names the
    /// holder.
    static std::shared_ptr<FRunLock> take(const std::string &designs, std::string *why);
    ~FRunLock();
    FRunLock(const FRunLock &) = delete;
    FRunLock &operator=(const FRunLock &) = delete;

    int folder() const { return mFolder; }
    /// The locked file: whoever else holds it open holds the lock.
    int file() const { return mFile; }
    /// False if the folder \p inode was used for another name while this lock was held: the file
    /// system takes both names for one. \p *other is that name.
    bool claim(ino_t inode, const std::string &name, std::string *other);

private:
    FRunLock() = default;
    bool open(const std::string &designs, std::string *why);
    bool lock(const std::string &designs, std::string *why);

    int mFolder = -1, mFile = -1;
    bool mHeld = false;
    std::map<ino_t, std::string> mNames;
};
#endif

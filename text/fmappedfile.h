// SPDX-License-Identifier: Apache-2.0
#ifndef FMAPPEDFILE_H
#define FMAPPEDFILE_H
#include <cstddef>
#include <ctime>

struct stat;

/// A file that is read as it lies. Somebody may write or cut it meanwhile: what is no longer there
/// reads as zeros then, where a plain mapping would end the process by SIGBUS, and hasChanged()
/// tells.
class FMappedFile
{
public:
    FMappedFile() = default;
    ~FMappedFile();
    FMappedFile(const FMappedFile &) = delete;
    FMappedFile &operator=(const FMappedFile &) = delete;

    /// False if the file can't be mapped: it has to be read then.
    bool open(int fd, const struct stat &info);
    const void *data() const { return mData; }
    size_t size() const { return mSize; }
    /// True if the file has another size or time than at open(), or couldn't be read.
    bool hasChanged() const;

private:
    void *mData = nullptr;
    size_t mSize = 0;
    timespec mTime = {};
    int mFd = -1;
    int mPlace = -1; ///< among the mappings that the handler of the signal knows
};
#endif

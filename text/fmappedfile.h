// SPDX-License-Identifier: Apache-2.0
#ifndef FMAPPEDFILE_H
#define FMAPPEDFILE_H
#include <cstddef>

/// A file that is read as it lies. Somebody may cut it meanwhile: what is no longer there reads as
/// zeros then, and wasCut() tells, where a plain mapping would end the process by SIGBUS.
class FMappedFile
{
public:
    FMappedFile() = default;
    ~FMappedFile();
    FMappedFile(const FMappedFile &) = delete;
    FMappedFile &operator=(const FMappedFile &) = delete;

    /// False if the file can't be mapped: it has to be read then.
    bool open(int fd, size_t size);
    const void *data() const { return mData; }
    size_t size() const { return mSize; }
    bool wasCut() const;

private:
    void *mData = nullptr;
    size_t mSize = 0;
    int mFd = -1;
    int mPlace = -1; ///< among the mappings that the handler of the signal knows
};
#endif

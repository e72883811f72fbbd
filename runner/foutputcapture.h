// SPDX-License-Identifier: Apache-2.0
#ifndef FOUTPUTCAPTURE_H
#define FOUTPUTCAPTURE_H
#include <cstdint>
#include <string>

/// Takes one output of a program through a pipe into a file that never grows far beyond a limit.
///
/// The first part is written as it comes, half of the limit at least; of the rest the end stays in
/// memory, a few MiB of it, and is written last, behind a line that tells how many bytes were left
/// out. A program that floods its
/// output is never blocked, not even when the disk is full.
class FOutputCapture
{
public:
    FOutputCapture() = default;
    ~FOutputCapture();
    FOutputCapture(const FOutputCapture &) = delete;
    FOutputCapture &operator=(const FOutputCapture &) = delete;

    /// Makes \p file, which is no link, and the pipe; a \p limit of 0 keeps everything. False: see
    /// error().
    bool open(const char *file, uint64_t limit);
    /// To be called once the program has its own copy of the writing end.
    void closeWriteEnd();
    /// Reads once; blocks if there is nothing to read.
    void read();
    /// Takes what is left in the pipe without waiting for more, and completes the file.
    void finish();

    int readEnd() const { return mReadEnd; } // -1 once nobody can write any more
    int writeEnd() const { return mWriteEnd; }
    int error() const { return mError; } // errno of the first failure, 0 if there was none
    uint64_t total() const { return mTotal; }
    uint64_t omitted() const { return mOmitted; }

private:
    void write(const char *text, size_t size);
    void makeTail(uint64_t size);
    void writeTail();

    int mFile = -1, mReadEnd = -1, mWriteEnd = -1, mError = 0;
    uint64_t mHead = 0, mHeadLimit = 0; // bytes
    char mLast = '\n';                  // of the head
    char *mTail = nullptr;              // a ring
    uint64_t mTailSize = 0, mTailTotal = 0, mTailLimit = 0;
    uint64_t mTotal = 0, mOmitted = 0;
    bool mWidened = false;
};
#endif

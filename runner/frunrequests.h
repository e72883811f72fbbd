// SPDX-License-Identifier: Apache-2.0
#ifndef FRUNREQUESTS_H
#define FRUNREQUESTS_H
#include <csignal>
#include <cstddef>
#include <vector>

/// Runs that come one after the other over a socket. A runner that is there already costs much less
/// than a program start for every run.
class FRunRequests
{
public:
    /// Numbers of the files that come with a run: its control socket, its folder, the folder that
    /// this one stands in, and the lock that is held until the run has ended. The latter three may
    /// be missing.
    static constexpr int kControl = 3, kFolder = 4, kParent = 5, kLock = 6;
    static constexpr int kFiles = 4;

    /// Requests on the stream socket \p socket, for the whole life of the process.
    explicit FRunRequests(int socket);

    /// Waits for a request and puts its command line, its environment and its files in place. False
    /// when the caller has closed its end, or is gone.
    ///
    /// A request is two native uint32_t, the number of words and the number of bytes behind; with
    /// them come the files. Then follow, each with a zero byte behind it, the words of
    /// the command line, and "NAME=value" for what the environment has beside that of this process.
    bool receive();
    int argc() const { return int(mWords.size()) - 1; }
    char **argv() { return mWords.data(); }
    /// Takes no more requests; the caller notices when it sends one.
    void close();
    /// Closes the files of the run.
    static void closeFiles();

private:
    static void place(const int *files, int count);
    void unpack(size_t words);

    int mSocket;
    sigset_t mHeld = {};
    std::vector<char *> mEnvironment; // as this process was started
    std::vector<char> mText;
    // Of the run, with a null pointer at the end; the words point into the text.
    std::vector<char *> mVariables, mWords;
};
#endif

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
    static constexpr int kControl = 3; // number of the control socket of a run

    /// Requests on the stream socket \p socket, for the whole life of the process.
    explicit FRunRequests(int socket);

    /// Waits for a request and puts its command line, its environment and, under the number 3, its
    /// control socket in place. False when the caller has closed its end, or is gone.
    ///
    /// A request is two native uint32_t, the number of words and the number of bytes behind; with
    /// them comes the control socket. Then follow, each with a zero byte behind it, the words of
    /// the command line, and "NAME=value" for what the environment has beside that of this process.
    bool receive();
    int argc() const { return int(mWords.size()) - 1; }
    char **argv() { return mWords.data(); }
    /// Takes no more requests; the caller notices when it sends one.
    void close();

private:
    void unpack(size_t words);

    int mSocket;
    sigset_t mHeld = {};
    std::vector<char *> mEnvironment; // as this process was started
    std::vector<char> mText;
    // Of the run, with a null pointer at the end; the words point into the text.
    std::vector<char *> mVariables, mWords;
};
#endif

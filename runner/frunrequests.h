// SPDX-License-Identifier: Apache-2.0
#ifndef FRUNREQUESTS_H
#define FRUNREQUESTS_H
#include <cstddef>
#include <vector>

/// Runs that come one after the other over a socket.
///
/// A process of its own carries each run. It is a copy of this one, which is small and has been
/// started already: much cheaper than a program start for every run.
class FRunRequests
{
public:
    /// Waits for requests on the stream socket \p socket. Returns true in the process of each run,
    /// once, with its command line in place and its control socket under the number 3; false when
    /// the caller has closed its end, or is gone.
    ///
    /// A request is two native uint32_t, the number of words and the number of bytes behind; with
    /// them comes the control socket. Then follow, each with a zero byte behind it, the words of
    /// the command line, and "NAME=value" for what the environment has beside that of this process.
    bool receive(int socket);
    int argc() const { return int(mWords.size()) - 1; }
    char **argv() { return mWords.data(); }

private:
    void unpack(size_t words);

    std::vector<char> mText;
    std::vector<char *> mWords; // into the text, with a null pointer at the end
};
#endif

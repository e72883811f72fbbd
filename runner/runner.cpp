// SPDX-License-Identifier: Apache-2.0
#include "frunrequests.h"
#include "fsupervisor.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
/// No signal and no message when the caller is gone: the exit code tells.
bool send(int control, const std::string &text)
{
    size_t sent = 0;
    while (sent < text.size()) {
        const ssize_t count = ::send(control, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        if (count < 0 && errno == ENOTSOCK)
            return writeAll(control, text.data() + sent, text.size() - sent);
        if (count < 0 && errno == EAGAIN) {
            pollfd event = {control, POLLOUT, 0};
            ::poll(&event, 1, -1);
        } else if (count < 0 && errno != EINTR) {
            return false;
        }
        sent += count > 0 ? size_t(count) : 0;
    }
    return true;
}

/// One run. A runner that can't get rid of what the program left takes no more \p requests.
int carry(int argc, char **argv, FRunRequests *requests)
{
    FRunnerOptions options;
    std::string why;
    if (!options.parse(argc, argv, &why)) {
        std::fprintf(stderr, "turnbuckle-runner: %s\n", why.c_str());
        return 2;
    }
    // Neither the control socket nor anything else that is open here is the program's business.
    if (::close_range(3, ~0U, CLOSE_RANGE_CLOEXEC) != 0)
        ::fcntl(options.control, F_SETFD, FD_CLOEXEC);

    FRunReport report = FSupervisor(options).run();
    std::string json = report.toJson(options);
    std::string folder, name;
    splitPath(options.recordFile, &folder, &name);
    if (report.recordFolder >= 0 && !name.empty() &&
        !replaceFile(report.recordFolder, name, json, &why)) {
        report.set("failed", "cannot write " + options.recordFile + ": " + why);
        json = report.toJson(options);
    }
    if (report.recordFolder >= 0)
        ::close(report.recordFolder);
    if (requests && ::waitpid(-1, nullptr, WNOHANG) >= 0)
        requests->close();
    return send(options.control, json) ? 0 : 1;
}
} // namespace

int main(int argc, char **argv)
{
    if (argc != 3 || std::strcmp(argv[1], "--serve") != 0)
        return carry(argc, argv, nullptr);
    FRunRequests requests(std::atoi(argv[2]));
    while (requests.receive()) {
        carry(requests.argc(), requests.argv(), &requests);
        FRunRequests::closeFiles();
    }
    return 0;
}

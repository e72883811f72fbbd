// SPDX-License-Identifier: Apache-2.0
#include "fprogram.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
const char kNotFound[] = "not found";
const char kNotExecutable[] = "not executable";
const char kIsDirectory[] = "is a directory";

/// Finds \p name along PATH. Like a shell, passes over what can't be executed, but tells of it if
/// nothing better comes. Null, with the file in \p path, if there is one.
const char *findInPath(const std::string &name, std::string *path)
{
    const char *folders = ::getenv("PATH");
    const std::string all = folders ? folders : "/usr/local/bin:/usr/bin:/bin";
    const char *problem = kNotFound;
    for (size_t begin = 0; begin <= all.size();) {
        const size_t end = std::min(all.find(':', begin), all.size());
        *path = all.substr(begin, end - begin);
        *path += path->empty() ? "./" + name : '/' + name;
        begin = end + 1;
        struct stat status = {};
        if (::stat(path->c_str(), &status) != 0)
            continue;
        if (S_ISDIR(status.st_mode))
            problem = problem == kNotFound ? kIsDirectory : problem;
        else if (::access(path->c_str(), X_OK) == 0)
            return nullptr;
        else
            problem = kNotExecutable;
    }
    return problem;
}

const char *execProblem(const char *path, int error)
{
    struct stat status = {};
    if (::stat(path, &status) != 0)
        return errno == ENOENT || errno == ENOTDIR ? kNotFound : std::strerror(errno);
    if (error == ENOENT)
        return "its interpreter is not found";
    if (error != EACCES)
        return std::strerror(error);
    return S_ISDIR(status.st_mode) ? kIsDirectory : kNotExecutable;
}

struct FStart
{
    const FProgram *program;
    const char *path;
    int error;
};

void setLimit(__rlimit_resource_t resource, rlim_t limit)
{
    const rlimit both = {limit, limit};
    ::setrlimit(resource, &both);
}

/// The child's part. It shares the memory of the waiting parent, so it makes system calls only.
int startedChild(void *argument)
{
    FStart *start = static_cast<FStart *>(argument);
    const FProgram &program = *start->program;
    ::setpgid(0, 0);
    // The last resort for a runner that is killed itself.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    for (int signal = 1; signal < NSIG; ++signal)
        ::sigaction(signal, &action, nullptr);
    setLimit(RLIMIT_CORE, 0);
    if (program.fileLimit > 0)
        setLimit(RLIMIT_FSIZE, program.fileLimit);
    ::dup2(program.input, 0);
    ::dup2(program.output, 1);
    ::dup2(program.errors, 2);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::execve(start->path, program.command, environ);
    start->error = errno;
    ::_exit(127);
}
} // namespace

pid_t FProgram::start(std::string *why) const
{
    std::string path = command[0];
    if (path.find('/') == std::string::npos) {
        if (const char *problem = path.empty() ? kNotFound : findInPath(command[0], &path)) {
            *why = problem;
            return -1;
        }
    }
    FStart start = {this, path.c_str(), 0};
    alignas(64) static char stack[32 * 1024];
    // Sharing the memory until the program is loaded costs nothing, and brings its error back.
    const pid_t pid =
        ::clone(startedChild, stack + sizeof stack, CLONE_VM | CLONE_VFORK | SIGCHLD, &start);
    if (pid < 0) {
        *why = std::strerror(errno);
        return -1;
    }
    if (start.error == 0)
        return pid;
    while (::waitpid(pid, nullptr, 0) < 0 && errno == EINTR) {
    }
    *why = execProblem(path.c_str(), start.error);
    return -1;
}

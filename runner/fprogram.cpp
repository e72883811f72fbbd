// SPDX-License-Identifier: Apache-2.0
#include "fprogram.h"

#include "fprogramsearch.h"

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
const char *execProblem(const std::string &path, int error)
{
    if (const char *problem = FProgramSearch::problemOf(path))
        return problem;
    return error == ENOENT ? "its interpreter is not found" : std::strerror(error);
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

bool FProgram::find(std::string *why)
{
    mPath = command[0];
    const char *problem = mPath.find('/') == std::string::npos
                              ? FProgramSearch::find(command[0], ::getenv("PATH"), &mPath)
                              : nullptr;
    if (problem)
        *why = problem;
    return !problem;
}

pid_t FProgram::start(std::string *why) const
{
    FStart start = {this, mPath.c_str(), 0};
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
    *why = execProblem(mPath, start.error);
    return -1;
}

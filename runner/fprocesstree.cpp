// SPDX-License-Identifier: Apache-2.0
#include "fprocesstree.h"

#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

namespace {
struct FProcess
{
    pid_t pid, parent;
    bool stopped;
};

bool readProcess(int proc, const char *pid, FProcess *process)
{
    char name[64], text[512];
    const char *end = pid + std::strlen(pid);
    if (std::from_chars(pid, end, process->pid).ptr != end)
        return false;
    std::snprintf(name, sizeof name, "%d/stat", int(process->pid));
    const int fd = ::openat(proc, name, O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    const ssize_t got = ::read(fd, text, sizeof text - 1);
    ::close(fd);
    text[got > 0 ? got : 0] = 0;
    // "pid (name) state parent ...", and the name may hold anything.
    const char *state = std::strrchr(text, ')');
    if (!state || std::strlen(state) < 5)
        return false;
    process->stopped = state[2] == 'T';
    std::from_chars(state + 4, text + got, process->parent);
    return true;
}
} // namespace

bool signalDescendants(int signal)
{
    const std::unique_ptr<DIR, int (*)(DIR *)> proc(::opendir("/proc"), ::closedir);
    char self[16] = {};
    // In a process namespace of its own, /proc may still show the numbers of another one.
    if (!proc || ::readlink("/proc/self", self, sizeof self - 1) <= 0 ||
        std::to_string(::getpid()) != self)
        return false;
    std::vector<FProcess> all;
    FProcess process = {};
    while (const dirent *entry = ::readdir(proc.get()))
        if (readProcess(::dirfd(proc.get()), entry->d_name, &process))
            all.push_back(process);
    std::vector<pid_t> found{::getpid()};
    for (size_t i = 0; i < found.size(); ++i) {
        const pid_t parent = found[i];
        for (const FProcess &other : all) {
            if (other.parent != parent || other.pid == parent)
                continue;
            found.push_back(other.pid);
            ::kill(other.pid, signal);
            if (other.stopped)
                ::kill(other.pid, SIGCONT);
        }
    }
    return true;
}

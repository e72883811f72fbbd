// SPDX-License-Identifier: Apache-2.0
#include "fprocesstree.h"

#include <algorithm>
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
    bool stopped, ended;
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
    process->ended = state[2] == 'Z' || state[2] == 'X';
    std::from_chars(state + 4, text + got, process->parent);
    return true;
}

/// False if they can't be listed.
bool listProcesses(std::vector<FProcess> *all)
{
    const std::unique_ptr<DIR, int (*)(DIR *)> proc(::opendir("/proc"), ::closedir);
    char self[16] = {};
    // In a process namespace of its own, /proc may still show the numbers of another one.
    if (!proc || ::readlink("/proc/self", self, sizeof self - 1) <= 0 ||
        std::to_string(::getpid()) != self)
        return false;
    FProcess process = {};
    while (const dirent *entry = ::readdir(proc.get()))
        if (readProcess(::dirfd(proc.get()), entry->d_name, &process))
            all->push_back(process);
    return true;
}

int signalOne(const FProcess &process, int signal)
{
    ::kill(process.pid, signal);
    if (process.stopped)
        ::kill(process.pid, SIGCONT);
    return !process.ended;
}
} // namespace

int signalDescendants(int signal, const std::vector<pid_t> *roots)
{
    std::vector<FProcess> all;
    if (!listProcesses(&all))
        return -1;
    int count = 0;
    std::vector<pid_t> found{::getpid()};
    if (roots) {
        found = *roots;
        for (const FProcess &process : all)
            if (std::find(roots->begin(), roots->end(), process.pid) != roots->end())
                count += signalOne(process, signal);
    }
    for (size_t i = 0; i < found.size(); ++i) {
        const pid_t parent = found[i];
        for (const FProcess &other : all) {
            if (other.parent != parent || other.pid == parent)
                continue;
            found.push_back(other.pid);
            count += signalOne(other, signal);
        }
    }
    return count;
}

std::vector<pid_t> childrenOfThisProcess()
{
    std::vector<FProcess> all;
    std::vector<pid_t> children;
    if (listProcesses(&all))
        for (const FProcess &process : all)
            if (process.parent == ::getpid())
                children.push_back(process.pid);
    return children;
}

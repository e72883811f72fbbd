// SPDX-License-Identifier: Apache-2.0
#ifndef BAREFILES_H
#define BAREFILES_H
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

/// What a program does that only writes: the yardsticks for writing input files.
namespace BareFiles {
using Files = std::vector<std::pair<std::string, std::string>>; // names and bytes

inline void need(bool good, const std::string &what)
{
    if (good)
        return;
    perror(what.c_str());
    _exit(1);
}

inline Files readFolder(const std::string &folder)
{
    Files files;
    DIR *dir = opendir(folder.c_str());
    need(dir, folder);
    while (const dirent *entry = readdir(dir)) {
        if (entry->d_name[0] == '.')
            continue;
        const std::string path = folder + "/" + entry->d_name;
        const int file = open(path.c_str(), O_RDONLY);
        struct stat info;
        need(file >= 0 && fstat(file, &info) == 0, path);
        std::string bytes(size_t(info.st_size), '\0');
        need(read(file, &bytes[0], bytes.size()) == info.st_size, path);
        close(file);
        files.emplace_back(entry->d_name, std::move(bytes));
    }
    closedir(dir);
    std::sort(files.begin(), files.end());
    return files;
}

inline void writeAll(const std::string &folder, const Files &files)
{
    for (const auto &each : files) {
        const std::string path = folder + "/" + each.first;
        const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
        need(file >= 0, path);
        need(write(file, each.second.data(), each.second.size()) == ssize_t(each.second.size()),
             path);
        need(close(file) == 0, path);
    }
}

/// As a copying program does it, within the kernel.
inline void copyAll(const std::string &from, const std::string &to, const Files &files)
{
    for (const auto &each : files) {
        const int in = open((from + "/" + each.first).c_str(), O_RDONLY);
        const std::string path = to + "/" + each.first;
        const int out = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
        need(in >= 0 && out >= 0, path);
        ssize_t count;
        while ((count = copy_file_range(in, nullptr, out, nullptr, size_t(1) << 30, 0)) > 0) {
        }
        need(count == 0 && close(out) == 0, path);
        close(in);
    }
}

inline void removeAll(const std::string &folder, const Files &files)
{
    for (const auto &each : files)
        unlink((folder + "/" + each.first).c_str());
}

template <class Work>
double milliseconds(const Work &work)
{
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin)
        .count();
}
} // namespace BareFiles
#endif

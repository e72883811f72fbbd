// SPDX-License-Identifier: Apache-2.0
#include "fprogramsearch.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace {
const char kNotFound[] = "not found";
const char kNotExecutable[] = "not executable";
const char kIsDirectory[] = "is a directory";
} // namespace

const char *FProgramSearch::problemOf(const std::string &path)
{
    struct stat status = {};
    if (path.empty() || ::stat(path.c_str(), &status) != 0)
        return path.empty() || errno == ENOENT || errno == ENOTDIR ? kNotFound
                                                                   : std::strerror(errno);
    if (S_ISDIR(status.st_mode))
        return kIsDirectory;
    return ::access(path.c_str(), X_OK) == 0 ? nullptr : kNotExecutable;
}

const char *FProgramSearch::find(const std::string &name, const char *folders, std::string *path)
{
    if (name.empty())
        return kNotFound;
    const std::string all = folders ? folders : "/usr/local/bin:/usr/bin:/bin";
    const char *problem = kNotFound;
    for (size_t begin = 0; begin <= all.size();) {
        const size_t end = std::min(all.find(':', begin), all.size());
        *path = all.substr(begin, end - begin);
        *path += path->empty() ? "./" + name : '/' + name;
        begin = end + 1;
        const char *own = problemOf(*path);
        if (!own)
            return nullptr;
        if (own == kNotExecutable || (own == kIsDirectory && problem == kNotFound))
            problem = own;
    }
    return problem;
}

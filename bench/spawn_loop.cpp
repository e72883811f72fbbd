// SPDX-License-Identifier: Apache-2.0
// spawn_loop PROGRAM FOLDER DESIGNS JOBS: for each design makes a folder, writes five input files,
// runs the program there and reads one number from its result; at most JOBS at once. Nothing
// supervises the program and nothing is recorded: the least that anyone could do.
#include <cstdio>
#include <cstdlib>
#include <map>
#include <spawn.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

static bool writeInputs(const std::string &folder, int design)
{
    if (::mkdir(folder.c_str(), 0777) != 0)
        return false;
    for (int i = 1; i <= 5; ++i) {
        std::FILE *file = std::fopen((folder + "/in" + std::to_string(i) + ".txt").c_str(), "w");
        if (!file)
            return false;
        std::fprintf(file, "x = %d\n", design * 10 + i);
        if (std::fclose(file) != 0)
            return false;
    }
    return true;
}

static bool resultIs(const std::string &folder, double expected)
{
    std::FILE *file = std::fopen((folder + "/out.txt").c_str(), "r");
    double sum = 0;
    const bool good = file && std::fscanf(file, "%*[^\n]\nsum = %lf", &sum) == 1;
    if (file)
        std::fclose(file);
    return good && sum == expected;
}

int main(int argc, char **argv)
{
    if (argc != 5)
        return 2;
    const std::string root = argv[2];
    const int designs = std::atoi(argv[3]), jobs = std::atoi(argv[4]);
    if (::mkdir(root.c_str(), 0777) != 0)
        return 3;
    std::map<pid_t, int> running;
    for (int next = 0; next < designs || !running.empty();) {
        if (next < designs && int(running.size()) < jobs) {
            const std::string folder = root + "/d" + std::to_string(next);
            if (!writeInputs(folder, next))
                return 4;
            posix_spawn_file_actions_t actions;
            posix_spawn_file_actions_init(&actions);
            posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
            char *command[] = {argv[1], nullptr};
            pid_t pid = 0;
            if (::posix_spawn(&pid, argv[1], &actions, nullptr, command, environ) != 0)
                return 5;
            posix_spawn_file_actions_destroy(&actions);
            running[pid] = next++;
            continue;
        }
        int status = 0;
        const auto ended = running.find(::waitpid(-1, &status, 0));
        if (ended == running.end() || status != 0)
            return 6;
        const int design = ended->second;
        if (!resultIs(root + "/d" + std::to_string(design), design * 50 + 15))
            return 7;
        running.erase(ended);
    }
    return 0;
}

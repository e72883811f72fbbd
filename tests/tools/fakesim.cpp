// SPDX-License-Identifier: Apache-2.0
// A program that plays the solver in tests.
//   exit N                 ends with N
//   sum IN OUT             adds the numbers in IN
//   crash SIGNAL           ends itself by a signal
//   hang FILE              writes its number to FILE and stays
//   stubborn FILE          the same, deaf to SIGTERM
//   fork-hang FILE WHAT    leaves a stubborn daemon behind (a session of its own, its parent gone,
//                          its number in FILE); WHAT is exit or hang for the program itself
//   flood N                N bytes of numbered lines to each output, the last line cut
//   write FILE BYTES       a file of that size
//   echo-stdin FILE        copies standard input to FILE
//   late FILE MS           writes FILE after a while
//   env NAME FILE          writes the value of a variable to FILE
//   copy IN OUT
//   half FILE              a result whose last line has no end
//   meet FIFO read|write   waits until another one has opened the other end of FIFO
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <map>
#include <string>
#include <unistd.h>

namespace {
bool writeFile(const char *name, const std::string &text)
{
    // In its place at once, for those who wait for it.
    const std::string temporary = std::string(name) + ".part";
    std::FILE *file = std::fopen(temporary.c_str(), "w");
    const bool good = file && std::fwrite(text.data(), 1, text.size(), file) == text.size();
    return file && std::fclose(file) == 0 && good && std::rename(temporary.c_str(), name) == 0;
}

bool copy(std::FILE *in, const char *to)
{
    std::string text;
    char buffer[4096];
    while (const size_t got = in ? std::fread(buffer, 1, sizeof buffer, in) : 0)
        text.append(buffer, got);
    return in && writeFile(to, text);
}

int stay(const char *file)
{
    if (!writeFile(file, std::to_string(::getpid()) + "\n"))
        return 3;
    for (;;)
        ::pause();
}

int sum(char **arguments)
{
    std::FILE *in = std::fopen(arguments[0], "r");
    double sum = 0, value;
    int count = 0;
    for (; in && std::fscanf(in, "%lf", &value) == 1; ++count)
        sum += value;
    char text[80];
    std::snprintf(text, sizeof text, "sum = %.17g\nn = %d\n", sum, count);
    return in && writeFile(arguments[1], text) ? 0 : 3;
}

int forkHang(char **arguments)
{
    int ready[2];
    if (::pipe(ready) != 0)
        return 3;
    if (::fork() == 0) {
        ::setsid();
        if (::fork() != 0)
            ::_exit(0);
        ::close(ready[0]);
        std::signal(SIGTERM, SIG_IGN);
        std::signal(SIGHUP, SIG_IGN);
        if (!writeFile(arguments[0], std::to_string(::getpid()) + "\n"))
            ::_exit(3);
        ::close(ready[1]);
        for (;;)
            ::pause();
    }
    ::close(ready[1]);
    char byte;
    (void)!::read(ready[0], &byte, 1); // until the daemon stands
    if (!std::strcmp(arguments[1], "hang"))
        for (;;)
            ::pause();
    return 0;
}

int flood(long size)
{
    std::string text;
    for (long line = 1; long(text.size()) < size; ++line)
        text += "line " + std::to_string(line) + "\n";
    for (std::FILE *file : {stdout, stderr})
        if (std::fwrite(text.data(), 1, size_t(size), file) != size_t(size))
            return 3;
    return 0;
}

int late(char **arguments)
{
    ::usleep(useconds_t(std::atoi(arguments[1])) * 1000);
    return writeFile(arguments[0], "late\n") ? 0 : 3;
}

int env(char **arguments)
{
    const char *value = std::getenv(arguments[0]);
    return writeFile(arguments[1], value ? value : "(unset)") ? 0 : 3;
}
} // namespace

int main(int argc, char **argv)
{
    struct Command
    {
        int arguments;
        std::function<int(char **)> run;
    };
    const std::map<std::string, Command> commands{
        {"exit", {1, [](char **a) { return std::atoi(a[0]); }}},
        {"sum", {2, sum}},
        {"crash", {1, [](char **a) { return std::raise(std::atoi(a[0])); }}},
        {"hang", {1, [](char **a) { return stay(a[0]); }}},
        {"stubborn",
         {1,
          [](char **a) {
              std::signal(SIGTERM, SIG_IGN);
              return stay(a[0]);
          }}},
        {"fork-hang", {2, forkHang}},
        {"flood", {1, [](char **a) { return flood(std::atol(a[0])); }}},
        {"write",
         {2,
          [](char **a) {
              return writeFile(a[0], std::string(size_t(std::atol(a[1])), 'x')) ? 0 : 3;
          }}},
        {"echo-stdin", {1, [](char **a) { return copy(stdin, a[0]) ? 0 : 3; }}},
        {"late", {2, late}},
        {"env", {2, env}},
        {"copy", {2, [](char **a) { return copy(std::fopen(a[0], "r"), a[1]) ? 0 : 3; }}},
        {"half", {1, [](char **a) { return writeFile(a[0], "sum = 12.5\nn = 1") ? 0 : 3; }}},
        {"meet", {2, [](char **a) {
                      return ::open(a[0], !std::strcmp(a[1], "read") ? O_RDONLY : O_WRONLY) < 0;
                  }}}};
    const auto command = argc > 1 ? commands.find(argv[1]) : commands.end();
    if (command == commands.end() || argc != command->second.arguments + 2)
        return 2;
    return command->second.run(argv + 2);
}

// SPDX-License-Identifier: Apache-2.0
// Starts one external program, ends all of it in time, and reports how that went.
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <sys/timerfd.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>
#include <vector>

namespace
{
struct Options
{
    std::string directory, record, input, output, errors, computation, design;
    std::vector<std::string> expected, command;
    double timeLimit = 0;
    int control = -1;
};

std::string quoted(const std::string &text)
{
    std::string out = "\"";
    char buffer[8];
    for (const unsigned char c : text) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += char(c);
        } else if (c < 0x20) {
            std::snprintf(buffer, sizeof buffer, "\\u%04x", c);
            out += buffer;
        } else {
            out += char(c);
        }
    }
    return out + "\"";
}

double now()
{
    timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return double(t.tv_sec) + double(t.tv_nsec) / 1e9;
}

bool parse(int argc, char **argv, Options *o)
{
    for (int i = 1; i < argc; ++i) {
        const std::string name = argv[i];
        if (name == "--") {
            o->command.assign(argv + i + 1, argv + argc);
            return !o->command.empty() && !o->directory.empty() && o->control >= 0;
        }
        if (++i >= argc)
            return false;
        const std::string value = argv[i];
        if (name == "--directory")
            o->directory = value;
        else if (name == "--control")
            o->control = std::atoi(value.c_str());
        else if (name == "--record")
            o->record = value;
        else if (name == "--stdin")
            o->input = value;
        else if (name == "--stdout")
            o->output = value;
        else if (name == "--stderr")
            o->errors = value;
        else if (name == "--time-limit")
            o->timeLimit = std::strtod(value.c_str(), nullptr);
        else if (name == "--expect")
            o->expected.push_back(value);
        else if (name == "--computation")
            o->computation = value;
        else if (name == "--design")
            o->design = value;
        else
            return false;
    }
    return false;
}

/// All living descendants: what the program starts becomes a child of ours at the latest when its
/// own parent ends.
void signalChildren(pid_t process, int number)
{
    char path[64];
    std::snprintf(path, sizeof path, "/proc/%d/task/%d/children", int(process), int(process));
    FILE *file = std::fopen(path, "re");
    if (!file)
        return;
    std::vector<pid_t> children;
    for (int child; std::fscanf(file, "%d", &child) == 1;)
        children.push_back(child);
    std::fclose(file);
    for (const pid_t child : children) {
        signalChildren(child, number);
        ::kill(child, number);
    }
}
} // namespace

int main(int argc, char **argv)
{
    Options o;
    if (!parse(argc, argv, &o)) {
        std::fprintf(stderr, "usage: turnbuckle-runner --directory DIR --control FD [...] -- PROGRAM [ARG...]\n");
        return 2;
    }
    ::fcntl(o.control, F_SETFD, FD_CLOEXEC);
    std::string state = "finished", reason = "finished";
    const auto fail = [&](const char *s, const std::string &why) {
        state = s;
        reason = why;
    };
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    sigset_t set;
    sigemptyset(&set);
    for (const int number : {SIGCHLD, SIGTERM, SIGINT, SIGHUP})
        sigaddset(&set, number);
    sigprocmask(SIG_BLOCK, &set, nullptr);
    ::signal(SIGPIPE, SIG_IGN);
    const int signals = ::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
    const int timer = ::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK);
    const rlimit noCore{0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);

    timespec wall;
    clock_gettime(CLOCK_REALTIME, &wall);
    const double start = now();
    pid_t program = -1;
    int status = 0;
    int in = -1, out = -1, err = -1;
    const std::string &name = o.command[0];
    if (::chdir(o.directory.c_str()) != 0) {
        fail("not-started", "cannot enter " + o.directory + ": " + std::strerror(errno));
    } else {
        in = ::open(o.input.empty() ? "/dev/null" : o.input.c_str(), O_RDONLY | O_CLOEXEC);
        if (in < 0)
            fail("not-started", "cannot open standard input " + o.input + ": " + std::strerror(errno));
        const auto target = [&](const std::string &file) {
            const int fd = file.empty() ? ::open("/dev/null", O_WRONLY | O_CLOEXEC)
                                        : ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
            if (fd < 0)
                fail("failed", "cannot write " + file + ": " + std::strerror(errno));
            return fd;
        };
        out = target(o.output);
        err = target(o.errors);
    }
    if (state == "finished") {
        int report[2];
        if (::pipe2(report, O_CLOEXEC) != 0)
            return 1;
        std::vector<char *> arguments;
        for (std::string &argument : o.command)
            arguments.push_back(&argument[0]);
        arguments.push_back(nullptr);
        program = ::fork();
        if (program == 0) {
            ::setpgid(0, 0);
            sigprocmask(SIG_UNBLOCK, &set, nullptr);
            ::signal(SIGPIPE, SIG_DFL);
            ::dup2(in, 0);
            ::dup2(out, 1);
            ::dup2(err, 2);
            ::execvp(arguments[0], arguments.data());
            const int error = errno;
            (void)!::write(report[1], &error, sizeof error);
            ::_exit(127);
        }
        ::close(report[1]);
        int error = 0;
        if (program < 0 || ::read(report[0], &error, sizeof error) > 0) {
            struct stat info;
            std::string why = std::strerror(program < 0 ? errno : error);
            if (name.find('/') != std::string::npos && ::stat(name.c_str(), &info) == 0 &&
                S_ISDIR(info.st_mode))
                why = "is a directory";
            else if (error == ENOENT)
                why = "not found";
            else if (error == EACCES)
                why = "not executable";
            fail("not-started", "cannot start " + name + ": " + why);
            if (program > 0)
                ::waitpid(program, nullptr, 0);
            program = -1;
        }
        ::close(report[0]);
    }

    rusage usage{};
    bool ended = program < 0, killing = false;
    const auto arm = [&](double seconds) {
        itimerspec t{};
        t.it_value.tv_sec = time_t(seconds);
        t.it_value.tv_nsec = long((seconds - double(t.it_value.tv_sec)) * 1e9) + 1;
        ::timerfd_settime(timer, 0, &t, nullptr);
    };
    if (!ended && o.timeLimit > 0)
        arm(o.timeLimit);
    const auto stop = [&](const char *s, const std::string &why) {
        if (killing)
            return;
        killing = true;
        fail(s, why);
        signalChildren(::getpid(), SIGTERM);
        arm(2);
    };
    bool controlOpen = true;
    while (!ended) {
        pollfd files[] = {{signals, POLLIN, 0}, {timer, POLLIN, 0}, {controlOpen ? o.control : -1, POLLIN, 0}};
        if (::poll(files, 3, -1) < 0 && errno != EINTR)
            break;
        if (files[2].revents) {
            char byte = 0;
            const ssize_t got = ::read(o.control, &byte, 1);
            if (got == 0)
                controlOpen = false;
            if (got == 0 || byte == 'c')
                stop("cancelled", "cancelled");
        }
        if (files[1].revents) {
            unsigned long long count;
            (void)!::read(timer, &count, sizeof count);
            if (killing) {
                signalChildren(::getpid(), SIGKILL);
                arm(0.2);
            } else {
                char text[64];
                std::snprintf(text, sizeof text, "time limit of %g s", o.timeLimit);
                stop("timeout", text);
            }
        }
        if (files[0].revents) {
            signalfd_siginfo info;
            while (::read(signals, &info, sizeof info) > 0)
                if (info.ssi_signo != SIGCHLD)
                    stop("cancelled", "cancelled");
        }
        for (;;) {
            int one;
            const pid_t child = ::waitpid(-1, &one, WNOHANG);
            if (child == program)
                status = one;
            if (child == program && !killing) {
                // What the program left behind ends with it.
                killing = true;
                if (WIFSIGNALED(status))
                    fail("failed", "signal " + std::to_string(WTERMSIG(status)));
                else if (WEXITSTATUS(status) != 0)
                    fail("failed", "exit code " + std::to_string(WEXITSTATUS(status)));
                signalChildren(::getpid(), SIGKILL);
                arm(0.05);
            }
            if (child < 0 && errno == ECHILD)
                ended = true;
            if (child <= 0)
                break;
        }
    }
    ::getrusage(RUSAGE_CHILDREN, &usage);
    if (program > 0 && state == "finished")
        for (const std::string &file : o.expected) {
            struct stat info;
            if (::stat(file.c_str(), &info) == 0 && S_ISREG(info.st_mode))
                continue;
            fail("failed", "result file " + file + " missing");
            break;
        }

    char stamp[40], number[64];
    tm utc;
    gmtime_r(&wall.tv_sec, &utc);
    ::strftime(stamp, sizeof stamp, "%Y-%m-%dT%H:%M:%S", &utc);
    const auto json = [&] {
        std::string command;
        for (const std::string &word : o.command)
            command += (command.empty() ? "" : ",") + quoted(word);
        std::snprintf(number, sizeof number, "%.6f", now() - start);
        std::string text = "{\"computation\":" + quoted(o.computation) + ",\"design\":" + quoted(o.design) +
                           ",\"command\":[" + command + "],\"directory\":" + quoted(o.directory) +
                           ",\"start\":\"" + stamp + "Z\",\"seconds\":" + number;
        const bool ran = program > 0;
        text += ",\"exitCode\":" + (ran && WIFEXITED(status) ? std::to_string(WEXITSTATUS(status)) : "null");
        text += ",\"signal\":" + (ran && WIFSIGNALED(status) ? std::to_string(WTERMSIG(status)) : "null");
        text += ",\"peakMemoryKiB\":" + std::to_string(usage.ru_maxrss);
        return text + ",\"state\":" + quoted(state) + ",\"reason\":" + quoted(reason) + "}\n";
    };
    if (!o.record.empty()) {
        const std::string text = json(), temporary = o.record + ".part";
        FILE *file = std::fopen(temporary.c_str(), "we");
        bool ok = file && std::fwrite(text.data(), 1, text.size(), file) == text.size();
        ok = file && std::fclose(file) == 0 && ok;
        if (!ok || std::rename(temporary.c_str(), o.record.c_str()) != 0) {
            fail("failed", "cannot write " + o.record + ": " + std::strerror(errno));
            ::unlink(temporary.c_str());
        }
    }
    const std::string text = json();
    return ::write(o.control, text.data(), text.size()) == ssize_t(text.size()) ? 0 : 1;
}

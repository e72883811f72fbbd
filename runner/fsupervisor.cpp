// SPDX-License-Identifier: Apache-2.0
#include "fsupervisor.h"

#include "fprocesstree.h"
#include "fprogram.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
const int64_t kSecond = 1000000000;
const unsigned kExchange = 1u << 1; // RENAME_EXCHANGE, absent from older headers
const double kLeftoverGrace = 0.1;  // seconds for what a program leaves behind
const double kLongest = 1e9;        // seconds; longer is no limit

int64_t now(clockid_t clock)
{
    timespec time = {};
    ::clock_gettime(clock, &time);
    return int64_t(time.tv_sec) * kSecond + time.tv_nsec;
}

int64_t later(double seconds)
{
    return now(CLOCK_MONOTONIC) + int64_t(std::min(seconds, kLongest) * double(kSecond));
}

/// The signals that end a run, and the news of ended children, come by a file descriptor. The
/// others are held back so that a write that fails tells by errno.
int openSignals()
{
    sigset_t set;
    ::sigemptyset(&set);
    for (int signal : {SIGPIPE, SIGXFSZ})
        ::sigaddset(&set, signal);
    ::sigprocmask(SIG_BLOCK, &set, nullptr);
    ::sigemptyset(&set);
    for (int signal : {SIGCHLD, SIGTERM, SIGINT})
        ::sigaddset(&set, signal);
    // A caller that was told to outlive its terminal doesn't want its runs to end with that.
    struct sigaction hangup = {};
    if (::sigaction(SIGHUP, nullptr, &hangup) != 0 || hangup.sa_handler != SIG_IGN)
        ::sigaddset(&set, SIGHUP);
    ::sigprocmask(SIG_BLOCK, &set, nullptr);
    std::signal(SIGCHLD, SIG_DFL); // while it is ignored, nobody can wait for a child
    return ::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
}

std::string secondsText(double seconds)
{
    char text[400];
    return {text, std::to_chars(text, text + sizeof text, seconds, std::chars_format::fixed).ptr};
}
} // namespace

FSupervisor::~FSupervisor()
{
    for (int fd : {mSignals, mNull, mInput})
        if (fd >= 0)
            ::close(fd);
}

FRunReport FSupervisor::run()
{
    mReport.startMs = now(CLOCK_REALTIME) / 1000000;
    std::string why;
    if (!prepare() || !openFiles())
        return mReport;
    if (!startProgram(&why)) {
        mReport.set("not-started", std::string("cannot start ") + mOptions.command[0] + ": " + why);
        return mReport;
    }
    mOutput.closeWriteEnd();
    mErrors.closeWriteEnd();
    if (mOptions.timeLimit > 0 && mOptions.timeLimit < kLongest)
        mDeadline = mStart + int64_t(mOptions.timeLimit * double(kSecond));
    supervise();
    judge();
    return mReport;
}

bool FSupervisor::startProgram(std::string *why)
{
    FProgram program;
    program.command = const_cast<char **>(mOptions.command.data());
    program.input = mInput >= 0 ? mInput : mNull;
    program.output = mOutput.writeEnd() >= 0 ? mOutput.writeEnd() : mNull;
    program.errors = errorCapture()->writeEnd() >= 0 ? errorCapture()->writeEnd() : mNull;
    program.fileLimit = mOptions.fileLimit;
    if (!program.find(why))
        return false;
    if (!takePlace(false)) {
        *why = std::string("its folder can't take its place: ") + std::strerror(errno);
        return false;
    }
    mStart = now(CLOCK_MONOTONIC);
    mProgram = program.start(why);
    if (mProgram < 0 && !takePlace(true))
        *why += std::string("; the folder before can't come back: ") + std::strerror(errno);
    // The caller can remove what was replaced.
    if (mProgram >= 0 && !mOptions.place.empty())
        (void)!::send(mOptions.control, "started\n", 8, MSG_NOSIGNAL);
    return mProgram >= 0;
}

bool FSupervisor::takePlace(bool back)
{
    if (mOptions.place.empty())
        return true;
    const int parent = mOptions.parent;
    const char *prepared = mOptions.prepared.c_str(), *place = mOptions.place.c_str();
    // At once, so that a kill leaves one or the other whole.
    if (::syscall(SYS_renameat2, parent, prepared, parent, place, kExchange) == 0)
        return true;
    if (errno == ENOENT)
        return back ? ::renameat(parent, place, parent, prepared) == 0
                    : ::renameat(parent, prepared, parent, place) == 0;
    if (errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP && errno != EPERM)
        return false;
    // A file system that can't: in between nothing stands in the place.
    const std::string aside = mOptions.prepared + ".old";
    return ::renameat(parent, place, parent, aside.c_str()) == 0 &&
           ::renameat(parent, prepared, parent, place) == 0 &&
           ::renameat(parent, aside.c_str(), parent, prepared) == 0;
}

bool FSupervisor::prepare()
{
    const bool inDirectory = mOptions.folder >= 0 ? ::fchdir(mOptions.folder) == 0
                                                  : ::chdir(mOptions.directory.c_str()) == 0;
    const int error = errno;
    if (inDirectory || mOptions.recordFile[0] == '/')
        openRecordFolder();
    if (!inDirectory) {
        errno = error;
        mReport.set("not-started",
                    "cannot enter directory " + mOptions.directory + ": " + std::strerror(errno));
        return false;
    }
    if (mReport.recordFolder < 0 && !mOptions.recordFile.empty()) {
        mReport.set("not-started", "cannot open the folder of " + mOptions.recordFile + ": " +
                                       std::strerror(errno));
        return false;
    }
    mSignals = openSignals();
    if (mSignals < 0 || ::prctl(PR_SET_CHILD_SUBREAPER, 1) != 0) {
        mReport.set("not-started", std::string("cannot watch a program: ") + std::strerror(errno));
        return false;
    }
    readControl();
    if (mCause != FCause::Cancelled)
        return true;
    mReport.set("cancelled", "cancelled");
    return false;
}

void FSupervisor::openRecordFolder()
{
    std::string folder, name;
    splitPath(mOptions.recordFile, &folder, &name);
    // A slash at the end would follow a link.
    while (folder.size() > 1 && folder.back() == '/')
        folder.pop_back();
    mReport.recordFolder = ::open(folder.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

FOutputCapture *FSupervisor::errorCapture()
{
    return mOptions.stderrFile == mOptions.stdoutFile ? &mOutput : &mErrors;
}

bool FSupervisor::openFiles()
{
    // The numbers 0 to 2 are the program's, and the runner may have come without them.
    do
        mNull = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    while (mNull >= 0 && mNull <= 2);
    if (mNull < 0) {
        mReport.set("not-started", std::string("cannot open /dev/null: ") + std::strerror(errno));
        return false;
    }
    if (!mOptions.stdinFile.empty() && openInput() != 0) {
        mReport.set("not-started", "cannot open standard input " + mOptions.stdinFile + ": " +
                                       std::strerror(errno));
        return false;
    }
    const auto open = [this](FOutputCapture *capture, const std::string &file) {
        if (file.empty() || capture->writeEnd() >= 0 ||
            capture->open(file.c_str(), mOptions.captureLimit))
            return true;
        mReport.set("failed", "cannot write " + file + ": " + std::strerror(capture->error()));
        return false;
    };
    return open(&mOutput, mOptions.stdoutFile) && open(errorCapture(), mOptions.stderrFile);
}

int FSupervisor::openInput()
{
    // A pipe with a name must not hold the start up until somebody writes to it.
    mInput = ::open(mOptions.stdinFile.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    struct stat status = {};
    if (mInput < 0 || ::fstat(mInput, &status) != 0)
        return -1;
    if (S_ISDIR(status.st_mode)) {
        errno = EISDIR;
        return -1;
    }
    return ::fcntl(mInput, F_SETFL, 0);
}

void FSupervisor::supervise()
{
    while (reap()) {
        if (mProgram < 0 && mPhase == FPhase::Running && !mOptions.waitForAll)
            stop(FCause::Program, kLeftoverGrace);
        waitForEvent();
        checkTimes();
    }
    if (mOptions.waitForAll)
        mReport.seconds = double(now(CLOCK_MONOTONIC) - mStart) / double(kSecond);
    mOutput.finish();
    mErrors.finish();
    mReport.stdoutBytes = mOutput.total();
    mReport.stdoutOmitted = mOutput.omitted();
    mReport.stderrBytes = mErrors.total();
    mReport.stderrOmitted = mErrors.omitted();
}

bool FSupervisor::reap()
{
    bool someEnded = false;
    for (;;) {
        int status = 0;
        rusage usage = {};
        const pid_t pid = ::wait4(-1, &status, WNOHANG, &usage);
        if (pid < 0)
            return false;
        if (pid == 0)
            break;
        someEnded = true;
        for (const timeval &time : {usage.ru_utime, usage.ru_stime})
            mReport.cpuSeconds += double(time.tv_sec) + double(time.tv_usec) * 1e-6;
        mReport.peakMemoryKiB = std::max(mReport.peakMemoryKiB, usage.ru_maxrss);
        if (pid != mProgram)
            continue;
        mProgram = -1;
        mReport.seconds = double(now(CLOCK_MONOTONIC) - mStart) / double(kSecond);
        mReport.hasExitCode = WIFEXITED(status);
        mReport.exitCode = mReport.hasExitCode ? WEXITSTATUS(status) : 0;
        mReport.hasSignal = WIFSIGNALED(status);
        mReport.signal = mReport.hasSignal ? WTERMSIG(status) : 0;
    }
    // What a killed process had just started has come to us unseen.
    if (someEnded && mPhase == FPhase::Killing)
        killAll();
    return mTreeKnown || mProgram >= 0;
}

void FSupervisor::waitForEvent()
{
    pollfd events[] = {{mSignals, POLLIN, 0},
                       {mControlOpen ? mOptions.control : -1, POLLIN, 0},
                       {mOutput.readEnd(), POLLIN, 0},
                       {mErrors.readEnd(), POLLIN, 0}};
    timespec timeout = {};
    if (mDeadline != INT64_MAX) {
        const int64_t left = std::max<int64_t>(0, mDeadline - now(CLOCK_MONOTONIC));
        timeout.tv_sec = left / kSecond;
        timeout.tv_nsec = left % kSecond;
    }
    if (::ppoll(events, 4, mDeadline != INT64_MAX ? &timeout : nullptr, nullptr) <= 0)
        return;
    if (events[0].revents)
        readSignals();
    if (events[1].revents)
        readControl();
    if (events[2].revents)
        mOutput.read();
    if (events[3].revents)
        mErrors.read();
}

void FSupervisor::checkTimes()
{
    if (mDeadline == INT64_MAX || now(CLOCK_MONOTONIC) < mDeadline)
        return;
    if (mPhase == FPhase::Running)
        stop(FCause::TimeLimit, mOptions.grace);
    else
        killAll();
}

void FSupervisor::readControl()
{
    pollfd event = {mOptions.control, POLLIN, 0};
    if (::poll(&event, 1, 0) <= 0)
        return;
    char bytes[64];
    const ssize_t got = ::read(mOptions.control, bytes, sizeof bytes);
    if (got < 0 && (errno == EINTR || errno == EAGAIN))
        return;
    if (got <= 0)
        mControlOpen = false;
    if (got <= 0 || std::memchr(bytes, 'c', size_t(got)))
        stop(FCause::Cancelled, mOptions.grace);
}

void FSupervisor::readSignals()
{
    signalfd_siginfo info = {};
    while (::read(mSignals, &info, sizeof info) == ssize_t(sizeof info))
        if (info.ssi_signo != SIGCHLD)
            stop(FCause::Cancelled, mOptions.grace);
}

void FSupervisor::stop(FCause cause, double graceSeconds)
{
    if (mPhase != FPhase::Running)
        return;
    mCause = cause;
    mPhase = FPhase::Terminating;
    mDeadline = later(graceSeconds);
    const int left = signalDescendants(SIGTERM);
    if (left < 0 && mProgram >= 0)
        ::kill(-mProgram, SIGTERM);
    if (cause == FCause::Program)
        mReport.processesEnded = std::max(0, left);
}

void FSupervisor::killAll()
{
    mPhase = FPhase::Killing;
    mDeadline = later(1); // for what may not be killed yet, such as a program with other rights
    if (mProgram >= 0)
        ::kill(-mProgram, SIGKILL); // the group at once, however fast it multiplies
    mTreeKnown = signalDescendants(SIGKILL) >= 0;
}

const std::string *FSupervisor::missingFile() const
{
    struct stat status = {};
    for (const std::string &file : mOptions.expected)
        if (::stat(file.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
            return &file;
    return nullptr;
}

void FSupervisor::judge()
{
    const std::string *missing = nullptr;
    if (mCause == FCause::Cancelled)
        mReport.set("cancelled", "cancelled");
    else if (mCause == FCause::TimeLimit)
        mReport.set("timeout", "time limit of " + secondsText(mOptions.timeLimit) + " s");
    else if (mOutput.error() != 0)
        mReport.set("failed",
                    "cannot write " + mOptions.stdoutFile + ": " + std::strerror(mOutput.error()));
    else if (mErrors.error() != 0)
        mReport.set("failed",
                    "cannot write " + mOptions.stderrFile + ": " + std::strerror(mErrors.error()));
    else if (mReport.hasSignal)
        mReport.set("failed", "signal " + std::to_string(mReport.signal));
    else if (mReport.exitCode != 0)
        mReport.set("failed", "exit code " + std::to_string(mReport.exitCode));
    else if ((missing = missingFile()))
        mReport.set("failed", "result file " + *missing + " missing");
    else
        mReport.set("finished", "finished");
}

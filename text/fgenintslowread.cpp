// SPDX-License-Identifier: Apache-2.0
#include "fgenintslowread.h"

#include "fgenintreadpass.h"

#include <QDataStream>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <limits>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ; // NOLINT(readability-identifier-naming): the C library's name

// Not in a namespace, else the containers of Qt would not find them.
static QDataStream &operator<<(QDataStream &out, const FGenIntRule &r)
{
    return out << QByteArray::fromStdString(r.name) << r.line << r.column
               << QByteArray::fromStdString(r.anchor) << r.first << r.average << r.averageRows;
}

static QDataStream &operator>>(QDataStream &in, FGenIntRule &r)
{
    QByteArray name, anchor;
    in >> name >> r.line >> r.column >> anchor >> r.first >> r.average >> r.averageRows;
    r.name = name.toStdString();
    r.anchor = anchor.toStdString();
    return in;
}

static QDataStream &operator<<(QDataStream &out, const FGenIntReading &r)
{
    return out << r.rule << r.value << r.cell << r.line << r.columnFirst << r.columnLast << r.notes;
}

static QDataStream &operator>>(QDataStream &in, FGenIntReading &r)
{
    return in >> r.rule >> r.value >> r.cell >> r.line >> r.columnFirst >> r.columnLast >> r.notes;
}

namespace {
constexpr quint32 kVersion = 1;

/// Sends and receives within a time, without a signal if the other side is gone.
class FChannel
{
public:
    explicit FChannel(int fd, int timeLimitMs = -1)
        : mFd(fd)
        , mTimeLimitMs(timeLimitMs)
    {
        mClock.start();
    }
    bool send(const void *data, qint64 size)
    {
        const auto *bytes = static_cast<const char *>(data);
        while (size > 0) {
            const ssize_t n =
                wait(POLLOUT) ? ::send(mFd, bytes, size_t(size), MSG_NOSIGNAL | MSG_DONTWAIT) : 0;
            if (n == 0 || (n < 0 && errno != EINTR && errno != EAGAIN))
                return false;
            bytes += std::max<ssize_t>(n, 0);
            size -= std::max<ssize_t>(n, 0);
        }
        return true;
    }
    /// Appends what is there, or what comes next; false at the end or when the time is up.
    bool receive(QByteArray *data)
    {
        char buffer[1 << 16];
        ssize_t n;
        do
            n = wait(POLLIN) ? ::read(mFd, buffer, sizeof buffer) : 0;
        while (n < 0 && errno == EINTR);
        if (n > 0)
            data->append(buffer, int(n));
        return n > 0;
    }

private:
    bool wait(short what)
    {
        for (;;) {
            const qint64 left = mTimeLimitMs < 0 ? -1 : mTimeLimitMs - mClock.elapsed();
            if (mTimeLimitMs >= 0 && left <= 0)
                return false;
            pollfd waiting = {mFd, what, 0};
            const int ready = ::poll(&waiting, 1, int(left));
            if (ready > 0)
                return true;
            if (ready == 0 || errno != EINTR)
                return false;
        }
    }
    int mFd;
    int mTimeLimitMs;
    QElapsedTimer mClock;
};

/// turnbuckle-reader beside this program, started on one end of a socket.
class FReaderProcess
{
public:
    FReaderProcess()
    {
        const QByteArray program = QFile::encodeName(
            QFileInfo(QFile::symLinkTarget(QStringLiteral("/proc/self/exe"))).path() +
            QStringLiteral("/turnbuckle-reader"));
        int ends[2];
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
            return;
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[1], 0);
        char *arguments[] = {const_cast<char *>(program.constData()), nullptr};
        if (::posix_spawn(&mPid, program.constData(), &actions, nullptr, arguments, environ) != 0)
            mPid = -1;
        posix_spawn_file_actions_destroy(&actions);
        ::close(ends[1]);
        mFd = ends[0];
    }
    ~FReaderProcess()
    {
        if (mFd >= 0)
            ::close(mFd);
        if (mPid <= 0)
            return;
        ::kill(mPid, SIGKILL);
        while (::waitpid(mPid, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
    FReaderProcess(const FReaderProcess &) = delete;
    FReaderProcess &operator=(const FReaderProcess &) = delete;
    bool isStarted() const { return mPid > 0; }
    int fd() const { return mFd; }

private:
    pid_t mPid = -1;
    int mFd = -1;
};

template <class U>
bool serveAs(const FGenIntText &text, const QVector<FGenIntRule> &rules,
             const FGenIntColumns &columns, bool countLines, int first, FChannel *channel)
{
    FGenIntReadPass<U> pass(text, rules, columns);
    pass.setCountLines(countLines);
    pass.allowLongSearches();
    pass.start(std::numeric_limits<int>::max()); // who waits keeps the time
    FGenIntReading reading;
    for (size_t i = size_t(first); i < pass.order().size(); ++i) {
        if (pass.evaluate(pass.order()[i], &reading) != FGenIntReadPass<U>::Done)
            return true;
        QByteArray data;
        QDataStream out(&data, QIODevice::WriteOnly);
        out << reading;
        if (!channel->send(data.constData(), data.size()))
            return true;
    }
    return true;
}
} // namespace

QVector<FGenIntReading> FGenIntSlowRead::read(const FGenIntText &text,
                                              const QVector<FGenIntRule> &rules,
                                              const FGenIntColumns &columns, bool countLines,
                                              int first, int timeLimitMs, bool *started)
{
    QVector<FGenIntReading> readings;
    const FReaderProcess process;
    *started = process.isStarted();
    if (!*started)
        return readings;
    FChannel channel(process.fd(), timeLimitMs);
    const qint64 size = text.size() * (text.isWide() ? 2 : 1);
    QByteArray task;
    QDataStream out(&task, QIODevice::WriteOnly);
    out << kVersion << rules << columns.numbers << columns.spacesAndTabs << columns.regExp
        << countLines << first << text.isWide() << size;
    const quint32 length = quint32(task.size());
    const void *units = text.isWide() ? static_cast<const void *>(text.wide()) : text.bytes();
    if (!channel.send(&length, sizeof length) || !channel.send(task.constData(), task.size()) ||
        !channel.send(units, size))
        return readings;
    QByteArray answer;
    while (readings.size() < rules.size() - first && channel.receive(&answer)) {
        QDataStream in(answer);
        qint64 used = 0;
        for (FGenIntReading reading;; used = in.device()->pos()) {
            in.startTransaction();
            in >> reading;
            if (!in.commitTransaction())
                break;
            readings.append(reading);
        }
        answer.remove(0, int(used));
    }
    return readings;
}

bool FGenIntSlowRead::serve(int fd)
{
    FChannel channel(fd);
    QByteArray data;
    const auto fetch = [&](qint64 size) {
        while (data.size() < size)
            if (!channel.receive(&data))
                return false;
        return true;
    };
    quint32 length = 0;
    if (!fetch(sizeof length))
        return false;
    memcpy(&length, data.constData(), sizeof length);
    data.remove(0, sizeof length);
    if (length > (1U << 30) || !fetch(length))
        return false;
    QDataStream in(data);
    quint32 version = 0;
    QVector<FGenIntRule> rules;
    FGenIntColumns columns;
    bool countLines = true, isWide = false;
    int first = 0;
    qint64 size = 0;
    in >> version;
    if (version != kVersion)
        return false;
    in >> rules >> columns.numbers >> columns.spacesAndTabs >> columns.regExp >> countLines >>
        first >> isWide >> size;
    if (in.status() != QDataStream::Ok || first < 0 || size < 0 || size > (qint64(1) << 30))
        return false;
    data.remove(0, int(length));
    if (!fetch(size))
        return false;
    if (isWide) {
        const auto text = FGenIntText::fromString(
            QString(reinterpret_cast<const QChar *>(data.constData()), int(size / 2)));
        return serveAs<char16_t>(*text, rules, columns, countLines, first, &channel);
    }
    const auto text = FGenIntText::fromBytes(data.toStdString());
    if (text->isWide())
        return serveAs<char16_t>(*text, rules, columns, countLines, first, &channel);
    return serveAs<uchar>(*text, rules, columns, countLines, first, &channel);
}

// SPDX-License-Identifier: Apache-2.0
#include "fgenintreadercore.h"

#include "fgenintcells.h"
#include "fgenintreadpass.h"

#include <QDataStream>
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <limits>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

FGenIntReading givenUp(int rule)
{
    FGenIntReading reading;
    reading.rule = rule;
    reading.value = std::numeric_limits<double>::quiet_NaN();
    reading.notes << QStringLiteral("read took too long");
    return reading;
}

bool writeAll(int fd, const QByteArray &data)
{
    for (int done = 0; done < data.size();) {
        const ssize_t n =
            ::write(fd, data.constData() + done, static_cast<size_t>(data.size() - done));
        if (n < 0 && errno != EINTR)
            return false;
        done += n > 0 ? static_cast<int>(n) : 0;
    }
    return true;
}

QByteArray pack(const FGenIntReading &r)
{
    QByteArray data;
    QDataStream out(&data, QIODevice::WriteOnly);
    out << r.rule << r.value << r.cell << r.line << r.columnFirst << r.columnLast << r.notes;
    return data;
}

bool unpack(QDataStream &in, FGenIntReading *r)
{
    in.startTransaction();
    in >> r->rule >> r->value >> r->cell >> r->line >> r->columnFirst >> r->columnLast >> r->notes;
    return in.commitTransaction();
}

/// Collects what arrives within the time.
QByteArray receive(int fd, int timeLimitMs)
{
    QByteArray data;
    QElapsedTimer clock;
    clock.start();
    char buffer[1 << 16];
    for (;;) {
        const qint64 left = timeLimitMs - clock.elapsed();
        pollfd waiting = {fd, POLLIN, 0};
        const int ready = left > 0 ? ::poll(&waiting, 1, static_cast<int>(left)) : 0;
        if (ready < 0 && errno == EINTR)
            continue;
        const ssize_t n = ready > 0 ? ::read(fd, buffer, sizeof buffer) : 0;
        if (n <= 0)
            return data;
        data.append(buffer, static_cast<int>(n));
    }
}

/// Reads the rules from \p done on in a child process: the expression engine cannot be interrupted,
/// a process can be ended.
template <class U>
void readGuarded(FGenIntReadPass<U> &pass, int timeLimitMs, QVector<FGenIntReading> *readings)
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return;
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(ends[0]);
        pass.allowLongSearches();
        FGenIntReading reading;
        for (size_t i = static_cast<size_t>(readings->size()); i < pass.order().size(); ++i)
            if (pass.evaluate(pass.order()[i], &reading) != FGenIntReadPass<U>::Done ||
                !writeAll(ends[1], pack(reading)))
                break;
        ::_exit(0);
    }
    ::close(ends[1]);
    if (child > 0) {
        const QByteArray data = receive(ends[0], timeLimitMs);
        ::kill(child, SIGKILL);
        while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
        }
        QDataStream in(data);
        FGenIntReading reading;
        while (unpack(in, &reading))
            readings->append(reading);
    }
    ::close(ends[0]);
}

template <class U>
QVector<FGenIntReading> readAs(const FGenIntText &text, const QVector<FGenIntRule> &rules,
                               const FGenIntColumns &columns, int timeLimitMs, bool countLines)
{
    FGenIntReadPass<U> pass(text, rules, columns);
    pass.setCountLines(countLines);
    pass.start(timeLimitMs);
    QElapsedTimer clock;
    clock.start();
    QVector<FGenIntReading> readings;
    readings.reserve(rules.size());
    for (int rule : pass.order()) {
        FGenIntReading reading;
        const auto outcome = pass.evaluate(rule, &reading);
        if (outcome == FGenIntReadPass<U>::NeedsLongSearch) {
            // The child's findings about the text would be lost, so it gets nothing left to find.
            text.examine(0, text.size());
            if (text.isPlain()) {
                const qint64 left = std::max<qint64>(0, timeLimitMs - clock.elapsed());
                readGuarded(pass, static_cast<int>(left), &readings);
            }
        }
        if (outcome != FGenIntReadPass<U>::Done)
            break;
        readings.append(reading);
    }
    while (readings.size() < rules.size())
        readings.append(givenUp(pass.order()[static_cast<size_t>(readings.size())]));
    return readings;
}
} // namespace

FGenIntReaderCore::FGenIntReaderCore(const FGenIntText &text)
    : mText(text)
{
}

QVector<FGenIntReading> FGenIntReaderCore::read(const QVector<FGenIntRule> &rules,
                                                const FGenIntColumns &columns) const
{
    if (mText.isEmpty() || rules.isEmpty())
        return {};
    if (!mText.isWide()) {
        const auto readings = readAs<uchar>(mText, rules, columns, mTimeLimitMs, mCountLines);
        if (mText.isPlain())
            return readings;
        mText.widen();
    }
    return readAs<char16_t>(mText, rules, columns, mTimeLimitMs, mCountLines);
}

int FGenIntReaderCore::getAnchorPos(const FGenIntRule &rule, const QString &text)
{
    const QString anchor = QString::fromStdString(rule.anchor);
    if (anchor.isEmpty())
        return -1;
    return rule.first ? text.indexOf(anchor, 0, Qt::CaseInsensitive)
                      : text.lastIndexOf(anchor, -1, Qt::CaseInsensitive);
}

void FGenIntReaderCore::parseLine(int &position, int &length, QRegExp &separator, int line,
                                  const QString &anchor, const QString &text, int column,
                                  bool numberMode)
{
    position = 0;
    length = 0;
    if (numberMode)
        separator.setPattern(FGenIntSeparator::pattern(FGenIntColumns()));
    if (line == 0 && !anchor.isEmpty())
        position = text.indexOf(anchor, 0, Qt::CaseInsensitive) + anchor.size();
    int cursor = position;
    for (int i = 0; i < column; ++i) {
        position = text.indexOf(separator, cursor);
        if (position < 0)
            return;
        const int matched = separator.matchedLength();
        cursor = position = position + matched;
        if (matched == 0)
            break; // it matches the same nothing again and again
    }
    const int found = text.indexOf(separator, cursor);
    if (numberMode) {
        position = found < 0 ? position : found;
        length = found < 0 ? 0 : separator.matchedLength();
    } else {
        length = (found < 0 ? text.size() : found) - position;
    }
}

void FGenIntReaderCore::sortRules(QVector<FGenIntRule> &rules, const QString &text)
{
    if (text.isEmpty())
        return;
    const auto held = FGenIntText::fromString(text);
    const FGenIntReadPass<char16_t> pass(*held, rules, FGenIntColumns());
    QVector<FGenIntRule> sorted;
    for (int index : pass.order())
        sorted.append(rules[index]);
    rules = sorted;
}

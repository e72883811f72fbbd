// SPDX-License-Identifier: Apache-2.0
#include "frunnerlink.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>
#include <cerrno>
#include <csignal>
#include <poll.h>
#include <spawn.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace {
using Words = std::vector<std::string>;

std::string fakesim() { return F_BIN_DIR "/fakesim"; }

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void put(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
}

/// A process that is there and no zombie.
bool isAlive(pid_t pid)
{
    const QByteArray status = contentOf(QStringLiteral("/proc/%1/stat").arg(pid));
    return !status.isEmpty() && !status.mid(status.lastIndexOf(')')).startsWith(") Z");
}

/// Children of this process, without those that have ended.
int childrenLeft()
{
    while (::waitpid(-1, nullptr, WNOHANG) > 0) {
    }
    return contentOf(QStringLiteral("/proc/self/task/%1/children").arg(::getpid())).count(' ');
}

/// One run by the real runner, started for it alone or at hand already.
class Run
{
public:
    explicit Run(bool served = false)
        : mServed(served)
    {
        QVERIFY(mFolder.isValid());
    }
    ~Run()
    {
        if (mControl >= 0)
            finish();
        FRunnerLink::giveBack(std::move(mLink));
    }

    QString path(const char *name) const { return mFolder.filePath(QString::fromUtf8(name)); }
    pid_t pidIn(const char *name) const { return contentOf(path(name)).trimmed().toInt(); }

    Words line(const Words &options, const Words &command) const
    {
        Words words{F_BIN_DIR "/turnbuckle-runner",
                    "--directory",
                    directory(),
                    "--control",
                    "3",
                    "--record",
                    "run.json",
                    "--stdout",
                    "stdout.txt",
                    "--stderr",
                    "stderr.txt",
                    "--grace",
                    "0.1"};
        words.insert(words.end(), options.begin(), options.end());
        words.push_back("--");
        words.insert(words.end(), command.begin(), command.end());
        return words;
    }

    /// Returns the runner's number, -1 when it was at hand.
    static pid_t spawn(Words words, int control)
    {
        std::vector<char *> pointers;
        for (std::string &word : words)
            pointers.push_back(word.data());
        pointers.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, control, 3);
        pid_t pid = -1;
        ::posix_spawn(&pid, pointers[0], &actions, nullptr, pointers.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        return pid;
    }

    void start(const Words &options, const Words &command)
    {
        int sockets[2];
        QCOMPARE(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets), 0);
        mControl = sockets[0];
        if (mServed) {
            std::string why;
            mLink = FRunnerLink::take();
            QVERIFY2(mLink->start(line(options, command), {}, {sockets[1]}, &why), why.c_str());
        } else {
            mRunner = spawn(line(options, command), sockets[1]);
            QVERIFY(mRunner > 0);
        }
        ::close(sockets[1]);
    }

    void cancel() { QCOMPARE(::send(mControl, "c", 1, MSG_NOSIGNAL), ssize_t(1)); }

    /// Waits for the end; the report, checked against the record on disk.
    QJsonObject finish()
    {
        QByteArray text;
        char buffer[4096];
        pollfd event = {mControl, POLLIN, 0};
        while (::poll(&event, 1, 20000) > 0) {
            const ssize_t got = ::read(mControl, buffer, sizeof buffer);
            if (got <= 0)
                break;
            text.append(buffer, int(got));
        }
        ::close(mControl);
        mControl = -1;
        if (mRunner > 0)
            ::waitpid(mRunner, &mStatus, 0);
        mReport = QJsonDocument::fromJson(text).object();
        mSame = contentOf(path("run.json")) == text && !text.isEmpty();
        return mReport;
    }

    QString outcome(const Words &options, const Words &command)
    {
        start(options, command);
        finish();
        return mReport["state"].toString() + ": " + mReport["reason"].toString();
    }

    std::string directory() const { return mAt.empty() ? mFolder.path().toStdString() : mAt; }
    void setDirectory(const std::string &folder) { mAt = folder; }
    const QJsonObject &report() const { return mReport; }
    bool recordIsReport() const { return mSame; }
    int status() const { return mStatus; }
    pid_t runner() const { return mRunner; }
    QStringList left() const
    {
        return QDir(mFolder.path()).entryList({QStringLiteral("*.tmp")}, QDir::Files);
    }

private:
    QTemporaryDir mFolder;
    std::string mAt;
    QJsonObject mReport;
    bool mServed, mSame = false;
    int mControl = -1, mStatus = -1;
    pid_t mRunner = -1;
    std::unique_ptr<FRunnerLink> mLink;
};
} // namespace

class TestRunner : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("TURNBUCKLE_RUNNER", F_BIN_DIR "/turnbuckle-runner");
        // Runners whose caller is killed come to us and can be waited for.
        QCOMPARE(::prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
    }

    void tellsTheStateInWords_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QStringList>("command");
        QTest::addColumn<QString>("expected");
        const QString sim = QString::fromStdString(fakesim());
        const auto row = [](const char *name, const QStringList &options,
                            const QStringList &command, const QString &expected) {
            QTest::newRow(name) << options << command << expected;
        };
        row("finished", {}, {sim, "exit", "0"}, "finished: finished");
        row("exit code", {}, {sim, "exit", "3"}, "failed: exit code 3");
        row("signal", {}, {sim, "crash", "6"}, "failed: signal 6");
        row("killed", {}, {sim, "crash", "9"}, "failed: signal 9");
        row("time limit", {"--time-limit", "0.2"}, {sim, "hang", "pid"},
            "timeout: time limit of 0.2 s");
        row("no time limit reached", {"--time-limit", "20"}, {sim, "exit", "0"},
            "finished: finished");
        row("result there", {"--expect", "r", "--expect", "s/t"}, {"sh", "-c", "mkdir s; >r; >s/t"},
            "finished: finished");
        row("result missing", {"--expect", "made", "--expect", "r"}, {"sh", "-c", ">made"},
            "failed: result file r missing");
        row("result is a folder", {"--expect", "r"}, {"mkdir", "r"},
            "failed: result file r missing");
        row("exit code before missing", {"--expect", "r"}, {sim, "exit", "1"},
            "failed: exit code 1");
        row("not in PATH", {}, {"no-such-program"},
            "not-started: cannot start no-such-program: not found");
        row("no such file", {}, {"./no/program"},
            "not-started: cannot start ./no/program: not found");
        row("not executable", {}, {"./data.txt"},
            "not-started: cannot start ./data.txt: not executable");
        row("folder", {}, {"./folder"}, "not-started: cannot start ./folder: is a directory");
        row("no interpreter", {}, {"./script"},
            "not-started: cannot start ./script: its interpreter is not found");
        row("no standard input", {"--stdin", "in"}, {sim, "exit", "0"},
            "not-started: cannot open standard input in: No such file or directory");
        row("file limit", {"--file-limit", "1000"}, {sim, "write", "big", "100000"},
            "failed: signal 25");
        row("below the file limit", {"--file-limit", "1000"}, {sim, "write", "small", "1000"},
            "finished: finished");
        row("output on a full disk", {"--stdout", "/dev/full"}, {sim, "flood", "1000000"},
            "failed: cannot write /dev/full: No space left on device");
    }

    void tellsTheStateInWords()
    {
        QFETCH(QStringList, options);
        QFETCH(QStringList, command);
        QFETCH(QString, expected);
        const auto words = [](const QStringList &list) {
            Words all;
            for (const QString &text : list)
                all.push_back(text.toStdString());
            return all;
        };
        for (const bool served : {false, true}) {
            Run run(served);
            put(run.path("data.txt"), "no program\n");
            put(run.path("script"), "#!/no/such/interpreter\n");
            QVERIFY(QFile::setPermissions(run.path("script"), QFile::ReadOwner | QFile::ExeOwner));
            QVERIFY(QDir().mkdir(run.path("folder")));
            QCOMPARE(run.outcome(words(options), words(command)), expected);
            QVERIFY(run.recordIsReport());
            QCOMPARE(run.left(), QStringList());
            const QJsonObject report = run.report();
            const QString reason = report["reason"].toString();
            QCOMPARE(report["exitCode"].isDouble(),
                     reason == "finished" || reason.startsWith("exit code") ||
                         reason.startsWith("result file") || reason.startsWith("cannot write"));
            if (reason.startsWith("signal "))
                QCOMPARE(QString::number(report["signal"].toInt()), reason.mid(7));
        }
    }

    void recordTellsWhatRan()
    {
        Run run;
        qputenv("LD_SOME_WORD", "loud");
        run.outcome({"--computation", "a \"name\"", "--design", "d\xff", "--variable", "HOME"},
                    {fakesim(), "exit", "0", "\t"});
        qunsetenv("LD_SOME_WORD");
        const QJsonObject report = run.report();
        const QJsonObject environment = report["environment"].toObject();
        QCOMPARE(environment["LD_SOME_WORD"].toString(), QString("loud"));
        QCOMPARE(environment["HOME"].toString(), qEnvironmentVariable("HOME"));
        QVERIFY(!environment.contains("PWD"));
        QCOMPARE(report["computation"].toString(), QString("a \"name\""));
        QCOMPARE(report["design"].toString(), QString("d") + QChar(QChar::ReplacementCharacter));
        QCOMPARE(report["directory"].toString().toStdString(), run.directory());
        QCOMPARE(report["command"].toArray().last().toString(), QString("\t"));
        const auto start = QDateTime::fromString(report["start"].toString(), Qt::ISODateWithMs);
        QVERIFY(std::abs(start.msecsTo(QDateTime::currentDateTimeUtc())) < 60000);
        QVERIFY(report["peakMemoryKiB"].toInt() > 0);
    }

    void recordComesLastAndWhole()
    {
        Run run;
        put(run.path("run.json"), "the old record");
        // The program itself sees no record of its own run.
        run.start({}, {"sh", "-c", "cp run.json seen; cat >/dev/null"});
        const QJsonObject report = run.finish();
        QCOMPARE(report["state"].toString(), QString("finished"));
        QCOMPARE(contentOf(run.path("seen")), QByteArray("the old record"));
        QVERIFY(run.recordIsReport());
        QCOMPARE(run.status(), 0);
    }

    void endsTheWholeTree_data()
    {
        QTest::addColumn<QString>("how");
        QTest::addColumn<QString>("expected");
        QTest::newRow("time limit") << "limit"
                                    << "timeout: time limit of 0.5 s";
        QTest::newRow("cancel") << "cancel"
                                << "cancelled: cancelled";
        QTest::newRow("own end") << "end"
                                 << "finished: finished";
        QTest::newRow("SIGTERM to the runner") << "term"
                                               << "cancelled: cancelled";
    }

    void endsTheWholeTree()
    {
        QFETCH(QString, how);
        QFETCH(QString, expected);
        Run run;
        Words options;
        if (how == "limit")
            options = {"--time-limit", "0.5"};
        // A program in the foreground, a child in its group, and a daemon that left the group.
        run.start(options, {"sh", "-c",
                            fakesim() + " stubborn child & " + fakesim() + " fork-hang daemon " +
                                (how == "end" ? "exit" : "hang") +
                                (how == "end" ? "; until [ -s child ]; do :; done" : "")});
        QTRY_VERIFY(run.pidIn("daemon") > 0 && run.pidIn("child") > 0);
        const pid_t daemon = run.pidIn("daemon"), child = run.pidIn("child");
        if (how == "cancel")
            run.cancel();
        else if (how == "term")
            QCOMPARE(::kill(run.runner(), SIGTERM), 0);
        const QJsonObject report = run.finish();
        QVERIFY(!isAlive(daemon));
        QVERIFY(!isAlive(child));
        QCOMPARE(report["state"].toString() + ": " + report["reason"].toString(), expected);
        QVERIFY(run.recordIsReport());
    }

    void endsWithItsCaller_data()
    {
        QTest::addColumn<bool>("served");
        QTest::newRow("runner of its own") << false;
        QTest::newRow("runner at hand") << true;
    }

    void endsWithItsCaller()
    {
        QFETCH(bool, served);
        const int before = childrenLeft();
        Run run;
        const pid_t caller = ::fork();
        if (caller == 0) {
            int sockets[2];
            std::string why;
            const Words line = run.line({}, {fakesim(), "fork-hang", "daemon", "hang"});
            FRunnerLink link;
            if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0 ||
                (served ? !link.start(line, {}, {sockets[1]}, &why)
                        : Run::spawn(line, sockets[1]) < 0))
                ::_exit(1);
            ::close(sockets[1]);
            for (;;)
                ::pause();
        }
        QTRY_VERIFY(run.pidIn("daemon") > 0);
        const pid_t daemon = run.pidIn("daemon");
        QVERIFY(isAlive(daemon));
        QCOMPARE(::kill(caller, SIGKILL), 0);
        QTRY_VERIFY(QFile::exists(run.path("run.json")));
        QVERIFY(!isAlive(daemon));
        const auto report = QJsonDocument::fromJson(contentOf(run.path("run.json"))).object();
        QCOMPARE(report["state"].toString(), QString("cancelled"));
        // Nothing stays: not the caller, not its runners.
        QTRY_COMPARE(childrenLeft(), before);
    }

    void knowsNothingOfEarlierRuns()
    {
        const QString good = "finished: finished";
        {
            Run large(true);
            QCOMPARE(
                large.outcome({}, {"sh", "-c", "head -c 80000000 /dev/zero | tail -c 80000000 >x"}),
                good);
            QVERIFY(large.report()["peakMemoryKiB"].toInt() > 60000);
        }
        // The runner at hand was told to end while nothing ran; that was not about the next run.
        const auto runners =
            contentOf(QStringLiteral("/proc/self/task/%1/children").arg(::getpid()))
                .trimmed()
                .split(' ');
        QCOMPARE(runners.size(), 1);
        QCOMPARE(::kill(runners[0].toInt(), SIGTERM), 0);
        Run small(true);
        QCOMPARE(small.outcome({}, {"true"}), good);
        QVERIFY(small.report()["peakMemoryKiB"].toInt() > 100);
        QVERIFY(small.report()["peakMemoryKiB"].toInt() < 40000);
        QVERIFY(isAlive(runners[0].toInt()));
    }

    void keepsHeadAndTailOfLongOutput_data()
    {
        QTest::addColumn<int>("size");
        QTest::addColumn<int>("limit");
        QTest::newRow("nothing") << 0 << 1000;
        QTest::newRow("just fits") << 1000 << 1000;
        QTest::newRow("one more") << 1001 << 1000;
        QTest::newRow("flood") << 3000000 << 70001;
        QTest::newRow("no limit") << 300000 << 0;
    }

    void keepsHeadAndTailOfLongOutput()
    {
        QFETCH(int, size);
        QFETCH(int, limit);
        QByteArray all;
        for (int line = 1; all.size() < size; ++line)
            all += "line " + QByteArray::number(line) + "\n";
        all.truncate(size);
        QByteArray expected = all;
        const int head = limit / 2, omitted = limit > 0 ? std::max(0, size - limit) : 0;
        if (omitted > 0)
            expected = all.left(head) + (all[head - 1] == '\n' ? "[" : "\n[") +
                       QByteArray::number(omitted) + " bytes left out]\n" + all.right(limit - head);
        Run run;
        QCOMPARE(run.outcome({"--capture-limit", std::to_string(limit)},
                             {fakesim(), "flood", std::to_string(size)}),
                 QString("finished: finished"));
        for (const char *name : {"stdout", "stderr"}) {
            QVERIFY(contentOf(run.path((std::string(name) + ".txt").c_str())) == expected);
            QCOMPARE(run.report()[QString(name) + "Bytes"].toInt(), size);
            QCOMPARE(run.report()[QString(name) + "Omitted"].toInt(), omitted);
        }
    }

    void floodsStayInLittleMemory()
    {
        Run run(true);
        run.start({"--capture-limit", "30000000"}, {fakesim(), "flood", "50000000"});
        QByteArrayList pids;
        int most = 0; // KiB
        for (const QByteArray &pid :
             contentOf(QStringLiteral("/proc/self/task/%1/children").arg(::getpid()))
                 .trimmed()
                 .split(' '))
            pids << pid;
        run.finish();
        for (const QByteArray &pid : pids) {
            const QByteArray status = contentOf("/proc/" + pid + "/status");
            const int at = status.indexOf("VmHWM:");
            if (at >= 0)
                most = std::max(most, status.mid(at + 6, 20).simplified().split(' ')[0].toInt());
        }
        QVERIFY2(most > 0 && most < 16 * 1024, qPrintable(QString::number(most)));
        QCOMPARE(run.report()["stdoutOmitted"].toInt(), 20000000);
    }

    void bothOutputsMayShareAFile()
    {
        Run run;
        QCOMPARE(run.outcome({"--stderr", "stdout.txt"},
                             {"sh", "-c", "echo one; echo two >&2; echo three"}),
                 QString("finished: finished"));
        QCOMPARE(contentOf(run.path("stdout.txt")), QByteArray("one\ntwo\nthree\n"));
    }

    void handsOverStandardInput()
    {
        Run run;
        put(run.path("in"), "some\nlines");
        QCOMPARE(run.outcome({"--stdin", "in"}, {fakesim(), "echo-stdin", "out"}),
                 QString("finished: finished"));
        QCOMPARE(contentOf(run.path("out")), QByteArray("some\nlines"));
        Run without;
        without.outcome({}, {fakesim(), "echo-stdin", "out"});
        QVERIFY(QFile::exists(without.path("out")));
        QCOMPARE(contentOf(without.path("out")), QByteArray());
    }

    void programHasNoFilesOfOthers()
    {
        Run run;
        QCOMPARE(run.outcome({}, {"sh", "-c", "ls /proc/self/fd | sort -n | tr '\\n' ' '"}),
                 QString("finished: finished"));
        // The fourth is the folder that ls reads.
        QCOMPARE(contentOf(run.path("stdout.txt")), QByteArray("0 1 2 3 "));
    }

    void fullDiskLeavesNoHalfRecord()
    {
        Run run;
        const std::string folder = run.directory() + "/small";
        QCOMPARE(::mkdir(folder.c_str(), 0755), 0);
        if (::mount("tmpfs", folder.c_str(), "tmpfs", 0, "size=64k") != 0)
            QSKIP("a small file system can't be mounted here", 0);
        run.setDirectory(folder);
        run.start({}, {fakesim(), "flood", "300000"});
        const QJsonObject report = run.finish();
        const QStringList left = QDir(run.path("small")).entryList(QDir::Files);
        ::umount2(folder.c_str(), MNT_DETACH);
        QCOMPARE(report["state"].toString(), QString("failed"));
        QCOMPARE(report["reason"].toString(),
                 QString("cannot write run.json: No space left on device"));
        QCOMPARE(left, QStringList({"stderr.txt", "stdout.txt"}));
    }

    void wrongUsage()
    {
        Run run;
        const auto status = [&](const Words &words) {
            Words line{F_BIN_DIR "/turnbuckle-runner"};
            line.insert(line.end(), words.begin(), words.end());
            int result = -1;
            ::waitpid(Run::spawn(line, 2), &result, 0);
            return WIFEXITED(result) ? WEXITSTATUS(result) : -1;
        };
        QCOMPARE(status({}), 2);
        QCOMPARE(status({"--directory", "/", "--control", "3", "--"}), 2);
        QCOMPARE(status({"--directory", "/", "--control", "x", "--", "true"}), 2);
        QCOMPARE(status({"--directory", "/", "--time-limit", "-1", "--", "true"}), 2);
    }
};

QTEST_GUILESS_MAIN(TestRunner)
#include "tst_runner.moc"

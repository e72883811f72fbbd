// SPDX-License-Identifier: Apache-2.0
#include "fsafefile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
/// Which step fails, and how. Removing files works always, as it does on a full disk.
struct Fault
{
    int failAt = 0; // counted from 1 over all steps, 0 for none
    bool forGood = false;
    int error = EIO;
    bool shortWrites = false;
    bool noExchange = false;
    int steps = 0;
    QByteArray kind; // of the step that failed first
    bool hit(const char *step)
    {
        ++steps;
        const bool now = steps == failAt;
        if (now)
            kind = step;
        if (!now && !(forGood && kind == step))
            return false;
        errno = error;
        return true;
    }
};
Fault sFault;

const FFileCalls &real() { return FFileCalls::system(); }

const FFileCalls kFaulty = {
    [](int folder, const char *name, int flags, mode_t mode) {
        return sFault.hit("open") ? -1 : real().openAt(folder, name, flags, mode);
    },
    [](int file, void *bytes, size_t count) {
        return sFault.hit("read") ? ssize_t(-1) : real().read(file, bytes, count);
    },
    [](int file, const void *bytes, size_t count) {
        if (sFault.hit("write"))
            return ssize_t(-1);
        return real().write(file, bytes, sFault.shortWrites ? (count + 2) / 3 : count);
    },
    [](int from, int to, size_t count) {
        return sFault.hit("copy") ? ssize_t(-1)
                                  : real().copyRange(from, to, sFault.shortWrites ? 7 : count);
    },
    [](int file, mode_t mode) { return sFault.hit("mode") ? -1 : real().setMode(file, mode); },
    [](int file, const struct timespec times[2]) {
        return sFault.hit("times") ? -1 : real().setTimes(file, times);
    },
    [](int file) { return sFault.hit("sync") ? -1 : real().sync(file); },
    [](int file) {
        real().close(file); // a failing close lets go of the file all the same
        return sFault.hit("close") ? -1 : 0;
    },
    [](int folder, const char *from, const char *to, unsigned flags) {
        if (flags != 0 && sFault.noExchange) {
            errno = EINVAL;
            return -1;
        }
        // An exchange that can't be done isn't the end: the plain rename is.
        return sFault.hit(flags ? "exchange" : "rename") ? -1
                                                         : real().rename(folder, from, to, flags);
    },
    [](int folder, const char *name, int flags) { return real().unlinkAt(folder, name, flags); }};

/// Puts the faulty calls in place for as long as it lives.
struct WithFault
{
    explicit WithFault(const Fault &fault)
    {
        sFault = fault;
        FSafeFile::setCalls(&kFaulty);
    }
    ~WithFault() { FSafeFile::setCalls(nullptr); }
};

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

void put(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
}

bool link(const QString &to, const QString &at)
{
    return symlink(to.toUtf8().constData(), at.toUtf8().constData()) == 0;
}

QStringList names(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System |
                                  QDir::NoDotAndDotDot);
}

/// Runs \p body in a child process and returns its exit code.
int inChild(const std::function<int()> &body)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(body());
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
} // namespace

class TestSafeFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        mFolder.reset(new QTemporaryDir);
        QVERIFY(mFolder->isValid());
        mPath = mFolder->path() + QStringLiteral("/fäß \\ file.txt");
        mWhy.clear();
    }

    void replacesAndKeepsPermissions()
    {
        QVERIFY2(FSafeFile::write(mPath, "one", &mWhy), qPrintable(mWhy));
        QCOMPARE(contents(mPath), QByteArray("one"));
        QCOMPARE(chmod(mPath.toUtf8().constData(), 0741), 0);
        const QByteArray big(5'000'000, 'x');
        QVERIFY(FSafeFile::write(mPath, big, &mWhy));
        QCOMPARE(contents(mPath), big);
        struct stat info;
        QCOMPARE(stat(mPath.toUtf8().constData(), &info), 0);
        QCOMPARE(info.st_mode & 07777, 0741u);
        QVERIFY(FSafeFile::write(mPath, QByteArray(), &mWhy, FSafeFile::Durability::Later));
        QCOMPARE(contents(mPath), QByteArray());
        QCOMPARE(names(mFolder->path()).size(), 1);
    }

    void followsLinkToTheFileThatItReplaces()
    {
        const QString folder = mFolder->path();
        QVERIFY(QDir().mkpath(folder + QStringLiteral("/real")));
        put(folder + QStringLiteral("/real/a"), "old");
        QVERIFY(link(QStringLiteral("real/b"), folder + QStringLiteral("/first")));
        QVERIFY(link(folder + QStringLiteral("/real/a"), folder + QStringLiteral("/real/b")));
        QVERIFY(FSafeFile::write(folder + QStringLiteral("/first"), "new", &mWhy));
        QCOMPARE(contents(folder + QStringLiteral("/real/a")), QByteArray("new"));
        QVERIFY(QFileInfo(folder + QStringLiteral("/first")).isSymLink());

        QVERIFY(link(QStringLiteral("real/later"), folder + QStringLiteral("/dangling")));
        QVERIFY(FSafeFile::write(folder + QStringLiteral("/dangling"), "made", &mWhy));
        QCOMPARE(contents(folder + QStringLiteral("/real/later")), QByteArray("made"));

        QVERIFY(link(QStringLiteral("loop"), folder + QStringLiteral("/loop")));
        QVERIFY(!FSafeFile::write(folder + QStringLiteral("/loop"), "x", &mWhy));
        QVERIFY(mWhy.contains(QLatin1String("symbolic links")));
    }

    void refusesWhatIsNoFile_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("words");
        QTest::newRow("directory") << "/dir"
                                   << "it is a directory";
        QTest::newRow("named pipe") << "/pipe"
                                    << "it is a named pipe";
        QTest::newRow("no folder") << "/none/file"
                                   << "No such file or directory";
        QTest::newRow("file as folder") << "/file/x"
                                        << "Not a directory";
        QTest::newRow("slash") << "/new/"
                               << "directory";
        QTest::newRow("zero") << QString(QStringLiteral("/a") + QChar(0) + QLatin1Char('b'))
                              << "zero";
        QTest::newRow("long") << "/" + QString(300, QLatin1Char('n')) << "File name too long";
    }
    void refusesWhatIsNoFile()
    {
        QFETCH(QString, name);
        QFETCH(QString, words);
        const QString folder = mFolder->path();
        QVERIFY(QDir().mkpath(folder + QStringLiteral("/dir")));
        put(folder + QStringLiteral("/file"), "kept");
        QCOMPARE(mkfifo((folder + QStringLiteral("/pipe")).toUtf8().constData(), 0600), 0);
        const QStringList before = names(folder);
        QVERIFY(!FSafeFile::write(folder + name, "x", &mWhy));
        QVERIFY2(mWhy.contains(words) && mWhy.contains(folder), qPrintable(mWhy));
        QVERIFY(!FSafeFile::copyFile(folder + QStringLiteral("/file"), folder + name, &mWhy) ||
                name.endsWith(QLatin1Char('/')));
        if (!name.endsWith(QLatin1Char('/'))) {
            QVERIFY(!FSafeFile::writePlain(folder + name, "x", 1, &mWhy));
            QCOMPARE(names(folder), before);
        }
    }

    void copyRefusesSpecialSources()
    {
        const QString folder = mFolder->path();
        QCOMPARE(mkfifo((folder + QStringLiteral("/pipe")).toUtf8().constData(), 0600), 0);
        for (const QString &source : {folder, folder + QStringLiteral("/pipe"),
                                      QStringLiteral("/dev/zero"), folder + QStringLiteral("/no")})
            QVERIFY(!FSafeFile::copyFile(source, mPath, &mWhy) && mWhy.contains(source));
        QVERIFY(!QFile::exists(mPath));
    }

    void plainWriteNeverGoesThroughLink()
    {
        const QString target = mFolder->path() + QStringLiteral("/target");
        put(target, "kept");
        QVERIFY(link(target, mPath));
        QVERIFY(!FSafeFile::writePlain(mPath, "x", 1, &mWhy));
        QVERIFY2(mWhy.contains(QLatin1String("it is a symbolic link")), qPrintable(mWhy));
        QCOMPARE(contents(target), QByteArray("kept"));
        QVERIFY(FSafeFile::copyFile(QStringLiteral("/proc/self/status"), mPath, &mWhy));
        QCOMPARE(contents(target), QByteArray("kept"));
        QVERIFY(contents(mPath).startsWith("Name:")); // a file that says that it is empty
    }

    void copyKeepsTimeAndPermissions()
    {
        const QString source = mFolder->path() + QStringLiteral("/source");
        const QByteArray bytes(3'000'001, 'q');
        put(source, bytes);
        QCOMPARE(chmod(source.toUtf8().constData(), 0540), 0);
        const struct timespec times[2] = {{1'000'000, 5}, {1'100'000'000, 123'456'789}};
        QCOMPARE(utimensat(AT_FDCWD, source.toUtf8().constData(), times, 0), 0);
        Fault across;
        across.failAt = 4; // the first copyRange, so that the other road is taken
        across.error = EXDEV;
        for (const Fault &fault : {Fault(), across}) {
            const WithFault faulty(fault);
            QVERIFY2(FSafeFile::copyFile(source, mPath, &mWhy), qPrintable(mWhy));
            QCOMPARE(sFault.kind, QByteArray(fault.failAt ? "copy" : ""));
            QCOMPARE(contents(mPath), bytes);
            struct stat info;
            QCOMPARE(stat(mPath.toUtf8().constData(), &info), 0);
            QCOMPARE(info.st_mode & 0777, 0540u);
            QCOMPARE(qint64(info.st_mtim.tv_sec), qint64(1'100'000'000));
            QCOMPARE(qint64(info.st_mtim.tv_nsec), qint64(123'456'789));
        }
    }

    /// A killed save leaves its temporary file to the next one, which clears it away but nothing
    /// that somebody still writes to.
    void clearsWhatKilledSavesLeft()
    {
        const auto leftovers = [this] {
            return QDir(mFolder->path())
                .entryList({".turnbuckle*"}, QDir::Files | QDir::Hidden)
                .size();
        };
        for (const int signal : {SIGKILL, SIGSTOP}) {
            static int sSignal;
            sSignal = signal;
            const pid_t child = fork();
            QVERIFY(child >= 0);
            if (child == 0) {
                static FFileCalls sEnding = FFileCalls::system();
                sEnding.sync = [](int file) {
                    ::raise(std::exchange(sSignal, 0));
                    return ::fsync(file);
                };
                FSafeFile::setCalls(&sEnding);
                QString why;
                _exit(FSafeFile::write(mPath, "of the child", &why) ? 0 : 1);
            }
            int status;
            QCOMPARE(waitpid(child, &status, WUNTRACED), child);
            QCOMPARE(leftovers(), 1);
            QVERIFY(FSafeFile::write(mFolder->path() + "/other", "x", &mWhy));
            QCOMPARE(leftovers(), 1);
            QVERIFY(FSafeFile::write(mPath, "of the parent", &mWhy));
            QCOMPARE(leftovers(), signal == SIGKILL ? 0 : 1);
            if (signal == SIGKILL)
                continue;
            ::kill(child, SIGCONT);
            QCOMPARE(waitpid(child, &status, 0), child);
            QVERIFY(WIFEXITED(status) && WEXITSTATUS(status) == 0);
            QCOMPARE(contents(mPath), QByteArray("of the child"));
            QCOMPARE(leftovers(), 0);
        }
    }

    void everyFailingStepLeavesTheOldFile_data()
    {
        QTest::addColumn<QString>("action");
        QTest::addColumn<bool>("oldFile");
        QTest::addColumn<bool>("forGood");
        QTest::addColumn<bool>("shortWrites");
        QTest::addColumn<int>("error");
        for (const char *action : {"write", "later", "exchange", "copy", "plain"})
            for (int bits = 0; bits < 8; ++bits)
                for (int error : {EIO, ENOSPC})
                    QTest::addRow("%s %s%s%s %d", action, bits & 1 ? "old " : "",
                                  bits & 2 ? "good " : "", bits & 4 ? "short" : "", error)
                        << action << bool(bits & 1) << bool(bits & 2) << bool(bits & 4) << error;
    }
    void everyFailingStepLeavesTheOldFile()
    {
        QFETCH(QString, action);
        QFETCH(bool, oldFile);
        const QString source = mFolder->path() + QStringLiteral("/source");
        const QByteArray oldBytes("the old text"), newBytes("the new text, a bit longer");
        put(source, newBytes);
        Fault fault;
        QFETCH(bool, forGood);
        QFETCH(bool, shortWrites);
        QFETCH(int, error);
        fault.forGood = forGood;
        fault.shortWrites = shortWrites;
        fault.error = error;
        fault.noExchange = action == QLatin1String("exchange");
        int failures = 0;
        for (fault.failAt = 1;; ++fault.failAt) {
            QVERIFY(fault.failAt < 100);
            QFile::remove(mPath);
            if (oldFile)
                put(mPath, oldBytes);
            bool good;
            {
                const WithFault faulty(fault);
                mWhy.clear();
                if (action == QLatin1String("copy"))
                    good = FSafeFile::copyFile(source, mPath, &mWhy);
                else if (action == QLatin1String("plain"))
                    good =
                        FSafeFile::writePlain(mPath, newBytes.constData(), newBytes.size(), &mWhy);
                else
                    good = FSafeFile::write(mPath, newBytes, &mWhy,
                                            action == QLatin1String("later")
                                                ? FSafeFile::Durability::Later
                                                : FSafeFile::Durability::Now);
            }
            const bool untouched = sFault.kind.isEmpty();
            const QByteArray found = contents(mPath);
            // Only the folder's own close, a copy's reading side and the exchange, which has a
            // second road, may fail without harm.
            if (good) {
                QCOMPARE(found, newBytes);
                QVERIFY(untouched || sFault.kind == "close" || sFault.kind == "exchange");
                if (untouched)
                    break;
            } else {
                ++failures;
                QVERIFY2(mWhy.contains(mPath) || mWhy.contains(source), qPrintable(mWhy));
                QVERIFY2(mWhy.contains(QLatin1String(strerrordesc_np(fault.error))),
                         qPrintable(mWhy));
                if (action == QLatin1String("exchange") && sFault.steps > fault.failAt &&
                    sFault.kind == "sync" && found == newBytes)
                    continue; // in place but not known to be durable, and no way back here
                if (action != QLatin1String("plain"))
                    QCOMPARE(found, oldFile ? oldBytes : QByteArray("(no file)"));
                else
                    QVERIFY(found == "(no file)" || (oldFile && found == oldBytes));
            }
            QCOMPARE(names(mFolder->path()).size(), QFile::exists(mPath) ? 2 : 1);
        }
        QVERIFY(failures >= (action == QLatin1String("plain") ? 3 : 5));
    }

    void writesPieceByPiece()
    {
        QByteArray expected;
        {
            FPlainFile file;
            QVERIFY2(file.open(mPath, &mWhy), qPrintable(mWhy));
            for (int i = 0; i < 300; ++i) {
                const QByteArray piece(i % 7 == 0 ? i * 300 : i * 3, char('a' + i % 26));
                file.append(piece.constData(), piece.size());
                expected += piece;
            }
            QVERIFY2(file.finish(&mWhy), qPrintable(mWhy));
        }
        QCOMPARE(contents(mPath), expected);
        {
            FPlainFile file;
            QVERIFY(file.open(mPath, &mWhy));
            file.append("text", 4);
        }
        QVERIFY(!QFile::exists(mPath)); // never finished
    }

    void noticesFullDevice()
    {
        const QString full = QStringLiteral("/dev/full");
        if (!QFile::exists(full))
            QSKIP("no /dev/full here", );
        QVERIFY(!FSafeFile::write(full, "text", &mWhy));
        QCOMPARE(mWhy, QStringLiteral("Cannot write /dev/full: No space left on device "
                                      "(0 of 4 bytes written)"));
        QVERIFY(!FSafeFile::writePlain(full, "text", 4, &mWhy));
        QVERIFY(QFile::exists(full));
        QVERIFY(FSafeFile::write(QStringLiteral("/dev/null"), "text", &mWhy));
    }

    void keepsOldFileWhenDiskIsFull()
    {
        const QByteArray folder = mFolder->path().toUtf8();
        const int code = inChild([&] {
            const bool own =
                unshare(geteuid() == 0 ? CLONE_NEWNS : CLONE_NEWUSER | CLONE_NEWNS) == 0;
            if (!own || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
                mount("tmpfs", folder.constData(), "tmpfs", 0, "size=64k") != 0)
                return 77;
            const QString path = QString::fromUtf8(folder) + QStringLiteral("/file");
            const QByteArray old(20'000, 'o');
            QString why;
            if (!FSafeFile::write(path, old, &why))
                return 1;
            if (FSafeFile::write(path, QByteArray(100'000, 'n'), &why))
                return 2;
            if (!why.contains(QLatin1String("No space left on device")) || contents(path) != old)
                return 3;
            if (names(QString::fromUtf8(folder)).size() != 1)
                return 4;
            const QString plain = path + QStringLiteral("2");
            const QByteArray much(100'000, 'n');
            if (FSafeFile::writePlain(plain, much.constData(), much.size(), &why) ||
                FSafeFile::copyFile(QStringLiteral("/proc/self/exe"), plain, &why))
                return 5;
            return names(QString::fromUtf8(folder)).size() == 1 && contents(path) == old ? 0 : 6;
        });
        if (code == 77)
            QSKIP("no small disk can be mounted here", );
        QCOMPARE(code, 0);
    }

    void killedWriterLeavesOldOrNew()
    {
        const QByteArray one(300'000, '1'), two(200'000, '2');
        put(mPath, one);
        int seen[2] = {0, 0};
        for (int round = 0; round < 30; ++round) {
            const pid_t child = fork();
            if (child == 0) {
                QString why;
                for (int i = 0;; ++i)
                    FSafeFile::write(mPath, i % 2 ? one : two, &why,
                                     round % 3 ? FSafeFile::Durability::Later
                                               : FSafeFile::Durability::Now);
            }
            usleep(useconds_t(2000 + round * 711));
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
            const QByteArray found = contents(mPath);
            QVERIFY(found == one || found == two);
            ++seen[found == two];
        }
        QVERIFY(seen[0] > 0 && seen[1] > 0);
    }

    void removesTreesButNotWhatLinksName()
    {
        const QString folder = mFolder->path();
        const QString tree = folder + QStringLiteral("/tree");
        QVERIFY(QDir().mkpath(tree + QStringLiteral("/a/b/c")));
        QVERIFY(QDir().mkpath(folder + QStringLiteral("/kept")));
        put(folder + QStringLiteral("/kept/file"), "kept");
        put(tree + QStringLiteral("/a/.hidden"), "x");
        QVERIFY(link(QStringLiteral("../../kept"), tree + QStringLiteral("/a/link")));
        QVERIFY(link(QStringLiteral("kept"), folder + QStringLiteral("/link")));
        QVERIFY2(FSafeFile::syncTree(tree, &mWhy), qPrintable(mWhy));
        QVERIFY2(FSafeFile::removeTree(tree, &mWhy), qPrintable(mWhy));
        QVERIFY(FSafeFile::removeTree(folder + QStringLiteral("/link/"), &mWhy));
        QCOMPARE(names(folder), QStringList(QStringLiteral("kept")));
        QCOMPARE(contents(folder + QStringLiteral("/kept/file")), QByteArray("kept"));
        QVERIFY(FSafeFile::removeTree(tree, &mWhy)); // nothing there
        for (const char *no : {"", "/", ".", "..", "/tmp/.."})
            QVERIFY(!FSafeFile::removeTree(QLatin1String(no), &mWhy));
        QVERIFY(!FSafeFile::syncTree(tree, &mWhy));
    }

    void joinsOnlyPathsThatStayInside_data()
    {
        QTest::addColumn<QString>("relative");
        QTest::addColumn<QString>("result"); // behind the folder; empty: refused
        const auto row = [](const char *relative, const char *result) {
            QTest::newRow(relative) << QString::fromUtf8(relative) << QString::fromUtf8(result);
        };
        row("a", "a");
        row("sub/new/ä.txt", "sub/new/ä.txt");
        row("./a/./b//c", "a/b/c");
        row("..a/b..", "..a/b..");
        row("a\\..\\..\\b", "a\\..\\..\\b");
        row("C:\\b", "C:\\b");
        row("inside/x", "inside/x");
        row("file", "file");
        row("", "");
        row(".", "");
        row("a/.", "");
        row("a/", "");
        row("/etc/passwd", "");
        row("../x", "");
        row("sub/../x", "");
        row("a/..", "");
        row("out/x", "");
        row("out", "");
        row("outfile", "");
        row("dangling", "");
        row("loop/x", "");
        row("sibling/x", "");
        row("inside/deep/back/x", "");
        row("file/x", "");
        QTest::newRow("zero") << QString(QStringLiteral("a") + QChar(0)) << QString();
    }
    void joinsOnlyPathsThatStayInside()
    {
        QFETCH(QString, relative);
        QFETCH(QString, result);
        const QString run = mFolder->path() + QStringLiteral("/run");
        QVERIFY(QDir().mkpath(run + QStringLiteral("/sub/deep")));
        QVERIFY(QDir().mkpath(mFolder->path() + QStringLiteral("/run2")));
        put(mFolder->path() + QStringLiteral("/secret"), "s");
        put(run + QStringLiteral("/file"), "f");
        const auto at = [&](const char *name) {
            return run + QLatin1Char('/') + QLatin1String(name);
        };
        QVERIFY(link(QStringLiteral("/"), at("out")));
        QVERIFY(link(QStringLiteral("../secret"), at("outfile")));
        QVERIFY(link(QStringLiteral("../nothing"), at("dangling")));
        QVERIFY(link(QStringLiteral("loop"), at("loop")));
        QVERIFY(link(QStringLiteral("../run2"), at("sibling"))); // shares a prefix of the name
        QVERIFY(link(QStringLiteral("sub"), at("inside")));
        QVERIFY(link(mFolder->path(), at("sub/deep/back")));

        const QString joined = safeJoin(run + QLatin1Char('/'), relative, &mWhy);
        QCOMPARE(joined, result.isEmpty() ? QString() : run + QLatin1Char('/') + result);
        QCOMPARE(mWhy.isEmpty(), !result.isEmpty());
        // The same folder by another name.
        const QString alias = mFolder->path() + QStringLiteral("/alias");
        QVERIFY(link(run, alias));
        QCOMPARE(safeJoin(alias, relative, &mWhy).isEmpty(), result.isEmpty());
    }

    void joinsToFoldersThatAreNotThereYet()
    {
        const QString folder = mFolder->path() + QStringLiteral("/later/on");
        QCOMPARE(safeJoin(folder, QStringLiteral("a/b"), &mWhy), folder + QStringLiteral("/a/b"));
        QVERIFY(safeJoin(folder, QStringLiteral("../b"), &mWhy).isEmpty());
        QVERIFY(safeJoin(QString(), QStringLiteral("b"), &mWhy).isEmpty());
        QCOMPARE(safeJoin(QStringLiteral("/"), QStringLiteral("tmp"), &mWhy),
                 QStringLiteral("/tmp"));
    }

private:
    QScopedPointer<QTemporaryDir> mFolder;
    QString mPath;
    QString mWhy;
};

QTEST_GUILESS_MAIN(TestSafeFile)
#include "tst_safefile.moc"

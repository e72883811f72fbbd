// SPDX-License-Identifier: Apache-2.0
// Projects that are kept as folders: nothing is lost, nothing is mixed, nothing leads out.
#include "fgenintcommandfile.h"
#include "fprojectfolder.h"
#include "fsafefile.h"
#include "modeltest.h"

#include <QDir>
#include <QFileInfo>
#include <QtTest>
#include <csignal>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
QByteArray bytesOf(const QString &path)
{
    QFile file(path);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray("(none)");
}

void put(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QFile::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
}

/// What ends at which step: the process, or, from then on, every call.
struct Cut
{
    int at = 0;
    bool kills = false;
    int steps = 0;
    bool hit()
    {
        if (at == 0 || ++steps < at)
            return false;
        if (kills)
            ::raise(SIGKILL);
        errno = EIO;
        return true;
    }
};
Cut sCut;

const FFileCalls kCut = [] {
    FFileCalls calls = FFileCalls::system();
    calls.openAt = [](int folder, const char *name, int flags, mode_t mode) {
        return sCut.hit() ? -1 : FFileCalls::system().openAt(folder, name, flags, mode);
    };
    calls.write = [](int file, const void *bytes, size_t count) {
        return sCut.hit() ? ssize_t(-1) : FFileCalls::system().write(file, bytes, count);
    };
    calls.sync = [](int file) { return sCut.hit() ? -1 : FFileCalls::system().sync(file); };
    calls.rename = [](int folder, const char *from, const char *to, unsigned flags) {
        return sCut.hit() ? -1 : FFileCalls::system().rename(folder, from, to, flags);
    };
    calls.unlinkAt = [](int folder, const char *name, int flags) {
        return sCut.hit() ? -1 : FFileCalls::system().unlinkAt(folder, name, flags);
    };
    return calls;
}();

QString projectText() { return FProject::instance()->text(); }

std::shared_ptr<FGenIntFile> addFile(const char *name, const QString &file, const QString &text)
{
    auto made = FGenIntCommandFile::create(name);
    made->setFileName(file);
    made->setContent(text);
    return made;
}
} // namespace

class TestProjectFolder : public QObject
{
    Q_OBJECT
    ModelTest mModel;
    QString mWhy;

    QString folder() const { return mModel.path("p/"); }
    QString at(const QString &name) const { return folder() + name; }
    QStringList entries() const
    {
        QStringList all =
            QDir(folder()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
        all.sort();
        return all;
    }
    bool save() { return FProject::instance()->save(folder(), &mWhy); }
    bool load() { return loadFrom(folder()); }
    static bool loadFrom(const QString &path)
    {
        FProject::instance()->clear();
        return FProject::instance()->load(path);
    }

private Q_SLOTS:
    void init() { mModel.start(); }
    void cleanup() { FSafeFile::setCalls(nullptr); }

    void oddContentsComeBack()
    {
        const QStringList contents{
            "",
            "a\r\nb\nc\rd",
            "blanks  \n\t\n   ",
            "\ufeffmarked",
            "\ufeff\ufefftwice",
            "größe λ 𐐀 <entry>x</entry>",
            QStringLiteral("bell\a esc\x1b del\x7f \\n \\\" \"q\" [B64]YQ=="),
            "[b64]YQ==",
            ".setContentFile(\"files/x\");"};
        const QStringList names{"in.inp", "IN.inp",  "../in.inp",       "/etc/passwd",
                                "CON",    ".hidden", "a\"b\\c\n:d.dat", QString(300, 0xe4) + ".inp",
                                ""};
        for (int i = 0; i < contents.size(); ++i)
            addFile(("f" + std::to_string(i)).c_str(), names[i], contents[i]);
        const QString before = projectText();
        QVERIFY2(save(), qPrintable(mWhy));
        const QStringList files = QDir(at("files")).entryList(QDir::Files | QDir::Hidden);
        QCOMPARE(files.size(), contents.size());
        QSet<QString> small;
        for (const QString &file : files) {
            small.insert(file.toLower());
            QVERIFY2(!file.contains('"') && !file.startsWith('.') && file.toUtf8().size() < 140,
                     qPrintable(file));
        }
        QCOMPARE(small.size(), files.size());
        QCOMPARE(bytesOf(at("files/in.inp")), QByteArray());
        QCOMPARE(bytesOf(at("files/IN-2.inp")), QByteArray("a\r\nb\nc\rd"));
        QVERIFY(QDir(mModel.path(".")).entryList(QDir::Files).isEmpty()); // nothing left the folder
        QVERIFY(load());
        QCOMPARE(projectText(), before);
        for (int i = 0; i < contents.size(); ++i)
            QCOMPARE(ModelTest::object<FGenIntFile>(("f" + std::to_string(i)).c_str())->text(),
                     contents[i]);
        // One file of it, and a folder of that.
        QVERIFY(FProject::instance()->save(mModel.path("one.tbk"), &mWhy));
        QCOMPARE(QString::fromUtf8(bytesOf(mModel.path("one.tbk"))), before);
        QVERIFY(loadFrom(mModel.path("one.tbk")));
        QVERIFY(FProject::instance()->save(mModel.path("again/"), &mWhy));
        QCOMPARE(bytesOf(mModel.path("again/project.tbk")), bytesOf(at("project.tbk")));
    }

    void onlyChangesAreWritten()
    {
        addFile("a", "a.inp", "one\n");
        addFile("b", "b.inp", "two\n");
        QVERIFY(save());
        put(at("files/notes.txt"), "a stranger's");
        put(at("README"), "a stranger's");
        QVERIFY(load());
        const auto inode = [this](const char *name) {
            struct stat info = {};
            ::stat(at(name).toUtf8(), &info);
            return info.st_ino;
        };
        const auto scriptBefore = inode("project.tbk");
        const auto aBefore = inode("files/a.inp"), bBefore = inode("files/b.inp");
        ModelTest::object<FGenIntFile>("a")->setContent("one more\n");
        QVERIFY2(save(), qPrintable(mWhy));
        QVERIFY(inode("files/a.inp") != aBefore);
        QCOMPARE(bytesOf(at("files/a.inp")), QByteArray("one more\n"));
        QCOMPARE(inode("files/b.inp"), bBefore);
        QCOMPARE(inode("project.tbk"), scriptBefore);
        // Names stay when a template gets another one; a name that somebody has is avoided.
        ModelTest::object<FGenIntFile>("b")->setFileName("c.inp");
        addFile("n", "Notes.txt", "three");
        QVERIFY(save());
        QCOMPARE(inode("files/b.inp"), bBefore);
        QCOMPARE(bytesOf(at("files/Notes-2.txt")), QByteArray("three"));
        // What the project no longer has goes; nothing else does.
        ModelTest::run("n.destroy(); a.destroy();");
        QVERIFY(save());
        QCOMPARE(QDir(at("files")).entryList(QDir::Files), (QStringList{"b.inp", "notes.txt"}));
        QCOMPARE(bytesOf(at("README")), QByteArray("a stranger's"));
        QCOMPARE(entries(), (QStringList{"README", "files", "project.tbk"}));
        // Without a text, too, it stays a folder.
        ModelTest::run("b.destroy();");
        QVERIFY(save());
        QVERIFY(load());
        addFile("d", "d.inp", "four");
        QVERIFY(FProject::instance()->save(FProject::instance()->path(), &mWhy));
        QCOMPARE(bytesOf(at("files/d.inp")), QByteArray("four"));
    }

    void cutSaves_data()
    {
        QTest::addColumn<bool>("kills");
        QTest::newRow("killed") << true;
        QTest::newRow("no call succeeds") << false;
    }
    /// A save ends at each of its steps; the project is the old or the new one, never a mixture.
    void cutSaves()
    {
        QFETCH(bool, kills);
        int cuts = 0, olds = 0, news = 0;
        for (bool done = false; !done; ++cuts) {
            mModel.start();
            addFile("a", "a.inp", "old a");
            addFile("b", "b.inp", "old b");
            addFile("c", "c.inp", "old c");
            QVERIFY(save());
            QVERIFY(load());
            const QString before = projectText();
            ModelTest::object<FGenIntFile>("a")->setContent("new a");
            ModelTest::object<FGenIntFile>("b")->setContent("new b");
            ModelTest::run("c.destroy();");
            addFile("d", "d.inp", "new d");
            const QString after = projectText();
            sCut = {cuts + 1, kills, 0};
            bool told = false;
            if (kills) {
                const pid_t child = fork();
                QVERIFY(child >= 0);
                if (child == 0) {
                    FSafeFile::setCalls(&kCut);
                    _exit(save() ? 0 : 1);
                }
                int status = 0;
                QCOMPARE(waitpid(child, &status, 0), child);
                told = done = WIFEXITED(status);
                QVERIFY(!done || WEXITSTATUS(status) == 0);
            } else {
                FSafeFile::setCalls(&kCut);
                told = save();
                done = sCut.steps < sCut.at;
                // Who can't write reads the same.
                QVERIFY(load());
                const QString through = projectText();
                FSafeFile::setCalls(nullptr);
                QVERIFY(load());
                QCOMPARE(projectText(), through);
            }
            QVERIFY(load());
            const QString now = projectText();
            QVERIFY2(now == before || now == after, qPrintable(QString::number(cuts) + now));
            QVERIFY(!told || now == after);
            ++(now == before ? olds : news);
            // The next save clears up.
            addFile("e", "e.inp", "e");
            const QString last = projectText();
            QVERIFY2(save(), qPrintable(mWhy));
            QVERIFY(load());
            QCOMPARE(projectText(), last);
            QCOMPARE(entries(), (QStringList{"files", "project.tbk"}));
        }
        QVERIFY2(cuts > 20 && olds > 10 && news > 5,
                 qPrintable(QStringLiteral("%1 %2 %3").arg(cuts).arg(olds).arg(news)));
    }

    void hostileFolders_data()
    {
        QTest::addColumn<QString>("named");
        QTest::addColumn<QString>("told");
        QTest::newRow("missing") << "files/none.inp"
                                 << "files/none.inp";
        QTest::newRow("link out") << "files/link"
                                  << "out of";
        QTest::newRow("pipe") << "files/pipe"
                              << "files/pipe";
        QTest::newRow("folder") << "files/folder"
                                << "files/folder";
        QTest::newRow("above") << "files/../../secret"
                               << "plain name";
        QTest::newRow("absolute") << "/etc/passwd"
                                  << "plain name";
        QTest::newRow("other file") << "project.tbk"
                                    << "plain name";
        QTest::newRow("hidden") << "files/.x"
                                << "plain name";
        QTest::newRow("no text") << "files/latin"
                                 << "byte 3 of files/latin";
        QTest::newRow("zero") << "files/zero"
                              << "byte 2 of files/zero";
    }
    void hostileFolders()
    {
        QFETCH(QString, named);
        QFETCH(QString, told);
        QVERIFY(QDir().mkpath(at("files/folder")));
        put(mModel.path("secret"), "secret");
        QVERIFY(QFile::link(mModel.path("secret"), at("files/link")));
        QCOMPARE(::mkfifo(at("files/pipe").toUtf8(), 0600), 0);
        put(at("files/latin"), "gr\xfc\xdf");
        put(at("files/zero"), QByteArray("a\0b", 3));
        put(at("project.tbk"), ("genericIntegrationCommandFile a() { .setContentFile(\"" + named +
                                "\"); .setFileName(\"a.inp\"); }\n")
                                   .toUtf8());
        QVERIFY(!load());
        const auto &errors = FProject::instance()->errors();
        QCOMPARE(errors.size(), size_t(1));
        QVERIFY2(Q(errors[0].toString()).contains(told), errors[0].toString().c_str());
        QCOMPARE(errors[0].line, size_t(1));
        const auto file = ModelTest::object<FGenIntFile>("a");
        QVERIFY(!file || !file->text().contains("secret"));
        FLogMsg::clear();
    }

    /// Nothing but the script of the folder itself names texts of it, and nothing is written
    /// through links.
    void othersMayNot()
    {
        addFile("a", "a.inp", "x");
        QVERIFY(save());
        QVERIFY(load());
        const QStringList errors = ModelTest::run("a.setContentFile(\"files/a.inp\");");
        QVERIFY2(errors.size() == 1 && errors[0].contains("kept as a folder"),
                 qPrintable(errors.join(' ')));
        put(mModel.path("one.tbk"), bytesOf(at("project.tbk")));
        QVERIFY(QDir().mkpath(mModel.path("files")));
        put(mModel.path("files/a.inp"), "x");
        QVERIFY(!loadFrom(mModel.path("one.tbk")));
        QVERIFY(load());
        put(mModel.path("target"), "target");
        QVERIFY(QFile::remove(at("files/a.inp")));
        QVERIFY(QFile::link(mModel.path("target"), at("files/a.inp")));
        QVERIFY2(save(), qPrintable(mWhy));
        QCOMPARE(bytesOf(mModel.path("target")), QByteArray("target"));
        QVERIFY(!QFileInfo(at("files/a.inp")).isSymLink());
        QVERIFY(QDir(at("files")).removeRecursively());
        QVERIFY(QFile::link(mModel.path("files"), at("files")));
        ModelTest::object<FGenIntFile>("a")->setContent("y");
        QVERIFY(!save());
        QCOMPARE(bytesOf(mModel.path("files/a.inp")), QByteArray("x"));
    }
};

QTEST_GUILESS_MAIN(TestProjectFolder)
#include "tst_projectfolder.moc"

// SPDX-License-Identifier: Apache-2.0
#include "fconfigurationgenint.h"
#include "fdefinitiongenint.h"
#include "fgenintcommandfile.h"
#include "fgenintwriter.h"
#include "flogmsg.h"
#include "fobjectmanager.h"
#include "fproject.h"
#include "fsafefile.h"
#include "fscript.h"
#include "modeltest.h"
#include "testseed.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>
#include <cerrno>
#include <csignal>
#include <random>
#include <sys/resource.h>

namespace {
const char kSkipped[] = "Entry nowhere is not part of configuration design0";

/// What goes wrong on the disk, and when.
struct Fault
{
    int writeError = 0, closeError = 0;
    qint64 room = 0; // bytes that are taken before writing fails
    bool inSmallPieces = false;
};
Fault sFault;

bool fails(int error)
{
    errno = error;
    return error != 0;
}

FFileCalls faultyCalls()
{
    FFileCalls calls = FFileCalls::system();
    calls.write = [](int file, const void *bytes, size_t count) {
        if (sFault.inSmallPieces) {
            static int sTurn = 0;
            if (++sTurn % 3 == 0 && fails(EINTR))
                return ssize_t(-1);
            count = (count + 1) / 2;
        }
        if (sFault.writeError != 0) {
            if (sFault.room == 0 && fails(sFault.writeError))
                return ssize_t(-1);
            count = size_t(qMin(qint64(count), sFault.room));
            sFault.room -= qint64(count);
        }
        return FFileCalls::system().write(file, bytes, count);
    };
    calls.close = [](int file) {
        FFileCalls::system().close(file);
        return fails(sFault.closeError) ? -1 : 0;
    };
    return calls;
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}
} // namespace

class TestWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        static const FFileCalls sCalls = faultyCalls();
        FSafeFile::setCalls(&sCalls);
        FLogMsg::setConsole(nullptr);
        FObject::initPrototypes();
    }
    void cleanupTestCase() { FSafeFile::setCalls(nullptr); }

    void init()
    {
        mDir = std::make_unique<QTemporaryDir>();
        mFolder = mDir->path() + QLatin1Char('/');
        sFault = Fault();
        FProject::instance()->clear();
        // The first file is longer than what is gathered before it goes to the disk.
        QVERIFY(load("genericIntegrationCommandFile first() {\n"
                     ".setFileName(\"sub/first.inp\");\n.setContent(\"" +
                     std::string(400'000, '.') +
                     "<entry>x</entry><entry>nowhere</entry>\n\");\n}\n"
                     "genericIntegrationCommandFile second() {\n"
                     ".setFileName(\"second.inp\");\n.setContent(\"x <ENTRY>X</entry>\");\n}\n"
                     "genericIntegrationDefinition definition() {\n.addEntry(\"x\",0.5);\n"
                     ".setFiles([first,second]);\n}\n"
                     "genericIntegrationConfiguration design0() {\n"
                     ".setDefinition(definition);\n.setEntry(\"x\",2.5);\n}\n"));
        mConfiguration = getEntities<FConfigurationGenInt>().front().getPtr();
        FLogMsg::clear();
    }

    void writesWhatTheTemplatesSayNow()
    {
        sFault.inSmallPieces = true;
        QVERIFY(write());
        const QByteArray dots(400'000, '.');
        QCOMPARE(contentOf(mFolder + "sub/first.inp"), QByteArray(dots + "2.5\n"));
        QCOMPARE(contentOf(mFolder + "second.inp"), QByteArray("x 2.5"));
        QCOMPARE(messages(), QStringList{kSkipped});

        // What is kept between designs follows values, text and settings.
        const auto check = [&](const char *script, const QByteArray &expected) {
            QVERIFY(load(script));
            QVERIFY(write());
            QCOMPARE(contentOf(mFolder + "second.inp"), expected);
        };
        check("design0.setEntry(\"x\",17.0);", "x 17");
        check("second.setContent(\"y\n<entry>x</entry>\");", "y\n17");
        check("second.setForceWindowsLineEndings(true);", "y\r\n17");
        check("second.setContent(\"[B64]eg0KPGVudHJ5Png8L2VudHJ5Pg==\");", "z\r\r\n17");
        check("second.setForceWindowsLineEndings(false);", "z\r\n17");
        check("second.setContent(\"[B64]w6Q8ZW50cnk+eDwvZW50cnk+\");", "ä17");
        check("second.setContent(\"\");", "");
    }

    /// What a template is taken from is written back byte for byte, but for its values.
    void keepsBytes()
    {
        const auto second = ModelTest::object<FGenIntCommandFile>("second");
        const auto utf16 = [](const QString &text, bool big) {
            QByteArray bytes(big ? "\xfe\xff" : "\xff\xfe");
            for (const QChar c : text) {
                const char low = char(c.unicode() & 0xff), high = char(c.unicode() >> 8);
                bytes += big ? high : low;
                bytes += big ? low : high;
            }
            return bytes;
        };
        const QString text =
            QString::fromUtf8("a\r\nb\n <entry>x</entry> \xc3\xa4\xf0\x9f\x98\x80\r");
        const std::pair<QByteArray, QString> files[] = {
            {"gr\xf6\xdf <entry>x</entry>\r\n\x80", "ISO-8859-1"},
            {"\xef\xbb\xbf" + text.toUtf8(), "UTF-8-BOM"},
            {utf16(text, false), "UTF-16LE"},
            {utf16(text, true), "UTF-16BE"},
            {text.toUtf8(), ""},
            {"", ""}};
        for (const auto &file : files) {
            ModelTest::write(mFolder + "source.dat", file.first);
            second->initFromFile(mFolder + "source.dat");
            QCOMPARE(second->getEncoding(), file.second);
            second->setFileName("second.inp");
            QVERIFY(write());
            const QString wide = file.second.startsWith("UTF-16") ? file.second : QString();
            QByteArray tag = "<entry>x</entry>", value = "2.5";
            if (!wide.isEmpty()) {
                tag = utf16(tag, wide.endsWith("BE")).mid(2);
                value = utf16(value, wide.endsWith("BE")).mid(2);
            }
            QCOMPARE(contentOf(mFolder + "second.inp"), QByteArray(file.first).replace(tag, value));
            const QString saved = FProject::instance()->text();
            QCOMPARE(saved.contains(".setEncoding("), !file.second.isEmpty());
        }
        const QString before = FProject::instance()->text();
        for (const QByteArray &broken :
             {utf16(text, false) + "x", QByteArray("\xff\xfe\x00\xd8\x20\x00", 6),
              QByteArray("a\0\xff", 3), QByteArray("\xef\xbb\xbf\xff")}) {
            ModelTest::write(mFolder + "source.dat", broken);
            second->initFromFile(mFolder + "source.dat");
            QCOMPARE(FProject::instance()->text(), before);
            QVERIFY(messages().join("").contains("byte for byte"));
        }
        // A value that the encoding lacks is an error, never another letter.
        second->setContent("a\n <entry>x</entry>");
        QVERIFY(second->setEncoding("ISO-8859-1"));
        second->setContent(QString::fromUtf8("a\n \xe2\x82\xac"));
        QVERIFY(!write());
        QVERIFY2(messages().join("").contains("second.inp:2:2: the letter"), "place");
    }

    void keepsTheNameOfAFileThatIsInTheWay()
    {
        QVERIFY(QDir().mkpath(mFolder + "sub/first.inp/inner"));
        QVERIFY(!write());
        QCOMPARE(messages(), QStringList{couldNotOpen()});
        QCOMPARE(FLogMsg::last().details, std::string("Writing process aborted."));
        QVERIFY(QDir(mFolder + "sub/first.inp/inner").exists());
        QVERIFY(!QFile::exists(mFolder + "second.inp"));
    }

    void tellsAFolderThatCannotBeMade()
    {
        // No folder can be made where a file stands.
        QFile file(mFolder + "sub");
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(!write());
        QCOMPARE(messages(), QStringList{couldNotOpen()});
    }

    void leavesNothingThatIsNotWhole_data()
    {
        QTest::addColumn<int>("writeError");
        QTest::addColumn<int>("room");
        QTest::addColumn<int>("closeError");
        QTest::addColumn<QString>("words");
        QTest::newRow("full at once") << ENOSPC << 0 << 0 << "No space left on device";
        QTest::newRow("full within") << ENOSPC << 300'000 << 0 << "No space left on device";
        QTest::newRow("full at the end") << EDQUOT << 400'003 << 0 << "Disk quota exceeded";
        QTest::newRow("lost on closing") << 0 << 0 << EIO << "Input/output error";
        QTest::newRow("second file") << ENOSPC << 400'006 << 0 << "No space left on device";
    }
    void leavesNothingThatIsNotWhole()
    {
        QFETCH(int, writeError);
        QFETCH(int, room);
        QFETCH(int, closeError);
        QFETCH(QString, words);
        QVERIFY(write()); // what an earlier call wrote is there
        FLogMsg::clear();
        const bool inSecond = room > 400'004;
        const QString path = mFolder + (inSecond ? "second.inp" : "sub/first.inp");
        const QByteArray before = contentOf(path);
        QVERIFY(!before.isEmpty());
        sFault.writeError = writeError;
        sFault.room = room;
        sFault.closeError = closeError;
        QVERIFY(!write());
        QCOMPARE(messages().size(), 2);
        QCOMPARE(messages().front(), QString(kSkipped));
        QVERIFY2(messages().back().startsWith("Cannot write " + path + ": " + words),
                 qPrintable(messages().back()));
        // The old file is there, and nothing else.
        QCOMPARE(contentOf(path), before);
        QCOMPARE(QDir(QFileInfo(path).path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
    }

    void meetsTheLimitOfTheSystem()
    {
        struct rlimit before, small;
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &before), 0);
        small = before;
        small.rlim_cur = 350'000;
        const auto handler = std::signal(SIGXFSZ, SIG_IGN);
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
        const bool written = write();
        setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, handler);
        QVERIFY(!written);
        QVERIFY2(messages().back().contains("File too large (350000 of "),
                 qPrintable(messages().back()));
        QVERIFY(!QFile::exists(mFolder + "sub/first.inp"));
    }

    /// What a script may say reads as the library's decoder reads it; what is broken is refused.
    void takesBase64LikeTheLibrary()
    {
        std::mt19937 random(testSeed());
        QVERIFY(load("genericIntegrationCommandFile corner();"));
        const auto file = std::dynamic_pointer_cast<FGenIntCommandFile>(
            FObjectManager::instance()->find("corner"));
        const QByteArray odd = "=-_ \n*\x80\xff";
        int refused = 0;
        for (int round = 0; round < 20'000; ++round) {
            QByteArray bytes(int(random() % 24), Qt::Uninitialized);
            for (char &c : bytes)
                c = char(1 + random() % (random() % 4 ? 127 : 255));
            QByteArray base64 = bytes.toBase64();
            const uint strangers = random() % 3;
            for (uint i = strangers; i > 0; --i)
                base64.insert(int(random() % uint(base64.size() + 1)),
                              odd.at(int(random() % uint(odd.size()))));
            const QByteArray expected = QByteArray::fromBase64(base64);
            file->setContent("before");
            if (load("corner.setContent(" + FLiteral::quoted("[B64]" + base64.toStdString()) +
                     ");")) {
                QVERIFY2(file->text() == QString::fromUtf8(expected), base64.constData());
            } else {
                QVERIFY2(strangers > 0 && file->text() == "before", base64.constData());
                ++refused;
            }
            file->setContent("[B64]" + QString::fromLatin1(base64));
            QVERIFY2(file->text() == QString::fromUtf8(expected), base64.constData());
        }
        QVERIFY(refused > 1000);
    }

private:
    bool load(const std::string &script) { return FScriptReader(script, "test").run(); }
    bool write() const
    {
        return FGenIntWriter().write(FExpr<FConfigurationGenInt>(mConfiguration), mFolder);
    }
    QString couldNotOpen() const
    {
        return "Could not open file " + mFolder + "sub/first.inp for writing.";
    }
    static QStringList messages()
    {
        QStringList result;
        for (const auto &each : FLogMsg::messages())
            result << Q(each.message);
        return result;
    }

    std::unique_ptr<QTemporaryDir> mDir;
    QString mFolder;
    std::shared_ptr<FConfigurationGenInt> mConfiguration;
};

QTEST_GUILESS_MAIN(TestWriter)
#include "tst_writer.moc"

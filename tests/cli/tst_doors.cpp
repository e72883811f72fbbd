// SPDX-License-Identifier: Apache-2.0
// What comes in by name and what goes out again: files of any kind, projects that aren't whole,
// imports, too little memory, and files that are put into a project.
#include "sumproject.h"
#include "turnbuckleprocess.h"

#include <QtTest>
#include <sys/stat.h>
#include <unistd.h>

class TestDoors : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void opensRegularFilesOnly_data();
    void opensRegularFilesOnly();
    void saysWhatWasNotDone();
    void keepsNothingOfAnImportThatFails();
    void loadingWritesNothing();
    void endsInWordsWithoutMemory();
    void tellsWhyNothingWasExpanded();
    void addsFiles();
    void addsToWhatIsThere();
    void refusesToAdd_data();
    void refusesToAdd();
};

void TestDoors::opensRegularFilesOnly_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("reason");
    QTest::newRow("pipe") << "pipe"
                          << "it is a named pipe";
    QTest::newRow("device") << "/dev/zero"
                            << "it is a device";
    QTest::newRow("folder") << "folder"
                            << "it is a directory";
    QTest::newRow("link to a pipe") << "link"
                                    << "it is a named pipe";
    QTest::newRow("sparse") << "sparse"
                            << "it has 1000000000000 bytes, at most 256 MiB are taken";
    QTest::newRow("missing") << "missing"
                             << "No such file or directory";
}

void TestDoors::opensRegularFilesOnly()
{
    QFETCH(QString, name);
    QFETCH(QString, reason);
    const FSandbox box;
    box.write("p.tbk", sumProject());
    QCOMPARE(::mkfifo(box.path("pipe").toUtf8().constData(), 0600), 0);
    QCOMPARE(::symlink("pipe", box.path("link").toUtf8().constData()), 0);
    QVERIFY(QDir(box.path()).mkdir("folder"));
    box.write("sparse", "");
    QCOMPARE(::truncate(box.path("sparse").toUtf8().constData(), 1000000000000), 0);
    box.write("q.tbk", "importGenIntDefinition(\"" + name.toUtf8() + "\");\n");
    const auto refused = [&](const QStringList &arguments, int code) {
        const FCall call = box.call(arguments);
        QVERIFY2(call.code == code && call.err.contains(reason.toUtf8()),
                 QByteArray::number(call.code) + arguments.join(' ').toUtf8() + ": " + call.err);
    };
    for (const char *command : {"check", "run", "expand"})
        refused({command, name}, 3);
    refused({"save", name, "--output", "o.tbk"}, 3);
    refused({"import-definition", name, "--output", "o.tbk"}, 3);
    refused({"save", "q.tbk", "--output", "o.tbk"}, 3);
    refused({"add", "o.tbk", "--template", name}, 1);
    refused({"add", "o.tbk", "--sample", name}, 1);
    if (name == "pipe" || name == "/dev/zero")
        refused({"extract", "p.tbk", name}, 1);
    QVERIFY(!box.has("o.tbk"));
}

void TestDoors::saysWhatWasNotDone()
{
    const FSandbox box;
    box.write("p.tbk", sumProject() + "nonsense x();\n");
    const QList<std::pair<QStringList, QByteArray>> calls = {
        {{"run", "p.tbk"}, "nothing was run"},
        {{"run", "p.tbk", "--json"}, "nothing was run"},
        {{"expand", "p.tbk"}, "nothing was expanded"},
        {{"extract", "p.tbk", "."}, "nothing was extracted"},
        {{"save", "p.tbk", "--output", "o.tbk"}, "it is not saved"},
        {{"add", "p.tbk", "--template", "p.tbk"}, "nothing was added"}};
    for (const auto &[arguments, words] : calls) {
        const FCall call = box.call(arguments);
        QCOMPARE(call.code, 3);
        QVERIFY2(call.err.contains("could not be read whole, so " + words + ": p.tbk:") &&
                     call.err.contains("nonsense"),
                 call.err);
    }
    QCOMPARE(box.read("p.tbk"), sumProject() + "nonsense x();\n");
}

void TestDoors::keepsNothingOfAnImportThatFails()
{
    const FSandbox box;
    const QByteArray head = "<ovdl><definition name=\"d\"/></ovdl>\n\n=== objects ===\n"
                            "genericIntegrationCommandFile ok() {}\n";
    box.write("bad.ovdl", head + "solver.setApplication(\"evil\");\n");
    const QByteArray project = sumProject() + "importGenIntDefinition(\"bad.ovdl\");\n";
    box.write("p.tbk", project);
    QCOMPARE(box.call({"import-definition", "bad.ovdl", "--output", "o.tbk"}).code, 3);
    QCOMPARE(box.call({"save", "p.tbk", "--output", "o.tbk"}).code, 3);
    QCOMPARE(box.call({"run", "p.tbk"}).code, 3);
    QVERIFY(!box.has("o.tbk") && !box.has("p_designs"));
    const FCall check = box.call({"check", "p.tbk", "--json"});
    QCOMPARE(check.code, 3);
    const QJsonArray findings = check.json()["findings"].toArray();
    QCOMPARE(check.json()["errors"].toInt(), 2);
    QCOMPARE(findings[0].toObject()["file"].toString(), QString("bad.ovdl"));
    QCOMPARE(findings[0].toObject()["line"].toInt(), 5);
    QVERIFY(findings[0].toObject()["found"].toString().contains("solver"));
    QCOMPARE(findings[1].toObject()["line"].toInt(), project.count('\n'));

    box.write("bad.ovdl", head);
    QCOMPARE(box.call({"save", "p.tbk", "--output", "o.tbk"}).code, 0);
    QVERIFY(box.read("o.tbk").contains("genericIntegrationCommandFile ok()"));
}

void TestDoors::loadingWritesNothing()
{
    const FSandbox box;
    box.write("d.ovdl", "<ovdl><definition name=\"d\"/></ovdl>\n");
    box.write("p.tbk", "importGenIntDefinition(\"d.ovdl\");\n");
    qputenv("TURNBUCKLE_CONFIG", QFile::encodeName(box.path("settings/turnbuckle.ini")));
    const int code = box.call({"check", "p.tbk"}).code;
    qunsetenv("TURNBUCKLE_CONFIG");
    QCOMPARE(code, 0);
    QCOMPARE(QDir(box.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList({"d.ovdl", "p.tbk"}));
}

void TestDoors::endsInWordsWithoutMemory()
{
#if defined(__SANITIZE_ADDRESS__) || (defined(__has_feature) && __has_feature(address_sanitizer))
    QSKIP("the sanitizer needs its address space", "");
#endif
    const FSandbox box;
    box.write("p.tbk", "parameter a(\"" + QByteArray(200000000, 'x') + "\");\n");
    box.write("o.tbk", "old");
    for (const char *command : {"check p.tbk", "save p.tbk --output o.tbk"}) {
        QProcess process;
        process.setWorkingDirectory(box.path());
        process.start(
            "sh", {"-c", QString("ulimit -v 300000; exec " F_BIN_DIR "/turnbuckle ") + command});
        QVERIFY(process.waitForFinished());
        const QByteArray words = process.readAllStandardError();
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 1);
        QVERIFY2(words.contains("turnbuckle: there is not enough memory"), words);
        QCOMPARE(box.read("o.tbk"), QByteArray("old"));
    }
}

void TestDoors::tellsWhyNothingWasExpanded()
{
    const FSandbox box;
    box.write("p.tbk", sumProject());
    box.write("file", "");
    const FCall call = box.call({"expand", "p.tbk", "--output", "file/sub"});
    QCOMPARE(call.code, 4);
    QVERIFY2(call.err.contains("Not a directory"), call.err);
    if (::geteuid() == 0)
        QSKIP("root may write everywhere", "");
    QVERIFY(QDir(box.path()).mkdir("locked"));
    QCOMPARE(::chmod(box.path("locked").toUtf8().constData(), 0500), 0);
    for (const char *folder : {"locked", "locked/sub"}) {
        const FCall denied = box.call({"expand", "p.tbk", "--output", folder});
        QCOMPARE(denied.code, 4);
        QVERIFY2(denied.err.contains("Permission denied"), denied.err);
    }
}

void TestDoors::addsFiles()
{
    const FSandbox box;
    const QByteArray deck = "Länge\r\nback\\nslash \"quoted\"\n";
    box.write("in/deck.inp", deck);
    box.write("deck.out", "sum = 3\n");
    const FCall made = box.call(
        {"add", "p.tbk", "--template", "in/deck.inp", "--program", "sh -c 'cat \"$0\"' x"});
    QVERIFY2(made.code == 0, made.err);
    QCOMPARE(box.call({"add", "p.tbk", "--sample", "deck.out", "--as", "log/deck.out"}).code, 0);
    const QByteArray text = box.read("p.tbk");
    QVERIFY2(text.contains(".setApplication(\"sh\");") &&
                 text.contains(".setArguments(\"-c 'cat \\\"$0\\\"' x\");") &&
                 text.contains(".setFileName(\"log/deck.out\");"),
             text);
    QCOMPARE(box.call({"expand", "p.tbk", "--output", "out"}).code, 0);
    QCOMPARE(box.read("out/deck.inp"), deck);
    QCOMPARE(box.call({"save", "p.tbk", "--output", "again.tbk"}).code, 0);
    QCOMPARE(box.read("again.tbk"), text); // it was saved in canonical form
}

/// What a user has written stays as it is: the new statements stand at the end.
void TestDoors::addsToWhatIsThere()
{
    const FSandbox box;
    const QByteArray before = "// mine\n" + sumProject() + "// the end";
    box.write("p.tbk", before);
    box.write("second.txt", "more\n");
    box.write("new.txt", "sum = 4\nn = 1\n");
    QCOMPARE(box.call({"add", "p.tbk", "--template", "second.txt", "--program", "echo a"}).code, 0);
    QCOMPARE(box.call({"add", "p.tbk", "--sample", "new.txt", "--as", "out.txt"}).code, 0);
    const QByteArray after = box.read("p.tbk");
    QVERIFY2(after.startsWith(before + "\n"), after);
    const FCall saved = box.call({"save", "p.tbk", "--output", "o.tbk"});
    QVERIFY2(saved.code == 0, saved.err);
    const QByteArray text = box.read("o.tbk");
    QVERIFY2(text.contains(QByteArray("sum = 4\nn = 1\n").toBase64()) &&
                 text.contains(".setApplication(\"echo\");") && text.contains("second_txt]);"),
             text);
    QCOMPARE(text.count(".setValues("), before.count(".setValues("));
    QCOMPARE(box.call({"expand", "p.tbk", "--output", "out"}).code, 0);
    QCOMPARE(box.read("out/second.txt"), QByteArray("more\n"));
}

void TestDoors::refusesToAdd_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("words");
    QTest::newRow("nothing") << QStringList{} << "either --template FILE or --sample FILE";
    QTest::newRow("name leads out") << QStringList{"--template", "f", "--as", "../f"} << "refused";
    QTest::newRow("there already")
        << QStringList{"--template", "f", "--as", "in.txt"} << "has a file in.txt already";
    QTest::newRow("sample of an input")
        << QStringList{"--sample", "f", "--as", "in.txt"} << "has an input template in.txt";
    QTest::newRow("unknown definition")
        << QStringList{"--template", "f", "--definition", "none"} << "no definition none";
    QTest::newRow("other bytes") << QStringList{"--sample", "binary"} << "byte for byte";
    QTest::newRow("open quote") << QStringList{"--template", "f", "--program", "sh 'x"}
                                << "a quote without end";
}

void TestDoors::refusesToAdd()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, words);
    const FSandbox box;
    box.write("p.tbk", sumProject());
    box.write("f", "x\n");
    box.write("binary", QByteArray("gr\xf6\0\xdf", 5));
    const FCall call = box.call(QStringList{"add", "p.tbk"} + arguments);
    QCOMPARE(call.code, 2);
    QVERIFY2(call.err.contains(words.toUtf8()), call.err);
    QCOMPARE(box.read("p.tbk"), sumProject());
}

QTEST_GUILESS_MAIN(TestDoors)
#include "tst_doors.moc"

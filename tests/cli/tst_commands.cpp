// SPDX-License-Identifier: Apache-2.0
// The commands of the program that run nothing: output, exit codes, bad projects.
#include "sumproject.h"
#include "turnbuckleprocess.h"

#include <QtTest>

class TestCommands : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void extractsWithoutRun();
    void evaluates();
    void wrongUsage_data();
    void wrongUsage();
    void unreadableProjects_data();
    void unreadableProjects();
    void couplingsTravel();
    void savesOnlyWhole();
    void loadingStartsNothing();
    void tellsItsCommands();
    void helpTellsEveryWord();
    void notesAreExplained();
};

void TestCommands::extractsWithoutRun()
{
    const FSandbox box;
    box.write("p.tbk", sumProject());
    box.write("old/out.txt", "sum = 12\nn = many\n");
    const auto rows = [&](const QStringList &arguments) {
        const FCall call = box.call(QStringList{"extract", "p.tbk", "--json"} + arguments);
        return call.json()["tables"].toArray().at(0).toObject()["rows"].toArray();
    };
    for (const QStringList &arguments : {QStringList{"old"}, QStringList{"old/out.txt"},
                                         QStringList{"old", "--template", "output"}}) {
        const QJsonArray found = rows(arguments);
        QCOMPARE(found.size(), 2);
        QCOMPARE(QStringList(found[0].toObject().keys()),
                 QStringList({"name", "note", "text", "type", "value", "where"}));
        QCOMPARE(found[0].toObject()["value"].toDouble(), 12.0);
        QCOMPARE(found[0].toObject()["type"].toString(), QString("FDouble"));
        QVERIFY(found[1].toObject()["value"].isNull());
        QCOMPARE(found[1].toObject()["note"].toString(), QString("column not there"));
    }
    // A file of another name is read by all templates.
    box.write("other.log", "sum = 13\n");
    QCOMPARE(rows({"other.log"}).at(0).toObject()["value"].toDouble(), 13.0);
    const FCall text = box.call({"extract", "p.tbk", "old"});
    QVERIFY2(text.out.contains("! column not there"), text.out);
    QCOMPARE(box.call({"extract", "p.tbk", "nowhere"}).code, 1);
    QCOMPARE(box.call({"extract", "p.tbk", "old", "--template", "none"}).code, 2);
    QVERIFY(!box.has("p_designs"));
}

void TestCommands::evaluates()
{
    const FSandbox box;
    box.write("p.tbk", sumProject());
    const FCall call = box.call({"eval", "p.tbk", "width*2", "\"a\"", "true", "total", "nothing",
                                 "--set", "width=0.1", "--json"});
    const QJsonArray results = call.json()["results"].toArray();
    QCOMPARE(results.size(), 5);
    QCOMPARE(results[0].toObject()["value"].toDouble(), 0.2);
    QCOMPARE(results[1].toObject()["value"].toString(), QString("a"));
    QCOMPARE(results[2].toObject()["value"], QJsonValue(true));
    QVERIFY(results[3].toObject()["value"].isNull());
    QCOMPARE(call.code, 1); // an unknown name is an error
    QCOMPARE(box.call({"eval", "p.tbk", "0.1+0.2"}).out, QByteArray("0.30000000000000004\n"));
    QCOMPARE(box.call({"run", "p.tbk"}).code, 0);
    // What an earlier call left on the disk are no results of this one.
    QCOMPARE(box.call({"eval", "p.tbk", "width"}).out, QByteArray("2.5\n"));
}

void TestCommands::wrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("nothing") << QStringList{};
    QTest::newRow("command") << QStringList{"walk"};
    QTest::newRow("no project") << QStringList{"run"};
    QTest::newRow("option") << QStringList{"run", "p.tbk", "--fast"};
    QTest::newRow("design") << QStringList{"run", "p.tbk", "--design", "none"};
    QTest::newRow("both") << QStringList{"run", "p.tbk", "--design", "wide", "--all-designs"};
    QTest::newRow("computation") << QStringList{"run", "p.tbk", "--computation", "none"};
    QTest::newRow("set") << QStringList{"run", "p.tbk", "--set", "width"};
    QTest::newRow("set name") << QStringList{"run", "p.tbk", "--set", "none=1"};
    QTest::newRow("set value") << QStringList{"run", "p.tbk", "--set", "width=1+"};
    QTest::newRow("jobs") << QStringList{"run", "p.tbk", "--jobs", "0"};
    QTest::newRow("configuration") << QStringList{"expand", "p.tbk", "--configuration", "none"};
}

void TestCommands::wrongUsage()
{
    QFETCH(QStringList, arguments);
    const FSandbox box;
    box.write("p.tbk", sumProject());
    const FCall call = box.call(arguments);
    QCOMPARE(call.code, 2);
    QVERIFY(!call.err.isEmpty());
    QVERIFY(call.out.isEmpty());
    QVERIFY(!box.has("p_designs"));
}

void TestCommands::unreadableProjects_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("message");
    const QByteArray good = "parameter kept(7);\n";
    QTest::newRow("unknown command") << "nonsense a();\n" + good << "nonsense";
    QTest::newRow("unknown member") << "parameter a(1) { .paint(\"red\"); }\n" + good << "paint";
    QTest::newRow("truncated") << good + "parameter a(1) {\n    .setValue("
                               << "p.tbk:";
    QTest::newRow("not UTF-8") << good + "parameter b(\"\xff\xfe\");\n"
                               << "UTF-8";
    QTest::newRow("nested") << good + "parameter c(" + QByteArray(100000, '[') +
                                   QByteArray(100000, ']') + ");\n"
                            << "nest";
}

void TestCommands::unreadableProjects()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, message);
    const FSandbox box;
    box.write("p.tbk", text);
    const FCall call = box.call({"eval", "p.tbk", "kept", "--json"});
    QCOMPARE(call.code, 3);
    QVERIFY2(call.out.contains(message.toUtf8()), call.out.left(2000));
    QVERIFY2(call.out.contains("p.tbk:"), call.out.left(2000)); // with its place
    if (message != "UTF-8")
        QCOMPARE(call.json()["results"].toArray().at(0).toObject()["value"].toDouble(), 7.0);
    // No run starts from half a project, and the log says why in either form.
    const FCall run = box.call({"run", "p.tbk", "--json"});
    QCOMPARE(run.code, 3);
    QVERIFY(!run.log().isEmpty());
    QVERIFY(box.call({"run", "p.tbk"}).err.contains("p.tbk:"));
    QCOMPARE(box.read("p.tbk"), text);
}

void TestCommands::couplingsTravel()
{
    const FSandbox box;
    const auto code = [&](const QStringList &arguments, int wanted, const char *told) {
        const FCall call = box.call(arguments);
        QVERIFY2(call.code == wanted && (call.out + call.err).contains(told),
                 QByteArray::number(call.code) + call.out + call.err);
    };
    box.write("one.tbk", sumProject());
    code({"export", "one.tbk", "--computation", "none", "--output", "s.ovdl"}, 2, "no computation");
    code({"export", "one.tbk", "--computation", "solver", "--output", "s.ovdl"}, 0, "");
    // Beside the original, without what it refers to, and not at all.
    code({"import", "s.ovdl", "--into", "one.tbk", "--output", "two.tbk"}, 0,
         "imported solver1, which runs: ");
    code({"import", "s.ovdl", "--output", "new.tbk"}, 0, "no object called width");
    code({"check", "new.tbk"}, 1, "width");
    box.write("bad.ovdl", box.read("s.ovdl").replace(".setApplication(", ".setWish("));
    code({"import", "bad.ovdl", "--into", "one.tbk", "--output", "none.tbk"}, 3, "setWish");
    QVERIFY(!box.has("none.tbk"));
    // What one leaves the other takes: a file that is new in each run.
    code({"link", "two.tbk", "--from", "solver:none", "--to", "solver1", "--output", "none.tbk"}, 2,
         "leaves no file none; it leaves out.txt");
    code(
        {"link", "two.tbk", "--from", "solver:out.txt", "--to", "solver1", "--output", "three.tbk"},
        0, "Exports|out.txt");
    for (const char *entry : {"solver", "solver:Exports|out.txt"})
        code({"link", "three.tbk", "--from", "solver1:out.txt", "--to", entry, "--output",
              "none.tbk"},
             2,
             strcmp(entry, "solver") == 0 ? "cyclic dependency" : "has no entry Exports|out.txt");
    code({"link", "three.tbk", "--from", "solver:out.txt", "--to", "solver1", "--output",
          "none.tbk"},
         2, "exists already");
    QVERIFY(!box.has("none.tbk"));
    code({"export", "three.tbk", "--computation", "solver1", "--output", "t.ovdl"}, 2, "--chain");
    code({"export", "three.tbk", "--computation", "solver1", "--chain", "--output", "t.ovdl"}, 0,
         "");
    code({"import", "t.ovdl", "--into", "one.tbk", "--output", "four.tbk"}, 0, "imported solver11");
    QVERIFY(box.read("four.tbk").contains("inputFile(solver1.getResults()"));
    code({"run", "three.tbk"}, 0, "solver1");
}

void TestCommands::savesOnlyWhole()
{
    const FSandbox box;
    box.write("p.tbk", sumProject());
    box.write("old.tbk", "parameter old(1);\n");
    QCOMPARE(box.call({"save", "missing.tbk", "--output", "old.tbk"}).code, 3);
    QCOMPARE(box.read("old.tbk"), QByteArray("parameter old(1);\n"));
    QCOMPARE(box.call({"save", "p.tbk", "--output", "nofolder/x.tbk"}).code, 4);
    QCOMPARE(box.call({"save", "p.tbk", "--output", "."}).code, 4);
    QCOMPARE(box.call({"import-definition", "p.tbk", "--output", "old.tbk"}).code, 3);
    QCOMPARE(box.read("old.tbk"), QByteArray("parameter old(1);\n"));
}

void TestCommands::loadingStartsNothing()
{
    const FSandbox box;
    box.write("p.tbk", sumProject() + "solver.run();\n");
    const FCall call = box.call({"eval", "p.tbk", "width", "--json"});
    QVERIFY(!box.has("p_designs"));
    QVERIFY2(!call.log().isEmpty(), call.out);
    QCOMPARE(QDir(box.path()).entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot),
             QStringList({"p.tbk"}));
}

void TestCommands::tellsItsCommands()
{
    const FSandbox box;
    const FCall call = box.call({"commands", "--json"});
    QCOMPARE(call.code, 0);
    QMap<QString, QJsonObject> byClass;
    for (const QJsonValue &command : QJsonDocument::fromJson(call.out).array())
        byClass[command.toObject()["class"].toString()] = command.toObject();
    const QJsonObject creator =
        byClass["FCreateCmdFResultsGenIntgenericIntegrationResultsFDesignint"];
    QCOMPARE(creator["kind"].toString(), QString("creator"));
    const QJsonArray arguments = creator["arguments"].toArray();
    QCOMPARE(arguments.size(), 2);
    QCOMPARE(arguments[1].toObject(),
             (QJsonObject{{"type", "int"}, {"name", "computationId"}, {"default", "0"}}));
    const QJsonObject attribute = byClass["FAttribCmdFGenIntFilesetFileNameQString"];
    QCOMPARE(attribute["title"].toString(), QString("File Name"));
    QCOMPARE(attribute["returns"].toString(), QString("FGenIntFile"));
    QCOMPARE(attribute["systemFlag"].toInt(), 2);
    QVERIFY(attribute["hidden"].toBool() && attribute["guiThread"].toBool());
    // Without a label of its own an attribute is known by its category.
    QCOMPARE(byClass["FAttribCmdFGenIntComputationsetConfigurationFConfigurationGenInt"]["title"]
                 .toString(),
             QString("Configuration"));

    const QByteArray topic = box.call({"help", "setFileName"}).out;
    QVERIFY2(topic.startsWith("FGenIntFile.setFileName(QString fileName) : FGenIntFile\n"), topic);
    QCOMPARE(box.call({"help", "nosuch"}).code, 2);
}

QByteArray sourceText(const QString &name)
{
    QFile file(F_SOURCE_DIR "/" + name);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

/// The list that gives the order and the registry have the same words.
void TestCommands::helpTellsEveryWord()
{
    const FSandbox box;
    const QByteArray overview = box.call({"help"}).out;
    QVERIFY2(!overview.contains("\nMore\n"), "resources/help/overview.txt lacks a word");
    int from = 0, words = 0;
    for (const QByteArray &line : sourceText("resources/help/overview.txt").split('\n')) {
        const QByteArray shown = line.startsWith('#') ? line.mid(2) + "\n" : "  " + line + ": ";
        const int at = line.isEmpty() ? from : overview.indexOf("\n" + shown, from);
        QVERIFY2(at >= from, "not shown, or in another order: " + line);
        from = at;
        words += !line.isEmpty() && !line.startsWith('#');
    }
    QVERIFY(words > 40);
    for (const QString subject : {"tags", "rules", "notes"}) {
        const FCall call = box.call({"help", subject});
        QCOMPARE(call.code, 0);
        QCOMPARE(call.out.trimmed(), sourceText("resources/help/" + subject + ".txt").trimmed());
    }
}

/// Who adds a note tells what it means in the guide and in the help.
void TestCommands::notesAreExplained()
{
    const QByteArray guide = sourceText("docs/guide.md"),
                     help = FSandbox().call({"help", "notes"}).out;
    const QRegularExpression literal(
        "(?:notes << QStringLiteral\\(|noteMissing\\([^;\"]*)\"([^\"]+)\"");
    QSet<QString> notes;
    for (const QString folder : {"text", "genint"})
        for (const QString &name : QDir(F_SOURCE_DIR "/" + folder).entryList({"*.cpp"})) {
            auto match = literal.globalMatch(sourceText(folder + "/" + name));
            while (match.hasNext())
                notes << match.next().captured(1).replace("%1", "N").replace("%2", "M");
        }
    QVERIFY2(notes.size() > 10, "notes are made in another way now: look for them so");
    for (const QString &note : qAsConst(notes)) {
        QVERIFY2(guide.contains("| `" + note.toUtf8() + "` |"), "docs/guide.md: " + note.toUtf8());
        QVERIFY2(help.contains("\n" + note.toUtf8() + "\n"), "help/notes.txt: " + note.toUtf8());
    }
}

QTEST_GUILESS_MAIN(TestCommands)
#include "tst_commands.moc"

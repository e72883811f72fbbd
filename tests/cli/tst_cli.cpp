// SPDX-License-Identifier: Apache-2.0
// The program as its users call it: commands, exit codes, JSON, and what stays on the disk.
#include "turnbuckleprocess.h"

#include <QRegularExpression>
#include <QtTest>
#include <cmath>
#include <csignal>

namespace {
/// A project with one computation: in.txt goes in, the numbers behind "sum" and "n" come out.
QByteArray project(const QByteArray &application, const QByteArray &arguments,
                   const QByteArray &more = QByteArray())
{
    return R"(parameter width(2.5);
genericIntegrationCommandFile input() {
    .setFileName("in.txt");
    .setContent("<entry>width</entry>
4
");
}
genericIntegrationResultsFile output() {
    .setFileName("out.txt");
    .setValues([["sum",0,0,"sum",Last,"FDouble","",0,nullptr],["n",0,0,"n =",Last,"FDouble","",0,nullptr]]);
}
genericIntegrationDefinition definition() {
    .addEntry("width",1.0);
    .setFiles([input,output]);
}
genericIntegrationConfiguration configuration() {
    .setDefinition(definition);
    .setEntry("width",width);
}
genericIntegrationComputation solver() {
    .setConfiguration(configuration);
    .setApplication(")" +
           application + "\");\n    .setArguments(\"" + arguments + "\");\n" + more +
           "}\nparameter total(solver.getResults().getTable(\"out.txt\").getElementAt(\"sum\"));\n"
           "design wide() { .setValue(\"width\",4); }\n";
}

const QByteArray kFakesim = F_BIN_DIR "/fakesim";

QByteArray sumProject(const QByteArray &more = QByteArray())
{
    return project(kFakesim, "sum in.txt out.txt", more);
}

QJsonValue valueOf(const QJsonObject &run, const QString &name)
{
    for (const QJsonValue &table : run["tables"].toArray())
        for (const QJsonValue &row : table.toObject()["rows"].toArray())
            if (row.toObject()["name"] == name)
                return row.toObject()["value"];
    return QJsonValue::Undefined;
}

/// A parameter of a design, or a value that one of its runs has read.
double valueIn(const QJsonObject &json, const QString &design, const QString &name)
{
    const QJsonObject parameters = json["designs"].toObject()[design].toObject();
    if (parameters.contains(name))
        return parameters[name].toDouble(NAN);
    for (const QJsonValue &run : json["runs"].toArray())
        if (run.toObject()["design"] == design && !valueOf(run.toObject(), name).isUndefined())
            return valueOf(run.toObject(), name).toDouble(NAN);
    return NAN;
}

/// True while a process runs whose command line holds \p mark.
bool isRunning(const QByteArray &mark)
{
    for (const QString &pid : QDir("/proc").entryList({"[0-9]*"}, QDir::Dirs)) {
        QFile file("/proc/" + pid + "/cmdline");
        if (file.open(QFile::ReadOnly) && file.readAll().contains(mark))
            return true;
    }
    return false;
}

/// A project whose program starts two more and waits; \p mark stands in the command line of all.
QByteArray hangingProject(const QByteArray &mark)
{
    return project("sh", "-c 'setsid sleep " + mark + " & sleep " + mark +
                             " & touch started; sleep " + mark + "'");
}
} // namespace

class TestCli : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void examples_data();
    void examples();
    void agreesWithSolverCalledByHand();
    void runsAndReportsInJson();
    void choosesDesignsAndComputations();
    void keepsTheOrderOfDesigns();
    void tableMarksDoubts();
    void reasons_data();
    void reasons();
    void goesOnAfterFailureWhenTold();
    void neverReadsResultsOfEarlierRun();
    void interruptEndsEverything();
    void killEndsEverything();
    void writesFilesAsDescribed();
    void refusesNamesThatLeaveTheFolder();
    void extractsWithoutRun();
    void evaluates();
    void wrongUsage_data();
    void wrongUsage();
    void unreadableProjects_data();
    void unreadableProjects();
    void savesOnlyWhole();
    void loadingStartsNothing();
    void tellsItsCommands();
};

void TestCli::examples_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"beam", "filter", "chain"})
        QTest::newRow(name) << name;
}

void TestCli::examples()
{
    QFETCH(QString, name);
    const FSandbox box;
    const QString source = QString(F_SOURCE_DIR "/examples/") + name + "/";
    QVERIFY(QFile::copy(source + name + ".tbk", box.path("example.tbk")));
    const FCall call = box.call({"run", "example.tbk", "--all-designs", "--json"});
    QVERIFY2(call.code == 0, call.out + call.err);
    QFile expected(source + "expected.txt");
    QVERIFY(expected.open(QFile::ReadOnly));
    int lines = 0;
    for (const QByteArray &line : expected.readAll().split('\n')) {
        const QList<QByteArray> words = line.split(' ');
        if (words.size() != 4)
            continue;
        ++lines;
        const double found = valueIn(call.json(), words[0], words[1]);
        const double wanted = words[2].toDouble();
        QVERIFY2(std::abs(found - wanted) <= words[3].toDouble() * std::abs(wanted),
                 line + " but " + QByteArray::number(found));
    }
    QVERIFY(lines > 5);

    const QByteArray text = box.read("example.tbk");
    QCOMPARE(box.call({"save", "example.tbk", "--output", "once.tbk"}).code, 0);
    QCOMPARE(box.call({"save", "once.tbk", "--output", "twice.tbk"}).code, 0);
    QVERIFY(!box.read("once.tbk").isEmpty());
    QCOMPARE(box.read("twice.tbk"), box.read("once.tbk"));

    QProcess make;
    make.start("python3", {source + "make_project.py", "--check"});
    QVERIFY(make.waitForFinished());
    QVERIFY2(make.exitCode() == 0, "the project is not what its script makes of the sources");
}

void TestCli::agreesWithSolverCalledByHand()
{
    const FSandbox box;
    QVERIFY(QFile::copy(F_SOURCE_DIR "/examples/beam/beam.tbk", box.path("beam.tbk")));
    QCOMPARE(box.call({"expand", "beam.tbk", "--output", "byhand"}).code, 0);
    QProcess solver;
    solver.setWorkingDirectory(box.path("byhand"));
    solver.start("ccx", {"-i", "beam"});
    QVERIFY(solver.waitForFinished());
    // The last line of the last block of displacements: node, vx, vy, vz.
    QByteArray block = box.read("byhand/beam.dat");
    block = block.mid(block.lastIndexOf("displacements"));
    const QList<QByteArray> words = block.split('\n').value(2).simplified().split(' ');
    QCOMPARE(words.size(), 4);
    const FCall call = box.call({"run", "beam.tbk", "--json"});
    QCOMPARE(valueOf(call.run(), "deflection").toDouble(), words[3].toDouble());
}

void TestCli::runsAndReportsInJson()
{
    const FSandbox box;
    box.write("p.tbk", sumProject());
    const FCall call = box.call({"run", "p.tbk", "--json", "--set", "width=10/4+0.5"});
    QVERIFY2(call.code == 0, call.out + call.err);
    QVERIFY2(call.err.isEmpty(), call.err);
    const QJsonObject run = call.run();
    QCOMPARE(QStringList(call.json().keys()),
             QStringList({"designs", "log", "parameters", "project", "runs"}));
    QCOMPARE(QStringList(run.keys()),
             QStringList({"computation", "design", "directory", "exitCode", "reason", "seconds",
                          "signal", "state", "tables"}));
    QCOMPARE(run["computation"].toString(), QString("solver"));
    QCOMPARE(run["design"].toString(), QString("baseline"));
    QCOMPARE(run["state"].toString(), QString("finished"));
    QCOMPARE(run["exitCode"], QJsonValue(0));
    QVERIFY(run["signal"].isNull());
    QCOMPARE(QDir(run["directory"].toString()).canonicalPath(),
             QDir(box.path("p_designs/baseline/solver")).canonicalPath());
    const QJsonObject table = run["tables"].toArray().at(0).toObject();
    QCOMPARE(table["name"].toString(), QString("out.txt"));
    const QJsonObject row = table["rows"].toArray().at(0).toObject();
    QCOMPARE(QStringList(row.keys()), QStringList({"name", "note", "text", "value", "where"}));
    QCOMPARE(row["value"].toDouble(), 7.0);
    QVERIFY(row["note"].isNull());
    QVERIFY2(row["where"].toString().contains("out.txt:1:"), qPrintable(row["where"].toString()));
    QCOMPARE(call.json()["parameters"].toObject()["total"].toDouble(), 7.0);

    const QJsonObject record = box.record("p_designs/baseline/solver");
    QCOMPARE(record["state"].toString(), QString("finished"));
    QCOMPARE(record["command"].toArray().size(), 4);
    for (const char *file : {"in.txt", "out.txt", "stdout.txt", "stderr.txt"})
        QVERIFY2(box.has(QString("p_designs/baseline/solver/") + file), file);

    const FCall text = box.call({"run", "p.tbk"});
    QCOMPARE(text.code, 0);
    QVERIFY2(text.out.contains("sum  6.5"), text.out);
}

void TestCli::choosesDesignsAndComputations()
{
    const FSandbox box;
    box.write("p.tbk", sumProject());
    FCall call = box.call({"run", "p.tbk", "--design", "wide", "--json"});
    QCOMPARE(call.code, 0);
    QCOMPARE(call.json()["runs"].toArray().size(), 1);
    QCOMPARE(call.run()["design"].toString(), QString("wide"));
    QCOMPARE(valueOf(call.run(), "sum").toDouble(), 8.0);
    QCOMPARE(call.json()["parameters"].toObject()["width"].toDouble(), 4.0);
    QVERIFY(!box.has("p_designs/baseline"));

    call = box.call({"run", "p.tbk", "--all-designs", "--jobs", "2", "--json"});
    QCOMPARE(call.code, 0);
    const QJsonObject designs = call.json()["designs"].toObject();
    QCOMPARE(designs["baseline"].toObject()["total"].toDouble(), 6.5);
    QCOMPARE(designs["wide"].toObject()["total"].toDouble(), 8.0);

    const QByteArray table = box.call({"run", "p.tbk", "--all-designs"}).out;
    const QRegularExpression line("^wide +4 +8$", QRegularExpression::MultilineOption);
    QVERIFY2(line.match(table).hasMatch(), table);
    QVERIFY2(!table.contains("doubts"), table);
}

void TestCli::keepsTheOrderOfDesigns()
{
    const FSandbox box;
    // The baseline, whose sum is 6.5, waits for the other design.
    box.write("p.tbk", project("sh", "-c 'if grep -q 2.5 in.txt; then "
                                     "until [ -e ../../wide/solver/out.txt ]; do sleep 0.02; done; "
                                     "fi; " +
                                         kFakesim + " sum in.txt out.txt'"));
    const FCall call = box.call({"run", "p.tbk", "--all-designs", "--jobs", "2", "--json"});
    QCOMPARE(call.run(0)["design"].toString(), QString("baseline"));
    QCOMPARE(call.run(1)["design"].toString(), QString("wide"));
    QVERIFY(QDir(box.path("p_designs")).removeRecursively());
    const QByteArray table = box.call({"run", "p.tbk", "--all-designs", "--jobs", "2"}).out;
    QVERIFY2(table.contains("\nbaseline ") &&
                 table.indexOf("\nbaseline ") < table.indexOf("\nwide "),
             table);
}

void TestCli::tableMarksDoubts()
{
    const FSandbox box;
    box.write("p.tbk", project("sh", "-c 'printf \\\"n = 1\\nsum = 3\\\" >out.txt'"));
    const QByteArray table = box.call({"run", "p.tbk", "--all-designs"}).out;
    const QRegularExpression line("^wide +4 .* ! 1$", QRegularExpression::MultilineOption);
    QVERIFY2(line.match(table).hasMatch(), table);
    QVERIFY2(table.contains("\n! solver out.txt sum: last line has no line end (2 of 2 designs)\n"),
             table);
}

void TestCli::reasons_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("state");
    QTest::addColumn<QString>("reason");
    QTest::newRow("exit code") << project("sh", "-c 'exit 3'") << "failed"
                               << "exit code 3";
    QTest::newRow("signal") << project("sh", "-c 'kill -SEGV $$'") << "failed"
                            << "signal 11";
    QTest::newRow("time limit") << project("sleep", "60", "    .setTimeout(0.2);\n") << "timeout"
                                << "time limit of 0.2 s";
    QTest::newRow("not found") << project("nosuchprogram", "") << "not-started"
                               << "cannot start nosuchprogram: not found";
    QTest::newRow("not executable") << project("/etc/passwd", "") << "not-started"
                                    << "cannot start /etc/passwd: not executable";
    QTest::newRow("directory") << project("/tmp", "") << "not-started"
                               << "cannot start /tmp: is a directory";
    QTest::newRow("no result") << project("true", "") << "failed"
                               << "result file out.txt missing";
}

void TestCli::reasons()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, state);
    QFETCH(QString, reason);
    const FSandbox box;
    box.write("p.tbk", text);
    const FCall call = box.call({"run", "p.tbk", "--json"});
    QCOMPARE(call.code, 1);
    QCOMPARE(call.run()["state"].toString(), state);
    QCOMPARE(call.run()["reason"].toString(), reason);
    QCOMPARE(call.json()["parameters"].toObject()["total"], QJsonValue());
    const QJsonObject record = box.record("p_designs/baseline/solver");
    QCOMPARE(record["state"].toString(), state);
    QCOMPARE(record["reason"].toString(), reason);
    // The text form says the same.
    const FCall plain = box.call({"run", "p.tbk"});
    QCOMPARE(plain.code, 1);
    QVERIFY2((plain.out + plain.err).contains(reason.toUtf8()), plain.out + plain.err);
}

void TestCli::goesOnAfterFailureWhenTold()
{
    const FSandbox box;
    // Fails for the baseline only, whose sum is 6.5.
    box.write("p.tbk", project("sh", "-c 'grep -q 2.5 in.txt && exit 1; " + kFakesim +
                                         " sum in.txt out.txt'"));
    FCall call = box.call({"run", "p.tbk", "--all-designs", "--jobs", "1", "--json"});
    QCOMPARE(call.code, 1);
    QVERIFY(!box.has("p_designs/wide/solver/out.txt"));
    call = box.call({"run", "p.tbk", "--all-designs", "--jobs", "1", "--keep-going", "--json"});
    QCOMPARE(call.code, 1);
    QCOMPARE(call.run(0)["state"].toString(), QString("failed"));
    QCOMPARE(call.run(1)["state"].toString(), QString("finished"));
    QCOMPARE(call.json()["designs"].toObject()["wide"].toObject()["total"].toDouble(), 8.0);
    QCOMPARE(call.json()["designs"].toObject()["baseline"].toObject()["total"], QJsonValue());
}

void TestCli::neverReadsResultsOfEarlierRun()
{
    const FSandbox box;
    box.write("p.tbk", sumProject());
    QCOMPARE(box.call({"run", "p.tbk"}).code, 0);
    QVERIFY(box.has("p_designs/baseline/solver/out.txt"));
    box.write("p.tbk", project("true", ""));
    const FCall call = box.call({"run", "p.tbk", "--json"});
    QCOMPARE(call.code, 1);
    QCOMPARE(call.run()["reason"].toString(), QString("result file out.txt missing"));
    QVERIFY(!box.has("p_designs/baseline/solver/out.txt"));
}

void TestCli::interruptEndsEverything()
{
    const FSandbox box;
    box.write("p.tbk", hangingProject("98765.25"));
    QProcess process;
    box.prepare(&process, {"run", "p.tbk", "--json"});
    process.start();
    QTRY_VERIFY_WITH_TIMEOUT(box.has("p_designs/baseline/solver/started"), 20000);
    QVERIFY(isRunning("98765.25"));
    ::kill(pid_t(process.processId()), SIGINT);
    QVERIFY(process.waitForFinished(20000));
    QCOMPARE(process.exitCode(), 130);
    QVERIFY(!isRunning("98765.25"));
    QCOMPARE(box.record("p_designs/baseline/solver")["state"].toString(), QString("cancelled"));
    const QJsonObject json = QJsonDocument::fromJson(process.readAllStandardOutput()).object();
    QCOMPARE(json["runs"].toArray().at(0).toObject()["reason"].toString(), QString("cancelled"));
}

void TestCli::killEndsEverything()
{
    const FSandbox box;
    box.write("p.tbk", hangingProject("98765.75"));
    QProcess process;
    box.prepare(&process, {"run", "p.tbk"});
    process.start();
    QTRY_VERIFY_WITH_TIMEOUT(box.has("p_designs/baseline/solver/started"), 20000);
    process.kill();
    QVERIFY(process.waitForFinished());
    QTRY_VERIFY_WITH_TIMEOUT(!isRunning("98765.75"), 20000);
    QTRY_COMPARE_WITH_TIMEOUT(box.record("p_designs/baseline/solver")["state"].toString(),
                              QString("cancelled"), 20000);
}

void TestCli::writesFilesAsDescribed()
{
    const FSandbox box;
    box.write("mesh.txt", "1 2 3\n");
    box.write("p.tbk", QByteArray(R"(parameter size(2.5);
genericIntegrationCommandFile deck() {
    .setFileName("sub/dir/deck.txt");
    .setForceWindowsLineEndings(true);
    .setContent("Länge <entry>group|size</entry>
mesh <entry>Exports|mesh</entry>
");
}
genericIntegrationDefinition definition() {
    .addEntry("group|size",1.0);
    .addEntry("Exports|mesh",inputFile("",""));
    .setFiles([deck]);
}
genericIntegrationConfiguration configuration() {
    .setDefinition(definition);
    .setEntry("group|size",size);
    .setEntry("Exports|mesh",inputFile("mesh.txt","data/"));
}
genericIntegrationComputation solver() {
    .setConfiguration(configuration);
    .setApplication("sh");
    .setArguments("-c 'cat > got.txt; cat data/mesh.txt; echo $COLOUR \"$1\" >&2' - 'two words'");
    .setStandardInput("sub/dir/deck.txt");
    .setEnvironment(["COLOUR=red"]);
}
)"));
    const FCall call = box.call({"run", "p.tbk", "--json"});
    QVERIFY2(call.code == 0, call.out + call.err);
    const QString folder = "p_designs/baseline/solver/";
    const QByteArray deck = "Länge 2.5\r\nmesh data/mesh.txt\r\n";
    QCOMPARE(box.read(folder + "sub/dir/deck.txt"), deck);
    QCOMPARE(box.read(folder + "got.txt"), deck);
    QCOMPARE(box.read(folder + "data/mesh.txt"), QByteArray("1 2 3\n"));
    QCOMPARE(box.read(folder + "stdout.txt"), QByteArray("1 2 3\n"));
    QCOMPARE(box.read(folder + "stderr.txt"), QByteArray("red two words\n"));

    const FCall preview = box.call({"expand", "p.tbk", "--json"});
    const QJsonObject file = preview.json()["files"].toArray().at(0).toObject();
    QCOMPARE(file["name"].toString(), QString("sub/dir/deck.txt"));
    QVERIFY2(file["text"].toString().startsWith("Länge 2.5"), preview.out);
    QCOMPARE(box.call({"expand", "p.tbk", "--output", "shown"}).code, 0);
    QCOMPARE(box.read("shown/sub/dir/deck.txt"), deck);

    // Files of two configurations don't overwrite each other.
    box.write("two.tbk", box.read("p.tbk") + R"(genericIntegrationConfiguration other() {
    .setDefinition(definition);
}
)");
    QCOMPARE(box.call({"expand", "two.tbk", "--output", "none"}).code, 2);
    QVERIFY(!box.has("none"));
    QCOMPARE(box.call({"expand", "two.tbk", "--output", "none", "--configuration", "other"}).code,
             0);
}

void TestCli::refusesNamesThatLeaveTheFolder()
{
    const FSandbox box;
    QByteArray text = sumProject();
    box.write("p.tbk", text.replace("\"in.txt\"", "\"../../x\""));
    const FCall call = box.call({"run", "p.tbk", "--json"});
    QCOMPARE(call.code, 1);
    QVERIFY(!box.has("p_designs/x"));
    QVERIFY(!box.has("x"));
    QVERIFY2(
        call.log().filter(QRegularExpression("^Could not open file .*x.* for writing")).size() == 1,
        call.out);
    QCOMPARE(box.call({"expand", "p.tbk", "--output", "a/b/c"}).code, 4);
    QVERIFY(!box.has("a/x"));

    // Nothing is read from elsewhere either: it could be what an earlier run has left.
    const QList<std::pair<QByteArray, QByteArray>> changes = {
        {"\"out.txt\"", "\"../old.txt\""},
        {"\"out.txt\"", "\"\""},
        {".setArguments", ".setStandardInput(\"/etc/passwd\");\n    .setArguments"}};
    for (const auto &[from, to] : changes) {
        QByteArray changed = sumProject();
        changed.replace(changed.indexOf(from), from.size(), to);
        box.write("q.tbk", changed);
        const FCall refused = box.call({"run", "q.tbk", "--json"});
        QCOMPARE(refused.code, 1);
        QCOMPARE(refused.run()["state"].toString(), QString("not-started"));
        QVERIFY2(refused.run()["reason"].toString().startsWith("name of "), refused.out);
    }
}

void TestCli::extractsWithoutRun()
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

void TestCli::evaluates()
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

void TestCli::wrongUsage_data()
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

void TestCli::wrongUsage()
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

void TestCli::unreadableProjects_data()
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

void TestCli::unreadableProjects()
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

void TestCli::savesOnlyWhole()
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

void TestCli::loadingStartsNothing()
{
    const FSandbox box;
    box.write("p.tbk", sumProject() + "solver.run();\n");
    const FCall call = box.call({"eval", "p.tbk", "width", "--json"});
    QVERIFY(!box.has("p_designs"));
    QVERIFY2(!call.log().isEmpty(), call.out);
    QCOMPARE(QDir(box.path()).entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot),
             QStringList({"p.tbk"}));
}

void TestCli::tellsItsCommands()
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

    QVERIFY(box.call({"help"}).out.contains("genericIntegrationDefinition: "));
    const QByteArray topic = box.call({"help", "setFileName"}).out;
    QVERIFY2(topic.startsWith("FGenIntFile.setFileName(QString fileName) : FGenIntFile\n"), topic);
    QCOMPARE(box.call({"help", "nosuch"}).code, 2);
}

QTEST_GUILESS_MAIN(TestCli)
#include "tst_cli.moc"

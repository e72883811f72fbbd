// SPDX-License-Identifier: Apache-2.0
// Runs as users start them: reasons, JSON, and what stays on the disk.
#include "sumproject.h"
#include "turnbuckleprocess.h"

#include <QRegularExpression>
#include <QtTest>
#include <cmath>
#include <csignal>

namespace {
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
    void runsTheDesignsOfATable();
    void showsTheChain();
    void keepsProjectsAsFolders();
    void keepsTheOrderOfDesigns();
    void tableMarksDoubts();
    void tellsWhatHasNoValue();
    void failsWithoutOutput();
    void reasons_data();
    void reasons();
    void goesOnAfterFailureWhenTold();
    void neverReadsResultsOfEarlierRun();
    void interruptEndsEverything();
    void killEndsEverything();
    void writesFilesAsDescribed();
    void refusesNamesThatLeaveTheFolder();
    void keepsTheWorkbench();
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
             QStringList({"computation", "design", "directory", "exitCode", "reason", "reused",
                          "seconds", "signal", "state", "tables"}));
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

void TestCli::showsTheChain()
{
    const FSandbox box;
    const QString chain = F_SOURCE_DIR "/examples/chain/chain.tbk";
    const FCall text = box.call({"graph", chain});
    QCOMPARE(text.code, 0);
    QVERIFY2(text.out.contains("pulse.inp") && text.out.contains("not run"), text.out.constData());
    QCOMPARE(box.call({"graph", chain, "--svg", "--output", "chain.svg"}).code, 0);
    QVERIFY(box.read("chain.svg").contains("<svg") && box.read("chain.svg").contains(">block<"));
    QVERIFY(box.call({"graph", chain, "--dot"}).out.startsWith("digraph"));
    QCOMPARE(box.call({"graph", chain, "--json"}).json()["nodes"].toArray().size(), 11);
    QVERIFY(
        box.call({"graph", chain, "--output", "none/chain.txt"}).err.contains("none/chain.txt"));
    QVERIFY(box.call({"graph", "none.tbk"}).code != 0);
}

void TestCli::keepsProjectsAsFolders()
{
    const FSandbox box;
    box.write("p.tbk", sumProject());
    box.write("mesh.inp", "m");
    QCOMPARE(box.call({"save", "p.tbk", "--output", "canonical.tbk"}).code, 0);
    QCOMPARE(box.call({"unpack", "p.tbk", "--output", "folder"}).code, 0);
    QCOMPARE(box.call({"pack", "folder", "--output", "back.tbk"}).code, 0);
    QCOMPARE(box.read("back.tbk"), box.read("canonical.tbk"));
    QCOMPARE(box.read("folder/.gitattributes"), QByteArray("/files/* -text\n"));
    const QString text = "folder/files/" + QDir(box.path("folder/files")).entryList(QDir::Files)[0];
    box.write(text, box.read(text) + "\n");
    const FCall run = box.call({"run", "folder", "--json"});
    QVERIFY2(run.code == 0, run.err.constData());
    QVERIFY(box.has("folder/project_designs"));
    QCOMPARE(box.call({"add", "folder", "--template", "mesh.inp"}).code, 0);
    QCOMPARE(box.read("folder/files/mesh.inp"), QByteArray("m"));
    QCOMPARE(box.call({"unpack", "p.tbk", "--output", "."}).code, 4);
    QCOMPARE(box.call({"pack", "folder", "--output", "folder"}).code, 2);
    // Who opens it while others save it sees one of their states.
    box.call({"unpack", "back.tbk", "--output", "other"});
    QCOMPARE(box.call({"pack", "folder", "--output", "x.tbk"}).code, 0);
    const QByteArray one = box.read("x.tbk"), two = box.read("canonical.tbk");
    std::vector<std::unique_ptr<QProcess>> savers;
    for (const char *from : {"x.tbk", "canonical.tbk"})
        for (int i = 0; i < 2; ++i) {
            savers.push_back(std::make_unique<QProcess>());
            box.prepare(savers.back().get(), {});
            savers.back()->setProgram("sh");
            savers.back()->setArguments({"-c",
                                         "for i in 1 2 3 4 5 6 7 8; do \"$0\" unpack $1 --output "
                                         "other || exit 1; done",
                                         F_BIN_DIR "/turnbuckle", from});
            savers.back()->start();
        }
    for (int i = 0; i < 12; ++i) {
        QCOMPARE(box.call({"pack", "other", "--output", "seen.tbk"}).code, 0);
        QVERIFY(box.read("seen.tbk") == one || box.read("seen.tbk") == two);
    }
    for (const auto &saver : savers) {
        QVERIFY(saver->waitForFinished(60000));
        QVERIFY2(saver->exitCode() == 0, saver->readAllStandardError().constData());
    }
}

void TestCli::runsTheDesignsOfATable()
{
    const FSandbox box;
    box.write("p.tbk", sumProject());
    box.write("t.csv", "design;width\nslim;1,5\nbroad;9\n");
    QCOMPARE(box.call({"run", "p.tbk", "--designs", "t.csv", "--table", "o.csv"}).code, 0);
    QCOMPARE(box.read("o.csv"), QByteArray("design,state,width,total\r\nslim,finished,1.5,5.5\r\n"
                                           "broad,finished,9,13\r\n"));
    const FCall again = box.call({"run", "p.tbk", "--designs", "t.csv", "--json"});
    QVERIFY(again.run(0)["reused"].toBool() && again.run(1)["reused"].toBool());
    QVERIFY(!box.call({"run", "p.tbk", "--designs", "t.csv", "--fresh", "--json"})
                 .run(0)["reused"]
                 .toBool());
    box.write("t.csv", "width,hight\n1,\n");
    const FCall bad = box.call({"run", "p.tbk", "--designs", "t.csv"});
    QVERIFY2(bad.code == 2 && bad.err.contains("t.csv:1:7: "), bad.err);
    QCOMPARE(box.call({"run", "p.tbk", "--failed"}).err,
             QByteArray("turnbuckle: no run has failed\n"));
    QCOMPARE(box.call({"run", "p.tbk", "--keep-free", "much"}).code, 2);
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
    const QRegularExpression line("^wide +4 .* ! 2$", QRegularExpression::MultilineOption);
    QVERIFY2(line.match(table).hasMatch(), table);
    QVERIFY2(table.contains("\n! solver out.txt sum: last line has no line end (2 of 2 designs)\n"),
             table);
}

void TestCli::tellsWhatHasNoValue()
{
    const FSandbox box;
    box.write("p.tbk",
              project("sh", "-c 'echo sum inf >out.txt; echo n = -inf >>out.txt'")
                      .replace(".setFileName(\"out.txt\");",
                               ".setFileName(\"out.txt\"); .setNumberSeparator(false); "
                               ".setSpacesAndTabsSeparator(true);") +
                  "parameter big(123456789012345.0);\n"
                  "parameter other(solver.getResults().getTable(\"OUT.txt\").getElementAt(\"n\"));"
                  "\n");
    FCall call = box.call({"run", "p.tbk", "--json"});
    QCOMPARE(call.code, 0);
    const QJsonObject row =
        call.run()["tables"].toArray()[0].toObject()["rows"].toArray()[0].toObject();
    QVERIFY(row["value"].isNull());
    QCOMPARE(row["text"].toString(), QString("inf"));
    const QJsonObject infinite{{"value", QJsonValue::Null}, {"text", "-inf"}};
    QCOMPARE(call.json()["parameters"].toObject()["other"].toObject(), infinite);
    call = box.call({"run", "p.tbk"});
    QVERIFY2(call.out.contains("sum  inf\n") &&
                 QRegularExpression("baseline .*2\\.5 +inf +123456789012345 +-inf\n")
                     .match(call.out)
                     .hasMatch(),
             call.out);
    QCOMPARE(box.call({"eval", "p.tbk", "big", "1e14", "1e15", "1e308*10"}).out,
             QByteArray("123456789012345\n100000000000000\n1e+15\ninf\n"));
    call = box.call({"eval", "p.tbk", "-1e308*10", "--json"});
    QCOMPARE(call.json()["results"].toArray()[0].toObject()["text"].toString(), QString("-inf"));

    // A parameter without a value is a failure of the run, unless a run that it needs is missing.
    const QByteArray wrong = sumProject("") +
                             "parameter lost(solver.getResults().getTable(\"no.txt\")"
                             ".getElementAt(\"sum\"));\n";
    box.write("p.tbk", wrong);
    call = box.call({"run", "p.tbk"});
    QCOMPARE(call.code, 1);
    QVERIFY2(call.out.contains("! parameter lost doesn't resolve: "), call.out);
    call = box.call({"run", "p.tbk", "--all-designs", "--json"});
    QCOMPARE(call.code, 1);
    QCOMPARE(call.log().filter("parameter lost doesn't resolve").size(), 2);
    box.write("p.tbk", wrong +
                           "genericIntegrationComputation free() {\n"
                           "    .setConfiguration(configuration);\n    .setApplication(\"" +
                           kFakesim + "\");\n    .setArguments(\"sum in.txt out.txt\");\n}\n");
    QCOMPARE(box.call({"run", "p.tbk", "--computation", "free"}).code, 0);
}

void TestCli::failsWithoutOutput()
{
    const FSandbox box;
    box.write("p.tbk", sumProject());
    box.write("out.txt", "sum = 1\nn = 2\n");
    for (const char *words :
         {"help", "help run", "--help", "--version", "commands", "commands --markdown",
          "eval p.tbk 1", "eval p.tbk 1 --json", "extract p.tbk out.txt", "expand p.tbk",
          "check p.tbk", "check p.tbk --json", "run p.tbk", "run p.tbk --json"})
        for (const char *output : {">/dev/full", ">&-"}) {
            QProcess shell;
            shell.setWorkingDirectory(box.path());
            shell.start("sh",
                        {"-c", QString("%1 %2 %3").arg(F_BIN_DIR "/turnbuckle", words, output)});
            QVERIFY(shell.waitForFinished());
            const QByteArray error = shell.readAllStandardError();
            QVERIFY2(shell.exitCode() == 4 && error.contains("cannot write to standard output: "),
                     QByteArray(words) + output + ": " + error);
        }
    // What prints nothing doesn't mind, and no other file takes the place of the stream.
    QCOMPARE(QProcess::execute("sh", {"-c", "cd " + box.path() +
                                                " && " F_BIN_DIR
                                                "/turnbuckle save p.tbk --output q.tbk >&-"}),
             0);
    QVERIFY(!box.read("q.tbk").isEmpty());
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

/// What a window keeps of its workbench passes through the command line unchanged.
void TestCli::keepsTheWorkbench()
{
    const FSandbox box;
    const QByteArray block = "softwareConnector page() {\n    .setComputation(solver);\n"
                             "    .setItemSize(Large);\n    .setResultsPath(\"runs/1\");\n}\n";
    box.write("p.tbk", project("cat", "in.txt") + block);
    QCOMPARE(box.call({"save", "p.tbk", "--output", "q.tbk"}).code, 0);
    QVERIFY(box.read("q.tbk").contains(block));
    QCOMPARE(box.call({"save", "q.tbk", "--output", "r.tbk"}).code, 0);
    QCOMPARE(box.read("r.tbk"), box.read("q.tbk"));
}

QTEST_GUILESS_MAIN(TestCli)
#include "tst_cli.moc"

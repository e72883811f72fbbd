// SPDX-License-Identifier: Apache-2.0
#include "fchanges.h"
#include "fchangeset.h"
#include "fconfigurationgenint.h"
#include "fdefinitiongenint.h"
#include "fgenintcommandfile.h"
#include "fgenintcomputation.h"
#include "fgenintresultsfile.h"
#include "fhistory.h"
#include "fmarloctrl.h"
#include "fobjectmanager.h"
#include "modeltest.h"

#include <QDir>
#include <QFileInfo>
#include <QtTest>

class tst_Computation : public QObject
{
    Q_OBJECT
    ModelTest mModel;

    /// A computation that adds the numbers of in.txt with the program of the tests.
    void sumModel(const QString &application = F_BIN_DIR "/fakesim",
                  const QString &arguments = "sum in.txt out.txt")
    {
        script("parameter p(1.5);"
               "genericIntegrationCommandFile in() { .setFileName(\"in.txt\");"
               " .setContent(\"<entry>a</entry> <entry>g|b</entry>\n\"); }"
               "genericIntegrationResultsFile out() { .setFileName(\"out.txt\"); .setValues(["
               "[\"sum\",0,0,\"sum =\",Last,\"FDouble\",\"\",0,nullptr],"
               "[\"none\",0,0,\"n =\",Last,\"FDouble\",\"\",0,nullptr]]); }"
               "genericIntegrationDefinition d() { .addEntry(\"a\",2.5); .addEntry(\"g|b\",4);"
               " .setFiles([in,out]); }"
               "genericIntegrationConfiguration c(true) { .setDefinition(d); .setEntry(\"a\",p); }"
               "genericIntegrationComputation comp() { .setConfiguration(c); .setApplication(\"" +
               application + "\"); .setArguments(\"" + QString(arguments).replace('"', "\\\"") +
               "\"); }");
        ModelTest::log();
    }
    static void script(const QString &text)
    {
        const QStringList errors = ModelTest::run(text);
        if (!errors.isEmpty())
            qFatal("%s", qPrintable(errors.join('\n')));
    }
    static std::shared_ptr<FGenIntComputation> comp()
    {
        return ModelTest::object<FGenIntComputation>("comp");
    }
    static QString get(const char *value)
    {
        return ModelTest::value(QString("comp.getResults().getTable(\"out.txt\").getElementAt("
                                        "\"%1\")")
                                    .arg(value));
    }
    QString folder() const { return mModel.path("p_designs/baseline/comp/"); }

private Q_SLOTS:
    void init() { mModel.start(); }
    void run();
    void rereadAfterTemplateChange();
    void failures_data();
    void failures();
    void failureLeavesNoNumbers();
    void fileValues();
    void refusedFileValues_data();
    void refusedFileValues();
    void relay();
    void reread();
    void destroyedTogether();
    void renamed();
};

void tst_Computation::run()
{
    sumModel();
    QVERIFY(!comp()->getResults());
    QCOMPARE(get("sum"), QString("nullptr")); // asking starts nothing
    QVERIFY(!QFile::exists(folder()));
    QCOMPARE(ModelTest::run("comp.run();"), QStringList());
    QCOMPARE(ModelTest::read(folder() + "in.txt"), QByteArray("1.5 4\n"));
    QCOMPARE(get("sum"), QString("5.5"));
    QCOMPARE(get("none"), QString("2"));
    QCOMPARE(ModelTest::value("comp.getResults().getDataAt(\"sum\",0)"), QString("5.5"));
    QVERIFY(comp()->isUpToDate());
    const auto first = comp()->getResults().getPtr();

    // A value that changes makes the run stale, and nothing more.
    script("p.setValue(10);");
    QVERIFY(!comp()->isUpToDate());
    QCOMPARE(get("sum"), QString("5.5"));
    QCOMPARE(ModelTest::read(folder() + "in.txt"), QByteArray("1.5 4\n"));
    ModelTest::write(folder() + "left over", "x");
    QCOMPARE(ModelTest::run("comp.run();"), QStringList());
    QCOMPARE(get("sum"), QString("14"));
    QVERIFY(!QFile::exists(folder() + "left over")); // a fresh folder
    QVERIFY(comp()->getResults().getPtr() != first && first->isDestroyed());
    QCOMPARE(comp()->getResults().ptr<FResultsGenInt>()->tables().size(), size_t(1));
    QCOMPARE(ModelTest::log(), QStringList());
}

// What is read follows the templates as they are now; no run starts for that.
void tst_Computation::rereadAfterTemplateChange()
{
    sumModel();
    QVERIFY(comp()->run());
    script("parameter e(comp.getResults().getTable(\"out.txt\").getElementAt(\"sum\"));");
    QCOMPARE(ModelTest::value("e + 0"), QString("5.5"));
    const QDateTime before = QFileInfo(folder() + ".turnbuckle/run.json").lastModified();
    script("out.setValues([[\"sum\",1,0,\"sum =\",Last,\"FDouble\",\"\",0,nullptr]]);");
    QVERIFY(!comp()->isUpToDate());
    QCOMPARE(ModelTest::value("e + 0"), QString("2"));
    script("in.setContent(\"1 2 3\");");
    QCOMPARE(ModelTest::value("e + 0"), QString("2"));
    QCOMPARE(QFileInfo(folder() + ".turnbuckle/run.json").lastModified(), before);
    QCOMPARE(ModelTest::read(folder() + "in.txt"), QByteArray("1.5 4\n"));
    script("comp.run();");
    QCOMPARE(ModelTest::value("e + 0"), QString("3"));
    // A template more, added later, is read as well once it is asked to.
    script("genericIntegrationResultsFile more() { .setFileName(\"in.txt\"); .setValues([["
           "\"v\",0,1,\"\",Last,\"FDouble\",\"\",0,nullptr]]); } d.setFiles([in,out,more]);"
           "comp.rereadResults();");
    QCOMPARE(ModelTest::value("comp.getResults().getTable(\"more\").getElementAt(\"v\")"),
             QString("2"));
}

void tst_Computation::failures_data()
{
    QTest::addColumn<QString>("application");
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("reason");
    const QString fakesim = F_BIN_DIR "/fakesim";
    QTest::newRow("exit code") << fakesim << "exit 3"
                               << ""
                               << "exit";
    QTest::newRow("signal") << "/bin/sh"
                            << "-c 'kill -9 $$'"
                            << ""
                            << "signal 9";
    QTest::newRow("no such program") << "/no/such/program"
                                     << ""
                                     << ""
                                     << "/no/such/program";
    QTest::newRow("no program") << ""
                                << ""
                                << ""
                                << "";
    QTest::newRow("time limit") << "/bin/sh"
                                << "-c 'sleep 20'"
                                << "comp.setTimeout(0.2);"
                                << "time limit";
    QTest::newRow("quote without end") << fakesim << "sum 'in.txt"
                                       << ""
                                       << "";
    // The program ends well, but what a result template reads isn't there.
    QTest::newRow("result missing") << "/bin/sh"
                                    << "-c true"
                                    << ""
                                    << "out.txt";
    QTest::newRow("template leads out") << fakesim << "sum in.txt out.txt"
                                        << "in.setFileName(\"../../x\");"
                                        << "../../x";
    QTest::newRow("no configuration") << fakesim << "sum in.txt out.txt"
                                      << "comp.setConfiguration(nullptr);"
                                      << "No configuration found";
    QTest::newRow("no definition") << fakesim << "sum in.txt out.txt"
                                   << "c.setDefinition(nullptr);"
                                   << "No definition found";
}

void tst_Computation::failures()
{
    QFETCH(QString, application);
    QFETCH(QString, arguments);
    QFETCH(QString, before);
    QFETCH(QString, reason);
    sumModel(application, arguments);
    script(before);
    int started = 0, ended = 0;
    QObject::connect(
        comp()->getSignalRapper(), &FGenIntCompSignalRapper::genIntRunStarted, this,
        [&] { ++started; });
    QObject::connect(comp()->getSignalRapper(), &FGenIntCompSignalRapper::genIntRunEnded, this,
                     [&](bool ok) { ended += ok ? 1 : 100; });
    const QStringList errors = ModelTest::run("comp.run();");
    QCOMPARE(errors.size(), 1);
    QVERIFY2(errors[0].contains("computation comp: ") && errors[0].contains(reason),
             qPrintable(errors[0]));
    QVERIFY(!comp()->isUpToDate() && !comp()->isRunning());
    QCOMPARE(get("sum"), QString("nullptr"));
    QVERIFY(started == 1 && ended == 1); // told on every path, and never as a failure
    QVERIFY(!QFile::exists(mModel.path("x")) && !QFile::exists(mModel.path("p_designs/x")));
}

void tst_Computation::failureLeavesNoNumbers()
{
    sumModel();
    script("parameter e(comp.getResults().getTable(\"out.txt\").getElementAt(\"sum\"));");
    QVERIFY(comp()->run());
    QCOMPARE(ModelTest::value("e + 1"), QString("6.5"));
    script("comp.setArguments(\"exit 1\");");
    QVERIFY(!comp()->run());
    const QString now = ModelTest::value("e + 1").toLower();
    QVERIFY2(now == "nan" || now == "nullptr", qPrintable(now));
}

void tst_Computation::fileValues()
{
    sumModel("/bin/sh", "-c 'cat m/mesh.dat other.dat part.stl; echo sum = 1 > out.txt'");
    ModelTest::write(mModel.path("mesh.dat"), "mesh 1\n");
    ModelTest::write(mModel.path("part.stl"), "solid\n");
    QDir().mkpath(mModel.path("data"));
    ModelTest::write(mModel.path("data/other.dat"), "other\n");
    const QDateTime old = QDateTime::currentDateTime().addDays(-3);
    QFile mesh(mModel.path("mesh.dat"));
    QVERIFY(mesh.open(QIODevice::ReadWrite) &&
            mesh.setFileTime(old, QFileDevice::FileModificationTime));
    mesh.close();
    script("parameter other(inputFile(\"data/other.dat\"));"
           "d.addEntry(\"mesh\",inputFile(\"mesh.dat\",\"m\"));"
           "d.addEntry(\"other\",\"\"); c.setEntry(\"other\",other);"
           "d.addEntry(\"part\",geometryExport(\"part.stl\"));"
           "in.setContent(\"<entry>mesh</entry> <entry>other</entry> <entry>part</entry>\");");
    for (int round = 1; round <= 2; ++round) { // into each fresh folder
        QCOMPARE(ModelTest::run("comp.run();"), QStringList());
        QCOMPARE(ModelTest::read(folder() + "in.txt"), QByteArray("m/mesh.dat other.dat part.stl"));
        QCOMPARE(ModelTest::read(folder() + "stdout.txt"), QByteArray("mesh 1\nother\nsolid\n"));
    }
    QCOMPARE(QFileInfo(folder() + "m/mesh.dat").lastModified().toSecsSinceEpoch(),
             old.toSecsSinceEpoch());
    // Outside a run nothing is copied.
    QFile::remove(folder() + "m/mesh.dat");
    comp()->prepareFileValues();
    script("p.setValue(2);");
    QVERIFY(!QFile::exists(folder() + "m/mesh.dat"));
}

void tst_Computation::refusedFileValues_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("reason");
    QTest::newRow("no such file") << "inputFile(\"none.dat\")"
                                  << "none.dat";
    QTest::newRow("a folder") << "inputFile(\".\",\"x\")"
                              << "cannot copy input file";
    QTest::newRow("no name") << "inputFile(\"\")"
                             << "cannot copy input file";
    QTest::newRow("leads out") << "inputFile(\"mesh.dat\",\"../..\")"
                               << "mesh.dat";
    QTest::newRow("absolute folder") << "inputFile(\"mesh.dat\",\"/tmp\")"
                                     << "mesh.dat";
    QTest::newRow("no geometry") << "geometryExport(\"none.stl\")"
                                 << "none.stl";
    QTest::newRow("geometry leads out") << "geometryExport(\"../mesh.dat\")"
                                        << "../mesh.dat";
}

void tst_Computation::refusedFileValues()
{
    QFETCH(QString, value);
    QFETCH(QString, reason);
    sumModel();
    ModelTest::write(mModel.path("mesh.dat"), "mesh");
    script("d.addEntry(\"f\"," + value + ");");
    const QStringList errors = ModelTest::run("comp.run();");
    QVERIFY2(errors.size() == 1 && errors[0].contains("cannot copy input file") &&
                 errors[0].contains(reason),
             qPrintable(errors.join('\n')));
    QVERIFY(!QFile::exists(folder() + "out.txt")); // the program was not started
    QVERIFY(!QFile::exists(mModel.path("p_designs/mesh.dat")));
}

void tst_Computation::relay()
{
    sumModel();
    std::vector<std::pair<int, int>> codes;
    FChangeSet::setHandler([&](const FChangeResponse &response) {
        if (response.code == 19 || response.code == 20)
            codes.emplace_back(response.code, response.payload.toInt());
    });
    QStringList order;
    const auto relay = comp()->getSignalRapper();
    QVERIFY(relay);
    QVERIFY(!FGenIntComputation::mpNull->getSignalRapper());
    connect(relay, &FGenIntCompSignalRapper::genIntRunStarted, this,
            [&] { order << (QFile::exists(folder() + "in.txt") ? "late" : "started"); });
    connect(
        relay, &FGenIntCompSignalRapper::genIntRunEnded, this,
        [&](bool ok) {
            const auto results = comp()->getResults().ptr<FResultsGenInt>();
            order << QString("ended %1 %2")
                         .arg(ok)
                         .arg(results ? int(results->getOutputHandles().size()) : -1);
        });
    connect(relay, &FGenIntCompSignalRapper::genIntCompDestroyed, this,
            [&] { order << "destroyed"; });
    QVERIFY(comp()->run());
    const int id = comp()->getDbId();
    QCOMPARE(order, QStringList({"started", "ended 1 1"}));
    QVERIFY(codes == (std::vector<std::pair<int, int>>{{19, id}, {20, id}}));
    FManaged::destroy(comp(), true);
    QCOMPARE(order.last(), QString("destroyed"));
    // A relay that outlives its computation is silent.
    codes.clear();
    auto lonely = std::make_unique<FGenIntCompSignalRapper>(std::shared_ptr<FGenIntComputation>());
    connect(lonely.get(), &FGenIntCompSignalRapper::genIntRunEnded, this,
            [&](bool) { order << "no"; });
    lonely->emitRunEnded();
    FChangeSet::setHandler(nullptr);
    QVERIFY(codes.empty());
    QCOMPARE(order.last(), QString("destroyed"));
}

void tst_Computation::reread()
{
    sumModel();
    QVERIFY(!comp()->rereadResults()); // nothing there
    QDir().mkpath(folder());
    ModelTest::write(folder() + "out.txt", "sum = 99\n");
    QCOMPARE(ModelTest::run("comp.rereadResults();"), QStringList());
    QCOMPARE(get("sum"), QString("99"));
    const auto results = comp()->getResults().ptr<FResultsGenInt>();
    ModelTest::write(folder() + "out.txt", "sum = 98\n");
    QCOMPARE(get("sum"), QString("99"));
    QVERIFY(comp()->rereadResults());
    QCOMPARE(get("sum"), QString("98"));
    QCOMPARE(comp()->getResults().ptr<FResultsGenInt>(), results);
    // What is no results of templates is left alone, as it is without a configuration.
    comp()->processReread(f_make_shared<FComputationResults>());
    comp()->applyOutputHandles(nullptr);
    comp()->setConfiguration(nullptr);
    results->setOutputHandles({});
    comp()->processReread(results);
    QVERIFY(results->getOutputHandles().empty());
}

void tst_Computation::destroyedTogether()
{
    sumModel();
    script("genericIntegrationComputation second() { .setConfiguration(c); }");
    QVERIFY(comp()->run());
    FManaged::destroy(comp(), true);
    for (const char *name : {"comp", "c", "d", "in", "out"})
        QVERIFY2(!ModelTest::object<FManaged>(name), name);
    QVERIFY(bool(ModelTest::object<FManaged>("p")));
    QVERIFY(!ModelTest::object<FGenIntComputation>("second")->getConfiguration());
    QVERIFY(FHistory::instance()->undo());
    QVERIFY(comp() && comp()->getSignalRapper());
    QCOMPARE(ModelTest::run("comp.run();"), QStringList());
    QCOMPARE(get("sum"), QString("5.5"));
    QVERIFY(FHistory::instance()->redo()); // a run is no step
    QVERIFY(!comp());
}

void tst_Computation::renamed()
{
    sumModel();
    script("parameter e(comp.getResults().getTable(\"out.txt\").getElementAt(\"sum\"));");
    QVERIFY(comp()->run());
    QStringList told;
    QObject listener;
    connect(FChanges::instance(), &FChanges::nameChanged, &listener,
            [&](const std::shared_ptr<FObject> &object, const QString &name, unsigned id) {
                told << Q(object->getClass()) + " " + name + " " + QString::number(id) +
                            (object->isNull() ? " prototype" : "");
            });
    const auto object = comp();
    const QString id = QString::number(object->getDbId());
    object->setName("my run");
    QCOMPARE(told, QStringList{"FGenIntComputation my_run " + id + " prototype"});
    QVERIFY(FProject::instance()->text().contains("parameter e(my_run.getResults()"));
    {
        const FLoadingScope loading;
        object->setName("silent");
    }
    QCOMPARE(told.size(), 1);
    QVERIFY(object->run());
    QVERIFY(QFile::exists(mModel.path("p_designs/baseline/silent/out.txt")));
    // A name is no input: the results stay, and so does their folder, there and back.
    QCOMPARE(ModelTest::run("silent.setName(\"loud\");"), QStringList());
    for (const char *name : {"loud", "my_run", "loud"}) {
        QCOMPARE(Q(object->getName()), QString(name));
        QVERIFY2(object->isUpToDateFor(FDesign::current()), name);
        QVERIFY(QFile::exists(mModel.path("p_designs/baseline/" + QString(name) + "/out.txt")));
        FHistory *history = FHistory::instance();
        QVERIFY(history->canRedo() ? history->redo() : history->undo());
    }
}

QTEST_GUILESS_MAIN(tst_Computation)
#include "tst_computation.moc"

// SPDX-License-Identifier: Apache-2.0
// Couplings that travel: written, read as data, as one step, whole or not at all.
#include "fcmdmanager.h"
#include "fgenintcheck.h"
#include "fgenintsetup.h"
#include "fhistory.h"
#include "fimportrules.h"
#include "fimportsoftwareconnector.h"
#include "fio.h"
#include "fkeptconnector.h"
#include "fparameter.h"
#include "modeltest.h"
#include "testseed.h"

#include <QtTest>
#include <random>

class tst_Setup : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { mModel.start(); }
    void cleanupTestCase() { FProject::instance()->clear(); }
    void chainGoesAndComes();
    void namesThatAreTaken();
    void neighbourhoodOnly();
    void orderOfBlocks();
    void dataOnly();
    void halfImportLeavesNothing();
    void mutatedFiles();
    void shortLists();
    void copyOfOneAndOfMany();

private:
    static QString coupling(const QString &name, const QString &value)
    {
        return QStringLiteral("genericIntegrationCommandFile %1_in() { .setContent(\"x "
                              "<entry>x</entry>\n\"); .setFileName(\"in\"); }"
                              "genericIntegrationResultsFile %1_out() { .setContent(\"x 1\n\"); "
                              ".setFileName(\"stdout.txt\"); "
                              ".setValues([[\"y\",0,0,\"x\",Last,\"FDouble\",\"\",0,nullptr]]); }"
                              "genericIntegrationDefinition %1_def() { .addEntry(\"x\",1.0); "
                              ".setFiles([%1_in,%1_out]); }"
                              "genericIntegrationConfiguration %1_conf() { .setDefinition(%1_def); "
                              ".setEntry(\"x\",%2); }"
                              "genericIntegrationComputation %1() { .setConfiguration(%1_conf); "
                              ".setApplication(\"cat\"); .setArguments(\"in\"); }")
            .arg(name, value);
    }
    static QString resultOf(const QString &name)
    {
        return name + ".getResults().getTable(\"stdout.txt\").getElementAt(\"y\")+1";
    }
    /// a feeds b feeds c; b has no connector.
    static void makeChain()
    {
        const QStringList errors = ModelTest::run(
            "parameter p(5);" + coupling("a", "p") + coupling("b", resultOf("a")) +
            coupling("c", resultOf("b")) +
            "softwareConnector a_con() { .setComputation(a); }"
            "softwareConnector c_con() { .setComputation(c); .setItemSize(Small); }");
        QVERIFY2(errors.isEmpty(), qPrintable(errors.join('\n')));
    }
    static std::string written(const char *computation, bool chain)
    {
        return FGenIntSetup::text(FGenIntSetup::membersOf(
                                      ModelTest::object<FGenIntComputation>(computation), chain))
            .toStdString();
    }
    ModelTest mModel;
};

void tst_Setup::chainGoesAndComes()
{
    makeChain();
    const QString before = FProject::instance()->text();
    const std::string text = written("b", true);
    QCOMPARE(QString::fromStdString(text).count("<?xml version=\"1.0\" encoding=\"UTF-8\" ?>"), 3);
    QVERIFY(text.find("genericIntegrationComputation a(") <
            text.find("genericIntegrationComputation b("));
    QVERIFY(text.find("genericIntegrationComputation b(") <
            text.find("genericIntegrationComputation c("));
    mModel.start();
    QCOMPARE(ModelTest::run("parameter p(5);"), QStringList());
    const size_t steps = FHistory::instance()->stepCount();
    const QString empty = FProject::instance()->text();
    const auto outcome = FGenIntSetup::read(text, "x.ovdl");
    QVERIFY2(outcome.errors.empty(),
             outcome.errors.empty() ? "" : outcome.errors[0].toString().c_str());
    QVERIFY(outcome.missing.empty());
    QCOMPARE(outcome.computations.size(), size_t(3));
    // The same project, in whatever order its objects stand.
    const auto lines = [](const QString &project) {
        QStringList all = project.split('\n');
        all.sort();
        return all.join('\n');
    };
    QCOMPARE(lines(FProject::instance()->text()), lines(before));
    QCOMPARE(FHistory::instance()->stepCount(), steps + 1);
    FHistory::instance()->undo();
    QCOMPARE(FProject::instance()->text(), empty);
    FHistory::instance()->redo();
    QCOMPARE(lines(FProject::instance()->text()), lines(before));
    // Without the parameter that it refers to an entry has no value: nothing is run with another.
    mModel.start();
    ModelTest::log();
    const auto told = FGenIntSetup::read(text, "x.ovdl");
    const QString missing = Q(told.missing);
    QVERIFY2(missing.contains("called p, for entry x of a_conf") && missing.count('\n') == 0,
             qPrintable(missing));
    QVERIFY(missing.startsWith("x.ovdl:") && !missing.startsWith("x.ovdl:1:"));
    QCOMPARE(ModelTest::log().filter("objects that the project lacks").size(), 1);
    QVERIFY(FProject::instance()->text().contains(".setEntry(\"x\",b.getResults()"));
    QVERIFY(FProject::instance()->text().contains(".setEntry(\"x\",nullptr)"));
    const auto findings = FGenIntCheck::run();
    QStringList said;
    for (const FGenIntFinding &finding : findings)
        said << Q(finding.toString());
    QVERIFY2(said.join('\n').contains("error: a_conf: entry \"x\" has no value"),
             qPrintable(said.join('\n')));
}

void tst_Setup::namesThatAreTaken()
{
    makeChain();
    const std::string text = written("b", true);
    QVERIFY(FGenIntSetup::read(text, "x.ovdl").errors.empty());
    const QString project = FProject::instance()->text();
    QVERIFY(project.contains("genericIntegrationComputation c1()"));
    // References follow: the new c is fed by the new b, and that by the new a.
    for (const char *one : {"a", "b"})
        QCOMPARE(project.count(QStringLiteral(".setEntry(\"x\",%1.getResults()").arg(one)), 1);
    for (const char *one : {"a1", "b1"})
        QCOMPARE(project.count(QStringLiteral(".setEntry(\"x\",%1.getResults()").arg(one)), 1);
    QVERIFY(project.contains(".setComputation(c1)"));
    QCOMPARE(getManageds<FKeptConnector>().size(), size_t(4));
}

void tst_Setup::neighbourhoodOnly()
{
    QCOMPARE(ModelTest::run("parameter p(5);" + coupling("a", "p") + coupling("b", resultOf("a")) +
                            coupling("c", resultOf("a")) + coupling("d", "1.0")),
             QStringList());
    const auto names = [](const char *of) {
        QStringList found;
        for (const auto &one : FGenIntSetup::chainOf(ModelTest::object<FGenIntComputation>(of)))
            found << Q(one->getName());
        return found;
    };
    QCOMPARE(names("b"), QStringList{"a"}); // not c, which a feeds as well
    QCOMPARE(names("a"), (QStringList{"b", "c"}));
    QVERIFY(names("d").isEmpty());
    QCOMPARE(FGenIntSetup::ask(ModelTest::object<FGenIntComputation>("d")),
             FGenIntSetup::What::Only);
    QCOMPARE(QString::fromStdString(written("b", false)).count("<?xml"), 1);
}

void tst_Setup::orderOfBlocks()
{
    makeChain();
    QString text = QString::fromStdString(written("c", false));
    // The connector first, the configuration last, as a hash set might have it.
    const auto cut = [&text](const QString &begin) {
        const int from = text.indexOf(begin), to = text.indexOf("\n}\n", from) + 3;
        const QString block = text.mid(from, to - from);
        text.remove(from, to - from);
        return block;
    };
    const QString connector = cut("softwareConnector c_con"),
                  configuration = cut("genericIntegrationConfiguration c_conf");
    const int objects = text.indexOf("genericIntegrationCommandFile");
    text.insert(objects, connector);
    text.insert(text.indexOf("curFile"), configuration);
    mModel.start();
    const auto outcome = FGenIntSetup::read(S(text), "x.ovdl");
    QVERIFY2(outcome.errors.empty(),
             outcome.errors.empty() ? "" : outcome.errors[0].toString().c_str());
    const auto made = ModelTest::object<FKeptConnector>("c_con");
    QVERIFY(made && made->getComputation().getExpr() == FObjectManager::instance()->find("c"));
    QCOMPARE(made->getItemSize(), SoftConItemSize::Small);
}

/// Whatever is slipped in: nothing is executed, nothing that exists is changed.
void tst_Setup::dataOnly()
{
    makeChain();
    const QString text = QString::fromStdString(written("a", false));
    mModel.start();
    QCOMPARE(ModelTest::run("parameter p(5); parameter q(1);" + coupling("own", "q")),
             QStringList());
    const QString before = FProject::instance()->text();
    for (const char *slip : {"q.setValue(7);", "own.setApplication(\"rm\");", "own.destroy();",
                             "parameter evil(1);", "own_in.setContent(\"gone\");", "undo();",
                             "design d();", "own_conf.setEntry(\"x\",3);"}) {
        for (const char *place : {"genericIntegrationComputation", "curFile"}) {
            QString slipped = text;
            slipped.insert(slipped.indexOf(QLatin1String(place)), QLatin1String(slip) + "\n");
            const auto outcome = FGenIntSetup::read(S(slipped), "x.ovdl");
            QVERIFY2(!outcome.errors.empty(), slip);
            QCOMPARE(FProject::instance()->text(), before);
        }
    }
    // Within a block as well, and as a value.
    for (const char *slip : {".setEntry(\"x\",own.destroy());", ".setEntry(\"x\",q.setValue(2));",
                             ".setEntry(\"x\",evaluate(\"q.setValue(2)\"));"}) {
        QString slipped = text;
        const int at =
            slipped.indexOf("{\n", slipped.indexOf("genericIntegrationConfiguration")) + 2;
        slipped.insert(at, QLatin1String(slip) + "\n");
        FGenIntSetup::read(S(slipped), "x.ovdl");
        QVERIFY2(FProject::instance()->text().contains("parameter q(1)"), slip);
        QVERIFY2(ModelTest::object<FGenIntComputation>("own"), slip);
        while (FHistory::instance()->canUndo() && FProject::instance()->text() != before)
            FHistory::instance()->undo();
        QCOMPARE(FProject::instance()->text(), before);
    }
}

void tst_Setup::halfImportLeavesNothing()
{
    makeChain();
    std::string text = written("b", true);
    const size_t at = text.rfind(".setApplication");
    text.insert(at, ".setNothing(1);\n");
    mModel.start();
    const QString empty = FProject::instance()->text();
    const auto outcome = FGenIntSetup::read(text, "x.ovdl");
    QCOMPARE(outcome.errors.size(), size_t(1));
    QVERIFY2(outcome.errors[0].toString().find("setNothing") != std::string::npos,
             outcome.errors[0].toString().c_str());
    const auto line = std::count(text.begin(), text.begin() + long(at), '\n') + 1;
    QCOMPARE(outcome.errors[0].line, size_t(line));
    QVERIFY(getManageds<FGenIntComputation>().empty());
    QVERIFY(!FHistory::instance()->canUndo());
    QVERIFY(!FGenIntSetup::read("no set-up at all", "x.ovdl").errors.empty());
    // A connector whose block doesn't end swallows the part behind it: that goes too.
    std::string open = text;
    const size_t end = open.find("}", open.find("softwareConnector "));
    open.erase(end, open.find("<?xml", end) + 5 - end);
    QVERIFY(!FGenIntSetup::read(open, "x.ovdl").errors.empty());
    QCOMPARE(FProject::instance()->text(), empty);
    // The door for scripts; a file that isn't there is passed over.
    ModelTest::write(mModel.path("half.ovdl"), QByteArray::fromStdString(text));
    ModelTest::log();
    QCOMPARE(ModelTest::run("softwareConnectorImport i(); i.read(\"" + mModel.path("half.ovdl") +
                            "\"); "
                            "i.read(\"" +
                            mModel.path("none.ovdl") + "\");"),
             QStringList());
    QVERIFY(ModelTest::log().join('\n').contains("setNothing"));
    QVERIFY(getManageds<FGenIntComputation>().empty());
}

void tst_Setup::mutatedFiles()
{
    makeChain();
    const std::string whole = written("b", true);
    mModel.start();
    QCOMPARE(ModelTest::run("parameter p(5);"), QStringList());
    const QString before = FProject::instance()->text();
    std::mt19937 random(testSeed());
    int refused = 0;
    for (int i = 0; i < 500; ++i) {
        std::string text = whole;
        for (unsigned n = 1 + random() % 4; n > 0 && !text.empty(); --n) {
            const size_t at = random() % text.size(), length = random() % 40;
            switch (random() % 4) {
            case 0:
                text[at] = char(random());
                break;
            case 1:
                text.erase(at, length);
                break;
            case 2:
                text.insert(at, text.substr(random() % text.size(), length));
                break;
            default:
                text.insert(at, "p.setValue(9);\n");
            }
        }
        const auto outcome = FGenIntSetup::read(text, "x.ovdl");
        if (!outcome.errors.empty()) {
            ++refused;
            QCOMPARE(FProject::instance()->text(), before);
            continue;
        }
        FHistory::instance()->undo();
        QCOMPARE(FProject::instance()->text(), before);
    }
    QVERIFY(refused > 100);
}

/// What set-ups and copies may say of all that there is.
void tst_Setup::shortLists()
{
    const auto said = [](const FImportRules &rules) {
        QStringList found;
        for (const auto &info : FCmdManager::instance()->all())
            if (rules.allows(*info) && !info->isPure())
                found << Q(info->receiverName() + "." + info->name);
        found.sort();
        return found.join('\n');
    };
    const QStringList both{"FConfigurationGenInt.genericIntegrationConfiguration",
                           "FGenIntCommandFile.genericIntegrationCommandFile",
                           "FGenIntResultsFile.genericIntegrationResultsFile",
                           "FConfiguration.setEntry",
                           "FConfigurationGenInt.setDefinition",
                           "FGenIntFile.setContent",
                           "FGenIntFile.setEncoding",
                           "FGenIntFile.setFileName",
                           "FGenIntFile.setForceWindowsLineEndings",
                           "FGenIntFile.setSource",
                           "FGenIntResultsFile.setNumberSeparator",
                           "FGenIntResultsFile.setRegExpSeparator",
                           "FGenIntResultsFile.setRegExprSeparator",
                           "FGenIntResultsFile.setSpaceSeparator",
                           "FGenIntResultsFile.setSpacesAndTabsSeparator",
                           "FGenIntResultsFile.setTabSeaparator",
                           "FGenIntResultsFile.setValues",
                           "FManaged.addDocu"};
    const auto with = [&](QStringList own) {
        own += both;
        own.sort();
        return own.join('\n');
    };
    QCOMPARE(said(FGenIntSetup::rules()),
             with({"FGenIntComputation.genericIntegrationComputation",
                   "FKeptConnector.softwareConnector", "FExternComputation.setApplication",
                   "FExternComputation.setArguments", "FExternComputation.setDbId",
                   "FExternComputation.setEnvironment", "FExternComputation.setStandardInput",
                   "FExternComputation.setTimeout", "FExternComputation.setWaitForAll",
                   "FGenIntComputation.setConfiguration", "FKeptConnector.setComputation",
                   "FKeptConnector.setItemSize", "FKeptConnector.setResultsPath"}));
    QCOMPARE(said(FImportRules::copies()),
             with({"FDefinitionGenInt.genericIntegrationDefinition", "FDesign.design",
                   "FParameter.parameter", "FDefinition.addEntry", "FDefinition.setEntryDefsFromDB",
                   "FDefinitionGenInt.setCurFile", "FDefinitionGenInt.setFiles",
                   "FDefinitionGenInt.setLastFile", "FDesign.setValue"}));
}

/// A computation takes its coupling along, asks only alone, and brings nothing twice.
void tst_Setup::copyOfOneAndOfMany()
{
    makeChain();
    const auto a = ModelTest::object<FGenIntComputation>("a");
    const auto c = ModelTest::object<FGenIntComputation>("c");
    const auto asked = [](const std::vector<const char *> &names) {
        std::vector<std::shared_ptr<FManaged>> objects;
        for (const char *name : names)
            objects.push_back(ModelTest::object<FManaged>(name));
        return objects;
    };
    auto others = asked({"c_in", "c", "b_conf", "a_con", "a_conf"});
    const QByteArray both = a->copyAmong(&others);
    QVERIFY(others == asked({"b_conf"}));
    QCOMPARE(both.count("<?xml"), 2);
    QVERIFY(both.indexOf("Computation a(") < both.indexOf("Computation c("));
    for (const auto &[answer, parts] : {std::pair{0, 3}, {1, 1}, {2, 0}}) {
        FIO::instance()->answerNext(answer);
        QCOMPARE(c->copy().count("<?xml"), parts);
    }
    // Beside the originals under free names, as one step; what the paste makes refers to itself.
    const QString before = FProject::instance()->text();
    QVERIFY(FGenIntComputation::mpNull->paste(both));
    QVERIFY(FProject::instance()->text().contains("genericIntegrationComputation a1()"));
    QVERIFY(FProject::instance()->text().contains("softwareConnector a_con1()"));
    QCOMPARE(FProject::instance()->text().count(".setEntry(\"x\",b.getResults()"), 2);
    FHistory::instance()->undo();
    QCOMPARE(FProject::instance()->text(), before);
    // Without a definition there is nothing to copy.
    QCOMPARE(ModelTest::run("genericIntegrationComputation bare();"), QStringList());
    const QByteArray none = ModelTest::object<FGenIntComputation>("bare")->copy();
    QVERIFY(none.isEmpty() && !none.isNull());
    QVERIFY(!FGenIntComputation::mpNull->paste(both.left(both.size() / 2)));
}

QTEST_GUILESS_MAIN(tst_Setup)
#include "tst_setup.moc"

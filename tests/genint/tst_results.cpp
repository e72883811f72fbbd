// SPDX-License-Identifier: Apache-2.0
#include "fdesign.h"
#include "fgenintcomputation.h"
#include "fgenintresultsfile.h"
#include "fresultsgenint.h"
#include "modeltest.h"

#include <QDir>
#include <QTextStream>
#include <QtTest>

class tst_Results : public QObject
{
    Q_OBJECT
    ModelTest mModel;

    /// Templates a.txt (r1) and b.txt (r2); the files of the run lie in the baseline's folder.
    std::shared_ptr<FResultsGenInt> results()
    {
        const QStringList errors = ModelTest::run(
            "genericIntegrationResultsFile r1() { .setFileName(\"a.txt\"); .setValues([["
            "\"first\",0,0,\"A\",Last,\"FDouble\",\"\",0,nullptr],"
            "[\"none\",1,9,\"A\",Last,\"FDouble\",\"\",0,nullptr],"
            "[\"last\",2,1,\"A\",Last,\"FDouble\",\"\",0,nullptr]]); }"
            "genericIntegrationResultsFile Second() { .setFileName(\"sub/b.txt\"); .setValues([["
            "\"b\",0,0,\"B\",Last,\"FDouble\",\"\",0,nullptr]]); }"
            "genericIntegrationResultsFile lost() { .setFileName(\"lost.txt\"); .setValues([["
            "\"b\",0,0,\"B\",Last,\"FDouble\",\"\",0,nullptr]]); }"
            "genericIntegrationDefinition d() { .setFiles([r1,Second,lost]); }"
            "genericIntegrationConfiguration c() { .setDefinition(d); }"
            "genericIntegrationComputation comp() { .setConfiguration(c); }");
        if (!errors.isEmpty())
            qFatal("%s", qPrintable(errors.join('\n')));
        QDir().mkpath(folder() + "sub");
        ModelTest::write(folder() + "a.txt", "A = 1.5 x\n7\n1 2.25\n");
        ModelTest::write(folder() + "sub/b.txt", "B 42\n");
        if (!ModelTest::object<FGenIntComputation>("comp")->rereadResults())
            qFatal("no results to read");
        return std::dynamic_pointer_cast<FResultsGenInt>(
            ModelTest::object<FGenIntComputation>("comp")->getResults().getPtr());
    }
    QString folder() const { return mModel.path("p_designs/baseline/comp/"); }
    static QString get(const QString &member)
    {
        return ModelTest::value("comp.getResults()." + member);
    }

private Q_SLOTS:
    void init() { mModel.start(); }
    void cells_data();
    void cells();
    void withoutTemplates();
    void tables();
    void readAgain();
    void resultTemplateName();
    void imports();
    void savedForm();
    void cloneAndInit();
};

void tst_Results::cells_data()
{
    QTest::addColumn<QString>("member");
    QTest::addColumn<QString>("number");
    const auto row = [](const char *member, const char *number) {
        QTest::newRow(member) << QString(member) << QString(number);
    };
    row("getDataAt(0,0)", "1.5");
    row("getDataAt(2,0)", "2.25");
    row("getDataAt(1,0)", "nan"); // not found
    row("getDataAt(3,0)", "nan");
    row("getDataAt(0,1)", "nan");
    row("getDataAt(\"last\",0)", "2.25");
    row("getDataAt(\"LAST\",0)", "2.25");
    row("getDataAt(\"lost\",0)", "nan");
    row("getDataAt(1.9,\"x\")", "nan"); // no column has a header
    row("getDataAt(\"last\",\"x\")", "nan");
    row("getLastDataOfRow()", "1.5");
    row("getLastDataOfRow(2)", "2.25");
    row("getLastDataOfRow(-1)", "nan");
    row("getLastDataOfColumn()", "2.25");
    row("getLastDataOfColumn(5)", "nan");
    row("getAverageOfLastRows(1)", "2.25");
    row("getAverageOfLastRows(0)", "nan");
    row("getAverageOfLastRows(3)", "nan"); // one of them is none
    row("getTable(\"a.txt\").getElementAt(\"first\")", "1.5");
    row("getTable(\"sub/b.txt\").getElementAt(\"b\")", "42");
    row("getTable(\"lost.txt\").getElementAt(\"b\")", "nan");
}

void tst_Results::cells()
{
    QFETCH(QString, member);
    results();
    QTEST(get(member).toLower(), "number");
}

void tst_Results::withoutTemplates()
{
    const auto r = results();
    r->setOutputHandles({});
    for (const char *member : {"getDataAt(0,0)", "getDataAt(\"first\",0)", "getDataAt(0,\"x\")",
                               "getLastDataOfRow()", "getAverageOfLastRows(2)"})
        QCOMPARE(get(member).toLower(), QString("nan"));
    QVERIFY(!r->getData("a.txt"));
    QVERIFY(r->tables().empty());
    // What is no result template is passed over.
    QCOMPARE(ModelTest::run("genericIntegrationCommandFile in();"), QStringList());
    r->setOutputHandles({FExpr<FGenIntFile, true>(ModelTest::object<FGenIntFile>("in")),
                         FExpr<FGenIntFile, true>(ModelTest::object<FGenIntFile>("Second"))});
    QCOMPARE(r->getElementAt(0, 0), 42.0); // now the first table
    // Rows are cut toward zero; a table with columns answers by header.
    const auto table = r->addTable("sub/b.txt", 0, 0);
    table->setColumns({{1, 2}, {3, 4}}, {"x", "y"});
    QCOMPARE(get("getDataAt(1.9,\"y\")"), QString("4"));
    QCOMPARE(get("getDataAt(-0.5,\"X\")"), QString("1"));
    QCOMPARE(get("getDataAt(-1.0,\"x\")").toLower(), QString("nan"));
    QCOMPARE(get("getLastDataOfRow(1)"), QString("4"));
    QCOMPARE(get("getAverageOfLastRows(5,1)"), QString("3.5"));
}

void tst_Results::tables()
{
    const auto r = results();
    const auto b = r->getData("sub/b.txt").getPtr();
    QVERIFY(b && b->getName() == "sub/b.txt");
    QVERIFY(!r->getData("sub/B.txt"));          // file names match case
    QCOMPARE(r->getData("second").getPtr(), b); // names of templates don't
    QCOMPARE(r->getData("SECOND").getPtr(), b);
    QVERIFY(!r->getData("nowhere"));
    QVERIFY(!r->getData(""));
    QCOMPARE(r->tables().size(), size_t(3)); // the lost one as well
    QCOMPARE(r->tables()[2].getPtr()->rowCount(), 0);
    QVERIFY(ModelTest::log().join('\n').contains("FGenIntReader|Could not open file " + folder() +
                                                 "/lost.txt for reading|parsing process aborted"));
    const auto a = r->getData("a.txt").getPtr();
    QCOMPARE(a->rowHeaders(), (std::vector<std::string>{"first", "none", "last"}));
    QCOMPARE(a->rowTexts(), (std::vector<std::string>{"FDouble", "FDouble", "FDouble"}));
    QCOMPARE(Q(a->values()[0].place.text()).section('/', -1), QString("a.txt:1:5-7"));
    QVERIFY(!a->values()[1].notes.empty()); // why there is no number
}

void tst_Results::readAgain()
{
    const auto r = results();
    QCOMPARE(r->getElementAt("first", 0), 1.5);
    ModelTest::write(folder() + "a.txt", "A = 3\n");
    QCOMPARE(r->getElementAt("first", 0), 1.5); // values stay
    r->setOutputHandles(r->getOutputHandles());
    QCOMPARE(r->getElementAt("first", 0), 3.0);
    QCOMPARE(r->tables().size(), size_t(3)); // replaced, not doubled
    // A change of a template is a reason to read again.
    ModelTest::write(folder() + "a.txt", "A = 4 5\n");
    const auto file = ModelTest::object<FGenIntResultsFile>("r1");
    file->setValues(FExpr<FObjectList>(
        FExprBase::resolve("[[\"first\",0,1,\"A\",Last,\"FDouble\",\"\",0,nullptr]]")));
    QVERIFY(!r->isUpToDate());
    QCOMPARE(r->getElementAt("first", 0), 5.0);
    QCOMPARE(r->getData("a.txt")->rowCount(), 1);
}

void tst_Results::resultTemplateName()
{
    const auto r = results();
    ModelTest::write(folder() + "other.txt", "");
    QCOMPARE(Q(r->getResultTemplateName("sub/b.txt")), folder() + "sub/b.txt");
    QCOMPARE(get("getResultTemplateName(\"lost.txt\")"), folder() + "lost.txt");
    QCOMPARE(r->getResultTemplateName("SUB/b.txt"), std::string());
    QCOMPARE(r->getResultTemplateName("other.txt"), std::string());
    ModelTest::object<FGenIntComputation>("comp")->setConfiguration(nullptr);
    QCOMPARE(r->getResultTemplateName("sub/b.txt"), std::string());
}

void tst_Results::imports()
{
    const auto r = results();
    // Cells that name a file; folder and cell are joined as they are.
    ModelTest::write(folder() + "a.txt", "F1 one.dat\nF2 bad.dat\nF3 = 9\n");
    ModelTest::write(folder() + "sub/b.txt", "F1 two.dat\n");
    ModelTest::write(folder() + "one.dat",
                     "VARIABLES = \"x\" \"y z\"\nZONE I=2 F=POINT\n1 2\n3 4\n");
    ModelTest::write(folder() + "two.dat", "VARIABLES = x\nZONE I=1\n77\n");
    ModelTest::write(folder() + "bad.dat", "no such format\n");
    const char *rules = "[[\"f\",0,0,\"F1\",Last,\"FFileName\",\"%1\",0,nullptr],"
                        "[\"bad\",0,0,\"F2\",Last,\"FFileName\",\"tecplot\",0,nullptr],"
                        "[\"n\",0,0,\"F3 =\",Last,\"FDouble\",\"\",0,nullptr]]";
    for (const char *name : {"r1", "Second"}) {
        const auto file = ModelTest::object<FGenIntResultsFile>(name);
        file->setTabSeparator(true);
        file->setValues(FExpr<FObjectList>(
            FExprBase::resolve(S(QString(rules).arg(name[0] == 'r' ? "tecplot" : "TECPLOT")))));
    }
    ModelTest::log();
    const auto table = r->getData("a.txt").getPtr();
    // A failed import leaves its name without a row.
    QCOMPARE(table->rowHeaders(), (std::vector<std::string>{"f", "bad", "n"}));
    QCOMPARE(table->rowCount(), 2);
    QCOMPARE(table->getElementAt(1, 0), 9.0);
    QCOMPARE(Q(table->rowTexts()[0]), QString("FFileName|one.dat"));
    // Reports and the store pair each number with its own name.
    QCOMPARE(table->values().size(), size_t(3));
    QVERIFY(table->values()[1].name == "bad" && !table->values()[1].notes.empty());
    const FTableRow &n = table->values()[2];
    QVERIFY(n.name == "n" && n.value == 9.0);
    QCOMPARE(FTableRow::fromJson(n.toJson()).toJson(), n.toJson());
    QCOMPARE(FTableRow::fromJson(n.toJson()).place.text(), n.place.text());
    QVERIFY(ModelTest::log().join('\n').contains("Could not import file " + folder() + "bad.dat"));
    // Of two objects of one name the one of the earlier template stays.
    QCOMPARE(get("getImport(\"f\").getElementAt(1,\"y z\")"), QString("4"));
    QCOMPARE(get("getImport(\"f\").rowCount()"), QString("2"));
    QVERIFY(!r->getImport("bad"));
    // And it goes when the files are read again without it.
    QFile::remove(folder() + "one.dat");
    r->setOutputHandles(r->getOutputHandles());
    QCOMPARE(get("getImport(\"f\").getElementAt(0,0)"), QString("77"));
}

void tst_Results::savedForm()
{
    const auto r = results();
    const auto saved = [](const std::shared_ptr<FResultsGenInt> &object, unsigned level) {
        QString text;
        QTextStream stream(&text);
        object->saveScopeManner(stream, level, false, false);
        stream << "x";
        stream.flush();
        return text;
    };
    const QString id = QString::number(ModelTest::object<FGenIntComputation>("comp")->getDbId());
    r->addDocu("say \"hi\"\n", unsigned(DocuArea::Help));
    QCOMPARE(saved(r, 0), "\ngenericIntegrationResults " + Q(r->getName()) + "(baseline," + id +
                              ") {\n    .addDocu(\"say \\\"hi\\\"\n\",\"Help\");\n"
                              "    .setOutputHandles([r1,Second,lost]);\n}\nx");
    QVERIFY(saved(r, 1).startsWith("\n    genericIntegrationResults "));
    QVERIFY(saved(r, 1).endsWith(";\n    }\nx"));
    const auto lonely = FResultsGenInt::create("lonely", nullptr, 0);
    QCOMPARE(saved(lonely, 0), QString("x")); // no design
    const auto other = FResultsGenInt::create("other", FExpr<FDesign>(FDesign::baseline()), 0);
    QVERIFY(saved(other, 0).startsWith("\ngenericIntegrationResults other(baseline,0) {"));
    // Loading the project gives the same, and its numbers.
    FManaged::destroy(other, true);
    const QString project = FProject::instance()->text();
    const QByteArray a = ModelTest::read(folder() + "a.txt");
    FProject::instance()->clear();
    FProject::instance()->setPath(mModel.path("p.tbk"));
    QCOMPARE(ModelTest::run(project), QStringList());
    QCOMPARE(FProject::instance()->text(), project);
    const auto read = ModelTest::object<FResultsGenInt>(r->getName().c_str());
    QVERIFY(bool(read));
    // The computation finds them by its id; they are never up to date.
    const auto computation = ModelTest::object<FGenIntComputation>("comp");
    QVERIFY(computation->currentResults().getPtr() == read);
    QVERIFY(!computation->isUpToDateFor(FDesign::baseline()));
    QCOMPARE(read->getDocuString(int(DocuArea::Help)), std::string("say \"hi\"\n"));
    QCOMPARE(read->getElementAt("last", 0), 2.25);
}

void tst_Results::cloneAndInit()
{
    const auto r = results();
    const auto comp = ModelTest::object<FGenIntComputation>("comp");
    const auto copy = std::dynamic_pointer_cast<FResultsGenInt>(
        r->clone(FExpr<FDesign>(FDesign::baseline()), FExpr<FExternComputation>(comp)));
    QVERIFY(copy && copy->isRegistered() && copy->getOutputHandles().empty());
    copy->init(std::shared_ptr<FResultsGenInt>());
    QVERIFY(copy->getOutputHandles().empty());
    copy->init(r);
    QCOMPARE(copy->getElementAt("last", 0), 2.25);
    copy->setUpToDate();
    ModelTest::object<FGenIntResultsFile>("lost")->setFileName("x");
    QVERIFY(!copy->isUpToDate());
}

QTEST_GUILESS_MAIN(tst_Results)
#include "tst_results.moc"

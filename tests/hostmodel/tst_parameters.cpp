// SPDX-License-Identifier: Apache-2.0
#include "fdesign.h"
#include "ffilevalues.h"
#include "fhistory.h"
#include "fparameter.h"
#include "fresults.h"
#include "modeltest.h"

#include <QDir>
#include <QtTest>
#include <cmath>

class tst_Parameters : public QObject
{
    Q_OBJECT
    ModelTest mModel;

    static std::shared_ptr<FParameter> parameter(const char *name)
    {
        return ModelTest::object<FParameter>(name);
    }
    static QString value(const char *name) { return ModelTest::value(QString(name) + "+0"); }

private Q_SLOTS:
    void init() { mModel.start(); }
    void cleanup() { FDesign::setCurrent(FDesign::baseline()); }
    void cycles_data();
    void cycles();
    void designs();
    void designUndo();
    void saving();
    void table();
    void tableCounts();
    void fileValues_data();
    void fileValues();
    void fileKinds_data();
    void fileKinds();
};

void tst_Parameters::cycles_data()
{
    QTest::addColumn<QString>("statement");
    QTest::newRow("itself") << "a.setValue(a);";
    QTest::newRow("itself in an expression") << "a.setValue(2*a+1);";
    QTest::newRow("through others") << "a.setValue(c);";
    QTest::newRow("in a list") << "a.setValue([1,c]);";
    QTest::newRow("in a design") << "v.setValue(\"a\",c*2);";
    QTest::newRow("itself in a design") << "v.setValue(\"a\",a);";
}

void tst_Parameters::cycles()
{
    QFETCH(QString, statement);
    QCOMPARE(ModelTest::run("parameter a(1.5); parameter b(a+1); parameter c(b*2); design v();"),
             QStringList());
    const QString before = FProject::instance()->text();
    const QStringList errors = ModelTest::run(statement);
    QVERIFY2(errors.size() == 1 && errors[0].contains("cyclic dependency"),
             qPrintable(errors.join('\n')));
    QCOMPARE(FProject::instance()->text(), before);
    QCOMPARE(value("c"), QString("5"));
    QCOMPARE(ModelTest::run("c.setValue(a); b.setValue(c);"), QStringList()); // another order
    QCOMPARE(value("b"), QString("1.5"));
}

void tst_Parameters::designs()
{
    QCOMPARE(ModelTest::run("parameter a(1.5); parameter b(a*2);"
                            "design v() { .setValue(\"a\",10); .setValue(\"a\",20); }"
                            "design w() { .setValue(\"b\",a+1); }"),
             QStringList());
    QCOMPARE(FDesign::all().size(), size_t(3));
    QCOMPARE(value("b"), QString("3"));
    FDesign::setCurrent(ModelTest::object<FDesign>("v"));
    QVERIFY(!FDesign::isSwitching());
    QCOMPARE(value("b"), QString("40"));
    QCOMPARE(parameter("a")->getValue().toString(), std::string("1.5")); // its own one
    FDesign::setCurrent(ModelTest::object<FDesign>("w"));
    QCOMPARE(value("b"), QString("2.5"));
    QCOMPARE(ModelTest::run("a.setValue(4);"), QStringList());
    QCOMPARE(value("b"), QString("5"));
    FDesign::setCurrent(nullptr); // no change
    QCOMPARE(value("b"), QString("5"));
    QVERIFY(ModelTest::run("v.setValue(\"none\",1);")[0].contains("name of a parameter"));
    QCOMPARE(ModelTest::run("baseline.setValue(\"a\",6);"), QStringList());
    QCOMPARE(parameter("a")->getValue().toString(), std::string("6"));
    // A design that goes leaves the baseline.
    FManaged::destroy(ModelTest::object<FDesign>("w"), true);
    QCOMPARE(FDesign::current(), FDesign::baseline());
    QCOMPARE(value("b"), QString("12"));
    // And a parameter that goes leaves the designs.
    FManaged::destroy(parameter("a"), true);
    QVERIFY(!FProject::instance()->text().contains("\"a\""));
}

void tst_Parameters::designUndo()
{
    QCOMPARE(ModelTest::run("parameter a(1); design v();"), QStringList());
    FDesign::setCurrent(ModelTest::object<FDesign>("v"));
    QCOMPARE(ModelTest::run("v.setValue(\"a\",2); v.setValue(\"a\",3);"), QStringList());
    QCOMPARE(value("a"), QString("3"));
    QVERIFY(FHistory::instance()->undo());
    QCOMPARE(value("a"), QString("2"));
    QVERIFY(FHistory::instance()->undo());
    QCOMPARE(value("a"), QString("1"));
    QVERIFY(FHistory::instance()->redo() && FHistory::instance()->redo());
    QCOMPARE(value("a"), QString("3"));
    // A value that undo takes out of the current design shows no longer.
    QCOMPARE(ModelTest::run("parameter u(1); parameter twice(u*2); design now();"), QStringList());
    FDesign::setCurrent(ModelTest::object<FDesign>("now"));
    QCOMPARE(ModelTest::run("now.setValue(\"u\",5);"), QStringList());
    QCOMPARE(ModelTest::value("twice"), QString("10"));
    QVERIFY(FHistory::instance()->undo());
    QCOMPARE(ModelTest::value("twice"), QString("2"));
    QVERIFY(FHistory::instance()->redo());
    QCOMPARE(ModelTest::value("twice"), QString("10"));
    QCOMPARE(ModelTest::run("now.destroy();"), QStringList());
    QCOMPARE(ModelTest::value("twice"), QString("2"));
}

void tst_Parameters::saving()
{
    QCOMPARE(ModelTest::run("design v(); parameter b(1); parameter a(b); b.setValue(7);"
                            "parameter t(\"x \"); parameter l([1,\"a\",b]); parameter none();"
                            "v.setValue(\"a\",b+1); v.setValue(\"t\",\"y\");"),
             QStringList());
    const QString text = FProject::instance()->text();
    QVERIFY(!text.contains("baseline"));
    QVERIFY(text.indexOf("parameter b(7)") < text.indexOf("parameter a(b)"));
    FProject::instance()->clear();
    QCOMPARE(ModelTest::run(text), QStringList());
    QCOMPARE(FProject::instance()->text(), text);
    QCOMPARE(value("a"), QString("7"));
}

void tst_Parameters::table()
{
    FTableData table("t");
    table.setData({{1, 2, 3}, {}, {4, std::nan("")}});
    table.setAllVerticalHeaders({"a", "B", "b", "extra"});
    QCOMPARE(table.rowCount(), 3);
    QCOMPARE(table.columnCount(), 3);
    bool ok = false;
    QVERIFY(table.getElementAt(0, 2, &ok) == 3 && ok);
    QVERIFY(std::isnan(table.getElementAt(1, 0, &ok)) && !ok);
    QVERIFY(std::isnan(table.getElementAt(2, 1, &ok)) && ok); // there, but no number
    QVERIFY(std::isnan(table.getElementAt(-1, 0, &ok)) && !ok);
    QVERIFY(std::isnan(table.getElementAt(3, 0)) && std::isnan(table.getElementAt(0, -1)));
    QCOMPARE(table.getElementAt("b", 0), 4.0); // exactly first
    QCOMPARE(table.getElementAt("A", 1), 2.0);
    QVERIFY(std::isnan(table.getElementAt("extra", 0))); // more names than rows
    QVERIFY(std::isnan(table.getElementAt("none", 0)));
    QVERIFY(std::isnan(table.getElementAt("a", "x")));
    QCOMPARE(table.getLastElementOfRow(0), 3.0);
    QVERIFY(std::isnan(table.getLastElementOfRow(1)) && std::isnan(table.getLastElementOfRow(9)));
    QCOMPARE(table.getLastElementOfColumn(0), 4.0);
    QVERIFY(std::isnan(table.getLastElementOfColumn(2)));
    QCOMPARE(table.getAverageOfLastRows(1, 0), 4.0);
    QVERIFY(std::isnan(table.getAverageOfLastRows(0, 0)));
    QVERIFY(std::isnan(table.getAverageOfLastRows(-1, 0)));
}

void tst_Parameters::tableCounts()
{
    FTableData table("t");
    table.setColumns({{1, 2, 3}, {4, 5}}, {"x", "Y", "y"}); // a column too short, a name too many
    QCOMPARE(table.rowCount(), 3);
    QCOMPARE(table.getElementAt(1, "Y"), 5.0);
    QCOMPARE(table.getElementAt(1, "X"), 2.0);
    QVERIFY(std::isnan(table.getElementAt(2, "Y")));
    QVERIFY(std::isnan(table.getElementAt(0, "y"))); // there is no third column
    QCOMPARE(table.getAverageOfLastRows(99, 0), 2.0);
    table.setColumns({}, {});
    QVERIFY(table.rowCount() == 0 && table.columnCount() == 0);
    QVERIFY(std::isnan(table.getLastElementOfColumn(0)));
}

void tst_Parameters::fileValues_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<QString>("plain");
    QTest::addColumn<QString>("type");
    const auto row = [](const char *script, const char *plain, const char *type) {
        QTest::newRow(script) << QString(script) << QString(plain) << QString(type);
    };
    row("inputFile(\"/a/b c.dat\",\"\")", "b c.dat", "FFileName");
    row("inputFile(\"a/b.dat\",\"sub\")", "sub/b.dat", "FFileName");
    row("inputFile(\"a/b.dat\",\"sub/x/\")", "sub/x/b.dat", "FFileName");
    row("inputFile(name,folder)", "n \"1\".dat", "FFileName");
    row("resultsFileName(\"a/b\")", "a/b", "FResultsFileName");
    row("resultsFileName(name)", "n \"1\".dat", "FResultsFileName");
    row("fileName(\"a/b\")", "a/b", "FFileName");
    row("geometryExport(\"part.stl\")", "part.stl", "FFileName");
}

void tst_Parameters::fileValues()
{
    QFETCH(QString, script);
    QCOMPARE(ModelTest::run("parameter name(\"n \\\"1\\\".dat\"); parameter folder(\"\");"
                            "parameter f(" +
                            script + ");"),
             QStringList());
    const auto value = std::dynamic_pointer_cast<FBasicType>(parameter("f")->valueObject());
    QVERIFY(bool(value));
    QTEST(Q(value->toPlainString()), "plain");
    QTEST(Q(value->getType()->getClass()), "type");
    // Printed, read back, and a copy: the same.
    const QString project = FProject::instance()->text();
    FProject::instance()->clear();
    QCOMPARE(ModelTest::run(project), QStringList());
    QCOMPARE(FProject::instance()->text(), project);
    const auto copy = std::dynamic_pointer_cast<FBasicType>(value->clone());
    QCOMPARE(copy->toString(), value->toString());
}

void tst_Parameters::fileKinds_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<unsigned>("kind");
    QTest::newRow("text") << "out.txt" << QByteArray("text") << 3U;
    QTest::newRow("empty") << "noext" << QByteArray("") << 3U;
    QTest::newRow("binary") << "x.bin" << QByteArray("a\0b", 3) << 0U;
    QTest::newRow("table") << "x.CSV" << QByteArray("1,2") << 2U;
    QTest::newRow("image") << "x.png" << QByteArray("") << 1U;
    QTest::newRow("data") << "x.vtu" << QByteArray("<") << 4U;
}

void tst_Parameters::fileKinds()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, bytes);
    ModelTest::write(mModel.path(name), bytes);
    QTEST(FResultsGeneric::getResultsFileType(S(mModel.path(name))), "kind");
    QCOMPARE(FResultsGeneric::getResultsFileType(S(mModel.path("none"))), 0U);
    QCOMPARE(FResultsGeneric::getResultsFileType(S(mModel.path(""))), 0U);
}

QTEST_GUILESS_MAIN(tst_Parameters)
#include "tst_parameters.moc"

// SPDX-License-Identifier: Apache-2.0
// The script language: damaged texts, places of errors, limits, and saving what was loaded.
#include "fmarloctrl.h"
#include "fparameter.h"
#include "modeltest.h"

#include <QtTest>

namespace {
/// Errors as "line:column: text".
QStringList errorsOf(const QByteArray &source)
{
    FScriptReader reader(source.toStdString(), "x");
    const FLoadingScope loading;
    reader.run();
    QStringList texts;
    for (const FScriptError &error : reader.errors())
        texts << Q(error.toString()).mid(2);
    return texts;
}
} // namespace

class TestScript : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { mModel.start(); }
    void tellsPlaceAndExpectation_data();
    void tellsPlaceAndExpectation();
    void goesOnAfterErrors();
    void manyErrorsInOneLine();
    void truncatedAnywhere();
    void limits();
    void textsSurviveSaving_data();
    void textsSurviveSaving();
    void expressionsSurviveSaving();
    void longChains();

private:
    ModelTest mModel;
};

void TestScript::tellsPlaceAndExpectation_data()
{
    QTest::addColumn<QByteArray>("source");
    QTest::addColumn<QString>("place");
    QTest::addColumn<QStringList>("words");
    const auto row = [](const char *source, const char *place, const QStringList &words) {
        QTest::newRow(source) << QByteArray(source) << QString(place) << words;
    };
    row("parameter a(1)\nparameter b(2);", "2:1", {"expected", "found", "parameter"});
    row("parameter a(1;", "1:14", {"expected", "found", ";"});
    row("paramter a(1);", "1:1", {"paramter"});
    row("\n  \xc3\xa4 a(1);", "2:3", {"expected", "found"});
    row("parameter a(\"\xc3\xa4\xc3\xa4\",,);", "1:18", {"expected", "found"});
    row("parameter a(\"never closed);", "1:13", {"closing quote"});
    row("parameter a(1); /* never closed", "1:17", {"comment"});
    row("parameter a(1) { .paint(2); }", "1:19", {"paint"});
    row("parameter a(1); a.setValue(1,2);", "1:19", {"setValue"});
    row("design d() { .setValue(\"a\"); }", "1:15", {"expected", "missing"});
    row("parameter a(none+1);", "1:17", {"none"});
    QTest::newRow("zero") << QByteArray("parameter a(1);\n a.setName(\"b\0c\");", 34) << "2:12"
                          << QStringList{"expected a value", "zero character"};
}

void TestScript::tellsPlaceAndExpectation()
{
    QFETCH(QByteArray, source);
    QFETCH(QString, place);
    QFETCH(QStringList, words);
    const QStringList errors = errorsOf(source);
    QCOMPARE(errors.size(), 1);
    QVERIFY2(errors[0].startsWith(place + ": "), qPrintable(errors[0]));
    for (const QString &word : words)
        QVERIFY2(errors[0].contains(word), qPrintable(errors[0]));
}

void TestScript::goesOnAfterErrors()
{
    const QStringList errors = errorsOf("parameter a(1);\n"
                                        "nonsense b(2) { .x(\"}\"); parameter no(1); }\n"
                                        "parameter c(3) { .paint(1); .setValue(4); }\n"
                                        "c.setValue(;\n"
                                        "parameter a(5);\n"
                                        "curFile : x\n"
                                        "parameter d(6);\n");
    QCOMPARE(errors.size(), 3);
    QVERIFY(!ModelTest::log().filter(QRegularExpression("taken.*a1")).isEmpty());
    QCOMPARE(ModelTest::value("a"), QString("1"));
    QCOMPARE(ModelTest::value("a1"), QString("5"));
    QCOMPARE(ModelTest::value("c"), QString("4"));
    QCOMPARE(ModelTest::value("d"), QString("6"));
}

void TestScript::manyErrorsInOneLine()
{
    const int count = 200000;
    const QStringList errors = errorsOf(QByteArray("\n\xc3\xa4(1);").repeated(2) +
                                        QByteArray("\xc3\xa4(1);").repeated(count));
    QCOMPARE(errors.size(), count + 2);
    QVERIFY(errors[1].startsWith("3:1: ") && errors[2].startsWith("3:6: "));
    QVERIFY2(errors.last().startsWith(QString("3:%1: ").arg(5 * count + 1)),
             qPrintable(errors.last()));
}

/// Nothing ahead of the damage is lost, and nothing behind it is made up.
void TestScript::truncatedAnywhere()
{
    const QByteArray source = R"-(parameter voltage(100);
parameter capacitance(0.01) {
    .addDocu("say \"F\", not }; or ]","Description|Notes");
}
// a comment with a " and a }
parameter list([1,"two \"2\", [x",[3,-4e-5]]);
parameter energy(0.5 /* more
 lines */ *capacitance*voltage^2);
design high() {
    .setValue("voltage",max(200,-capacitance));
    .setValue("energy",voltage<1?"a":2);
}
energy.setName("stored");
high.duplicate();
)-";
    QCOMPARE(errorsOf(source), QStringList());
    const int second = source.indexOf("parameter capacitance");
    for (int size = second; size < source.size(); ++size) {
        FProject::instance()->clear();
        const QStringList errors = errorsOf(source.left(size));
        QVERIFY2(ModelTest::value("voltage") == "100", qPrintable(QString::number(size)));
        const QByteArray rest = source.left(size).split('\n').last();
        const char last = rest.startsWith("//") ? ';' : source.left(size).trimmed().back();
        QVERIFY2(!errors.isEmpty() || last == ';' || last == '}', source.left(size).right(60));
    }
}

void TestScript::limits()
{
    const auto nested = [](int depth, char open, char close) {
        return "parameter a(" + QByteArray(depth, open) + (open == '(' ? "1" : "") +
               QByteArray(depth, close) + ");\nparameter after(7);\n";
    };
    for (const char *pair : {"[]", "()"}) {
        FProject::instance()->clear();
        QCOMPARE(errorsOf(nested(90, pair[0], pair[1])).join('|'), QString());
        FProject::instance()->clear();
        const QStringList errors = errorsOf(nested(100000, pair[0], pair[1]));
        QVERIFY(!errors.isEmpty());
        QVERIFY2(errors[0].contains("nested deeper than 100"), qPrintable(errors[0]));
        QCOMPARE(ModelTest::value("after"), QString("7"));
    }
    FProject::instance()->clear();
    QVERIFY(!errorsOf("parameter a(" + QByteArray(100000, '-') + "1);").isEmpty());
    QVERIFY(!errorsOf(QByteArray(100000, '{')).isEmpty());
}

void TestScript::textsSurviveSaving_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text : {"", "plain", "a \"quoted\" word", "\\", "\\\\", "\\\"", "ends with \\",
                             "\\n stays two", "two\nlines\r\n", "[list], and \"], then", "a\tb",
                             "gr\xc3\xb6\xc3\x9f"
                             "e \xf0\x9f\x98\x80",
                             "// no comment", "/* */"})
        QTest::newRow(text) << QString(text);
    QString controls;
    for (ushort c = 1; c < 0xa0; c += c == ' ' - 1 ? 0x7f - ' ' + 1 : 1)
        controls += QString(QChar(c)) + "x\"" + QChar(c) + ", ";
    QTest::newRow("control characters") << controls;
    QTest::newRow("separators of lines") << QString(QChar(0x2028)) + QChar(0x85) + QChar(0xfffe);
}

void TestScript::textsSurviveSaving()
{
    QFETCH(QString, text);
    const QByteArray quoted = QByteArray::fromStdString(FLiteral::quoted(S(text)));
    const QByteArray source = "parameter a(" + quoted + ");\nparameter l([1," + quoted +
                              ",\"x\"]);\ndesign d() { .setValue(\"a\"," + quoted + "); .addDocu(" +
                              quoted + ",\"Description\"); }\n";
    QCOMPARE(errorsOf(source), QStringList());
    QCOMPARE(ModelTest::value("a"), text);
    const QString saved = FProject::instance()->text();
    FProject::instance()->clear();
    QCOMPARE(errorsOf(saved.toUtf8()), QStringList());
    QCOMPARE(ModelTest::value("a"), text);
    QCOMPARE(FProject::instance()->text(), saved);
}

void TestScript::expressionsSurviveSaving()
{
    const QByteArrayList expressions = {"1-(2-3)",
                                        "(1-2)-3",
                                        "2^3^2",
                                        "(2^3)^2",
                                        "-2^2",
                                        "(-2)^2",
                                        "1/(2/3)",
                                        "-(1+2)*3",
                                        "x<1?2:3",
                                        "(x<1)==(x>2)",
                                        "not (x>1 and x<3) or x==5",
                                        "max(x,-1)+1",
                                        "0.1+1e300",
                                        "1/3-5e-324*x",
                                        "x%2?x:-x",
                                        "sqrt(abs(-x))"};
    for (const QByteArray &expression : expressions) {
        FProject::instance()->clear();
        const QByteArray condition = expression.contains("%2?") ? "x%2==1?x:-x" : expression;
        QCOMPARE(errorsOf("parameter x(5);\nparameter a(" + condition + ");\n"), QStringList());
        const QString value = ModelTest::value("a"), saved = FProject::instance()->text();
        QVERIFY(!value.isEmpty());
        FProject::instance()->clear();
        QCOMPARE(errorsOf(saved.toUtf8()), QStringList());
        QCOMPARE(ModelTest::value("a"), value);
        QCOMPARE(FProject::instance()->text(), saved);
    }
    FProject::instance()->clear();
    QCOMPARE(errorsOf("parameter a(2^3^2); parameter b(-2^2); parameter c(7-2-1);"), QStringList());
    QCOMPARE(ModelTest::value("a"), QString("512"));
    QCOMPARE(ModelTest::value("b"), QString("-4"));
    QCOMPARE(ModelTest::value("c"), QString("4"));
}

/// Neither the length of an expression nor that of a chain of parameters is a depth: no recursion,
/// and one change reaches the last.
void TestScript::longChains()
{
    const QByteArrayList expressions = {
        "x" + QByteArray("+x").repeated(100000), "1" + QByteArray("-(x-1)").repeated(100000),
        "x" + QByteArray("<1").repeated(5000), "x" + QByteArray(".setName(\"x\")").repeated(50000)};
    for (const QByteArray &expression : expressions) {
        FProject::instance()->clear();
        QCOMPARE(errorsOf("parameter x(1);\nparameter a(" + expression + ");\n"), QStringList());
        QVERIFY(expression.contains("setName") || !ModelTest::value("a").isEmpty());
        const QByteArray saved = FProject::instance()->utf8();
        QVERIFY(saved.contains(expression));
    }
    FProject::instance()->clear();
    QVERIFY(errorsOf("parameter a(1" + QByteArray("^1").repeated(100000) + ");")
                .value(0)
                .contains("nested deeper than 100"));
    // Without an end a look at all ways through it would double with each parameter.
    QByteArray twice = "parameter p0(0/0);\n";
    for (int i = 1; i < 60; ++i)
        twice += QString("parameter p%1(p%2+p%2);\n").arg(i).arg(i - 1).toUtf8();
    QCOMPARE(errorsOf(twice), QStringList());
    QCOMPARE(ModelTest::value("p59"), QString("nan"));
    for (const char *form : {"parameter p%1(p%2+1);\n", "parameter p%1(p%2);\n"}) {
        FProject::instance()->clear();
        QString source = "parameter p0(1);\n";
        for (int i = 1; i < 10000; ++i)
            source += QString(form).arg(i).arg(i - 1);
        QCOMPARE(errorsOf(source.toUtf8()), QStringList());
        const int grown = source.contains('+') ? 9999 : 0;
        QCOMPARE(ModelTest::value("p9999"), QString::number(1 + grown));
        QCOMPARE(ModelTest::run("p0.setValue(11);"), QStringList());
        QCOMPARE(ModelTest::value("p9999"), QString::number(11 + grown));
        QVERIFY(!ModelTest::run("p0.setValue(p9999);").isEmpty());
        const QString saved = FProject::instance()->text();
        FProject::instance()->clear();
        QCOMPARE(errorsOf(saved.toUtf8()), QStringList());
        QCOMPARE(FProject::instance()->text(), saved);
    }
}

QTEST_GUILESS_MAIN(TestScript)
#include "tst_script.moc"

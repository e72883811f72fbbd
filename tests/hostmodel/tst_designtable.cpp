// SPDX-License-Identifier: Apache-2.0
// Tables of designs: what spreadsheets write, and every slip told with its place.
#include "fdesigntable.h"
#include "fhistory.h"
#include "modeltest.h"

#include <QtTest>

class tst_DesignTable : public QObject
{
    Q_OBJECT
    ModelTest mModel;

private Q_SLOTS:
    void init()
    {
        mModel.start();
        QCOMPARE(ModelTest::run("parameter a(1); parameter b(2*a); parameter t(\"x\"); "
                                "design old() { .setValue(\"a\",5); .setValue(\"b\",6); }"),
                 QStringList());
    }
    void cleanup() { FDesign::setCurrent(FDesign::baseline()); }

    void tables_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("expected"); // "name a b" of each design, or the errors
        const auto row = [](const char *name, const char *text, const char *expected) {
            QTest::newRow(name) << QByteArray(text) << QString(expected);
        };
        row("plain", "a,b\n3,4\n5,6", "d1 3 4|d2 5 6");
        row("names, mark, CRLF",
            "\xef\xbb\xbf"
            "design,b\r\nslim,4\r\nold,9\r\n",
            "slim 1 4|old 5 9");
        row("semicolons and commas", "a;b\n0,5;1e3\n", "d1 0.5 1000");
        row("tabs", "\ta\tb\nm\t1,5\t-2\n\nn\t3\t4\n", "m 1.5 -2|n 3 4");
        row("old Macintosh line ends", "a\r7\r8\r", "d1 7 14|d2 8 16");
        row("quotes", "\"a\" , \"b\"\n \"3\" ,\"4\"\n", "d1 3 4");
        row("text", "t,a\n\"p \"\"q\"\", r\n\",3\n", "d1 3 6");
        row("the baseline's expression stays", "design,a,b\nbaseline,1,2\n", "baseline 1 2");
        row("names that are free", "design,a\n,3\nd1,4\n", "d2 3 6|d1 4 8");
        row("nothing", "\n\n", "1:1: expected a line with the names of parameters, found nothing");
        row("header alone", "a,b\n", "1:1: expected a line for each design, found none");
        row("only names", "design\nx\n", "1:1: expected the names of parameters, found none");
        row("header", "a,c,a,old\n1,2,3,4\n",
            "1:3: expected the name of a parameter, found \"c\"|1:5: the parameter a has a column "
            "already, at 1|1:7: expected the name of a parameter, found \"old\"");
        row("numbers", "a,b\n1,\nnan,2 m\n",
            "2:3: expected a number for b, found an empty cell|3:1: expected a number for a, found "
            "\"nan\"|3:5: expected a number for b, found \"2 m\"");
        row("cells", "a,b\n1\n1,2,3\n",
            "2:1: expected 2 cells, found 1|3:1: expected 2 cells, found 3");
        row("names", "design,a\nx y,1\na,2\nz,3\nz,4\n",
            "2:1: expected the name of a design, found \"x y\"|3:1: the name a is taken|5:1: the "
            "design z has a line already");
        row("quotes that don't fit", "a,b\n\"1\"2,3\n\"4,5\n",
            "2:4: expected the end of the cell behind its quote, found \"2\"|3:1: expected a quote "
            "at the end of the cell, found end of file|3:1: expected 2 cells, found 1");
        row("place behind umlauts and lines in quotes", "t,a\n\"\xc3\xa4\n\xc3\xa4\",x\n",
            "3:4: expected a number for a, found \"x\"");
        row("other bytes", "a\n1\xff\n", "1:1: expected UTF-8, found other bytes");
    }

    void tables()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, expected);
        const QString before = FProject::instance()->text();
        const size_t steps = FHistory::instance()->stepCount();
        const auto outcome = FDesignTable::read(text, "x.csv");
        QStringList found;
        for (const FScriptError &error : outcome.errors)
            found << Q(error.toString()).remove("x.csv:");
        if (!found.isEmpty()) {
            QCOMPARE(found.join('|'), expected);
            QCOMPARE(FProject::instance()->text(), before);
            QVERIFY(outcome.designs.empty());
            return;
        }
        for (const auto &design : outcome.designs) {
            FDesign::setCurrent(design);
            found << Q(design->getName()) + ' ' + ModelTest::value("a+0") + ' ' +
                         ModelTest::value("b+0");
        }
        QCOMPARE(found.join('|'), expected);
        QVERIFY(FProject::instance()->text().contains("parameter b(2*a)"));
        if (FHistory::instance()->stepCount() > steps) {
            QCOMPARE(FHistory::instance()->stepCount(), steps + 1);
            FHistory::instance()->undo();
        }
        QCOMPARE(FProject::instance()->text(), before);
    }

    void linesAreReadAgain()
    {
        const QStringList cells{"a,b", "\"c\"", " d", "e\nf", QString::fromUtf8("\u00e4"), ""};
        QCOMPARE(FDesignTable::line(cells, ','),
                 QByteArray("\"a,b\",\"\"\"c\"\"\",\" d\",\"e\nf\",\xc3\xa4,\r\n"));
        QCOMPARE(FDesignTable::line({"a,b", "c"}, '\t'), QByteArray("a,b\tc\r\n"));
        QCOMPARE(FDesignTable::line({"", "c"}, ','), QByteArray(",c\r\n"));
    }
};

QTEST_GUILESS_MAIN(tst_DesignTable)
#include "tst_designtable.moc"

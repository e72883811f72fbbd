// SPDX-License-Identifier: Apache-2.0
#include "ftecplotreader.h"
#include "testseed.h"

#include <QElapsedTimer>
#include <QtTest>
#include <cmath>
#include <cstring>
#include <random>

namespace {
/// "NAME: 1 2 3; NAME: 4 5 6"
QByteArray shown(const FTecplotData &data)
{
    QByteArray result;
    for (size_t c = 0; c < data.columns.size(); ++c) {
        result += (c ? "; " : "") + QByteArray::fromStdString(data.variables[c]) + ':';
        for (const double value : data.columns[c])
            result += ' ' + QByteArray::number(value, 'g', 17);
    }
    return result;
}
} // namespace

class TestTecplot : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void reads_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArray>("expected");
        const auto row = [](const char *name, const char *text, const char *expected) {
            QTest::newRow(name) << QByteArray(text) << QByteArray(expected);
        };
        row("points",
            "TITLE = \"t\"\nVARIABLES = \"x\", \"y\"\nZONE T=\"a\", I=3, F=POINT\n"
            "1 2\n3 4\n5 6\n",
            "x: 1 3 5; y: 2 4 6");
        row("blocks", "VARIABLES = x y\nZONE I=3 DATAPACKING=BLOCK\n1 2 3\n4 5 6",
            "x: 1 2 3; y: 4 5 6");
        row("three directions", "variables = x\nzone i=2, j=2, k=2\n1 2 3 4\n5 6 7 8\n",
            "x: 1 2 3 4 5 6 7 8");
        row("numbers wrapped anywhere", "VARIABLES=a,b,c\nZONE I=2\n1,2\n3 4\n\n5,\t6\n",
            "a: 1 4; b: 2 5; c: 3 6");
        row("names over several lines",
            "VARIABLES = \"X [m]\"\n\"say \\\"hi\\\", ZONE\"\n  p\n\"größe\" # last\nZONE I=1\n1 2 "
            "3 4",
            "X [m]: 1; say \"hi\", ZONE: 2; p: 3; größe: 4");
        row("zone behind names", "VARIABLES = \"x\" \"y\" ZONE I=1\n1 2\n", "x: 1; y: 2");
        row("repeats", "VARIABLES=x y\nZONE I=4, F=BLOCK\n4*1.5 2*0 2*-1e2\n",
            "x: 1.5 1.5 1.5 1.5; y: 0 0 -100 -100");
        row("number forms",
            "VARIABLES=x\nZONE I=10\n+1 -.5 5. 1D+3 1.5d-2 1E2 1e-400 -1e400 nan "
            "-Infinity",
            "x: 1 -0.5 5 1000 0.014999999999999999 100 0 -inf nan -inf");
        row("comments and line ends",
            "# one\r\nVARIABLES = x y # names\r\n\r\n# more \"\r\nZONE I=2\r\n1 2 # a\r\n#9 9\r\n3 "
            "4",
            "x: 1 3; y: 2 4");
        row("lone carriage returns", "VARIABLES=x\rZONE I=2\r1\r2\r", "x: 1 2");
        row("zones appended",
            "VARIABLES=x y\nZONE I=2\n1 2 3 4\nZONE I=1, F=BLOCK\n5 6\n"
            "VARIABLES=x y\nZONE\n7 8\n9 10\n",
            "x: 1 3 5 7 9; y: 2 4 6 8 10");
        row("no size", "VARIABLES=x y\nZONE F=BLOCK\n1 2 3\n4 5 6\n", "x: 1 2 3; y: 4 5 6");
        row("no zone record", "VARIABLES=x y\n1 2\n3 4\n", "x: 1 3; y: 2 4");
        row("empty zone", "VARIABLES=x\nZONE I=0\nZONE I=1\n4\n", "x: 4");
        row("everything skipped",
            "\xef\xbb\xbfTITLE=two words\nFILETYPE = FULL\nVARIABLES = x y\n"
            "DATASETAUXDATA Author = \"me \\\" ZONE\"\nVARAUXDATA 1 unit=\"m\"\n"
            "TEXT X=50 Y=90 ZN=1\nH=3 T=\"1 2 3\"\n"
            "ZONE T='single', STRANDID=1, SOLUTIONTIME=1.5e-3\nAUXDATA "
            "Common.Incompressible=\"T\"\n"
            "AUXDATA n=5\nI=2, ZONETYPE=Ordered, C=RED\nDT=(SINGLE\n DOUBLE), "
            "VARLOCATION=([1-2]=NODAL)\n"
            "PASSIVEVARLIST=([])\n1 2 3 4\n"
            "GEOMETRY X=0 Y=0 T=LINE\n1\n3\n0 0\n1 1\n2 0\nCUSTOMLABELS \"a\" \"b\"\n",
            "x: 1 3; y: 2 4");
    }
    void reads()
    {
        QFETCH(QByteArray, text);
        FTecplotData data;
        QString why;
        QVERIFY2(readTecplot(text, &data, &why), qPrintable(why));
        QTEST(shown(data), "expected");
        // Whatever is cut off, the answer is yes or no with a reason.
        for (int size = 0; size < text.size(); ++size) {
            FTecplotData part;
            why.clear();
            QVERIFY(readTecplot(text.left(size), &part, &why) == why.isEmpty());
            for (const auto &column : part.columns)
                QCOMPARE(column.size(), part.columns[0].size());
        }
    }

    void keepsTitle()
    {
        FTecplotData data;
        QString why;
        QVERIFY(readTecplot("TITLE     = \"a \\\"b\\\" ä\"\nVARIABLES=x\n1", &data, &why));
        QCOMPARE(data.title, QStringLiteral("a \"b\" ä"));
        QVERIFY(readTecplot("TITLE = plain words, too\nVARIABLES=x\n1", &data, &why));
        QCOMPARE(data.title, QStringLiteral("plain words, too"));
    }

    void refuses_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const QByteArray &text, const char *expected) {
            QTest::newRow(name) << text << QString::fromUtf8(expected);
        };
        const QByteArray two = "VARIABLES=x y\n";
        row("empty", "", "line 1: found the end of the text, expected VARIABLES and a ZONE");
        row("no data", two, "line 2: found the end of the text, expected a ZONE");
        row("other text", "hello\n",
            "line 1: found \"hello\", expected a record such as TITLE, VARIABLES or ZONE");
        row("binary", "#!TDV112xyz",
            "line 1: found a binary Tecplot file, expected Tecplot ASCII text");
        row("too few", two + "ZONE I=2\n1 2\n3\n",
            "line 5: found 3 numbers, expected 4 (the zone of line 2: 2 variables at 2 points)");
        row("too few before next", two + "ZONE I=2\n1 2 3\nZONE I=1\n1 2",
            "line 4: found 3 numbers, expected 4 (the zone of line 2: 2 variables at 2 points)");
        row("too many", two + "ZONE I=2\n1 2\n3 4\n5 6\n",
            "line 5: found 6 numbers, expected 4 (the zone of line 2: 2 variables at 2 points)");
        row("repeated too often", two + "ZONE I=2\n1 99999999999*2\n",
            "line 3: found 100000000000 numbers, expected 4 (the zone of line 2: 2 variables at 2 "
            "points)");
        row("uneven", two + "ZONE\n1 2 3\n",
            "line 4: found 3 numbers, expected as many for each of 2 variables");
        row("nothing in zone", two + "ZONE T=\"a\"\nTITLE=\"b\"\n",
            "line 3: found \"TITLE\", expected numbers for the zone of line 2");
        row("word in data", two + "ZONE I=2\n1 2\n3 4x\n",
            "line 4: found \"4x\", expected a number");
        row("joined numbers", two + "ZONE I=1\n1.0-105 2\n",
            "line 3: found \"1.0-105\", expected a number or an attribute of the zone with \"=\"");
        row("word behind data", two + "ZONE I=1\n1 2\nend\n",
            "line 4: found \"end\", expected a record such as TITLE, VARIABLES or ZONE");
        row("no variables", "ZONE I=1\n1\n", "line 1: found data, expected VARIABLES before it");
        row("no names", "VARIABLES =\nZONE I=1\n1\n",
            "line 1: found no names, expected names of variables");
        row("other variables", two + "ZONE I=1\n1 2\nVARIABLES=x z\nZONE I=1\n3 4\n",
            "line 4: found other variables, expected the same variables for all zones");
        row("finite elements", two + "ZONE N=4, E=1, F=FEPOINT, ET=QUADRILATERAL\n",
            "line 2: found a finite element zone, expected an ordered zone");
        row("finite element type", two + "ZONE ZONETYPE=FETRIANGLE\n",
            "line 2: found \"FETRIANGLE\", expected an ordered zone");
        row("packing", two + "ZONE I=1 F=FEBLOCK\n",
            "line 2: found \"FEBLOCK\", expected POINT or BLOCK packing of an ordered zone");
        row("cell centred", two + "ZONE I=2, VARLOCATION=([1]=NODAL,[2]=CELLCENTERED)\n1 2 3\n",
            "line 2: found values at cell centres, expected values at the points");
        row("shared", two + "ZONE I=1\n1 2\nZONE I=1, VARSHARELIST=([1]=1)\n2\n",
            "line 4: found shared or passive variables, expected numbers for every variable");
        row("negative size", two + "ZONE I=-2\n",
            "line 2: found \"-2\", expected a number of points");
        row("size beyond 64 bits", two + "ZONE I=4294967296 J=4294967296 K=4294967296\n1 2",
            "line 2: found a zone of 4294967296 x 4294967296 x 4294967296 points, expected at most "
            "31 numbers, as the text has 61 bytes");
        row("size beyond the file", two + "ZONE I=1000000\n1 2\n",
            "line 2: found a zone of 1000000 x 1 x 1 points, expected at most 17 numbers, as the "
            "text has 33 bytes");
        row("open quote", two + "ZONE T=\"abc, I=1\n1 2\n",
            "line 2: found a quoted text without an end, expected a closing quote on the same "
            "line");
        row("open list", two + "ZONE DT=(SINGLE\nI=1\n1 2\n",
            "line 2: found a list without an end, expected \")\"");
    }
    void refuses()
    {
        QFETCH(QByteArray, text);
        FTecplotData data;
        data.variables = {"kept"};
        QString why;
        QVERIFY(!readTecplot(text, &data, &why));
        QTEST(why, "expected");
        QCOMPARE(data.variables.size(), size_t(1));
    }

    void boundsWhatRepeatsMake()
    {
        // Each zone alone would fit.
        const QByteArray text = "VARIABLES=x\n" + QByteArray("ZONE\n10000000*0\n").repeated(50);
        FTecplotData data;
        QString why;
        QVERIFY(!readTecplot(text, &data, &why));
        QVERIFY2(why.startsWith(QLatin1String("line 5: found 10000000 numbers, expected ")),
                 qPrintable(why));
    }

    void readsBackWhatWasWritten()
    {
        std::mt19937_64 random(testSeed());
        const auto below = [&](int n) { return int(random() % quint64(n)); };
        for (int round = 0; round < 500; ++round) {
            const size_t columns = size_t(below(5)) + 1;
            QByteArray text = "VARIABLES =";
            std::vector<std::vector<double>> expected(columns);
            for (size_t c = 0; c < columns; ++c)
                text += " \"v" + QByteArray::number(int(c)) + '"' + (below(3) ? "" : "\n");
            for (int zones = below(4) + 1; zones > 0; --zones) {
                const int i = below(4) + 1, j = below(4) + 1, points = i * j;
                const bool block = below(2);
                text += "\nZONE I=" + QByteArray::number(i) + ", J=" + QByteArray::number(j) +
                        (block ? ", F=BLOCK\n" : "\n");
                std::vector<double> inOrder;
                while (int(inOrder.size()) < points * int(columns)) {
                    double value;
                    const quint64 bits = random();
                    memcpy(&value, &bits, sizeof value);
                    if (!std::isfinite(value))
                        continue;
                    const int left = points * int(columns) - int(inOrder.size());
                    const int count = below(4) ? 1 : below(left) + 1;
                    QByteArray number = QByteArray::number(value, 'e', 16);
                    if (below(3) == 0)
                        number.replace('e', below(2) ? 'D' : 'd');
                    text += (count > 1 ? QByteArray::number(count) + '*' : QByteArray()) + number +
                            (below(4)   ? " "
                             : below(2) ? "\r\n"
                                        : " # 17\n");
                    inOrder.insert(inOrder.end(), size_t(count), value);
                }
                for (size_t n = 0; n < inOrder.size(); ++n)
                    expected[block ? n / size_t(points) : n % columns].push_back(inOrder[n]);
            }
            FTecplotData data;
            QString why;
            QVERIFY2(readTecplot(text, &data, &why), qPrintable(why));
            QVERIFY2(data.columns == expected, text.constData());
        }
    }

    void timeGrowsWithTheTextOnly()
    {
        const auto secondsFor = [](int zones) {
            const QByteArray text =
                "VARIABLES=a b c d\n" +
                QByteArray("ZONE I=2\n1.25 -3e-5 4.125 0\n7 8 9 1D2\n").repeated(zones);
            FTecplotData data;
            QString why;
            double best = 1e9;
            for (int i = 0; i < 3; ++i) {
                QElapsedTimer timer;
                timer.start();
                if (!readTecplot(text, &data, &why))
                    return -1.0;
                best = qMin(best, double(timer.nsecsElapsed()) / 1e9);
            }
            return best;
        };
        const double once = secondsFor(10'000), fourTimes = secondsFor(40'000);
        QVERIFY(once > 0);
        QVERIFY2(fourTimes < 12 * once + 0.02, // quadratic would be 16 at least
                 qPrintable(QStringLiteral("%1 s, %2 s").arg(once).arg(fourTimes)));
    }
};

QTEST_GUILESS_MAIN(TestTecplot)
#include "tst_tecplot.moc"

// SPDX-License-Identifier: Apache-2.0
//
// A click on a number of a real output gives a rule that reads it, there and in the output of
// another run.

#include "fgenintruleproposals.h"
#include "literalreader.h"
#include "otherrun.h"

#include <QElapsedTimer>
#include <QtTest>

namespace {
using FGenIntRuleProposals::cellAt;
using FGenIntRuleProposals::propose;

FGenIntColumns byBlanks()
{
    FGenIntColumns columns;
    columns.numbers = false;
    columns.spacesAndTabs = true;
    return columns;
}

QString literalCell(const FGenIntRule &rule, const QString &text, const FGenIntColumns &columns)
{
    QRegExp separator(columns.numbers ? QString() : QString("\\s+"));
    QString work = text, cell;
    while (!work.isEmpty() && work.at(work.size() - 1).isSpace())
        work.chop(1);
    literal::single(rule, text, work, separator, columns.numbers, &cell);
    return cell;
}

/// True if the rule reads what stands there, and other figures once others stand there.
bool readsPlace(const FGenIntRule &rule, const QString &text, int begin, int length,
                const FGenIntColumns &columns = FGenIntColumns())
{
    QString other = text;
    for (int i = begin; i < begin + length; ++i)
        if (other[i].isDigit())
            other[i] = other[i] == QChar('7') ? QChar('3') : QChar('7');
    // An anchor that ends in a figure may come to stand elsewhere through the change.
    return literalCell(rule, text, columns) == text.mid(begin, length) &&
           (QByteArray("0123456789").contains(rule.anchor.empty() ? 'x' : rule.anchor.back()) ||
            literalCell(rule, other, columns) == other.mid(begin, length));
}

QString show(const FGenIntRule &rule, const QString &text, int begin, int length)
{
    return QString("%1 in line %2 by '%3', line %4, column %5")
        .arg(text.mid(begin, length))
        .arg(text.leftRef(begin).count('\n') + 1)
        .arg(QString::fromStdString(rule.anchor))
        .arg(rule.line)
        .arg(rule.column);
}

} // namespace

class TestRuleProposals : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void readsRealOutputs_data();
    void readsRealOutputs();
    void readsOtherRuns();
    void findsCells_data();
    void findsCells();
    void choosesAnchors_data();
    void choosesAnchors();
    void answersAboutLargeTexts();
};

void TestRuleProposals::readsRealOutputs_data()
{
    QTest::addColumn<bool>("numbers");
    QTest::addColumn<QString>("lineEnd");
    QTest::newRow("by number") << true << "\n";
    QTest::newRow("by number, two line ends") << true << "\r\n";
    QTest::newRow("by blanks") << false << "\n";
}

void TestRuleProposals::readsRealOutputs()
{
    QFETCH(bool, numbers);
    QFETCH(QString, lineEnd);
    const FGenIntColumns columns = numbers ? FGenIntColumns() : byBlanks();
    int asked = 0, read = 0;
    for (const QFileInfo &file : outputs()) {
        const QString text = literal::fileText(file.filePath()).replace("\n", lineEnd);
        QVERIFY(!text.isEmpty());
        for (const Place &place : numbersIn(text)) {
            int begin = 0, length = 0;
            if (!cellAt(text, place.begin + place.length, columns, &begin, &length)) {
                QVERIFY(!numbers); // between blanks, there may be more than the number
                continue;
            }
            ++asked;
            const auto rules = propose(text, place.begin + place.length, columns);
            QSet<QString> anchors;
            for (const FGenIntRule &rule : rules) {
                QVERIFY2(readsPlace(rule, text, begin, length, columns),
                         qPrintable(show(rule, text, begin, length)));
                anchors << QString::fromStdString(rule.anchor) + QString::number(rule.line);
            }
            QCOMPARE(anchors.size(), rules.size());
            read += begin == place.begin && length == place.length && !rules.isEmpty();
        }
    }
    qInfo("%d of %d numbers", read, asked);
    QVERIFY(asked > 500);
    QVERIFY(read * 100 >= asked * 95);
}

void TestRuleProposals::readsOtherRuns()
{
    int asked = 0, read = 0;
    for (const QFileInfo &file : outputs()) {
        const QString text = literal::fileText(file.filePath());
        const OtherRun other(text, file.fileName());
        int askedHere = 0, readHere = 0;
        for (const Place &place : numbersIn(text)) {
            if (!other.hasPlace(place.begin))
                continue;
            ++askedHere;
            const auto rules = propose(text, place.begin, FGenIntColumns());
            const bool ok =
                !rules.isEmpty() &&
                readsPlace(rules[0], other.out, other.placeOf(place.begin), place.length);
            readHere += ok;
            if (!ok && qEnvironmentVariableIsSet("F_SHOW"))
                qInfo("%s", qPrintable(show(rules.value(0), text, place.begin, place.length)));
        }
        qInfo("%s: %d of %d", qPrintable(file.fileName()), readHere, askedHere);
        asked += askedHere;
        read += readHere;
    }
    qInfo("%d of %d numbers", read, asked);
    QVERIFY(asked > 500);
    QVERIFY(read * 100 >= asked * 85);
}

void TestRuleProposals::findsCells_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("position");
    QTest::addColumn<bool>("numbers");
    QTest::addColumn<QString>("cell"); // empty: none
    QTest::newRow("empty") << "" << 0 << true << "";
    QTest::newRow("ahead of the text") << "1" << -1 << true << "";
    QTest::newRow("beyond the text") << "1" << 2 << true << "";
    QTest::newRow("only a number") << "42" << 1 << true << "42";
    QTest::newRow("just behind") << "a -1.5 b" << 6 << true << "-1.5";
    QTest::newRow("farther behind") << "a -1.5 b" << 7 << true << "";
    QTest::newRow("two that touch") << "1.5-2.5" << 3 << true << "-2.5";
    QTest::newRow("other exponent") << "x = 1.0D+03" << 5 << true << "1.0";
    QTest::newRow("its figures") << "x = 1.0D+03" << 9 << true << "+03";
    QTest::newRow("line end of two") << "a 1\r\nb -2\r\n" << 9 << true << "-2";
    QTest::newRow("between tabs") << "a\t7\tb" << 2 << false << "7";
    QTest::newRow("a word") << "a\t7\tb" << 0 << false << "";
    QTest::newRow("number in a cell") << "a=7 8" << 2 << false << "";
    QTest::newRow("letters beyond ASCII") << QString::fromUtf8("Größe = 7\nb") << 8 << true << "7";
    QTest::newRow("many columns") << "x " + QString("1.5 ").repeated(25000) << 99999 << false
                                  << "1.5";
    QTest::newRow("long line") << QString(100000, ' ') + "5" << 100000 << true << "5";
}

void TestRuleProposals::findsCells()
{
    QFETCH(QString, text);
    QFETCH(int, position);
    QFETCH(bool, numbers);
    QFETCH(QString, cell);
    const FGenIntColumns columns = numbers ? FGenIntColumns() : byBlanks();
    int begin = 0, length = 0;
    QCOMPARE(cellAt(text, position, columns, &begin, &length), !cell.isEmpty());
    QCOMPARE(text.mid(begin, length), cell);
    const auto rules = propose(text, position, columns);
    QCOMPARE(rules.isEmpty(), cell.isEmpty());
    for (const FGenIntRule &rule : rules)
        QVERIFY(readsPlace(rule, text, begin, length, columns));
}

void TestRuleProposals::choosesAnchors_data()
{
    QTest::addColumn<QString>("text"); // with < ahead of the number
    QTest::addColumn<QString>("anchor");
    QTest::addColumn<int>("line");
    QTest::addColumn<bool>("first");
    QTest::newRow("own line") << "Head 1\nTotal energy = <-5.2 eV"
                              << "Total energy =" << 0 << false;
    QTest::newRow("heading") << "Loads (N)\n 1.5 <2.5\n"
                             << "Loads (N)" << 1 << false;
    QTest::newRow("words of a heading") << "Loads at 09:12:26, 7.25 s\n<2.5\n"
                                        << "Loads at" << 1 << false;
    QTest::newRow("first") << "it = <1.5\nit = 2.5\nit = 3.5\n"
                           << "it =" << 0 << true;
    QTest::newRow("last") << "Sum = 1.5\nSum = 2.5\nsum = <3.5\n"
                          << "sum =" << 0 << false;
    QTest::newRow("no path") << "Load /home/me/case.dat <7"
                             << "Load" << 0 << false;
    QTest::newRow("no file name") << "Load of case.inp...\n<7 rows"
                                  << "Load of" << 1 << false;
    QTest::newRow("no quotes") << "Load \"case\" is <7"
                               << "Load" << 0 << false;
    QTest::newRow("end of a history") << "Time  Load\n0.1 1.5\n0.2 2.5\n0.3 <3.5\nDone\n"
                                      << "Done" << -1 << false;
    QTest::newRow("row by its name") << "Loads\nleft 1 2\nright 3 <4\n"
                                     << "right" << 0 << false;
    QTest::newRow("table with its blank line") << "Time  Load\n0.1 1.5\n0.2 <2.5\n\nEnd of run\n"
                                               << "End of run" << -1 << false;
    QTest::newRow("name and state")
        << "Row  State  Load\nleft   OK   1.5\nright   OK   <2.5\nmid   OK 3\n"
        << "right" << 0 << false;
}

void TestRuleProposals::choosesAnchors()
{
    QFETCH(QString, text);
    const int position = text.indexOf('<');
    text.remove(position, 1);
    const auto rules = propose(text, position, FGenIntColumns(), 1);
    QCOMPARE(rules.size(), 1);
    QTEST(QString::fromStdString(rules[0].anchor), "anchor");
    QTEST(rules[0].line, "line");
    QTEST(rules[0].first, "first");
}

void TestRuleProposals::answersAboutLargeTexts()
{
    QString text;
    for (int i = 0; text.size() < 30000000; ++i)
        text += QString("Step %1 of the run: load %2 kN\n   0.5   1.5   2.5\n").arg(i).arg(i * 0.5);
    for (int position : {text.size() / 2, text.size() - 5, 10}) {
        int begin = 0, length = 0;
        while (!cellAt(text, position, FGenIntColumns(), &begin, &length))
            ++position;
        QElapsedTimer clock;
        clock.start();
        const auto rules = propose(text, position, FGenIntColumns());
        qInfo("%lld ms", clock.elapsed());
        QVERIFY(!rules.isEmpty());
        QVERIFY(clock.elapsed() < 5000); // generous: a scan for each candidate takes longer
    }
}

QTEST_GUILESS_MAIN(TestRuleProposals)
#include "tst_ruleproposals.moc"

// SPDX-License-Identifier: Apache-2.0
// Value, place and doubt of numbers, spelling by spelling and encoding by encoding.
#include "readercases.h"

#include <QTextCodec>
#include <QtTest>
#include <sys/stat.h>

class TestReaderNotes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void survivesAFileThatChanges();
    void convertsSpellings_data();
    void convertsSpellings();
    void decodesFiles_data();
    void decodesFiles();
    void notesDoubts_data();
    void notesDoubts();
    void refusesWhatIsNoFile_data();
    void refusesWhatIsNoFile();

private:
    ReaderFile mFile;
};

void TestReaderNotes::convertsSpellings_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("note");
    const QString touches = "number touches other characters";
    const QString lacks = "NaN or **** stands before it in the line";
    const QString none = "column not there";
    struct Spelling
    {
        const char *line;
        int column;
        const char *value;
        QString note;
    };
    const std::vector<Spelling> spellings = {
        {"1", 0, "1", ""},
        {"+1", 0, "1", ""},
        {"-1.25", 0, "-1.25", ""},
        {"-0", 0, "-0", ""},
        {".5", 0, "0.5", ""},
        {"-.5", 0, "-0.5", ""},
        {"5.", 0, "5", ""},
        {"007", 0, "7", ""},
        {"x=1.5", 0, "1.5", ""},
        {"x = 1.5 m/s", 0, "1.5", ""},
        {"(1.5)", 0, "1.5", ""},
        {"(1.5, 2.5)", 1, "2.5", ""},
        {"[1.5;2.5]", 1, "2.5", ""},
        {"1.5,", 0, "1.5", ""},
        {"1.5.", 0, "1.5", ""},
        {"1.5E+00;", 0, "1.5", ""},
        {"1.5e3", 0, "1500", ""},
        {"1.5E-3", 0, "0.0015", ""},
        {"1E5", 0, "100000", ""},
        {"45%", 0, "45", ""},
        {"|1.5|-2.5|", 1, "-2.5", ""},
        {"\"1.5\"", 0, "1.5", ""},
        {"12/100", 0, "12", ""},
        {"0.5,0.25,0.125", 1, "0.25", ""},
        {"1,2,3", 2, "3", ""},
        {"10,0.5", 0, "10", ""},
        {"Energy ..... 1.5", 0, "1.5", ""},
        {"Energy.....: 1.5", 0, "1.5", ""},
        {"---- 1.5 ----", 0, "1.5", ""},
        {"a 1.5 b -2e3", 1, "-2000", ""},
        {"a 1.5 b -2e3", 2, "nan", none},
        {"no number", 0, "nan", none},
        {"*** STEP 5", 0, "5", ""},
        {"finance 5 information 6", 1, "6", ""},
        {"4.9406564584124654e-324", 0, "4.9406564584124654e-324", ""},
        {"2.2250738585072011e-308", 0, "2.2250738585072011e-308", ""},
        {"1.7976931348623157e308", 0, "1.7976931348623157e308", ""},
        {"9007199254740993", 0, "9007199254740992", ""},
        {"0.1000000000000000055511151231257827021181583404541015625", 0, "0.1", ""},
        {"1e400", 0, "nan", "not a number"},
        {"1e-400", 0, "nan", "not a number"},
        {"1.5D+03", 0, "1.5", touches},
        {"1.5d3", 0, "1.5", touches},
        {"1.5D+03", 1, "3", touches},
        {"1.#QNAN", 0, "1", touches},
        {"-1.#IND0", 0, "-1", touches},
        {"x = 1.#INF", 0, "1", touches},
        {"--5", 0, "-5", touches},
        {"+-5", 0, "-5", touches},
        {"---- -5", 0, "-5", ""},
        {"1/3", 0, "1", touches},
        {"1/3", 1, "3", touches},
        {"1.234-105", 0, "1.234", touches},
        {"1.234-105", 1, "-105", touches},
        {"93-2.24716E-05-9.77098E-07", 0, "93", ""},
        {"93-2.24716E-05-9.77098E-07", 1, "-2.24716E-05", ""},
        {"93-2.24716E-05-9.77098E-07", 2, "-9.77098E-07", ""},
        {"-12.345-67.890", 0, "-12.345", ""},
        {"-12.345-67.890", 1, "-67.89", ""},
        {"1.5E-05-12.5", 1, "-12.5", ""},
        {"1.5-2.5", 0, "1.5", touches},
        {"1.5-2.5", 1, "-2.5", touches},
        {"0.25s CPU", 0, "0.25", ""},
        {"2s state", 0, "2", touches},
        {"1.5sr", 0, "1.5", touches},
        {"1,234", 0, "1", touches},
        {"1,234,567", 2, "567", touches},
        {"1,234.5", 0, "1", touches},
        {"1.234,56", 0, "1.234", touches},
        {"3,14", 0, "3", touches},
        {"3,14", 1, "14", touches},
        {"x1", 0, "1", touches},
        {"CO2 = 5", 0, "2", touches},
        {"CO2 = 5", 1, "5", ""},
        {"5.e-3", 0, "5", touches},
        {"5.e-3", 1, "-3", touches},
        {"12****", 0, "12", touches},
        {"1.2.3", 0, "1.2", touches},
        {"1.2.3", 1, "0.3", touches},
        {"0x1F", 0, "0", touches},
        {"2026-11-23", 0, "2026", touches},
        {"00:01:23.45", 0, "0", touches},
        {"at 12:30 h", 1, "30", touches},
        {"node 12:3.5", 0, "12", ""},
        {"ratio 2:1", 0, "2", ""},
        {"10^5", 0, "10", touches},
        {"1.5e", 0, "1.5", touches},
        {"1'234", 0, "1", touches},
        {"1_000", 0, "1", touches},
        {"Energy.....12.5", 0, "0.12", touches},
        {"12.5kg", 0, "12.5", touches},
        {"2.5\xC3\x97"
         "10",
         0, "2.5", touches},
        {"\xE2\x88\x92"
         "1.5",
         0, "1.5", touches},
        {"1\xC2\xA0"
         "234",
         0, "1", touches},
        {"\xD9\xA3", 0, "nan", "not a number"},
        {"1.0 NaN 3.0", 1, "3", lacks},
        {"obj = 3 inf =   1.5e-03", 1, "0.0015", ""},
        {"NaN: 0 of 12", 1, "12", ""},
        {" **** step 12 ****  4.5", 1, "4.5", ""},
        {" **** 12 **** 4.5", 1, "4.5", lacks},
        {"1.0 nan 3.0", 0, "1", ""},
        {"-nan 3.0", 0, "3", lacks},
        {"1.0 **** 3.0", 1, "3", lacks},
        {"****  2.0", 0, "2", lacks},
        {"1.0 ** 3.0", 1, "3", lacks},
        {"*** 5 steps", 0, "5", ""},
        {"1.0 -Inf 3.0", 1, "3", lacks},
        {"inf norm = 3.0", 0, "3", ""},
        {"1.#QNAN 3.0", 1, "3", lacks},
        {"T= ******** p= 2.0", 0, "2", lacks},
    };
    for (const Spelling &spelling : spellings) {
        QTest::addRow("%s column %d", spelling.line, spelling.column)
            << QString::fromUtf8(spelling.line) << spelling.column << QString(spelling.value)
            << spelling.note;
    }
}

void TestReaderNotes::convertsSpellings()
{
    QFETCH(QString, line);
    QFETCH(int, column);
    QFETCH(QString, value);
    QFETCH(QString, note);
    FGenIntRule rule;
    rule.column = column;
    // Read by itself, and as the mean of itself.
    for (bool average : {false, true}) {
        rule.average = average;
        rule.averageRows = 1;
        const auto text =
            FGenIntText::fromFile(mFile.write("head\n" + line.toUtf8() + "\n"), nullptr);
        rule.line = 1;
        const auto found = FGenIntReaderCore(*text).read({rule}, FGenIntColumns());
        QCOMPARE(found.size(), 1);
        const double expected = value.toDouble();
        QVERIFY2(qIsNaN(expected) ? qIsNaN(found[0].value)
                                  : memcmp(&found[0].value, &expected, sizeof expected) == 0 ||
                                        (average && found[0].value == expected),
                 qPrintable(QString::number(found[0].value, 'g', 17)));
        if (!average)
            QCOMPARE(found[0].notes.join("; "), note);
        else if (!qIsNaN(expected))
            QCOMPARE(found[0].notes.join("; "), note);
    }
}

void TestReaderNotes::decodesFiles_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("note");
    const QString text = "head\nKraft = 2.5 N\n";
    const QString umlaut = QString::fromUtf8("Größe 7\nKraft = 2.5 N\n");
    const auto encode = [](const char *name, const QString &t) {
        return QTextCodec::codecForName(name)->fromUnicode(t);
    };
    QTest::newRow("ASCII") << text.toLatin1() << 2.5 << QString();
    QTest::newRow("UTF-8") << umlaut.toUtf8() << 2.5 << QString();
    QTest::newRow("UTF-8 mark") << "\xEF\xBB\xBF" + umlaut.toUtf8() << 2.5 << QString();
    QTest::newRow("ASCII behind UTF-8 mark") << "\xEF\xBB\xBF" + text.toUtf8() << 2.5 << QString();
    QTest::newRow("Latin-1") << umlaut.toLatin1() << 2.5 << QString();
    QTest::newRow("UTF-16LE mark") << encode("UTF-16LE", umlaut) << 2.5 << QString();
    QTest::newRow("UTF-16BE mark") << encode("UTF-16BE", umlaut) << 2.5 << QString();
    QTest::newRow("UTF-32LE mark") << encode("UTF-32LE", umlaut) << 2.5 << QString();
    QTest::newRow("UTF-32BE mark") << encode("UTF-32BE", umlaut) << 2.5 << QString();
    QTest::newRow("UTF-16LE bare")
        << encode("UTF-16LE", text).mid(2) << qQNaN() << "anchor not found; column not there";
    QTest::newRow("UTF-16LE bare digits") << encode("UTF-16LE", "2.5 3\n").mid(2) << 2.0
                                          << "anchor not found; number touches other characters";
    QTest::newRow("CRLF") << text.toLatin1().replace("\n", "\r\n") << 2.5 << QString();
    QTest::newRow("lone CR") << text.toLatin1().replace("\n", "\r") << 2.5 << QString();
    QTest::newRow("broken sequence")
        << QByteArray("\xC3\nKraft = 2.5\xE2\x82") << 2.5 << "last line has no line end";
    QTest::newRow("no line end") << text.toLatin1().trimmed() << 2.5 << "last line has no line end";
    QTest::newRow("unknown character")
        << QByteArray("Kraft = 2.5\xB5m\n") << 2.5 << "number touches other characters";
}

void TestReaderNotes::decodesFiles()
{
    QFETCH(QByteArray, content);
    QFETCH(double, value);
    QFETCH(QString, note);
    FGenIntRule rule;
    rule.anchor = "kraft";
    const QString path = mFile.write(content);
    const auto text = FGenIntText::fromFile(path, nullptr);
    const auto found = FGenIntReaderCore(*text).read({rule}, FGenIntColumns());
    QCOMPARE(found.size(), 1);
    QVERIFY2(found[0].value == value || (qIsNaN(value) && qIsNaN(found[0].value)),
             qPrintable(QString::number(found[0].value)));
    QCOMPARE(found[0].notes.join("; "), note);
    QCOMPARE(difference(found, literal::read(literal::fileText(path), {rule}, FGenIntColumns())),
             QString());
}

void TestReaderNotes::notesDoubts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("anchor");
    QTest::addColumn<int>("line");
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("rows"); // -1: a single cell
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("where"); // line:first-last
    QTest::addColumn<QString>("note");
    const QString t = "1 2\nab 3 4\n5 6\n";
    const QString groesse = QString::fromUtf8("Größe 12.5\n");
    QTest::newRow("behind the anchor") << t << "AB" << 0 << 1 << -1 << 4.0 << "2:6-6"
                                       << "";
    QTest::newRow("above the anchor") << t << "ab" << -1 << 1 << -1 << qQNaN() << "0:0-0"
                                      << "line not there";
    QTest::newRow("anchor missing") << t << "cd" << 1 << 0 << -1 << 3.0 << "2:4-4"
                                    << "anchor not found";
    QTest::newRow("below the end") << t << "ab" << 2 << 0 << -1 << qQNaN() << "0:0-0"
                                   << "line not there";
    QTest::newRow("too far up") << t << "" << -9 << 0 << -1 << 3.0 << "2:4-4"
                                << "line not there";
    QTest::newRow("above the first line") << t << "1" << -1 << 0 << -1 << 5.0 << "3:1-1"
                                          << "line not there";
    QTest::newRow("column missing") << t << "ab" << 0 << 2 << -1 << qQNaN() << "2:0-0"
                                    << "column not there";
    QTest::newRow("negative column") << t << "ab" << 0 << -1 << -1 << 3.0 << "2:4-4"
                                     << "column not there";
    QTest::newRow("digits of the anchor go on") << "T123 = 5\n"
                                                << "t1" << 0 << 0 << -1 << 23.0 << "1:3-4"
                                                << "number touches other characters";
    QTest::newRow("number right behind the anchor") << "T123 = 5\n"
                                                    << "t" << 0 << 0 << -1 << 123.0 << "1:2-4"
                                                    << "";
    QTest::newRow("shifted") << groesse << QString::fromUtf8("größe") << 0 << 0 << -1 << 2.5
                             << "1:8-10"
                             << "number touches other characters; "
                                "non-ASCII anchor shifts the reading";
    QTest::newRow("not shifted") << groesse + "7\n"
                                 << QString::fromUtf8("größe") << 1 << 0 << -1 << 7.0 << "2:1-1"
                                 << "";
    QTest::newRow("half written") << "1\n2"
                                  << "" << 1 << 0 << -1 << 2.0 << "2:1-1"
                                  << "last line has no line end";
    QTest::newRow("read ahead of the half line") << "1\n2"
                                                 << "" << 0 << 0 << -1 << 1.0 << "1:1-1"
                                                 << "";
    QTest::newRow("mean") << "1\n2\n4\n"
                          << "" << 0 << 0 << 2 << 3.0 << "3:1-1"
                          << "";
    QTest::newRow("mean of everything") << "1\n2\n3\n"
                                        << "" << 0 << 0 << 3 << 2.0 << "3:1-1"
                                        << "";
    QTest::newRow("mean beyond the top")
        << "1\n2\n3\n"
        << "" << 0 << 0 << 4 << 2.0 << "3:1-1"
        << "average: 3 of 4 rows used; average window reaches the top of the file";
    QTest::newRow("mean with a blank row") << "1\n\n3\n"
                                           << "" << 0 << 0 << 2 << 3.0 << "3:1-1"
                                           << "average: 1 of 2 rows used";
    QTest::newRow("short row counts again") << "0\n1 2\nx\n3 4\n"
                                            << "" << 0 << 1 << 3 << 8.0 / 3 << "4:3-3"
                                            << "average: 2 of 3 rows used";
    QTest::newRow("mean of nothing") << "1\n2\n"
                                     << "" << 0 << 0 << 0 << qQNaN() << "0:0-0"
                                     << "average: 0 of 0 rows used";
    QTest::newRow("mean with a doubtful row") << "1.5D+00\n2\n"
                                              << "" << 0 << 0 << 2 << 1.75 << "2:1-1"
                                              << "number touches other characters";
}

void TestReaderNotes::notesDoubts()
{
    QFETCH(QString, text);
    QFETCH(int, rows);
    QFETCH(double, value);
    QFETCH(QString, where);
    QFETCH(QString, note);
    FGenIntRule rule;
    QFETCH(QString, anchor);
    QFETCH(int, line);
    QFETCH(int, column);
    rule.anchor = anchor.toStdString();
    rule.line = line;
    rule.column = column;
    rule.first = true;
    rule.average = rows >= 0;
    rule.averageRows = static_cast<unsigned>(std::max(0, rows));
    const auto held = FGenIntText::fromString(text);
    const auto found = FGenIntReaderCore(*held).read({rule}, FGenIntColumns());
    QCOMPARE(found.size(), 1);
    QVERIFY2(found[0].value == value || (qIsNaN(value) && qIsNaN(found[0].value)),
             qPrintable(QString::number(found[0].value)));
    QCOMPARE(
        QString("%1:%2-%3").arg(found[0].line).arg(found[0].columnFirst).arg(found[0].columnLast),
        where);
    QCOMPARE(found[0].notes.join("; "), note);
}

void TestReaderNotes::refusesWhatIsNoFile_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("reason");
    const QString fifo = mFile.folder.filePath("fifo");
    QCOMPARE(mkfifo(fifo.toLocal8Bit().constData(), 0600), 0);
    QTest::newRow("missing") << mFile.folder.filePath("none") << "No such file or directory";
    QTest::newRow("folder") << mFile.folder.path() << "is a directory";
    QTest::newRow("FIFO") << fifo << "is a FIFO";
    QTest::newRow("device") << "/dev/zero"
                            << "is a device";
}

void TestReaderNotes::refusesWhatIsNoFile()
{
    QFETCH(QString, path);
    QFETCH(QString, reason);
    QString why;
    QVERIFY(!FGenIntText::fromFile(path, &why));
    QCOMPARE(why, reason);
}

void TestReaderNotes::survivesAFileThatChanges()
{
    QTemporaryDir folder;
    QFile file(folder.filePath("log"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray("line 1 2 3\n").repeated(100000) + "sum = 17\n");
    file.close();
    FGenIntRule rule;
    rule.anchor = "sum =";
    const qint64 size = file.size();
    // Cut and whole again, and longer: the times alone, or the size, tell.
    for (const qint64 left :
         {qint64(700000), qint64(4096), qint64(0), qint64(1100003), size, size + 1}) {
        const auto text = FGenIntText::fromFile(file.fileName(), nullptr);
        QVERIFY(text && !text->hasChanged());
        if (left > 1000000)
            QCOMPARE(FGenIntReaderCore(*text).read({rule}, {})[0].value, 17.0);
        QTest::qSleep(20); // the clock of the files ticks slowly
        QVERIFY(left < size || file.resize(0));
        QVERIFY(file.resize(left));
        FGenIntReaderCore(*text).read({rule}, {});
        QVERIFY(text->hasChanged());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray("line 1 2 3\n").repeated(100000) + "sum = 17\n");
        file.close();
    }
}

QTEST_GUILESS_MAIN(TestReaderNotes)
#include "tst_readernotes.moc"

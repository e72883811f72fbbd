// SPDX-License-Identifier: Apache-2.0
//
// Output of real solvers that nothing is wrong with is read without doubts.

#include "fgenintreadercore.h"

#include <QDir>
#include <QRegularExpression>
#include <QtTest>
#include <cstdlib>

namespace {
/// A number between blanks: what a user would point at.
struct Cell
{
    int column; // among the cells of its line
    int first, last;
    QString text;
};

std::vector<Cell> numbersIn(const QString &line)
{
    static const QRegularExpression sCell("\\S+");
    static const QRegularExpression sNumber("^[-+]?(\\d+\\.?\\d*|\\.\\d+)([eE][-+]?\\d+)?$");
    std::vector<Cell> cells;
    int column = 0;
    for (auto all = sCell.globalMatch(line); all.hasNext(); ++column) {
        const auto cell = all.next();
        if (sNumber.match(cell.captured()).hasMatch())
            cells.push_back(
                {column, cell.capturedStart() + 1, cell.capturedEnd(), cell.captured()});
    }
    return cells;
}
} // namespace

class TestCleanOutput : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void readsWithoutDoubt_data();
    void readsWithoutDoubt();
};

void TestCleanOutput::readsWithoutDoubt_data()
{
    QTest::addColumn<QString>("path");
    for (const char *folder :
         {F_TEST_DATA "/output", F_SOURCE_DIR "/examples/beam/samples",
          F_SOURCE_DIR "/examples/filter/samples", F_SOURCE_DIR "/examples/chain/samples"})
        for (const QFileInfo &file : QDir(folder).entryInfoList(QDir::Files))
            if (file.suffix() != "md")
                QTest::newRow(qPrintable(file.fileName())) << file.filePath();
}

/// Each number of the file once by its column between blanks, and once as the number that it is
/// among those of its line.
void TestCleanOutput::readsWithoutDoubt()
{
    QFETCH(QString, path);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(file.readAll());
    const QStringList lines = text.split('\n');
    QVector<FGenIntRule> byBlanks, byNumber;
    std::map<std::pair<int, int>, Cell> cells; // by line and first character
    for (int line = 0; line < lines.size(); ++line) {
        FGenIntRule rule;
        rule.line = line;
        rule.first = true;
        for (const Cell &cell : numbersIn(lines[line])) {
            rule.column = cell.column;
            byBlanks.append(rule);
            cells.insert({{line + 1, cell.first}, cell});
        }
        for (rule.column = 0; rule.column < lines[line].count(QRegularExpression("\\d+"));
             ++rule.column)
            byNumber.append(rule);
    }
    const auto held = FGenIntText::fromString(text);
    const FGenIntReaderCore reader(*held);
    FGenIntColumns blanks;
    blanks.numbers = false;
    blanks.spacesAndTabs = true;

    for (const auto &readings :
         {reader.read(byBlanks, blanks), reader.read(byNumber, FGenIntColumns())}) {
        int clean = 0;
        QStringList doubts;
        for (const FGenIntReading &reading : readings) {
            const auto at = cells.find({int(reading.line), reading.columnFirst});
            if (at == cells.end() || at->second.last != reading.columnLast)
                continue; // a part of a word, such as the 2 of H2O
            ++clean;
            QCOMPARE(reading.value, strtod(at->second.text.toUtf8().constData(), nullptr));
            if (!reading.notes.isEmpty())
                doubts << QString("%1 in line %2: %3")
                              .arg(at->second.text)
                              .arg(reading.line)
                              .arg(reading.notes.join("; "));
        }
        QCOMPARE(clean, int(cells.size()));
        QVERIFY2(doubts.size() * 50 <= clean, qPrintable(doubts.join('\n')));
    }
}

QTEST_GUILESS_MAIN(TestCleanOutput)
#include "tst_cleanoutput.moc"

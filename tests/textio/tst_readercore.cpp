// SPDX-License-Identifier: Apache-2.0
// The reader against the literal one, on random texts and at its limits.
#include "fgenintcells.h"
#include "readercases.h"
#include "testseed.h"

#include <QtTest>
#include <map>

class TestReaderCore : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void agreesWithLiteralReader();
    void agreesOnLongTexts();
    void findsAnchorsAtBorders();
    void findsAnchorsInTangledText();
    void decodesAsStreamsDo();
    void answersFarCountsAtOnce();
    void givesUpSlowExpressions();
    void buildingBlocksAgreeWithLiteralOnes();

private:
    ReaderFile mFile;
};

void TestReaderCore::agreesWithLiteralReader()
{
    const quint32 seed = testSeed();
    const QByteArray count = qgetenv("F_TEST_CASES");
    const int cases = count.isEmpty() ? 20000 : count.toInt();
    int asItLies = 0;
    for (int i = 0; i < cases; ++i) {
        FCases random(seed + static_cast<quint32>(i));
        const bool wide = random.chance(40);
        QString text = random.text(wide);
        const bool file = random.chance(40);
        QString path;
        if (file) {
            path = mFile.write(random.encoded(text));
            text = literal::fileText(path);
        }
        QVector<FGenIntRule> rules;
        for (int r = random.below(6); r >= 0; --r)
            rules.append(random.rule(text, wide));
        const FGenIntColumns columns = random.columns();
        QString why;
        const auto held = file ? FGenIntText::fromFile(path, &why) : FGenIntText::fromString(text);
        QVERIFY2(held, qPrintable(why));
        QCOMPARE(held->isEmpty(), text.isEmpty());
        const auto found = FGenIntReaderCore(*held).read(rules, columns);
        QString fault = difference(found, literal::read(text, rules, columns));
        fault += fault.isEmpty() ? misplaced(found, text) : QString();
        QVERIFY2(fault.isEmpty(),
                 qPrintable(QString("case seed %1: ").arg(seed + static_cast<quint32>(i)) + fault +
                            describe(text, rules, columns)));
        asItLies += held->isForeign() && !held->isWide();
    }
    QVERIFY2(asItLies * 50 > cases, qPrintable(QString::number(asItLies)));
}

/// Texts of several blocks, which are searched from both ends and passed over block by block;
/// anchors that lie across the borders of blocks and of the pieces that a block is searched in.
void TestReaderCore::agreesOnLongTexts()
{
    const quint32 seed = testSeed();
    const QString line = "  12  1.5E-03 residual 7.25, time = 3.5 s\n";
    for (int i = 0; i < 60; ++i) {
        FCases random(seed + static_cast<quint32>(i));
        const bool wide = i % 6 == 5;
        const bool sprinkled = i % 6 > 2; // with letters that leave the file as it lies
        const int size = random.chance(20) ? 300000 : 3000 + random.below(160000);
        QString text;
        while (text.size() < size) {
            const int far = random.chance(50) ? 1300 + random.below(600) : random.below(300);
            text += line.repeated(random.chance(20) ? 0 : far) + random.text(wide);
            if (sprinkled)
                text += QString::fromUtf8(random.chance(50) ? "at 21.5°C 4\n" : "1.5\u00A0Größe 7");
            if (random.chance(20))
                text += QString(random.below(70000), random.chance(50) ? ' ' : 'b');
        }
        const int end = literal::trimmed(text).size();
        QVector<FGenIntRule> rules;
        for (int r = random.below(9); r >= 0; --r) {
            FGenIntRule rule = random.rule(text, wide);
            if (random.chance(60)) {
                const int step = random.chance(50) ? 4096 : static_cast<int>(FGenIntText::kBlock);
                const int edge = (1 + random.below(end / step + 1)) * step;
                const int from = (random.chance(50) ? edge : end - edge) - random.below(12);
                // Made unique where it stands, so that a missed hit shows.
                const QString mark = QString("Mark%1x%2").arg(r).arg(random.below(100));
                if (from > 0 && from + mark.size() < end) {
                    text.replace(from, mark.size(), mark);
                    rule.anchor = (random.chance(50) ? mark : mark.toUpper()).toStdString();
                }
            }
            rule.line = random.chance(30) ? random.below(9000) - 4500 : rule.line;
            rule.averageRows = random.chance(50) ? 2000U : rule.averageRows;
            rules.append(rule);
        }
        FGenIntColumns columns = random.columns();
        columns.regExp = random.chance(50) ? "," : "";
        const QString path = mFile.write(wide ? random.encoded(text) : text.toUtf8());
        text = literal::fileText(path);
        QString why;
        const auto held = FGenIntText::fromFile(path, &why);
        QVERIFY2(held, qPrintable(why));
        const auto found = FGenIntReaderCore(*held).read(rules, columns);
        QString fault = difference(found, literal::read(text, rules, columns));
        fault += fault.isEmpty() ? misplaced(found, text) : QString();
        QVERIFY2(fault.isEmpty(),
                 qPrintable(QString("case seed %1: ").arg(seed + static_cast<quint32>(i)) + fault +
                            describe("(long)", rules, columns)));
    }
}

/// A few hits around the borders of what is searched at a time, from the front and from the back,
/// and where both meet.
void TestReaderCore::findsAnchorsAtBorders()
{
    const quint32 seed = testSeed();
    constexpr int block = static_cast<int>(FGenIntText::kBlock);
    FGenIntRule first;
    first.name = "first";
    first.anchor = "Anchor";
    first.first = true;
    FGenIntRule last = first;
    last.name = "last";
    last.first = false;
    FGenIntRule missing = first;
    missing.anchor = "missing";
    QByteArray filler((QByteArray(60, '.') + "\n").repeated(10000));
    for (quint32 i = 0; i < 800; ++i) {
        FCases random(seed + i);
        const int size = 2 * block * (1 + random.below(2)) + random.below(5000) - 2500;
        QByteArray text = filler.left(size) + '.';
        std::map<int, int> hits;
        for (int n = 1 + random.below(5); n > 0; --n) {
            const int step = random.chance(30) ? 4096 : random.chance(50) ? block : 2 * block;
            const int border = (1 + random.below(size / step + 1)) * step;
            const int at = (random.chance(50) ? border : text.size() - border) - random.below(14) +
                           (random.chance(50) ? random.below(3000) : 0);
            const auto near = hits.lower_bound(at - 12);
            if (at < 0 || at + 12 > size || (near != hits.end() && near->first < at + 12))
                continue;
            const int mark = 10 + static_cast<int>(hits.size());
            hits[at] = mark;
            text.replace(at, 11,
                         (random.chance(50) ? "anchor " : "ANCHOR ") + QByteArray::number(mark) +
                             ".5");
        }
        if (hits.empty())
            continue;
        QVector<FGenIntRule> rules;
        if (random.chance(70))
            rules << first;
        if (rules.isEmpty() || random.chance(70))
            rules << last;
        if (random.chance(50))
            rules << missing;
        const auto held = FGenIntText::fromFile(mFile.write(text), nullptr);
        for (const FGenIntReading &reading :
             FGenIntReaderCore(*held).read(rules, FGenIntColumns())) {
            const std::string &name = rules[reading.rule].name;
            const auto hit = name == "first" ? *hits.begin() : *hits.rbegin();
            const bool there = rules[reading.rule].anchor != missing.anchor;
            QVERIFY2(!there || reading.value == hit.second + 0.5,
                     qPrintable(QString("seed %1: the %2 hit at %3 is missed")
                                    .arg(seed + i)
                                    .arg(QString::fromStdString(name))
                                    .arg(hit.first)));
        }
    }
}

/// Broken and cut sequences, also where the decoder goes on with a further piece.
void TestReaderCore::decodesAsStreamsDo()
{
    const quint32 seed = testSeed();
    int byLine = 0;
    const std::vector<QByteArray> parts = {"a",
                                           "\n",
                                           "\xC3\xA4",
                                           "\xC3",
                                           "\xE2\x82\xAC",
                                           "\xE2\x82",
                                           "\x82",
                                           "\xF0\x9F",
                                           "\xF0\x90\x90\x80",
                                           "\xED\xA0\x80",
                                           "\xFF",
                                           "\xC0\x80",
                                           "\xEF\xBB\xBF",
                                           "\xF4\x90",
                                           QByteArray(1, '\0')};
    for (quint32 i = 0; i < 200; ++i) {
        FCases random(seed + i);
        const int size = 16384 * (1 + random.below(2)) + random.below(9) - 4;
        QByteArray content(size - random.below(50), 'x');
        while (content.size() < size)
            content += random.pick(parts);
        content += random.chance(50) ? QByteArray() : QByteArray(random.below(30), 'y');
        const QString path = mFile.write(content);
        const auto held = FGenIntText::fromFile(path, nullptr);
        held->examine(0, held->size());
        if (!held->isWide() && held->isPlain() && held->bytes()[held->size() - 1] < 0x80) {
            QString lines;
            for (qint64 from = 0, end; from < held->size(); from = end) {
                end = held->lineFeedFrom(from, 1, held->size()) + 1;
                end = end > 0 ? end : held->size();
                lines += held->decode(from, end);
            }
            QVERIFY2(lines == literal::fileText(path), "case seed " + QByteArray::number(seed + i));
            ++byLine;
        }
        if (!held->isWide())
            held->widen();
        QVERIFY2(held->mid(0, held->size()) == literal::fileText(path),
                 "case seed " + QByteArray::number(seed + i));
    }
    QVERIFY2(byLine > 20, qPrintable(QString::number(byLine)));
}

/// Anchors that nearly match everywhere must neither be missed nor cost time without bounds.
void TestReaderCore::findsAnchorsInTangledText()
{
    const QByteArray text = QByteArray(400000, 'a') + "b 1.5\n" + QByteArray(400000, 'A') + "\n";
    QVector<FGenIntRule> rules;
    for (int i = 1; i <= 100; ++i) {
        FGenIntRule rule;
        rule.name = std::to_string(i);
        rule.anchor = std::string(static_cast<size_t>(i), 'A') + (i % 2 ? "B" : "c");
        rule.first = i % 4 < 2;
        rules.append(rule);
    }
    QElapsedTimer clock;
    clock.start();
    const auto held = FGenIntText::fromFile(mFile.write(text), nullptr);
    const auto found = FGenIntReaderCore(*held).read(rules, FGenIntColumns());
    for (const FGenIntReading &reading : found) {
        const bool there = reading.rule % 2 == 0;
        QCOMPARE(reading.value, 1.5);
        QCOMPARE(reading.notes.contains("anchor not found"), !there);
    }
    QVERIFY2(clock.elapsed() < 5000, qPrintable(QString::number(clock.elapsed())));
}

void TestReaderCore::answersFarCountsAtOnce()
{
    const QByteArray content = QByteArray("1.5 2.5 x\n").repeated(100000);
    const auto text = FGenIntText::fromFile(mFile.write(content), nullptr);
    QVector<FGenIntRule> rules;
    for (int i = 0; i < 100; ++i) {
        FGenIntRule rule;
        rule.name = std::to_string(i);
        rule.line = i % 3   ? 0
                    : i % 2 ? std::numeric_limits<int>::max() - i
                            : std::numeric_limits<int>::min() + i;
        rule.column = i % 3 == 1 ? std::numeric_limits<int>::max() : 0;
        rule.average = i % 3 == 2 && i < 20;
        rule.averageRows = 2147483647U;
        rules.append(rule);
    }
    QElapsedTimer clock;
    clock.start();
    for (const char *expression : {"", ",", "x*"}) {
        FGenIntColumns columns;
        columns.numbers = *expression == 0;
        columns.regExp = expression;
        const auto found = FGenIntReaderCore(*text).read(rules, columns);
        QCOMPARE(found.size(), rules.size());
        for (const FGenIntReading &reading : found)
            if (reading.rule % 3 == 2 && rules[reading.rule].average && columns.numbers)
                QCOMPARE(reading.value, 1.5);
    }
    QVERIFY2(clock.elapsed() < 20000, qPrintable(QString::number(clock.elapsed())));
}

void TestReaderCore::givesUpSlowExpressions()
{
    FGenIntColumns columns;
    columns.numbers = false;
    columns.regExp = "(a*)*(a|aa)*b";
    FGenIntRule quick;
    quick.name = "quick";
    quick.column = 1;
    FGenIntRule slow = quick;
    slow.name = "slow";
    slow.line = 1;
    FGenIntRule late = quick;
    late.name = "late";
    late.line = 2;
    const auto text = FGenIntText::fromString("1b2b3\n" + QString(200000, 'a') + "\n4b5b6\n");
    FGenIntReaderCore core(*text);
    core.setTimeLimit(300);
    QElapsedTimer clock;
    clock.start();
    const auto found = core.read({late, slow, quick}, columns);
    QVERIFY2(clock.elapsed() < 5000, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(found.size(), 3);
    QCOMPARE(found[0].value, 2.0);
    QVERIFY(found[0].notes.isEmpty());
    for (int i : {1, 2}) {
        QVERIFY(qIsNaN(found[i].value));
        QCOMPARE(found[i].notes, QStringList("read took too long"));
        QCOMPARE(found[i].rule, 2 - i == 1 ? 1 : 0);
    }
    // A long line that an expression copes with is read like any other.
    const QString list = QString("7;;").repeated(3000) + "8.5;;\n";
    const auto longLine = FGenIntText::fromString(list);
    quick.column = 3000;
    columns.regExp = ";{2}";
    const auto read = FGenIntReaderCore(*longLine).read({quick}, columns);
    QCOMPARE(read[0].value, 8.5);
    QCOMPARE(read[0].columnFirst, 9001);
    QVERIFY(read[0].notes.isEmpty());
}

void TestReaderCore::buildingBlocksAgreeWithLiteralOnes()
{
    const quint32 seed = testSeed();
    for (quint32 i = 0; i < 2000; ++i) {
        FCases random(seed + i);
        const QString text = random.text(true);
        QVector<FGenIntRule> rules;
        for (int r = 0; r < 5; ++r) {
            rules.append(random.rule(text, true));
            rules.last().name += std::to_string(r);
        }
        const FGenIntRule &rule = rules.first();
        const QByteArray place = "case seed " + QByteArray::number(seed + i);
        QVERIFY2(FGenIntReaderCore::getAnchorPos(rule, text) == literal::anchorPos(rule, text),
                 place);
        const FGenIntColumns columns = random.columns();
        const QString line = text.section('\n', 0, 0);
        const QString anchor = QString::fromStdString(rule.anchor);
        QRegExp ours(FGenIntSeparator::pattern(columns));
        QRegExp theirs(ours);
        int position[2];
        int length[2];
        FGenIntReaderCore::parseLine(position[0], length[0], ours, rule.line % 2, anchor, line,
                                     rule.column, columns.numbers);
        literal::parseLine(position[1], length[1], theirs, rule.line % 2, anchor, line, rule.column,
                           columns.numbers);
        QVERIFY2(position[0] == position[1] && length[0] == length[1], place);
        const std::vector<int> order = literal::sorted(rules, text);
        QVector<FGenIntRule> sorted = rules;
        FGenIntReaderCore::sortRules(sorted, text);
        for (int r = 0; r < rules.size(); ++r)
            QVERIFY2(sorted[r].name == rules[order[static_cast<size_t>(r)]].name, place);
    }
}

QTEST_GUILESS_MAIN(TestReaderCore)
#include "tst_readercore.moc"

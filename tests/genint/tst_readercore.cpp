// SPDX-License-Identifier: Apache-2.0
#include "fgenintreadercore.h"
#include "literalreader.h"

#include <QtTest>
#include <cstring>
#include <limits>
#include <map>
#include <random>
#include <sys/stat.h>

namespace {
/// Source of texts, rules and separators that lie close to the corners of the rules.
class FCases
{
public:
    explicit FCases(quint32 seed)
        : mRandom(seed)
    {
    }

    int below(int n) { return static_cast<int>(mRandom() % static_cast<quint32>(n)); }
    bool chance(int percent) { return below(100) < percent; }
    template <class T>
    T pick(const std::vector<T> &from)
    {
        return from[static_cast<size_t>(below(static_cast<int>(from.size())))];
    }

    QString text(bool wide)
    {
        static const std::vector<QString> plain = {
            "Iter", "iter", "ITERATION ", "residual", "=",       " = ",   ",",        ";",
            ":",    " ",    "  ",         "\t",       "\f",      "\v",    "1.5",      "-2e3",
            "3",    "007",  ".5",         "5.",       "1.5D+03", "1.2.3", "1,5",      "+4",
            "-+3",  "1e",   "1e400",      "1e-400",   "nan",     "NaN",   "inf",      "****",
            "0x1F", "\r",   "abab",       "aba",      "x",       "12",    "4.9e-324", "--1",
            "0",    "-0",   "1e5e6",      "..7",      "e5",      "(1.5)", "12***"};
        static const std::vector<QString> odd = {QString::fromUtf8("Größe"),
                                                 QString::fromUtf8("GRÖSSE"),
                                                 QString(QChar(0xDF)),
                                                 QString(QChar(0x1E9E)),
                                                 QString(QChar(0x130)),
                                                 QString(QChar(0x131)),
                                                 QString::fromUtf8("ΣΊΣΥΦΟΣ"),
                                                 QString::fromUtf8("σίσυφος"),
                                                 QString(QChar(0x212A)),
                                                 QString::fromUtf8("\U00010400"),
                                                 QString::fromUtf8("\U00010428"),
                                                 QString(QChar(0xA0)),
                                                 QString(QChar(0x2003)),
                                                 QString(QChar(0x85)),
                                                 QString(QChar(0x2028)),
                                                 QString(QChar(0x663)),
                                                 QString(QChar(0x2212)),
                                                 QString(QChar(0)),
                                                 QString(QChar(0xFF11)),
                                                 QString(QChar(0xFEFF)),
                                                 QString(QChar(0xFFFD)),
                                                 QString(QChar(0x17F))};
        static const std::vector<QString> ends = {"\n",   "\n", "\n",  "\n",    "\r\n",
                                                  "\n\n", "\r", " \n", "\r\r\n"};
        if (chance(2)) {
            return chance(50) ? QString() : QString(" \n\r\n\t");
        }
        QString result = chance(10) ? QString("\n") : QString();
        const int lines = below(chance(10) ? 40 : 9);
        const QString end = pick(ends);
        for (int i = 0; i < lines; ++i) {
            const int words = below(9);
            for (int w = 0; w < words; ++w) {
                result += wide && chance(25) ? pick(odd) : pick(plain);
                if (chance(50)) {
                    result += chance(80) ? " " : "\t";
                }
            }
            result += chance(85) ? end : pick(ends);
        }
        if (chance(30)) {
            result += chance(50) ? QString(" \t\n \f\n") : QString("\n\n\r\n");
        } else if (chance(40)) {
            result += chance(50) ? "last 1.25" : "9";
        }
        return result;
    }

    std::string anchor(const QString &text, bool wide)
    {
        QString anchor;
        if (chance(25)) {
            return std::string();
        }
        if (chance(15)) {
            anchor = pick(std::vector<QString>{"aba", "k", "K", "Iter", "s", " ", "\n", "missing",
                                               QString::fromUtf8("größe"), QString(QChar(0x212A)),
                                               "residual =", "\r\n"});
        } else if (!text.isEmpty()) {
            int from = below(text.size());
            if (chance(10)) {
                from = 0;
            } else if (chance(20)) {
                from = std::max(0, text.size() - 1 - below(6));
            }
            anchor = text.mid(from, 1 + below(chance(20) ? 40 : 6));
        }
        if (chance(40)) {
            for (QChar &c : anchor) {
                c = chance(50) ? c.toUpper() : c.toLower();
            }
        }
        if (wide && chance(5)) {
            anchor += QString(QChar(0xDF));
        }
        return anchor.toStdString();
    }

    FGenIntRule rule(const QString &text, bool wide)
    {
        constexpr int least = std::numeric_limits<int>::min();
        constexpr int most = std::numeric_limits<int>::max();
        FGenIntRule rule;
        rule.name = std::string(1, static_cast<char>('a' + below(4)));
        rule.line = chance(40) ? 0 : below(13) - 6;
        rule.column = below(chance(80) ? 4 : 12) - (chance(5) ? 3 : 0);
        if (chance(5)) {
            rule.line = pick(std::vector<int>{least, least + 1, -100000, 100000, most});
        }
        if (chance(5)) {
            rule.column = pick(std::vector<int>{least, 1000, most});
        }
        rule.anchor = anchor(text, wide);
        rule.first = chance(50);
        rule.average = chance(25);
        rule.averageRows = static_cast<unsigned>(below(12));
        if (chance(8)) {
            rule.averageRows = pick(std::vector<unsigned>{0, 1000, 2147483647U, 2147483648U, ~0U});
        }
        return rule;
    }

    FGenIntColumns columns()
    {
        static const std::vector<QString> expressions = {",",
                                                         ";",
                                                         "=",
                                                         "\\t",
                                                         "[,;]",
                                                         "[,; ]+",
                                                         "\\s",
                                                         "\\s*,\\s*",
                                                         "(a|b)+",
                                                         "a|ab|aba",
                                                         "(,|;|\\s)+",
                                                         "[^0-9.]+",
                                                         "x*",
                                                         "(",
                                                         "[",
                                                         "\\d",
                                                         "(?=1)",
                                                         "(?:e|E)",
                                                         "^1",
                                                         "5$",
                                                         "a.b",
                                                         "\\bIter",
                                                         " |,",
                                                         "=|\\s+",
                                                         "\\.",
                                                         "\\||;",
                                                         "(ab)\\1",
                                                         "i",
                                                         QString(QChar(0xDF)),
                                                         "[a-e]",
                                                         "[\\s,]+|=",
                                                         ";+|;",
                                                         ",|,+",
                                                         "\\s+|\\t",
                                                         " ",
                                                         "a?",
                                                         "[]",
                                                         "\\w",
                                                         "{2}",
                                                         ",{2}",
                                                         "]"};
        FGenIntColumns columns;
        columns.numbers = chance(50);
        columns.spacesAndTabs = chance(50);
        columns.regExp = chance(25) ? QString() : pick(expressions);
        return columns;
    }

    QByteArray encoded(const QString &text)
    {
        switch (below(8)) {
        case 0:
            return QByteArray("\xEF\xBB\xBF") + text.toUtf8();
        case 1:
            return QTextCodec::codecForName("UTF-16LE")->fromUnicode(text); // with its mark
        case 2:
            return QTextCodec::codecForName("UTF-16BE")->fromUnicode(text);
        case 3:
            return QTextCodec::codecForName("UTF-32LE")->fromUnicode(text);
        case 4:
            return text.toLatin1();
        case 5: {
            QByteArray broken = text.toUtf8();
            for (char &c : broken) {
                c = chance(3) ? static_cast<char>(below(256)) : c;
            }
            return broken.left(below(broken.size() + 1));
        }
        default:
            return text.toUtf8();
        }
    }

private:
    std::mt19937 mRandom;
};

/// Null if both agree to the last bit, otherwise what they differ in.
QString difference(const QVector<FGenIntReading> &found, const std::vector<literal::Row> &expected)
{
    if (static_cast<size_t>(found.size()) != expected.size()) {
        return QString("%1 rows instead of %2").arg(found.size()).arg(expected.size());
    }
    for (int i = 0; i < found.size(); ++i) {
        const literal::Row &row = expected[static_cast<size_t>(i)];
        const bool bothNaN = qIsNaN(found[i].value) && qIsNaN(row.value);
        if (found[i].rule != row.rule || found[i].cell != row.cell ||
            (!bothNaN && memcmp(&found[i].value, &row.value, sizeof row.value) != 0)) {
            return QString("row %1: rule %2 value %3 cell \"%4\" instead of rule %5 value %6 "
                           "cell \"%7\"")
                .arg(i)
                .arg(found[i].rule)
                .arg(found[i].value, 0, 'g', 17)
                .arg(found[i].cell)
                .arg(row.rule)
                .arg(row.value, 0, 'g', 17)
                .arg(row.cell);
        }
    }
    return QString();
}

/// The place of a reading holds its cell.
QString misplaced(const QVector<FGenIntReading> &found, const QString &text)
{
    for (const FGenIntReading &reading : found) {
        if (reading.columnFirst == 0) {
            continue;
        }
        const QString line = text.section('\n', static_cast<int>(reading.line) - 1,
                                          static_cast<int>(reading.line) - 1);
        const QString cell =
            line.mid(reading.columnFirst - 1, reading.columnLast - reading.columnFirst + 1);
        if (cell != reading.cell) {
            return QString("\"%1\" stands where \"%2\" was read").arg(cell, reading.cell);
        }
    }
    return QString();
}

QString describe(const QString &text, const QVector<FGenIntRule> &rules,
                 const FGenIntColumns &columns)
{
    QString all;
    QDebug out(&all);
    out << "\ntext" << text << "numbers" << columns.numbers << "blanks" << columns.spacesAndTabs
        << "expression" << columns.regExp;
    for (const FGenIntRule &rule : rules) {
        out << "\n"
            << rule.name.c_str() << "line" << rule.line << "column" << rule.column << "anchor"
            << QString::fromStdString(rule.anchor) << "first" << rule.first << "average"
            << rule.average << rule.averageRows;
    }
    return all;
}
} // namespace

class TestReaderCore : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void agreesWithLiteralReader();
    void agreesOnLongTexts();
    void findsAnchorsAtBorders();
    void findsAnchorsInTangledText();
    void decodesAsStreamsDo();
    void convertsSpellings_data();
    void convertsSpellings();
    void decodesFiles_data();
    void decodesFiles();
    void notesDoubts_data();
    void notesDoubts();
    void refusesWhatIsNoFile_data();
    void refusesWhatIsNoFile();
    void answersFarCountsAtOnce();
    void givesUpSlowExpressions();
    void buildingBlocksAgreeWithLiteralOnes();

private:
    QTemporaryDir mFolder;
    QString write(const QByteArray &content);
};

QString TestReaderCore::write(const QByteArray &content)
{
    const QString path = mFolder.filePath("text");
    QFile::remove(path); // cheaper than to overwrite it
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        qFatal("cannot write %s", qPrintable(path));
    }
    return path;
}

void TestReaderCore::agreesWithLiteralReader()
{
    const QByteArray wanted = qgetenv("TURNBUCKLE_RANDOM_SEED");
    const quint32 seed = wanted.isEmpty() ? std::random_device{}() : wanted.toUInt();
    const QByteArray count = qgetenv("TURNBUCKLE_RANDOM_CASES");
    const int cases = count.isEmpty() ? 20000 : count.toInt();
    qInfo("TURNBUCKLE_RANDOM_SEED=%u TURNBUCKLE_RANDOM_CASES=%d", seed, cases);
    for (int i = 0; i < cases; ++i) {
        FCases random(seed + static_cast<quint32>(i));
        const bool wide = random.chance(40);
        QString text = random.text(wide);
        const bool file = random.chance(40);
        QString path;
        if (file) {
            path = write(random.encoded(text));
            text = literal::fileText(path);
        }
        QVector<FGenIntRule> rules;
        for (int r = random.below(6); r >= 0; --r) {
            rules.append(random.rule(text, wide));
        }
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
    }
}

/// Texts of several blocks, which are searched from both ends and passed over block by block;
/// anchors that lie across the borders of blocks and of the pieces that a block is searched in.
void TestReaderCore::agreesOnLongTexts()
{
    const QByteArray wanted = qgetenv("TURNBUCKLE_RANDOM_SEED");
    const quint32 seed = wanted.isEmpty() ? std::random_device{}() : wanted.toUInt();
    qInfo("TURNBUCKLE_RANDOM_SEED=%u", seed);
    const QString line = "  12  1.5E-03 residual 7.25, time = 3.5 s\n";
    for (int i = 0; i < 60; ++i) {
        FCases random(seed + static_cast<quint32>(i));
        const bool wide = i % 6 == 5;
        const int size = random.chance(20) ? 300000 : 3000 + random.below(160000);
        QString text;
        while (text.size() < size) {
            const int far = random.chance(50) ? 1300 + random.below(600) : random.below(300);
            text += line.repeated(random.chance(20) ? 0 : far) + random.text(wide);
            if (random.chance(20)) {
                text += QString(random.below(70000), random.chance(50) ? ' ' : 'b');
            }
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
        const QString path = write(wide ? random.encoded(text) : text.toUtf8());
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
    const quint32 seed = std::random_device{}();
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
            if (at < 0 || at + 12 > size || (near != hits.end() && near->first < at + 12)) {
                continue;
            }
            const int mark = 10 + static_cast<int>(hits.size());
            hits[at] = mark;
            text.replace(at, 11,
                         (random.chance(50) ? "anchor " : "ANCHOR ") + QByteArray::number(mark) +
                             ".5");
        }
        if (hits.empty()) {
            continue;
        }
        QVector<FGenIntRule> rules;
        if (random.chance(70)) {
            rules << first;
        }
        if (rules.isEmpty() || random.chance(70)) {
            rules << last;
        }
        if (random.chance(50)) {
            rules << missing;
        }
        const auto held = FGenIntText::fromFile(write(text), nullptr);
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
    const quint32 seed = std::random_device{}();
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
        while (content.size() < size) {
            content += random.pick(parts);
        }
        content += random.chance(50) ? QByteArray() : QByteArray(random.below(30), 'y');
        const QString path = write(content);
        const auto held = FGenIntText::fromFile(path, nullptr);
        if (!held->isWide()) {
            held->widen();
        }
        QVERIFY2(held->mid(0, held->size()) == literal::fileText(path),
                 "case seed " + QByteArray::number(seed + i));
    }
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
    const auto held = FGenIntText::fromFile(write(text), nullptr);
    const auto found = FGenIntReaderCore(*held).read(rules, FGenIntColumns());
    for (const FGenIntReading &reading : found) {
        const bool there = reading.rule % 2 == 0;
        QCOMPARE(reading.value, 1.5);
        QCOMPARE(reading.notes.contains("anchor not found"), !there);
    }
    QVERIFY2(clock.elapsed() < 5000, qPrintable(QString::number(clock.elapsed())));
}

void TestReaderCore::convertsSpellings_data()
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

void TestReaderCore::convertsSpellings()
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
        const auto text = FGenIntText::fromFile(write("head\n" + line.toUtf8() + "\n"), nullptr);
        rule.line = 1;
        const auto found = FGenIntReaderCore(*text).read({rule}, FGenIntColumns());
        QCOMPARE(found.size(), 1);
        const double expected = value.toDouble();
        QVERIFY2(qIsNaN(expected) ? qIsNaN(found[0].value)
                                  : memcmp(&found[0].value, &expected, sizeof expected) == 0 ||
                                        (average && found[0].value == expected),
                 qPrintable(QString::number(found[0].value, 'g', 17)));
        if (!average) {
            QCOMPARE(found[0].notes.join("; "), note);
        } else if (!qIsNaN(expected)) {
            QCOMPARE(found[0].notes.join("; "), note);
        }
    }
}

void TestReaderCore::decodesFiles_data()
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

void TestReaderCore::decodesFiles()
{
    QFETCH(QByteArray, content);
    QFETCH(double, value);
    QFETCH(QString, note);
    FGenIntRule rule;
    rule.anchor = "kraft";
    const QString path = write(content);
    const auto text = FGenIntText::fromFile(path, nullptr);
    const auto found = FGenIntReaderCore(*text).read({rule}, FGenIntColumns());
    QCOMPARE(found.size(), 1);
    QVERIFY2(found[0].value == value || (qIsNaN(value) && qIsNaN(found[0].value)),
             qPrintable(QString::number(found[0].value)));
    QCOMPARE(found[0].notes.join("; "), note);
    QCOMPARE(difference(found, literal::read(literal::fileText(path), {rule}, FGenIntColumns())),
             QString());
}

void TestReaderCore::notesDoubts_data()
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

void TestReaderCore::notesDoubts()
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

void TestReaderCore::refusesWhatIsNoFile_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("reason");
    const QString fifo = mFolder.filePath("fifo");
    QCOMPARE(mkfifo(fifo.toLocal8Bit().constData(), 0600), 0);
    QTest::newRow("missing") << mFolder.filePath("none") << "No such file or directory";
    QTest::newRow("folder") << mFolder.path() << "is a directory";
    QTest::newRow("FIFO") << fifo << "is a FIFO";
    QTest::newRow("device") << "/dev/zero"
                            << "is a device";
}

void TestReaderCore::refusesWhatIsNoFile()
{
    QFETCH(QString, path);
    QFETCH(QString, reason);
    QString why;
    QVERIFY(!FGenIntText::fromFile(path, &why));
    QCOMPARE(why, reason);
}

void TestReaderCore::answersFarCountsAtOnce()
{
    const QByteArray content = QByteArray("1.5 2.5 x\n").repeated(100000);
    const auto text = FGenIntText::fromFile(write(content), nullptr);
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
        for (const FGenIntReading &reading : found) {
            if (reading.rule % 3 == 2 && rules[reading.rule].average && columns.numbers) {
                QCOMPARE(reading.value, 1.5);
            }
        }
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
    const quint32 seed = std::random_device{}();
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
        QRegExp ours(FGenIntReaderCore::separatorPattern(columns));
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
        for (int r = 0; r < rules.size(); ++r) {
            QVERIFY2(sorted[r].name == rules[order[static_cast<size_t>(r)]].name, place);
        }
    }
}

QTEST_GUILESS_MAIN(TestReaderCore)
#include "tst_readercore.moc"

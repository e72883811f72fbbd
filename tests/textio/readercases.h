// SPDX-License-Identifier: Apache-2.0
#ifndef READERCASES_H
#define READERCASES_H
#include "fgenintreadercore.h"
#include "literalreader.h"

#include <QDebug>
#include <QFile>
#include <QTemporaryDir>
#include <cstring>
#include <limits>
#include <random>

/// A file to be read, written anew for each case.
struct ReaderFile
{
    QString write(const QByteArray &content)
    {
        const QString path = folder.filePath("text");
        QFile::remove(path); // cheaper than to overwrite it
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }
    QTemporaryDir folder;
};

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
        if (chance(2))
            return chance(50) ? QString() : QString(" \n\r\n\t");
        QString result = chance(10) ? QString("\n") : QString();
        const int lines = below(chance(10) ? 40 : 9);
        const QString end = pick(ends);
        for (int i = 0; i < lines; ++i) {
            const int words = below(9);
            for (int w = 0; w < words; ++w) {
                result += wide && chance(25) ? pick(odd) : pick(plain);
                if (chance(50))
                    result += chance(80) ? " " : "\t";
            }
            result += chance(85) ? end : pick(ends);
        }
        if (chance(30))
            result += chance(50) ? QString(" \t\n \f\n") : QString("\n\n\r\n");
        else if (chance(40))
            result += chance(50) ? "last 1.25" : "9";
        return result;
    }

    std::string anchor(const QString &text, bool wide)
    {
        QString anchor;
        if (chance(25))
            return std::string();
        if (chance(15)) {
            anchor = pick(std::vector<QString>{"aba", "k", "K", "Iter", "s", " ", "\n", "missing",
                                               QString::fromUtf8("größe"), QString(QChar(0x212A)),
                                               "residual =", "\r\n"});
        } else if (!text.isEmpty()) {
            int from = below(text.size());
            if (chance(10))
                from = 0;
            else if (chance(20))
                from = std::max(0, text.size() - 1 - below(6));
            anchor = text.mid(from, 1 + below(chance(20) ? 40 : 6));
        }
        if (chance(40))
            for (QChar &c : anchor)
                c = chance(50) ? c.toUpper() : c.toLower();
        if (wide && chance(5))
            anchor += QString(QChar(0xDF));
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
        if (chance(5))
            rule.line = pick(std::vector<int>{least, least + 1, -100000, 100000, most});
        if (chance(5))
            rule.column = pick(std::vector<int>{least, 1000, most});
        rule.anchor = anchor(text, wide);
        rule.first = chance(50);
        rule.average = chance(25);
        rule.averageRows = static_cast<unsigned>(below(12));
        if (chance(8))
            rule.averageRows = pick(std::vector<unsigned>{0, 1000, 2147483647U, 2147483648U, ~0U});
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
            for (char &c : broken)
                c = chance(3) ? static_cast<char>(below(256)) : c;
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
inline QString difference(const QVector<FGenIntReading> &found,
                          const std::vector<literal::Row> &expected)
{
    if (static_cast<size_t>(found.size()) != expected.size())
        return QString("%1 rows instead of %2").arg(found.size()).arg(expected.size());
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
inline QString misplaced(const QVector<FGenIntReading> &found, const QString &text)
{
    for (const FGenIntReading &reading : found) {
        if (reading.columnFirst == 0)
            continue;
        const QString line = text.section('\n', static_cast<int>(reading.line) - 1,
                                          static_cast<int>(reading.line) - 1);
        const QString cell =
            line.mid(reading.columnFirst - 1, reading.columnLast - reading.columnFirst + 1);
        if (cell != reading.cell)
            return QString("\"%1\" stands where \"%2\" was read").arg(cell, reading.cell);
    }
    return QString();
}

inline QString describe(const QString &text, const QVector<FGenIntRule> &rules,
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
#endif

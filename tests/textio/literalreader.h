// SPDX-License-Identifier: Apache-2.0
#ifndef LITERALREADER_H
#define LITERALREADER_H

#include "fgenintreadercore.h"

#include <QFile>
#include <QRegExp>
#include <QTextCodec>
#include <QTextStream>
#include <limits>
#include <map>
#include <vector>

/// Reads rules in the most direct way: every step copies the text it works on. Slow, and the
/// measure for the reader that is not.
namespace literal {
struct Row
{
    int rule = -1;
    double value = 0.0;
    QString cell;
};

inline QString fileText(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    return stream.readAll();
}

inline int anchorPos(const FGenIntRule &rule, const QString &text)
{
    const QString anchor = QString::fromStdString(rule.anchor);
    if (anchor.isEmpty())
        return -1;
    if (rule.first)
        return text.indexOf(anchor, 0, Qt::CaseInsensitive);
    return text.lastIndexOf(anchor, -1, Qt::CaseInsensitive);
}

inline void parseLine(int &position, int &length, QRegExp &separator, int line,
                      const QString &anchor, const QString &text, int column, bool numberMode)
{
    position = 0;
    length = 0;
    if (numberMode)
        separator.setPattern("[-+]?(\\.\\d+|\\d+(\\.\\d+)?)([Ee][-+]?\\d+)?");
    if (line == 0 && !anchor.isEmpty())
        position = text.indexOf(anchor, 0, Qt::CaseInsensitive) + anchor.size();
    int cursor = position;
    for (int i = 0; i < column; ++i) {
        position = text.indexOf(separator, cursor);
        if (position == -1) {
            length = 0;
            return;
        }
        const int before = cursor;
        cursor = position = position + separator.matchedLength();
        if (cursor == before && i > 1000)
            break; // nothing can change any more
    }
    if (numberMode) {
        const int p = text.indexOf(separator, cursor);
        if (p != -1) {
            position = p;
            length = separator.matchedLength();
        } else {
            length = 0;
        }
        return;
    }
    const int q = text.indexOf(separator, cursor);
    length = q == -1 ? text.size() - position : q - position;
}

inline bool valueBefore(const FGenIntRule &a, const FGenIntRule &b)
{
    if (a.line != b.line)
        return a.line < b.line;
    if (a.column != b.column)
        return a.column < b.column;
    return a.name < b.name;
}

inline std::vector<int> sorted(const QVector<FGenIntRule> &rules, const QString &text)
{
    std::vector<int> order;
    std::map<int, std::vector<int>> groups;
    for (int i = 0; i < rules.size(); ++i)
        if (text.isEmpty())
            order.push_back(i);
        else
            groups[std::max(0, anchorPos(rules[i], text))].push_back(i);
    for (auto &group : groups) {
        QT_WARNING_PUSH
        QT_WARNING_DISABLE_DEPRECATED
        qSort(group.second.begin(), group.second.end(),
              [&](int a, int b) { return valueBefore(rules[a], rules[b]); });
        QT_WARNING_POP
        order.insert(order.end(), group.second.begin(), group.second.end());
    }
    return order;
}

inline double single(const FGenIntRule &rule, const QString &text, QString work, QRegExp &separator,
                     bool numberMode, QString *cell)
{
    int line = rule.line;
    const int pos = anchorPos(rule, work);
    if (pos >= 0 && line >= 0)
        work = text.mid(pos + static_cast<int>(rule.anchor.size()));
    else if (pos >= 0)
        work = text.mid(0, text.lastIndexOf(QRegExp("\\n"), pos));
    QTextStream stream(&work, QIODevice::ReadWrite);
    QString current = stream.readLine();
    if (line < 0) {
        std::map<int, QString> lines;
        int count = 0;
        while (!stream.atEnd())
            lines[count++] = stream.readLine();
        current = lines[std::max(0, count + line)];
    } else {
        for (int i = 0; i < line; ++i) {
            current = stream.readLine();
            if (current.isNull() && stream.atEnd())
                break; // and so it stays
        }
    }
    current.replace(QRegExp("^\\s*"), "");
    int position = 0;
    int length = 0;
    parseLine(position, length, separator, line, QString(), current, rule.column, numberMode);
    if (position >= 0)
        *cell = current.mid(position, length);
    bool ok = false;
    const double number = cell->toDouble(&ok);
    return ok ? number : std::numeric_limits<double>::quiet_NaN();
}

inline double average(const FGenIntRule &rule, QString work, QRegExp &separator, bool numberMode,
                      QString *cell)
{
    const int n = static_cast<int>(rule.averageRows);
    int start = work.size();
    if (n > 0) {
        int steps = n;
        if (n > 5000 && work.startsWith('\n'))
            steps = (n - 1) % work.count('\n') + 1; // the search below goes round in a circle
        int from = work.size() - 1;
        for (int i = 0; i < steps; ++i) {
            const int p = work.lastIndexOf(QRegExp("\\n"), from);
            if (p == -1) {
                start = 0;
                break;
            }
            start = p;
            from = p - 1;
        }
    }
    work = work.mid(start);
    QTextStream stream(&work, QIODevice::ReadWrite);
    double sum = 0.0;
    int count = 0;
    while (!stream.atEnd()) {
        QString line = stream.readLine();
        if (line.isEmpty())
            continue;
        line.replace(QRegExp("^\\s*"), "");
        int position = 0;
        int length = 0;
        parseLine(position, length, separator, 0, QString(), line, rule.column, numberMode);
        if (position >= 0)
            *cell = line.mid(position, length);
        bool ok = false;
        const double number = cell->toDouble(&ok);
        if (ok) {
            sum += number;
            if (++count == n)
                break;
        }
    }
    return sum / count;
}

/// The text without the white space at its end. The expression takes quadratic time over blanks, so
/// long texts are cut character by character.
inline QString trimmed(const QString &text)
{
    QString work = text;
    if (work.size() < 2000) {
        work.replace(QRegExp("\\s*$"), "");
        return work;
    }
    while (!work.isEmpty() && work.at(work.size() - 1).isSpace())
        work.chop(1);
    return work;
}

inline std::vector<Row> read(const QString &text, const QVector<FGenIntRule> &rules,
                             const FGenIntColumns &columns)
{
    std::vector<Row> rows;
    if (text.isEmpty())
        return rows;
    QRegExp separator;
    if (!columns.numbers) {
        QString pattern;
        if (columns.spacesAndTabs)
            pattern += "\\s+";
        if (!columns.regExp.isEmpty()) {
            if (!pattern.isEmpty())
                pattern += "|";
            pattern += columns.regExp;
        }
        separator.setPattern(pattern);
    }
    const QString work = trimmed(text);
    for (int index : sorted(rules, text)) {
        const FGenIntRule &rule = rules[index];
        Row row;
        row.rule = index;
        row.value = rule.average ? average(rule, work, separator, columns.numbers, &row.cell)
                                 : single(rule, text, work, separator, columns.numbers, &row.cell);
        rows.push_back(row);
    }
    return rows;
}
} // namespace literal
#endif

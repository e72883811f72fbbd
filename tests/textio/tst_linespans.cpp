// SPDX-License-Identifier: Apache-2.0
// How an editor reads a line of a template, against a slow reading step by step.
#include "fgenintlinespans.h"
#include "testseed.h"

#include <QRegExp>
#include <QtTest>
#include <cmath>
#include <random>

namespace {
using Spans = FGenIntLineSpans;

/// The steps as they are told, without a thought for time.
struct Slow
{
    Spans s;
    QString text;

    void paint(int p, int n, Spans::Colour c) { s.paints.append({p, n, c}); }
    void row(int b, int e, int v, const QString &name, double number, const QString &t)
    {
        s.begins << b;
        s.ends << e;
        s.valueBegins << v;
        s.names << name;
        s.values << number;
        s.texts << t;
        s.types << 1U;
        paint(b, e - b, Spans::PossibleValue);
    }
    void marks()
    {
        const QRegExp mark("<\\/?entry>");
        bool opening = true;
        int at = mark.indexIn(text);
        while (at >= 0) {
            const QString found = mark.cap(0);
            const int length = mark.matchedLength();
            bool error = false;
            if (found.contains('/')) {
                if (opening) {
                    error = true;
                } else {
                    s.ends << at + length;
                    s.texts << text.mid(s.begins.last(), at + length - s.begins.last());
                    s.values << std::nan("");
                    s.types << 0U;
                    opening = true;
                }
            } else if (!opening) {
                error = true;
            } else {
                s.begins << at;
                opening = false;
            }
            paint(at, length, error ? Spans::TagError : Spans::Tag);
            const int next = mark.indexIn(text, at + length);
            bool behind = false;
            if (next < 0)
                behind = s.begins.size() != s.ends.size();
            else if (!opening)
                behind = !mark.cap(0).contains('/');
            if (behind) {
                paint(at + length, (next < 0 ? text.size() : next) - at - length,
                      error ? Spans::UnclosedError : Spans::Unclosed);
                opening = true;
            }
            at = next;
        }
    }
    void names(const QStringList &known)
    {
        const QRegExp strict("<entry>[\\w|\\d|\\||\\.\\/]*<\\/entry>");
        for (int at = strict.indexIn(text); at >= 0;
             at = strict.indexIn(text, at + strict.matchedLength())) {
            const QString name = text.mid(at + 7, strict.matchedLength() - 15);
            s.valueBegins << at + 7;
            s.names << name;
            paint(at + 7, name.size(),
                  known.contains(name, Qt::CaseInsensitive) ? Spans::Known : Spans::Unknown);
        }
    }
    void numbers()
    {
        const QRegExp separator("[\\s\\:\\=\\#\\,\\;\\[\\]\\(\\)\\{\\}\\\"]+");
        const QRegExp stop("[^\\-\\+\\d\\.eE]");
        const QRegExp strict("<entry>[\\w|\\d|\\||\\.\\/]*<\\/entry>");
        int span = 0;
        int end = stop.indexIn(text) < 0 ? text.size() : stop.indexIn(text);
        bool ok = false;
        double number = text.left(end).toDouble(&ok);
        if (ok) {
            row(0, end, 0, "", number, text.left(end));
            span = end;
        }
        for (;;) {
            const int gap = separator.indexIn(text, span);
            if (gap < 0)
                return;
            const int value = gap + separator.matchedLength();
            for (int tag;
                 (tag = strict.indexIn(text, span)) >= 0 && tag + strict.matchedLength() <= gap;)
                span = tag + strict.matchedLength();
            end = stop.indexIn(text, value) < 0 ? text.size() : stop.indexIn(text, value);
            number = text.mid(value, end - value).toDouble(&ok);
            if (!ok) {
                span = value;
                continue;
            }
            const QString word = text.mid(span, gap - span);
            if (word.isEmpty())
                span = value;
            row(span, end, value, word, number, text.mid(span, end - span));
            span = end;
        }
    }
    QString shown(const QString &tag, int position) const
    {
        const QString ahead = text.left(position).mid(1); // places are one less than in the line
        for (const char *key : {"name=", "title=", "id="}) {
            int at = ahead.indexOf(key);
            if (at < 0)
                continue;
            const int begin = ahead.indexOf('=', at) + 1;
            int end = ahead.indexOf('"', begin);
            if (end >= 0)
                end = ahead.indexOf('"', end + 1);
            else
                end = QRegExp("[ \\/\\>]").indexIn(ahead, begin);
            if (end < 0)
                return tag;
            return ahead.mid(begin, end - begin).remove(QRegExp("^\"+")).remove(QRegExp("\"+$"));
        }
        return tag;
    }
    void markup()
    {
        const QRegExp strict("<entry>[\\w|\\d|\\||\\.\\/]*<\\/entry>");
        int position = 0;
        for (;;) {
            const int open = text.indexOf('<', position);
            if (open < 0)
                return;
            if (strict.indexIn(text, open) == 0) {
                position += strict.matchedLength() + 1;
                continue;
            }
            const int nameEnd = QRegExp("[ \\>]").indexIn(text, open + 1);
            const int close = nameEnd < 0 ? -1 : text.indexOf('>', nameEnd);
            if (close < 0)
                return;
            const QString tag = text.mid(open + 1, nameEnd - open - 1);
            position = close + 1;
            if (tag.isEmpty() || tag.startsWith('/'))
                continue;
            const QString name = shown(tag, position);
            const int begin = text.indexOf('>') + 1;
            const int end = text.indexOf("</" + tag, position);
            if (end >= 0) {
                position = end;
                bool ok = false;
                const QString candidate = begin < end ? text.mid(begin, end - begin) : QString();
                const double number = candidate.toDouble(&ok);
                if (ok)
                    row(begin, end, begin, name, number, candidate);
            }
            ++position;
        }
    }
    static Spans read(const QString &line, const QStringList &known, bool values)
    {
        Slow slow{{}, line};
        if (line.isEmpty())
            return slow.s;
        slow.marks();
        slow.names(known);
        if (values) {
            slow.numbers();
            slow.markup();
        }
        return slow.s;
    }
};

QString told(const Spans &s)
{
    QStringList all;
    for (const auto &paint : s.paints)
        all << QStringLiteral("%1+%2=%3").arg(paint.position).arg(paint.length).arg(paint.colour);
    const auto list = [&all](const auto &values) {
        QStringList words;
        for (const auto &value : values)
            words << QVariant::fromValue(value).toString();
        all << words.join(',');
    };
    list(s.begins);
    list(s.ends);
    list(s.valueBegins);
    list(s.names);
    list(s.values);
    list(s.texts);
    list(s.types);
    return all.join('|');
}
} // namespace

class TestLineSpans : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void randomLines();
    void wellKnownLines();
};

void TestLineSpans::randomLines()
{
    static const char *const kPieces[] = {"<entry>",
                                          "</entry>",
                                          "<entry>load</entry>",
                                          "<entry>Exports|a.inp</entry>",
                                          "load",
                                          "LOAD",
                                          "x",
                                          "=",
                                          " ",
                                          ",",
                                          "\t",
                                          "3",
                                          "4.5",
                                          "-1e-3",
                                          "e",
                                          "+",
                                          "\"",
                                          "<a>",
                                          "</a>",
                                          "<b name=\"len\">",
                                          "</b>",
                                          "<c id=7>",
                                          "</c>",
                                          "<",
                                          ">",
                                          "/",
                                          "title=",
                                          "<>",
                                          "\u00e4",
                                          "\u0663",
                                          "#",
                                          "[",
                                          "<entry>a b</entry>",
                                          "nan",
                                          "1e999",
                                          "name=\"",
                                          ":",
                                          "<ENTRY>",
                                          "\xe2\x88\x92" /* a minus sign */,
                                          "<br/>"};
    const QStringList known{"load", "Exports|a.inp"};
    QSet<QString> folded;
    for (const QString &name : known)
        folded.insert(Spans::folded(name));
    std::mt19937 random(testSeed());
    int tags = 0, values = 0;
    for (int i = 0; i < 60000; ++i) {
        QString line;
        for (unsigned n = random() % 14; n > 0; --n)
            line += QString::fromUtf8(kPieces[random() % std::size(kPieces)]);
        for (const bool possible : {true, false}) {
            const Spans found = Spans::of(line, folded, possible);
            const QString expected = told(Slow::read(line, known, possible));
            QVERIFY2(told(found) == expected,
                     qPrintable(line + "\n" + told(found) + "\n" + expected));
            tags += int(found.types.count(0));
            values += int(found.types.count(1));
        }
    }
    QVERIFY(tags > 10000 && values > 10000);
}

void TestLineSpans::wellKnownLines()
{
    Spans s = Spans::of("x = 3", {}, true);
    QCOMPARE(s.begins, QVector<int>{0});
    QCOMPARE(s.ends, QVector<int>{5});
    QCOMPARE(s.valueBegins, QVector<int>{4});
    QCOMPARE(s.names, QVector<QString>{"x"});
    QCOMPARE(Spans::of("3 4", {}, true).begins, (QVector<int>{0, 2}));
    s = Spans::of(", 3", {}, true);
    QCOMPARE(s.begins, QVector<int>{2});
    QCOMPARE(s.names, QVector<QString>{""});
    QVERIFY(Spans::of("e", {}, true).begins.isEmpty());
    QCOMPARE(Spans::of("<a name=\"len\">2.5</a>", {}, true).names, QVector<QString>{"len"});
    QCOMPARE(Spans::of("<a>2.5</a>", {}, true).names, QVector<QString>{"a"});
    // An opening mark that is never closed: no index holds on such a line.
    s = Spans::of("<entry><entry>n</entry>", {}, true);
    QVERIFY(s.begins.size() != s.ends.size());
}

QTEST_GUILESS_MAIN(TestLineSpans)
#include "tst_linespans.moc"

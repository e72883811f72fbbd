// SPDX-License-Identifier: Apache-2.0
#include "fgenintwritercore.h"
#include "fsafefile.h"
#include "literalwriter.h"
#include "testseed.h"

#include <QTemporaryDir>
#include <QtTest>
#include <cstdio>
#include <random>

namespace {
/// Makes templates and entry maps that reach the corners. The seed tells all.
class Generator
{
public:
    explicit Generator(quint64 seed)
        : mRandom(seed)
    {
        const auto unit = [](ushort code) { return QString(QChar(code)); };
        mLetters = QStringList{QStringLiteral("a"),
                               QStringLiteral("B"),
                               QStringLiteral("k"),
                               QStringLiteral("S"),
                               unit(0x212a) /* Kelvin */,
                               unit(0x17f) /* long s */,
                               QStringLiteral("ß"),
                               QStringLiteral("É"),
                               QStringLiteral("é"),
                               QStringLiteral("İ"),
                               QStringLiteral("ı"),
                               QStringLiteral("𐐀"),
                               QStringLiteral("𐐨"),
                               QStringLiteral("?"),
                               QStringLiteral(" "),
                               QStringLiteral("\n"),
                               unit(0xfeff),
                               unit(0xd801),
                               unit(0xdc28),
                               unit(0),
                               unit(0x2c6),
                               QStringLiteral("<"),
                               QStringLiteral("[")};
        mText = QStringList{QStringLiteral("\n"),
                            QStringLiteral("\r\n"),
                            QStringLiteral("\r"),
                            QStringLiteral("<entry>"),
                            QStringLiteral("</entry>"),
                            QStringLiteral("<ENTRY>"),
                            QStringLiteral("</eNtRy>"),
                            QStringLiteral("<entry></entry>"),
                            QStringLiteral("<entry"),
                            QStringLiteral("</entry"),
                            QStringLiteral("entry>"),
                            QStringLiteral("<<"),
                            QStringLiteral("12.5, -3e4"),
                            QStringLiteral("größer"),
                            QStringLiteral("?"),
                            unit(0xd83d),
                            unit(0xde00),
                            unit(0xfeff)};
    }
    int below(int n) { return int(mRandom() % quint64(n)); }
    bool oneIn(int n) { return below(n) == 0; }
    QString oneOf(const QStringList &list) { return list.at(below(list.size())); }

    QString word()
    {
        QString word;
        for (int i = below(3) + 1; i > 0; --i)
            word += oneIn(3) ? oneOf(mLetters) : QString(QChar('a' + below(3)));
        return word;
    }
    QString key()
    {
        QString key;
        for (int i = below(3) + (oneIn(20) ? 0 : 1); i > 0; --i) {
            key += oneIn(12) ? QString() : word();
            if (oneIn(3))
                key += QLatin1Char('[') + QString::number(below(4)) + QLatin1Char(']');
            if (i > 1 || oneIn(15))
                key += QLatin1Char('|');
        }
        return key;
    }
    QString otherCase(QString text)
    {
        for (QChar &c : text) {
            const QChar other = oneIn(2) ? c.toUpper() : c.toLower();
            c = oneIn(2) ? other : c;
        }
        return text;
    }
    LiteralWriter::Entries entries()
    {
        LiteralWriter::Entries entries;
        for (int i = below(10); i > 0; --i) {
            LiteralWriter::Entry entry;
            entry.evaluates = !oneIn(4);
            entry.writesNothing = oneIn(8);
            for (int pieces = below(3); pieces > 0; --pieces)
                entry.text += oneIn(8) ? oneOf(mLetters) : oneOf(mText);
            entries[key()] = entry;
        }
        return entries;
    }
    /// A name that is likely to mean one of the entries.
    QString name(const LiteralWriter::Entries &entries)
    {
        if (entries.empty() || oneIn(5))
            return key();
        auto it = entries.begin();
        std::advance(it, below(int(entries.size())));
        const QString name = oneIn(10) ? it->first : LiteralWriter::strippedKey(it->first);
        return oneIn(2) ? otherCase(name) : name;
    }
    QString text(const LiteralWriter::Entries &entries)
    {
        QString text;
        const bool withZero = oneIn(6), withHalves = oneIn(3);
        for (int i = below(40); i > 0; --i) {
            if (oneIn(3)) {
                const QString tag = FGenIntTagText::tag(name(entries));
                text += oneIn(6) ? otherCase(tag) : tag;
            } else if (withZero && oneIn(20)) {
                text += QChar(0);
            } else {
                const QString piece = oneOf(mText);
                if (withHalves || piece.size() != 1 || !piece.at(0).isSurrogate())
                    text += piece;
            }
        }
        if (oneIn(2)) // long texts are searched in another way than short ones
            text.insert(below(text.size() + 1), QString(600, QLatin1Char('.')));
        return text;
    }

private:
    std::mt19937_64 mRandom;
    QStringList mLetters, mText;
};

/// Looks entries up as a write does and notes what it doesn't find.
FGenIntExpander::Value lookUp(const LiteralWriter::Entries &entries,
                              const FGenIntEntryNames &entryNames, QStringList *skipped)
{
    std::vector<const LiteralWriter::Entry *> inOrder;
    for (const auto &item : entries)
        inOrder.push_back(&item.second);
    return [inOrder, &entryNames, skipped](const QString &name, QString *text) {
        for (const int i : entryNames.candidates(name)) {
            if (!inOrder[size_t(i)]->evaluates)
                continue;
            *text = inOrder[size_t(i)]->text;
            return !inOrder[size_t(i)]->writesNothing;
        }
        skipped->append(name);
        return false;
    };
}

QByteArray shown(const QString &text)
{
    QByteArray result;
    for (const QChar c : text)
        result += c.unicode() > 31 && c.unicode() < 127
                      ? QByteArray(1, char(c.unicode()))
                      : "\\x" + QByteArray::number(c.unicode(), 16) + ' ';
    return result;
}

bool isValidUtf16(const QString &text)
{
    const std::string utf8 = 'x' + text.toStdString(); // the x keeps a byte order mark
    return QString::fromStdString(utf8).midRef(1) == text;
}
} // namespace

class TestWriterCore : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void expandsLikeTheLiteralRules()
    {
        const quint64 seed = testSeed() ^ 1;
        qInfo("seed %llu", static_cast<unsigned long long>(seed));
        Generator random(seed);
        int found = 0, skippedTags = 0, halves = 0, zeros = 0;
        for (int round = 0; round < 25'000; ++round) {
            const auto entries = random.entries();
            const QString text = random.text(entries);
            const bool windows = random.oneIn(3);
            QStringList expectedSkipped, skipped, skippedInMemory, skippedFromUtf8;
            const QString expected =
                LiteralWriter::expand(text, entries, windows, &expectedSkipped);
            const QByteArray expectedBytes = LiteralWriter::fileBytes(expected);

            std::vector<QString> keys;
            for (const auto &item : entries)
                keys.push_back(item.first);
            const FGenIntEntryNames names(keys);
            const FGenIntExpander expander(text, windows);
            const QByteArray bytes = expander.expandUtf8(lookUp(entries, names, &skipped));
            const QString inMemory =
                FGenIntExpander::expand(text, windows, lookUp(entries, names, &skippedInMemory));
            const auto hint = [&] {
                return QByteArray("seed " + QByteArray::number(seed) + " round " +
                                  QByteArray::number(round) + ": " + shown(text) + " -> " +
                                  shown(QString::fromUtf8(bytes)) + " expected " +
                                  shown(QString::fromUtf8(expectedBytes)));
            };
            if (!(bytes == expectedBytes))
                QFAIL(hint().constData());
            if (!(inMemory == expected))
                QFAIL(hint().constData());
            if (!(skipped == expectedSkipped))
                QFAIL(hint().constData());
            if (!(skippedInMemory == expectedSkipped))
                QFAIL(hint().constData());
            const bool valid = isValidUtf16(text);
            if (valid) {
                const auto direct = FGenIntExpander(
                    std::make_shared<const std::string>(text.toUtf8().toStdString()), windows);
                if (!(direct.expandUtf8(lookUp(entries, names, &skippedFromUtf8)) == expectedBytes))
                    QFAIL(hint().constData());
                if (!(skippedFromUtf8 == expectedSkipped))
                    QFAIL(hint().constData());
            }
            found +=
                int(LiteralWriter::names(text, Qt::CaseInsensitive, false).size()) - skipped.size();
            skippedTags += skipped.size();
            halves += !valid;
            zeros += expected.contains(QChar(0));
        }
        // The comparison says something only where there is something to compare.
        QVERIFY(found > 25'000 && skippedTags > 5'000 && halves > 2'000 && zeros > 500);
    }

    void listsAndChangesTagsLikeTheLiteralRules()
    {
        const quint64 seed = testSeed() ^ 2;
        qInfo("seed %llu", static_cast<unsigned long long>(seed));
        Generator random(seed);
        int changed = 0;
        for (int round = 0; round < 20'000; ++round) {
            const auto entries = random.entries();
            const QString text = random.text(entries);
            const auto hint = [&] {
                return QByteArray("seed " + QByteArray::number(seed) + " round " +
                                  QByteArray::number(round) + ": " + shown(text));
            };
            for (const auto marks : {Qt::CaseSensitive, Qt::CaseInsensitive}) {
                if (!(FGenIntTagScanner::names(text, marks) ==
                      LiteralWriter::names(text, marks, false)))
                    QFAIL(hint().constData());
                if (!(FGenIntTagScanner::distinctNames(text, marks) ==
                      LiteralWriter::names(text, marks, true)))
                    QFAIL(hint().constData());
            }
            const QString name = random.name(entries),
                          other = random.oneIn(8) ? name : random.key();
            const QString tag = QStringLiteral("<entry>") + name + QStringLiteral("</entry>");
            QString renamed = text, removed = text;
            if (!name.isEmpty() && !other.isEmpty() && name != other)
                renamed.replace(tag, QStringLiteral("<entry>") + other + QStringLiteral("</entry>"),
                                Qt::CaseInsensitive);
            removed.replace(tag, other, Qt::CaseInsensitive);
            if (!(FGenIntTagText::updateTag(text, name, other) == renamed))
                QFAIL(hint().constData());
            if (!(FGenIntTagText::replaceTag(text, name, other) == removed))
                QFAIL(hint().constData());
            if (!(FGenIntTagText::containsTag(text, name) ==
                  text.contains(tag, Qt::CaseInsensitive)))
                QFAIL(hint().constData());
            changed += removed != text;
        }
        QVERIFY(changed > 3'000);
    }

    void tellsWhereTagsStand()
    {
        int unclosed = 7;
        const QString text = QStringLiteral("ab<ENTRY>x<entry>y</entry>c<entry></Entry><entry>z");
        const auto tags = FGenIntTagScanner::scan(text, Qt::CaseInsensitive, &unclosed);
        QCOMPARE(tags.size(), 2);
        QCOMPARE(text.mid(tags[0].start, tags[0].end - tags[0].start),
                 QStringLiteral("<ENTRY>x<entry>y</entry>"));
        QCOMPARE(text.mid(tags[0].nameStart, tags[0].nameLength), QStringLiteral("x<entry>y"));
        QCOMPARE(tags[1].nameLength, 0);
        QCOMPARE(unclosed, text.size() - 8);
        FGenIntTagScanner::scan(text.left(tags[1].end), Qt::CaseInsensitive, &unclosed);
        QCOMPARE(unclosed, -1);
    }

    void agreesOnEveryCharacter()
    {
        // In the place of a mark's letter and as a name in another case.
        std::vector<QString> keys;
        for (uint code = 0; code < 0x11000; ++code)
            if (code != '|' && code != '[')
                keys.push_back(QString::fromUcs4(&code, 1));
        const FGenIntEntryNames names(keys);
        for (uint code = 1; code < 0x11000; ++code) {
            if (code < 0x10000 && !QChar::isSurrogate(code)) {
                QString text = QStringLiteral("<entry>x</entry>");
                text[int(code % 7)] = QChar(ushort(code));
                QCOMPARE(int(FGenIntTagScanner::names(text, Qt::CaseInsensitive).size()),
                         int(LiteralWriter::names(text, Qt::CaseInsensitive, false).size()));
            }
            const QString name = QString::fromUcs4(&code, 1);
            for (const QString &other :
                 {name.toUpper(), name.toLower(), name.toCaseFolded(), name}) {
                const auto &candidates = names.candidates(other);
                const bool found = std::any_of(candidates.begin(), candidates.end(),
                                               [&](int i) { return keys[size_t(i)] == name; });
                const bool expected = code != '|' && code != '[' &&
                                      QString::compare(name, other, Qt::CaseInsensitive) == 0;
                QVERIFY2(found == expected, QByteArray::number(code, 16).constData());
            }
        }
    }

    void asksForEveryTagEvenBehindTheEndOfTheFile()
    {
        const QString text = QStringLiteral("a<entry>zero</entry>b<entry>late</entry>c");
        QStringList asked;
        const FGenIntExpander expander(text, false);
        const QByteArray bytes = expander.expandUtf8([&](const QString &name, QString *value) {
            asked << name;
            *value = QStringLiteral("1") + QChar(0) + QStringLiteral("2");
            return true;
        });
        QCOMPARE(bytes, QByteArray("a1"));
        QCOMPARE(asked, QStringList({QStringLiteral("zero"), QStringLiteral("late")}));
        QVERIFY(expander.isFor(text, false) && !expander.isFor(text, true) &&
                !expander.isFor(text + QLatin1Char('x'), false));
    }

    void comesToAnEndOnLongTexts_data()
    {
        QTest::addColumn<QString>("piece");
        QTest::newRow("tags") << QStringLiteral("<entry>a</entry>\n");
        QTest::newRow("open marks") << QStringLiteral("<entry>\n");
        QTest::newRow("closing marks") << QStringLiteral("</entry>\n");
        QTest::newRow("half marks") << QStringLiteral("<entry<</entry<");
        QTest::newRow("line feeds") << QStringLiteral("\n");
        QTest::newRow("half pairs") << QString(QStringLiteral("?<entry>?</entry>") + QChar(0xd801));
    }
    void comesToAnEndOnLongTexts()
    {
        QFETCH(QString, piece);
        // Whatever is quadratic in these would not come to an end.
        const QString text = piece.repeated(500'000);
        const FGenIntExpander expander(text, true);
        const QByteArray bytes = expander.expandUtf8([](const QString &, QString *value) {
            *value = QStringLiteral("17");
            return true;
        });
        FGenIntTagScanner::distinctNames(text, Qt::CaseInsensitive);
        FGenIntTagText::updateTag(text, QStringLiteral("a"), QStringLiteral("longer"));
        QVERIFY(bytes.size() <= 20 * text.size());
    }
};

QTEST_GUILESS_MAIN(TestWriterCore)
#include "tst_writercore.moc"

// SPDX-License-Identifier: Apache-2.0
// A template against a newer version of its file.
#include "fgenintmerge.h"
#include "testseed.h"

#include <QtTest>

class TestMerge : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void whatIsKept();
    void randomChanges();
};

void TestMerge::whatIsKept()
{
    const QString old =
        "*HEAD\nE = <entry>e</entry>, 0.3\n1, <entry>x</entry>, <entry>y</entry>\nend\n";
    QCOMPARE(FGenIntMerge::takeOver(old, "*HEAD\nE = 210, 0.3\n1, 2, 3\nend\n").text, old);
    // Other numbers in place of tags are no change, other numbers beside them are one.
    auto taken = FGenIntMerge::takeOver(old, "*HEAD\nnew\nE = 7e4, 0.3\n1, 5, 6\nend\nmore\n");
    QCOMPARE(taken.text, QStringLiteral("*HEAD\nnew\nE = <entry>e</entry>, 0.3\n1, "
                                        "<entry>x</entry>, <entry>y</entry>\nend\nmore\n"));
    QCOMPARE(taken.changed, 2);
    QCOMPARE(taken.lost, 0);
    taken = FGenIntMerge::takeOver(old, "*HEAD\nE = 210, 0.4\nend\n");
    QCOMPARE(taken.text, QStringLiteral("*HEAD\nE = 210, 0.4\nend\n"));
    QCOMPARE(taken.lost, 3);
    // Line ends are the file's.
    QCOMPARE(FGenIntMerge::takeOver(old, "*HEAD\r\nE = 1, 0.3\r\n").text,
             QStringLiteral("*HEAD\r\nE = <entry>e</entry>, 0.3\r\n"));
    const QString told = FGenIntMerge::difference(old, "*HEAD\nE = 210, 0.4\n1, 2, 3\nend\n");
    QCOMPARE(told, QStringLiteral("  *HEAD\n- E = <entry>e</entry>, 0.3\n+ E = 210, 0.4\n  1, "
                                  "<entry>x</entry>, <entry>y</entry>\n  end"));
}

/// Lines come and go; what is made is the new file, but for the tags of lines that are still there.
void TestMerge::randomChanges()
{
    std::mt19937 random(testSeed());
    for (int round = 0; round < 200; ++round) {
        QStringList file, made;
        const int count = 1 + int(random() % 60);
        for (int i = 0; i < count; ++i) {
            const QString head = QStringLiteral("key%1 = ").arg(i);
            file << head + QString::number(random() % 9);
            made << (random() % 3 ? file.back()
                                  : head + QStringLiteral("<entry>k%1</entry>").arg(i));
        }
        QStringList fresh, expected;
        int tags = 0;
        for (int i = 0; i < count; ++i) {
            switch (random() % 8) {
            case 0:
                continue; // gone
            case 1:
                fresh << QStringLiteral("new%1").arg(random() % 1000 + 1000);
                expected << fresh.back();
                [[fallthrough]];
            default:
                fresh << file[i];
            }
            if (made[i].contains("<entry>")) {
                fresh.back() += QString::number(random() % 100); // the number is another one
                ++tags;
            }
            expected << made[i];
        }
        const auto taken = FGenIntMerge::takeOver(made.join('\n'), fresh.join('\n'));
        if (fresh.isEmpty())
            continue;
        QCOMPARE(taken.text, expected.join('\n'));
        QCOMPARE(taken.lost, made.join(' ').count("<entry>") - tags);
    }
    // Far too long for a table of all pairs.
    QString longOld, longFresh;
    for (int i = 0; i < 30000; ++i) {
        longOld += QStringLiteral("%1 <entry>v</entry>\n").arg(i);
        longFresh +=
            (i % 1000 == 5 ? "inserted\n" : "") + QStringLiteral("%1 %2\n").arg(i).arg(i * 3);
    }
    longFresh += "last\n";
    const auto taken = FGenIntMerge::takeOver(longOld, longFresh);
    QCOMPARE(taken.changed, 31);
    QCOMPARE(taken.lost, 0);
}

QTEST_GUILESS_MAIN(TestMerge)
#include "tst_merge.moc"

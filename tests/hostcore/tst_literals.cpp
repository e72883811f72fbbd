// SPDX-License-Identifier: Apache-2.0
#include "flogmsg.h"
#include "fproject.h"
#include "ftext.h"
#include "testseed.h"

#include <QTemporaryFile>
#include <QtTest>
#include <random>

namespace {
/// The rules for texts in quotes, character by character.
size_t plainEnd(const std::string &source, size_t open, bool inList)
{
    size_t run = 0;
    for (size_t i = open + 1; i < source.size(); ++i) {
        if (source[i] == '"' && run % 2 == 0) {
            const size_t next = source.find_first_not_of(" \t\r\n", i + 1);
            if (!inList || next == std::string::npos || source[next] == ',' || source[next] == ']')
                return i;
        }
        run = source[i] == '\\' ? run + 1 : 0;
    }
    return std::string::npos;
}

std::string plainText(const std::string &source, size_t open, size_t close)
{
    std::string out;
    size_t run = 0;
    for (size_t i = open + 1; i <= close; ++i) {
        if (source[i] == '\\') {
            ++run;
            continue;
        }
        out += std::string(source[i] == '"' ? run / 2 : run, '\\');
        run = 0;
        if (i < close)
            out += source[i];
    }
    return out;
}
} // namespace

class TestLiterals : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsTextsInQuotesByTheRules()
    {
        std::mt19937 random(testSeed());
        const std::string letters = "\\\\\\\"\"ab,] \n";
        int ended = 0;
        for (int round = 0; round < 50'000; ++round) {
            std::string source = "\"", text;
            for (uint i = random() % 14; i > 0; --i) {
                source += letters[random() % letters.size()];
                text += letters[random() % letters.size()];
            }
            const size_t open = random() % 2 && source.size() > 1 ? 1 : 0;
            for (const bool inList : {false, true}) {
                const size_t end = FLiteral::findEnd(source, open, inList);
                QVERIFY2(end == plainEnd(source, open, inList), source.c_str());
                if (end == std::string::npos)
                    continue;
                ++ended;
                QVERIFY2(FLiteral::unquoted(source, open, end) == plainText(source, open, end),
                         source.c_str());
            }
            const std::string quoted = FLiteral::quoted(text);
            QCOMPARE(FLiteral::findEnd(quoted + ";", 0, false), quoted.size() - 1);
            QCOMPARE(FLiteral::unquoted(quoted, 0, quoted.size() - 1), text);
        }
        QVERIFY(ended > 30'000);
    }

    void keepsByteOrderMarks()
    {
        const std::string text = "\xef\xbb\xbf\xef\xbb\xbfx\xef\xbb\xbf";
        QCOMPARE(S(Q(text)), text);
        QCOMPARE(Q("\xef\xbb\xbf").size(), 1);
    }

    void boundsExpressions()
    {
        const std::string bad = "(((a?){30}){30}){30}"; // gigabytes, if it were compiled
        std::string text = "xaab";
        QCOMPARE(indexOfEx(text, bad), std::string::npos);
        QCOMPARE(lastIndexOfEx(text, bad), std::string::npos);
        replaceEx(text, bad, "-");
        QCOMPARE(text, std::string("xaab"));
        QCOMPARE(indexOfEx(text, "a{1,2}b"), 1UL);
        QCOMPARE(lastIndexOfEx(text, "a{1,2}"), 2UL);
        replaceEx(text, "(a{2}){1}", "-");
        QCOMPARE(text, std::string("x-b"));
    }

    void tellsTheLineOfABrokenByte()
    {
        FLogMsg::setConsole(nullptr);
        const QByteArray start = "\n       \n// \xc3\xa4\n\n               \n//";
        for (const char *broken :
             {"\xff", "\xc3(", "\xe0\x80\x80", "\xed\xa0\x80", "\xf4\x90\x80\x80"})
            for (int at = 0; at <= start.size(); ++at) {
                if (at < start.size() && uchar(start[at]) == 0xa4)
                    continue; // would stand within a character
                QTemporaryFile file;
                QVERIFY(file.open());
                file.write(start.left(at) + broken + start.mid(at) + " 2 3 4 5 6 7 8 9");
                file.close();
                QVERIFY(!FProject::instance()->load(file.fileName()));
                const QString expected =
                    QStringLiteral(":%1: expected UTF-8 text").arg(1 + start.left(at).count('\n'));
                QVERIFY2(Q(FLogMsg::last().message).contains(expected),
                         FLogMsg::last().message.c_str());
            }
    }
};

QTEST_GUILESS_MAIN(TestLiterals)
#include "tst_literals.moc"

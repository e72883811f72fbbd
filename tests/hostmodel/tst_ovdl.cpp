// SPDX-License-Identifier: Apache-2.0
#include "fdefinition.h"
#include "fovdlconfigurationparser.h"
#include "fovdldefinitionparser.h"
#include "ftabledata.h"
#include "modeltest.h"
#include "testseed.h"

#include <QBuffer>
#include <QtTest>
#include <cmath>
#include <random>

namespace {
/// A definition whose object half is kept as text.
class FKeptParser : public FOvdlDefinitionParser
{
public:
    using FOvdlDefinitionParser::FOvdlDefinitionParser;
    void importObjectsFromString(const QString &text) override { objects = text; }
    QString objects = QStringLiteral("never");
};

std::shared_ptr<FDefinitionCustom> made()
{
    const auto definition = f_make_shared<FDefinitionCustom>(nullptr, "d", nullptr);
    definition->registerObject();
    return definition;
}
} // namespace

class tst_Ovdl : public QObject
{
    Q_OBJECT
    ModelTest mModel;

private Q_SLOTS:
    void init() { mModel.start(); }
    void randomTrees();
    void splitting_data();
    void splitting();
    void device();
    void attributes();
    void imports_data();
    void imports();
};

// Whatever the tree and the texts are: what is written reads back the same.
void tst_Ovdl::randomTrees()
{
    const unsigned seed = testSeed();
    std::mt19937 random(seed);
    const auto below = [&](int n) { return int(random() % unsigned(n)); };
    const QStringList pieces{"\"",
                             "\\",
                             "\\\"",
                             "<",
                             ">",
                             "&",
                             "&amp;",
                             "'",
                             "]]>",
                             "\n",
                             "\r",
                             "\t",
                             " ",
                             "ö",
                             "𐐀",
                             "a",
                             "<!--",
                             "\n=== objects ===\n",
                             "</ovdl>",
                             "\x01",
                             "\v",
                             "\x7f",
                             QString(QChar(0xfffe))};
    for (int round = 0; round < 60; ++round) {
        const auto definition = made();
        std::vector<std::shared_ptr<FEntryDef>> groups{nullptr};
        for (int i = below(20); i >= 0; --i) {
            QString text;
            for (int k = below(6); k > 0; --k)
                text += pieces[below(pieces.size())];
            const int kind = below(4);
            FExprBase value;
            if (kind == 0)
                value = FExprBase(f_make_shared<FString>(S(text)));
            else if (kind == 1)
                value = FExprBase(f_make_shared<FDouble>(std::ldexp(1.0 + below(1000), below(99))));
            else if (kind == 2)
                value = FExprBase(f_make_shared<FInteger>(below(100) - 50));
            const auto parent = groups[size_t(below(int(groups.size())))];
            const std::string name = "n" + fromNumber(below(8), 10);
            const auto entry =
                parent ? FEntryDef::create(name, parent, definition, value)
                       : FEntryDef::create(name, definition, 1, 1, below(2), below(2), "", value);
            if (kind == 3)
                groups.push_back(entry);
            if (below(3) == 0) // what XML can't hold is left out of descriptions
                entry->addDocu(S(text.remove(QRegExp("[\\r\\x01\\v\\xfffe]")) + "."), 1);
        }
        const std::string text = FOvdlDefinitionParser::structureText(*definition);
        const auto read = made();
        read->setName("other");
        FKeptParser parser{FExpr<FDefinitionCustom>(read)};
        parser.read(text + "\n=== objects ===\nthe rest");
        QStringList log = ModelTest::log();
        QVERIFY2(log.isEmpty(), qPrintable(QString("seed %1: %2").arg(seed).arg(log.join('\n'))));
        FManaged::destroy(definition, true);
        read->setName("d");
        const std::string again = FOvdlDefinitionParser::structureText(*read);
        QVERIFY2(again == text,
                 qPrintable(QString("seed %1:\n%2\n%3").arg(seed).arg(Q(text), Q(again))));
        QCOMPARE(parser.objects, QString("the rest"));
        FManaged::destroy(read, true);
    }
}

void tst_Ovdl::splitting_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("objects");
    const QByteArray xml = "<ovdl><definition/></ovdl>";
    QTest::newRow("no marker") << xml + "\n"
                               << "never";
    QTest::newRow("empty half") << xml + "\n\n=== objects ===\n"
                                << "";
    QTest::newRow("no line end") << xml + "\n=== objects ==="
                                 << "";
    QTest::newRow("second marker") << xml + "\n=== objects ===\na\n=== objects ===\nb"
                                   << "a\n=== objects ===\nb";
    QTest::newRow("marker in a text")
        << QByteArray("<ovdl><definition><group name=\"g\"><docu>x\n=== objects ===\ny</docu>"
                      "</group></definition></ovdl>\n=== objects ===\nz")
        << "z";
    QTest::newRow("Windows") << xml + "\r\n\r\n=== objects ===\r\na\r\n"
                             << "a\r\n";
    QTest::newRow("byte order mark") << "\xEF\xBB\xBF" + xml + "\n=== objects ===\nö"
                                     << "ö";
}

void tst_Ovdl::splitting()
{
    QFETCH(QByteArray, text);
    const auto definition = made();
    FKeptParser parser{FExpr<FDefinitionCustom>(definition)};
    parser.read(text.toStdString());
    QCOMPARE(ModelTest::log(), QStringList());
    QTEST(parser.objects, "objects");
    QVERIFY(parser.getDefinition().getPtr() == definition);
}

void tst_Ovdl::device()
{
    const auto definition = made();
    QVERIFY(definition->addEntryCommand("g|a", FExprBase::resolve("1.5")));
    QBuffer buffer;
    QVERIFY(buffer.open(QIODevice::ReadWrite));
    FOvdlDefinitionParser(nullptr).write(&buffer, definition);
    QVERIFY(buffer.data().startsWith("<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<ovdl"));
    buffer.seek(0);
    const auto read = made();
    FOvdlDefinitionParser(FExpr<FDefinitionCustom>(read)).read(&buffer);
    QVERIFY(bool(read->getEntryOfScope("g|a")));
    // Nothing to fill: nothing happens.
    FKeptParser none{nullptr};
    none.read(buffer.data().toStdString() + "=== objects ===\nx");
    QVERIFY(!none.getDefinition());
}

void tst_Ovdl::attributes()
{
    const auto definition = made();
    definition->setEntryDefsFromDB(
        "<ovdl version=\"1\"><definition>text<!-- note -->"
        "<entry name=\"a\" default=\"p + 1\"/><entry name=\"a\" default=\"2\" hidden=\"x\" "
        "min=\"\"/>"
        "<entry name=\"h&#xF6;he m\" default=\"&quot;t&quot;\" hidden=\"1\" expr=\"0\" min=\"0\" "
        "max=\"5\"><docu>a</docu><docu>b</docu></entry></definition></ovdl>");
    const QStringList log = ModelTest::log();
    QVERIFY2(log.size() == 1 &&
                 log[0].contains("expected a default value for entry a, found p + 1"),
             qPrintable(log.join('\n')));
    QVERIFY(definition->getRootEntries().empty());
    QCOMPARE(ModelTest::run("parameter p(1);"), QStringList());
    definition->setEntryDefsFromDB(
        "<ovdl version=\"1\"><definition>text<!-- note -->"
        "<entry name=\"a\" default=\"p + 1\"/><entry name=\"a\" default=\"2\" hidden=\"x\" "
        "min=\"\"/>"
        "<entry name=\"h&#xF6;he m\" default=\"&quot;t&quot;\" hidden=\"1\" expr=\"0\" min=\"0\" "
        "max=\"5\"><docu>a</docu><docu>b</docu></entry></definition></ovdl>");
    QCOMPARE(ModelTest::log(), QStringList());
    const auto &roots = definition->getRootEntries();
    QCOMPARE(roots.size(), size_t(3));
    QCOMPARE(roots[0].ptr<FEntryDef>()->getDefaultExpr().toString(), std::string("p+1"));
    const auto twin = roots[1].ptr<FEntryDef>();
    QCOMPARE(twin->getName(), std::string("a1"));
    QVERIFY(!twin->isHidden() && twin->isExpr() && twin->minimum() == 1 && twin->maximum() == 1);
    const auto last = roots[2].ptr<FEntryDef>();
    QCOMPARE(last->getName(), std::string("h_he_m"));
    QVERIFY(last->isHidden() && !last->isExpr() && last->minimum() == 0 && last->maximum() == 5);
    QCOMPARE(last->getDocuString(1), std::string("ab"));
    QCOMPARE(definition->getVisibleRootEntries().size(), size_t(2));
    definition->setEntryDefsFromDB("");
    QVERIFY(definition->getRootEntries().empty() && definition->getEntryDefs().empty());
}

void tst_Ovdl::imports_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("message");
    const QByteArray good = "VARIABLES = \"x\", \"p q\"\nZONE I=2, F=BLOCK\n1 2\n2*7.5\n";
    QTest::newRow("good") << "tecplot" << good << "";
    QTest::newRow("type in other case") << "TecPlot" << good << "";
    QTest::newRow("other type") << "csv" << good << "expected the format tecplot, found \"csv\"";
    QTest::newRow("no type") << "" << good << "expected the format tecplot, found \"\"";
    QTest::newRow("too short") << "tecplot" << good.left(good.size() - 8) << "Could not import";
    QTest::newRow("no such file") << "tecplot" << QByteArray() << "there is no such file";
}

void tst_Ovdl::imports()
{
    QFETCH(QString, type);
    QFETCH(QByteArray, text);
    QFETCH(QString, message);
    if (!text.isEmpty())
        ModelTest::write(mModel.path("f.dat"), text);
    FOvdlConfigurationParser parser("");
    const bool ok = parser.doImport(S(type), S(mModel.path("f.dat")), "name");
    QCOMPARE(ok, message.isEmpty());
    const QStringList log = ModelTest::log();
    if (!ok) {
        QVERIFY2(log.size() == 1 && log[0].contains(message), qPrintable(log.join('\n')));
        QVERIFY(parser.objects().empty());
        return;
    }
    QCOMPARE(log, QStringList());
    const auto table = parser.objects().at("name").ptr<FTableData>();
    QCOMPARE(table->columnHeaders(), (std::vector<std::string>{"x", "p q"}));
    QCOMPARE(table->getElementAt(1, "x"), 2.0);
    QCOMPARE(table->getElementAt(1, "P Q"), 7.5);
}

QTEST_GUILESS_MAIN(tst_Ovdl)
#include "tst_ovdl.moc"

// SPDX-License-Identifier: Apache-2.0
#include "fdefinitiongenint.h"
#include "fgenintcommandfile.h"
#include "fgenintresultsfile.h"
#include "fhistory.h"
#include "fmarloctrl.h"
#include "fparameter.h"
#include "modeltest.h"

#include <QtTest>

namespace {
QString encoded(const QByteArray &utf8) { return "[B64]" + QString::fromLatin1(utf8.toBase64()); }
} // namespace

class tst_Files : public QObject
{
    Q_OBJECT
    ModelTest mModel;

private Q_SLOTS:
    void init() { mModel.start(); }
    void content_data();
    void content();
    void contentThroughProject();
    void fileName();
    void renameRewritesTemplates();
    void initFromFile();
    void entryNames_data();
    void entryNames();
    void updateFile();
    void settersMarkStale_data();
    void settersMarkStale();
    void rulesByHand();
    void ruleNames();
    void ruleText_data();
    void ruleText();
    void ruleFromList();
    void slipsInRules();
    void separators();
    void cloneCarriesRules();
    void undoOfRules();
    void createParam();
};

void tst_Files::content_data()
{
    QTest::addColumn<bool>("loading");
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("text");
    const QString odd = QStringLiteral("größe \"a\"\\b\tλ\r\n𐐀 <entry>x</entry>");
    QTest::newRow("plain") << false << odd << odd;
    QTest::newRow("encoded") << false << encoded(odd.toUtf8()) << odd;
    QTest::newRow("encoded, loading") << true << encoded(odd.toUtf8()) << odd;
    QTest::newRow("escaped line feeds") << false << "a\\nb"
                                        << "a\\nb";
    QTest::newRow("escaped line feeds, loading") << true << "a\\nb\\\\n\\N"
                                                 << "a\nb\\\n\\N";
    QTest::newRow("escaped in base64, loading") << true << encoded("a\\nb") << "a\\nb";
    QTest::newRow("byte order mark") << false << "\ufeffx"
                                     << "\ufeffx";
    QTest::newRow("byte order mark, encoded") << false << encoded("\xef\xbb\xbfx") << "x";
    QTest::newRow("prefix alone") << false << "[B64]"
                                  << "";
    QTest::newRow("lower case is plain") << false << "[b64]YQ=="
                                         << "[b64]YQ==";
    QTest::newRow("prefix within is plain") << false << " [B64]YQ=="
                                            << " [B64]YQ==";
}

void tst_Files::content()
{
    QFETCH(bool, loading);
    QFETCH(QString, given);
    QFETCH(QString, text);
    const auto file = FGenIntCommandFile::create("f");
    {
        const auto scope = loading ? std::make_unique<FLoadingScope>() : nullptr;
        QCOMPARE(std::static_pointer_cast<FObject>(file->setContent(given)),
                 std::static_pointer_cast<FObject>(file));
    }
    QCOMPARE(file->text(), text);
    const bool marked = text.startsWith(QChar(0xfeff)); // reading drops one
    QCOMPARE(file->getContent(), encoded((marked ? "\xef\xbb\xbf" : "") + text.toUtf8()));
    file->setContent(file->getContent());
    QCOMPARE(file->text(), text);
    if (loading)
        return;
    // Scripts take the same.
    QCOMPARE(ModelTest::run("f.setContent(\"" + QString(given).replace('"', "\\\"") + "\");"),
             QStringList());
    QCOMPARE(file->text(), text);
}

// The saved form survives a project whatever the text is.
void tst_Files::contentThroughProject()
{
    const QString text = QStringLiteral("\"quoted\"\\n}\n];\r\n{[ häß\t\\");
    const auto file = FGenIntCommandFile::create("f");
    file->setFileName(QStringLiteral("sub/ö \"1\".in"));
    file->setContent(text);
    file->setForceWindowsLineEndings(true);
    const QString project = FProject::instance()->text();
    mModel.start();
    QCOMPARE(ModelTest::run(project), QStringList());
    const auto read = ModelTest::object<FGenIntCommandFile>("f");
    QVERIFY(read);
    QCOMPARE(read->text(), text);
    QCOMPARE(read->getFileName(), QStringLiteral("sub/ö \"1\".in"));
    QVERIFY(read->getForceWindowsLineEndings());
    QCOMPARE(FProject::instance()->text(), project);
}

void tst_Files::fileName()
{
    const auto file = FGenIntCommandFile::create("f");
    const size_t before = FHistory::instance()->stepCount();
    file->setFileName("");
    QCOMPARE(FHistory::instance()->stepCount(), before); // null and empty are equal
    file->setFileName("a");
    QCOMPARE(FHistory::instance()->stepCount(), before + 1);
    file->setFileName("a");
    QCOMPARE(FHistory::instance()->stepCount(), before + 1);
    file->setFileName("A"); // case counts
    QCOMPARE(FHistory::instance()->stepCount(), before + 2);
    file->setContent("x");
    file->setContent("x"); // every call is a step
    file->setForceWindowsLineEndings(false);
    QCOMPARE(FHistory::instance()->stepCount(), before + 5);
    QCOMPARE(FHistory::instance()->undoText(), std::string("set force Windows line endings"));
    QVERIFY(FHistory::instance()->undo());
    QCOMPARE(FHistory::instance()->undoText(), std::string("set content"));
    QVERIFY(FHistory::instance()->undo() && FHistory::instance()->undo());
    QCOMPARE(FHistory::instance()->undoText(), std::string("set file name"));
    QCOMPARE(file->text(), QString());
}

void tst_Files::renameRewritesTemplates()
{
    const QString texts = QStringLiteral("<entry>old.in</entry> <ENTRY>OLD.IN</entry>"
                                         " <entry>Exports|old.in</entry> <entry>old.inx</entry>");
    const auto lonely = FGenIntCommandFile::create("lonely");
    lonely->setFileName("old.in");
    const auto a = FGenIntCommandFile::create("a");
    const auto b = FGenIntCommandFile::create("b");
    const auto r = FGenIntResultsFile::create("r");
    a->setFileName("old.in");
    for (const std::shared_ptr<FGenIntFile> &file :
         std::initializer_list<std::shared_ptr<FGenIntFile>>{a, b, r})
        file->setContent(texts);
    const auto definition = FDefinitionGenInt::create(nullptr, "d", nullptr);
    for (const FExpr<FGenIntFile> &file :
         {FExpr<FGenIntFile>(a), FExpr<FGenIntFile>(b), FExpr<FGenIntFile>(r)})
        definition->addFile(file);

    lonely->setFileName("other"); // no definition holds it
    QCOMPARE(b->text(), texts);
    const size_t before = FHistory::instance()->stepCount();
    a->setFileName("new.in");
    const QString now = QStringLiteral("<entry>new.in</entry> <entry>new.in</entry>"
                                       " <entry>Exports|new.in</entry> <entry>old.inx</entry>");
    QCOMPARE(a->text(), now);
    QCOMPARE(b->text(), now);
    QCOMPARE(r->text(), texts); // a sample, no template
    QCOMPARE(FHistory::instance()->stepCount(), before + 1);
    QVERIFY(FHistory::instance()->undo());
    QCOMPARE(a->getFileName(), QString("old.in"));
    QCOMPARE(b->text(), texts);
    QVERIFY(FHistory::instance()->redo());
    QCOMPARE(b->text(), now);

    {
        const FLoadingScope loading;
        a->setFileName("x.in");
    }
    QCOMPARE(b->text(), now);
    a->setFileName(""); // an empty name rewrites nothing
    QCOMPARE(b->text(), now);
}

void tst_Files::initFromFile()
{
    const auto file = FGenIntCommandFile::create("f");
    file->setContent("before");
    file->initFromFile(mModel.path("none"));
    file->initFromFile(mModel.path("")); // a folder
    QCOMPARE(file->text(), QString("before"));
    QCOMPARE(file->getName(), std::string("f"));
    QCOMPARE(ModelTest::log(), QStringList());

    ModelTest::write(mModel.path("in 1.dat"), "größe\r\n");
    file->initFromFile(mModel.path("in 1.dat"));
    QCOMPARE(file->text(), QStringLiteral("größe\r\n"));
    QCOMPARE(file->getFileName(), QString("in 1.dat"));
    QVERIFY(file->getName() != "f");
    QCOMPARE(ModelTest::object<FGenIntFile>(file->getName().c_str()), file->castTo<FGenIntFile>());
    ModelTest::write(mModel.path("e"), "[B64]" + QByteArray("decoded").toBase64());
    file->initFromFile(mModel.path("e"));
    QCOMPARE(file->text(), QString("decoded"));
}

void tst_Files::entryNames_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("none") << "no tag" << QStringList();
    QTest::newRow("order, each once")
        << "<entry>b</entry><entry>a</entry><entry>b</entry><entry>B</entry>"
        << QStringList{"b", "a", "B"};
    QTest::newRow("empty name") << "<entry></entry><entry></entry>" << QStringList{""};
    QTest::newRow("unclosed last") << "<entry>a</entry> <entry>b" << QStringList{"a"};
    QTest::newRow("marks match case")
        << "<ENTRY>a</ENTRY><Entry>b</entry><entry>c</Entry>x</entry>" << QStringList{"c</Entry>x"};
    QTest::newRow("no nesting") << "<entry>a<entry>b</entry>c</entry>" << QStringList{"a<entry>b"};
    QTest::newRow("as it stands") << "<entry> a\nb|c[2] </entry>" << QStringList{" a\nb|c[2] "};
}

void tst_Files::entryNames()
{
    QFETCH(QString, text);
    QFETCH(QStringList, names);
    const auto file = FGenIntCommandFile::create("f");
    file->setContent(text);
    QStringList found;
    for (const QString &name : file->getEntryNames())
        found << name;
    QCOMPARE(found, names);
}

void tst_Files::updateFile()
{
    const auto file = FGenIntCommandFile::create("f");
    file->setContent("<ENTRY>Load</Entry> <entry>load2</entry> load");
    const size_t before = FHistory::instance()->stepCount();
    file->updateFile("load", "load");
    file->updateFile("", "x");
    file->updateFile("x", "");
    QCOMPARE(FHistory::instance()->stepCount(), before);
    file->setUpToDate();
    file->updateFile("nowhere", "x"); // still a change of content
    QCOMPARE(FHistory::instance()->stepCount(), before + 1);
    QVERIFY(!file->isUpToDate());
    file->updateFile("load", "Force");
    QCOMPARE(file->text(), QString("<entry>Force</entry> <entry>load2</entry> load"));
    file->updateFile("FORCE", "force"); // equal but for the case is a rename
    QCOMPARE(file->text(), QString("<entry>force</entry> <entry>load2</entry> load"));
}

using Setter = std::function<void(FGenIntResultsFile &)>;
Q_DECLARE_METATYPE(Setter)

void tst_Files::settersMarkStale_data()
{
    QTest::addColumn<Setter>("set");
    using F = FGenIntResultsFile;
    QTest::newRow("setContent") << Setter([](F &f) { f.setContent("x"); });
    QTest::newRow("setFileName") << Setter([](F &f) { f.setFileName("x"); });
    QTest::newRow("setNumberSeparator") << Setter([](F &f) { f.setNumberSeparator(false); });
    QTest::newRow("setSpacesAndTabs") << Setter([](F &f) { f.setSpacesAndTabsSeparator(true); });
    QTest::newRow("setRegExprSeparator") << Setter([](F &f) { f.setRegExprSeparator(","); });
    QTest::newRow("setRegExpSeparator") << Setter([](F &f) { f.setRegExpSeparator(","); });
    QTest::newRow("setTabSeparator") << Setter([](F &f) { f.setTabSeparator(true); });
    QTest::newRow("addValue") << Setter(
        [](F &f) { f.addValue("v", 0, 0, "", "Last", false, nullptr); });
    QTest::newRow("setValues") << Setter([](F &f) { f.setValues(nullptr); });
    QTest::newRow("setCurValueName") << Setter([](F &f) { f.setCurValueName("w"); });
    QTest::newRow("deleteCurrentValue") << Setter([](F &f) { f.deleteCurrentValue(); });
}

void tst_Files::settersMarkStale()
{
    QFETCH(Setter, set);
    const auto file = FGenIntResultsFile::create("r");
    file->addValue("first", 0, 0, "", "Last", false, nullptr);
    const auto definition = FDefinitionGenInt::create(nullptr, "d", nullptr);
    definition->addFile(FExpr<FGenIntFile>(file));
    const QString before = FProject::instance()->text();
    const size_t steps = FHistory::instance()->stepCount();
    file->setUpToDate();
    definition->setUpToDate();
    set(*file);
    QVERIFY(!file->isUpToDate());
    QVERIFY(!definition->isUpToDate());
    const QString after = FProject::instance()->text();
    QVERIFY(after != before);
    while (FHistory::instance()->stepCount() > steps)
        QVERIFY(FHistory::instance()->undo());
    QCOMPARE(FProject::instance()->text(), before);
    while (FHistory::instance()->canRedo())
        QVERIFY(FHistory::instance()->redo());
    QCOMPARE(FProject::instance()->text(), after);
}

void tst_Files::rulesByHand()
{
    const auto file = FGenIntResultsFile::create("r");
    QCOMPARE(file->getCurrentAnchor(), QString());
    QCOMPARE(file->getCurrentOccurrence(), GenIntAnchorOccurrence::Last);
    QVERIFY(file->getCurLine() == 0 && file->getCurColumn() == 0 && !file->getCurCalcAverage());
    QVERIFY(!file->getCurNumAverageRows());
    QCOMPARE(file->setCurValueName("x"), QString("x"));
    file->setCurrentAnchor("x");

    for (int i = 0; i < 11; ++i)
        file->addValue("", i, -i, "A" + QString::number(i), i ? "First" : "Last", i == 2,
                       f_make_shared<FUnsigned>(5U));
    const auto values = file->values();
    QCOMPARE(values.size(), size_t(11));
    QCOMPARE(values[0]->mName, std::string("ResultsValue_00"));
    QCOMPARE(values[1]->mName, std::string("ResultsValue_01"));
    QCOMPARE(values[9]->mName, std::string("ResultsValue_09"));
    QCOMPARE(values[10]->mName, std::string("ResultsValue_10"));
    QCOMPARE(file->getCurrentAnchor(), QString("A10"));
    QCOMPARE(file->getCurrentOccurrence(), GenIntAnchorOccurrence::First);
    QVERIFY(file->getCurLine() == 10 && file->getCurColumn() == -10);
    QCOMPARE(values[0]->mOccurrence, GenIntAnchorOccurrence::Last);
    QVERIFY(values[2]->mCalcAverage && !values[3]->mCalcAverage);
    QCOMPARE(values[2]->averageRows(), 5U);
    QCOMPARE(file->getValue("RESULTSVALUE_03").getPtr(), values[3]);
    QVERIFY(!file->getValue("ResultsValue_3"));

    file->setCurrentValue(values[0]);
    file->deleteCurrentValue();
    QCOMPARE(file->values().size(), size_t(10));
    QCOMPARE(file->getCurrentValue().getPtr(), values[0]); // the caller moves it
    file->addValue("", 0, 0, "", "Last", false, nullptr);
    QCOMPARE(file->values().back()->mName, std::string("ResultsValue_10")); // the count, again
}

void tst_Files::ruleNames()
{
    const auto file = FGenIntResultsFile::create("r");
    for (const char *name : {"a", "b", "c"})
        file->addValue(name, 0, 0, "", "Last", false, nullptr);
    const size_t before = FHistory::instance()->stepCount();
    QCOMPARE(file->setCurValueName("c"), QString("c"));
    QCOMPARE(FHistory::instance()->stepCount(), before);
    QCOMPARE(file->setCurValueName("A"), QString("A_01"));
    QCOMPARE(FHistory::instance()->undoText(), std::string("Set results value name"));
    QCOMPARE(file->setCurValueName("a"), QString("a_02")); // a_01 is its own name
    QCOMPARE(file->setCurValueName("A_02"), QString("A_02_01"));
    for (int i = 1; i <= 9; ++i)
        file->addValue("b_0" + QString::number(i), 0, 0, "", "Last", false, nullptr);
    QCOMPARE(file->setCurValueName("b"), QString("b_10"));
}

void tst_Files::ruleText_data()
{
    QTest::addColumn<QString>("list");
    for (const char *list :
         {"[\"v\",-2,3,\"RE SULT\",First,\"FDouble\",\"\",0,nullptr]",
          "[\"v\",0,0,\"\",Last,\"FFileName\",\"tecplot\",1,12]",
          "[\"v\",2147483647,-2147483648,\"a\",Last,\"\",\"\",1,rows + 1]",
          "[\"größe \\n\",0,1,\"say \"hi\" now\",Last,\"FDouble\",\"\",0,nullptr]"})
        QTest::newRow(list) << QString(list);
}

void tst_Files::ruleText()
{
    QFETCH(QString, list);
    QCOMPARE(ModelTest::run("parameter rows(3);"), QStringList());
    QCOMPARE(ModelTest::run("genericIntegrationResultsFile r() { .setValues([" + list + "]); }"),
             QStringList());
    const auto values = ModelTest::object<FGenIntResultsFile>("r")->values();
    QCOMPARE(values.size(), size_t(1));
    if (list.contains("\"\",\"\",1")) { // no type in the text leaves the default
        QCOMPARE(values[0]->mType.getExpr(), std::static_pointer_cast<FObject>(FDouble::mpNull));
        QCOMPARE(values[0]->averageRows(), 4U);
        list.replace("Last,\"\"", "Last,\"FDouble\"");
    }
    QCOMPARE(Q(values[0]->toString()).remove(' '), list.remove(' '));
    values[0]->setType(nullptr);
    QVERIFY(Q(values[0]->toString()).contains("t,\"\",\""));
}

void tst_Files::ruleFromList()
{
    const auto read = [](const char *list) {
        const auto value = f_make_shared<FGenIntResultsFileValue>(
            "old", 7, 8, "anchor", "First", FFileName::mpNull, "tecplot", true,
            f_make_shared<FUnsigned>(9U));
        value->setPrimitiveValue(FExprBase::resolve(list));
        return Q(value->toString());
    };
    const QString old = "[\"old\",7,8,\"anchor\",First,\"FFileName\",\"tecplot\",1,9]";
    QCOMPARE(read("[\"n\",1,2,\"a\",Last,\"FDouble\"]"), old); // six change nothing
    QCOMPARE(read("[]"), old);
    QCOMPARE(read("3"), old);
    QCOMPARE(read("[\"n\",1,2,\"a\",Last,\"FDouble\",\"\"]"),
             QString("[\"n\",1,2,\"a\",Last,\"FDouble\",\"\",1,9]")); // the older form
    QCOMPARE(read("[\"n\",\"x\",2,3,Last,\"\",\"\",false,4]"),
             QString("[\"n\",7,2,\"anchor\",Last,\"FFileName\",\"\",0,4]"));
    QCOMPARE(read("[\"n\",1,2,\"a\",Whatever,\"FDouble\",\"\",0,nullptr]"),
             QString("[\"n\",1,2,\"a\",First,\"FDouble\",\"\",0,nullptr]")); // unknown is 0
}

void tst_Files::slipsInRules()
{
    const QString good = "[\"v\",1,2,\"a\",Last,\"FDouble\",\"\",0,nullptr]";
    QCOMPARE(ModelTest::run("genericIntegrationResultsFile r() { .setValues([" + good + "]); }"),
             QStringList());
    const auto saved = [] { return ModelTest::object<FGenIntResultsFile>("r")->getValues(); };
    const std::pair<const char *, const char *> slips[] = {
        {"[\"v\",1,2,a,Last,\"FDouble\",\"\",0,nullptr]", "anchor of the rule in quotes"},
        {"[\"v\",1.7,2,\"a\",Last,\"FDouble\",\"\",0,nullptr]", "whole number for the line"},
        {"[\"v\",1,\"2\",\"a\",Last,\"FDouble\",\"\",0,nullptr]", "for the column, found \"2\""},
        {"[\"v\",1,2,\"a\",7,\"FDouble\",\"\",0,nullptr]", "First or Last, found 7"},
        {"[\"v\",1,2,\"a\",Last,\"FDoubl\",\"\",0,nullptr]", "found \"FDoubl\""},
        {"[\"v\",1,2,\"a\",Last,\"FParameter\",\"\"]", "found \"FParameter\""},
        {"[\"v\",1,2,\"a\",Last]", "found 5 elements"},
        {"[\"v\",1,2,\"a\",Last,\"FDouble\",\"\",2,nullptr]", "0 or 1 for the average"},
        {"[\"v\",1,2,\"a\",Last,\"FDouble\",\"\",1,-3]", "a number of rows, found -3"},
        {"\"v\",1,2,\"a\",Last,\"FDouble\",\"\"", "a rule in brackets"}};
    for (const auto &slip : slips) {
        const QStringList errors =
            ModelTest::run("r.setValues([" + good + ",\n" + slip.first + "]);");
        QVERIFY2(errors.size() == 1 && errors[0].contains(slip.second) &&
                     errors[0].contains("rule 2: expected"),
                 qPrintable(slip.first + ("\n" + errors.join("\n"))));
        QCOMPARE(Q(saved().toString()), "[" + good + "]");
    }
    for (const char *broken :
         {"[B64]YSA", "[B64]Y", "[B64]YS A", "[B64]YSA=", "[B64]YSA=\\n", "[B64]YSA==", "[B64]Y=SA",
          "[B64]Y\xc3\xa4==", "[B64]====", "[B64]YQBi"}) {
        const QStringList errors =
            ModelTest::run("r.setContent(\"" + QString::fromUtf8(broken) + "\");");
        const bool good = QByteArray(broken) == "[B64]YSA" || QByteArray(broken) == "[B64]YS A" ||
                          QByteArray(broken) == "[B64]YSA=";
        QVERIFY2(errors.isEmpty() == good, broken + errors.join("\n").toUtf8());
        QVERIFY2(good || errors[0].contains(qstrcmp(broken, "[B64]YQBi") == 0
                                                ? "expected text, found a zero"
                                                : "expected base64, found"),
                 qPrintable(errors.join("\n")));
    }
    QVERIFY(!ModelTest::run("r.setRegExpSeparator(\"(((a?){30}){30}){30}\");").isEmpty());
    QCOMPARE(ModelTest::run("r.setRegExpSeparator(\"(ab|[x,]{1,30}){2}\");"), QStringList());
    for (const char *word : {"\"Last\"", "last", "LAST", "\"lAST\""}) {
        QCOMPARE(ModelTest::run("r.setValues([" + QString(good).replace("Last", word) + "]);"),
                 QStringList());
        QCOMPARE(Q(saved().toString()), "[" + good + "]");
    }
}

void tst_Files::separators()
{
    const auto file = FGenIntResultsFile::create("r");
    QVERIFY(file->getNumberSeparator() && !file->getSpacesAndTabsSeparator());
    file->setTabSeparator(false);
    file->setRegExpSeparator("");
    QVERIFY(file->getNumberSeparator() && !file->getSpacesAndTabsSeparator());
    file->setRegExprSeparator(",");
    QVERIFY(file->getNumberSeparator());
    file->setRegExpSeparator(";");
    QVERIFY(!file->getNumberSeparator());
    QCOMPARE(file->getRegExprSeparator(), QString(";"));
    file->setNumberSeparator(true);
    QCOMPARE(ModelTest::run("r.setTabSeaparator(true);"), QStringList());
    QVERIFY(!file->getNumberSeparator() && file->getSpacesAndTabsSeparator());
    QCOMPARE(ModelTest::run("r.setTabSeaparator(false); r.setSpaceSeparator(false);"),
             QStringList());
    QVERIFY(file->getSpacesAndTabsSeparator());
}

void tst_Files::cloneCarriesRules()
{
    QCOMPARE(ModelTest::run(
                 "parameter rows(3);"
                 "genericIntegrationResultsFile r() { .setRegExpSeparator(\",\");"
                 " .setValues([[\"a \"b\" c\",1,-2,\"x\\\",y]\",First,\"FFileName\",\"tecplot\",1,"
                 "rows],[\"w\",0,0,\"\",Last,\"FDouble\",\"\",0,nullptr]]); }"),
             QStringList());
    const auto source = ModelTest::object<FGenIntResultsFile>("r");
    QCOMPARE(source->values().size(), size_t(2));
    const auto copy = std::dynamic_pointer_cast<FGenIntResultsFile>(source->clone());
    QVERIFY(copy && copy->isRegistered() && copy->getName() != "r");
    QVERIFY(!copy->getNumberSeparator());
    QCOMPARE(copy->getRegExprSeparator(), QString(","));
    QCOMPARE(copy->values().size(), size_t(2));
    for (size_t i = 0; i < 2; ++i) {
        QCOMPARE(copy->values()[i]->toString(), source->values()[i]->toString());
        QVERIFY(copy->values()[i] != source->values()[i]);
    }
    // The number of rows is still the parameter.
    QCOMPARE(ModelTest::run("rows.setValue(8);"), QStringList());
    QCOMPARE(copy->values()[0]->averageRows(), 8U);
}

void tst_Files::undoOfRules()
{
    const auto file = FGenIntResultsFile::create("r");
    file->addValue("v", 0, 0, "a", "Last", false, nullptr);
    const auto value = file->values().front();
    file->setCurValueName("w");
    value->mLine = 4; // as an editor does, which records afterwards
    file->setNumberSeparator(false);
    QVERIFY(FHistory::instance()->undo());
    QCOMPARE(file->values().front()->mLine, 0);
    QVERIFY(FHistory::instance()->undo());
    QCOMPARE(file->values().front()->mName, std::string("v"));
    QVERIFY(FHistory::instance()->undo());
    QVERIFY(file->values().empty());
    while (FHistory::instance()->canRedo())
        QVERIFY(FHistory::instance()->redo());
    QCOMPARE(file->values().front()->toString(),
             std::string("[\"w\",4,0,\"a\",Last,\"FDouble\",\"\",0,nullptr]"));
    // Rows by a parameter: the template goes stale with it.
    QCOMPARE(ModelTest::run("parameter n(2); r.setValues([[\"v\",0,0,\"\",Last,\"FDouble\",\"\","
                            "1,n]]);"),
             QStringList());
    file->update(nullptr);
    QVERIFY(file->isUpToDate());
    ModelTest::object<FParameter>("n")->setValue(FExprBase(f_make_shared<FUnsigned>(3U)));
    QVERIFY(!file->isUpToDate());
}

void tst_Files::createParam()
{
    QCOMPARE(ModelTest::run("genericIntegrationResultsFile r() { .setFileName(\"out 1.txt\"); }"
                            "genericIntegrationComputation comp();"),
             QStringList());
    const auto file = ModelTest::object<FGenIntResultsFile>("r");
    file->addValue("max stress", 0, 0, "", "Last", false, nullptr);
    const size_t before = FHistory::instance()->stepCount();
    QVERIFY(!file->createParam("none", "comp", true));
    QVERIFY(!file->createParam("max stress", "no computation", true));
    QCOMPARE(FHistory::instance()->stepCount(), before);
    const FExpr<FParameter> parameter = file->createParam("MAX stress", "comp", false);
    QVERIFY(bool(parameter));
    QCOMPARE(FHistory::instance()->undoText(), std::string("create evaluation: eval_MAX stress"));
    QCOMPARE(parameter->getValue().toString(),
             std::string("comp.getResults().getTable(\"out 1.txt\").getElementAt(\"MAX stress\")"));
    QVERIFY(FHistory::instance()->undo());
    QVERIFY(!parameter);
    QCOMPARE(FHistory::instance()->stepCount(), before);
}

QTEST_GUILESS_MAIN(tst_Files)
#include "tst_files.moc"

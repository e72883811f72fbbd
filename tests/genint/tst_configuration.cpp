// SPDX-License-Identifier: Apache-2.0
#include "fconfigurationgenint.h"
#include "fdefinitiongenint.h"
#include "ffilevalues.h"
#include "fgenintcommandfile.h"
#include "fgenintcomputation.h"
#include "fgenintwriter.h"
#include "fhistory.h"
#include "fini.h"
#include "fio.h"
#include "fmarloctrl.h"
#include "modeltest.h"

#include <QDir>
#include <QtTest>
#include <unistd.h>

class tst_Configuration : public QObject
{
    Q_OBJECT
    ModelTest mModel;

    static std::shared_ptr<FConfigurationGenInt> configuration(const char *name = "c")
    {
        return ModelTest::object<FConfigurationGenInt>(name);
    }
    static QString entry(const char *path)
    {
        const auto found = configuration()->findEntry(path);
        return found ? Q(found->getValue().toString()) : QString("none");
    }
    static void script(const QString &text)
    {
        const QStringList errors = ModelTest::run(text);
        if (!errors.isEmpty())
            qFatal("%s", qPrintable(errors.join('\n')));
    }

private Q_SLOTS:
    void init() { mModel.start(); }
    void pendingValues();
    void valuesByName();
    void kinds_data();
    void kinds();
    void cycles();
    void copies();
    void dynamicAttributes();
    void importedFile();
    void parse_data();
    void parse();
    void preview();
    void writeMessages();
    void writtenFiles();
    void refusedNames_data();
    void refusedNames();
};

void tst_Configuration::pendingValues()
{
    // A configuration may come before its definition.
    script("genericIntegrationConfiguration c(true) { .setEntry(\"g|a\",5); .setEntry(\"x\",1);"
           " .setEntry(\"b\",\"te\\\"xt\\\"\"); }");
    const QString alone = FProject::instance()->text();
    QVERIFY(configuration()->getRootEntries().empty());
    QVERIFY(FHistory::instance()->undo()); // each is a step
    QVERIFY(!FProject::instance()->text().contains("\"b\""));
    QVERIFY(FHistory::instance()->redo());
    QCOMPARE(FProject::instance()->text(), alone);
    mModel.start();
    script(alone);
    QCOMPARE(FProject::instance()->text(), alone);
    script("genericIntegrationDefinition d() { .addEntry(\"g|a\",1); .addEntry(\"b\",\"\");"
           " .addEntry(\"c\",3); }");
    ModelTest::log();
    const size_t steps = FHistory::instance()->stepCount();
    configuration()->setDefinition(
        FExpr<FDefinitionCustom>(ModelTest::object<FDefinitionGenInt>("d")));
    QCOMPARE(FHistory::instance()->stepCount(), steps + 1);
    QCOMPARE(entry("g|a"), QString("5"));
    QCOMPARE(ModelTest::value("c.getEntry(\"b\")"), QString("te\"xt\""));
    QCOMPARE(entry("c"), QString("3"));
    const QStringList log = ModelTest::log();
    QCOMPARE(log, QStringList{"Configuration|c: no entry x in definition d|value dropped"});
    QVERIFY(FHistory::instance()->undo());
    QVERIFY(configuration()->getRootEntries().empty());
    QVERIFY(FHistory::instance()->redo());
    QCOMPARE(entry("g|a"), QString("5"));
    QVERIFY(ModelTest::run("c.setEntry(\"g\",1);")[0].contains("is a group"));
    QVERIFY(ModelTest::run("c.setEntry(\"nix\",1);")[0].contains("no entry nix"));
    // Another case will do unless there is an entry of that very name.
    script("d.addEntry(\"C\",4); c.setEntry(\"G|A\",6); c.setEntry(\"C\",7);");
    QCOMPARE(entry("g|a"), QString("6"));
    QCOMPARE(ModelTest::value("c.getEntry(\"B\")"), QString("te\"xt\""));
    QCOMPARE(entry("c"), QString("3"));
    QCOMPARE(entry("C"), QString("7"));
}

void tst_Configuration::valuesByName()
{
    script("genericIntegrationDefinition d() { .addEntry(\"g|a\",1); .addEntry(\"b\",2); }"
           "genericIntegrationDefinition e() { .addEntry(\"g|a\",10); .addEntry(\"z\",20); }"
           "genericIntegrationConfiguration c() { .setDefinition(d); .setEntry(\"g|a\",5);"
           " .setEntry(\"b\",6); }");
    const auto oldB = configuration()->findEntry("b")->getEntryDefinition().getExpr();
    script("c.setDefinition(e);");
    QCOMPARE(entry("g|a"), QString("5")); // kept by name
    QCOMPARE(entry("z"), QString("20"));
    // A vanished entry keeps its stale definition, unseen.
    QCOMPARE(configuration()->findEntry("b")->getEntryDefinition().getExpr(), oldB);
    QCOMPARE(configuration()->getVisibleRootEntries().size(), size_t(2));
    QCOMPARE(configuration()->getEntryMap().size(), size_t(3));
    script("c.setDefinition(d);");
    QCOMPARE(entry("b"), QString("6"));
    QVERIFY(FHistory::instance()->undo() && FHistory::instance()->undo());
    QCOMPARE(entry("g|a"), QString("5"));
    QCOMPARE(configuration()->getEntryMap().size(), size_t(3));
    QVERIFY(configuration()->getEntryMap().count("b"));
}

void tst_Configuration::kinds_data()
{
    QTest::addColumn<QString>("initial");
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("ok");
    QTest::newRow("whole for real") << "2.5"
                                    << "3" << true;
    QTest::newRow("real for whole") << "2"
                                    << "3.5" << true;
    QTest::newRow("text for real") << "2.5"
                                   << "\"3\"" << false;
    QTest::newRow("number for text") << "\"x\""
                                     << "3" << false;
    QTest::newRow("truth for text") << "\"x\""
                                    << "true" << false;
    QTest::newRow("parameter") << "2.5"
                               << "p" << true;
    QTest::newRow("expression") << "2.5"
                                << "2*p + 1" << true;
    QTest::newRow("file for text") << "\"x\""
                                   << "inputFile(\"a\",\"b/\")" << true;
    QTest::newRow("word") << "2.5"
                          << "nobody" << false;
    QTest::newRow("nothing") << "2.5"
                             << "nullptr" << true;
}

void tst_Configuration::kinds()
{
    QFETCH(QString, initial);
    QFETCH(QString, value);
    QFETCH(bool, ok);
    script("parameter p(4.0); genericIntegrationDefinition d() { .addEntry(\"e\"," + initial +
           "); } genericIntegrationConfiguration c() { .setDefinition(d); }");
    const QString before = FProject::instance()->text();
    const QStringList errors = ModelTest::run("c.setEntry(\"e\"," + value + ");");
    QCOMPARE(errors.isEmpty(), ok);
    if (ok)
        QCOMPARE(entry("e").remove(' '), value.remove(' '));
    else
        QCOMPARE(FProject::instance()->text(), before);
}

void tst_Configuration::cycles()
{
    script("genericIntegrationDefinition d() { .addEntry(\"e\",1.0); }"
           "genericIntegrationConfiguration c() { .setDefinition(d); }"
           "genericIntegrationComputation comp() { .setConfiguration(c); }"
           "parameter p(comp.getResults().getDataAt(0,0));");
    for (const char *value : {"p", "comp.getResults().getDataAt(0,0) + 1"}) {
        const QStringList errors = ModelTest::run(QString("c.setEntry(\"e\",%1);").arg(value));
        QVERIFY2(errors.size() == 1 && errors[0].contains("cyclic dependency"),
                 qPrintable(errors.join('\n')));
        QCOMPARE(entry("e"), QString("1.0"));
    }
}

void tst_Configuration::copies()
{
    script("parameter p(4.0); genericIntegrationDefinition d() { .addEntry(\"a\",1);"
           " .addEntry(\"g|b\",2); }"
           "genericIntegrationConfiguration c() { .setDefinition(d); .setEntry(\"a\",7);"
           " .setEntry(\"g|b\",p); }");
    const QString before = FProject::instance()->text();
    const auto copy = std::dynamic_pointer_cast<FConfigurationGenInt>(configuration()->clone());
    QVERIFY(copy && copy->isRegistered() && copy->getName() != "c");
    QCOMPARE(copy->findEntry("a")->getValue().toString(), std::string("7"));
    QCOMPARE(copy->findEntry("g|b")->getValue().toString(), std::string("p"));
    QVERIFY(copy->findEntry("a")->getValue().getExpr() !=
            configuration()->findEntry("a")->getValue().getExpr());
    QVERIFY(FHistory::instance()->undo());
    QCOMPARE(FProject::instance()->text(), before);
}

void tst_Configuration::dynamicAttributes()
{
    script("genericIntegrationDefinition d() { .addEntry(\"z\",1.5); .addEntry(\"hid\",2);"
           " .addEntry(\"g|x\",3); .addEntry(\"a\",\"t\"); }"
           "genericIntegrationConfiguration c() { .setDefinition(d); }");
    const auto d = ModelTest::object<FDefinitionGenInt>("d");
    d->rootEntry("hid")->setFlags(true, true);
    d->rootEntry("a")->setFlags(false, false);
    std::vector<std::shared_ptr<FAttribCmd>> list;
    configuration()->getDynamicAttributes(list);
    QCOMPARE(list.size(), size_t(2)); // no hidden one, no group, in the definition's order
    QCOMPARE(list[0]->info().title, std::string("z"));
    QCOMPARE(list[1]->info().title, std::string("a"));
    QCOMPARE(list[0]->info().category, std::string("Configuration"));
    QVERIFY(list[0]->info().attrAsExpr && !list[1]->info().attrAsExpr);
    QCOMPARE(list[0]->info().args[0].type, std::string("FDouble"));
    QCOMPARE(list[0]->getCurrentValue().toString(), std::string("1.5"));
    configuration()->setDefinition(nullptr);
    list.clear();
    configuration()->getDynamicAttributes(list);
    QVERIFY(list.empty());
}

void tst_Configuration::importedFile()
{
    const char *key = "OVDL/import/path";
    FIni().setValue(key, "before");
    QVERIFY(!configuration());
    const auto import = [](const std::string &name) {
        return FConfigurationGenInt::mpNull->importGenIntDefinition(name);
    };
    QVERIFY(!import("")); // nobody to ask: as if cancelled
    QCOMPARE(FIni().value(key, "").toString(), QString("before"));
    std::string text, title;
    FIO::instance()->setBackend([&](QWidget *, const FIO::Request &request) {
        text = request.text;
        title = request.title;
        return 0;
    });
    qputenv("MODEL_FOLDER", QFile::encodeName(QDir(mModel.path("")).absolutePath()));
    QVERIFY(!import("$MODEL_FOLDER/none.ovdl"));
    const QString none = QDir(mModel.path("")).absolutePath() + "/none.ovdl";
    QCOMPARE(Q(text), "Cannot read file " + none + ":\nNo such file or directory.");
    QCOMPARE(title, FMarloCtrl::instance()->applicationName());
    QCOMPARE(FIni().value(key, "").toString(), none); // expanded, and kept all the same
    QVERIFY(!import(S(QDir(mModel.path("")).absolutePath())));
    QVERIFY(text.find("Cannot read file") == 0);
    FIO::instance()->setBackend(nullptr);
    ModelTest::write(none, "<ovdl><definition name=\"d\"><entry name=\"e\" default=\"1\"/>"
                           "</definition></ovdl>");
    QCOMPARE(ModelTest::value("importGenIntDefinition(\"$MODEL_FOLDER/none.ovdl\")"), QString("d"));
    QVERIFY(bool(ModelTest::object<FDefinitionGenInt>("d")));
}

void tst_Configuration::parse_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("windows");
    QTest::addColumn<bool>("preview");
    QTest::addColumn<QString>("expected");
    QTest::newRow("no tags") << "a\r\nb\\n" << false << false << "a\r\nb\\n";
    QTest::newRow("forced ends") << "a\nb\r\n" << true << false << "a\r\nb\r\r\n";
    QTest::newRow("case, indices")
        << "<ENTRY>G|Len</ENTRY>,<entry>g|len[0]</entry>" << false << false << "2.5,";
    QTest::newRow("unclosed") << "a<entry>t</entry>b<entry>t" << false << false << "axb";
    QTest::newRow("group") << "<entry>g</entry>" << false << false << "SHOULD_BE_EXPORTED";
    QTest::newRow("file") << "<entry>Exports|in.dat</entry>" << false << false << "in.dat";
    QTest::newRow("run pending") << "<entry>late</entry>" << false << true
                                 << "comp.getResults().getResultFileName(\"a/b\")";
}

void tst_Configuration::parse()
{
    QFETCH(QString, text);
    QFETCH(bool, windows);
    QFETCH(bool, preview);
    script("genericIntegrationComputation comp();"
           "genericIntegrationCommandFile f() { .setFileName(\"in.dat\"); }"
           "genericIntegrationDefinition d() { .addEntry(\"g|len\",2.5); .addEntry(\"t\",\"x\");"
           " .addEntry(\"late\",\"\"); .setFiles([f]); }"
           "genericIntegrationConfiguration c() { .setDefinition(d);"
           " .setEntry(\"late\",comp.getResults().getResultFileName(\"a\\b\")); }");
    FGenIntWriter::EntryMap entries = configuration()->getEntryMap();
    entries.emplace("Exports|in.dat", FExpr<FObject>(ModelTest::object<FGenIntFile>("f")));
    QString out = "kept ";
    QTextStream stream(&out);
    stream.seek(out.size());
    FGenIntWriter().parse(stream, text, entries, FExpr<FConfigurationGenInt>(configuration()),
                          preview, windows);
    QTEST(out.mid(5), "expected");
    const QStringList log = ModelTest::log();
    if (text.contains("[0]"))
        QCOMPARE(log, QStringList{"Generic Integration Writer|Entry g|len[0] is not part of "
                                  "configuration c|Entry skipped"});
    else
        QCOMPARE(log, QStringList());
}

void tst_Configuration::preview()
{
    script("genericIntegrationCommandFile f() { .setFileName(\"templates.dat\");"
           " .setContent(\"<entry>a</entry>|<entry>templates.dat</entry>|"
           "<entry>Exports|templates.dat</entry>\n\"); .setForceWindowsLineEndings(true); }"
           "genericIntegrationDefinition d() { .addEntry(\"a\",\"größe\"); .setFiles([f]); }"
           "genericIntegrationConfiguration c() { .setDefinition(d); }");
    const auto shown = configuration()->getPreview();
    QCOMPARE(shown.size(), size_t(1));
    // The bare name is cut as if it carried the group; the full one is unknown.
    QCOMPARE(Q(shown.at("templates.dat")), QStringLiteral("größe|s.dat|\n"));
    QCOMPARE(ModelTest::log(), QStringList{"Generic Integration Writer|Entry Exports|templates.dat "
                                           "is not part of configuration c|Entry skipped"});
    QVERIFY(QDir(mModel.path("")).isEmpty());
}

void tst_Configuration::writeMessages()
{
    const QString folder = mModel.path("run/");
    FGenIntWriter writer;
    std::map<std::string, std::string> texts;
    QVERIFY(!writer.write(nullptr, folder) && !writer.write(nullptr, texts));
    const QString lone = "FGenIntWriter|No configuration found|Exporting command files aborted";
    QCOMPARE(ModelTest::log(), QStringList({lone, lone}));
    script("genericIntegrationConfiguration c();");
    const FExpr<FConfigurationGenInt> c(configuration());
    QVERIFY(!writer.write(c, folder) && !writer.write(c, texts));
    const QString none = "FGenIntWriter|No definition found|Exporting command files aborted";
    QCOMPARE(ModelTest::log(), QStringList({none, none}));
    // Skipped entries come in the order of files and tags; the first file that can't be opened
    // ends it, and what was written stays.
    script("genericIntegrationCommandFile f1() { .setFileName(\"one\");"
           " .setContent(\"<entry>y</entry>1<entry>x</entry><entry>x</entry>\"); }"
           "genericIntegrationCommandFile f2() { .setFileName(\"dir\"); .setContent(\"2\"); }"
           "genericIntegrationCommandFile f3() { .setFileName(\"three\");"
           " .setContent(\"<entry>z</entry>\"); }"
           "genericIntegrationDefinition d() { .setFiles([f1,f2,f3]); } c.setDefinition(d);");
    QDir().mkpath(folder + "dir");
    QVERIFY(!writer.write(c, folder));
    const auto skipped = [](const char *name) {
        return QString("Generic Integration Writer|Entry %1 is not part of configuration c|Entry "
                       "skipped")
            .arg(name);
    };
    QCOMPARE(ModelTest::log(),
             QStringList({skipped("y"), skipped("x"), skipped("x"),
                          "Generic Integration Writer|Could not open file " + folder +
                              "dir for writing.|Writing process aborted."}));
    QCOMPARE(ModelTest::read(folder + "one"), QByteArray("1"));
    QVERIFY(!QFile::exists(folder + "three"));
}

void tst_Configuration::writtenFiles()
{
    script("genericIntegrationCommandFile f1() { .setFileName(\"a/b/Ö x.dat\");"
           " .setForceWindowsLineEndings(true);"
           " .setContent(\"<entry>g|v</entry> größe\n<ENTRY>Exports|A/B/ö X.DAT</ENTRY>\n\"); }"
           "genericIntegrationCommandFile f2() { .setFileName(\"empty\"); }"
           "genericIntegrationCommandFile f3() { .setFileName(\"w\\\\x\"); .setContent(\"3\"); }"
           "genericIntegrationDefinition d() { .addEntry(\"g|v\",0.1); .setFiles([f1,f2,f3]); }"
           "genericIntegrationConfiguration c() { .setDefinition(d);"
           " .setEntry(\"g|v\",1.0/3); }");
    const QString folder = mModel.path("run/");
    QVERIFY(FGenIntWriter().write(FExpr<FConfigurationGenInt>(configuration()), folder));
    QCOMPARE(ModelTest::log(), QStringList());
    QCOMPARE(QString::fromUtf8(ModelTest::read(folder + QStringLiteral("a/b/Ö x.dat"))),
             QStringLiteral("0.3333333333333333 größe\r\na/b/Ö x.dat\r\n"));
    QCOMPARE(ModelTest::read(folder + "empty"), QByteArray());
    QCOMPARE(ModelTest::object<FGenIntFile>("f3")->getFileName(), QString("w\\\\x"));
    QCOMPARE(ModelTest::read(folder + "w\\\\x"), QByteArray("3"));
    ModelTest::object<FGenIntFile>("f2")->setContent(QString::fromLatin1("ab\0cd", 5));
    QVERIFY(FGenIntWriter().write(FExpr<FConfigurationGenInt>(configuration()), folder));
    QCOMPARE(ModelTest::read(folder + "empty"), QByteArray("ab")); // a zero ends the file
}

void tst_Configuration::refusedNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("up") << "../../x";
    QTest::newRow("up within") << "a/../../x";
    QTest::newRow("absolute") << "absolute";
    QTest::newRow("link to a folder") << "out/x";
    QTest::newRow("link to a file") << "file";
    QTest::newRow("nothing") << "";
}

void tst_Configuration::refusedNames()
{
    QFETCH(QString, name);
    if (name == "absolute")
        name = mModel.path("x");
    const QString folder = mModel.path("run/in/");
    QDir().mkpath(folder);
    QDir().mkpath(mModel.path("elsewhere"));
    ModelTest::write(mModel.path("precious"), "p");
    QVERIFY(QFile::link(mModel.path("elsewhere"), folder + "out"));
    QVERIFY(QFile::link(mModel.path("precious"), folder + "file"));
    script("genericIntegrationCommandFile f() { .setContent(\"bad\"); }"
           "genericIntegrationDefinition d() { .setFiles([f]); }"
           "genericIntegrationConfiguration c() { .setDefinition(d); }");
    ModelTest::object<FGenIntFile>("f")->setFileName(name);
    QVERIFY(!FGenIntWriter().write(FExpr<FConfigurationGenInt>(configuration()), folder));
    QCOMPARE(ModelTest::log(),
             QStringList{"Generic Integration Writer|Could not open file " + folder + name +
                         " for writing.|Writing process aborted."});
    QCOMPARE(ModelTest::read(mModel.path("precious")), QByteArray("p"));
    QVERIFY(QDir(mModel.path("elsewhere")).isEmpty());
    QVERIFY(!QFile::exists(mModel.path("x")) && !QFile::exists(mModel.path("run/x")));
}

QTEST_GUILESS_MAIN(tst_Configuration)
#include "tst_configuration.moc"

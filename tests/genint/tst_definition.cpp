// SPDX-License-Identifier: Apache-2.0
#include "fcmdmanager.h"
#include "fconfigurationgenint.h"
#include "fdefinitiongenint.h"
#include "fgenintcommandfile.h"
#include "fgenintcomputation.h"
#include "fgenintdefinitionparser.h"
#include "fgenintresultsfile.h"
#include "fhistory.h"
#include "fimportrules.h"
#include "fini.h"
#include "fio.h"
#include "fmarloctrl.h"
#include "fobjectmanager.h"
#include "fovdldefinitionparser.h"
#include "modeltest.h"

#include <QtTest>

namespace {
using Definition = std::shared_ptr<FDefinitionGenInt>;

Definition definition(const char *name = "d") { return ModelTest::object<FDefinitionGenInt>(name); }

FExpr<FDefinitionGenInt> import(const QString &path)
{
    return FConfigurationGenInt::mpNull->importGenIntDefinition(S(path));
}

QStringList names(const FDefinitionGenInt::Files &files)
{
    QStringList names;
    for (const auto &file : files)
        names << (file ? Q(file->getName()) : QString("null"));
    return names;
}

/// All that a saved definition tells, apart from the names of its objects.
QStringList description(const Definition &d)
{
    QStringList lines{Q(d->getEntryDefs()).section('\n', 3)};
    for (const auto &handle : d->getFiles()) {
        const auto file = handle.getPtr();
        lines << Q(file->getClass()) + " " + file->getFileName() + " " + file->text() +
                     (file->getForceWindowsLineEndings() ? " forced" : "");
        if (const auto results = std::dynamic_pointer_cast<FGenIntResultsFile>(file))
            lines << Q(results->getValues().toString()) + results->getRegExprSeparator() +
                         QString::number(results->getNumberSeparator()) +
                         QString::number(results->getSpacesAndTabsSeparator());
    }
    const auto place = [&](const FExpr<FGenIntFile> &file) {
        return file ? QString(file->getFileName()) : QString("none");
    };
    return lines << place(d->getCurFile()) << place(d->getLastFile());
}
} // namespace

class tst_Definition : public QObject
{
    Q_OBJECT
    ModelTest mModel;

    Definition rich()
    {
        const QStringList errors = ModelTest::run(QStringLiteral(
            "genericIntegrationCommandFile in1() { .setFileName(\"a b.in\"); }"
            "genericIntegrationResultsFile out() { .setFileName(\"sub/ö.out\");"
            " .setValues([[\"a \"b\" "
            "[c]\",1,-2,\"x\\\",\n]y\",First,\"FFileName\",\"tecplot\",1,4],"
            "[\"größe\",0,0,\"\",Last,\"FDouble\",\"\",0,nullptr]]);"
            " .setRegExprSeparator(\"\\s*[,;\\\"]\"); .setNumberSeparator(false); }"
            "genericIntegrationCommandFile in2() { .setFileName(\"two\"); }"
            "genericIntegrationDefinition d() { .addEntry(\"len\",2.5); .addEntry(\"n\",-3);"
            " .addEntry(\"g|sub|text\",\"\"); .addEntry(\"g|file\",inputFile(\"ä.msh\",\"x/\"));"
            " .addEntry(\"on\",true); .setFiles([in1,out,in2]); .setCurFile(in2);"
            " .setLastFile(out); }"));
        if (!errors.isEmpty())
            qFatal("%s", qPrintable(errors.join('\n')));
        const auto text = definition()->getNameMap().at("g|sub|text").ptr<FEntryDef>();
        text->setDefaultValue(FExprBase(f_make_shared<FString>(
            "line 1\nline \"2\" <&>\t\\\\\" größe 𐐀\r\n=== objects ===\n</ovdl>")));
        text->setFlags(true, false);
        text->setCounts(0, 7);
        text->addDocu("about\n=== objects ===\n</ovdl> & <more>", unsigned(DocuArea::Description));
        ModelTest::object<FGenIntFile>("in1")->setContent(
            QStringLiteral("<entry>len</entry> \\n \"größe\"\r\n=== objects ===\ncurFile : x\n"));
        ModelTest::object<FGenIntFile>("in1")->setForceWindowsLineEndings(true);
        ModelTest::object<FGenIntFile>("out")->setContent("a sample }\n\"");
        return definition();
    }

    QString saved(const Definition &d, const QString &name = "d.ovdl")
    {
        QFile file(mModel.path(name));
        if (!file.open(QIODevice::WriteOnly))
            qFatal("cannot write");
        d->save({}, file);
        file.close();
        return mModel.path(name);
    }

private Q_SLOTS:
    void init() { mModel.start(); }
    void savedText();
    void roundTrip_data();
    void roundTrip();
    void importBesideTheOriginal();
    void keyLines_data();
    void keyLines();
    void damaged_data();
    void damaged();
    void truncated();
    void importsAreData();
    void undoOfImportAndCopy();
    void undoOfStructure();
    void presetTarget();
    void files();
    void deleteFile();
    void renameEntry();
    void removeEntry();
    void references();
    void loadingSuspends();
    void staleness();
};

void tst_Definition::savedText()
{
    const Definition d = rich();
    const QByteArray text = ModelTest::read(saved(d));
    QVERIFY(text.startsWith("<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n"));
    QVERIFY(text.endsWith("\ncurFile : in2\nlastFile : out\n"));
    const QByteArray marker = "\n" + FOvdlDefinitionParser::smObjectArea.toUtf8() + "\n";
    const int objects = text.lastIndexOf(marker);
    QVERIFY(objects > 0);
    const int first = text.indexOf("genericIntegrationCommandFile in1() {");
    const int second = text.indexOf("genericIntegrationResultsFile out() {");
    const int third = text.indexOf("genericIntegrationCommandFile in2() {");
    QVERIFY(objects < first && first < second && second < third);
    // Without files
    QCOMPARE(ModelTest::run("genericIntegrationDefinition e();"), QStringList());
    QVERIFY(ModelTest::read(saved(definition("e")))
                .endsWith(marker + "curFile : NULL\nlastFile : NULL\n"));
    // A file that the definition no longer holds stays current.
    d->removeFile(d->getCurFile());
    QVERIFY(ModelTest::read(saved(d)).contains("\ncurFile : in2\n"));
    // More objects come behind the files.
    QFile file(mModel.path("more"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    d->save({FExpr<FManaged>(definition("e"))}, file);
    file.close();
    const QByteArray more = ModelTest::read(mModel.path("more"));
    QVERIFY(more.indexOf("genericIntegrationDefinition e()") > more.indexOf("ResultsFile out()"));
}

void tst_Definition::roundTrip_data()
{
    QTest::addColumn<bool>("windows");
    QTest::newRow("as written") << false;
    QTest::newRow("with Windows line ends") << true;
}

void tst_Definition::roundTrip()
{
    QFETCH(bool, windows);
    const Definition d = rich();
    const QStringList before = description(d);
    const QString path = saved(d);
    QByteArray text = ModelTest::read(path);
    if (windows)
        ModelTest::write(path, text.replace("\n", "\r\n"));
    FObjectManager::instance()->clear();
    const auto read = import(path);
    QCOMPARE(ModelTest::log(), QStringList());
    QVERIFY(bool(read));
    QCOMPARE(read->getName(), std::string("d"));
    QCOMPARE(description(read.getPtr()), before);
    const auto entry = read->getNameMap().at("g|sub|text").ptr<FEntryDef>();
    QVERIFY(entry->isHidden() && !entry->isExpr());
    QVERIFY(entry->minimum() == 0 && entry->maximum() == 7);
    QCOMPARE(entry->getDocuString(1), std::string("about\n=== objects ===\n</ovdl> & <more>"));
    for (const auto &file : read->getFiles())
        QVERIFY(file->isRegistered());
    if (!windows)
        QCOMPARE(ModelTest::read(saved(read.getPtr())), text);
}

void tst_Definition::importBesideTheOriginal()
{
    const Definition d = rich();
    const QStringList before = description(d);
    const auto read = import(saved(d));
    QVERIFY(bool(read) && read->getName() != "d");
    QCOMPARE(description(read.getPtr()), before); // bound to its own files
    QVERIFY(read->getCurFile().getPtr() != d->getCurFile().getPtr());
    read->getCurFile()->setContent("changed");
    QCOMPARE(description(d), before);
}

void tst_Definition::keyLines_data()
{
    QTest::addColumn<QByteArray>("end");
    QTest::addColumn<QString>("current");
    QTest::addColumn<QString>("last");
    QTest::newRow("null") << QByteArray("curFile : NULL\nlastFile : NULL\n") << "f1"
                          << "none";
    QTest::newRow("both") << QByteArray("curFile : f2\nlastFile : f1\n") << "f2"
                          << "f1";
    QTest::newRow("no line end") << QByteArray("curFile : f1\nlastFile : f2") << "f1"
                                 << "f2";
    QTest::newRow("blank ends") << QByteArray("curFile : f2 f1\n") << "f2"
                                << "none";
    QTest::newRow("unknown") << QByteArray("curFile : x\nlastFile : y\n") << "f1"
                             << "none";
    QTest::newRow("case") << QByteArray("curFile : F2\nlastFile : F2\n") << "f1"
                          << "none";
    QTest::newRow("missing") << QByteArray() << "f1"
                             << "none";
}

void tst_Definition::keyLines()
{
    QFETCH(QByteArray, end);
    const auto text = [&](const QByteArray &files) {
        return "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<ovdl><definition name=\"d\"/>"
               "</ovdl>\n\n=== objects ===\n" +
               files + end;
    };
    ModelTest::write(mModel.path("x"), text("genericIntegrationCommandFile f1() {}\n"
                                            "genericIntegrationResultsFile f2() {}\n"));
    auto read = import(mModel.path("x"));
    QCOMPARE(ModelTest::log(), QStringList());
    QTEST(read->getCurFile() ? Q(read->getCurFile()->getName()) : QString("none"), "current");
    QTEST(read->getLastFile() ? Q(read->getLastFile()->getName()) : QString("none"), "last");
    ModelTest::write(mModel.path("x"), text(""));
    read = import(mModel.path("x"));
    QVERIFY(!read->getCurFile() && !read->getLastFile() && read->getFiles().empty());
    QCOMPARE(ModelTest::log(), QStringList());
}

void tst_Definition::damaged_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("message");
    const auto inside = [](const QByteArray &entries) {
        return "<ovdl><definition name=\"d\"><entry name=\"ok\" default=\"1\"/>" + entries +
               "</definition></ovdl>\n";
    };
    QTest::newRow("empty") << QByteArray() << "Premature end of document";
    QTest::newRow("no XML") << QByteArray("genericIntegrationDefinition d();") << "line 1, column";
    QTest::newRow("document type")
        << QByteArray("<!DOCTYPE x [<!ENTITY a \"b\">]><ovdl><definition/></ovdl>")
        << "expected no document type, found one";
    QTest::newRow("other root") << QByteArray("<svg/>") << "expected the element ovdl, found svg";
    QTest::newRow("no definition") << QByteArray("<ovdl/>") << "expected the element definition";
    QTest::newRow("not UTF-8") << inside("<entry name=\"h\xF6he\" default=\"1\"/>")
                               << "expected UTF-8 text";
    QTest::newRow("no name") << inside("<entry default=\"1\"/>") << "expected a name for the entry";
    QTest::newRow("no default") << inside("<entry name=\"e\"/>")
                                << "expected a default value for entry e";
    QTest::newRow("bad default") << inside("<entry name=\"e\" default=\"1 +\"/>")
                                 << "expected a default value for entry e, found 1 +";
    QTest::newRow("other element")
        << inside("<thing/>") << "expected the element entry or group, found thing";
    QTest::newRow("entry in entry")
        << inside("<entry name=\"e\" default=\"1\"><entry name=\"f\" default=\"2\"/></entry>")
        << "expected the end of entry e, found entry";
    QTest::newRow("unknown entity") << inside("<entry name=\"&a;\" default=\"1\"/>") << "line 1";
    QTest::newRow("nested too deep") << inside(QByteArray("<group name=\"g\">").repeated(101) +
                                               QByteArray("</group>").repeated(101))
                                     << "groups nested deeper than 100";
    QTest::newRow("nested by far too deep")
        << inside(QByteArray("<group name=\"g\">").repeated(100000)) << "deeper than 100";
    QTest::newRow("text behind") << inside("").trimmed() + "genericIntegrationCommandFile f() {}"
                                 << "Extra content";
}

void tst_Definition::damaged()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, message);
    ModelTest::write(mModel.path("x"), text);
    const size_t objects = FObjectManager::instance()->count();
    QVERIFY(!import(mModel.path("x")));
    const QStringList log = ModelTest::log();
    QVERIFY2(log.size() == 1 && log[0].contains(message), qPrintable(log.join('\n')));
    QCOMPARE(FObjectManager::instance()->count(), objects);
    QVERIFY(!FHistory::instance()->canUndo());
    // The same in place: what was there stays.
    QCOMPARE(ModelTest::run("genericIntegrationDefinition own() { .addEntry(\"e\",1); }"),
             QStringList());
    const std::string before = definition("own")->getEntryDefs();
    if (!text.isEmpty())
        definition("own")->setEntryDefsFromDB(text.toStdString());
    QCOMPARE(definition("own")->getEntryDefs(), before);
}

// Whatever is cut off: never a crash, and never a part without a message.
void tst_Definition::truncated()
{
    const QByteArray text = ModelTest::read(saved(rich()));
    const int structure = text.indexOf("</ovdl>\n\n=== objects ===") + 7;
    QVERIFY(structure > 7);
    for (int size = 0; size <= text.size(); size += size < structure ? 13 : 61) {
        mModel.start();
        ModelTest::write(mModel.path("x"), text.left(size));
        const auto read = import(mModel.path("x"));
        const QStringList log = ModelTest::log();
        QVERIFY2(bool(read) == log.isEmpty(), qPrintable(QString::number(size)));
        if (read) {
            QVERIFY(size >= structure);
            QCOMPARE(int(read->getNameMap().size()), 7);
        } else {
            QCOMPARE(FObjectManager::instance()->count(), size_t(1)); // the baseline
            QVERIFY(!FHistory::instance()->canUndo());
        }
    }
    for (int depth : {100, 101}) {
        mModel.start();
        QCOMPARE(ModelTest::run("genericIntegrationDefinition deep();"), QStringList());
        const QStringList errors =
            ModelTest::run("deep.addEntry(\"" + QString("g|").repeated(depth - 1) + "e\",1);");
        QCOMPARE(errors.size(), depth - 100);
        if (depth == 100) {
            const std::string before = definition("deep")->getEntryDefs();
            const auto read = import(saved(definition("deep")));
            QVERIFY(bool(read));
            QCOMPARE(Q(read->getEntryDefs()).section('\n', 3), Q(before).section('\n', 3));
        } else {
            QVERIFY(errors[0].contains("nested deeper than 100"));
            QVERIFY(definition("deep")->getNameMap().empty());
        }
    }
}

/// Every command there is, said by a definition that is imported: what only fills a template may
/// pass, everything else is refused with its place, and nothing is kept.
void tst_Definition::importsAreData()
{
    QStringList mayBeSaid = {"FManaged.addDocu",
                             "FGenIntFile.setContent",
                             "FGenIntFile.setEncoding",
                             "FGenIntFile.setSource",
                             "FGenIntFile.setFileName",
                             "FGenIntFile.setForceWindowsLineEndings",
                             "FGenIntCommandFile.genericIntegrationCommandFile",
                             "FGenIntResultsFile.genericIntegrationResultsFile",
                             "FGenIntResultsFile.setValues",
                             "FGenIntResultsFile.setNumberSeparator",
                             "FGenIntResultsFile.setSpacesAndTabsSeparator",
                             "FGenIntResultsFile.setRegExprSeparator",
                             "FGenIntResultsFile.setRegExpSeparator",
                             "FGenIntResultsFile.setSpaceSeparator",
                             "FGenIntResultsFile.setTabSeaparator",
                             ".inputFile",
                             ".resultsFileName",
                             ".fileName",
                             ".geometryExport"};
    const auto imported = [&](const QString &entry, const QString &objects) {
        ModelTest::write(mModel.path("x.ovdl"),
                         ("<ovdl><definition name=\"d\"><entry name=\"e\" default=\"" + entry +
                          "\"/></definition></ovdl>\n\n=== objects ===\n"
                          "genericIntegrationResultsFile own() {\n" +
                          objects + "\n}\n")
                             .toUtf8());
        return bool(import(mModel.path("x.ovdl")));
    };
    QCOMPARE(ModelTest::run("parameter p(1); genericIntegrationDefinition d();"
                            "genericIntegrationConfiguration k() { .setDefinition(d); }"
                            "genericIntegrationComputation c() { .setConfiguration(k); "
                            ".setApplication(\"true\"); }"),
             QStringList());
    const QString before = FProject::instance()->text();
    QStringList allowed;
    for (const auto &info : FCmdManager::instance()->all()) {
        const QString name = Q(info->name), full = Q(info->receiverName() + "." + info->name);
        if (FGenIntDefinitionParser::rules().allows(*info))
            allowed << full;
        const bool isCreator = info->kind == FCommandKind::Creator;
        const bool isGlobal = info->kind == FCommandKind::Global;
        const QString foreign = isCreator  ? name + " y();"
                                : isGlobal ? ".setFileName(" + name + "(\"../x\"));"
                                           : ".setContent(c." + name + "(1));";
        ModelTest::log();
        if (mayBeSaid.contains(full) && (isCreator || isGlobal))
            continue;
        QVERIFY2(!imported("1", foreign), qPrintable(foreign));
        const QString log = ModelTest::log().join('\n');
        QVERIFY2(log.contains("x.ovdl:5:") && log.contains(name), qPrintable(log));
        QVERIFY2(isCreator || !imported(isGlobal ? name + "()" : "c." + name + "()", ""),
                 qPrintable(full));
        QCOMPARE(FProject::instance()->text(), before);
    }
    allowed.sort();
    mayBeSaid.sort();
    QCOMPARE(allowed, mayBeSaid);
    // Names of the project mean nothing, and the same text is the same data in every project.
    QVERIFY(!imported("p", ""));
    // A definition that imports itself is one of those.
    ModelTest::log();
    QCOMPARE(ModelTest::run("importGenIntDefinition(\"" + mModel.path("x.ovdl") + "\");").size(),
             2);
    QCOMPARE(FProject::instance()->text(), before);
    QVERIFY(imported("2*(1+sqrt(4))", ".setFileName(\"f\"); .setSpaceSeparator(true);"));
    QCOMPARE(FProject::instance()->text().count("setFiles"), before.count("setFiles") + 1);
}

void tst_Definition::undoOfImportAndCopy()
{
    const QString path = saved(rich());
    FProject::instance()->clear();
    const QString empty = FProject::instance()->text();
    const auto read = import(path);
    QVERIFY(bool(read));
    const QStringList before = description(read.getPtr());
    QCOMPARE(FHistory::instance()->stepCount(), size_t(1));
    QCOMPARE(ModelTest::run("d.addEntry(\"more\",1);"), QStringList());
    QVERIFY(FHistory::instance()->undo());
    QCOMPARE(description(read.getPtr()), before);
    const QString full = FProject::instance()->text();
    QVERIFY(FHistory::instance()->undo());
    QCOMPARE(FProject::instance()->text(), empty);
    QVERIFY(FHistory::instance()->redo());
    QCOMPARE(FProject::instance()->text(), full);

    const auto copy = std::dynamic_pointer_cast<FDefinitionGenInt>(read->clone());
    QVERIFY(copy && copy->isRegistered() && copy->getFiles().empty());
    QCOMPARE(description(copy)[0], before[0]);
    const QString copied = FProject::instance()->text();
    QCOMPARE(ModelTest::run(Q(copy->getName()) + ".addEntry(\"more\",1);"), QStringList());
    QVERIFY(FHistory::instance()->undo());
    QCOMPARE(FProject::instance()->text(), copied);
    QVERIFY(FHistory::instance()->undo());
    QCOMPARE(FProject::instance()->text(), full);
}

void tst_Definition::undoOfStructure()
{
    QCOMPARE(ModelTest::run("genericIntegrationDefinition d() { .addEntry(\"a\",1);"
                            " .addEntry(\"g|b\",2); }"
                            "genericIntegrationConfiguration c() { .setDefinition(d);"
                            " .setEntry(\"a\",5); .setEntry(\"g|b\",6); }"),
             QStringList());
    const QString before = FProject::instance()->text();
    const std::string other =
        "<ovdl><definition><group name=\"g\"><entry name=\"b\" default=\"7\"/>"
        "</group><entry name=\"z\" default=\"8\"/></definition></ovdl>";
    definition()->setEntryDefsFromDB(other);
    const QString after = FProject::instance()->text();
    QVERIFY(after.contains(".setEntry(\"g|b\",6)")); // linked again by name
    QVERIFY(!after.contains(".setEntry(\"a\""));
    QVERIFY(FHistory::instance()->undo());
    QCOMPARE(FProject::instance()->text(), before);
    QVERIFY(FHistory::instance()->redo());
    QCOMPARE(FProject::instance()->text(), after);
}

void tst_Definition::presetTarget()
{
    const Definition d = rich();
    d->save(); // nobody to ask: nothing is written, nothing is said
    QCOMPARE(ModelTest::log(), QStringList());
    FDefinitionCustom::presetSaveFile(mModel.path("preset.ovdl"));
    d->save();
    QCOMPARE(ModelTest::read(mModel.path("preset.ovdl")), ModelTest::read(saved(d)));
    FDefinitionCustom::presetSaveFile("/dev/full");
    d->save();
    const QStringList log = ModelTest::log();
    QVERIFY2(log.size() == 1 && log[0].contains("/dev/full"), qPrintable(log.join('\n')));
    FDefinitionCustom::presetSaveFile(QString());
}

void tst_Definition::files()
{
    const Definition d = FDefinitionGenInt::create(nullptr, "d", nullptr);
    const auto in = FGenIntCommandFile::create("in");
    const auto out = FGenIntResultsFile::create("out");
    d->addFile(nullptr);
    QVERIFY(d->getFiles().empty());
    d->addFile(FExpr<FGenIntFile>(out));
    d->addFile(FExpr<FGenIntFile>(in));
    d->addFile(FExpr<FGenIntFile>(out)); // twice is not refused
    QCOMPARE(names(d->getFiles()), QStringList({"out", "in", "out"}));
    QCOMPARE(names(d->getFiles(0)), QStringList({"in"}));
    QCOMPARE(names(d->getFiles(7)), QStringList({"out", "out"}));
    QVERIFY(!d->getCurFile());
    QVERIFY(!d->getFile("")); // though there are files without a name
    out->setFileName("Res.txt");
    QCOMPARE(d->getFile("Res.txt").getPtr(), std::static_pointer_cast<FGenIntFile>(out));
    QVERIFY(!d->getFile("res.txt"));
    QCOMPARE(d->getResultValueFilenames(), (std::vector<std::string>{"Res.txt", "Res.txt"}));
    d->setCurFile(FExpr<FGenIntFile>(out));
    QVERIFY(!d->isCurCommandFile());
    d->removeFile(FExpr<FGenIntFile>(out)); // all of it, and the current file stays
    QCOMPARE(names(d->getFiles()), QStringList({"in"}));
    QVERIFY(d->getFiles(1).empty() && bool(d->getCurFile()));
    QVERIFY(FHistory::instance()->undo());
    QCOMPARE(names(d->getFiles()), QStringList({"out", "in", "out"}));
    d->setFiles(d->getFiles(0)); // its own list
    QCOMPARE(names(d->getFiles()), QStringList({"in"}));
    d->setCurFile(FExpr<FGenIntFile>(in));
    QVERIFY(d->isCurCommandFile());
    d->setInProject(false);
    QVERIFY(!in->isInProject());
    // A file that goes elsewhere leaves the lists, but not while a project loads.
    FManaged::destroy(in, true);
    {
        const FLoadingScope loading;
        QCOMPARE(names(d->getFiles()), QStringList({"null"}));
    }
    QVERIFY(d->getFiles(0).empty() && d->getFiles().empty());
}

void tst_Definition::deleteFile()
{
    const Definition d = rich();
    std::string text, title;
    int answer = 1;
    FIO::instance()->setBackend([&](QWidget *, const FIO::Request &request) {
        text = request.text;
        title = request.title;
        if (request.buttons[0] != "Yes" || request.buttons[1] != "Cancel" ||
            !request.buttons[2].empty() || request.defaultButton != 0 || request.escape != -1)
            text += " with other buttons";
        return answer;
    });
    const FExpr<FGenIntFile> file(d->getFiles()[0]);
    d->deleteFile(file);
    QCOMPARE(text, std::string("Delete template file in1 permanently?"));
    QCOMPARE(title, FMarloCtrl::instance()->applicationName());
    QCOMPARE(d->getFiles().size(), size_t(3));
    answer = 0;
    const QString before = FProject::instance()->text();
    d->deleteFile(file);
    FIO::instance()->setBackend(nullptr);
    QVERIFY(!file && !ModelTest::object<FGenIntFile>("in1"));
    QCOMPARE(names(d->getFiles()), QStringList({"out", "in2"}));
    QVERIFY(FHistory::instance()->undo());
    QCOMPARE(FProject::instance()->text(), before);
}

void tst_Definition::renameEntry()
{
    QCOMPARE(ModelTest::run("genericIntegrationDefinition d() { .addEntry(\"g|a\",1);"
                            " .addEntry(\"g|s|b\",2); .addEntry(\"a\",3); }"
                            "genericIntegrationConfiguration c() { .setDefinition(d);"
                            " .setEntry(\"g|s|b\",9); }"
                            "genericIntegrationCommandFile f(); d.setFiles([f]);"),
             QStringList());
    const auto file = ModelTest::object<FGenIntFile>("f");
    file->setContent("<entry>g|a</entry><ENTRY>G|S|B</entry><entry>a</entry><entry>g</entry>");
    const size_t steps = FHistory::instance()->stepCount();
    const QString before = FProject::instance()->text();
    definition()->getNameMap().at("g").ptr<FEntryDef>()->setName("big group");
    QCOMPARE(file->text(), QString("<entry>big_group|a</entry><entry>big_group|s|b</entry>"
                                   "<entry>a</entry><entry>big_group</entry>"));
    const QString after = FProject::instance()->text();
    QVERIFY(after.contains(".setEntry(\"big_group|s|b\",9)"));
    QCOMPARE(FHistory::instance()->stepCount(), steps + 1);
    QVERIFY(FHistory::instance()->undo());
    QCOMPARE(FProject::instance()->text().split('\n'), before.split('\n'));
    QVERIFY(FHistory::instance()->redo());
    QCOMPARE(FProject::instance()->text(), after);
    QCOMPARE(ModelTest::run("d.renameEntry(\"a\",\"big_group\");"), QStringList());
    QVERIFY(definition()->getNameMap().count("big_group1")); // unique among its siblings
    // Nothing to rename: the text stays.
    const QString text = file->text();
    definition()->updateCommandFiles("a", "a");
    definition()->updateCommandFiles("", "b");
    QCOMPARE(file->text(), text);
}

void tst_Definition::removeEntry()
{
    QCOMPARE(ModelTest::run("genericIntegrationDefinition d() { .addEntry(\"len\",2.5);"
                            " .addEntry(\"g|t\",\"x\"); .addEntry(\"keep\",1); }"
                            "genericIntegrationConfiguration c() { .setDefinition(d); }"
                            "genericIntegrationCommandFile f(); genericIntegrationResultsFile r();"
                            "d.setFiles([f,r]);"),
             QStringList());
    const auto file = ModelTest::object<FGenIntFile>("f");
    const auto sample = ModelTest::object<FGenIntFile>("r");
    const QString text = "<ENTRY>Len</ENTRY> <entry>len</entry> <entry>g|t</entry> "
                         "<entry>g</entry> <entry>keep</entry>";
    file->setContent(text);
    sample->setContent(text);
    const auto entry = [](const char *name) {
        return FExpr<FEntryBase>(definition()->getEntryOfScope(name));
    };
    QVERIFY(!definition()->removeEntry(nullptr));
    QVERIFY(!definition()->removeEntry(entry("g|t"))); // no root
    const QString before = FProject::instance()->text();
    const size_t steps = FHistory::instance()->stepCount();
    QVERIFY(definition()->findAndRemoveEntry(entry("g|t")));
    QVERIFY(definition()->removeEntry(entry("len")));
    QCOMPARE(file->text(), QString("2.5 2.5 x <entry>g</entry> <entry>keep</entry>"));
    QVERIFY(definition()->removeEntry(entry("g"))); // no value to leave behind
    QCOMPARE(file->text(), QString("2.5 2.5 x <entry>g</entry> <entry>keep</entry>"));
    QCOMPARE(sample->text(), text);
    QVERIFY(!definition()->findAndRemoveEntry(nullptr));
    QCOMPARE(FHistory::instance()->stepCount(), steps + 3);
    for (int i = 0; i < 3; ++i)
        QVERIFY(FHistory::instance()->undo());
    QCOMPARE(FProject::instance()->text(), before);
    QVERIFY(ModelTest::run("d.removeEntry(\"none\");")[0].contains("no entry none"));
}

void tst_Definition::references()
{
    QCOMPARE(
        ModelTest::run("genericIntegrationDefinition d() { .addEntry(\"g|a\",1);"
                       " .addEntry(\"b\",1); }"
                       "genericIntegrationCommandFile f() { .setContent(\"<Entry>G|A</entry>\");"
                       " } genericIntegrationResultsFile r() { .setContent("
                       "\"<entry>b</entry>\"); } d.setFiles([f,r]);"),
        QStringList());
    const Definition d = definition();
    QVERIFY(d->commandFileReferencesEntry(d->getEntryOfScope("g|a")));
    QVERIFY(!d->commandFileReferencesEntry(d->getEntryOfScope("b")));
    QVERIFY(!d->commandFileReferencesEntry(d->getEntryOfScope("g")));
    QVERIFY(!d->commandFileReferencesEntry(nullptr));
    QVERIFY(d->getEntryOfScope("G|a") == d->getEntryOfScope("g|a"));
}

void tst_Definition::loadingSuspends()
{
    QCOMPARE(ModelTest::run("genericIntegrationDefinition d() { .addEntry(\"a\",1); }"
                            "genericIntegrationConfiguration c() { .setDefinition(d); }"
                            "genericIntegrationCommandFile f() { .setContent(\"<entry>a</entry>\");"
                            " } d.setFiles([f]);"),
             QStringList());
    const auto c = ModelTest::object<FConfigurationGenInt>("c");
    {
        const FLoadingScope loading;
        QVERIFY(definition()->removeEntry(definition()->getEntryOfScope("a")));
        QVERIFY(definition()->addEntryCommand("b", FExprBase::resolve("2")));
    }
    QCOMPARE(ModelTest::object<FGenIntFile>("f")->text(), QString("<entry>a</entry>"));
    QVERIFY(!c->findEntry("b"));
    definition()->reinitConfigurations(false);
    QVERIFY(bool(c->findEntry("b")));
}

void tst_Definition::staleness()
{
    QCOMPARE(ModelTest::run("genericIntegrationDefinition d() { .addEntry(\"a\",1); }"
                            "genericIntegrationConfiguration c() { .setDefinition(d); }"
                            "genericIntegrationCommandFile f(); d.setFiles([f]);"
                            "genericIntegrationComputation comp() { .setConfiguration(c); }"),
             QStringList());
    const auto c = ModelTest::object<FConfigurationGenInt>("c");
    const auto comp = ModelTest::object<FGenIntComputation>("comp");
    const auto fresh = [&] {
        comp->setUpToDate();
        c->setUpToDate();
        definition()->setUpToDate();
    };
    const auto allStale = [&] {
        return !comp->isUpToDate() && !c->isUpToDate() && !definition()->isUpToDate();
    };
    fresh();
    ModelTest::object<FGenIntFile>("f")->setContent("x");
    QVERIFY(allStale());
    fresh();
    definition()->setFiles(definition()->getFiles());
    QVERIFY(allStale());
    fresh();
    definition()->setCurFile(nullptr); // the editor's cursor
    QVERIFY(definition()->isUpToDate());
    c->setEntryCommand("a", FExprBase::resolve("2"));
    QVERIFY(definition()->isUpToDate() && !c->isUpToDate() && !comp->isUpToDate());
}

QTEST_GUILESS_MAIN(tst_Definition)
#include "tst_definition.moc"

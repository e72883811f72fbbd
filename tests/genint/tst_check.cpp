// SPDX-License-Identifier: Apache-2.0
#include "fgenintcheck.h"
#include "flogmsg.h"
#include "fproject.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {
/// A project of one computation; what a case is about is put in the place of the sound parts.
struct FParts
{
    QByteArray head;                                  // statements before the rest
    QByteArray input = "a = <entry>a</entry>\n";      // text of the template
    QByteArray sample = "iterations 7\nresult 1.5\n"; // of the result template
    QByteArray rules = "[\"r\",0,0,\"result\",Last,\"FDouble\",\"\",0,nullptr]";
    QByteArray inputName = "in.txt", resultName = "out.txt";
    QByteArray resultMore, entries = ".addEntry(\"a\",1.0);", files = "in_txt,out_txt", values;
    QByteArray run = ".setApplication(\"true\");";
    QByteArray tail;
};

QByteArray textOf(const FParts &parts)
{
    return parts.head + "genericIntegrationCommandFile in_txt() { .setContent(\"[B64]" +
           parts.input.toBase64() + "\"); .setFileName(\"" + parts.inputName +
           "\"); }\n"
           "genericIntegrationResultsFile out_txt() { .setContent(\"[B64]" +
           parts.sample.toBase64() + "\"); .setFileName(\"" + parts.resultName +
           "\"); .setValues([" + parts.rules + "]); " + parts.resultMore +
           " }\n"
           "genericIntegrationDefinition d() { " +
           parts.entries + " .setFiles([" + parts.files +
           "]); }\n"
           "genericIntegrationConfiguration c() { .setDefinition(d); " +
           parts.values +
           " }\n"
           "genericIntegrationComputation k() { .setConfiguration(c); " +
           parts.run + " }\n" + parts.tail;
}
} // namespace

class TestCheck : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir mFolder;

    QStringList findingsOf(const QByteArray &project)
    {
        QFile file(mFolder.filePath("p.tbk"));
        if (!file.open(QIODevice::WriteOnly) || file.write(project) != project.size())
            return {"can't write the project"};
        file.close();
        FProject::instance()->clear();
        FProject::instance()->load(file.fileName());
        QStringList lines;
        for (const FGenIntFinding &finding : FGenIntCheck::run())
            lines << Q(finding.toString()).remove(mFolder.path() + "/");
        return lines;
    }
    void row(const char *name, const FParts &parts, const QStringList &expected)
    {
        QTest::newRow(name) << textOf(parts) << expected;
    }

private Q_SLOTS:
    void initTestCase()
    {
        FLogMsg::setConsole(nullptr);
        FObject::initPrototypes();
        QFile script(mFolder.filePath("script"));
        QVERIFY(script.open(QIODevice::WriteOnly) && script.write("#!/no/such/shell -x\n") > 0);
        script.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
        script.close();
    }
    void cleanupTestCase() { FProject::instance()->clear(); }

    void finds_data()
    {
        QTest::addColumn<QByteArray>("project");
        QTest::addColumn<QStringList>("expected");
        row("nothing in a sound project", {}, {});
        tags();
        texts();
        rules();
        names();
        values();
        programs();
        project();
    }
    void finds()
    {
        QFETCH(QByteArray, project);
        QFETCH(QStringList, expected);
        const QStringList found = findingsOf(project);
        if (found != expected)
            qWarning("found\n  %s\nexpected\n  %s", qPrintable(found.join("\n  ")),
                     qPrintable(expected.join("\n  ")));
        QCOMPARE(found, expected);
    }

    /// Neither the length of an expression is a depth, nor are all ways through values walked.
    void longExpressions()
    {
        QByteArray twice = "parameter p0(0/0);\n";
        for (int i = 1; i < 60; ++i)
            twice += QString("parameter p%1(p%2+p%2);\n").arg(i).arg(i - 1).toUtf8();
        QVERIFY(!findingsOf(twice).isEmpty());
        for (const char *part : {"+x", "-(x-1)"})
            QCOMPARE(findingsOf("parameter x(1);\nparameter a(x" +
                                QByteArray(part).repeated(50000) + ");\n"),
                     QStringList());
    }

    /// What is checked must not be run, and the folder of the project stays as it is.
    void changesNothing()
    {
        FParts parts;
        parts.run = ".setApplication(\"touch\"); .setArguments(\"" +
                    mFolder.filePath("ran").toUtf8() + "\");";
        parts.tail = "parameter p(k.run());\nparameter q(p+1);\n";
        const QStringList first = findingsOf(textOf(parts));
        QCOMPARE(first,
                 QStringList(
                     "error: p: the value is no expression to evaluate: run does something (found "
                     "k.run(), expected an expression that only calculates)"));
        const QString saved = FProject::instance()->text();
        QCOMPARE(QDir(mFolder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 (QStringList{"p.tbk", "script"}));
        FGenIntCheck::run();
        QCOMPARE(FProject::instance()->text(), saved);
        QCOMPARE(findingsOf(textOf(parts)), first);
    }

    /// Chains are long, and tags many.
    void takesMuch()
    {
        FParts parts;
        parts.head = "parameter p0(1);\n";
        for (int i = 1; i < 2000; ++i)
            parts.head +=
                "parameter p" + QByteArray::number(i) + "(p" + QByteArray::number(i - 1) + ");\n";
        parts.values = ".setEntry(\"a\",p1999);";
        for (int i = 0; i < 5000; ++i)
            parts.input += "<entry>x" + QByteArray::number(i) + "</entry>\n";
        const QStringList found = findingsOf(textOf(parts));
        QCOMPARE(found.size(), 5000);
        QVERIFY(found.last().contains("in.txt:5001:1:"));
    }

private:
    void tags()
    {
        const auto input = [this](const char *name, const char *text, const QStringList &expected) {
            FParts parts;
            parts.input = text;
            parts.entries = ".addEntry(\"a\",1.0); .addEntry(\"g|width\",2.0);";
            QStringList all = expected;
            if (!parts.input.toLower().contains("<entry>g|width</entry>"))
                all << "hint: d: no template uses the entry \"g|width\" (expected "
                       "\"<entry>g|width</entry>\" in a template)";
            row(name, parts, all);
        };
        input(
            "tag without an entry, once for each name",
            "<entry>a</entry>\n <entry>wdith</entry> <entry>G|Width</entry><entry>wdith</entry>\n"
            "ä\xf0\x9f\x98\x80<entry>zzzzzz</entry>",
            {"error: in_txt, in.txt:2:2: the tag has no entry in definition d and would vanish (2 "
             "times) (found \"wdith\", expected \"g|width\")",
             "error: in_txt, in.txt:3:3: the tag has no entry in definition d and would vanish "
             "(found \"zzzzzz\", expected the name of an entry: \"a\", \"g|width\", "
             "\"Exports|in.txt\")"});
        input("tag with a name that is nearly right",
              "<entry>a</entry><entry> g|widht </entry><entry>width</entry>",
              {"error: in_txt, in.txt:1:17: the tag has no entry in definition d and would vanish "
               "(found \"g|widht\", expected \"g|width\")",
               "error: in_txt, in.txt:1:41: the tag has no entry in definition d and would vanish "
               "(found \"width\", expected \"g|width\")"});
        input("tag of a group", "<entry>a</entry><entry>g</entry>",
              {"error: in_txt, in.txt:1:17: the tag names a group of entries, which has no value "
               "(found \"g\", expected the name of an entry in the group)"});
        FParts twice;
        twice.entries = ".addEntry(\"a\",1.0); .addEntry(\"A\",1.0);";
        row("entries that differ in case only", twice,
            {"hint: d: no template can use the entry \"a\" (found tags of this name stand for "
             "\"A\", "
             "expected names that differ in more than the case of letters)"});
        input("tag of a file", "<entry>a</entry><entry>Exports|in.txt</entry>", {});
        input("unclosed tag", "<entry>a</entry>\n<entry>g|width\nrest",
              {"error: in_txt, in.txt:2:1: the tag isn't closed: the rest of the file, 19 "
               "characters, would be lost (found \"<entry>g|width rest\", expected </entry> behind "
               "the name)"});
        input("tag that swallows the next one", "<entry>a</entry>\n<entry>a <Entry>a</entry>\n",
              {"error: in_txt, in.txt:2:1: the tag isn't closed before the next one opens: all up "
               "to the next closing mark would be lost (found \"<entry>a <Entry>a</entry>\", "
               "expected </entry> behind the name)"});
        input(
            "empty tags, closing mark alone",
            "</entry><entry>a</entry>\n<entry></entry> <entry> </entry></ENTRY>",
            {"error: in_txt, in.txt:1:1: a closing mark without an opening one would stand in the "
             "written file (found \"</entry>\", expected <entry> before it)",
             "error: in_txt, in.txt:2:1: the tag is empty and would vanish (found "
             "\"<entry></entry>\", expected the name of an entry between the marks)",
             "error: in_txt, in.txt:2:17: the tag is empty and would vanish (found \"<entry> "
             "</entry>\", expected the name of an entry between the marks)",
             "error: in_txt, in.txt:2:33: a closing mark without an opening one would stand in the "
             "written file (found \"</ENTRY>\", expected <entry> before it)"});
        input(
            "marks in capitals",
            "<entry>a</entry>\n<ENTRY>a</entry><entry>g|width</Entry><ENTRY>a</ENTRY>",
            {"hint: in_txt, in.txt:2:1: the tag is written, but its marks in capitals don't show "
             "in editors and lists (2 times) (found \"<ENTRY>a</entry>\", expected "
             "\"<entry>a</entry>\")",
             "hint: in_txt, in.txt:2:17: the tag is written, but its marks in capitals don't show "
             "in editors and lists (found \"<entry>g|width</Entry>\", expected "
             "\"<entry>g|width</entry>\")"});
    }

    void texts()
    {
        const auto input = [this](const char *name, const QByteArray &text,
                                  const QStringList &expected) {
            FParts parts;
            parts.input = "<entry>a</entry>" + text;
            row(name, parts, expected);
        };
        input("Windows line ends throughout", "\r\n1\r\n2\r\n", {});
        input("mixed line ends", "\n1\n2\r\n\r",
              {"hint: in_txt, in.txt:3: the line ends are mixed (found 2 lines with LF and 1 line "
               "with CR LF and 1 line with CR, expected one kind of line end)"});
        input("Latin-1 in UTF-8",
              "\nGr\xc3\xb6\xc3\x9f"
              "e gr\xf6\xdf"
              "e",
              {"hint: in_txt, in.txt:2:9: bytes in another encoding were lost when the text was "
               "taken (found 2 unreadable characters, expected UTF-8 text throughout)"});
        input(
            "UTF-8 taken for Latin-1", "\nsÃo \xc3\x84\xc3\x83\xc2\xa4 »Spaß« voilà\xc2\xa0»",
            {"hint: in_txt, in.txt:2:6: the encodings are mixed: UTF-8 was taken for Latin-1 here "
             "(found 1 character that is encoded twice, expected UTF-8 text throughout)"});
        input("byte order mark in the middle", "\n\xef\xbb\xbfx",
              {"hint: in_txt, in.txt:2:1: a byte order mark stands in the text (found 1 mark, "
               "expected no byte order mark)"});
        FParts forced;
        forced.input = "<entry>a</entry>\r\nx\r\n";
        forced.tail = "in_txt.setForceWindowsLineEndings(true);\n";
        row("Windows line ends twice", forced,
            {"hint: in_txt, in.txt:1: Windows line ends are forced on a text that has them "
             "already: "
             "lines would end in CR CR LF (found 2 lines with CR LF, expected lines with LF)"});
    }

    void rules()
    {
        const auto rule = [](const char *name, const char *anchor, const char *where,
                             const char *more = "\"FDouble\",\"\",0,nullptr") {
            return QByteArray("[\"") + name + "\"," + where + ",\"" + anchor + "\",Last," + more +
                   "]";
        };
        FParts parts;
        parts.rules = rule("lost", "resulting", "0,0") + "," +
                      rule("text", "gone", "0,0", "\"FString\",\"\",0,nullptr") + "," +
                      rule("mean", "resulting", "0,0", "\"FDouble\",\"\",1,1");
        row("anchors that the sample lacks", parts,
            {"error: out_txt, out.txt: the anchor of \"lost\" isn't in the sample (found no hit, "
             "expected \"resulting\")",
             "error: out_txt, out.txt: the anchor of \"text\" isn't in the sample (found no hit, "
             "expected \"gone\")"});
        parts = FParts();
        parts.sample = "Step 1\nstep 2\n\nSTEP x\n";
        parts.rules = rule("s", "step", "1,0").replace("Last", "First") + "," +
                      rule("t", "Step", "0,0") + "," + rule("one", "p 1", "0,0");
        row("anchors with several hits", parts,
            {"hint: out_txt, out.txt:1: the sample leaves a doubt about \"one\": column not there",
             "hint: out_txt, out.txt:1:1: the anchor \"step\" of \"s\" stands in the sample "
             "several "
             "times, and the first hit counts, in line 1 (found 3 hits, expected one hit)",
             "hint: out_txt, out.txt:4: the sample leaves a doubt about \"t\": column not there",
             "hint: out_txt, out.txt:4:1: the anchor \"Step\" of \"t\" stands in the sample "
             "several "
             "times, and the last hit counts, in line 4 (found 3 hits, expected one hit)"});
        parts = FParts();
        parts.sample = "result x1.5 1,25\nresult";
        parts.rules = rule("x", "", "0,0") + "," + rule("far", "", "9,0");
        row("doubts that the sample gives", parts,
            {"hint: out_txt, out.txt: the sample leaves a doubt about \"far\": line not there",
             "hint: out_txt, out.txt:1:9: the sample leaves a doubt about \"x\": number touches "
             "other characters (found \"1.5\")"});
        parts = FParts();
        parts.sample.clear();
        row("no sample", parts,
            {"hint: out_txt, out.txt: no sample is stored, so that anchors and values can't be "
             "checked (expected the text of a result file, as turnbuckle add PROJECT --sample FILE "
             "--as out.txt stores it)"});
        const auto separator = [&](const char *name, const char *expression,
                                   const QStringList &expected) {
            FParts own;
            own.sample = "result\t1,5;x\n";
            own.rules = rule("r", "result", "0,1");
            own.resultMore = QByteArray(".setNumberSeparator(false); .setRegExprSeparator(\"") +
                             expression + "\");";
            row(name, own, expected);
        };
        separator(
            "sound separator", "[\\t;]",
            {"hint: out_txt, out.txt:1:12: the sample leaves a doubt about \"r\": not a number "
             "(found \"x\")"});
        separator("empty separator", "",
                  {"error: out_txt, out.txt: lines aren't split into columns: the separator "
                   "expression is empty (found no separator, expected numbers, white space or an "
                   "expression that separates columns)"});
        separator("invalid separator", "[;",
                  {"error: out_txt, out.txt: the separator expression is invalid: unexpected "
                   "end (found \"[;\", expected a regular expression)"});
        separator(
            "separator that matches nothing", ",*",
            {"error: out_txt, out.txt: the separator expression matches nothing at all, so all "
             "columns begin at one place (found \",*\", expected an expression that matches "
             "one character at least)"});
    }

    void names()
    {
        FParts parts;
        parts.rules = "[\"r\",0,0,\"result\",Last,\"FDouble\",\"\",0,nullptr],"
                      "[\"R\",0,0,\"iter\",Last,\"FDouble\",\"\",0,nullptr]";
        row("values of one name but for the case", parts, {});
        parts.rules.replace("\"R\"", "\"r\"");
        row("values of one name", parts,
            {"error: out_txt, out.txt: two values have one name, and only the first can be asked "
             "for (found \"r\", expected a name of its own for each value)"});
        parts = FParts();
        parts.rules = "[\"r\",0,0,\"result\",Last,\"FDouble\",\"\",1,0]";
        parts.head = "genericIntegrationCommandFile win() { .setContent(\"C:\\new\"); "
                     ".setFileName(\"w.txt\"); }\n"
                     "genericIntegrationResultsFile deep() { .setContent(\"1\n\"); "
                     ".setFileName(\"sub/deep.txt\"); }\n";
        parts.files = "in_txt,win,out_txt,deep";
        row("places where nothing is", parts,
            {"hint: win, w.txt: a backslash and an n in the project became a line end (found text "
             "without [B64], expected the text as turnbuckle add --template stores it, if the "
             "backslash belongs to it, as in C:\\new)",
             "hint: deep, sub/deep.txt: no input file makes the folder of this result file (found "
             "\"sub\", expected a program that makes it, or an input file in it)",
             "hint: out_txt, out.txt: an average of no rows gives no number (found \"r\", expected "
             "how many of the last rows are averaged)",
             "hint: out_txt, out.txt: the sample leaves a doubt about \"r\": average: 0 of 0 rows "
             "used"});
        parts = FParts();
        parts.head = "genericIntegrationResultsFile other() { .setContent(\"1\n\"); "
                     ".setFileName(\"out.txt\"); }\n"
                     "genericIntegrationResultsFile idle() { .setFileName(\"idle.txt\"); }\n";
        parts.files = "in_txt,other,out_txt";
        row("result templates of one file, and of nobody", parts,
            {"error: idle, idle.txt: nobody reads this result file (expected a computation whose "
             "definition holds the template)",
             "error: out_txt, out.txt: two templates of definition d read one result file: the "
             "table "
             "of the second takes the place of the first (found other and out_txt, expected one "
             "template for each result file)"});
        using FName = std::pair<const char *, const char *>;
        for (const auto &name :
             {FName("../in.txt", "\"..\" may leave the folder"),
              FName("/tmp/in.txt", "it is absolute"), FName("sub/", "it names no file")}) {
            parts = FParts();
            parts.inputName = name.first;
            row(name.first, parts,
                {QString("error: in_txt, %1: the file name can't be written to the run folder: %2 "
                         "(found \"%1\", expected a name relative to the run folder, within it)")
                     .arg(name.first, name.second)});
        }
        parts = FParts();
        parts.resultName = "../out.txt";
        row("result outside the run folder", parts,
            {"error: out_txt, ../out.txt: the file name can't be read from the run folder: \"..\" "
             "may "
             "leave the folder (found \"../out.txt\", expected a name relative to the run folder, "
             "within it)"});
        parts = FParts();
        parts.head = "genericIntegrationCommandFile b() { .setContent(\"b\"); "
                     ".setFileName(\"sub//./in.txt\"); }\n"
                     "genericIntegrationCommandFile e() { .setContent(\"e\"); "
                     ".setFileName(\"sub/in.txt/e\"); }\n"
                     "genericIntegrationCommandFile o() { .setContent(\"o\"); "
                     ".setFileName(\"stdout.txt\"); }\n";
        parts.inputName = "sub/in.txt";
        parts.files = "in_txt,b,e,o,out_txt";
        parts.entries += ".addEntry(\"Exports|copy\",inputFile(\"p.tbk\",\"sub/in.txt/\"));"
                         ".addEntry(\"Exports|geo\",geometryExport(\"./stdout.txt\"));";
        const char *const clash = "error: %1, %2: two files would have one name in the run folder "
                                  "of computation k (found "
                                  "%3, expected a name of its own for each)";
        const char *const inside = "error: %1, %2: one name would be a file and a folder in the "
                                   "run folder of computation k "
                                   "(found %3, expected a name of its own for each)";
        row("two files of one name", parts,
            {QString(clash).arg("b", "sub//./in.txt", "template in_txt and template b"),
             QString(inside).arg("e", "sub/in.txt/e", "template in_txt and template e"),
             QString(clash).arg("o", "stdout.txt", "the run itself and template o"),
             QString(inside).arg("c", "sub/in.txt/p.tbk",
                                 "template in_txt and the input file of entry \"Exports|copy\""),
             QString(clash).arg("c", "./stdout.txt",
                                "the run itself and the geometry of entry \"Exports|geo\"")});
    }

    void values()
    {
        FParts parts;
        parts.head = "parameter n(sqrt(0-1));\nparameter s(\"text\");\n";
        parts.entries += ".addEntry(\"b\",2.0); .addEntry(\"f\",\"x\"); "
                         ".addEntry(\"file\",inputFile(\"nowhere.dat\",\"\"));";
        parts.input += "<entry>b</entry><entry>f</entry>";
        parts.values = ".setEntry(\"a\",n*2); .setEntry(\"b\",s+1); .setEntry(\"f\",d);";
        row("values that give nothing", parts,
            {"error: n: the value doesn't resolve: it gives no number (found sqrt(0-1) = nan, "
             "expected a number, a text or a file)",
             "error: c: entry \"a\" doesn't resolve: it gives no number (found n*2 = nan, expected "
             "a "
             "number, a text or a file)",
             "error: c: entry \"b\" doesn't resolve: +: expected a number, found FParameter s "
             "(found s+1 = nan, expected a number, a text or a file)",
             "error: c: entry \"f\" doesn't resolve: it gives no value that could be written "
             "(found "
             "d, expected a number, a text or a file)",
             "error: c, nowhere.dat: there is no file for the value of entry \"file\" (found "
             "nothing, "
             "expected a file that can be copied into the run folder)"});
        parts = FParts();
        parts.tail =
            "parameter p(k.getResults().getTable(\"out.txt\").getElementAt(\"r\"));\n"
            "parameter t(k.getResults().getTable(\"OUT_TXT\").getElementAt(\"R\")+1);\n"
            "parameter x(2*k.getResults().getTable(\"out.txt\").getElementAt(\"result\"));\n"
            "parameter y(k.getResults().getTable(\"ouy.txt\").getElementAt(\"r\"));\n";
        row("results that nobody reads", parts,
            {"error: x: the value doesn't resolve: there is no such value in result template "
             "out_txt "
             "(found \"result\", expected the name of a value: \"r\")",
             "error: y: the value doesn't resolve: no result template of definition d gives this "
             "table (found \"ouy.txt\", expected \"out.txt\")"});
        parts = FParts();
        parts.tail = "parameter p(k.getResults().getTable(\"out.txt\").getElementAt(\"r\"));\n"
                     "parameter q(p*2);\n"
                     "c.setEntry(\"a\",q);\n";
        row("cycle of a computation", parts,
            {"error: p.tbk, p.tbk:8:1: cyclic dependency: the value q of entry a depends on a"});
        parts = FParts();
        parts.tail =
            "genericIntegrationComputation m() { .setApplication(\"true\"); }\n"
            "parameter p(m.getResults().getTable(\"out.txt\").getElementAt(\"r\"));\n"
            "genericIntegrationConfiguration e() { .setDefinition(d); .setEntry(\"a\",p); }\n"
            "m.setConfiguration(e);\n";
        row("cycle that is closed by the configuration", parts,
            {"error: m: the value depends on itself (found m needs e needs entry a needs p needs "
             "m, "
             "expected a value that can be known before its own result)"});
        parts = FParts();
        parts.tail = "parameter p(1);\nparameter q(p*2);\np.setValue(q+1);\n";
        row("cycle of parameters", parts,
            {"error: p.tbk, p.tbk:8:1: cyclic dependency: the value q+1 of p depends on p"});
    }

    void programs()
    {
        const auto run = [this](const char *name, const char *statements,
                                const QStringList &expected) {
            FParts parts;
            parts.run = statements;
            parts.entries += ".addEntry(\"self\",inputFile(\"p.tbk\",\"in\"));";
            row(name, parts, expected);
        };
        const QString along = "expected a program that is found along PATH";
        run("no program", "",
            {"error: k: no program is set (found nothing, " + along + ", or the path of one)"});
        run("program not found", ".setApplication(\"no-such-program\");",
            {"error: k: the program can't be started: it is not found (found no-such-program, " +
             along + ")"});
        run("program not along its own PATH",
            ".setApplication(\"true\"); .setEnvironment([\"PATH=/etc\"]);",
            {"error: k: the program can't be started: it is not found (found true, " + along +
             ")"});
        run("program not executable", ".setApplication(\"./p.tbk\");",
            {"error: k: the program can't be started: it is not executable (found ./p.tbk, "
             "expected "
             "an executable file)"});
        run("directory", ".setApplication(\"/usr/bin\");",
            {"error: k: the program can't be started: it is a directory (found /usr/bin, expected "
             "an "
             "executable file)"});
        run("interpreter not found", ".setApplication(\"./script\");",
            {"error: k: the program can't be started: its interpreter is not found (found "
             "/no/such/shell, expected an executable file)"});
        run("program of the run folder", ".setApplication(\"in/p.tbk\");", {});
        run("program of no folder", ".setApplication(\"in/q.tbk\");",
            {"error: k: the program is not found, neither beside the project nor in the run folder "
             "(found in/q.tbk, expected a file that a template or an entry puts into the run "
             "folder)"});
        run("arguments and input",
            ".setApplication(\"cat\"); .setArguments(\"-n 'x\"); .setStandardInput(\"data.txt\");"
            ".setEnvironment([\"HOME\"]);",
            {"error: k: a quote in the arguments has no end (found -n 'x, expected quotes in "
             "pairs)",
             "error: k: a variable of the environment has no value or no name (found \"HOME\", "
             "expected NAME=value)",
             "error: k: nothing writes the file for standard input (found data.txt, expected a "
             "file "
             "that a template or an entry puts into the run folder)"});
        QTest::newRow("parts without each other")
            << QByteArray("genericIntegrationConfiguration c();\n"
                          "genericIntegrationComputation k() { .setApplication(\"true\"); }\n")
            << QStringList{"error: c: the configuration has no entries to give values to (found no "
                           "definition, expected a definition)",
                           "error: k: the computation can't write its input files (found no "
                           "configuration, expected a configuration)"};
    }

    void project()
    {
        FParts parts;
        parts.head = "parameter a(1)\nparameter b(+);\n\nb.nothing();\n";
        row("errors of the script", parts,
            {"error: p.tbk, p.tbk:2:1: this can't be executed (found \"parameter\", expected \";\" "
             "or "
             "\"{\" behind the creator of a)",
             "error: p.tbk, p.tbk:4:3: this can't be executed (found the unknown name b, expected "
             "an "
             "object to call nothing on)"});
        parts = FParts();
        parts.head = "parameter p(1);\nparameter p(2);\nnonsense;\n";
        parts.tail = "design e() { .setValue(\"p\",log(0-p1)); }\n";
        row("what goes on after faults", parts,
            {"error: p.tbk, p.tbk:3:1: this can't be executed (found the unknown name nonsense, "
             "expected a statement)",
             "hint: p.tbk, p.tbk:2:11: the name p is taken: the object is named p1",
             "error: e: the value of p doesn't resolve: it gives no number (found log(0-p1) = nan, "
             "expected a number, a text or a file)"});
        QTest::newRow("no text") << QByteArray("parameter a(1);\n\xff")
                                 << QStringList{
                                        "error: p.tbk, p.tbk:2: this can't be executed (found "
                                        "the byte 0xFF, expected UTF-8 text)"};
    }
};

QTEST_GUILESS_MAIN(TestCheck)
#include "tst_check.moc"

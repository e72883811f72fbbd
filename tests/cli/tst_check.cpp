// SPDX-License-Identifier: Apache-2.0
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

class TestCheckCommand : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir mFolder;

    /// Runs the program; gives the exit code, -1 if there is none.
    int run(const QStringList &arguments, QByteArray *output)
    {
        QProcess process;
        process.setWorkingDirectory(mFolder.path());
        process.start(F_BIN_DIR "/turnbuckle", arguments);
        if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
            return -1;
        *output = process.readAllStandardOutput();
        return process.exitCode();
    }
    void write(const QByteArray &project)
    {
        QFile file(mFolder.filePath("p.tbk"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(project), qint64(project.size()));
    }

private Q_SLOTS:
    void tells_data()
    {
        QTest::addColumn<QByteArray>("project");
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArray>("text");
        const QByteArray hint = "genericIntegrationCommandFile t() { .setContent(\"a\r\nb\n\"); "
                                ".setFileName(\"in.txt\"); }\n";
        const QByteArray hintText =
            "hint: t, in.txt: nobody writes this input file (expected a computation whose "
            "definition holds the template)\n"
            "hint: t, in.txt:2: the line ends are mixed (found 1 line with LF and 1 line with CR "
            "LF, expected one kind of line end)\n";
        const QByteArray error = "genericIntegrationConfiguration c();\n";
        const QByteArray errorText = "error: c: the configuration has no entries to give values to "
                                     "(found no definition, expected a definition)\n";
        QTest::newRow("nothing") << QByteArray("parameter p(1);\n") << 0
                                 << QByteArray("0 errors, 0 hints\n");
        QTest::newRow("hints") << hint << 0 << hintText + "0 errors, 2 hints\n";
        QTest::newRow("error") << hint + error << 1 << hintText + errorText + "1 error, 2 hints\n";
        QTest::newRow("unreadable in part")
            << "nonsense;\n" + error << 3
            << "error: p.tbk, p.tbk:1:1: this can't be executed (found the unknown name nonsense, "
               "expected a statement)\n" +
                   errorText + "2 errors, 0 hints\n";
    }
    void tells()
    {
        QFETCH(QByteArray, project);
        QFETCH(int, code);
        QFETCH(QByteArray, text);
        write(project);
        QByteArray output;
        QCOMPARE(run({"check", "p.tbk"}, &output), code);
        QCOMPARE(output, text);
        // The JSON form tells the same.
        QCOMPARE(run({"check", "p.tbk", "--json"}, &output), code);
        const QJsonObject json = QJsonDocument::fromJson(output).object();
        int errors = 0;
        for (const QJsonValue &finding : json["findings"].toArray()) {
            errors += finding.toObject()["severity"] == "error";
            QVERIFY(text.contains(finding.toObject()["message"].toString().toUtf8()));
        }
        QCOMPARE(json["errors"].toInt(-1), errors);
        QCOMPARE(json["errors"].toInt() + json["hints"].toInt(), text.count('\n') - 1);
        QCOMPARE(json["findings"].toArray().size(), text.count('\n') - 1);
        QCOMPARE(json["project"].toString(), QString("p.tbk"));
        QVERIFY(json["log"].isArray());
    }

    void tellsInJson()
    {
        write("genericIntegrationCommandFile t() { .setContent(\"x\n <entry></entry>\"); "
              ".setFileName(\"in.txt\"); }\n");
        QByteArray output;
        QCOMPARE(run({"check", "p.tbk", "--json"}, &output), 1);
        const QJsonObject json = QJsonDocument::fromJson(output).object();
        const QJsonObject expected{{"severity", "error"},
                                   {"object", "t"},
                                   {"class", "FGenIntCommandFile"},
                                   {"file", "in.txt"},
                                   {"line", 2},
                                   {"column", 2},
                                   {"message", "the tag is empty and would vanish"},
                                   {"found", "\"<entry></entry>\""},
                                   {"expected", "the name of an entry between the marks"}};
        QCOMPARE(json["findings"].toArray().at(1).toObject(), expected);
        const QJsonObject hint = json["findings"].toArray().at(0).toObject();
        for (const char *key : {"line", "column", "found"})
            QVERIFY(hint.contains(key) && hint[key].isNull());
        QStringList keys = json.keys();
        keys.sort();
        QCOMPARE(keys, (QStringList{"errors", "findings", "hints", "log", "project"}));
    }

    void tellsOfAMissingProject()
    {
        QByteArray output;
        QCOMPARE(run({"check", "none.tbk"}, &output), 3);
        QVERIFY2(output.startsWith("error: none.tbk, none.tbk: the file can't be opened"), output);
        QVERIFY(output.endsWith("\n1 error, 0 hints\n"));
    }

    /// Their programs may be missing here; everything else is sound.
    void findsNoFaultInTheExamples_data()
    {
        QTest::addColumn<int>("hints");
        QTest::newRow("beam") << 0;
        QTest::newRow("chain") << 3; // values at the first and at the last of two times
        QTest::newRow("filter") << 0;
    }
    void findsNoFaultInTheExamples()
    {
        QFETCH(int, hints);
        const QString name = QTest::currentDataTag();
        QByteArray output;
        QVERIFY(run({"check", F_SOURCE_DIR "/examples/" + name + "/" + name + ".tbk", "--json"},
                    &output) >= 0);
        const QJsonObject json = QJsonDocument::fromJson(output).object();
        for (const QJsonValue &finding : json["findings"].toArray()) {
            const QString message = finding.toObject()["message"].toString();
            QVERIFY2(finding.toObject()["severity"] == "hint" ||
                         message == "the program can't be started: it is not found",
                     qPrintable(message));
        }
        QCOMPARE(json["hints"].toInt(-1), hints);
    }
};

QTEST_GUILESS_MAIN(TestCheckCommand)
#include "tst_check.moc"

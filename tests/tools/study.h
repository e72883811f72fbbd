// SPDX-License-Identifier: Apache-2.0
#ifndef STUDY_H
#define STUDY_H
#include "fdesign.h"
#include "fgenintcomputation.h"
#include "flogmsg.h"
#include "fobjectmanager.h"
#include "fproject.h"
#include "frunqueue.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>
#include <cmath>

using Chain = std::vector<std::shared_ptr<FExternComputation>>;

inline QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline QJsonObject jsonOf(const QString &path)
{
    return QJsonDocument::fromJson(contentOf(path)).object();
}

/// Two computations, the second fed by the first: run.sh and again.sh with the entries x and y;
/// each result is read from "sum = " in out.txt. The designs d1 to d4 set x to their number.
class Study
{
public:
    explicit Study(const QByteArray &first = "$fakesim sum in.txt out.txt",
                   const QByteArray &second = "$fakesim sum in.txt out.txt")
    {
        FLogMsg::setConsole(nullptr);
        QByteArray text = "parameter x(0);\n";
        text += computation("first", "x", "x", first);
        text += "parameter y(first.getResults().getTable(\"out.txt\").getElementAt(\"sum\")+1);\n";
        text += computation("second", "y", "y", second);
        text += "parameter z(second.getResults().getTable(\"out.txt\").getElementAt(\"sum\"));\n";
        for (const char *number : {"1", "2", "3", "4"})
            text += QByteArray("design d") + number + "() { .setValue(\"x\"," + number + "); }\n";
        QFile file(path("study.tbk"));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        file.close();
        QVERIFY2(FProject::instance()->load(file.fileName()), FLogMsg::last().message.c_str());
        for (const char *name : {"first", "second"})
            chain.push_back(std::dynamic_pointer_cast<FExternComputation>(
                FObjectManager::instance()->find(name)));
        QVERIFY(chain[0] && chain[1]);
        for (const char *name : {"d1", "d2", "d3", "d4"})
            designs.push_back(
                std::dynamic_pointer_cast<FDesign>(FObjectManager::instance()->find(name)));
    }
    ~Study() { FProject::instance()->clear(); }

    QString path(const QString &name) const { return mFolder.filePath(name); }
    QString runPath(const char *design, const char *name) const
    {
        return path(QString("study_designs/%1/%2").arg(design, name));
    }

    /// "design computation state", a line each, in the order of the records.
    QStringList run(FRunQueue *queue, int jobs, size_t count = 4)
    {
        for (size_t i = 0; i < count; ++i)
            queue->add(designs[i], chain);
        queue->run(jobs);
        QStringList lines;
        for (const FRunRecord &record : queue->records())
            lines += Q(record.design + " " + record.computation + ": " + record.reason);
        return lines;
    }

    double value(const char *parameter, const std::shared_ptr<FDesign> &design) const
    {
        FDesign::setCurrent(design);
        double number = std::nan("");
        FConvert::toDouble(FExprBase(FObjectManager::instance()->find(parameter)), &number);
        return number;
    }

    Chain chain;
    std::vector<std::shared_ptr<FDesign>> designs;

private:
    static QByteArray computation(const QByteArray &name, const QByteArray &entry,
                                  const QByteArray &value, QByteArray script)
    {
        script.replace("$fakesim", F_BIN_DIR "/fakesim");
        QByteArray text = R"(
genericIntegrationCommandFile @_in() { .setContent("<entry>E</entry>\n"); .setFileName("in.txt"); }
genericIntegrationCommandFile @_sh() { .setContent("x=<entry>E</entry>
S
"); .setFileName("run.sh"); }
genericIntegrationResultsFile @_out() {
    .setContent("sum = 1\nn = 1\n"); .setFileName("out.txt");
    .setValues([["sum",0,0,"sum",Last,"FDouble","",0,nullptr]]); .setNumberSeparator(true);
}
genericIntegrationDefinition @_def() { .addEntry("E",0.0); .setFiles([@_in,@_sh,@_out]); }
genericIntegrationConfiguration @_conf() { .setDefinition(@_def); .setEntry("E",V); }
genericIntegrationComputation @() {
    .setConfiguration(@_conf); .setApplication("sh"); .setArguments("run.sh");
}
)";
        text.replace("S\n\")", script.replace('"', "\\\"") + "\n\")");
        text.replace("\"E\"", '"' + entry + '"').replace(">E<", '>' + entry + '<');
        text.replace(",V)", ',' + value + ')');
        return text.replace("@", name);
    }

    QTemporaryDir mFolder;
};
#endif

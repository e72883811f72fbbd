// SPDX-License-Identifier: Apache-2.0
#ifndef STATEMENTS_H
#define STATEMENTS_H
#include "fobjectmanager.h"

#include <QStringList>
#include <random>

/// Statements over a small stock of names, so that they meet often.
class Statements
{
public:
    /// With \p hostOnly none that need classes beyond parameters and designs.
    explicit Statements(unsigned seed, bool hostOnly = false)
        : mRandom(seed)
        , mHostOnly(hostOnly)
    {
    }

    int below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(mRandom); }
    QString one()
    {
        const QString n = QString::number(below(1000)), p = name("p"), e = entry();
        const QString d = name("d"), t = name("t"), r = name("r"), c = name("c"), k = name("k");
        const QStringList all = {
            "parameter " + p + "(" + n + ");",
            p + ".setValue(" + name("p") + "+" + n + ");",
            p + ".setName(\"" + name("p") + "\");",
            p + ".addDocu(\"say \\\"" + n + "\\\"\",\"Description\");",
            "design " + name("v") + "() { .setValue(\"" + p + "\"," + n + "); }",
            name("v") + ".setValue(\"" + p + "\"," + name("p") + "*2);",
            name("v") + ".unsetValue(\"" + p + "\");",
            name("v") + ".duplicate(\"" + name("v") + "\");",
            name(QString("pv").mid(below(2), 1)) + ".destroy();", // the last for the host alone
            "genericIntegrationCommandFile " + t + "() { .setFileName(\"" + t + ".txt\"); }",
            t + ".setContent(\"a <entry>" + e + "</entry>" + n + " \xc3\xa4\");",
            t + ".setForceWindowsLineEndings(" + (below(2) ? "true" : "false") + ");",
            t + ".setFileName(\"f" + n + "\");",
            "genericIntegrationResultsFile " + r + "() { .setFileName(\"" + r + ".txt\"); }",
            r + ".setValues([[\"v" + n + "\",-1,2,\"a \"b\" \\c\",First,\"FDouble\",\"\",1,4]]);",
            r + ".setRegExprSeparator(\"[" + n + ";]\");",
            r + ".setNumberSeparator(" + (below(2) ? "true" : "false") + ");",
            "genericIntegrationDefinition " + d + "() { .addEntry(\"g|a\",1.0); }",
            d + ".setFiles([" + t + "," + r + "]);",
            d + ".addEntry(\"" + e + "\"," + n + ".5);",
            d + ".removeEntry(\"" + e + "\");",
            d + ".renameEntry(\"" + e + "\",\"" + QChar('a' + below(4)) + "\");",
            "genericIntegrationConfiguration " + c + "() { .setDefinition(" + d + "); }",
            c + ".setEntry(\"" + e + "\"," + p + ");",
            c + ".setDefinition(" + d + ");",
            "genericIntegrationComputation " + k + "() { .setConfiguration(" + c + "); }",
            k + ".setArguments(\"-n " + n + "\");",
            k + ".setEnvironment([\"A=" + n + "\"]);",
            k + ".setTimeout(" + n + ");",
            d + ".removeFile(" + t + ");",
            d + ".addFile(" + r + ");",
            r + ".changeValue(\"v" + n + "\",2,1,\"x\",Last);",
            name(QString("prtdckv").mid(below(7), 1)) + ".destroy();"};
        return all[below(mHostOnly ? 9 : all.size())];
    }
    /// Any managed object, or null.
    std::shared_ptr<FManaged> object()
    {
        const auto &all = FObjectManager::instance()->all();
        return all.empty() ? nullptr : all[size_t(below(int(all.size())))];
    }

private:
    QString name(const QString &stem) { return stem + QString::number(below(3)); }
    QString entry() { return QString(below(2) ? "g|" : "") + QChar('a' + below(4)); }
    std::mt19937 mRandom;
    bool mHostOnly;
};
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef SUMPROJECT_H
#define SUMPROJECT_H
#include <QByteArray>

/// A project with one computation: in.txt goes in, the numbers behind "sum" and "n" come out.
inline QByteArray project(const QByteArray &application, const QByteArray &arguments,
                          const QByteArray &more = QByteArray())
{
    return R"(parameter width(2.5);
genericIntegrationCommandFile input() {
    .setFileName("in.txt");
    .setContent("<entry>width</entry>
4
");
}
genericIntegrationResultsFile output() {
    .setFileName("out.txt");
    .setValues([["sum",0,0,"sum",Last,"FDouble","",0,nullptr],["n",0,0,"n =",Last,"FDouble","",0,nullptr]]);
}
genericIntegrationDefinition definition() {
    .addEntry("width",1.0);
    .setFiles([input,output]);
}
genericIntegrationConfiguration configuration() {
    .setDefinition(definition);
    .setEntry("width",width);
}
genericIntegrationComputation solver() {
    .setConfiguration(configuration);
    .setApplication(")" +
           application + "\");\n    .setArguments(\"" + arguments + "\");\n" + more +
           "}\nparameter total(solver.getResults().getTable(\"out.txt\").getElementAt(\"sum\"));\n"
           "design wide() { .setValue(\"width\",4); }\n";
}

const QByteArray kFakesim = F_BIN_DIR "/fakesim";

inline QByteArray sumProject(const QByteArray &more = QByteArray())
{
    return project(kFakesim, "sum in.txt out.txt", more);
}
#endif

// SPDX-License-Identifier: Apache-2.0
// The picture of the couplings as data and as text.
#include "fgenintgraph.h"
#include "modeltest.h"

#include <QXmlStreamReader>
#include <QtTest>

class tst_Graph : public QObject
{
    Q_OBJECT
    ModelTest mModel;

    static QString coupling(const QString &name, const QString &more)
    {
        return QStringLiteral("genericIntegrationResultsFile %1_out() { .setFileName(\"out.txt\"); "
                              ".setValues([[\"y\",0,0,\"x\",Last,\"FDouble\",\"\",0,nullptr]]); }"
                              "genericIntegrationDefinition %1_def() { .addEntry(\"x\",1.0); "
                              ".addEntry(\"Exports|f\",inputFile(\"\",\"\")); "
                              ".setFiles([%1_out]); }"
                              "genericIntegrationConfiguration %1_conf() { "
                              ".setDefinition(%1_def); %2 }"
                              "genericIntegrationComputation %1() { .setConfiguration(%1_conf); "
                              ".setApplication(\"a<&\\\"b\"); }")
            .arg(name, more);
    }
    /// "from -label> to" of each edge.
    static QStringList edgesOf(const FGenIntGraph &graph)
    {
        QStringList lines;
        for (const FGenIntGraph::Edge &edge : graph.edges())
            lines << Q(graph.nodes()[edge.from].id + " -" + edge.label + "> " +
                       graph.nodes()[edge.to].id);
        lines.sort();
        return lines;
    }
    static FGenIntGraph::Size sizeOf(const FGenIntGraph::Node &node)
    {
        return {40.0 + double(node.label.size()) * 7, node.detail.empty() ? 20.0 : 36.0};
    }

private Q_SLOTS:
    void init() { mModel.start(); }

    void chainOfThree()
    {
        QCOMPARE(ModelTest::run(
                     "parameter p(5); parameter q(2*p+pow(p,2)); parameter unused(p); " +
                     coupling("a", ".setEntry(\"x\",q);") +
                     "parameter z(a.getResults().getTable(\"out.txt\").getElementAt(\"y\")+p);" +
                     coupling("b", ".setEntry(\"x\",z); .setEntry(\"Exports|f\",inputFile("
                                   "a.getResults().getResultTemplateName(\"out.txt\"),\"\"));") +
                     coupling("c", ".setEntry(\"x\",b.getResults().getTable(\"out.txt\")."
                                   "getElementAt(\"y\"));") +
                     "genericIntegrationComputation bare();"),
                 QStringList());
        FGenIntGraph graph = FGenIntGraph::ofProject();
        QCOMPARE(edgesOf(graph),
                 QStringList(
                     {"computation a -> file a out.txt ", "computation a -> value a out.txt y",
                      "computation b -> value b out.txt y", "file a out.txt  -f> computation b",
                      "parameter p -> parameter q", "parameter p -> parameter z",
                      "parameter q -x> computation a", "parameter z -x> computation b",
                      "value a out.txt y -> parameter z", "value b out.txt y -x> computation c"}));
        graph.layOut(&tst_Graph::sizeOf);
        for (const FGenIntGraph::Edge &edge : graph.edges()) {
            const auto &from = graph.nodes()[edge.from], &to = graph.nodes()[edge.to];
            QVERIFY(from.x + from.width < to.x);
        }
        for (size_t i = 0; i < graph.nodes().size(); ++i)
            for (size_t k = 0; k < i; ++k) {
                const auto &a = graph.nodes()[i], &b = graph.nodes()[k];
                QVERIFY(a.x + a.width <= b.x || b.x + b.width <= a.x || a.y + a.height <= b.y ||
                        b.y + b.height <= a.y);
            }
        QCOMPARE(Q(graph.nodes()[0].id), QString("computation a"));
        QVERIFY(Q(graph.toText()).contains("bare  (no configuration), not run\n"));
        QVERIFY(Q(graph.toText()).contains("  <- file out.txt of a as f\n"));
        QCOMPARE(graph.toJson()["nodes"].toArray().size(), int(graph.nodes().size()));
        QVERIFY(graph.toDot().contains("a<&\\\"b"));
        // The picture can be read, and has every name.
        QXmlStreamReader svg(graph.toSvg());
        QString text;
        while (!svg.atEnd())
            if (svg.readNext() == QXmlStreamReader::Characters)
                text += svg.text() + '|';
        QVERIFY2(!svg.hasError(), qPrintable(svg.errorString()));
        for (const FGenIntGraph::Node &node : graph.nodes())
            QVERIFY2(text.contains(Q(node.label)), node.label.c_str());
        QVERIFY(text.contains("a<&\"b") && text.contains("not run"));
    }

    void circlesDoNoHarm()
    {
        QCOMPARE(ModelTest::run(coupling("a", "") +
                                coupling("b", ".setEntry(\"x\",a.getResults()."
                                              "getTable(\"out.txt\")."
                                              "getElementAt(\"y\"));") +
                                "a_conf.setEntry(\"Exports|f\",inputFile(b.getResults()."
                                "getResultFileName(\"k\"),\"\"));")
                     .filter("cyclic")
                     .size(),
                 1); // refused where it is made: nothing leads back
        FGenIntGraph graph = FGenIntGraph::ofProject();
        QCOMPARE(edgesOf(graph).size(), 2);
        graph.layOut(&tst_Graph::sizeOf);
        QCOMPARE(FGenIntGraph().toText(), std::string());
        QVERIFY(FGenIntGraph().toSvg().contains("<svg"));
    }

    void manyComputations()
    {
        QString text = coupling("c0", "");
        for (int i = 1; i < 1000; ++i)
            text += coupling(QString("c%1").arg(i),
                             QString(".setEntry(\"x\",c%1.getResults().getTable(\"out.txt\")."
                                     "getElementAt(\"y\"));")
                                 .arg(i - 1));
        QCOMPARE(ModelTest::run(text), QStringList());
        FGenIntGraph graph = FGenIntGraph::ofProject();
        graph.layOut(&tst_Graph::sizeOf);
        QCOMPARE(graph.nodes().size(), size_t(1999));
        QCOMPARE(graph.nodes()[graph.nodes().size() - 2].layer, 1998);
    }
};

QTEST_GUILESS_MAIN(tst_Graph)
#include "tst_graph.moc"

// SPDX-License-Identifier: Apache-2.0
// The couplings of a project as a picture.
#include "cli.h"
#include "fgenintgraph.h"
#include "fsafefile.h"

#include <QJsonDocument>

int FCli::graph(const FCliOptions &options)
{
    const int loaded = load(options);
    if (loaded != kDone)
        return refuse(loaded, "no picture was made");
    const FGenIntGraph graph = FGenIntGraph::ofProject();
    if (options.json && options.output.empty()) {
        QJsonObject json = graph.toJson();
        json["log"] = log();
        print(json);
        return kDone;
    }
    const QByteArray text = options.json  ? QJsonDocument(graph.toJson()).toJson()
                            : options.svg ? graph.toSvg()
                            : options.dot ? graph.toDot()
                                          : QByteArray::fromStdString(graph.toText());
    if (options.output.empty()) {
        out(QByteArray(text).trimmed().toStdString());
        return kDone;
    }
    QString why;
    if (FSafeFile::write(Q(options.output), text, &why))
        return kDone;
    err("cannot write " + options.output + ": " + S(why));
    return kUnwritable;
}

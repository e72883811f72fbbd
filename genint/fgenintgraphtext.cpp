// SPDX-License-Identifier: Apache-2.0
// The picture as text: DOT, SVG, JSON, lines.
#include "fgenintcomputation.h"
#include "fgenintgraph.h"
#include "ftext.h"

#include <QJsonArray>
#include <QXmlStreamWriter>

namespace {
constexpr int kLetter = 7, kLine = 18, kPad = 12, kLongest = 40; // of the SVG, in its units

QString elided(const std::string &text)
{
    QString shown = Q(text);
    for (QChar &letter : shown)
        if (letter.unicode() < 32 || letter.unicode() == 0x7f || letter.isNonCharacter() ||
            letter.isSurrogate())
            letter = ' ';
    return shown.size() > kLongest ? shown.left(kLongest - 1) + QChar(0x2026) : shown;
}

/// The lines in the box of a node.
QStringList linesOf(const FGenIntGraph::Node &node)
{
    QStringList lines{elided(node.label)};
    if (!node.detail.empty())
        lines << elided(node.detail);
    if (node.kind == FGenIntGraph::Computation)
        lines << QLatin1String(FGenIntGraph::stateText(node.state));
    return lines;
}

QByteArray quoted(const std::string &text)
{
    QByteArray bytes =
        '"' + QByteArray::fromStdString(text).replace('\\', "\\\\").replace('"', "\\\"");
    return bytes.replace('\n', "\\n").replace('\0', "") + '"';
}

struct Colours
{
    const char *edge, *ground, *text;
};

Colours coloursOf(const FGenIntGraph::Node &node)
{
    if (node.kind != FGenIntGraph::Computation)
        return node.kind == FGenIntGraph::Parameter ? Colours{"#0b6b8f", "#ffffff", "#1b2430"}
                                                    : Colours{"#5a6675", "#f3f4f6", "#1b2430"};
    switch (node.state) {
    case FStudy::UpToDate:
    case FStudy::Earlier:
        return {"#1c7c4c", "#ffffff", "#1c7c4c"};
    case FStudy::Failed:
        return {"#b3261e", "#fbe9e7", "#b3261e"};
    case FStudy::Stale:
        return {"#8a5a00", "#fdf1d6", "#8a5a00"};
    case FStudy::Running:
        return {"#0b6b8f", "#dcecf3", "#0b6b8f"};
    case FStudy::NotRun:
        break;
    }
    return {"#5a6675", "#ffffff", "#5a6675"};
}

QString number(double value) { return QString::number(value, 'f', 1); }
} // namespace

QByteArray FGenIntGraph::toDot() const
{
    QByteArray text = "digraph couplings {\n  rankdir=LR;\n  node [shape=box];\n";
    for (size_t i = 0; i < mNodes.size(); ++i) {
        const Node &one = mNodes[i];
        std::string label = one.label;
        if (!one.detail.empty())
            label += "\n" + one.detail;
        if (one.kind == Computation)
            label += std::string("\n") + stateText(one.state);
        const char *look = one.kind == Parameter ? ", shape=oval"
                           : one.kind == File    ? ", shape=note"
                           : one.kind == Value   ? ", shape=plaintext"
                                                 : ", style=\"rounded,bold\"";
        text += "  n" + QByteArray::number(qulonglong(i)) + " [label=" + quoted(label) + look +
                ", color=\"" + coloursOf(one).edge + "\"];\n";
    }
    for (const Edge &edge : mEdges) {
        text += "  n" + QByteArray::number(qulonglong(edge.from)) + " -> n" +
                QByteArray::number(qulonglong(edge.to));
        text += edge.label.empty() ? QByteArray() : " [label=" + quoted(edge.label) + "]";
        text += ";\n";
    }
    return text + "}\n";
}

QByteArray FGenIntGraph::toSvg() const
{
    FGenIntGraph placed = *this;
    placed.layOut([](const Node &node) {
        const QStringList lines = linesOf(node);
        int longest = 6;
        for (const QString &line : lines)
            longest = std::max(longest, int(line.size()));
        return Size{double(longest * kLetter + 2 * kPad), double(lines.size() * kLine + kPad)};
    });
    const Size size = placed.size();
    QByteArray bytes;
    QXmlStreamWriter svg(&bytes);
    svg.setAutoFormatting(true);
    svg.writeStartDocument();
    svg.writeStartElement("svg");
    svg.writeDefaultNamespace("http://www.w3.org/2000/svg");
    svg.writeAttribute("version", "1.1");
    svg.writeAttribute("width", number(size.width));
    svg.writeAttribute("height", number(size.height));
    svg.writeAttribute("viewBox", "0 0 " + number(size.width) + " " + number(size.height));
    svg.writeAttribute("font-family", "sans-serif");
    svg.writeAttribute("font-size", "12");
    svg.writeStartElement("defs");
    svg.writeStartElement("marker");
    for (const auto &[name, value] : {std::pair{"id", "arrow"},
                                      {"viewBox", "0 0 8 8"},
                                      {"refX", "8"},
                                      {"refY", "4"},
                                      {"markerWidth", "8"},
                                      {"markerHeight", "8"},
                                      {"orient", "auto"}})
        svg.writeAttribute(name, value);
    svg.writeEmptyElement("path");
    svg.writeAttribute("d", "M0 0L8 4L0 8z");
    svg.writeAttribute("fill", "#5a6675");
    svg.writeEndElement();
    svg.writeEndElement();
    svg.writeEmptyElement("rect");
    svg.writeAttribute("width", "100%");
    svg.writeAttribute("height", "100%");
    svg.writeAttribute("fill", "#ffffff");
    for (const Edge &edge : mEdges) {
        const Node &from = placed.mNodes[edge.from], &to = placed.mNodes[edge.to];
        const double x1 = from.x + from.width, y1 = from.y + from.height / 2;
        const double x2 = to.x, y2 = to.y + to.height / 2;
        const double bend = std::max(30.0, std::abs(x2 - x1) / 2);
        svg.writeStartElement("path");
        svg.writeAttribute("d", "M" + number(x1) + " " + number(y1) + "C" + number(x1 + bend) +
                                    " " + number(y1) + " " + number(x2 - bend) + " " + number(y2) +
                                    " " + number(x2) + " " + number(y2));
        svg.writeAttribute("fill", "none");
        svg.writeAttribute("stroke", "#5a6675");
        svg.writeAttribute("marker-end", "url(#arrow)");
        if (!edge.label.empty())
            svg.writeTextElement("title", elided(edge.label));
        svg.writeEndElement();
    }
    for (const Node &one : placed.mNodes) {
        const Colours colours = coloursOf(one);
        svg.writeStartElement("g");
        QString title = QLatin1String(kindText(one.kind)) + QLatin1Char(' ') + elided(one.label);
        if (one.kind == Computation)
            title += QStringLiteral(": ") + QLatin1String(stateText(one.state)) +
                     (one.reason.empty() ? QString() : ", " + elided(one.reason));
        svg.writeTextElement("title", title);
        svg.writeEmptyElement("rect");
        svg.writeAttribute("x", number(one.x));
        svg.writeAttribute("y", number(one.y));
        svg.writeAttribute("width", number(one.width));
        svg.writeAttribute("height", number(one.height));
        svg.writeAttribute("rx", one.kind == Parameter ? number(one.height / 2) : "6");
        svg.writeAttribute("fill", colours.ground);
        svg.writeAttribute("stroke", colours.edge);
        svg.writeAttribute("stroke-width", one.kind == Computation ? "2" : "1");
        const QStringList lines = linesOf(one);
        for (int i = 0; i < lines.size(); ++i) {
            svg.writeStartElement("text");
            svg.writeAttribute("x", number(one.x + one.width / 2));
            svg.writeAttribute("y", number(one.y + kPad / 2.0 + kLine * (i + 0.72)));
            svg.writeAttribute("text-anchor", "middle");
            const bool isState = one.kind == Computation && i + 1 == lines.size();
            svg.writeAttribute("fill", i == 0 ? "#1b2430" : isState ? colours.text : "#5a6675");
            if (i == 0)
                svg.writeAttribute("font-weight", "bold");
            svg.writeCharacters(lines[i]);
            svg.writeEndElement();
        }
        svg.writeEndElement();
    }
    svg.writeEndElement();
    svg.writeEndDocument();
    return bytes;
}

QJsonObject FGenIntGraph::toJson() const
{
    QJsonArray nodes, edges;
    for (const Node &one : mNodes) {
        QJsonObject json{{"id", Q(one.id)},
                         {"kind", kindText(one.kind)},
                         {"label", Q(one.label)},
                         {"detail", Q(one.detail)}};
        if (one.kind == Computation) {
            json["state"] = stateText(one.state);
            json["reason"] = Q(one.reason);
        }
        nodes.append(json);
    }
    for (const Edge &edge : mEdges)
        edges.append(QJsonObject{{"from", Q(mNodes[edge.from].id)},
                                 {"to", Q(mNodes[edge.to].id)},
                                 {"label", Q(edge.label)}});
    return {{"nodes", nodes}, {"edges", edges}};
}

std::string FGenIntGraph::toText() const
{
    std::string text;
    for (size_t i = 0; i < mNodes.size(); ++i) {
        const Node &one = mNodes[i];
        if (one.kind != Computation)
            continue;
        text += one.label + "  (" + one.detail + "), " + stateText(one.state) +
                (one.state == FStudy::Failed ? ": " + one.reason : std::string()) + "\n";
        for (const Edge &edge : mEdges) {
            if (edge.to != i)
                continue;
            const Node &from = mNodes[edge.from];
            text += "  <- " + std::string(kindText(from.kind)) + " " + from.label;
            if (from.computation && from.kind != Computation)
                text += " of " + from.computation->getName();
            text += edge.label.empty() || edge.label == from.label ? "" : " as " + edge.label;
            text += "\n";
        }
    }
    return text;
}

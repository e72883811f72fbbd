// SPDX-License-Identifier: Apache-2.0
#include "ftablerow.h"

#include <QJsonArray>

std::string FTableRow::Place::text() const
{
    if (line <= 0)
        return std::string();
    std::string text = S(file) + ":" + fromNumber(line, 10);
    if (first > 0)
        text += ":" + fromNumber(first, 10) + "-" + fromNumber(last, 10);
    return text;
}

QJsonObject FTableRow::report(bool withType) const
{
    const auto textOrNull = [](const std::string &text) {
        return text.empty() ? QJsonValue() : QJsonValue(Q(text));
    };
    QJsonObject json{{"name", Q(name)},
                     {"value", std::isfinite(value) ? QJsonValue(value) : QJsonValue()},
                     {"text", !isNumber           ? QJsonValue(cell)
                              : std::isinf(value) ? QJsonValue(Q(printedNumber(value)))
                                                  : QJsonValue()},
                     {"note", textOrNull(note())},
                     {"where", textOrNull(place.text())}};
    if (withType)
        json["type"] = Q(type);
    return json;
}

QJsonObject FTableRow::toJson() const
{
    QJsonObject json = report(true);
    json["number"] = isNumber;
    json["cell"] = cell;
    json["place"] = QJsonObject{{"file", place.file},
                                {"line", double(place.line)},
                                {"first", place.first},
                                {"last", place.last}};
    json["notes"] = QJsonArray::fromStringList(notes);
    return json;
}

FTableRow FTableRow::fromJson(const QJsonObject &json)
{
    FTableRow row;
    row.name = S(json["name"].toString());
    row.type = S(json["type"].toString(QStringLiteral("FDouble")));
    row.isNumber = json["number"].toBool(true);
    row.cell = json["cell"].toString();
    const QString text = json["text"].toString();
    if (json["value"].isDouble())
        row.value = json["value"].toDouble();
    else if (row.isNumber && (text == QLatin1String("inf") || text == QLatin1String("-inf")))
        row.value = text.startsWith('-') ? -HUGE_VAL : HUGE_VAL;
    const QJsonObject place = json["place"].toObject();
    row.place.file = place["file"].toString();
    const double line = place["line"].toDouble();
    row.place.line = line > 0 && line < 1e15 ? (long long)(line) : 0;
    row.place.first = place["first"].toInt();
    row.place.last = place["last"].toInt();
    for (const auto &note : json["notes"].toArray())
        row.notes.push_back(note.toString());
    return row;
}

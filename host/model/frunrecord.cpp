// SPDX-License-Identifier: Apache-2.0
#include "frunrecord.h"

#include "ftext.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <utility>

namespace {
constexpr const char *kStates[] = {"not-started", "finished", "failed", "timeout", "cancelled"};
}

void FRunRecord::set(FRunState newState, std::string newReason)
{
    state = newState;
    reason = std::move(newReason);
}

const char *FRunRecord::stateText() const { return kStates[int(state)]; }

std::string FRunRecord::note() const
{
    std::string note;
    const auto add = [&note](const std::string &text) {
        note += (note.empty() ? "" : ", ") + text;
    };
    for (const std::string &name : inputsWithoutNumber)
        add("input " + name + " was nan");
    if (processesEnded == 1)
        add("a process that the program left in the background was ended");
    else if (processesEnded > 1)
        add(std::to_string(processesEnded) +
            " processes that the program left in the background were ended");
    return note;
}

bool FRunRecord::read(const QByteArray &text)
{
    const QJsonObject json = QJsonDocument::fromJson(text).object();
    const QString word = json["state"].toString();
    int found = -1;
    for (int i = 0; i < 5; ++i)
        if (word == QLatin1String(kStates[i]))
            found = i;
    if (found < 0)
        return false;
    if (computation.empty())
        computation = S(json["computation"].toString());
    if (design.empty())
        design = S(json["design"].toString());
    set(FRunState(found), S(json["reason"].toString()));
    hasExitCode = json["exitCode"].isDouble();
    exitCode = json["exitCode"].toInt();
    hasSignal = json["signal"].isDouble();
    signal = json["signal"].toInt();
    seconds = json["seconds"].toDouble();
    processesEnded = json["processesEnded"].toInt();
    inputsChanged = json["inputsChanged"].toBool();
    inputs = S(json["inputs"].toString());
    program = S(json["program"].toString());
    for (const auto &one : json["resultFiles"].toArray()) {
        const QJsonObject file = one.toObject();
        resultFiles.push_back({S(file["name"].toString()), (long long)(file["bytes"].toDouble()),
                               S(file["modified"].toString())});
    }
    for (const auto &name : json["inputsWithoutNumber"].toArray()) // what a runner wrote has none
        inputsWithoutNumber.push_back(S(name.toString()));
    return true;
}

QByteArray FRunRecord::text(const QByteArray &recorded) const
{
    QJsonObject json = QJsonDocument::fromJson(recorded).object();
    if (json.isEmpty())
        json = {{"exitCode", QJsonValue::Null}, {"signal", QJsonValue::Null}, {"seconds", seconds}};
    json["computation"] = Q(computation);
    json["design"] = Q(design);
    json["directory"] = Q(directory);
    json["state"] = QLatin1String(stateText());
    json["reason"] = Q(reason);
    if (inputsChanged)
        json["inputsChanged"] = true;
    QJsonArray nan;
    for (const std::string &name : inputsWithoutNumber)
        nan.append(Q(name));
    if (!nan.isEmpty())
        json["inputsWithoutNumber"] = nan;
    return QJsonDocument(json).toJson();
}

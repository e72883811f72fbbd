// SPDX-License-Identifier: Apache-2.0
#include "cli.h"

#include "fcmd.h"
#include "foperators.h"

#include <QCoreApplication>

namespace
{
const char *kindName(FCommandKind kind)
{
    switch (kind) {
    case FCommandKind::Creator:
        return "creator";
    case FCommandKind::Attribute:
        return "attribute";
    case FCommandKind::Member:
        return "member";
    case FCommandKind::MutableMember:
        return "mutableMember";
    case FCommandKind::Global:
    case FCommandKind::Operator:
        break;
    }
    return "global";
}

QJsonObject commandJson(const FCommandInfo &info)
{
    QJsonArray arguments;
    for (const FArgInfo &arg : info.args)
        arguments.append(QJsonObject{{"type", Q(arg.type)},
                                     {"name", Q(arg.name)},
                                     {"default", arg.hasDefault ? QJsonValue(Q(arg.defaultText))
                                                                : QJsonValue()}});
    return {{"kind", kindName(info.kind)},
            {"receiver", info.receiver ? QJsonValue(info.receiver->name) : QJsonValue()},
            {"name", Q(info.name)},
            {"class", Q(info.publicName())},
            {"arguments", arguments},
            {"returns", Q(info.returns)},
            {"title", Q(info.title)},
            {"hidden", info.hidden},
            {"guiThread", info.guiThread},
            {"systemFlag", int(info.systemFlag)},
            {"documentationKey", Q(info.documentationKey())}};
}
} // namespace

int FCli::commands(const FCliOptions &options)
{
    QJsonArray list;
    for (const auto &info : FCmdManager::instance()->all()) {
        if (options.json)
            list.append(commandJson(*info));
        else
            out(std::string(kindName(info->kind)) + "  " +
                (info->receiver ? info->receiverName() + "." : std::string()) +
                FCommands::signature(*info) + " : " + info->returns);
    }
    if (options.json)
        print(list);
    return kDone;
}

int FCli::help(const FCliOptions &options)
{
    if (options.topic.empty()) {
        out("Usage: turnbuckle help TOPIC, with a script command, a class or a function.\n"
            "turnbuckle --help tells about the command line, turnbuckle commands lists the script "
            "commands.");
        return kDone;
    }
    bool found = false;
    const auto text = [](const std::string &key) {
        const QString translated = QCoreApplication::translate("FObject", key.c_str());
        return translated == Q(key) ? std::string() : S(translated);
    };
    const auto show = [&](const std::string &title, const std::string &key) {
        found = true;
        out(title);
        const std::string body = text(key), example = text(key + ":example");
        if (!body.empty())
            out("    " + body);
        if (!example.empty())
            out("    Example: " + example);
    };
    for (const auto *info : FObject::classes())
        if (info->name == options.topic)
            show(info->name, std::string("!") + info->name);
    for (const auto &info : FCmdManager::instance()->all())
        if (info->name == options.topic || info->receiverName() == options.topic)
            show(std::string(kindName(info->kind)) + " " +
                     (info->receiver ? info->receiverName() + "." : std::string()) +
                     FCommands::signature(*info) + " : " + info->returns,
                 info->documentationKey());
    if (const auto function = FOperators::function(options.topic)) {
        found = true;
        out("function " + FCommands::signature(*function) + " : " + function->returns);
    }
    if (!found)
        err("there is no command, class or function " + options.topic);
    return found ? kDone : kUsage;
}

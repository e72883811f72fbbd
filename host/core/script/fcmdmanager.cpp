// SPDX-License-Identifier: Apache-2.0
#include "fcmdmanager.h"

#include "fbasictype.h"
#include "flogmsg.h"
#include "fmanaged.h"
#include "foperators.h"
#include "fscripttype.h"

#include <QJsonArray>
#include <algorithm>

FCmdManager *FCmdManager::instance()
{
    static FCmdManager manager;
    return &manager;
}

void FCmdManager::add(const std::shared_ptr<FCommandInfo> &info)
{
    const std::string publicName = info->publicName();
    if (FObject::getPrototype(publicName)) {
        FLogMsg::error("FCmdManager", "Command " + publicName + " is registered twice",
                       "second registration dropped", nullptr);
        return;
    }
    mAll.push_back(info);
    if (info->kind == FCommandKind::Creator)
        mCreators[info->name].push_back(info);
    else if (info->kind == FCommandKind::Global || info->kind == FCommandKind::Operator)
        mGlobals[info->name].push_back(info);
    else
        mByReceiver[{info->receiver, info->name}].push_back(info);
    FCmdPrototypes::add(publicName, FCmd::make(info));
}

std::vector<FCmdManager::Info> FCmdManager::getByReceiver(const FClassInfo &receiver,
                                                          const std::string &name) const
{
    std::vector<Info> found;
    for (const FClassInfo *klass = &receiver; klass; klass = klass->base) {
        const auto at = mByReceiver.find({klass, name});
        if (at == mByReceiver.end())
            continue;
        for (const Info &info : at->second)
            if (!isHidden(receiver, *info))
                found.push_back(info);
    }
    return found;
}

std::shared_ptr<FCmd> FCmdManager::getByReceiver(const std::shared_ptr<FObject> &receiver,
                                                 const std::string &name, bool) const
{
    const auto found = receiver ? getByReceiver(receiver->classInfo(), name) : std::vector<Info>();
    return found.empty() ? nullptr : FCmd::make(found.front());
}

std::vector<FCmdManager::Info> FCmdManager::attributes(const FClassInfo &receiver) const
{
    std::vector<Info> found;
    for (const Info &info : mAll)
        if (info->kind == FCommandKind::Attribute && receiver.isA(*info->receiver) &&
            !isHidden(receiver, *info))
            found.push_back(info);
    // A derived class registers after its base, and mAll keeps that order.
    return found;
}

std::vector<std::shared_ptr<FCmd>>
FCmdManager::getAttributesByReceiver(const std::shared_ptr<FObject> &receiver) const
{
    std::vector<std::shared_ptr<FCmd>> found;
    if (receiver)
        for (const Info &info : attributes(receiver->classInfo()))
            if (info->saved)
                found.push_back(FCmd::make(info));
    return found;
}

std::vector<FCmdManager::Info> FCmdManager::creators(const std::string &word) const
{
    const auto at = mCreators.find(word);
    return at == mCreators.end() ? std::vector<Info>() : at->second;
}

std::vector<FCmdManager::Info> FCmdManager::globals(const std::string &name) const
{
    const auto at = mGlobals.find(name);
    return at == mGlobals.end() ? std::vector<Info>() : at->second;
}

FCmdManager::Info FCmdManager::creatorOf(const FClassInfo &made) const
{
    for (const auto &entry : mCreators)
        for (const Info &info : entry.second)
            if (info->receiver == &made)
                return info;
    return nullptr;
}

void FCmdManager::hide(const std::shared_ptr<FObject> &receiver,
                       const std::shared_ptr<FObject> &command)
{
    const FCmd *cmd = command ? command->isFCmd() : nullptr;
    if (receiver && cmd)
        mHidden[&receiver->classInfo()].insert(&cmd->info());
}

bool FCmdManager::isHidden(const FClassInfo &receiver, const FCommandInfo &command) const
{
    for (const FClassInfo *klass = &receiver; klass; klass = klass->base) {
        const auto at = mHidden.find(klass);
        if (at != mHidden.end() && at->second.count(&command))
            return true;
    }
    return false;
}

namespace {
constexpr int kNoFit = -1;

int fitOfHandle(const FArgInfo &arg, const FExprBase &given)
{
    const FClassInfo &value = *given.valueClass();
    if (value.isA(*arg.klass) || given.getExpr()->classInfo().isA(*arg.klass))
        return arg.klass == &FObject::staticClass() ? 1 : 0;
    if (arg.klass->isA(value)) // known only as a base class before it is evaluated
        return 6;
    return arg.klass->isA(FBasicType::staticClass()) && value.isA(FBasicType::staticClass())
               ? 5
               : kNoFit;
}

int fit(const FArgInfo &arg, const FExprBase &given)
{
    const FClassInfo *value = given.valueClass();
    if (!value)
        return arg.hasDefault || arg.klass ? 0 : kNoFit;
    if (arg.type.compare(0, 6, "FEnum<") == 0)
        return value->isA(FWord::staticClass()) || value->isA(FEnumBase::staticClass()) ? 0
               : value->isA(FString::staticClass())                                     ? 1
                                                                                        : kNoFit;
    if (value->isA(FWord::staticClass()))
        return kNoFit; // an unknown name
    if (arg.klass)
        return fitOfHandle(arg, given);
    struct Rule
    {
        const char *type;
        const FClassInfo *klass;
        int score;
    };
    static const Rule rules[] = {
        {"double", &FDouble::staticClass(), 0},     {"double", &FInteger::staticClass(), 2},
        {"double", &FUnsigned::staticClass(), 2},   {"int", &FInteger::staticClass(), 0},
        {"int", &FUnsigned::staticClass(), 1},      {"int", &FDouble::staticClass(), 5},
        {"unsigned", &FUnsigned::staticClass(), 0}, {"unsigned", &FInteger::staticClass(), 1},
        {"unsigned", &FDouble::staticClass(), 5},   {"bool", &FBool::staticClass(), 0},
        {"bool", &FInteger::staticClass(), 3},      {"string", &FString::staticClass(), 0},
        {"QString", &FString::staticClass(), 0},    {"FObjectName", &FString::staticClass(), 0},
        {"strings", &FObjectList::staticClass(), 0}};
    for (const Rule &rule : rules)
        if (arg.type == rule.type && value->isA(*rule.klass))
            return rule.score;
    return value == &FObject::staticClass() ? 7 : kNoFit;
}
} // namespace

FCmdManager::Info FCommands::pick(const std::vector<FCmdManager::Info> &candidates,
                                  const std::vector<FExprBase> &arguments, FReason *why)
{
    FCmdManager::Info best;
    int bestScore = 0;
    for (const auto &info : candidates) {
        const size_t given = arguments.size();
        if (given > info->args.size()) {
            *why = {"too many arguments", signature(*info), ""};
            continue;
        }
        int score = 0;
        for (size_t i = 0; i < info->args.size() && score >= 0; ++i) {
            const FExprBase argument = i < given ? arguments[i] : FExprBase();
            if (i >= given && !info->args[i].hasDefault) {
                *why = {"argument " + info->args[i].name + " is missing", signature(*info), ""};
                score = kNoFit;
                break;
            }
            const int one = fit(info->args[i], argument);
            if (one == kNoFit)
                *why = {"argument " + info->args[i].name, info->args[i].type,
                        FScriptTypes::describe(argument)};
            score = one == kNoFit ? kNoFit : score + one;
        }
        if (score >= 0 && (!best || score < bestScore)) {
            best = info;
            bestScore = score;
        }
    }
    return best;
}

std::string FCommands::signature(const FCommandInfo &info)
{
    std::string text = info.name + "(";
    for (size_t i = 0; i < info.args.size(); ++i) {
        text += (i ? ", " : "") + info.args[i].type + " " + info.args[i].name;
        if (info.args[i].hasDefault)
            text += " = " + info.args[i].defaultText;
    }
    return text + ")";
}

std::string FScriptTypes::describe(const FExprBase &expr)
{
    if (!expr)
        return "nothing";
    const std::shared_ptr<FObject> object = expr.getExpr();
    if (const auto word = std::dynamic_pointer_cast<FWord>(object))
        return "the unknown name " + word->value();
    if (const auto managed = std::dynamic_pointer_cast<FManaged>(object))
        return managed->getClass() + " " + managed->getName();
    std::string text = expr.toString();
    if (text.size() > 60)
        text = text.substr(0, 57) + "...";
    return text;
}

const char *FCommands::kindName(FCommandKind kind)
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

QJsonObject FCommands::json(const FCommandInfo &info)
{
    QJsonArray arguments;
    for (const FArgInfo &arg : info.args)
        arguments.append(QJsonObject{
            {"type", Q(arg.type)},
            {"name", Q(arg.name)},
            {"default", arg.hasDefault ? QJsonValue(Q(arg.defaultText)) : QJsonValue()}});
    return {{"kind", kindName(info.kind)},
            {"receiver", info.receiver ? QJsonValue(info.receiver->name) : QJsonValue()},
            {"name", Q(info.name)},
            {"class", Q(info.publicName())},
            {"arguments", arguments},
            {"returns", Q(info.returns)},
            {"title", Q(info.shownTitle())},
            {"hidden", info.hidden},
            {"guiThread", info.guiThread},
            {"systemFlag", int(info.systemFlag)},
            {"documentationKey", Q(info.documentationKey())}};
}

// SPDX-License-Identifier: Apache-2.0
#include "fcmd.h"

#include "fbasictype.h"
#include "fhistory.h"
#include "flogmsg.h"
#include "fmanaged.h"
#include "foperators.h"
#include "fscripttype.h"
#include "fupdates.h"

#include <algorithm>

F_CLASS_IMPL(FCmd)
F_CLASS_IMPL(FMemberCmd)
F_CLASS_IMPL(FAttribCmd)
F_CLASS_IMPL(FCreateCmd)

std::string FCommandInfo::publicName() const
{
    std::string types;
    for (const FArgInfo &arg : args)
        types += arg.type;
    switch (kind) {
    case FCommandKind::Creator:
        return "FCreateCmd" + receiverName() + name + types;
    case FCommandKind::Attribute:
        return "FAttribCmd" + receiverName() + name + types;
    case FCommandKind::Member:
        return "FMemberCmdconst" + receiverName() + name + types;
    case FCommandKind::MutableMember:
        return "FMemberCmd" + receiverName() + name + types;
    case FCommandKind::Global:
    case FCommandKind::Operator:
        break;
    }
    return receiver ? "FCmd" + receiverName() + name + types
                    : "FCmd" + name + "null" + (args.empty() ? returns : types);
}

std::string FCommandInfo::documentationKey() const
{
    static const std::map<FCommandKind, const char *> words{
        {FCommandKind::Creator, "creator."},
        {FCommandKind::Attribute, "attribute."},
        {FCommandKind::Member, "member."},
        {FCommandKind::MutableMember, "mutableMember."}};
    std::string key = "!";
    const auto word = words.find(kind);
    key += word == words.end() ? "Global." : receiverName() + "." + word->second;
    key += name + "(";
    for (size_t i = 0; i < args.size(); ++i) {
        key += (i ? "," : "") + args[i].type + "," + args[i].name;
        if (args[i].hasDefault)
            key += " = " + args[i].defaultText;
    }
    return key + ")";
}

size_t FCommandInfo::requiredArgs() const
{
    return size_t(std::count_if(args.begin(), args.end(),
                                [](const FArgInfo &arg) { return !arg.hasDefault; }));
}

FCmd::FCmd(std::shared_ptr<const FCommandInfo> info)
    : mInfo(std::move(info))
{
    if (!mInfo) {
        static const auto none = std::make_shared<const FCommandInfo>();
        mInfo = none;
    }
    setImediateUpdate(false); // expressions are evaluated when somebody asks
}

std::shared_ptr<FCmd> FCmd::make(const std::shared_ptr<const FCommandInfo> &info)
{
    switch (info->kind) {
    case FCommandKind::Creator:
        return f_make_shared<FCreateCmd>(info);
    case FCommandKind::Attribute:
        return f_make_shared<FAttribCmd>(info);
    case FCommandKind::Member:
    case FCommandKind::MutableMember:
        return f_make_shared<FMemberCmd>(info);
    case FCommandKind::Global:
    case FCommandKind::Operator:
        break;
    }
    return f_make_shared<FCmd>(info);
}

bool FCmd::setReceiver(const FExprBase &receiver)
{
    const FClassInfo *klass = receiver ? &receiver.getExpr()->valueClass() : nullptr;
    if (receiver && !receiver.isExpression())
        klass = &receiver.getExpr()->classInfo();
    if (klass && mInfo->receiver && !klass->isA(*mInfo->receiver) &&
        !mInfo->receiver->isA(*klass) && !klass->isA(FObjectList::staticClass()))
        return false;
    mReceiver = receiver;
    if (mInfo->isConst())
        mReceiver.registerClient(shared_from_this(), false);
    return bool(receiver);
}

void FCmd::setArguments(const std::vector<FExprBase> &arguments)
{
    mArguments = arguments;
    if (mInfo->isPure())
        for (FExprBase &argument : mArguments)
            argument.registerClient(shared_from_this(), false);
    setOutOfDate(0);
}

FExprBase FCmd::getArgument(unsigned index) const
{
    return index < mArguments.size() ? mArguments[index] : FExprBase();
}

std::shared_ptr<FObject> FCmd::evaluate() const
{
    update(nullptr);
    return mResult.getPtr();
}

bool FCmd::execute()
{
    setOutOfDate(0);
    update(nullptr);
    return mError.empty();
}

FResult FCmd::callOne(FObject *receiver) const
{
    const bool changes =
        mInfo->kind == FCommandKind::Attribute || mInfo->kind == FCommandKind::MutableMember;
    auto *managed = dynamic_cast<FManaged *>(receiver);
    if (!changes || !mInfo->recorded || !managed)
        return mInfo->call(receiver, mArguments);
    FHistoryTransaction transaction(nullptr, std::string(), true);
    FResult result = mInfo->call(receiver, mArguments);
    if (result.error.empty() && !managed->isDestroyed())
        transaction.addStep(managed->shared_from_base<FManaged>());
    return result;
}

FResult FCmd::call() const
{
    if (mArguments.size() > mInfo->args.size())
        return FResult::fail("too many arguments");
    if (mInfo->kind == FCommandKind::Creator) {
        std::vector<FExprBase> arguments{
            FExprBase(f_make_shared<FString>(static_cast<const FCreateCmd *>(this)->name()))};
        arguments.insert(arguments.end(), mArguments.begin(), mArguments.end());
        return mInfo->call(nullptr, arguments);
    }
    if (mInfo->kind == FCommandKind::Global || mInfo->kind == FCommandKind::Operator)
        return mInfo->call(nullptr, mArguments);

    std::shared_ptr<FObject> receiver = mReceiver.getPtr();
    if (!receiver)
        return FResult::fail("nothing to call " + mInfo->name + " on");
    if (!receiver->classInfo().isA(*mInfo->receiver)) {
        const auto list = std::dynamic_pointer_cast<FObjectList>(receiver);
        if (list && list->count() > 1) {
            auto results = f_make_shared<FObjectList>(nullptr, 0U);
            results->setAsSelectionSet(true);
            for (const FExprBase &element : list->getObjects()) {
                const std::shared_ptr<FObject> object = element.getPtr();
                if (!object || !object->classInfo().isA(*mInfo->receiver))
                    continue;
                FResult one = callOne(object.get());
                if (!one.error.empty())
                    return one;
                results->append(one.value);
            }
            return {FExprBase(results), {}};
        }
        if (list && list->count() == 1)
            receiver = list->getObject(0).getPtr();
        if (!receiver || !receiver->classInfo().isA(*mInfo->receiver))
            return FResult::fail(mInfo->name + " applies to " + mInfo->receiverName() + ", found " +
                                 FScriptTypes::describe(mReceiver));
    }
    return callOne(receiver.get());
}

void FCmd::doUpdate() const
{
    if (!mInfo->call)
        return;
    FImmediateUpdateBlocker blocker;
    FResult result = call();
    mResult = std::move(result.value);
    mError = std::move(result.error);
    if (mPost)
        mPost(std::static_pointer_cast<const FCmd>(shared_from_this()));
}

std::shared_ptr<FObject> FCmd::valueObject() const
{
    const std::shared_ptr<FObject> object = evaluate();
    return object ? object->valueObject() : nullptr;
}

const FClassInfo &FCmd::valueClass() const
{
    return mInfo->returnClass ? *mInfo->returnClass : FObject::staticClass();
}

FExprBase FCmd::getCurrentValue(bool *differs) const
{
    if (differs)
        *differs = false;
    std::shared_ptr<FObject> receiver = mReceiver.getPtr();
    if (const auto list = std::dynamic_pointer_cast<FObjectList>(receiver))
        receiver = list->getObject(0).getPtr();
    if (!receiver || !mInfo->currentValue || !receiver->classInfo().isA(*mInfo->receiver))
        return FExprBase();
    return mInfo->currentValue(receiver.get());
}

std::string FCmd::argumentText() const
{
    std::string text = "(";
    for (size_t i = 0; i < mArguments.size(); ++i)
        text += (i ? "," : "") + mArguments[i].toString();
    return text + ")";
}

std::string FCmd::scriptText() const
{
    if (mInfo->kind == FCommandKind::Operator)
        return FOperators::text(*this);
    if (mInfo->kind == FCommandKind::Global)
        return mInfo->name + argumentText();
    const FCmd *inner = mReceiver ? mReceiver.getExpr()->isFCmd() : nullptr;
    std::string text = mReceiver.toString();
    if (inner && FOperators::needsBrackets(*inner))
        text = "(" + text + ")";
    return text + "." + mInfo->name + argumentText();
}

std::string FCreateCmd::scriptText() const
{
    std::string text = info().name + " " + mName + "(";
    for (size_t i = 0; i < arguments().size(); ++i)
        text += (i ? "," : "") + arguments()[i].toString();
    return text + ")";
}

void FCreateCmd::setMade(const FExprBase &object) { setResult(object); }

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
                                  const std::vector<FExprBase> &arguments, std::string *why)
{
    FCmdManager::Info best;
    int bestScore = 0;
    for (const auto &info : candidates) {
        const size_t given = arguments.size();
        if (given > info->args.size()) {
            *why = "too many arguments, expected " + signature(*info);
            continue;
        }
        int score = 0;
        for (size_t i = 0; i < info->args.size() && score >= 0; ++i) {
            const FExprBase argument = i < given ? arguments[i] : FExprBase();
            if (i >= given && !info->args[i].hasDefault) {
                *why =
                    "argument " + info->args[i].name + " is missing, expected " + signature(*info);
                score = kNoFit;
                break;
            }
            const int one = fit(info->args[i], argument);
            if (one == kNoFit)
                *why = "argument " + info->args[i].name + ": expected " + info->args[i].type +
                       ", found " + FScriptTypes::describe(argument);
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

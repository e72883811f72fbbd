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
    return size_t(std::count_if(
        args.begin(), args.end(), [](const FArgInfo &arg) { return !arg.hasDefault; }));
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
    // The calls of a chain run one after the other, the first one first.
    std::vector<const FCmd *> receivers;
    for (const FCmd *one = receiverCommand(); one && !one->isUpToDate();
         one = one->receiverCommand())
        receivers.push_back(one);
    for (; !receivers.empty(); receivers.pop_back())
        receivers.back()->update(nullptr);
    update(nullptr);
    return mResult.getPtr();
}

std::vector<const FCmd *> FCmd::commandsIn(const FExprBase &expr)
{
    std::vector<const FCmd *> found, todo;
    const auto add = [&](const FExprBase &one) {
        if (one.isExpression())
            todo.push_back(static_cast<const FCmd *>(one.getExpr().get()));
    };
    for (add(expr); !todo.empty();) {
        const FCmd *command = todo.back();
        todo.pop_back();
        found.push_back(command);
        for (size_t i = command->mArguments.size(); i-- > 0;)
            add(command->mArguments[i]);
        add(command->mReceiver);
    }
    return found;
}

bool FCmd::execute()
{
    setOutOfDate(0);
    update(nullptr);
    return !mError;
}

const FReason &FCmd::error() const
{
    static const FReason sNone;
    return mError ? *mError : sNone;
}

FResult FCmd::callOne(FObject *receiver) const
{
    const bool changes =
        mInfo->kind == FCommandKind::Attribute || mInfo->kind == FCommandKind::MutableMember;
    auto *managed = dynamic_cast<FManaged *>(receiver);
    if (!changes || !mInfo->recorded || !managed)
        return mInfo->call(receiver, mArguments);
    FHistorySavepoint step((std::string()));
    FResult result = mInfo->call(receiver, mArguments);
    if (!result.error.empty())
        step.rollback();
    else if (!managed->isDestroyed())
        FHistory::instance()->addStep(managed->shared_from_this());
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
            FHistorySavepoint step((std::string())); // one for all
            auto results = f_make_shared<FObjectList>(nullptr, 0U);
            results->setAsSelectionSet(true);
            for (const FExprBase &element : list->getObjects()) {
                const std::shared_ptr<FObject> object = element.getPtr();
                if (!object || !object->classInfo().isA(*mInfo->receiver))
                    continue;
                FResult one = callOne(object.get());
                if (!one.error.empty()) {
                    step.rollback();
                    return one;
                }
                results->append(one.value);
            }
            return {FExprBase(results), {}};
        }
        if (list && list->count() == 1)
            receiver = list->getObject(0).getPtr();
        if (!receiver || !receiver->classInfo().isA(*mInfo->receiver))
            return FResult::fail({mInfo->name + " applies to " + mInfo->receiverName(), "",
                                  FScriptTypes::describe(mReceiver)});
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
    mError =
        result.error.empty() ? nullptr : std::make_unique<const FReason>(std::move(result.error));
    if (mPost)
        mPost(std::static_pointer_cast<const FCmd>(shared_from_this()));
}

bool FCmd::standsFor(std::shared_ptr<FObject> *value) const
{
    *value = evaluate();
    return true;
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

std::string FCmd::scriptText() const { return FOperators::text(*this); }

std::string FCreateCmd::scriptText() const
{
    std::string text = info().name + " " + mName + "(";
    for (size_t i = 0; i < arguments().size(); ++i)
        text += (i ? "," : "") + arguments()[i].toString();
    return text + ")";
}

void FCreateCmd::setMade(const FExprBase &object) { setResult(object); }

// SPDX-License-Identifier: Apache-2.0
#include "fdispatcher.h"

#include "fbasictype.h"
#include "fchanges.h"
#include "fcmdbinder.h"
#include "fhistory.h"
#include "flogmsg.h"
#include "fmanaged.h"
#include "fmarloctrl.h"
#include "fscript.h"
#include "fselectionset.h"

namespace {
/// Runs \p work as one step that is taken back if it fails.
template <class Work>
FResult asOneStep(const std::string &text, const std::string &line, const std::string &joinKey,
                  Work work)
{
    FHistory *history = FHistory::instance();
    if (FMarloCtrl::instance()->isLoadingProject())
        return FResult::fail("nothing can be changed while a project is loading");
    FHistorySavepoint step((std::string())); // setters name it
    history->setLine(line, text);
    if (!joinKey.empty())
        history->setJoinKey(joinKey);
    FResult result = work();
    if (!result.error.empty()) {
        step.rollback();
        FLogMsg::error("Script", line, result.error.text(), nullptr);
    }
    return result;
}

FResult unknown(const std::string &what, const std::string &name)
{
    return FResult::fail(FReason::unexpected(what, name));
}

FResult run(const std::shared_ptr<FCmd> &command)
{
    if (!command->execute())
        return FResult::fail(command->error());
    return {command->result(), {}};
}
} // namespace

FResult FDispatcher::execute(const FExprBase &receiver, const std::string &command,
                             const std::vector<FExprBase> &arguments, const std::string &joinKey)
{
    return execute(std::vector<FExprBase>{receiver}, command, arguments, joinKey);
}

FResult FDispatcher::execute(const std::vector<FExprBase> &receivers, const std::string &command,
                             const std::vector<FExprBase> &arguments, const std::string &joinKey)
{
    if (receivers.empty() || !receivers.front())
        return FResult::fail("nothing to call " + command + " on");
    std::vector<std::shared_ptr<FCmd>> calls;
    std::string line, text;
    for (const FExprBase &receiver : receivers) {
        const auto object = receiver.getPtr();
        if (!object)
            return FResult::fail("nothing to call " + command + " on");
        FReason why;
        const auto info = FCommands::pick(
            FCmdManager::instance()->getByReceiver(object->classInfo(), command), arguments, &why);
        if (!info)
            return why.empty() ? unknown("a command of " + object->getClass(), command)
                               : FResult::fail(why);
        const auto call = FCmd::make(info);
        call->setReceiver(FExprBase(object));
        call->setArguments(arguments);
        text = info->title.empty() || info->title == "nolabel" ? info->name : info->title;
        line += (line.empty() ? "" : " ") + call->scriptText() + ";";
        calls.push_back(call);
    }
    return asOneStep(text, line, joinKey, [&] {
        FResult result;
        for (const auto &call : calls) {
            result = run(call);
            if (!result.error.empty())
                break;
        }
        return result;
    });
}

FResult FDispatcher::call(const std::string &function, const std::vector<FExprBase> &arguments)
{
    FReason why;
    const auto info = FCommands::pick(FCmdManager::instance()->globals(function), arguments, &why);
    if (!info)
        return why.empty() ? unknown("a function", function) : FResult::fail(why);
    const auto command = FCmd::make(info);
    command->setArguments(arguments);
    if (!info->recorded) // undo, redo: no step of its own
        return run(command);
    return asOneStep(function, command->scriptText() + ";", {}, [&] { return run(command); });
}

FResult FDispatcher::create(const std::string &word, const std::string &name,
                            const std::vector<FExprBase> &arguments)
{
    FReason why;
    const auto info = FCommands::pick(FCmdManager::instance()->creators(word), arguments, &why);
    if (!info)
        return why.empty() ? unknown("the word of a creator", word) : FResult::fail(why);
    const auto command = std::static_pointer_cast<FCreateCmd>(FCmd::make(info));
    command->setValue(name);
    command->setArguments(arguments);
    return asOneStep("create " + name, command->scriptText() + ";", {}, [&] {
        FResult result = run(command);
        if (result.error.empty() && !result.value)
            return FResult::fail(word + " made nothing");
        return result;
    });
}

FResult FDispatcher::script(const std::string &text, std::vector<FScriptError> *errors)
{
    FScriptReader reader(text, "script");
    reader.setLogging(false);
    FResult result = asOneStep("script", text, {}, [&] {
        return reader.run() ? FResult{reader.lastResult(), {}}
                            : FResult::fail(reader.errors().front().toString());
    });
    if (errors)
        *errors = reader.errors();
    return result;
}

namespace {
void selectObjects(const FExpr<FObjectList> &objects)
{
    std::vector<FExprBase> all;
    if (const auto list = objects.getPtr())
        for (const FExprBase &object : list->getObjects())
            all.push_back(FExprBase(object.getPtr()));
    FSelectionSet::instance()->set(all, true);
}

FStatus undo()
{
    return FHistory::instance()->undo() ? FStatus{} : FStatus{"there is nothing to undo"};
}

FStatus redo()
{
    return FHistory::instance()->redo() ? FStatus{} : FStatus{"there is nothing to redo"};
}
} // namespace

void FObject::initCmds()
{
    FCmdBinder<FObject> c;
    c.global("select", &selectObjects, FArg{"objects"}).disableHistory();
    c.global("undo", &undo).disableHistory();
    c.global("redo", &redo).disableHistory();
}

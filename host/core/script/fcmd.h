// SPDX-License-Identifier: Apache-2.0
#ifndef FCMD_H
#define FCMD_H
#include "fexpr.h"
#include "fscripterror.h"

#include <functional>

enum class FCommandKind { Creator, Attribute, Member, MutableMember, Global, Operator };

/// Outcome of a call: a value (may be null) or the reason why there is none.
struct FResult
{
    FExprBase value;
    FReason error;
    static FResult fail(FReason why) { return {FExprBase(), std::move(why)}; }
};

/// What a command answers that has no result but may fail; an empty reason is success.
struct FStatus
{
    FReason error;
    explicit operator bool() const { return error.empty(); }
};

/// One argument of a command.
struct FArgInfo
{
    std::string name;
    std::string type;        ///< script name of the type
    const FClassInfo *klass; ///< class that a handle must refer to; null for native types
    bool hasDefault = false;
    std::string defaultText; ///< script text of the default
};

/// All that is known of one script command. Presentation never stops saving or execution.
struct FCommandInfo
{
    FCommandKind kind = FCommandKind::Member;
    const FClassInfo *receiver = nullptr; ///< null for globals without a class
    std::string name;
    std::string returns; ///< script name of the result type, "none" without one
    const FClassInfo *returnClass = nullptr;
    std::vector<FArgInfo> args;
    /// Calls with as many arguments as there are; missing ones are null handles.
    std::function<FResult(FObject *, const std::vector<FExprBase> &)> call;
    std::function<FExprBase(const FObject *)> currentValue; ///< attributes only

    // Presentation and saving
    std::string title, component, category, menuEntry, menuIcon, requiredCmd;
    double categoryWeight = 0;
    int menuPosition = 0;
    unsigned userLevel = 0, cmdFlags = 0, systemFlag = 0;
    bool hidden = false, readOnly = false, guiThread = false, attrAsExpr = true;
    bool needsGuiReinit = false, selectOnExec = false, saved = true;
    bool ownProjectOnly = false;                  ///< imports may never use it
    bool recorded = true;                         ///< history keeps the receiver's state
    std::function<bool(const FObject *)> savedIf; ///< saved only if it answers true

    /// What an editor calls the command. The title "nolabel" stands for no label of its own: the
    /// command is known by its category then.
    const std::string &shownTitle() const { return title == "nolabel" ? category : title; }
    std::string receiverName() const { return receiver ? receiver->name : std::string(); }
    /// The public class name, put together from kind, receiver, name and types.
    std::string publicName() const;
    /// Key of the documentation text: "!Class.kind.name(type,argument,...)".
    std::string documentationKey() const;
    /// A command that only calculates: it is called anew when its receiver or an argument changes.
    bool pure = false;
    /// A member that only fills its receiver, as saved projects do, or the creator of an object
    /// that a copy may bring; imports may use it.
    bool fills = false;
    bool isConst() const { return kind == FCommandKind::Member; }
    bool isPure() const { return pure || isConst() || kind == FCommandKind::Operator; }
    size_t requiredArgs() const;
};

/// A command prototype, or, as a clone with arguments, a node of an expression.
class FCmd : public FObject
{
    F_CLASS(FCmd, FObject)
public:
    explicit FCmd(std::shared_ptr<const FCommandInfo> info = nullptr);

    const FCmd *isFCmd() const override { return this; }
    const FCommandInfo &info() const { return *mInfo; }
    const std::shared_ptr<const FCommandInfo> &infoPtr() const { return mInfo; }
    /// A command of the right family (creator, attribute, member, global) for \p info.
    static std::shared_ptr<FCmd> make(const std::shared_ptr<const FCommandInfo> &info);
    std::shared_ptr<FCmd> cloneCmd() const { return make(mInfo); }
    std::shared_ptr<FObject> clone() const override { return cloneCmd(); }

    /// False if the receiver doesn't fit the command.
    bool setReceiver(const FExprBase &receiver);
    const FExprBase &getReceiver() const { return mReceiver; }
    void setArguments(const std::vector<FExprBase> &arguments);
    const std::vector<FExprBase> &arguments() const { return mArguments; }
    FExprBase getArgument(unsigned index) const;
    /// Runs after the call and before the base update; may look at the result.
    void setPostExecution(std::function<void(const std::shared_ptr<const FCmd> &)> function)
    {
        mPost = std::move(function);
    }

    /// The result of the command, executed if it is stale or never was.
    std::shared_ptr<FObject> evaluate() const;
    /// The commands of an expression, each before the ones that it is called on and takes.
    static std::vector<const FCmd *> commandsIn(const FExprBase &expr);
    /// Executes and tells whether that went well; the reason of a failure is error().
    bool execute();
    const FExprBase &result() const { return mResult; }
    const FReason &error() const;
    void doUpdate() const override;

    bool standsFor(std::shared_ptr<FObject> *value) const override;
    const FClassInfo &valueClass() const override;
    /// Expressions may be of any length, so neither this nor evaluate() calls itself along them.
    std::string scriptText() const override;
    bool isValid() const override { return !mError; }
    /// Value of the attribute on the receiver, for editors and the project writer.
    FExprBase getCurrentValue(bool *differs = nullptr) const;

protected:
    void setResult(const FExprBase &result)
    {
        mResult = result;
        setUpToDate();
    }

private:
    FResult callOne(FObject *receiver) const;
    FResult call() const;
    const FCmd *receiverCommand() const
    {
        return mReceiver.isExpression() ? static_cast<const FCmd *>(mReceiver.getExpr().get())
                                        : nullptr;
    }

    std::shared_ptr<const FCommandInfo> mInfo;
    FExprBase mReceiver;
    std::vector<FExprBase> mArguments;
    std::function<void(const std::shared_ptr<const FCmd> &)> mPost;
    mutable FExprBase mResult;
    mutable std::unique_ptr<const FReason> mError; // null for none, as in nearly every node
};

class FMemberCmd : public FCmd
{
    F_CLASS(FMemberCmd, FCmd)
public:
    using FCmd::FCmd;
    FMemberCmd() = default;
};

class FAttribCmd : public FMemberCmd
{
    F_CLASS(FAttribCmd, FMemberCmd)
public:
    using FMemberCmd::FMemberCmd;
    FAttribCmd() = default;
};

class FCreateCmd : public FCmd
{
    F_CLASS(FCreateCmd, FCmd)
public:
    using FCmd::FCmd;
    FCreateCmd() = default;
    /// Name of the object that is made.
    void setValue(const std::string &name) { mName = name; }
    const std::string &name() const { return mName; }
    /// Takes an object that was made otherwise as the one that this command made.
    void setMade(const FExprBase &object);
    std::string scriptText() const override;

private:
    std::string mName;
};
#endif

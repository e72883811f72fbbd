// SPDX-License-Identifier: Apache-2.0
#ifndef FCMDBINDER_H
#define FCMDBINDER_H
#include "fcmd.h"
#include "fcmdmanager.h"
#include "fscripttype.h"

#include <tuple>
#include <utility>

struct FNone
{
};
/// Name and default of an argument. A default of nullptr is an empty handle.
template <class D = FNone>
struct FArg
{
    const char *name;
    D def{};
};
FArg(const char *)->FArg<FNone>;
template <class D>
FArg(const char *, D) -> FArg<D>;

/// What a command answers that gives a value or says why there is none.
template <class T>
struct FOutcome
{
    T value;
    FReason error;
};

namespace FBinder {
template <class R>
struct FOutcomeOf : std::false_type
{
    using Type = R;
};
template <class T>
struct FOutcomeOf<FOutcome<T>> : std::true_type
{
    using Type = T;
};

template <class P, class D>
constexpr bool kFits = std::is_same_v<D, FNone> || std::is_convertible_v<D, P>;

template <class... D>
constexpr bool defaultsLast()
{
    bool seen = false, ok = true;
    ((seen = seen || !std::is_same_v<D, FNone>, ok = ok && (!seen || !std::is_same_v<D, FNone>)),
     ...);
    return ok;
}

template <class P, class D>
FArgInfo argInfo(const FArg<D> &arg)
{
    FArgInfo info;
    info.name = arg.name;
    info.type = FScriptType<P>::name();
    info.klass = FScriptType<P>::klass();
    if constexpr (!std::is_same_v<D, FNone>) {
        info.hasDefault = true;
        if constexpr (std::is_same_v<D, std::nullptr_t>)
            info.defaultText = "nullptr";
        else
            info.defaultText = FScriptType<P>::to(P(arg.def)).toString();
    }
    return info;
}

template <class P, class D>
bool readArg(const FArg<D> &arg, const FExprBase &in, P *value, FReason *why)
{
    if constexpr (!std::is_same_v<D, FNone>)
        if (!in.getExpr()) {
            *value = P(arg.def);
            return true;
        }
    if (FScriptType<P>::from(in, value, why))
        return true;
    *why = why->about(std::string("argument ") + arg.name);
    return false;
}

template <class R, class Fn, class... P, class... D, size_t... I>
FResult convertAndCall(const std::tuple<FArg<D>...> &args, FObject *self,
                       const std::vector<FExprBase> &in, const Fn &fn, std::tuple<P...> *values,
                       std::index_sequence<I...>)
{
    FReason why;
    const auto given = [&](size_t i) { return i < in.size() ? in[i] : FExprBase(); };
    // All arguments convert, or nothing runs.
    if (!(readArg(std::get<I>(args), given(I), &std::get<I>(*values), &why) && ...))
        return FResult::fail(why);
    (void)given;
    if constexpr (std::is_void_v<R>) {
        fn(self, std::get<I>(*values)...);
        return {};
    } else if constexpr (std::is_same_v<R, FStatus>) {
        return FResult::fail(fn(self, std::get<I>(*values)...).error);
    } else if constexpr (FOutcomeOf<R>::value) {
        auto outcome = fn(self, std::get<I>(*values)...);
        return {FScriptType<typename FOutcomeOf<R>::Type>::to(outcome.value),
                std::move(outcome.error)};
    } else {
        return {FScriptType<std::decay_t<R>>::to(fn(self, std::get<I>(*values)...)), {}};
    }
}

template <class R, class... P, class Fn, class... D>
std::shared_ptr<FCommandInfo> makeCommand(FCommandKind kind, const FClassInfo *owner,
                                          const char *name, Fn fn, const FArg<D> &...a)
{
    static_assert(sizeof...(P) == sizeof...(D), "one FArg per parameter");
    static_assert((kFits<std::decay_t<P>, D> && ...), "a default must convert to its parameter");
    static_assert(defaultsLast<D...>(), "defaults only at the end");
    auto info = std::make_shared<FCommandInfo>();
    info->kind = kind;
    info->receiver = owner;
    info->name = name;
    info->args = {argInfo<std::decay_t<P>>(a)...};
    if constexpr (std::is_void_v<R> || std::is_same_v<R, FStatus>) {
        info->returns = "none";
    } else {
        using Type = typename FOutcomeOf<std::decay_t<R>>::Type;
        info->returns = FScriptType<Type>::name();
        info->returnClass = FScriptType<Type>::resultClass();
    }
    const std::tuple<FArg<D>...> args(a...);
    info->call = [args, fn](FObject *self, const std::vector<FExprBase> &in) {
        std::tuple<std::decay_t<P>...> values;
        return convertAndCall<R>(args, self, in, fn, &values, std::index_sequence_for<P...>{});
    };
    return info;
}
} // namespace FBinder

/// Registers the commands of class \p T, one line each.
template <class T>
class FCmdBinder
{
public:
    ~FCmdBinder() { flush(); }

    template <class R, class... P, class... D>
    FCmdBinder &creator(const char *word, R (*make)(std::string const &, P...), const FArg<D> &...a)
    {
        // The name of the new object travels in front of the arguments, as a text.
        auto info = FBinder::makeCommand<R, std::string, P...>(
            FCommandKind::Creator, &T::staticClass(), word,
            [make](FObject *, const auto &...v) -> R { return make(v...); }, FArg{"name"}, a...);
        info->args.erase(info->args.begin());
        return add(info);
    }
    /// Setter and getter in one entry. A setter that returns its object returns it to the script.
    template <class C, class R, class P, class G, class... D>
    FCmdBinder &attribute(const char *name, R (C::*set)(P), G (C::*get)() const,
                          const FArg<D> &...a)
    {
        auto info = FBinder::makeCommand<R, P>(
            FCommandKind::Attribute, &T::staticClass(), name,
            [set](FObject *o, const auto &...v) -> R { return (static_cast<T *>(o)->*set)(v...); },
            a...);
        if constexpr (!std::is_void_v<R> && !std::is_same_v<R, FStatus>) {
            info->returns = T::className();
            info->returnClass = &T::staticClass();
        }
        info->currentValue = [get](const FObject *o) {
            return FScriptType<std::decay_t<G>>::to((static_cast<const T *>(o)->*get)());
        };
        return add(info);
    }
    template <class C, class R, class... P, class... D>
    FCmdBinder &member(const char *name, R (C::*fn)(P...) const, const FArg<D> &...a)
    {
        return add(FBinder::makeCommand<R, P...>(
            FCommandKind::Member, &T::staticClass(), name,
            [fn](FObject *o, const auto &...v) -> R {
                return (static_cast<const T *>(o)->*fn)(v...);
            },
            a...));
    }
    template <class C, class R, class... P, class... D>
    FCmdBinder &member(const char *name, R (C::*fn)(P...), const FArg<D> &...a)
    {
        return add(FBinder::makeCommand<R, P...>(
            FCommandKind::MutableMember, &T::staticClass(), name,
            [fn](FObject *o, const auto &...v) -> R { return (static_cast<T *>(o)->*fn)(v...); },
            a...));
    }
    template <class R, class... P, class... D>
    FCmdBinder &global(const char *name, R (*fn)(P...), const FArg<D> &...a)
    {
        return add(FBinder::makeCommand<R, P...>(
            FCommandKind::Global, std::is_same_v<T, FObject> ? nullptr : &T::staticClass(), name,
            [fn](FObject *, const auto &...v) -> R { return fn(v...); }, a...));
    }

    // Presentation of the command just named.
    FCmdBinder &title(const char *text) { return mInfo->title = text, *this; }
    FCmdBinder &component(const char *text) { return mInfo->component = text, *this; }
    FCmdBinder &category(const char *text, double weight = 0)
    {
        return mInfo->category = text, mInfo->categoryWeight = weight, *this;
    }
    FCmdBinder &hidden() { return mInfo->hidden = true, *this; }
    FCmdBinder &readOnly() { return mInfo->readOnly = true, *this; }
    FCmdBinder &guiThread() { return mInfo->guiThread = true, *this; }
    FCmdBinder &selectOnExec(bool on) { return mInfo->selectOnExec = on, *this; }
    FCmdBinder &systemFlag(unsigned flag) { return mInfo->systemFlag = flag, *this; }
    FCmdBinder &userLevel(unsigned level) { return mInfo->userLevel = level, *this; }
    FCmdBinder &cmdFlags(unsigned flags) { return mInfo->cmdFlags = flags, *this; }
    FCmdBinder &attrAsExpr(bool on) { return mInfo->attrAsExpr = on, *this; }
    FCmdBinder &needsGuiReinit() { return mInfo->needsGuiReinit = true, *this; }
    FCmdBinder &pure() { return mInfo->pure = true, *this; }
    FCmdBinder &fills() { return mInfo->fills = true, *this; }
    FCmdBinder &requiredCmd(const char *text) { return mInfo->requiredCmd = text, *this; }
    FCmdBinder &menu(const char *entry, int position, const char *icon)
    {
        mInfo->menuEntry = entry;
        mInfo->menuPosition = position;
        mInfo->menuIcon = icon;
        return *this;
    }
    FCmdBinder &disableSaving() { return mInfo->saved = false, *this; }
    FCmdBinder &disableHistory() { return mInfo->recorded = false, *this; }
    FCmdBinder &savedIf(std::function<bool(const FObject *)> test)
    {
        return mInfo->savedIf = std::move(test), *this;
    }
    FCmdBinder &ownProjectOnly() { return mInfo->ownProjectOnly = true, *this; }
    /// Registers the command just named now rather than with the next one.
    void flushNow() { flush(); }
    /// Script name of an argument's type where it isn't that of the C++ function.
    FCmdBinder &typeOf(size_t argument, const char *type)
    {
        return mInfo->args[argument].type = type, *this;
    }
    FCmdBinder &argName(size_t argument, const char *name)
    {
        return mInfo->args[argument].name = name, *this;
    }
    /// Name of the result type where it isn't that of the C++ function.
    template <class C>
    FCmdBinder &returns()
    {
        mInfo->returns = C::className();
        mInfo->returnClass = &C::staticClass();
        return *this;
    }

private:
    FCmdBinder &add(const std::shared_ptr<FCommandInfo> &info)
    {
        flush();
        mInfo = info;
        return *this;
    }
    void flush()
    {
        if (mInfo)
            FCmdManager::instance()->add(mInfo);
        mInfo.reset();
    }
    std::shared_ptr<FCommandInfo> mInfo;
};
#endif

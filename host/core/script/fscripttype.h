// SPDX-License-Identifier: Apache-2.0
#ifndef FSCRIPTTYPE_H
#define FSCRIPTTYPE_H
#include "fbasictype.h"
#include "fenum.h"
#include "fscripterror.h"

#include <limits>

/// How a native type travels through scripts: its name there, and both conversions. A type
/// without one does not compile.
///
/// from() is strict: it says in words what it found instead of guessing.
template <class T>
struct FScriptType;

namespace FScriptTypes {
std::string describe(const FExprBase &expr);
inline bool fail(const FExprBase &found, const char *expected, FReason *why)
{
    *why = FReason::unexpected(expected, describe(found));
    return false;
}
} // namespace FScriptTypes

template <class T>
struct FScriptNative
{
    static constexpr const FClassInfo *klass() { return nullptr; }
    static const FClassInfo *resultClass() { return nullptr; }
};

template <>
struct FScriptType<double> : FScriptNative<double>
{
    static std::string name() { return "double"; }
    static const FClassInfo *resultClass() { return &FDouble::staticClass(); }
    static bool from(const FExprBase &expr, double *value, FReason *why)
    {
        return (!dynamic_cast<FBool *>(expr.getValueObject().get()) &&
                FConvert::toDouble(expr, value)) ||
               FScriptTypes::fail(expr, "a number", why);
    }
    static FExprBase to(double value) { return FExprBase(f_make_shared<FDouble>(value)); }
};

template <>
struct FScriptType<int> : FScriptNative<int>
{
    static std::string name() { return "int"; }
    static const FClassInfo *resultClass() { return &FInteger::staticClass(); }
    static bool from(const FExprBase &expr, int *value, FReason *why)
    {
        long long whole;
        if (!FConvert::toInt(expr, &whole) || whole != int(whole))
            return FScriptTypes::fail(expr, "a whole number", why);
        *value = int(whole);
        return true;
    }
    static FExprBase to(int value) { return FExprBase(f_make_shared<FInteger>(value)); }
};

template <>
struct FScriptType<unsigned> : FScriptNative<unsigned>
{
    static std::string name() { return "unsigned"; }
    static const FClassInfo *resultClass() { return &FUnsigned::staticClass(); }
    static bool from(const FExprBase &expr, unsigned *value, FReason *why)
    {
        long long whole;
        if (!FConvert::toInt(expr, &whole) || whole < 0 || whole > 0xffffffffLL)
            return FScriptTypes::fail(expr, "a whole number from 0", why);
        *value = unsigned(whole);
        return true;
    }
    static FExprBase to(unsigned value) { return FExprBase(f_make_shared<FUnsigned>(value)); }
};

template <>
struct FScriptType<bool> : FScriptNative<bool>
{
    static std::string name() { return "bool"; }
    static const FClassInfo *resultClass() { return &FBool::staticClass(); }
    static bool from(const FExprBase &expr, bool *value, FReason *why)
    {
        return FConvert::toBool(expr, value) || FScriptTypes::fail(expr, "true or false", why);
    }
    static FExprBase to(bool value) { return FExprBase(f_make_shared<FBool>(value)); }
};

template <>
struct FScriptType<std::string> : FScriptNative<std::string>
{
    static std::string name() { return "string"; }
    static const FClassInfo *resultClass() { return &FString::staticClass(); }
    static bool from(const FExprBase &expr, std::string *value, FReason *why)
    {
        return FConvert::toText(expr, value) || FScriptTypes::fail(expr, "a text in quotes", why);
    }
    static FExprBase to(const std::string &value)
    {
        return FExprBase(f_make_shared<FString>(value));
    }
};

template <>
struct FScriptType<QString> : FScriptNative<QString>
{
    static std::string name() { return "QString"; }
    static const FClassInfo *resultClass() { return &FString::staticClass(); }
    static bool from(const FExprBase &expr, QString *value, FReason *why)
    {
        std::string text;
        if (!FScriptType<std::string>::from(expr, &text, why))
            return false;
        *value = Q(text);
        return true;
    }
    static FExprBase to(const QString &value)
    {
        return FExprBase(f_make_shared<FString>(S(value)));
    }
};

/// A text as UTF-8. It shares the memory of a literal, which may be large.
struct FUtf8Text
{
    std::shared_ptr<const std::string> text;
};

template <>
struct FScriptType<FUtf8Text> : FScriptNative<FUtf8Text>
{
    static std::string name() { return FScriptType<QString>::name(); }
    static const FClassInfo *resultClass() { return &FString::staticClass(); }
    static bool from(const FExprBase &expr, FUtf8Text *value, FReason *why)
    {
        const auto object = std::dynamic_pointer_cast<FString>(expr.getValueObject());
        if (object)
            value->text = std::shared_ptr<const std::string>(object, &object->value());
        return object || FScriptTypes::fail(expr, "a text in quotes", why);
    }
};

/// Any object or expression, unevaluated.
template <>
struct FScriptType<FExprBase> : FScriptNative<FExprBase>
{
    static std::string name() { return "FObject"; }
    static const FClassInfo *klass() { return &FObject::staticClass(); }
    static bool from(const FExprBase &expr, FExprBase *value, FReason *)
    {
        *value = expr;
        return true;
    }
    static FExprBase to(const FExprBase &value) { return value; }
};

/// A handle stays unevaluated; its class is checked as far as it is known.
template <class T, bool B>
struct FScriptType<FExpr<T, B>>
{
    static std::string name() { return T::className(); }
    static const FClassInfo *klass() { return &T::staticClass(); }
    static const FClassInfo *resultClass() { return &T::staticClass(); }
    static bool from(const FExprBase &expr, FExpr<T, B> *value, FReason *why)
    {
        if (const FClassInfo *found = expr.valueClass()) {
            const bool fits =
                found->isA(T::staticClass()) || T::staticClass().isA(*found) ||
                (!expr.isExpression() && expr.getExpr()->classInfo().isA(T::staticClass())) ||
                (T::staticClass().isA(FBasicType::staticClass()) &&
                 FConvert::convert(expr, T::mpNull));
            if (!fits)
                return FScriptTypes::fail(expr, T::className(), why);
        }
        *value = FExpr<T, B>(expr);
        return true;
    }
    static FExprBase to(const FExpr<T, B> &value) { return value; }
};

template <class T>
struct FScriptType<std::shared_ptr<T>>
{
    static std::string name() { return T::className(); }
    static const FClassInfo *klass() { return &T::staticClass(); }
    static const FClassInfo *resultClass() { return &T::staticClass(); }
    static FExprBase to(const std::shared_ptr<T> &value) { return FExprBase(value); }
};

/// A container of handles; null elements are left out.
template <class T>
struct FScriptType<std::vector<FExpr<T, true>>>
{
    static std::string name() { return "FCONTAINER"; }
    static const FClassInfo *klass() { return &FObjectList::staticClass(); }
    static const FClassInfo *resultClass() { return &FObjectList::staticClass(); }
    static bool from(const FExprBase &expr, std::vector<FExpr<T, true>> *value, FReason *why)
    {
        const auto list = expr.ptr<FObjectList>();
        if (!list)
            return FScriptTypes::fail(expr, "a list", why);
        for (const FExprBase &element : list->getObjects()) {
            FExpr<T, true> handle;
            if (!FScriptType<FExpr<T, true>>::from(element, &handle, why))
                return false;
            if (handle)
                value->push_back(handle);
        }
        return true;
    }
    static FExprBase to(const std::vector<FExpr<T, true>> &value)
    {
        auto list = f_make_shared<FObjectList>(T::mpNull, 0U);
        for (const auto &element : value)
            if (element)
                list->append(element);
        return FExprBase(list);
    }
};

template <>
struct FScriptType<std::vector<std::string>> : FScriptNative<std::vector<std::string>>
{
    static std::string name() { return "strings"; }
    static const FClassInfo *resultClass() { return &FObjectList::staticClass(); }
    static bool from(const FExprBase &expr, std::vector<std::string> *value, FReason *why)
    {
        const auto list = expr.ptr<FObjectList>();
        if (!list)
            return FScriptTypes::fail(expr, "a list of texts", why);
        for (const FExprBase &element : list->getObjects()) {
            std::string text;
            if (!FScriptType<std::string>::from(element, &text, why))
                return false;
            value->push_back(text);
        }
        return true;
    }
    static FExprBase to(const std::vector<std::string> &value)
    {
        auto list = f_make_shared<FObjectList>(FString::mpNull, 0U);
        for (const std::string &text : value)
            list->append(FExprBase(f_make_shared<FString>(text)));
        return FExprBase(list);
    }
};

/// Enumerations travel as words.
template <class T>
struct FScriptEnum
{
    static std::string name() { return FEnum<T>::className(); }
    static const FClassInfo *klass() { return nullptr; }
    static const FClassInfo *resultClass() { return &FEnum<T>::staticClass(); }
    static bool from(const FExprBase &expr, T *value, FReason *why)
    {
        const auto object = expr.getValueObject();
        std::string text;
        if (const auto word = std::dynamic_pointer_cast<FWord>(object))
            text = word->value();
        else if (const auto other = std::dynamic_pointer_cast<FEnum<T>>(object))
            text = other->toString();
        else
            FConvert::toText(expr, &text);
        for (const auto &word : FEnum<T>::mStrRep.words())
            if (word.second == text) {
                *value = T(word.first);
                return true;
            }
        std::string expected = "one of";
        for (const auto &word : FEnum<T>::mStrRep.words())
            expected += " " + word.second;
        return FScriptTypes::fail(expr, expected.c_str(), why);
    }
    static FExprBase to(T value) { return FExprBase(f_make_shared<FEnum<T>>(value)); }
};
#endif

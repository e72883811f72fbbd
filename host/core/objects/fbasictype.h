// SPDX-License-Identifier: Apache-2.0
#ifndef FBASICTYPE_H
#define FBASICTYPE_H
#include "fexpr.h"

/// A value that has a text form.
class FBasicType : public FObject
{
    F_CLASS(FBasicType, FObject)
public:
    /// Takes the value from an evaluated expression; what doesn't fit leaves it as it was.
    virtual void setPrimitiveValue(const FExprBase &) {}
    /// Script form, parsable back.
    virtual std::string toString() const { return std::string(); }
    /// Form for output files and users.
    virtual std::string toPlainString() const { return toString(); }
    virtual std::string toHistoryString() const { return toString(); }
    /// Form in a saved project: toString, unless that would not read back to the same value.
    virtual std::string toSavedString() const { return toString(); }
    void fromString(const std::string &text) { setPrimitiveValue(FExprBase::resolve(text)); }
    /// The type token by which values are told apart.
    virtual std::shared_ptr<FObject> getType() const { return getPrototype(); }
    std::string scriptText() const override { return toSavedString(); }
};

/// A value of one native type \p V.
template <class V>
class FNative : public FBasicType
{
public:
    explicit FNative(V value)
        : mValue(std::move(value))
    {
    }
    operator V &() { return mValue; }
    const V &value() const { return mValue; }
    void visitState(FStateVisitor &state) override { state(mValue); }

protected:
    V mValue;
};

class FDouble : public FNative<double>
{
    F_CLASS(FDouble, FBasicType)
public:
    explicit FDouble(double value = 0)
        : FNative(value)
    {
    }
    void setPrimitiveValue(const FExprBase &expr) override;
    std::string toString() const override;
    std::string toPlainString() const override { return shortestNumber(mValue); }
    std::shared_ptr<FObject> clone() const override;
};

class FInteger : public FNative<int>
{
    F_CLASS(FInteger, FBasicType)
public:
    explicit FInteger(int value = 0)
        : FNative(value)
    {
    }
    void setPrimitiveValue(const FExprBase &expr) override;
    std::string toString() const override { return fromNumber(mValue, 10); }
    std::shared_ptr<FObject> clone() const override;
};

class FUnsigned : public FNative<unsigned>
{
    F_CLASS(FUnsigned, FBasicType)
public:
    explicit FUnsigned(unsigned value = 0)
        : FNative(value)
    {
    }
    void setPrimitiveValue(const FExprBase &expr) override;
    /// Whole part of \p value, 0 for anything that is no unsigned number.
    void setValue(double value);
    std::string toString() const override { return fromNumber(mValue, 10); }
    std::shared_ptr<FObject> clone() const override;
};

class FBool : public FNative<bool>
{
    F_CLASS(FBool, FBasicType)
public:
    explicit FBool(bool value = false)
        : FNative(value)
    {
    }
    void setPrimitiveValue(const FExprBase &expr) override;
    std::string toString() const override { return mValue ? "true" : "false"; }
    std::shared_ptr<FObject> clone() const override;
};

class FString : public FNative<std::string>
{
    F_CLASS(FString, FBasicType)
public:
    explicit FString(std::string value = std::string())
        : FNative(std::move(value))
    {
    }
    operator QString() const { return Q(mValue); }
    void setPrimitiveValue(const FExprBase &expr) override;
    std::string toString() const override { return FLiteral::quoted(mValue); }
    std::string toPlainString() const override { return mValue; }
    std::shared_ptr<FObject> clone() const override;
};

/// The name of a file; the type token of values that are files.
class FFileName : public FString
{
    F_CLASS(FFileName, FString)
public:
    explicit FFileName(std::string value = std::string())
        : FString(std::move(value))
    {
    }
    std::string toString() const override { return "fileName(" + FLiteral::quoted(mValue) + ")"; }
    std::shared_ptr<FObject> clone() const override;
};

/// The name of a managed object: letters, digits and "_", not a digit first.
class FObjectName : public FString
{
    F_CLASS(FObjectName, FString)
public:
    explicit FObjectName(std::string value = std::string())
        : FString(std::move(value))
    {
    }
    std::shared_ptr<FObject> clone() const override;
    static const std::string mNameRegExp;
    /// Turns \p name into an identifier; an empty one stays empty.
    static void correctName(std::string &name);
};

/// A bare word: an enumeration value in a list or as an argument.
class FWord : public FNative<std::string>
{
    F_CLASS(FWord, FBasicType)
public:
    explicit FWord(std::string value = std::string())
        : FNative(std::move(value))
    {
    }
    std::string toString() const override { return mValue; }
    std::shared_ptr<FObject> clone() const override;
};

/// A list of handles, which stay unevaluated.
class FObjectList : public FBasicType
{
    F_CLASS(FObjectList, FBasicType)
public:
    explicit FObjectList(std::shared_ptr<FObject> type = nullptr, unsigned count = 0);
    virtual const std::vector<FExpr<FObject, true>> &getObjects() const { return mObjects; }
    unsigned count() const { return unsigned(mObjects.size()); }
    /// Null out of range.
    FExpr<FObject, true> getObject(unsigned index) const;
    void append(const FExprBase &object);
    void remove(const FExprBase &object);
    /// A selection set makes a command apply to each of its members.
    void setAsSelectionSet(bool on) { mSelectionSet = on; }
    bool isSelectionSet() const { return mSelectionSet; }
    /// \p expr evaluated, null unless it is of the class of \p type.
    static FExpr<FObject> getCastedObject(const FExprBase &expr,
                                          const std::shared_ptr<FObject> &type);
    std::string toString() const override { return join(false); }
    std::string toPlainString() const override;
    std::string toSavedString() const override { return join(true); }
    std::shared_ptr<FObject> clone() const override;
    void visitState(FStateVisitor &state) override { state(mObjects); }

private:
    std::string join(bool saved) const;
    std::vector<FExpr<FObject, true>> mObjects;
    std::shared_ptr<FObject> mType;
    bool mSelectionSet = false;
};

/// Strict conversions of an evaluated object: a fraction is no integer, a text no truth value.
/// Parameters and entries convert as their values do.
namespace FConvert {
bool toDouble(const FExprBase &expr, double *value);
bool toInt(const FExprBase &expr, long long *value);
bool toBool(const FExprBase &expr, bool *value);
bool toText(const FExprBase &expr, std::string *value);
/// A new value of the class of \p type made from \p expr; null if it doesn't convert.
std::shared_ptr<FObject> convert(const FExprBase &expr, const std::shared_ptr<FObject> &type);
} // namespace FConvert
#endif

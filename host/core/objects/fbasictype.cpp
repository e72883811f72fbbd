// SPDX-License-Identifier: Apache-2.0
#include "fbasictype.h"

#include "fenum.h"

#include <algorithm>
#include <cmath>
#include <limits>

F_CLASS_IMPL(FBasicType)
F_CLASS_IMPL(FDouble)
F_CLASS_IMPL(FInteger)
F_CLASS_IMPL(FUnsigned)
F_CLASS_IMPL(FBool)
F_CLASS_IMPL(FString)
F_CLASS_IMPL(FFileName)
F_CLASS_IMPL(FObjectName)
F_CLASS_IMPL(FWord)
F_CLASS_IMPL(FObjectList)
F_CLASS_IMPL(FEnumBase)

void FDouble::setPrimitiveValue(const FExprBase &expr) { FConvert::toDouble(expr, &mValue); }

std::string FDouble::toString() const
{
    // A number that a script reads back as a real one, not as a whole one.
    std::string text = shortestNumber(mValue);
    if (text.find_first_not_of("-0123456789") == std::string::npos)
        text += ".0";
    return text;
}

void FInteger::setPrimitiveValue(const FExprBase &expr)
{
    long long value;
    if (FConvert::toInt(expr, &value) && value >= std::numeric_limits<int>::min() &&
        value <= std::numeric_limits<int>::max())
        mValue = int(value);
}

void FUnsigned::setPrimitiveValue(const FExprBase &expr)
{
    double value;
    if (FConvert::toDouble(expr, &value))
        setValue(value);
}

void FUnsigned::setValue(double value)
{
    mValue = value >= 0 && value < 4294967296.0 ? unsigned(value) : 0;
}

void FBool::setPrimitiveValue(const FExprBase &expr) { FConvert::toBool(expr, &mValue); }

void FString::setPrimitiveValue(const FExprBase &expr) { FConvert::toText(expr, &mValue); }

#define F_CLONE_VALUE(C)                                                                           \
    std::shared_ptr<FObject> C::clone() const { return f_make_shared<C>(mValue); }
F_CLONE_VALUE(FDouble)
F_CLONE_VALUE(FInteger)
F_CLONE_VALUE(FUnsigned)
F_CLONE_VALUE(FBool)
F_CLONE_VALUE(FString)
F_CLONE_VALUE(FFileName)
F_CLONE_VALUE(FObjectName)
F_CLONE_VALUE(FWord)
#undef F_CLONE_VALUE

const std::string FObjectName::mNameRegExp = "[A-Za-z_][A-Za-z0-9_]*";

void FObjectName::correctName(std::string &name)
{
    std::string out;
    for (const QChar c : Q(name)) {
        const char a = c.unicode() < 128 ? char(c.unicode()) : '_';
        out += std::isalnum(static_cast<unsigned char>(a)) ? a : '_';
    }
    if (!out.empty() && std::isdigit(static_cast<unsigned char>(out[0])))
        out.insert(0, 1, '_');
    name = out;
}

FObjectList::FObjectList(std::shared_ptr<FObject> type, unsigned count)
    : mObjects(count)
    , mType(std::move(type))
{
}

FExpr<FObject, true> FObjectList::getObject(unsigned index) const
{
    return index < mObjects.size() ? mObjects[index] : FExpr<FObject, true>();
}

void FObjectList::append(const FExprBase &object)
{
    mObjects.push_back(FExpr<FObject, true>(object));
    // A list is as stale as its members; without an owner yet there is nobody to tell.
    if (const auto self = weak_from_this().lock())
        mObjects.back().registerClient(self, false);
}

void FObjectList::remove(const FExprBase &object)
{
    mObjects.erase(std::remove(mObjects.begin(), mObjects.end(), object), mObjects.end());
}

FExpr<FObject> FObjectList::getCastedObject(const FExprBase &expr,
                                            const std::shared_ptr<FObject> &type)
{
    const std::shared_ptr<FObject> object = expr.getPtr();
    return object && object->isTypeOf(type.get()) ? FExpr<FObject>(object) : FExpr<FObject>();
}

std::string FObjectList::join(bool saved) const
{
    std::string text = "[";
    for (const FExpr<FObject, true> &object : mObjects) {
        if (text.size() > 1)
            text += ',';
        const auto value = object.isExpression()
                               ? nullptr
                               : std::dynamic_pointer_cast<FBasicType>(object.getExpr());
        text += value ? (saved ? value->toSavedString() : value->toString()) : object.toString();
    }
    return text + "]";
}

std::string FObjectList::toPlainString() const
{
    std::string text;
    for (const FExpr<FObject, true> &object : mObjects)
        text += (text.empty() ? "" : " ") + object.toPlainString();
    return text;
}

std::shared_ptr<FObject> FObjectList::clone() const
{
    auto copy = f_make_shared<FObjectList>(mType, 0U);
    for (const FExpr<FObject, true> &object : mObjects)
        copy->append(object);
    return copy;
}

bool FConvert::toDouble(const FExprBase &expr, double *value)
{
    const std::shared_ptr<FObject> object = expr.getValueObject();
    if (const auto d = dynamic_cast<const FDouble *>(object.get()))
        *value = d->value();
    else if (const auto i = dynamic_cast<const FInteger *>(object.get()))
        *value = i->value();
    else if (const auto u = dynamic_cast<const FUnsigned *>(object.get()))
        *value = u->value();
    else if (const auto b = dynamic_cast<const FBool *>(object.get()))
        *value = b->value() ? 1 : 0;
    else
        return false;
    return true;
}

bool FConvert::toInt(const FExprBase &expr, long long *value)
{
    double number;
    if (dynamic_cast<const FBool *>(expr.getValueObject().get()) || !toDouble(expr, &number) ||
        number != std::floor(number) || std::abs(number) > 9e15)
        return false;
    *value = (long long)(number);
    return true;
}

bool FConvert::toBool(const FExprBase &expr, bool *value)
{
    if (const auto b = dynamic_cast<const FBool *>(expr.getValueObject().get())) {
        *value = b->value();
        return true;
    }
    long long number;
    if (!toInt(expr, &number) || (number != 0 && number != 1))
        return false;
    *value = number == 1;
    return true;
}

bool FConvert::toText(const FExprBase &expr, std::string *value)
{
    const auto text = std::dynamic_pointer_cast<FString>(expr.getValueObject());
    if (text)
        *value = text->value();
    return bool(text);
}

std::shared_ptr<FObject> FConvert::convert(const FExprBase &expr,
                                           const std::shared_ptr<FObject> &type)
{
    const std::shared_ptr<FObject> object = expr.getValueObject();
    if (!object || !type)
        return nullptr;
    if (object->isTypeOf(type.get()))
        return object;
    double number;
    long long whole;
    bool truth;
    std::string text;
    if (type->isTypeOf(FDouble::mpNull) && toDouble(expr, &number))
        return f_make_shared<FDouble>(number);
    if (type->isTypeOf(FInteger::mpNull) && toInt(expr, &whole) && whole == int(whole))
        return f_make_shared<FInteger>(int(whole));
    if (type->isTypeOf(FBool::mpNull) && toBool(expr, &truth))
        return f_make_shared<FBool>(truth);
    if (type->getClass() == "FUnsigned" && toInt(expr, &whole) && whole >= 0 &&
        whole <= 0xffffffffLL)
        return f_make_shared<FUnsigned>(unsigned(whole));
    if (type->isTypeOf(FFileName::mpNull) && toText(expr, &text))
        return f_make_shared<FFileName>(text);
    if (type->isTypeOf(FString::mpNull) && toText(expr, &text))
        return f_make_shared<FString>(text);
    return nullptr;
}

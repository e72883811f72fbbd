// SPDX-License-Identifier: Apache-2.0
#include "fgenintresultsfilevalue.h"

F_ENUM_IMPL(GenIntAnchorOccurrence, {GenIntAnchorOccurrence::First, "First"},
            {GenIntAnchorOccurrence::Last, "Last"})
F_CLASS_IMPL(FGenIntResultsFileValue)

FGenIntResultsFileValue::FGenIntResultsFileValue()
{
    if (!mInitPrototype)
        mType = FDouble::mpNull;
}

FGenIntResultsFileValue::FGenIntResultsFileValue(std::string name, int line, int column,
                                                 std::string anchor, const std::string &occurrence,
                                                 const std::shared_ptr<FObject> &type,
                                                 std::string importType, bool calcAverage,
                                                 const FExpr<FUnsigned> &numAverageRows)
    : mName(std::move(name))
    , mLine(line)
    , mColumn(column)
    , mAnchor(std::move(anchor))
    , mType(type)
    , mImportType(std::move(importType))
    , mCalcAverage(calcAverage)
    , mNumAverageRows(numAverageRows)
{
    if (!mInitPrototype)
        mOccurrence =
            GenIntAnchorOccurrence(FEnum<GenIntAnchorOccurrence>::mStrRep.getValue(occurrence));
}

void FGenIntResultsFileValue::constructFObject()
{
    FBasicType::constructFObject();
    if (!mInitPrototype)
        mNumAverageRows.registerClient(shared_from_this(), false);
}

void FGenIntResultsFileValue::setType(const std::shared_ptr<FObject> &type)
{
    mType = FExpr<FObject>();
    if (type)
        mType = type->getPrototype();
}

void FGenIntResultsFileValue::setTypeFromString(const std::string &className)
{
    if (!className.empty())
        setType(FObject::getPrototype(className));
}

namespace {
/// Last in any case, as a word or in quotes; any other word means what the table of the words says.
GenIntAnchorOccurrence occurrenceOf(const FExprBase &element)
{
    std::string word;
    if (!FConvert::toText(element, &word))
        word = element.toString();
    if (equals(word, "Last", false))
        return GenIntAnchorOccurrence::Last;
    return GenIntAnchorOccurrence(FEnum<GenIntAnchorOccurrence>::mStrRep.getValue(word));
}
} // namespace

FStatus FGenIntResultsFileValue::checkList(const FExprBase &element)
{
    const auto list = element.ptr<FObjectList>();
    const auto found = [](const FExprBase &what) { return FScriptTypes::describe(what); };
    if (!list)
        return {FReason::unexpected("a rule in brackets", found(element))};
    if (list->count() < 7 || list->count() > 9)
        return {FReason::unexpected(
            "name, line, column, anchor, occurrence, type, import type, average, rows",
            fromNumber((unsigned long)list->count()) + " elements")};
    static const char *const kTexts[] = {"name",  nullptr, nullptr,      "anchor",
                                         nullptr, "type",  "import type"};
    std::string text;
    for (unsigned i = 0; i < 7; ++i)
        if (kTexts[i] && !FConvert::toText(list->getObject(i), &text))
            return {FReason::unexpected(std::string(kTexts[i]) + " of the rule in quotes",
                                        found(list->getObject(i)))};
    for (unsigned i : {1U, 2U}) {
        long long number;
        if (!FConvert::toInt(list->getObject(i), &number) || number < INT_MIN || number > INT_MAX)
            return {FReason::unexpected(i == 1 ? "a whole number for the line"
                                               : "a whole number for the column",
                                        found(list->getObject(i)))};
    }
    const FExprBase word = list->getObject(4);
    if (!FConvert::toText(word, &text) && word.valueClass() &&
        !word.valueClass()->isA(FWord::staticClass()) &&
        !word.valueClass()->isA(FEnumBase::staticClass()))
        return {FReason::unexpected("First or Last", found(word))};
    FConvert::toText(list->getObject(5), &text);
    const auto type = FObject::getPrototype(text);
    if (!text.empty() && (!type || !type->classInfo().isA(FBasicType::staticClass())))
        return {FReason::unexpected("\"FDouble\", \"FFileName\" or \"\" for the type",
                                    "\"" + text + "\"")};
    bool average;
    if (list->count() > 7 && !FConvert::toBool(list->getObject(7), &average))
        return {FReason::unexpected("0 or 1 for the average", found(list->getObject(7)))};
    const FExprBase rows = list->getObject(8);
    long long number;
    if (rows && !rows.isExpression() &&
        rows.getExpr()->classInfo().isA(FBasicType::staticClass()) &&
        (!FConvert::toInt(rows, &number) || number < 0))
        return {FReason::unexpected("a number of rows", found(rows))};
    return {};
}

void FGenIntResultsFileValue::setPrimitiveValue(const FExprBase &expr)
{
    const auto list = expr.ptr<FObjectList>();
    if (!list || list->count() < 7)
        return;
    const auto text = [&](unsigned i, std::string *field) {
        FConvert::toText(list->getObject(i), field);
    };
    const auto number = [&](unsigned i, int *field) {
        long long value;
        if (FConvert::toInt(list->getObject(i), &value) && value >= INT_MIN && value <= INT_MAX)
            *field = int(value);
    };
    text(0, &mName);
    number(1, &mLine);
    number(2, &mColumn);
    text(3, &mAnchor);
    mOccurrence = occurrenceOf(list->getObject(4));
    std::string typeName;
    text(5, &typeName);
    setTypeFromString(typeName);
    text(6, &mImportType);
    if (list->count() == 7)
        return; // the older form has no average
    FConvert::toBool(list->getObject(7), &mCalcAverage);
    const FExprBase rows = list->getObject(8);
    // An expression stays one; a literal becomes the number that it is.
    if (rows && !rows.isExpression() && !rows.ptr<FUnsigned>() &&
        rows.valueClass()->isA(FBasicType::staticClass()) &&
        rows.getExpr()->classInfo().isA(FBasicType::staticClass()))
        mNumAverageRows = FExpr<FUnsigned>(
            std::dynamic_pointer_cast<FUnsigned>(FConvert::convert(rows, FUnsigned::mpNull)));
    else
        mNumAverageRows = FExpr<FUnsigned>(rows);
}

unsigned FGenIntResultsFileValue::averageRows() const
{
    double rows;
    if (!FConvert::toDouble(mNumAverageRows, &rows) || !(rows >= 1))
        return 0;
    return rows >= 4294967295.0 ? 4294967295U : unsigned(rows);
}

std::string FGenIntResultsFileValue::listText(bool escaped) const
{
    const auto quoted = [escaped](const std::string &text) {
        return escaped ? FLiteral::quoted(text) : "\"" + text + "\"";
    };
    const auto type = mType.getExpr();
    return "[" + quoted(mName) + "," + fromNumber(mLine, 10) + "," + fromNumber(mColumn, 10) + "," +
           quoted(mAnchor) + "," +
           FEnum<GenIntAnchorOccurrence>::mStrRep.getValue(unsigned(mOccurrence)) + ",\"" +
           (type ? type->getClass() : std::string()) + "\"," + quoted(mImportType) + "," +
           (mCalcAverage ? "1" : "0") + "," + mNumAverageRows.toString() + "]";
}

std::string FGenIntResultsFileValue::toSavedString() const
{
    const auto readsBack = [](const std::string &text) {
        const std::string literal = "\"" + text + "\"";
        const size_t end = FLiteral::findEnd(literal, 0, true);
        return end == literal.size() - 1 && FLiteral::unquoted(literal, 0, end) == text;
    };
    return listText(!readsBack(mName) || !readsBack(mAnchor) || !readsBack(mImportType));
}

std::shared_ptr<FObject> FGenIntResultsFileValue::clone() const
{
    return f_make_shared<FGenIntResultsFileValue>(*this);
}

void FGenIntResultsFileValue::visitState(FStateVisitor &state)
{
    state(mName)(mLine)(
        mColumn)(mAnchor)(mOccurrence)(mType)(mImportType)(mCalcAverage)(mNumAverageRows);
}

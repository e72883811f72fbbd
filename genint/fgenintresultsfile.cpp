// SPDX-License-Identifier: Apache-2.0
#include "fgenintresultsfile.h"

#include "fboundedexpression.h"
#include "fcmdbinder.h"
#include "fcmdmanager.h"
#include "fhistory.h"
#include "fobjectmanager.h"
#include "fparameter.h"
#include "fviewctrl.h"

F_CLASS_IMPL(FGenIntResultsFile)

namespace {
QString numbered(const QString &name, const char *shortJoint, unsigned number)
{
    return name + (number <= 9 ? QLatin1String(shortJoint) : QLatin1String("_")) +
           QString::number(number);
}

FExpr<FObjectList> copyOfRules(const FExpr<FObjectList> &rules)
{
    const auto list = rules.getPtr();
    if (!list)
        return {};
    const auto copy = f_make_shared<FObjectList>(FGenIntResultsFileValue::mpNull, 0U);
    for (const auto &rule : list->getObjects())
        copy->append(FExprBase(rule.getPtr()->clone()));
    return copy;
}
} // namespace

FGenIntResultsFile::FGenIntResultsFile(std::string name)
    : FGenIntFile(std::move(name))
{
    if (!mInitPrototype)
        mValues = f_make_shared<FObjectList>(FGenIntResultsFileValue::mpNull, 0U);
}

std::shared_ptr<FGenIntResultsFile> FGenIntResultsFile::create(const std::string &name)
{
    const auto file = f_make_shared<FGenIntResultsFile>(name);
    file->registerObject();
    return file;
}

void FGenIntResultsFile::constructFObject()
{
    FGenIntFile::constructFObject();
    if (!mInitPrototype)
        mValues.registerClient(shared_from_this(), false);
}

template <class T>
void FGenIntResultsFile::assign(T &field, const T &value, const char *text)
{
    field = value;
    setOutOfDate(0);
    FHistoryTransaction transaction(nullptr, text, true);
    transaction.addStep(shared_from_this());
}

void FGenIntResultsFile::setNumberSeparator(bool checked)
{
    assign(mNumberSeparator, checked, F_TEXT("set number separator"));
}
void FGenIntResultsFile::setSpacesAndTabsSeparator(bool checked)
{
    assign(mSpacesAndTabsSeparator, checked, F_TEXT("set spaces and tabs separator"));
}
FStatus FGenIntResultsFile::setRegExprSeparator(const QString &regularExpression)
{
    const QString refusal = FBoundedExpression::refusal(regularExpression);
    if (!refusal.isEmpty())
        return {"the expression is not taken: " + S(refusal)};
    assign(mRegExpSeparator, regularExpression, F_TEXT("set separator expression"));
    return {};
}

FStatus FGenIntResultsFile::setRegExpSeparator(const std::string &regularExpression)
{
    const FStatus set = setRegExprSeparator(Q(regularExpression));
    if (set && !regularExpression.empty())
        setNumberSeparator(false);
    return set;
}

void FGenIntResultsFile::setTabSeparator(bool checked)
{
    if (!checked)
        return;
    setSpacesAndTabsSeparator(true);
    setNumberSeparator(false);
}

void FGenIntResultsFile::addValue(const QString &name, int line, int column, const QString &anchor,
                                  const QString &occurrence, bool calcAverage,
                                  const FExpr<FUnsigned> &numAverageRows)
{
    const auto list = mValues.getPtr();
    const QString given =
        name.isEmpty() ? numbered(QStringLiteral("ResultsValue"), "_0", list->count()) : name;
    const auto value = f_make_shared<FGenIntResultsFileValue>(
        S(given), line, column, S(anchor), S(occurrence), FDouble::mpNull, std::string(),
        calcAverage, numAverageRows);
    mCurrentValue = value;
    // A new list, so that what history knows of the old one stays as it was.
    const auto longer = std::static_pointer_cast<FObjectList>(list->clone());
    longer->append(FExprBase(value));
    assign(mValues, FExpr<FObjectList>(longer), F_TEXT("add results value"));
}

FStatus FGenIntResultsFile::changeValue(const QString &name, int line, int column,
                                        const QString &anchor, GenIntAnchorOccurrence occurrence)
{
    const auto value = getValue(name).getPtr();
    if (!value)
        return {FReason::unexpected("the name of a value of " + getName(), "\"" + S(name) + "\"")};
    value->mLine = line;
    value->mColumn = column;
    value->mAnchor = S(anchor);
    value->mOccurrence = occurrence;
    setOutOfDate(0);
    FHistoryTransaction transaction(nullptr, F_TEXT("change results value"), true);
    transaction.addStep(shared_from_this());
    return {};
}

FStatus FGenIntResultsFile::setValues(const FExpr<FObjectList> &values)
{
    const auto list = f_make_shared<FObjectList>(FGenIntResultsFileValue::mpNull, 0U);
    if (const auto given = values.getPtr())
        for (const auto &element : given->getObjects()) {
            const FStatus checked = FGenIntResultsFileValue::checkList(element);
            if (!checked)
                return {checked.error.about("rule " + fromNumber(list->count() + 1U))};
            const auto value = f_make_shared<FGenIntResultsFileValue>();
            value->setPrimitiveValue(element);
            list->append(FExprBase(value));
        }
    if (mCurrentValue && list->count() > 0)
        mCurrentValue = FExpr<FGenIntResultsFileValue>(list->getObject(0));
    assign(mValues, FExpr<FObjectList>(list), F_TEXT("set values"));
    return {};
}

std::vector<std::shared_ptr<FGenIntResultsFileValue>> FGenIntResultsFile::values() const
{
    std::vector<std::shared_ptr<FGenIntResultsFileValue>> found;
    if (const auto list = mValues.getPtr())
        for (const auto &element : list->getObjects())
            if (auto value = element.ptr<FGenIntResultsFileValue>())
                found.push_back(std::move(value));
    return found;
}

FExpr<FGenIntResultsFileValue> FGenIntResultsFile::getValue(const QString &name) const
{
    for (const auto &value : values())
        if (Q(value->mName).compare(name, Qt::CaseInsensitive) == 0)
            return value;
    return {};
}

QString FGenIntResultsFile::getCurrentAnchor() const
{
    const auto value = mCurrentValue.getPtr();
    return value ? Q(value->mAnchor) : QString();
}

GenIntAnchorOccurrence FGenIntResultsFile::getCurrentOccurrence() const
{
    const auto value = mCurrentValue.getPtr();
    return value ? value->mOccurrence : GenIntAnchorOccurrence::Last;
}

int FGenIntResultsFile::getCurLine() const
{
    const auto value = mCurrentValue.getPtr();
    return value ? value->mLine : 0;
}

int FGenIntResultsFile::getCurColumn() const
{
    const auto value = mCurrentValue.getPtr();
    return value ? value->mColumn : 0;
}

bool FGenIntResultsFile::getCurCalcAverage() const
{
    const auto value = mCurrentValue.getPtr();
    return value && value->mCalcAverage;
}

FExpr<FUnsigned> FGenIntResultsFile::getCurNumAverageRows() const
{
    const auto value = mCurrentValue.getPtr();
    return value ? value->mNumAverageRows : FExpr<FUnsigned>();
}

void FGenIntResultsFile::setCurrentAnchor(const QString &anchor)
{
    if (const auto value = mCurrentValue.getPtr())
        value->mAnchor = S(anchor);
}

void FGenIntResultsFile::setCurrentOccurrence(GenIntAnchorOccurrence occurrence)
{
    if (const auto value = mCurrentValue.getPtr())
        value->mOccurrence = occurrence;
}

QString FGenIntResultsFile::setCurValueName(const QString &newName)
{
    const auto value = mCurrentValue.getPtr();
    if (!value || newName == Q(value->mName))
        return newName;
    FHistoryTransaction transaction(nullptr, F_TEXT("Set results value name"), true);
    QString candidate = newName;
    for (unsigned n = 1; getValue(candidate); ++n)
        candidate = numbered(newName, "_0", n);
    value->setName(S(candidate));
    setOutOfDate(0);
    transaction.addStep(shared_from_this());
    return candidate;
}

void FGenIntResultsFile::deleteCurrentValue()
{
    if (!mCurrentValue)
        return;
    const auto shorter = std::static_pointer_cast<FObjectList>(mValues.getPtr()->clone());
    shorter->remove(mCurrentValue);
    assign(mValues, FExpr<FObjectList>(shorter), F_TEXT("delete results value"));
}

FExpr<FParameter> FGenIntResultsFile::createParam(const QString &valueName,
                                                  const QString &computationName,
                                                  bool highlight) const
{
    if (!getValue(valueName))
        return {};
    const FExprBase expression = FExprBase::resolve(
        S(computationName) + ".getResults().getTable(" + FLiteral::quoted(S(getFileName())) +
        ").getElementAt(" + FLiteral::quoted(S(valueName)) + ")");
    if (!expression)
        return {};
    const std::string name = "eval_" + S(valueName);
    FHistory::instance()->startTransaction(F_TEXT("create evaluation: ") + name);
    const FExpr<FParameter> parameter =
        FParameter::create(FObjectManager::instance()->getWorkingScope(), name, FDouble());
    parameter->setImediateUpdate(false, false);
    parameter->setValue(expression);
    FHistory::instance()->commit(true);
    if (highlight)
        FObjectTree::instance()->highlight({FExpr<FObject, true>(parameter)});
    return parameter;
}

void FGenIntResultsFile::init(const std::shared_ptr<FGenIntResultsFile> &source)
{
    FGenIntFile::init(std::static_pointer_cast<FGenIntFile>(source));
    if (!source || source->isNull())
        return;
    setNumberSeparator(source->mNumberSeparator);
    setSpacesAndTabsSeparator(source->mSpacesAndTabsSeparator);
    setRegExprSeparator(source->mRegExpSeparator);
    // The rules are handed over in their list form, which is what setValues reads.
    setValues(FExpr<FObjectList>(FExprBase::resolve(source->mValues.toString())));
}

std::shared_ptr<FObject> FGenIntResultsFile::clone() const
{
    const auto copy = f_make_shared<FGenIntResultsFile>(getName());
    copy->registerObject();
    copy->init(std::const_pointer_cast<FGenIntResultsFile>(shared_from_base<FGenIntResultsFile>()));
    return copy;
}

void FGenIntResultsFile::visitState(FStateVisitor &state)
{
    FGenIntFile::visitState(state);
    // Editors write into the rules themselves, so history keeps copies of them.
    FExpr<FObjectList> rules = state.isCapture() ? copyOfRules(mValues) : FExpr<FObjectList>();
    // The rule under edit is an object of the list that is replaced: its name tells which it is.
    const auto edited = mCurrentValue.getPtr();
    std::string current = edited ? edited->mName : std::string();
    state(mNumberSeparator)(mSpacesAndTabsSeparator)(mRegExpSeparator)(rules)(current);
    if (state.isCapture())
        return;
    mValues = copyOfRules(rules);
    mCurrentValue = current.empty() ? FExpr<FGenIntResultsFileValue>() : getValue(Q(current));
}

void FGenIntResultsFile::initCmds()
{
    using T = FGenIntResultsFile;
    FCmdBinder<T> c;
    c.creator("genericIntegrationResultsFile", &T::create).fills();
    c.attribute("setValues", &T::setValues, &T::getValues, FArg{"values"})
        .title(F_TEXT("Values"))
        .component("")
        .systemFlag(2)
        .hidden();
    c.attribute("setNumberSeparator", &T::setNumberSeparator, &T::getNumberSeparator,
                FArg{"checked"})
        .title(F_TEXT("Find Numbers"))
        .component("")
        .systemFlag(2)
        .hidden();
    c.attribute("setSpacesAndTabsSeparator", &T::setSpacesAndTabsSeparator,
                &T::getSpacesAndTabsSeparator, FArg{"checked"})
        .title(F_TEXT("Spaces and Tabs Separator"))
        .component("")
        .systemFlag(2)
        .hidden();
    c.attribute("setRegExprSeparator", &T::setRegExprSeparator, &T::getRegExprSeparator,
                FArg{"regularExpression"})
        .title(F_TEXT("RegExp Separator"))
        .component("")
        .systemFlag(2)
        .hidden();
    c.member("changeValue", &T::changeValue, FArg{"name"}, FArg{"line"}, FArg{"column"},
             FArg{"anchor"}, FArg{"occurrence"});
    c.member("setRegExpSeparator", &T::setRegExpSeparator, FArg{"regularExpression"})
        .systemFlag(1)
        .fills();
    c.member("setSpaceSeparator", &T::setSpaceSeparator, FArg{"checked"}).systemFlag(1).fills();
    c.member("setTabSeaparator", &T::setTabSeparator, FArg{"checked"}).systemFlag(1).fills();
    c.flushNow();
    // The line ending is not hidden here: the name below is the one that was looked up, and no
    // command is registered under it. Projects rely on the attribute being there.
    FCmdManager::instance()->hide(
        T::mpNull,
        FObject::getPrototype("FAttribCmdFGenIntCommandFilesetForceWindowsLineEndingsbool"));
}

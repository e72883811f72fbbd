// SPDX-License-Identifier: Apache-2.0
#include "fproperty.h"

#include "fcmdmanager.h"
#include "fconfiguration.h"
#include "fdesign.h"
#include "fdispatcher.h"
#include "fdocumentation.h"
#include "fenum.h"
#include "fobjectmanager.h"
#include "fplainvalue.h"
#include "fscript.h"

#include <QCoreApplication>
#include <algorithm>

namespace {
QString tr(const char *text) { return QCoreApplication::translate("FProperty", text); }

QString textOf(FProperty::Kind kind, const FExprBase &value)
{
    if (!value.getExpr())
        return QString();
    switch (kind) {
    case FProperty::Text:
    case FProperty::File:
        if (const auto text = value.isExpression() ? nullptr : value.ptr<FString>())
            return Q(text->value());
        return Q(value.toString());
    case FProperty::Truth: {
        const auto truth = value.ptr<FBool>();
        return truth && truth->value() ? QStringLiteral("true") : QStringLiteral("false");
    }
    default:
        return FProperties::fieldText(value);
    }
}

FProperty::Kind kindOf(const FCommandInfo &info, const FExprBase &value)
{
    if (info.readOnly)
        return FProperty::ReadOnly;
    const FArgInfo &argument = info.args.front();
    if (argument.klass && argument.klass->isA(FManaged::staticClass()))
        return FProperty::Object;
    const auto object = value.isExpression() ? nullptr : value.getExpr();
    if (dynamic_cast<const FEnumBase *>(object.get()))
        return FProperty::Choice;
    if (dynamic_cast<const FBool *>(object.get()))
        return FProperty::Truth;
    if (dynamic_cast<const FFileName *>(object.get()))
        return FProperty::File;
    if (dynamic_cast<const FString *>(object.get()))
        return FProperty::Text;
    return FProperty::Expression;
}

QString spaced(const std::string &name)
{
    QString text;
    for (const QChar c : Q(name))
        if (c.isUpper() && !text.isEmpty())
            text += QString(' ') + c.toLower();
        else
            text += text.isEmpty() ? c.toUpper() : c;
    return text.startsWith(QLatin1String("Set ")) ? text.mid(4, 1).toUpper() + text.mid(5) : text;
}

FProperty fromCommand(const FCommandInfo &info, const FObject &first)
{
    FProperty property;
    property.id = Q(info.name);
    property.command = info.name;
    property.title = info.shownTitle().empty() ? spaced(info.name) : Q(info.shownTitle());
    property.category = Q(info.category);
    property.weight = info.categoryWeight;
    property.toolTip = Q(FDocumentation::text(info.documentationKey()));
    if (info.currentValue)
        property.value = [value = info.currentValue](const FObject &object) {
            return value(&object);
        };
    const FExprBase value = info.currentValue ? info.currentValue(&first) : FExprBase();
    property.kind = kindOf(info, value);
    property.klass = info.args.front().klass;
    if (property.kind == FProperty::Choice) {
        const auto words = std::dynamic_pointer_cast<FEnumBase>(value.getExpr());
        for (const auto &word : words->data()->words())
            property.words << Q(word.second);
    }
    return property;
}

/// The values of a parameter and of a design, which no attribute of the registry sets.
void addHostProperties(const FProperty::Objects &objects, std::vector<FProperty> *list)
{
    const bool areParameters = std::all_of(objects.begin(), objects.end(), [](const auto &object) {
        return dynamic_cast<const FParameter *>(object.get()) != nullptr;
    });
    if (areParameters) {
        FProperty value;
        value.id = QStringLiteral("setValue");
        value.command = "setValue";
        value.title = tr("Value");
        value.kind = FProperty::Expression;
        value.toolTip = tr("A number, or an expression of other parameters and results");
        value.receivers = objects;
        value.value = [](const FObject &object) {
            return static_cast<const FParameter &>(object).getValue();
        };
        list->push_back(value);
    }
    const auto design =
        objects.size() == 1 ? std::dynamic_pointer_cast<FDesign>(objects.front()) : nullptr;
    if (!design || design == FDesign::baseline())
        return;
    for (const auto &one : getEntities<FParameter>()) {
        const auto parameter = one.getPtr();
        if (!parameter ||
            (parameter->getValue().isExpression() && !design->valueOf(parameter.get())))
            continue;
        FProperty variable;
        variable.id = Q(parameter->getName());
        variable.title = Q(parameter->getName());
        variable.category = tr("Variables");
        variable.kind = FProperty::Expression;
        variable.toolTip = tr("Empty for the baseline's value");
        variable.receivers = objects;
        variable.placeholder = FProperties::fieldText(parameter->getValue()) + tr(" (baseline)");
        variable.mayBeEmpty = true;
        variable.value = [parameter](const FObject &object) {
            const auto *own = static_cast<const FDesign &>(object).valueOf(parameter.get());
            return own ? *own : FExprBase();
        };
        const FExprBase name(f_make_shared<FString>(parameter->getName()));
        variable.set = [design, name](const FExprBase &given) {
            return FDispatcher::execute(FExprBase(design), "setValue", {name, given}).error;
        };
        variable.reset = [design, name] {
            return FDispatcher::execute(FExprBase(design), "unsetValue", {name}).error;
        };
        list->push_back(variable);
    }
}

void addDynamic(const FObject &object, std::vector<FProperty> *list)
{
    const auto *configuration = dynamic_cast<const FConfiguration *>(&object);
    if (!configuration)
        return;
    std::vector<std::shared_ptr<FAttribCmd>> commands;
    configuration->getDynamicAttributes(commands);
    for (const auto &command : commands) {
        const auto receiver = command->getReceiver().getExpr();
        if (!receiver)
            continue;
        FProperty property = fromCommand(command->info(), *receiver);
        property.id = property.title;
        property.kind = FProperty::Expression; // an entry takes any
        property.receivers = {receiver};
        list->push_back(property);
    }
}
} // namespace

QStringList FProperty::texts() const
{
    QStringList found;
    for (const auto &receiver : receivers) {
        const QString text = textOf(kind, value ? value(*receiver) : FExprBase());
        if (found.isEmpty())
            found << text;
        else if (found.front() != text)
            return {};
    }
    return found;
}

QString FProperty::current() const
{
    if (kind != Expression || receivers.size() != 1 || !value)
        return QString();
    const FExprBase expr = value(*receivers.front());
    if (!expr.isExpression() && !dynamic_cast<const FManaged *>(expr.getExpr().get()))
        return QString();
    if (!expr.canSafelyBeUpdated(false))
        return tr("known after the next run");
    const FPlainValue plain = FPlainValue::of(expr);
    const QString text = Q(plain.shown("", 7));
    return text.isEmpty() ? Q(FPlainValue::failureOf(expr).text()) : "= " + text;
}

FReason FProperty::commit(const QString &text) const
{
    if (text.trimmed().isEmpty() && mayBeEmpty && reset)
        return reset();
    FExprBase given;
    switch (kind) {
    case Text:
    case File:
    case Choice: // enumerations travel as words
        given = FExprBase(f_make_shared<FString>(S(text)));
        break;
    case Object:
        given = FExprBase(std::shared_ptr<FObject>(FObjectManager::instance()->find(S(text))));
        break;
    default: {
        std::vector<FScriptError> errors;
        given = FScript::parseExpression(S(text), &errors);
        if (given)
            break;
        if (errors.empty())
            return FReason(S(tr("a value is missing")));
        const FScriptError &error = errors.front();
        return FReason(error.column > 0 ? S(tr("column %1: ").arg(error.column)) + error.text()
                                        : error.text());
    }
    }
    if (set)
        return set(given);
    std::vector<FExprBase> objects;
    for (const auto &receiver : receivers)
        objects.emplace_back(receiver);
    return FDispatcher::execute(objects, command, {given}).error;
}

bool FProperty::isSameAs(const FProperty &other) const
{
    return id == other.id && kind == other.kind && title == other.title &&
           category == other.category && receivers == other.receivers && words == other.words;
}

QString FProperties::fieldText(const FExprBase &value)
{
    const auto number = std::dynamic_pointer_cast<FDouble>(value.getExpr());
    return Q(number ? shortestNumber(number->value()) : value.toString());
}

std::vector<FProperty> FProperties::of(const FProperty::Objects &objects)
{
    std::vector<FProperty> list;
    if (objects.empty())
        return list;
    addHostProperties(objects, &list);
    const FCmdManager *registry = FCmdManager::instance();
    std::set<const FClassInfo *> classes;
    for (const auto &object : objects)
        classes.insert(&object->classInfo());
    for (const auto &info : registry->attributes(objects.front()->classInfo())) {
        const bool isCommon =
            std::all_of(classes.begin(), classes.end(), [&](const FClassInfo *klass) {
                return klass->isA(*info->receiver) && !registry->isHidden(*klass, *info);
            });
        if (!isCommon || info->hidden || info->name == "setName" || info->args.size() != 1 ||
            !info->currentValue)
            continue;
        FProperty property = fromCommand(*info, *objects.front());
        property.receivers = objects;
        list.push_back(property);
    }
    if (objects.size() == 1)
        addDynamic(*objects.front(), &list);
    std::stable_sort(list.begin(), list.end(),
                     [](const FProperty &a, const FProperty &b) { return a.weight > b.weight; });
    // A category stands together, where its first property stands.
    std::vector<FProperty> ordered;
    for (const FProperty &head : list) {
        if (std::any_of(ordered.begin(), ordered.end(),
                        [&](const FProperty &known) { return known.category == head.category; }))
            continue;
        for (const FProperty &one : list)
            if (one.category == head.category)
                ordered.push_back(one);
    }
    return ordered;
}

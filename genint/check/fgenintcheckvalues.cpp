// SPDX-License-Identifier: Apache-2.0
#include "fdesign.h"
#include "fgenintcheckparts.h"
#include "fgenintcomputation.h"
#include "fobjectmanager.h"
#include "fplainvalue.h"

#include <algorithm>
#include <cmath>

using namespace FGenIntCheckParts;

namespace {
/// The first command of an expression that does more than calculate; null if none does.
const FCmd *actionIn(const FExprBase &value)
{
    const auto commands = FCmd::commandsIn(value);
    const auto action = std::find_if(commands.begin(), commands.end(),
                                     [](const FCmd *one) { return !one->info().isPure(); });
    return action == commands.end() ? nullptr : *action;
}

/// The computation whose results a command asks for, with its definition.
std::shared_ptr<FDefinitionGenInt> resultsAskedOf(const FExprBase &value)
{
    const FCmd *command = value ? value.getExpr()->isFCmd() : nullptr;
    if (!command || command->info().name != "getResults")
        return nullptr;
    const auto computation =
        std::dynamic_pointer_cast<FGenIntComputation>(command->getReceiver().getExpr());
    const auto configuration = computation ? computation->getConfiguration().getPtr() : nullptr;
    return configuration ? configuration->getDefinition().ptr<FDefinitionGenInt>() : nullptr;
}

bool textArgument(const FCmd &command, QString *text)
{
    const auto literal = std::dynamic_pointer_cast<FString>(command.getArgument(0).getExpr());
    if (literal)
        *text = Q(literal->value());
    return bool(literal);
}

/// Looks for tables and values in an expression that no result template gives.
class FResultReferences
{
public:
    FResultReferences(const FManaged &object, std::string what, FGenIntFindings *findings)
        : mObject(object)
        , mWhat(std::move(what))
        , mFindings(findings)
    {
    }

    void check(const FExprBase &value)
    {
        for (const FCmd *command : FCmd::commandsIn(value))
            check(command);
    }

private:
    void check(const FCmd *command)
    {
        QString name;
        const FExprBase &receiver = command->getReceiver();
        if (const auto definition = resultsAskedOf(receiver)) {
            if (command->info().name == "getTable" && textArgument(*command, &name))
                table(*definition, name);
        } else if (receiver && receiver.getExpr()->isFCmd() &&
                   command->info().name == "getElementAt" && textArgument(*command, &name)) {
            QString tableName;
            const FCmd &inner = *receiver.getExpr()->isFCmd();
            const auto source = resultsAskedOf(inner.getReceiver());
            const auto file =
                source && inner.info().name == "getTable" && textArgument(inner, &tableName)
                    ? templateOf(*source, tableName)
                    : nullptr;
            if (file && !file->getValue(name))
                missing("there is no such value in result template " + file->getName(), name,
                        namesIn(*file), "a value");
        }
    }

    static std::shared_ptr<FGenIntResultsFile> templateOf(FDefinitionGenInt &definition,
                                                          const QString &name)
    {
        std::shared_ptr<FGenIntResultsFile> byName;
        const auto files = definition.getFiles(1);
        for (const auto &handle : files) {
            const auto file = handle.ptr<FGenIntResultsFile>();
            if (file && file->getFileName() == name)
                return file;
            if (file && !byName &&
                (Q(file->getName()).compare(name, Qt::CaseInsensitive) == 0 ||
                 file->getFileName().compare(name, Qt::CaseInsensitive) == 0))
                byName = file;
        }
        return byName;
    }
    static std::vector<QString> namesIn(const FGenIntResultsFile &file)
    {
        std::vector<QString> names;
        for (const auto &value : file.values())
            names.push_back(Q(value->mName));
        return names;
    }
    void table(FDefinitionGenInt &definition, const QString &name)
    {
        if (templateOf(definition, name))
            return;
        std::vector<QString> names;
        for (const std::string &file : definition.getResultValueFilenames())
            names.push_back(Q(file));
        missing("no result template of definition " + definition.getName() + " gives this table",
                name, names, "a result file");
    }
    void missing(const std::string &message, const QString &name, const std::vector<QString> &names,
                 const char *what)
    {
        mFindings->error(mObject, mWhat + " doesn't resolve: " + message)
            .between(shown(name, 200), alike(name, names, what));
    }

    const FManaged &mObject;
    const std::string mWhat;
    FGenIntFindings *mFindings;
};

/// Checks a value that is an expression, or any value with \p written: it goes into a file.
void checkValue(const FManaged &object, const std::string &what, const FExprBase &value,
                bool written, const FGenIntDependencies &dependencies, FGenIntFindings *findings)
{
    if (const FCmd *action = actionIn(value)) {
        findings
            ->error(object, what + " is no expression to evaluate: " + action->info().name +
                                " does something")
            .between(value.toString(), "an expression that only calculates");
        return;
    }
    FResultReferences(object, what, findings).check(value);
    if (!dependencies.isKnown(value))
        return;
    const auto error = [&](const std::string &message, const std::string &found) {
        findings->error(object, what + " doesn't resolve: " + message)
            .between(found, "a number, a text or a file");
    };
    const auto result = value.getValueObject();
    if (!std::dynamic_pointer_cast<FBasicType>(result)) {
        const std::string failure = FPlainValue::failureOf(value).text();
        if (written || !failure.empty())
            error(failure.empty() ? "it gives no value that could be written" : failure,
                  value.toString());
        return;
    }
    const bool computed =
        value.isExpression() || std::dynamic_pointer_cast<FEntity>(value.getExpr());
    const auto number = std::dynamic_pointer_cast<FDouble>(result);
    if (number && std::isnan(number->value()) && computed) {
        const std::string failure = FPlainValue::failureOf(value).text();
        error(failure.empty() ? "it gives no number" : failure, value.toString() + " = nan");
    } else if (number && !std::isfinite(number->value())) {
        findings->hint(object, what + " is no finite number")
            .between(value.toString(), "a finite number");
    }
}
} // namespace

void FGenIntCheckParts::checkConfiguration(const FConfigurationGenInt &configuration,
                                           const FGenIntDependencies &dependencies,
                                           FGenIntFindings *findings)
{
    const auto definition = configuration.getDefinition().ptr<FDefinitionGenInt>();
    if (!definition) {
        findings->error(configuration, "the configuration has no entries to give values to")
            .between("no definition", "a definition");
        return;
    }
    for (const auto &item : configuration.getEntryMap()) {
        const auto entry = item.second.ptr<FEntry>();
        if (!entry || entry->isGroup())
            continue;
        const std::string what = "entry " + shown(item.first, 200);
        if (!entry->getValue())
            findings->error(configuration, what + " has no value")
                .between("nothing", "a value or an expression");
        else
            checkValue(configuration, what, entry->getValue(), true, dependencies, findings);
    }
}

void FGenIntCheckParts::checkParameter(const FParameter &parameter,
                                       const FGenIntDependencies &dependencies,
                                       FGenIntFindings *findings)
{
    // A value that stands for another object is told of there.
    if (parameter.getValue().isExpression())
        checkValue(parameter, "the value", parameter.getValue(), false, dependencies, findings);
}

void FGenIntCheckParts::checkDesign(const FDesign &design, const FGenIntDependencies &dependencies,
                                    FGenIntFindings *findings)
{
    for (const auto &handle : getEntities<FParameter>()) {
        const auto parameter = handle.getPtr();
        if (const FExprBase *own = design.valueOf(parameter.get()))
            checkValue(design, "the value of " + parameter->getName(), *own, true, dependencies,
                       findings);
    }
}

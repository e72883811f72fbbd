// SPDX-License-Identifier: Apache-2.0
#include "fplainvalue.h"

#include "fbasictype.h"
#include "fcmd.h"
#include "fentry.h"
#include "fparameter.h"

#include <cmath>
#include <cstdio>
#include <unordered_set>

std::string printedNumber(double value)
{
    if (!(std::fabs(value) < 1e15) || value != std::trunc(value))
        return shortestNumber(value);
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, "%.0f", value);
    return buffer;
}

FPlainValue FPlainValue::of(const FExprBase &expr)
{
    FPlainValue value;
    const auto object = expr.getValueObject();
    if (const auto truth = std::dynamic_pointer_cast<FBool>(object)) {
        value.kind = Truth;
        value.number = truth->value();
    } else if (FConvert::toDouble(expr, &value.number)) {
        value.kind = Number;
    } else if (object) {
        value.kind = Text;
        const auto basic = std::dynamic_pointer_cast<FBasicType>(object);
        value.text = basic ? basic->toPlainString() : object->scriptText();
    }
    return value;
}

FReason FPlainValue::failureOf(const FExprBase &value)
{
    struct Step
    {
        std::shared_ptr<FObject> object;
        bool entered; // what the command takes comes first
    };
    std::vector<Step> todo{{value.getExpr(), false}};
    std::unordered_set<const FObject *> seen;
    while (!todo.empty()) {
        const Step step = todo.back();
        todo.pop_back();
        if (!step.object || (!step.entered && !seen.insert(step.object.get()).second))
            continue;
        const FCmd *command = step.object->isFCmd();
        if (step.entered) {
            if (!command->error().empty())
                return command->error();
        } else if (const auto parameter = std::dynamic_pointer_cast<FParameter>(step.object)) {
            todo.push_back({parameter->currentValue().getExpr(), false});
        } else if (const auto entry = std::dynamic_pointer_cast<FEntry>(step.object)) {
            todo.push_back({entry->getValue().getExpr(), false});
        } else if (command) {
            todo.push_back({step.object, true});
            const auto &arguments = command->arguments();
            for (size_t i = arguments.size(); i-- > 0;)
                todo.push_back({arguments[i].getExpr(), false});
            todo.push_back({command->getReceiver().getExpr(), false});
        }
    }
    return FReason();
}

QJsonValue FPlainValue::json() const
{
    switch (kind) {
    case Number:
        return std::isfinite(number) ? QJsonValue(number) : QJsonValue();
    case Truth:
        return number != 0;
    case Text:
        return Q(text);
    case None:
        break;
    }
    return {};
}

std::string FPlainValue::special() const
{
    return kind == Number && std::isinf(number) ? printedNumber(number) : std::string();
}

std::string FPlainValue::shown(const char *none, int digits) const
{
    switch (kind) {
    case Number:
        if (std::isnan(number))
            return none;
        return digits == 0 || number == std::trunc(number) ? printedNumber(number)
                                                           : fromNumber(number, 'g', digits);
    case Truth:
        return number != 0 ? "true" : "false";
    case Text:
        return text;
    case None:
        break;
    }
    return none;
}

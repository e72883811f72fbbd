// SPDX-License-Identifier: Apache-2.0
#include "cli.h"
#include "fbasictype.h"
#include "flogmsg.h"
#include "fobjectmanager.h"
#include "fparameter.h"
#include "fproject.h"
#include "fscript.h"
#include "ftabledata.h"

#include <QJsonDocument>
#include <cmath>
#include <iostream>

void FCli::out(const std::string &text) { std::cout << text << "\n"; }

void FCli::err(const std::string &text) { std::cerr << "turnbuckle: " << text << std::endl; }

int FCli::load(const FCliOptions &options)
{
    const bool ok = FProject::instance()->load(Q(options.project));
    for (const std::string &set : options.sets) {
        const size_t at = set.find('=');
        const std::string name = set.substr(0, at);
        const auto parameter =
            std::dynamic_pointer_cast<FParameter>(FObjectManager::instance()->find(name));
        if (at == std::string::npos || !parameter) {
            err("--set " + set + ": expected NAME=EXPR with the name of a parameter");
            return kUsage;
        }
        std::vector<FScriptError> errors;
        const FExprBase value = FScript::parseExpression(set.substr(at + 1), &errors);
        const FStatus status =
            value ? parameter->setValue(value)
                  : FStatus{errors.empty() ? FReason::unexpected("a value", "nothing")
                                           : errors.front().reason};
        if (!status) {
            err("--set " + set + ": " + status.error.text());
            return kUsage;
        }
    }
    return ok ? kDone : kUnreadable;
}

int FCli::refuse(int loaded, const char *consequence)
{
    const auto &errors = FProject::instance()->errors();
    if (loaded == kUnreadable)
        err(std::string("the project could not be read whole, so ") + consequence +
            (errors.empty() ? "" : ": " + errors.front().toString()) +
            (errors.size() > 1 ? " (and " + std::to_string(errors.size() - 1) + " more)" : ""));
    return loaded;
}

QJsonArray FCli::log()
{
    QJsonArray entries;
    for (const FLogMsg::Message &message : FLogMsg::messages())
        entries.append(QJsonObject{{"source", Q(message.source)},
                                   {"message", Q(message.message)},
                                   {"details", Q(message.details)}});
    return entries;
}

namespace {
bool sPrinted = false;
}

void FCli::printLogIfSilent()
{
    if (!sPrinted)
        print(QJsonObject{{"log", log()}});
}

void FCli::print(const QJsonValue &json)
{
    sPrinted = true;
    const QJsonDocument document =
        json.isArray() ? QJsonDocument(json.toArray()) : QJsonDocument(json.toObject());
    std::cout << document.toJson().toStdString() << std::flush;
}

namespace {
QJsonValue jsonNumber(double value)
{
    return std::isfinite(value) ? QJsonValue(value) : QJsonValue();
}
} // namespace

QJsonValue FCli::jsonOf(const FExprBase &expr)
{
    const auto object = expr.getValueObject();
    double number;
    if (const auto truth = std::dynamic_pointer_cast<FBool>(object))
        return truth->value();
    if (FConvert::toDouble(expr, &number))
        return jsonNumber(number);
    if (const auto value = std::dynamic_pointer_cast<FBasicType>(object))
        return Q(value->toPlainString());
    return object ? QJsonValue(Q(object->scriptText())) : QJsonValue();
}

QJsonArray FCli::rowsOf(const FTableData &table, bool withTypes)
{
    return table.rowsJson(withTypes);
}

std::string FCli::padded(const std::string &text, size_t width)
{
    return S(Q(text).leftJustified(int(width)));
}

void FCli::print(const FTableData &table)
{
    size_t width = 0;
    for (const std::string &name : table.rowHeaders())
        width = std::max(width, size_t(Q(name).size()));
    for (size_t i = 0; i < table.rows().size(); ++i) {
        const std::string name = i < table.rowHeaders().size() ? table.rowHeaders()[i] : "";
        const std::string text = i < table.rowTexts().size() ? table.rowTexts()[i] : "";
        const size_t bar = text.find('|');
        std::string line =
            "  " + padded(name, width) + "  " +
            (bar == std::string::npos ? shortestNumber(table.getElementAt(int(i), 0, nullptr))
                                      : text.substr(bar + 1));
        if (i < table.origins().size() && !table.origins()[i].note.empty())
            line += "  ! " + table.origins()[i].note;
        out(line);
    }
    for (const FTableData::Missing &missing : table.missing())
        out("  " + missing.name + "  nan  ! " + missing.note);
}

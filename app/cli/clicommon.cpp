// SPDX-License-Identifier: Apache-2.0
#include "cli.h"
#include "flogmsg.h"
#include "fobjectmanager.h"
#include "fparameter.h"
#include "fproject.h"
#include "fscript.h"
#include "ftablerow.h"

#include <QJsonDocument>
#include <cerrno>
#include <cstring>
#include <iostream>

namespace {
int sOutputError = 0;

/// Keeps the first reason; the stream itself only knows that it failed.
void noteOutput()
{
    if (sOutputError == 0 && !std::cout)
        sOutputError = errno != 0 ? errno : EIO;
}
} // namespace

void FCli::out(const std::string &text)
{
    errno = 0;
    std::cout << text << "\n";
    noteOutput();
}

void FCli::err(const std::string &text) { std::cerr << "turnbuckle: " << text << std::endl; }

int FCli::finish(int code)
{
    errno = 0;
    std::cout.flush();
    noteOutput();
    if (sOutputError == 0)
        return code;
    err(std::string("cannot write to standard output: ") + std::strerror(sOutputError));
    return code == kDone ? kUnwritable : code;
}

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
    errno = 0;
    std::cout << document.toJson().toStdString() << std::flush;
    noteOutput();
}

QJsonArray FCli::rowsOf(const std::vector<FTableRow> &values, bool withTypes)
{
    QJsonArray rows;
    for (const FTableRow &row : values)
        rows.append(row.report(withTypes));
    return rows;
}

std::string FCli::padded(const std::string &text, size_t width)
{
    return S(Q(text).leftJustified(int(width)));
}

void FCli::print(const std::vector<FTableRow> &values)
{
    size_t width = 0;
    for (const FTableRow &row : values)
        width = std::max(width, size_t(Q(row.name).size()));
    for (const FTableRow &row : values)
        out("  " + padded(row.name, width) + "  " + row.shown() +
            (row.notes.empty() ? "" : "  ! " + row.note()));
}

// SPDX-License-Identifier: Apache-2.0
#include "cli.h"
#include "fgenintcheck.h"

namespace {
QJsonValue textOrNull(const std::string &text)
{
    return text.empty() ? QJsonValue() : QJsonValue(Q(text));
}

QJsonObject findingJson(const FGenIntFinding &finding)
{
    const auto place = [](int number) { return number > 0 ? QJsonValue(number) : QJsonValue(); };
    return {{"severity", finding.severity == FGenIntFinding::Error ? "error" : "hint"},
            {"object", Q(finding.object)},
            {"class", Q(finding.className)},
            {"file", textOrNull(finding.file)},
            {"line", place(finding.line)},
            {"column", place(finding.column)},
            {"message", Q(finding.message)},
            {"found", textOrNull(finding.found)},
            {"expected", textOrNull(finding.expected)}};
}

std::string counted(int count, const char *what)
{
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}
} // namespace

int FCli::check(const FCliOptions &options)
{
    const int loaded = load(options);
    if (loaded == kUsage)
        return loaded;
    int errors = 0, hints = 0;
    QJsonArray findings;
    for (const FGenIntFinding &finding : FGenIntCheck::run()) {
        ++(finding.severity == FGenIntFinding::Error ? errors : hints);
        if (options.json)
            findings.append(findingJson(finding));
        else
            out(finding.toString());
    }
    if (options.json)
        print(QJsonObject{{"project", Q(options.project)},
                          {"findings", findings},
                          {"errors", errors},
                          {"hints", hints},
                          {"log", log()}});
    else
        out(counted(errors, "error") + ", " + counted(hints, "hint"));
    return loaded != kDone ? loaded : errors > 0 ? kFailed : kDone;
}

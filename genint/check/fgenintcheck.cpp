// SPDX-License-Identifier: Apache-2.0
#include "fgenintcheck.h"

#include "fdesign.h"
#include "fgenintcheckparts.h"
#include "fgenintcomputation.h"
#include "fobjectmanager.h"
#include "fproject.h"
#include "fscript.h"

#include <QFileInfo>
#include <algorithm>

FGenIntFinding &FGenIntFinding::in(const QString &fileName)
{
    file = S(fileName);
    return *this;
}

FGenIntFinding &FGenIntFinding::at(int atLine, int atColumn)
{
    line = atLine;
    column = atColumn;
    return *this;
}

FGenIntFinding &FGenIntFinding::between(std::string whatFound, std::string whatExpected)
{
    found = std::move(whatFound);
    expected = std::move(whatExpected);
    return *this;
}

std::string FGenIntFinding::toString() const
{
    std::string text = (severity == Error ? "error: " : "hint: ") + object;
    if (!file.empty())
        text += ", " + file;
    if (line > 0)
        text += ":" + fromNumber(line, 10);
    if (column > 0)
        text += ":" + fromNumber(column, 10);
    text += ": " + message;
    if (!found.empty() || !expected.empty())
        text += " (" + (found.empty() ? std::string() : "found " + found) +
                (found.empty() || expected.empty() ? "" : ", ") +
                (expected.empty() ? std::string() : "expected " + expected) + ")";
    return text;
}

bool FGenIntFinding::operator==(const FGenIntFinding &other) const
{
    return severity == other.severity && className == other.className && line == other.line &&
           column == other.column && toString() == other.toString();
}

FGenIntFinding &FGenIntFindings::add(FGenIntFinding::Severity severity, std::string object,
                                     std::string className, std::string message)
{
    mList.emplace_back();
    FGenIntFinding &finding = mList.back();
    finding.severity = severity;
    finding.object = std::move(object);
    finding.className = std::move(className);
    finding.message = std::move(message);
    return finding;
}

FGenIntFinding &FGenIntFindings::error(const FManaged &object, std::string message)
{
    return add(FGenIntFinding::Error, object.getName(), object.getClass(), std::move(message));
}

FGenIntFinding &FGenIntFindings::hint(const FManaged &object, std::string message)
{
    return add(FGenIntFinding::Hint, object.getName(), object.getClass(), std::move(message));
}

namespace {
/// What loading found, as findings of the project.
std::vector<FGenIntFinding> projectFindings()
{
    FGenIntFindings findings;
    const FProject &project = *FProject::instance();
    const std::string name = S(QFileInfo(project.path()).fileName());
    const auto add = [&](FGenIntFinding::Severity severity, const FScriptError &error) {
        const FReason &reason = error.reason;
        findings
            .add(severity, name, "FProject",
                 reason.message.empty() ? "this can't be executed" : reason.message)
            .in(Q(error.file))
            .at(int(error.line), int(error.column))
            .between(reason.found, reason.expected);
    };
    for (const FScriptError &error : project.errors())
        add(FGenIntFinding::Error, error);
    for (const FScriptError &renaming : project.renamings())
        add(FGenIntFinding::Hint, renaming);
    return findings.take();
}
} // namespace

std::vector<FGenIntFinding> FGenIntCheck::run()
{
    using namespace FGenIntCheckParts;
    std::vector<FGenIntFinding> all = projectFindings();
    FGenIntFindings findings;
    const FGenIntDependencies dependencies;
    for (const auto &cycle : dependencies.cycles()) {
        std::string way;
        for (const std::string &name : cycle.way)
            way += (way.empty() ? "" : " needs ") + name;
        findings.error(*cycle.object, "the value depends on itself")
            .between(way, "a value that can be known before its own result");
    }
    for (const auto &handle : getManageds<FGenIntCommandFile>()) {
        checkFile(*handle.getPtr(), &findings);
        checkMarks(*handle.getPtr(), &findings);
    }
    for (const auto &handle : getManageds<FGenIntResultsFile>()) {
        checkFile(*handle.getPtr(), &findings);
        checkRules(*handle.getPtr(), &findings);
    }
    for (const auto &handle : getEntities<FDefinitionGenInt>())
        checkEntries(*handle.getPtr(), &findings);
    for (const auto &handle : getEntities<FConfigurationGenInt>())
        checkConfiguration(*handle.getPtr(), dependencies, &findings);
    for (const auto &handle : getEntities<FParameter>())
        checkParameter(*handle.getPtr(), dependencies, &findings);
    for (const auto &design : FDesign::all())
        checkDesign(*design, dependencies, &findings);
    for (const auto &handle : getManageds<FExternComputation>())
        checkProgram(*handle.getPtr(), &findings);
    for (const auto &handle : getManageds<FGenIntComputation>())
        checkRunFolder(*handle.getPtr(), dependencies, &findings);
    checkSamples(&findings);
    checkUse(&findings);

    std::unordered_map<std::string, size_t> order;
    for (const auto &object : FObjectManager::instance()->all())
        order.emplace(object->getName(), order.size());
    std::vector<FGenIntFinding> rest = findings.take();
    std::stable_sort(rest.begin(), rest.end(), [&](const auto &a, const auto &b) {
        const size_t i = order[a.object], k = order[b.object];
        return i != k ? i < k : a.line != b.line ? a.line < b.line : a.column < b.column;
    });
    // A configuration or a definition that several objects share is told of once.
    rest.erase(std::unique(rest.begin(), rest.end()), rest.end());
    all.insert(all.end(), rest.begin(), rest.end());
    return all;
}

// SPDX-License-Identifier: Apache-2.0
#include "fgenintcells.h"
#include "fgenintcheckparts.h"
#include "fgenintcomputation.h"
#include "fgenintreader.h"
#include "fobjectmanager.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>
#include <map>

using namespace FGenIntCheckParts;

namespace {
const QString kAnchorNotFound = QStringLiteral("anchor not found");

void checkNames(const FGenIntResultsFile &file, FGenIntFindings *findings)
{
    std::map<std::string, int> seen; // "x" and "X" are two values
    for (const auto &value : file.values()) {
        if (++seen[value->mName] == 2)
            findings->error(file, "two values have one name, and only the first can be asked for")
                .in(file.getFileName())
                .between(shown(Q(value->mName)), "a name of its own for each value");
        if (value->mCalcAverage && value->averageRows() == 0)
            findings->hint(file, "an average of no rows gives no number")
                .in(file.getFileName())
                .between(shown(Q(value->mName)), "how many of the last rows are averaged");
    }
}

/// False if the lines can't be split.
bool checkSeparator(const FGenIntResultsFile &file, FGenIntFindings *findings)
{
    const FGenIntColumns columns = FGenIntReader::columnsOf(file);
    if (columns.numbers)
        return true;
    const auto error = [&](const std::string &message) -> FGenIntFinding & {
        return findings->error(file, message).in(file.getFileName());
    };
    const QString pattern = FGenIntSeparator::pattern(columns);
    const QRegExp own(columns.regExp), whole(pattern);
    if (pattern.isEmpty())
        error("lines aren't split into columns: the separator expression is empty")
            .between("no separator",
                     "numbers, white space or an expression that separates columns");
    else if (!own.isValid() || !whole.isValid())
        error("the separator expression is invalid: " +
              S(own.isValid() ? whole.errorString() : own.errorString()))
            .between(shown(columns.regExp), "a regular expression");
    else if (whole.exactMatch(QString()))
        error("the separator expression matches nothing at all, so all columns begin at one place")
            .between(shown(columns.regExp), "an expression that matches one character at least");
    else
        return true;
    return false;
}

/// Tells of anchors that stand in the sample more than once, those of the same kind together.
void checkHits(const FGenIntResultsFile &file, FGenIntFindings *findings)
{
    QString text = file.text();
    while (!text.isEmpty() && text.at(text.size() - 1).isSpace())
        text.chop(1); // no anchor is found there
    FGenIntTextPlaces places(text);
    std::map<std::pair<QString, bool>, std::pair<FGenIntRule, std::string>> groups;
    std::vector<std::pair<QString, bool>> order;
    for (const auto &value : file.values()) {
        const FGenIntRule rule = FGenIntReader::ruleOf(*value);
        const auto key = std::make_pair(Q(rule.anchor).toCaseFolded(), rule.first);
        if (rule.average || rule.anchor.empty())
            continue;
        auto &group = groups[key];
        if (group.second.empty())
            order.push_back(key);
        group.first = rule;
        group.second += (group.second.empty() ? "" : ", ") + shown(Q(rule.name));
    }
    for (const auto &key : order) {
        const FGenIntRule &rule = groups[key].first;
        const int count = text.count(Q(rule.anchor), Qt::CaseInsensitive);
        if (count < 2)
            continue;
        const int hit = FGenIntReaderCore::getAnchorPos(rule, text);
        findings
            ->hint(file, "the anchor " + shown(Q(rule.anchor)) + " of " + groups[key].second +
                             " stands in the sample several times, and the " +
                             (rule.first ? "first" : "last") + " hit counts, in line " +
                             fromNumber(places.lineOf(hit), 10))
            .in(file.getFileName())
            .at(places.lineOf(hit), places.columnOf(hit))
            .between(fromNumber(count, 10) + " hits", "one hit");
    }
}

void checkSample(const FGenIntResultsFile &file, FGenIntFindings *findings)
{
    const auto values = file.values();
    if (values.empty())
        return;
    const auto text = FGenIntText::fromString(file.text());
    if (!text || text->isEmpty())
        return;
    QVector<FGenIntRule> rules;
    for (const auto &value : values)
        rules.push_back(FGenIntReader::ruleOf(*value));
    for (const auto &reading :
         FGenIntReaderCore(*text).read(rules, FGenIntReader::columnsOf(file))) {
        const FGenIntResultsFileValue &value = *values[size_t(reading.rule)];
        const std::string name = shown(Q(value.mName));
        if (reading.notes.contains(kAnchorNotFound)) {
            // What is noted besides is read from a wrong place.
            findings->error(file, "the anchor of " + name + " isn't in the sample")
                .in(file.getFileName())
                .between("no hit", shown(Q(value.mAnchor)));
            continue;
        }
        const auto type = value.mType.getPtr();
        if (type && !type->isTypeOf(FDouble::mpNull))
            continue; // the notes are about numbers
        for (const QString &note : reading.notes)
            findings->hint(file, "the sample leaves a doubt about " + name + ": " + S(note))
                .in(file.getFileName())
                .at(int(reading.line), reading.columnFirst)
                .between(reading.cell.isEmpty() ? std::string() : shown(reading.cell), "");
    }
    checkHits(file, findings);
}
} // namespace

void FGenIntCheckParts::checkSamples(FGenIntFindings *findings)
{
    std::vector<std::shared_ptr<FGenIntResultsFile>> without;
    for (const auto &handle : getManageds<FGenIntResultsFile>())
        if (!handle->values().empty() && handle->text().isEmpty())
            without.push_back(handle.getPtr());
    if (without.empty())
        return;
    const size_t more = without.size() - 1;
    const QString name = without.front()->getFileName();
    findings
        ->hint(*without.front(),
               "no sample is stored, so that anchors and values can't be checked" +
                   (more ? " (" + counted(qint64(more), "other", "others") + " as well)"
                         : std::string()))
        .in(name)
        .between("", "the text of a result file, as turnbuckle add PROJECT --sample FILE --as " +
                         S(name) + " stores it");
}

void FGenIntCheckParts::checkRules(const FGenIntResultsFile &file, FGenIntFindings *findings)
{
    checkNames(file, findings);
    if (checkSeparator(file, findings))
        checkSample(file, findings);
}

namespace {
/// Tells of result files in folders that no input file of the run stands in: few programs make
/// folders by themselves.
void checkFolders(FGenIntFindings *findings)
{
    const auto folderOf = [](const QString &name) {
        const QString folder = QFileInfo(name).path();
        return folder == QLatin1String(".") ? QString() : QDir::cleanPath(folder);
    };
    for (const auto &handle : getEntities<FDefinitionGenInt>()) {
        QStringList made;
        const auto inputs = handle.getPtr()->getFiles(0);
        for (const auto &input : inputs)
            if (const auto file = input.getPtr())
                made << folderOf(file->getFileName()) + "/";
        const auto results = handle.getPtr()->getFiles(1);
        for (const auto &result : results) {
            const auto file = result.getPtr();
            const QString folder = file ? folderOf(file->getFileName()) : QString();
            const auto holds = [&](const QString &other) { return other.startsWith(folder + "/"); };
            if (!folder.isEmpty() && !folder.startsWith(QLatin1String("..")) &&
                std::none_of(made.begin(), made.end(), holds))
                findings->hint(*file, "no input file makes the folder of this result file")
                    .in(file->getFileName())
                    .between(shown(folder), "a program that makes it, or an input file in it");
        }
    }
}
} // namespace

void FGenIntCheckParts::checkUse(FGenIntFindings *findings)
{
    std::unordered_set<const FObject *> used;
    for (const auto &handle : getManageds<FGenIntComputation>()) {
        const auto configuration = handle.getPtr()->getConfiguration().getPtr();
        const auto definition =
            configuration ? configuration->getDefinition().ptr<FDefinitionGenInt>() : nullptr;
        if (!definition)
            continue;
        const auto files = definition->getFiles();
        for (const auto &file : files)
            used.insert(file.getPtr().get());
    }
    for (const auto &handle : getManageds<FGenIntFile>()) {
        const auto file = handle.getPtr();
        if (used.count(file.get()))
            continue;
        if (file->isTypeOf(FGenIntResultsFile::mpNull))
            findings->error(*file, "nobody reads this result file")
                .in(file->getFileName())
                .between("", "a computation whose definition holds the template");
        else
            findings->hint(*file, "nobody writes this input file")
                .in(file->getFileName())
                .between("", "a computation whose definition holds the template");
    }
    checkFolders(findings);
    // The tables of a run are named after files.
    for (const auto &handle : getEntities<FDefinitionGenInt>()) {
        std::map<QString, std::shared_ptr<FGenIntFile>> tables;
        const auto files = handle.getPtr()->getFiles(1);
        for (const auto &result : files) {
            const auto file = result.getPtr();
            if (!file || file->getFileName().isEmpty())
                continue;
            const auto known = tables.emplace(file->getFileName(), file);
            if (!known.second && known.first->second != file)
                findings
                    ->error(*file, "two templates of definition " + handle.getPtr()->getName() +
                                       " read one result file: the table of the second takes the "
                                       "place of the first")
                    .in(file->getFileName())
                    .between(known.first->second->getName() + " and " + file->getName(),
                             "one template for each result file");
        }
    }
}

// SPDX-License-Identifier: Apache-2.0
#include "fgenintreader.h"

#include "fgeninttext.h"
#include "fini.h"
#include "flogmsg.h"
#include "fovdlconfigurationparser.h"
#include "fsafefile.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>
#include <iostream>

namespace {
void aborted(const std::string &message)
{
    FLogMsg::info("FGenIntReader", message, "parsing process aborted", &std::cout);
}

std::string typeName(const FGenIntResultsFileValue &value)
{
    const auto type = value.mType.getPtr();
    return type ? type->getClass() : FDouble::mpNull->getClass();
}

/// Tells of each value why it is not in the table, which stays as it was.
void noteMissing(const FGenIntResultsFile &file, FTableData *table, const char *note)
{
    std::vector<FTableRow> missing;
    for (const auto &value : file.values()) {
        FTableRow row;
        row.name = value->mName;
        row.type = typeName(*value);
        row.notes.push_back(note);
        missing.push_back(std::move(row));
    }
    table->setMissing(std::move(missing));
}

bool isNumberType(const FExpr<FObject> &type)
{
    const auto object = type.getPtr();
    return !object || object->isTypeOf(FDouble::mpNull);
}
} // namespace

FGenIntRule FGenIntReader::ruleOf(const FGenIntResultsFileValue &value)
{
    FGenIntRule rule;
    rule.name = value.mName;
    rule.line = value.mLine;
    rule.column = value.mColumn;
    rule.anchor = value.mAnchor;
    rule.first = value.mOccurrence == GenIntAnchorOccurrence::First;
    rule.average = value.mCalcAverage;
    rule.averageRows = value.averageRows();
    return rule;
}

FGenIntColumns FGenIntReader::columnsOf(const FGenIntResultsFile &file)
{
    FGenIntColumns columns;
    columns.numbers = file.getNumberSeparator();
    columns.spacesAndTabs = file.getSpacesAndTabsSeparator();
    columns.regExp = file.getRegExprSeparator();
    return columns;
}

int FGenIntReader::getAnchorPos(const std::shared_ptr<FGenIntResultsFileValue> &value,
                                const QString &text)
{
    return FGenIntReaderCore::getAnchorPos(ruleOf(*value), text);
}

bool FGenIntReader::sortValueNames(const FExpr<FObject> &a, const FExpr<FObject> &b)
{
    const auto x = a.ptr<FGenIntResultsFileValue>(), y = b.ptr<FGenIntResultsFileValue>();
    if (!x || !y)
        return false;
    if (x->mLine != y->mLine)
        return x->mLine < y->mLine;
    return x->mColumn != y->mColumn ? x->mColumn < y->mColumn : x->mName < y->mName;
}

void FGenIntReader::sortResultsValues(std::vector<FExpr<FObject, true>> &values,
                                      const QString &text)
{
    if (text.isEmpty())
        return;
    std::map<int, std::vector<FExpr<FObject, true>>> groups;
    for (const auto &value : values)
        if (const auto rule = value.ptr<FGenIntResultsFileValue>())
            groups[std::max(0, getAnchorPos(rule, text))].push_back(value);
    values.clear();
    for (auto &group : groups) {
        std::sort(group.second.begin(), group.second.end(), [](const auto &a, const auto &b) {
            return sortValueNames(FExpr<FObject>(a), FExpr<FObject>(b));
        });
        values.insert(values.end(), group.second.begin(), group.second.end());
    }
}

void FGenIntReader::read(const FExpr<FGenIntResultsFile> &handle,
                         const std::shared_ptr<FTableData> &table, const QString &directory)
{
    const auto file = handle.getPtr();
    if (!file || !table)
        return;
    if (!directory.isEmpty()) {
        const QString path = directory + "/" + file->getFileName();
        QString why;
        if (!safeJoin(directory, file->getFileName(), &why).isEmpty()) {
            readFile(handle, table, path, directory);
            return;
        }
        FLogMsg::info("FGenIntReader", S(why), std::string(), &std::cout);
        aborted("Could not open file " + S(path) + " for reading");
        noteMissing(*file, table.get(), "no file");
        return;
    }
    mImportedObjects.clear();
    const auto text = FGenIntText::fromString(file->text());
    if (!text || text->isEmpty()) {
        aborted("Empty content, nothing to parse");
        noteMissing(*file, table.get(), "empty file");
    } else {
        fill(*file, table, *text, QString(), QString());
    }
}

void FGenIntReader::read(const FExpr<FGenIntResultsFile> &handle,
                         const FExpr<FResultsGeneric> &results, const QString &directory)
{
    const auto file = handle.getPtr();
    const auto object = results.getPtr();
    if (file && object)
        read(handle, object->addTable(S(file->getFileName()), 0, 0), directory);
}

void FGenIntReader::readFile(const FExpr<FGenIntResultsFile> &handle,
                             const std::shared_ptr<FTableData> &table, const QString &path,
                             const QString &directory)
{
    const auto file = handle.getPtr();
    if (!file || !table)
        return;
    mImportedObjects.clear();
    QString why;
    const auto text = FGenIntText::fromFile(path, &why);
    if (!text) {
        if (QFileInfo::exists(path)) // it is there, so its name alone doesn't tell the reason
            FLogMsg::info("FGenIntReader", S(path) + ": " + S(why), std::string(), &std::cout);
        aborted("Could not open file " + S(path) + " for reading");
        noteMissing(*file, table.get(), QFileInfo::exists(path) ? "unreadable file" : "no file");
    } else if (text->isEmpty()) {
        aborted("Empty content, nothing to parse");
        noteMissing(*file, table.get(), "empty file");
    } else {
        fill(*file, table, *text, path, directory);
    }
}

bool FGenIntReader::import(const FGenIntResultsFileValue &value, const QString &cell,
                           const QString &directory)
{
    QString why;
    const QString path = safeJoin(directory, cell, &why); // the name stands in the result's text
    if (path.isEmpty())
        FLogMsg::error("FGenIntReader", "Could not import the file of value " + value.mName, S(why),
                       nullptr);
    FOvdlConfigurationParser parser("");
    if (path.isEmpty() || !parser.doImport(value.mImportType, S(path), value.mName))
        return false;
    mImportedObjects = parser.objects();
    return true;
}

void FGenIntReader::fill(const FGenIntResultsFile &file, const std::shared_ptr<FTableData> &table,
                         const FGenIntText &text, const QString &path, const QString &directory)
{
    const auto values = file.values();
    QVector<FGenIntRule> rules;
    for (const auto &value : values)
        rules.push_back(ruleOf(*value));
    FGenIntReaderCore core(text);
    static const int limit = FIni().value(QStringLiteral("Reader/timeLimit"), 5000).toInt();
    core.setTimeLimit(limit);
    core.setCountLines(mTellPlaces);
    const QVector<FGenIntReading> readings = core.read(rules, columnsOf(file));
    if (text.hasChanged()) {
        FLogMsg::info("FGenIntReader", S(path) + ": has changed while it was read", std::string(),
                      &std::cout);
        aborted("Could not read file " + S(path));
        noteMissing(file, table.get(), "unreadable file");
        return;
    }
    fill(file, table, readings, path, directory);
}

void FGenIntReader::take(const FExpr<FGenIntResultsFile> &handle,
                         const std::shared_ptr<FTableData> &table,
                         const QVector<FGenIntReading> &readings)
{
    mImportedObjects.clear();
    const auto file = handle.getPtr();
    if (file && table)
        fill(*file, table, readings, QString(), QString());
}

void FGenIntReader::fill(const FGenIntResultsFile &file, const std::shared_ptr<FTableData> &table,
                         const QVector<FGenIntReading> &readings, const QString &path,
                         const QString &directory)
{
    const auto values = file.values();
    const QString place = path.isEmpty() ? file.getFileName() : QDir::cleanPath(path);
    std::vector<FTableRow> rows;
    std::vector<size_t> unfilled;
    for (const FGenIntReading &reading : readings) {
        if (size_t(reading.rule) >= values.size())
            continue;
        const FGenIntResultsFileValue &value = *values[size_t(reading.rule)];
        FTableRow row;
        row.name = value.mName;
        row.type = typeName(value);
        row.value = reading.value;
        row.isNumber = isNumberType(value.mType);
        row.cell = reading.cell;
        row.place = {place, reading.line, reading.columnFirst, reading.columnLast};
        if (row.isNumber) {
            row.notes = reading.notes;
        } else if (!path.isEmpty() && value.mType.getPtr()->isTypeOf(FFileName::mpNull) &&
                   !import(value, reading.cell, directory)) {
            // A failed import leaves the name without a row; tables bear that.
            row.notes.push_back(QStringLiteral("the file could not be imported"));
            unfilled.push_back(rows.size());
        }
        rows.push_back(std::move(row));
    }
    table->setValues(std::move(rows), unfilled);
}

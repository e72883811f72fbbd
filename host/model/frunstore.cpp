// SPDX-License-Identifier: Apache-2.0
#include "frunstore.h"

#include "fexterncomputation.h"
#include "flogmsg.h"
#include "fpathmanager.h"
#include "frunfolder.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

namespace {
constexpr int kFormat = 1;
constexpr const char *kRecord = "run.json", *kValues = "values.json";

void tellBroken(const std::string &directory, const char *name, const std::string &why)
{
    FLogMsg::error("Run", directory + "/" + FRunFolder::kOwn + "/" + name + ": " + why,
                   "it counts as missing", nullptr);
}
} // namespace

bool FRunStore::write(const FRunFolder &folder, const std::vector<Table> &tables, QString *why)
{
    QJsonArray all;
    for (const Table &table : tables) {
        QJsonArray rows;
        for (const FTableRow &row : table.rows)
            rows.append(row.toJson());
        all.append(QJsonObject{{"name", Q(table.name)}, {"rows", rows}});
    }
    const QJsonObject json{{"format", kFormat}, {"tables", all}};
    const QByteArray text = QJsonDocument(json).toJson();
    QByteArray known;
    return (FRunFolder::read(folder.path(), kValues, &known) && known == text) ||
           folder.write(kValues, text, why);
}

bool FRunStore::read(const QByteArray &text, std::vector<Table> *tables, std::string *why)
{
    tables->clear();
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (error.error != QJsonParseError::NoError) {
        const QByteArray before = text.left(error.offset);
        *why = "line " + std::to_string(before.count('\n') + 1) + ", column " +
               std::to_string(before.size() - before.lastIndexOf('\n')) + ": " +
               S(error.errorString());
        return false;
    }
    const QJsonObject json = document.object();
    const QJsonValue format = json["format"];
    if (!json["tables"].isArray()) {
        *why = "expected an object with tables";
        return false;
    }
    if (!format.isUndefined() && format.toDouble() != kFormat) {
        *why = "expected format " + std::to_string(kFormat) + ", found " +
               printedNumber(format.toDouble());
        return false;
    }
    for (const auto &one : json["tables"].toArray()) {
        if (!one.isObject())
            continue;
        const QJsonObject object = one.toObject();
        Table table;
        table.name = S(object["name"].toString());
        for (const auto &row : object["rows"].toArray())
            if (row.isObject())
                table.rows.push_back(FTableRow::fromJson(row.toObject()));
        tables->push_back(std::move(table));
    }
    return true;
}

bool FRunStore::hasFailed(const std::shared_ptr<FExternComputation> &computation,
                          const std::shared_ptr<FDesign> &design)
{
    const std::string directory = FPathManager::instance()->getResultsDirAbs(computation, design);
    QByteArray text;
    FRunRecord record;
    if (FRunFolder::read(directory, kRecord, &text) && record.read(text))
        return !record.succeeded();
    return QFileInfo::exists(Q(directory + "/" + FRunFolder::kOwn));
}

std::optional<FRunStore::Run>
FRunStore::lookup(const std::shared_ptr<FExternComputation> &computation,
                  const std::shared_ptr<FDesign> &design)
{
    Run run;
    const std::string directory = FPathManager::instance()->getResultsDirAbs(computation, design);
    QByteArray text;
    if (!FRunFolder::read(directory, kRecord, &text))
        return std::nullopt;
    if (!run.record.read(text)) {
        tellBroken(directory, kRecord, "it is no record of a run");
        return std::nullopt;
    }
    // The folder may have got other names since.
    run.record.computation = computation->getName();
    run.record.design = design->getName();
    run.record.directory = directory;
    std::string why;
    if (run.record.succeeded() && FRunFolder::read(directory, kValues, &text) &&
        !read(text, &run.tables, &why))
        tellBroken(directory, kValues, why);
    return run;
}

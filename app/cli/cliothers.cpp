// SPDX-License-Identifier: Apache-2.0
#include "cli.h"
#include "fconfigurationgenint.h"
#include "fdefinitiongenint.h"
#include "fgenintreader.h"
#include "fgenintresultsfile.h"
#include "fgenintwriter.h"
#include "flogmsg.h"
#include "fobjectmanager.h"
#include "fplainvalue.h"
#include "fproject.h"
#include "fscript.h"
#include "fuserfile.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>
#include <filesystem>
#include <map>

int FCli::eval(const FCliOptions &options)
{
    const int loaded = load(options);
    if (loaded == kUsage)
        return loaded;
    QJsonArray results;
    int code = loaded;
    for (const std::string &text : options.expressions) {
        std::vector<FScriptError> errors;
        const FExprBase expr = FScript::parseExpression(text, &errors);
        FPlainValue value;
        if (!errors.empty()) {
            FLogMsg::error("Script", errors.front().toString(), "in " + text, nullptr);
            code = code == kDone ? kFailed : code;
        } else {
            value = FPlainValue::of(expr);
        }
        if (options.json) {
            QJsonObject result{{"expression", Q(text)}, {"value", value.json()}};
            if (!value.special().empty())
                result["text"] = Q(value.special());
            results.append(result);
        } else {
            out(value.shown("null"));
        }
    }
    if (options.json)
        print(QJsonObject{{"results", results}, {"log", log()}});
    return code;
}

namespace {
std::vector<std::shared_ptr<FGenIntResultsFile>> chosenTemplates(const FCliOptions &options)
{
    std::vector<std::shared_ptr<FGenIntResultsFile>> chosen;
    for (const auto &handle : getManageds<FGenIntResultsFile>()) {
        const auto file = handle.getPtr();
        const auto &names = options.templates;
        const auto matches = [&](const std::string &name) {
            return name == file->getName() || name == S(file->getFileName());
        };
        if (names.empty() || std::any_of(names.begin(), names.end(), matches))
            chosen.push_back(file);
    }
    return chosen;
}
} // namespace

int FCli::extract(const FCliOptions &options)
{
    const int loaded = load(options);
    if (loaded != kDone)
        return refuse(loaded, "nothing was extracted");
    auto templates = chosenTemplates(options);
    if (templates.empty()) {
        err("the project has no such result template");
        return kUsage;
    }
    const QFileInfo info(Q(options.file));
    if (!info.exists()) {
        err("there is no file or folder " + options.file);
        return kFailed;
    }
    QFile file(info.filePath());
    QString why;
    if (!info.isDir() && !FUserFile::open(&file, &why, FUserFile::kAnySize)) {
        err("cannot read " + options.file + ": " + S(why));
        return kFailed;
    }
    file.close();
    const QString folder = info.isDir() ? info.filePath() : info.path() + "/";
    if (!info.isDir() && options.templates.empty()) {
        // A single file is read by the templates of its name, by all if there is none.
        auto same = templates;
        same.erase(std::remove_if(same.begin(), same.end(),
                                  [&](const auto &file) {
                                      return QFileInfo(file->getFileName()).fileName() !=
                                             info.fileName();
                                  }),
                   same.end());
        if (!same.empty())
            templates = same;
    }
    QJsonArray tables;
    int code = kDone;
    for (const auto &file : templates) {
        const auto table = f_make_shared<FTableData>(S(file->getFileName()));
        const size_t before = FLogMsg::count();
        FGenIntReader reader;
        reader.setTellPlaces(options.json);
        if (info.isDir())
            reader.read(file, table, folder);
        else
            reader.readFile(file, table, info.filePath(), folder);
        if (table->rows().empty() && FLogMsg::count() > before)
            code = kFailed;
        if (options.json) {
            tables.append(QJsonObject{{"template", Q(file->getName())},
                                      {"name", Q(table->getName())},
                                      {"rows", rowsOf(table->values(), true)}});
        } else {
            out(table->getName());
            print(table->values());
        }
    }
    if (options.json)
        print(QJsonObject{{"tables", tables}, {"log", log()}});
    return code;
}

int FCli::expand(const FCliOptions &options)
{
    const int loaded = load(options);
    if (loaded != kDone)
        return refuse(loaded, "nothing was expanded");
    std::vector<std::shared_ptr<FConfigurationGenInt>> chosen;
    for (const auto &handle : getEntities<FConfigurationGenInt>())
        if (options.configuration.empty() || handle.getPtr()->getName() == options.configuration)
            chosen.push_back(handle.getPtr());
    if (chosen.empty()) {
        err("the project has no such configuration");
        return kUsage;
    }
    QJsonArray files;
    std::map<std::string, std::string> writers; // file name, then the configuration it comes from
    const bool toFilesOnly = !options.output.empty() && !options.json && chosen.size() == 1;
    for (size_t i = toFilesOnly ? chosen.size() : 0; i < chosen.size(); ++i) {
        const auto &configuration = chosen[i];
        for (const auto &[name, text] : configuration->getPreview()) {
            const auto [at, isNew] = writers.emplace(name, configuration->getName());
            if (!isNew && !options.output.empty()) {
                err("both " + at->second + " and " + configuration->getName() + " write " + name +
                    "; choose one with --configuration");
                return kUsage;
            }
            if (options.json)
                files.append(QJsonObject{{"name", Q(name)}, {"text", Q(text)}});
            else if (options.output.empty())
                out(std::string("==> ").append(name).append(" <==\n").append(text));
        }
    }
    const QString folder = QDir(Q(options.output)).absolutePath() + "/";
    std::error_code error;
    if (!options.output.empty())
        std::filesystem::create_directories(S(folder), error);
    for (const auto &configuration : chosen) {
        if (options.output.empty() ||
            (!error && FGenIntWriter().write(FExpr<FConfigurationGenInt>(configuration), folder)))
            continue;
        const std::string why = error                  ? error.message()
                                : FLogMsg::count() > 0 ? FLogMsg::last().message
                                                       : std::string();
        err("the input files could not be written to " + options.output +
            (why.empty() ? "" : ": " + why));
        return kUnwritable;
    }
    if (options.json)
        print(QJsonObject{{"files", files}, {"log", log()}});
    return kDone;
}

int FCli::save(const FCliOptions &options)
{
    const int loaded = load(options);
    if (loaded != kDone)
        return refuse(loaded, "it is not saved");
    QString why;
    if (!FProject::instance()->save(Q(options.output), &why)) {
        err(S(why));
        return kUnwritable;
    }
    return kDone;
}

int FCli::importDefinition(const FCliOptions &options)
{
    FReason reason;
    if (!FConfigurationGenInt::mpNull->importGenIntDefinition(options.file, &reason)) {
        err(reason.empty() ? "no definition could be read whole from " + options.file
                           : reason.text());
        return kUnreadable;
    }
    QString why;
    if (!FProject::instance()->save(Q(options.output), &why)) {
        err(S(why));
        return kUnwritable;
    }
    return kDone;
}

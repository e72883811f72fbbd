// SPDX-License-Identifier: Apache-2.0
#include "fdocumentation.h"

#include "fcmd.h"
#include "fcmdmanager.h"
#include "foperators.h"

#include <QDir>
#include <QFile>
#include <QXmlStreamReader>
#include <map>

namespace {
using Texts = std::map<std::string, QString>;

/// Reads the messages of a translation source (.ts, XML).
void readTexts(const QString &path, Texts *texts)
{
    QFile file(path);
    if (!file.open(QFile::ReadOnly))
        return;
    QXmlStreamReader xml(&file);
    std::string source;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == QLatin1String("source"))
            source = xml.readElementText().toStdString();
        else if (xml.name() == QLatin1String("translation"))
            (*texts)[source] = xml.readElementText().trimmed();
    }
}

const Texts &texts()
{
    static const Texts all = [] {
        Texts read;
        const QDir folder(QStringLiteral(":/documentation"));
        for (const QString &name : folder.entryList(QDir::Files, QDir::Name))
            readTexts(folder.filePath(name), &read);
        return read;
    }();
    return all;
}

void addKeysOf(const FCommandInfo &info, std::vector<std::string> *keys)
{
    const std::string key = info.documentationKey();
    keys->push_back(key);
    keys->push_back(key + ":example");
    for (size_t i = 0; i < info.args.size(); ++i)
        keys->push_back(key + ":argument" + std::to_string(i));
    if (info.returns != "none")
        keys->push_back(key + ":returnValue");
}
} // namespace

QString FDocuTranslator::translate(const char *, const char *key, const char *, int) const
{
    if (!key || *key != '!')
        return QString();
    const auto found = texts().find(key);
    return found == texts().end() ? QStringLiteral("") : found->second;
}

std::vector<std::string> FDocumentation::keys()
{
    std::vector<std::string> keys;
    for (const FClassInfo *info : FObject::classes())
        keys.push_back(std::string("!") + info->name);
    for (const auto &info : FCmdManager::instance()->all())
        addKeysOf(*info, &keys);
    for (const std::string &name : FOperators::functionNames())
        keys.push_back(FOperators::function(name)->documentationKey());
    return keys;
}

std::vector<std::string> FDocumentation::documentedKeys()
{
    std::vector<std::string> keys;
    for (const auto &text : texts())
        keys.push_back(text.first);
    return keys;
}

std::string FDocumentation::text(const std::string &key)
{
    const auto found = texts().find(key);
    return found == texts().end() ? std::string() : found->second.toStdString();
}

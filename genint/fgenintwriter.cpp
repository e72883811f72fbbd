// SPDX-License-Identifier: Apache-2.0
#include "fgenintwriter.h"

#include "fdefinitiongenint.h"
#include "fgenintcommandfile.h"
#include "fgenintencoding.h"
#include "fgenintwritercore.h"
#include "flogmsg.h"
#include "fpathmanager.h"
#include "frunfolder.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <algorithm>
#include <iostream>

namespace {
const char kSource[] = "Generic Integration Writer";

/// Gives the text of a tag: entries looked up by name, their values made once per write.
class FTagValues
{
public:
    FTagValues(const FGenIntWriter::EntryMap &entries,
               const FExpr<FConfigurationGenInt> &configuration, bool preview)
        : mConfiguration(configuration)
        , mPreview(preview)
        , mNames(keysOf(entries))
    {
        for (const auto &entry : entries)
            mItems.push_back(&entry);
    }

    bool operator()(const QString &name, QString *text) const
    {
        const auto known = mTexts.constFind(name);
        if (known != mTexts.constEnd()) {
            *text = *known;
            return true;
        }
        for (const int candidate : mNames.candidates(name)) {
            const auto &item = *mItems[size_t(candidate)];
            if (const auto object = item.second.getPtr()) {
                const bool hasText = textOf(item.first, object, text);
                if (hasText)
                    mTexts.insert(name, *text);
                return hasText;
            }
        }
        const auto configuration = mConfiguration.getPtr();
        FLogMsg::info(kSource,
                      "Entry " + S(name) + " is not part of configuration " +
                          (configuration ? configuration->getName() : std::string()),
                      "Entry skipped", &std::cout);
        return false;
    }

private:
    static std::vector<QString> keysOf(const FGenIntWriter::EntryMap &entries)
    {
        std::vector<QString> keys;
        for (const auto &entry : entries)
            keys.push_back(entry.first);
        return keys;
    }

    bool textOf(const QString &key, const std::shared_ptr<FObject> &object, QString *text) const
    {
        if (const auto entry = std::dynamic_pointer_cast<FEntry>(object)) {
            const FExprBase &value = entry->getValue();
            if (mPreview && !value.canSafelyBeUpdated(false)) {
                *text = Q(value.toString()).replace('\\', '/');
                return true;
            }
            const auto basic = std::dynamic_pointer_cast<FBasicType>(value.getValueObject());
            *text = basic ? Q(basic->toPlainString()) : QStringLiteral("SHOULD_BE_EXPORTED");
            return true;
        }
        if (std::dynamic_pointer_cast<FGenIntFile>(object)) {
            *text = key.mid(int(ENTRYGROUP_EXPORTS.size()) + 1);
            return true;
        }
        return false;
    }

    const FExpr<FConfigurationGenInt> &mConfiguration;
    bool mPreview;
    FGenIntEntryNames mNames;
    std::vector<const FGenIntWriter::EntryMap::value_type *> mItems;
    mutable QHash<QString, QString> mTexts; // by the names of tags
};

std::shared_ptr<FDefinitionGenInt> definitionOf(const FExpr<FConfigurationGenInt> &handle)
{
    const auto configuration = handle.getPtr();
    const auto definition =
        configuration ? configuration->getDefinition().ptr<FDefinitionGenInt>() : nullptr;
    if (!definition)
        FLogMsg::info("FGenIntWriter",
                      configuration ? "No definition found" : "No configuration found",
                      "Exporting command files aborted", &std::cout);
    return definition;
}

/// Whether a file of that name can be made or replaced; a link can't.
bool isFree(const QString &path, QString *why)
{
    const QFileInfo info(path);
    if (info.isSymLink() || (info.exists() && !info.isFile()))
        *why = path + (info.isSymLink() ? " is a symbolic link" : " is no file");
    else if (!QFileInfo(info.path()).isDir() || !QFileInfo(info.path()).isWritable() ||
             (info.exists() && !info.isWritable()))
        *why = path + " can't be written";
    return why->isEmpty();
}

/// The expanded text in the encoding of the template. False, and the place in \p why, if a value
/// holds a letter that the encoding lacks.
bool encoded(const FGenIntCommandFile &file, const FTagValues &values, QByteArray *bytes,
             QString *why)
{
    file.expander().expandTo(std::cref(values), [bytes](const char *data, qint64 size) {
        bytes->append(data, int(size));
    });
    if (file.getEncoding().isEmpty())
        return true;
    const QString text = QString::fromUtf8(*bytes);
    int bad = 0;
    if (FGenIntEncoding::encode(text, file.getEncoding(), bytes, &bad))
        return true;
    const int line = text.leftRef(bad).count('\n') + 1;
    *why = QStringLiteral("%1:%2:%3: the letter \"%4\" can't be written in %5")
               .arg(file.getFileName())
               .arg(line)
               .arg(bad - text.leftRef(bad).lastIndexOf('\n'))
               .arg(text[bad])
               .arg(file.getEncoding());
    return false;
}

/// What stands at \p path is the user's, and is replaced whole or not at all.
bool replaceFile(const FGenIntCommandFile &file, const FTagValues &values, const QString &path)
{
    QByteArray bytes;
    QString why;
    if (encoded(file, values, &bytes, &why) && FSafeFile::write(path, bytes, &why))
        return true;
    FLogMsg::error(kSource, S(why), "Writing process aborted.", nullptr);
    return false;
}

/// The file is opened before a value is asked for, so that a folder that can't be written to is
/// told first. \p *folderThere is a folder that needn't be looked for again.
bool writeFile(const FGenIntCommandFile &file, const FTagValues &values, const QString &directory,
               QString *folderThere)
{
    const QString path = directory + file.getFileName();
    QString why;
    const auto fail = [&] {
        const std::string message = "Could not open file " + S(path) + " for writing.";
        FLogMsg::info(kSource, message, "Writing process aborted.", &std::cout);
        if (FPathManager::instance()->runInProgress())
            FPathManager::instance()->failRun("cannot write the input files: " + message + " " +
                                              S(why));
        return false;
    };
    const QString target =
        FRunFolder::join(directory, file.getFileName(), &why, LastPart::Unchecked);
    if (target.isEmpty())
        return fail();
    // A backslash separates folders too, though only here.
    const QString folder = path.left(std::max(path.lastIndexOf('/'), path.lastIndexOf('\\')));
    if (folder != *folderThere && (QDir(folder).exists() || QDir().mkpath(folder)))
        *folderThere = folder;
    // A new file has nothing to lose, and costs less.
    if (!FPathManager::instance()->runInProgress()) {
        const QFileInfo there(target);
        if (there.isSymLink() || there.exists())
            return isFree(target, &why) ? replaceFile(file, values, target) : fail();
    }
    FPlainFile out;
    if (!out.open(target, &why))
        return fail();
    if (file.getEncoding().isEmpty()) {
        file.expander().expandTo(
            std::cref(values), [&out](const char *data, qint64 size) { out.append(data, size); });
    } else {
        QByteArray bytes;
        if (!encoded(file, values, &bytes, &why)) {
            FPathManager::instance()->failRun("cannot write the input files: " + S(why));
            FLogMsg::error(kSource, S(why), "Writing process aborted.", nullptr);
            return false;
        }
        out.append(bytes.constData(), bytes.size());
    }
    if (out.finish(&why))
        return true;
    FLogMsg::error(kSource, S(why), "Writing process aborted.", nullptr);
    return false;
}
} // namespace

void FGenIntWriter::getUsedEntries(const FExpr<FGenIntFile> &file,
                                   std::vector<QString> &names) const
{
    if (const auto object = file.getPtr())
        for (const QString &name : FGenIntTagScanner::names(object->text(), Qt::CaseInsensitive))
            names.push_back(name);
}

void FGenIntWriter::parse(QTextStream &out, const QString &text, const EntryMap &entries,
                          const FExpr<FConfigurationGenInt> &configuration, bool preview,
                          bool forceWindowsLineEndings) const
{
    const FTagValues values(entries, configuration, preview);
    out << FGenIntExpander::expand(text, forceWindowsLineEndings, std::cref(values));
    out.flush();
}

bool FGenIntWriter::write(const FExpr<FConfigurationGenInt> &configuration,
                          const QString &directory) const
{
    const auto definition = definitionOf(configuration);
    if (!definition)
        return false;
    const auto object = configuration.getPtr();
    object->update(nullptr);
    EntryMap entries = object->getEntryMap();
    const auto files = definition->getFiles(0);
    for (const auto &handle : files)
        if (const auto file = handle.getPtr())
            entries.emplace(Q(ENTRYGROUP_EXPORTS) + "|" + file->getFileName(),
                            FExpr<FObject>(file));
    const FTagValues values(entries, configuration, false);
    QString folderThere;
    for (const auto &handle : files) {
        const auto file = handle.ptr<FGenIntCommandFile>();
        if (file && !writeFile(*file, values, directory, &folderThere))
            return false;
    }
    for (const auto &item : entries) {
        const auto entry = item.second.ptr<FEntry>();
        const auto value =
            entry ? std::dynamic_pointer_cast<FBasicType>(entry->getValue().getValueObject())
                  : nullptr;
        if (value && value->getType() == FFileName::mpNull)
            value->update(nullptr);
    }
    return true;
}

bool FGenIntWriter::write(const FExpr<FConfigurationGenInt> &configuration,
                          std::map<std::string, std::string> &preview) const
{
    const auto definition = definitionOf(configuration);
    if (!definition)
        return false;
    EntryMap entries = configuration->getEntryMap();
    const auto files = definition->getFiles(0);
    for (const auto &handle : files)
        if (const auto file = handle.getPtr())
            entries.emplace(file->getFileName(), FExpr<FObject>(file));
    const FTagValues values(entries, configuration, true);
    for (const auto &handle : files)
        if (const auto file = handle.getPtr())
            preview[S(file->getFileName())] =
                S(FGenIntExpander::expand(file->text(), false, std::cref(values)));
    return true;
}

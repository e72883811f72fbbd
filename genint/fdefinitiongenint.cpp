// SPDX-License-Identifier: Apache-2.0
#include "fdefinitiongenint.h"

#include "fcmdbinder.h"
#include "fconfigurationgenint.h"
#include "fexterncomputation.h"
#include "ffeatures.h"
#include "ffilevalues.h"
#include "fgenintcommandfile.h"
#include "fgenintresultsfile.h"
#include "fgenintwritercore.h"
#include "fhistory.h"
#include "fio.h"
#include "flogmsg.h"
#include "fmarloctrl.h"
#include "fobjectmanager.h"
#include "fovdldefinitionparser.h"

#include <QTextStream>
#include <algorithm>

F_CLASS_IMPL(FDefinitionGenInt)

namespace {
std::vector<std::shared_ptr<FConfigurationGenInt>> configurationsOf(const FDefinition *definition)
{
    std::vector<std::shared_ptr<FConfigurationGenInt>> found;
    for (const auto &handle : getEntities<FConfigurationGenInt>())
        if (handle.getPtr()->getDefinition().getExpr().get() == definition)
            found.push_back(handle.getPtr());
    return found;
}

bool isLoading() { return FMarloCtrl::instance()->isLoadingProject(); }
} // namespace

FDefinitionGenInt::FDefinitionGenInt(const FExpr<FScope> &scope, std::string name,
                                     const FExpr<FParser> &parser)
    : FDefinitionCustom(scope, std::move(name), parser)
{
}

std::shared_ptr<FDefinitionGenInt> FDefinitionGenInt::create(const FExpr<FScope> &scope,
                                                             const std::string &name,
                                                             const FExpr<FParser> &parser)
{
    const auto definition = f_make_shared<FDefinitionGenInt>(scope, name, parser);
    definition->registerObject();
    return definition;
}

std::shared_ptr<FDefinitionGenInt> FDefinitionGenInt::createByName(const std::string &name)
{
    return create(nullptr, name, nullptr);
}

void FDefinitionGenInt::sortIn(const FExpr<FGenIntFile> &file)
{
    Files &list =
        file.valueClass()->isA(FGenIntCommandFile::staticClass()) ? mCommandFiles : mResultFiles;
    list.push_back(FExpr<FGenIntFile, true>(file));
}

void FDefinitionGenInt::addFile(const FExpr<FGenIntFile> &file)
{
    if (!file.getPtr())
        return;
    mFiles.push_back(FExpr<FGenIntFile, true>(file));
    mFiles.back().registerClient(shared_from_this(), false);
    sortIn(file);
    setOutOfDate(0);
    FHistoryTransaction transaction(nullptr, F_TEXT("add file"), true);
    transaction.addStep(shared_from_this());
}

void FDefinitionGenInt::setFiles(const Files &files)
{
    const Files given = files; // may be one of our own lists
    FHistoryTransaction transaction(nullptr, F_TEXT("set files"), true);
    mFiles.clear();
    mCommandFiles.clear();
    mResultFiles.clear();
    for (const auto &file : given)
        addFile(FExpr<FGenIntFile>(file));
    setOutOfDate(0);
    transaction.addStep(shared_from_this());
}

void FDefinitionGenInt::removeFile(const FExpr<FGenIntFile> &file)
{
    const auto take = [&](Files &list) {
        list.erase(std::remove(list.begin(), list.end(), static_cast<const FExprBase &>(file)),
                   list.end());
    };
    take(mFiles);
    take(file && file.valueClass()->isA(FGenIntCommandFile::staticClass()) ? mCommandFiles
                                                                           : mResultFiles);
    setOutOfDate(0);
    FHistoryTransaction transaction(nullptr, F_TEXT("remove file"), true);
    transaction.addStep(shared_from_this());
}

void FDefinitionGenInt::deleteFile(const FExpr<FGenIntFile> &file)
{
    if (!file)
        return;
    const int answer = FIO::instance()->question(
        nullptr, FMarloCtrl::instance()->applicationName(),
        "Delete template file " + file->getName() + " permanently?", "Yes", "Cancel", "", 0, -1);
    if (answer != 0)
        return;
    FHistoryTransaction transaction(nullptr, F_TEXT("delete file"), true);
    removeFile(file);
    FManaged::destroy(file, true);
}

FExpr<FGenIntFile> FDefinitionGenInt::getFile(const std::string &name) const
{
    if (!name.empty())
        for (const auto &handle : mFiles) {
            const auto file = handle.getPtr();
            if (file && S(file->getFileName()) == name)
                return file;
        }
    return {};
}

const FDefinitionGenInt::Files &FDefinitionGenInt::getFiles()
{
    clearFileStorages();
    return mFiles;
}

const FDefinitionGenInt::Files &FDefinitionGenInt::getFiles(unsigned kind)
{
    clearFileStorages();
    return kind == 0 ? mCommandFiles : mResultFiles;
}

void FDefinitionGenInt::clearFileStorages()
{
    if (isLoading())
        return;
    for (Files *list : {&mFiles, &mCommandFiles, &mResultFiles})
        list->erase(
            std::remove_if(list->begin(), list->end(), [](const auto &file) { return !file; }),
            list->end());
}

bool FDefinitionGenInt::ownsFile(const FObject *file) const
{
    return std::any_of(
        mFiles.begin(), mFiles.end(),
        [&](const auto &handle) { return handle.getExpr().get() == file; });
}

bool FDefinitionGenInt::isCurCommandFile() const
{
    return bool(mCurFile.ptr<FGenIntCommandFile>());
}

std::vector<std::string> FDefinitionGenInt::getResultValueFilenames() const
{
    std::vector<std::string> names;
    for (const auto &handle : mResultFiles)
        if (const auto file = handle.getPtr())
            names.push_back(S(file->getFileName()));
    return names;
}

void FDefinitionGenInt::addEntry(const FExpr<FEntryBase> &entry)
{
    const auto &roots = getRootEntries();
    if (!entry ||
        std::find(roots.begin(), roots.end(), static_cast<const FExprBase &>(entry)) != roots.end())
        return;
    FHistoryTransaction transaction(nullptr, F_TEXT("add entry"), true);
    FDefinitionBase::addEntry(entry);
    reinitConfigurations(false);
}

bool FDefinitionGenInt::removeEntry(const FExpr<FEntryBase> &entry)
{
    FHistoryTransaction transaction(nullptr, F_TEXT("remove entry"), true);
    if (!entry || !FDefinitionCustom::removeEntry(entry))
        return false;
    if (!isLoading())
        removeEntryFromCommandFiles(entry);
    return true;
}

bool FDefinitionGenInt::findAndRemoveEntry(const FExpr<FEntryBase> &entry)
{
    FHistoryTransaction transaction(nullptr, F_TEXT("remove entry"), true);
    if (removeEntry(entry))
        return true;
    const auto roots = getRootEntries();
    for (const auto &handle : roots) {
        const auto root = handle.getPtr();
        if (!root || !root->removeFromSubtree(entry))
            continue;
        entriesChanged();
        removeEntryFromCommandFiles(entry);
        reinitConfigurations(false);
        return true;
    }
    return false;
}

void FDefinitionGenInt::removeEntryFromCommandFiles(const FExpr<FEntryBase> &entry)
{
    const auto definition = entry.ptr<FEntryDef>();
    const auto value = definition ? definition->getDefaultValue().getPtr() : nullptr;
    if (!value)
        return;
    const QString plain = Q(value->toPlainString());
    const QString name = Q(definition->getFullName());
    const Files files = getFiles(0);
    for (const auto &handle : files)
        if (const auto file = handle.getPtr())
            file->setContent(FGenIntTagText::replaceTag(file->text(), name, plain));
}

bool FDefinitionGenInt::commandFileReferencesEntry(const FExpr<FEntryBase> &entry)
{
    const auto definition = entry.ptr<FEntryDef>();
    if (!definition)
        return false;
    const QString name = Q(definition->getFullName());
    const Files files = getFiles(0);
    return std::any_of(files.begin(), files.end(), [&](const auto &handle) {
        const auto file = handle.getPtr();
        return file && FGenIntTagText::containsTag(file->text(), name);
    });
}

void FDefinitionGenInt::updateCommandFiles(std::string oldName, std::string newName)
{
    FHistoryTransaction transaction(nullptr, F_TEXT("rename tags"), true);
    for (const auto &handle : mCommandFiles)
        if (const auto file = handle.ptr<FGenIntCommandFile>())
            file->updateFile(Q(oldName), Q(newName));
}

void FDefinitionGenInt::entryRenamed(const std::shared_ptr<FEntryDef> &entry)
{
    for (const auto &configuration : configurationsOf(this))
        configuration->followRename(entry);
}

void FDefinitionGenInt::reassignEntryDefs()
{
    for (const auto &configuration : configurationsOf(this))
        configuration->reassignEntryDefs();
}

void FDefinitionGenInt::reinitConfigurations(bool flag)
{
    if (isLoading())
        return;
    for (const auto &configuration : configurationsOf(this))
        configuration->reinit(flag);
}

void FDefinitionGenInt::setEntryDefsFromDB(std::string text)
{
    FHistoryTransaction transaction(nullptr, F_TEXT("set entries"), true);
    FDefinition::setEntryDefsFromDB(text);
    reassignEntryDefs();
}

void FDefinitionGenInt::setInUserConfig(bool on)
{
    FManaged::setInUserConfig(on);
    if (isDefault())
        return;
    for (const auto &file : mFiles)
        if (file)
            file->setInUserConfig(on);
}

void FDefinitionGenInt::setInProject(bool on)
{
    FManaged::setInProject(on);
    for (const auto &file : mFiles)
        if (file)
            file->setInProject(on);
}

void FDefinitionGenInt::save(const std::unordered_set<FExpr<FManaged, false>> &objects, QFile &file)
{
    std::unordered_set<FExpr<FManaged, false>> all = objects;
    bool opened = false;
    if (!file.isOpen()) {
        openSaveFile(file);
        opened = true;
    }
    if (!file.isOpen())
        return;
    FOvdlDefinitionParser(FExpr<FDefinitionCustom>(shared_from_base<FDefinitionCustom>()))
        .write(&file, shared_from_base<FDefinitionCustom>());
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    stream << "\n" << FOvdlDefinitionParser::smObjectArea << "\n";
    for (const auto &template_ : mFiles)
        if (template_)
            template_->saveScopeManner(stream, 0, false, false);
    for (const auto &entry : getNameMap()) {
        const auto definition = entry.second.ptr<FEntryDef>();
        const auto geometry =
            definition ? definition->getDefaultExpr().ptr<FGeometryExport>() : nullptr;
        if (geometry && geometry->kind() == 1)
            if (const auto feature = geometry->getFeatureDefinition().ptr<FManaged>())
                all.insert(FExpr<FManaged, false>(feature));
    }
    // The same text each time, and each object behind those that it refers to.
    std::vector<std::shared_ptr<FManaged>> sorted;
    for (const auto &object : all)
        if (object)
            sorted.push_back(object.getPtr());
    const auto rank = [](const FManaged &object) {
        return dynamic_cast<const FConfiguration *>(&object)           ? 1
               : dynamic_cast<const FExternComputation *>(&object)     ? 2
               : dynamic_cast<const FFeatureDefinitionBase *>(&object) ? 0
                                                                       : 3;
    };
    std::sort(sorted.begin(), sorted.end(), [&](const auto &a, const auto &b) {
        const int left = rank(*a), right = rank(*b);
        return left != right ? left < right : a->getName() < b->getName();
    });
    for (const auto &object : sorted)
        object->saveScopeManner(stream, 0, false, false);
    stream << "curFile : " << (mCurFile ? mCurFile->getName() : "NULL") << "\n";
    stream << "lastFile : " << (mLastFile ? mLastFile->getName() : "NULL") << "\n";
    stream.flush();
    if (stream.status() != QTextStream::Ok || !file.flush())
        FLogMsg::error("Definition", "Could not write file " + S(file.fileName()),
                       S(file.errorString()), nullptr);
    if (opened)
        file.close();
}

void FDefinitionGenInt::save()
{
    QFile file;
    save({}, file);
}

void FDefinitionGenInt::init(const std::shared_ptr<FDefinitionGenInt> &source)
{
    FDefinitionCustom::init(std::static_pointer_cast<FDefinitionCustom>(source));
}

std::shared_ptr<FObject> FDefinitionGenInt::clone() const
{
    FHistoryTransaction transaction(nullptr, std::string(), true);
    const auto copy = create(nullptr, getName(), nullptr);
    copy->init(std::const_pointer_cast<FDefinitionGenInt>(shared_from_base<FDefinitionGenInt>()));
    return copy;
}

void FDefinitionGenInt::visitState(FStateVisitor &state)
{
    FDefinitionCustom::visitState(state);
    state(mFiles)(mCurFile)(mLastFile)(mCommandFiles)(mResultFiles);
}

void FDefinitionGenInt::stateRestored()
{
    FDefinitionCustom::stateRestored();
    for (auto &file : mFiles)
        file.registerClient(shared_from_this(), false);
}

void FDefinitionGenInt::initCmds()
{
    using T = FDefinitionGenInt;
    FCmdBinder<T> c;
    c.creator("genericIntegrationDefinition", &T::createByName).fills();
    c.attribute("setFiles", &T::setFiles, &T::filesForScript, FArg{"files"})
        .title(F_TEXT("Template Files"))
        .readOnly()
        .systemFlag(2)
        .hidden();
    c.member("addFile", &T::addFile, FArg{"file"});
    c.member("removeFile", &T::removeFile, FArg{"file"});
    c.attribute("setCurFile", &T::setCurFile, &T::getCurFile, FArg{"currentFile"})
        .title(F_TEXT("Current File"))
        .readOnly()
        .systemFlag(2)
        .hidden();
    c.attribute("setLastFile", &T::setLastFile, &T::getLastFile, FArg{"lastFile"})
        .title(F_TEXT("Last File"))
        .readOnly()
        .systemFlag(2)
        .hidden();
}

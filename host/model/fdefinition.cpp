// SPDX-License-Identifier: Apache-2.0
#include "fdefinition.h"

#include "fcmdbinder.h"
#include "fhistory.h"
#include "flogmsg.h"
#include "fovdldefinitionparser.h"

#include <algorithm>
#include <iostream>

F_CLASS_IMPL(FScope)
F_CLASS_IMPL(FParser)
F_CLASS_IMPL(FDefinitionBase)
F_CLASS_IMPL(FDefinition)
F_CLASS_IMPL(FDefinitionCustomBase)
F_CLASS_IMPL(FDefinitionCustom)

void FDefinitionBase::addEntry(const FExpr<FEntryBase> &entry)
{
    const auto object = entry.getPtr();
    if (!object)
        return;
    if (const auto definition = std::dynamic_pointer_cast<FEntryDef>(object))
        definition->setDefinition(shared_from_base<FDefinitionBase>());
    FHistoryTransaction transaction(nullptr, F_TEXT("add entry"), true);
    mRoots.push_back(FExpr<FEntryBase, true>(entry));
    entryAdded(object);
    transaction.addStep(shared_from_this());
}

std::vector<FExpr<FEntryBase, true>> FDefinitionBase::getVisibleRootEntries() const
{
    std::vector<FExpr<FEntryBase, true>> visible;
    for (const auto &entry : mRoots)
        if (const auto definition = entry.ptr<FEntryDef>())
            if (!definition->isHidden())
                visible.push_back(entry);
    return visible;
}

std::shared_ptr<FEntryDef> FDefinitionBase::rootEntry(const std::string &name) const
{
    const auto &map = getNameMap();
    const auto at = map.find(name);
    return at == map.end() ? nullptr : at->second.ptr<FEntryDef>();
}

namespace {
void mapNames(const std::shared_ptr<FEntryBase> &entry, const std::string &prefix,
              std::map<std::string, FExpr<FEntryBase>> *map)
{
    const std::string name = prefix + entry->getName();
    map->emplace(name, FExpr<FEntryBase>(entry));
    for (const auto &child : entry->getChildren())
        if (const auto object = child.getPtr())
            mapNames(object, name + "|", map);
}

void collectEntries(const std::vector<FExpr<FEntryBase, true>> &entries,
                    std::vector<std::shared_ptr<FObject>> *objects)
{
    for (const auto &entry : entries)
        if (const auto object = entry.getPtr()) {
            objects->push_back(object);
            collectEntries(object->getChildren(), objects);
        }
}
} // namespace

const std::map<std::string, FExpr<FEntryBase>> &FDefinitionBase::getNameMap() const
{
    if (!mNameMapValid) {
        mNameMap.clear();
        for (const auto &entry : mRoots)
            if (const auto object = entry.getPtr())
                mapNames(object, std::string(), &mNameMap);
        mNameMapValid = true;
    }
    return mNameMap;
}

FExpr<FEntryBase> FDefinitionBase::getEntryOfScope(const std::string &fullName) const
{
    const auto &map = getNameMap();
    const auto at = map.find(fullName);
    if (at != map.end())
        return at->second;
    for (const auto &entry : map)
        if (equals(entry.first, fullName, false))
            return entry.second;
    return {};
}

void FDefinitionBase::entryAdded(const std::shared_ptr<FEntryBase> &entry)
{
    const auto parent = entry->getParent();
    if (mNameMapValid)
        mapNames(entry, parent ? parent->getFullName() + "|" : std::string(), &mNameMap);
    setOutOfDate(0);
}

void FDefinitionBase::entriesChanged()
{
    mNameMapValid = false;
    setOutOfDate(0);
}

bool FDefinitionBase::removeRoot(const FExprBase &entry)
{
    const auto at = std::find(mRoots.begin(), mRoots.end(), entry);
    if (at == mRoots.end())
        return false;
    FHistoryTransaction transaction(nullptr, F_TEXT("remove entry"), true);
    mRoots.erase(at);
    entriesChanged();
    transaction.addStep(shared_from_this());
    return true;
}

void FDefinitionBase::clearEntries()
{
    mRoots.clear();
    entriesChanged();
}

bool FDefinitionBase::findAndRemoveEntry(const FExpr<FEntryBase> &entry)
{
    return removeRoot(entry);
}

void FDefinitionBase::visitState(FStateVisitor &state)
{
    FEntity::visitState(state);
    state(mRoots);
}

void FDefinitionBase::stateRestored()
{
    FEntity::stateRestored();
    entriesChanged();
}

void FDefinitionBase::collectStateful(std::vector<std::shared_ptr<FObject>> *objects)
{
    FEntity::collectStateful(objects);
    collectEntries(mRoots, objects);
}

void FDefinition::setEntryDefsFromDB(std::string text)
{
    FOvdlDefinitionParser parser(FExpr<FDefinitionCustom>(
        FExprBase(std::dynamic_pointer_cast<FDefinitionCustom>(shared_from_this()))));
    parser.setFile("entries of " + getName());
    mEntryDefsStatus = {};
    if (!text.empty() && !parser.parse(text)) {
        mEntryDefsStatus = {"the entry definitions are damaged"};
        mEntryDefsStatus.error.causes = parser.errors();
        return;
    }
    FHistoryTransaction transaction(nullptr, F_TEXT("set entries"), true);
    clearEntries();
    parser.build();
    transaction.addStep(shared_from_this());
}

std::string FDefinition::getEntryDefs() const
{
    if (getRootEntries().empty())
        return std::string();
    return FOvdlDefinitionParser::structureText(*this);
}

FStatus FDefinition::setEntryDefsCommand(const std::string &text)
{
    setEntryDefsFromDB(text);
    return std::exchange(mEntryDefsStatus, {});
}

namespace {
/// An entry that got another name than the wanted one is looked for in vain under that.
void tellName(const std::string &wanted, const std::string &got)
{
    if (got != wanted)
        FLogMsg::info("Definition", "entry \"" + wanted + "\": the name is taken or not possible",
                      "the entry is named " + got, &std::cout);
}
} // namespace

FStatus FDefinition::addEntryCommand(const std::string &path, const FExprBase &value)
{
    const auto self = shared_from_base<FDefinitionBase>();
    const QStringList parts = Q(path).split('|', Qt::SkipEmptyParts);
    if (parts.isEmpty())
        return {FReason::unexpected("the name of an entry", "\"" + path + "\"")};
    if (parts.size() > FOvdlDefinitionParser::kMaxDepth)
        return {"entry " + path + ": nested deeper than " +
                fromNumber(FOvdlDefinitionParser::kMaxDepth, 10)};
    if (!value)
        return {FReason::unexpected("a default value for entry " + path, "nothing")};
    if (getNameMap().count(S(parts.join('|'))))
        return {"entry " + path + " exists already"};
    FHistoryTransaction transaction(nullptr, F_TEXT("add entry"), true);
    std::shared_ptr<FEntryDef> group;
    for (int i = 0; i + 1 < parts.size(); ++i) {
        const std::string name = FEntryDef::correctName(S(parts[i]));
        auto next =
            group ? std::dynamic_pointer_cast<FEntryDef>(group->child(name)) : rootEntry(name);
        if (next && !next->isGroup())
            return {{"entry " + next->getFullName() + " is a value", "a group", ""}};
        if (!next)
            next = group ? FEntryDef::create(name, group, self, FExprBase())
                         : FEntryDef::create(name, self, 1, 1, false, true, std::string(),
                                             FExprBase());
        group = next;
    }
    const std::string name = S(parts.last());
    const auto entry = group
                           ? FEntryDef::create(name, group, self, value)
                           : FEntryDef::create(name, self, 1, 1, false, true, std::string(), value);
    tellName(S(parts.join('|')), entry->getFullName());
    return {};
}

FStatus FDefinition::removeEntryCommand(const std::string &path)
{
    const auto entry = getEntryOfScope(path);
    if (!entry)
        return {"no entry " + path + " in definition " + getName()};
    FHistoryTransaction transaction(nullptr, F_TEXT("remove entry"), true);
    findAndRemoveEntry(entry);
    return {};
}

FStatus FDefinition::renameEntryCommand(const std::string &path, const std::string &name)
{
    const auto entry = getEntryOfScope(path).ptr<FEntryDef>();
    if (!entry)
        return {"no entry " + path + " in definition " + getName()};
    entry->setName(name);
    tellName(name, entry->getName());
    return {};
}

void FDefinition::initCmds()
{
    FCmdBinder<FDefinition> c;
    c.attribute("setEntryDefsFromDB", &FDefinition::setEntryDefsCommand,
                &FDefinition::entryDefsForScript, FArg{"text"})
        .title(F_TEXT("Entries"))
        .hidden()
        .readOnly()
        .savedIf([](const FObject *o) {
            return !static_cast<const FDefinition *>(o)->getRootEntries().empty();
        });
    c.member("addEntry", &FDefinition::addEntryCommand, FArg{"name"}, FArg{"value"}).fills();
    c.member("removeEntry", &FDefinition::removeEntryCommand, FArg{"name"});
    c.member("renameEntry", &FDefinition::renameEntryCommand, FArg{"name"}, FArg{"newName"});
}

FDefinitionCustom::FDefinitionCustom(const FExpr<FScope> &, std::string name,
                                     const FExpr<FParser> &)
    : FDefinitionCustomBase(std::move(name))
{
}

void FDefinitionCustom::init(const std::shared_ptr<FDefinitionCustom> &source)
{
    if (source && !source->isNull() && !source->getRootEntries().empty())
        setEntryDefsFromDB(source->getEntryDefs());
}

namespace {
QString &presetPath()
{
    static QString path;
    return path;
}
} // namespace

void FDefinitionCustom::presetSaveFile(const QString &path) { presetPath() = path; }

bool FDefinitionCustom::openSaveFile(QFile &file)
{
    if (file.fileName().isEmpty())
        file.setFileName(presetPath());
    if (file.fileName().isEmpty())
        return false;
    if (!file.open(QIODevice::WriteOnly)) {
        FLogMsg::error("Definition", "Could not open file " + S(file.fileName()) + " for writing.",
                       S(file.errorString()), nullptr);
        return false;
    }
    return true;
}

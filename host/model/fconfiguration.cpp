// SPDX-License-Identifier: Apache-2.0
#include "fconfiguration.h"

#include "fcmdbinder.h"
#include "fhistory.h"
#include "flogmsg.h"
#include "fmarloctrl.h"
#include "fproject.h"
#include "fuserfile.h"

#include <algorithm>

F_CLASS_IMPL(FConfiguration)
F_CLASS_IMPL(FConfigurationCustom)

namespace {
using Roots = std::vector<FExpr<FEntryBase, true>>;

bool hasLiveDefinition(const FEntry &entry, const FDefinition *definition)
{
    const auto own = entry.getEntryDefinition().getPtr();
    if (!own || !definition)
        return false;
    const auto &map = definition->getNameMap();
    const auto at = map.find(own->getFullName());
    return at != map.end() && at->second.getExpr() == own;
}

template <class F>
void forEachEntry(const Roots &entries, F function)
{
    for (const auto &handle : entries)
        if (const auto entry = handle.ptr<FEntry>()) {
            function(entry);
            forEachEntry(entry->getChildren(), function);
        }
}
} // namespace

void FConfiguration::constructFObject()
{
    FEntity::constructFObject();
    if (!mInitPrototype)
        mDefinition.registerClient(shared_from_this(), false);
}

void FConfiguration::linkDefinition(const FExprBase &definition)
{
    mDefinition = definition;
    mIndexValid = false;
    build();
    applyPending();
    setOutOfDate(0);
}

Roots FConfiguration::getVisibleRootEntries() const
{
    Roots visible;
    const auto definition = getDefinition().getPtr();
    for (const auto &handle : mRoots)
        if (const auto entry = handle.ptr<FEntry>())
            if (hasLiveDefinition(*entry, definition.get()) &&
                !entry->getEntryDefinition().getPtr()->isHidden())
                visible.push_back(handle);
    return visible;
}

std::map<QString, FExpr<FObject>> FConfiguration::getEntryMap() const
{
    std::map<QString, FExpr<FObject>> map;
    const auto definition = getDefinition().getPtr();
    forEachEntry(mRoots, [&](const std::shared_ptr<FEntry> &entry) {
        if (hasLiveDefinition(*entry, definition.get()))
            map.emplace(Q(entry->getFullName()), FExpr<FObject>(entry));
    });
    return map;
}

std::vector<std::shared_ptr<FEntry>> FConfiguration::getEntry(const std::shared_ptr<FObject> &type,
                                                              bool) const
{
    std::vector<std::shared_ptr<FEntry>> found;
    forEachEntry(mRoots, [&](const std::shared_ptr<FEntry> &entry) {
        if (!entry->isGroup() && entry->hasValueType(type))
            found.push_back(entry);
    });
    return found;
}

const std::multimap<std::string, std::shared_ptr<FEntry>> &FConfiguration::index() const
{
    if (!mIndexValid) {
        mIndex.clear();
        forEachEntry(mRoots, [&](const std::shared_ptr<FEntry> &entry) {
            mIndex.emplace(entry->getFullName(), entry);
        });
        mIndexValid = true;
    }
    return mIndex;
}

std::shared_ptr<FEntry> FConfiguration::findEntry(const std::string &fullName) const
{
    // Entries whose definition was removed wait under their names for one of that name; a live
    // one may have been renamed to it since.
    const auto range = index().equal_range(fullName);
    const auto definition = getDefinition().getPtr();
    for (auto at = range.first; at != range.second; ++at)
        if (hasLiveDefinition(*at->second, definition.get()))
            return at->second;
    return range.first == range.second ? nullptr : range.first->second;
}

std::shared_ptr<FEntry> FConfiguration::entryOf(const std::shared_ptr<FEntryDef> &definition,
                                                const std::shared_ptr<FEntry> &parent) const
{
    const std::string name =
        parent ? parent->getFullName() + "|" + definition->getName() : definition->getName();
    const auto entry = findEntry(name);
    return entry && entry->getEntryDefinition().getExpr() == definition ? entry : nullptr;
}

void FConfiguration::insertEntry(const std::shared_ptr<FEntry> &entry,
                                 const std::shared_ptr<FEntry> &parent)
{
    FHistoryTransaction transaction(nullptr, F_TEXT("add entry"), true);
    if (parent) {
        parent->addChild(entry);
        transaction.addStep(parent);
    } else {
        mRoots.push_back(FExpr<FEntryBase, true>(entry));
    }
    entry->addClient(this);
    if (mIndexValid)
        mIndex.emplace(entry->getFullName(), entry);
    transaction.addStep(shared_from_this());
}

bool FConfiguration::removeEntry(const FExprBase &entry)
{
    const auto at = std::find(mRoots.begin(), mRoots.end(), entry);
    const bool isRoot = at != mRoots.end();
    if (isRoot)
        mRoots.erase(at);
    else if (std::none_of(mRoots.begin(), mRoots.end(), [&entry](const auto &root) {
                 const auto group = root.getPtr();
                 return group && group->removeFromSubtree(entry);
             }))
        return false;
    mIndexValid = false;
    setOutOfDate(0);
    FHistory::instance()->addStep(shared_from_this());
    return true;
}

void FConfiguration::build()
{
    const auto definition = getDefinition().getPtr();
    if (!definition)
        return;
    FHistoryTransaction transaction(nullptr, F_TEXT("add entries"), true);
    const auto self = shared_from_base<FConfiguration>();
    const std::function<void(const Roots &, const std::shared_ptr<FEntry> &)> level =
        [&](const Roots &definitions, const std::shared_ptr<FEntry> &parent) {
            for (const auto &handle : definitions) {
                const auto wanted = handle.ptr<FEntryDef>();
                if (!wanted)
                    continue;
                std::shared_ptr<FEntry> entry = entryOf(wanted, parent);
                if (!entry) {
                    // A definition that was rebuilt keeps the values by name.
                    const std::string name = parent
                                                 ? parent->getFullName() + "|" + wanted->getName()
                                                 : wanted->getName();
                    entry = findEntry(name);
                    if (entry && !hasLiveDefinition(*entry, definition.get())) {
                        entry->setEntryDefinition(FExpr<FEntryDef>(wanted));
                        FHistory::instance()->addStep(entry);
                    } else
                        entry = FEntry::create(wanted, self, parent);
                }
                level(wanted->getChildren(), entry);
            }
        };
    level(definition->getRootEntries(), nullptr);
    setOutOfDate(0);
}

void FConfiguration::applyPending()
{
    const auto pending = std::move(mPending);
    mPending.clear();
    for (const auto &value : pending) {
        const FStatus status = setEntryCommand(value.first, value.second);
        if (status)
            continue;
        FLogMsg::error("Configuration", status.error.about(getName()).text(), "value dropped",
                       nullptr);
        FProject::instance()->noteLoadError(getName(), status.error);
    }
}

void FConfiguration::followRename(const std::shared_ptr<FEntryDef> &definition)
{
    FHistoryTransaction transaction(nullptr, F_TEXT("rename entry"), true);
    forEachEntry(mRoots, [&](const std::shared_ptr<FEntry> &entry) {
        if (entry->getEntryDefinition().getExpr() == definition) {
            entry->rename(definition->getName());
            transaction.addStep(entry);
        }
    });
    transaction.addStep(shared_from_this()); // entries are indexed by their names
    mIndexValid = false;
}

std::shared_ptr<FEntry> FConfiguration::entryCalled(const std::string &path) const
{
    auto entry = findEntry(path);
    const auto definition = getDefinition().getPtr();
    if (!definition || (entry && hasLiveDefinition(*entry, definition.get())))
        return entry;
    const auto wanted = definition->getEntryOfScope(path).getPtr();
    return wanted ? findEntry(wanted->getFullName()) : entry;
}

FStatus FConfiguration::setEntryCommand(const std::string &path, const FExprBase &value)
{
    if (!getDefinition()) {
        mPending.emplace_back(path, value);
        setOutOfDate(0);
        FHistoryTransaction transaction(nullptr, F_TEXT("set entry"), true);
        transaction.addStep(shared_from_this());
        return {};
    }
    const auto entry = entryCalled(path);
    const auto definition = getDefinition().getPtr();
    if (!entry || !hasLiveDefinition(*entry, definition.get()))
        return {"no entry " + path + " in definition " + definition->getName()};
    return entry->setValue(value);
}

FExprBase FConfiguration::getEntryCommand(const std::string &path) const
{
    const auto entry = entryCalled(path);
    return entry ? FExprBase(entry) : FExprBase();
}

std::string FConfiguration::leaveUnset(const std::vector<FScriptReader::Missing> &entries)
{
    std::string lines;
    for (const FScriptReader::Missing &missing : entries) {
        lines += (lines.empty() ? "" : "\n") + missing.error.toString();
        const auto configuration = std::dynamic_pointer_cast<FConfiguration>(missing.configuration);
        const auto entry = configuration ? configuration->entryCalled(missing.entry) : nullptr;
        if (!entry)
            continue;
        lines += ", for entry " + entry->getFullName() + " of " + configuration->getName();
        const auto value = entry->getValue().getExpr();
        if (std::dynamic_pointer_cast<FBasicType>(value) &&
            !std::dynamic_pointer_cast<FInputFile>(value))
            entry->setValue(nullptr);
    }
    if (!lines.empty())
        FLogMsg::warning("Import",
                         fromNumber((unsigned long)entries.size(), 10) +
                             (entries.size() == 1 ? " entry has" : " entries have") +
                             " no value: they refer to objects that the project lacks",
                         lines, nullptr);
    return lines;
}

void FConfiguration::saveMembers(QTextStream &stream, unsigned level) const
{
    const auto definition = getDefinition().getPtr();
    const auto line = [&](const std::string &name, const FExprBase &value) {
        stream << std::string(TAB * level, ' ') << ".setEntry(" << FLiteral::quoted(name) << ","
               << value.toString() << ");\n";
    };
    // In the definition's order, which loading gives them too; here they stand as they came.
    const std::function<void(const Roots &)> save = [&](const Roots &definitions) {
        for (const auto &handle : definitions)
            if (const auto wanted = handle.ptr<FEntryDef>()) {
                const auto entry = findEntry(wanted->getFullName());
                // No value is told as well: loading would give the default one instead.
                if (entry && !entry->isGroup() && entry->getEntryDefinition().getExpr() == wanted)
                    line(entry->getFullName(), entry->getValue());
                save(wanted->getChildren());
            }
    };
    if (definition)
        save(definition->getRootEntries());
    for (const auto &value : mPending)
        line(value.first, value.second);
}

void FConfiguration::connectEntries()
{
    forEachEntry(
        mRoots,
        [&](const std::shared_ptr<FEntry> &entry) {
            if (!entry->clients().contains(this))
                entry->addClient(this);
        });
}

void FConfiguration::collectNamed(std::vector<const FObject *> *objects) const
{
    for (const auto &waiting : mPending)
        objects->push_back(waiting.second.getExpr().get());
}

void FConfiguration::visitState(FStateVisitor &state)
{
    FEntity::visitState(state);
    state(mDefinition)(mRoots)(mPending);
}

void FConfiguration::stateRestored()
{
    FEntity::stateRestored();
    mIndexValid = false;
    connectEntries();
}

void FConfiguration::collectStateful(std::vector<std::shared_ptr<FObject>> *objects)
{
    FEntity::collectStateful(objects);
    forEachEntry(mRoots, [&](const std::shared_ptr<FEntry> &entry) { objects->push_back(entry); });
}

void FConfiguration::projectClosed()
{
    mIndex.clear();
    mRoots.clear();
    mPending.clear();
}

void FConfiguration::initCmds()
{
    FCmdBinder<FConfiguration> c;
    c.member("setEntry", &FConfiguration::setEntryCommand, FArg{"name"}, FArg{"value"}).fills();
    c.member("getEntry", &FConfiguration::getEntryCommand, FArg{"name"});
}

FConfigurationCustom::FConfigurationCustom(const FExpr<FScope> &, std::string name,
                                           const FExpr<FDefinitionCustom> &)
    : FConfiguration(std::move(name))
{
}

void FConfigurationCustom::init(const std::shared_ptr<FConfigurationCustom> &source)
{
    if (!source || source->isNull())
        return;
    linkDefinition(source->getDefinition());
    forEachEntry(source->getRootEntries(), [&](const std::shared_ptr<FEntry> &entry) {
        const FExprBase &value = entry->getValue();
        if (entry->isGroup() || !value)
            return;
        // Values are not shared; what is an expression or a name stays one.
        const auto own = std::dynamic_pointer_cast<FBasicType>(value.getExpr());
        const auto copy = own ? own->clone() : nullptr;
        setEntryCommand(entry->getFullName(), copy ? FExprBase(copy) : value);
    });
}

void FConfigurationCustom::setDefinition(const FExpr<FDefinitionCustom> &definition)
{
    FHistoryTransaction transaction(nullptr, F_TEXT("set definition"), true);
    linkDefinition(definition);
    transaction.addStep(shared_from_this());
}

std::vector<FExpr<FResultsFileName, true>> FConfigurationCustom::getResultsFileNames() const
{
    std::vector<FExpr<FResultsFileName, true>> names;
    for (const auto &entry : getEntry(FResultsFileName::mpNull, true))
        if (const auto name = entry->getValue().ptr<FResultsFileName>())
            names.push_back(FExpr<FResultsFileName, true>(name));
    return names;
}

void FConfigurationCustom::prepareFileValues() const
{
    // The value may stand behind a parameter.
    for (const auto &type :
         {FExpr<FObject>(FInputFile::mpNull), FExpr<FObject>(FGeometryExport::mpNull)})
        for (const auto &entry : getEntry(type.getPtr(), true))
            if (const auto value = entry->getValue().getValueObject())
                value->setUpToDate(false);
}

std::shared_ptr<FDefinitionCustom>
FConfigurationCustom::importOvdlDefinition(const FExpr<FDefinitionCustom> &definition,
                                           const std::string &fileName)
{
    QFile file(Q(FFile::resolveEnv(fileName)));
    QString why;
    if (fileName.empty() || !FUserFile::open(&file, &why))
        return nullptr;
    return parseFile(&file, definition);
}

void FConfigurationCustom::initCmds()
{
    FCmdBinder<FConfigurationCustom> c;
    c.attribute("setDefinition", &FConfigurationCustom::setDefinition,
                &FConfigurationCustom::customDefinition, FArg{"definition"})
        .title(F_TEXT("Definition"));
}

// SPDX-License-Identifier: Apache-2.0
#include "fentry.h"

#include "fcmdbinder.h"
#include "fcmdmanager.h"
#include "fconfiguration.h"
#include "fdefinition.h"
#include "ffilevalues.h"
#include "fhistory.h"

#include <algorithm>

F_CLASS_IMPL(FEntryBase)
F_CLASS_IMPL(FEntryDef)
F_CLASS_IMPL(FEntry)

std::vector<std::shared_ptr<FCmd>> FEntry::mCmds;

std::string FEntryBase::getFullName() const
{
    const auto parent = mParent.lock();
    return parent ? parent->getFullName() + "|" + getName() : getName();
}

bool FEntryBase::removeFromSubtree(const FExprBase &entry)
{
    const auto at = std::find(mChildren.begin(), mChildren.end(), entry);
    if (at != mChildren.end()) {
        mChildren.erase(at);
        FHistory::instance()->addStep(shared_from_this());
        return true;
    }
    return std::any_of(mChildren.begin(), mChildren.end(), [&](const auto &child) {
        const auto object = child.getPtr();
        return object && object->removeFromSubtree(entry);
    });
}

std::shared_ptr<FEntryBase> FEntryBase::child(const std::string &name) const
{
    for (const auto &child : mChildren) {
        const auto object = child.getPtr();
        if (object && object->getName() == name)
            return object;
    }
    return nullptr;
}

void FEntryBase::addChild(const std::shared_ptr<FEntryBase> &entry)
{
    entry->mParent = shared_from_base<FEntryBase>();
    mChildren.push_back(FExpr<FEntryBase, true>(entry));
}

std::string FEntryDef::correctName(const std::string &name)
{
    std::string out;
    for (const QChar c : Q(name))
        out += c.unicode() < 128 && (c.isLetterOrNumber() || c == '_' || c == '.')
                   ? char(c.unicode())
                   : '_';
    return out.empty() ? "entry" : out;
}

namespace {
template <class Taken>
std::string uniqueAmong(const std::string &name, Taken taken)
{
    std::string candidate = name;
    for (int n = 1; taken(candidate); ++n)
        candidate = name + fromNumber(n, 10);
    return candidate;
}

std::string uniqueName(const std::string &wanted, const FDefinitionBase *definition,
                       const FEntryBase *parent, const FEntryBase *self = nullptr)
{
    return uniqueAmong(
        FEntryDef::correctName(wanted),
        [&](const std::string &name) {
            if (!definition)
                return parent && parent->child(name);
            const auto &map = definition->getNameMap();
            const auto at = map.find(parent ? parent->getFullName() + "|" + name : name);
            return at != map.end() && at->second.getExpr().get() != self; // the own name is free
        });
}
} // namespace

std::shared_ptr<FEntryDef> FEntryDef::create(const std::string &name,
                                             const std::shared_ptr<FDefinitionBase> &definition,
                                             int minimum, int maximum, bool hidden, bool isExpr,
                                             const std::string &docu, const FExprBase &value)
{
    const auto entry = f_make_shared<FEntryDef>(uniqueName(name, definition.get(), nullptr));
    entry->mDefault = value;
    entry->setCounts(minimum, maximum);
    entry->setFlags(hidden, isExpr);
    if (!docu.empty())
        entry->addDocu(docu, unsigned(DocuArea::Description));
    FHistory::instance()->track(entry);
    if (definition) {
        entry->setDefinition(definition);
        definition->addEntry(FExpr<FEntryBase>(entry));
    }
    return entry;
}

std::shared_ptr<FEntryDef> FEntryDef::create(const std::string &name,
                                             const std::shared_ptr<FEntryDef> &parent,
                                             const std::shared_ptr<FDefinitionBase> &definition,
                                             const FExprBase &value)
{
    const auto entry = f_make_shared<FEntryDef>(uniqueName(name, definition.get(), parent.get()));
    entry->mDefault = value;
    entry->setDefinition(definition);
    FHistory::instance()->track(entry);
    parent->addChild(entry);
    FHistory::instance()->addStep(parent);
    if (definition) {
        definition->entryAdded(entry);
        definition->reinitConfigurations(false);
    }
    return entry;
}

std::shared_ptr<FObject> FEntryDef::treeParent() const
{
    const auto group = getParent();
    return group ? std::shared_ptr<FObject>(group) : getDefinition();
}

void FEntryDef::setDefinition(const std::shared_ptr<FDefinitionBase> &definition)
{
    mDefinition = definition;
    for (const auto &child : mChildren)
        if (const auto entry = child.ptr<FEntryDef>())
            entry->setDefinition(definition);
}

namespace {
void collectFullNames(const FEntryBase &entry, std::vector<std::string> *names)
{
    names->push_back(entry.getFullName());
    for (const auto &child : entry.getChildren())
        if (const auto object = child.getPtr())
            collectFullNames(*object, names);
}
} // namespace

void FEntryDef::setName(const std::string &wanted)
{
    const auto definition = getDefinition();
    const auto parent = getParent();
    if (correctName(wanted) == mName)
        return;
    FHistoryTransaction transaction(nullptr, F_TEXT("rename entry"), true);
    std::vector<std::string> before, after;
    collectFullNames(*this, &before);
    mName.clear();
    mName = uniqueName(wanted, definition.get(), parent.get(), this);
    collectFullNames(*this, &after);
    transaction.addStep(shared_from_this());
    if (!definition)
        return;
    definition->entriesChanged();
    definition->entryRenamed(std::static_pointer_cast<FEntryDef>(shared_from_this()));
    for (size_t i = 0; i < before.size(); ++i)
        definition->updateCommandFiles(before[i], after[i]);
}

FExpr<FBasicType> FEntryDef::getDefaultValue() const
{
    return FExpr<FBasicType>(std::dynamic_pointer_cast<FBasicType>(mDefault.getValueObject()));
}

std::shared_ptr<FObject> FEntryDef::getType() const
{
    return mDefault ? mDefault.valueClass()->prototype() : nullptr;
}

void FEntryDef::visitState(FStateVisitor &state)
{
    FEntryBase::visitState(state);
    state(mDefault)(mHidden)(mIsExpr)(mMinimum)(mMaximum);
}

void FEntryDef::stateRestored()
{
    FEntryBase::stateRestored();
    if (const auto definition = getDefinition())
        definition->entriesChanged();
}

std::shared_ptr<FEntry> FEntry::create(const std::shared_ptr<FEntryDef> &definition,
                                       const std::shared_ptr<FConfiguration> &configuration,
                                       const std::shared_ptr<FEntry> &parent)
{
    if (const auto existing = configuration->entryOf(definition, parent))
        return existing;
    const auto entry = f_make_shared<FEntry>(definition->getName());
    entry->mEntryDef = definition;
    if (!definition->isGroup()) {
        const auto value = definition->getDefaultValue().getPtr();
        entry->mValue = definition->getDefaultExpr().isExpression() || !value
                            ? definition->getDefaultExpr()
                            : FExprBase(value->clone());
    }
    FHistory::instance()->track(entry);
    configuration->insertEntry(entry, parent);
    return entry;
}

void FEntry::constructFObject()
{
    FEntryBase::constructFObject();
    if (!mInitPrototype)
        mValue.registerClient(shared_from_this(), false);
}

std::shared_ptr<FObject> FEntry::treeParent() const
{
    if (const auto group = getParent())
        return group;
    std::shared_ptr<FObject> found;
    clients().forEach([&](FObject *client) {
        if (!found && dynamic_cast<FConfiguration *>(client))
            found = client->weak_from_this().lock();
    });
    return found;
}

bool FEntry::isGroup() const
{
    const auto definition = mEntryDef.getPtr();
    return definition ? definition->isGroup() : !mChildren.empty();
}

namespace {
// Numbers of any kind stand for each other; everything else keeps its kind.
bool isNumber(const FClassInfo &type)
{
    return type.isA(FDouble::staticClass()) || type.isA(FInteger::staticClass()) ||
           (type.isA(FUnsigned::staticClass()) && !type.isA(FEnumBase::staticClass()));
}
bool isFile(const FClassInfo &type)
{
    return type.isA(FInputFile::staticClass()) || type.isA(FGeometryExport::staticClass()) ||
           type.isA(FResultsFileName::staticClass()) || type.isA(FString::staticClass());
}
bool sameKind(const FClassInfo &wanted, const FClassInfo &found)
{
    return &found == &FObject::staticClass() || found.isA(wanted) ||
           (isNumber(wanted) && isNumber(found)) || (isFile(wanted) && isFile(found)) ||
           !found.isA(FBasicType::staticClass());
}
} // namespace

FStatus FEntry::setValue(const FExprBase &value)
{
    const auto definition = mEntryDef.getPtr();
    if (definition && definition->isGroup())
        return {"entry " + getFullName() + " is a group and has no value"};
    if (definition && value && definition->getType() &&
        (!sameKind(definition->getType()->classInfo(), *value.valueClass()) ||
         value.valueClass()->isA(FWord::staticClass())))
        return {{"entry " + getFullName(), definition->getType()->getClass(),
                 FScriptTypes::describe(value)}};
    const std::shared_ptr<FObject> target = value.getExpr();
    if (target && !clients().isEmpty() && hasClient(target, true))
        return {"cyclic dependency: the value " + value.toString() + " of entry " + getFullName() +
                " depends on " + getFullName()};
    mValue = value;
    setOutOfDate(0);
    FHistoryTransaction transaction(nullptr, F_TEXT("set entry"), true);
    transaction.addStep(shared_from_this());
    return {};
}

void FEntry::reassignEntryDefs()
{
    const auto definition = mEntryDef.getPtr();
    if (!definition)
        return;
    for (const auto &child : mChildren) {
        const auto entry = child.ptr<FEntry>();
        if (!entry)
            continue;
        if (const auto match =
                std::dynamic_pointer_cast<FEntryDef>(definition->child(entry->getName())))
            entry->mEntryDef = match;
        FHistory::instance()->addStep(entry);
        entry->reassignEntryDefs();
    }
}

bool FEntry::hasValueType(const std::shared_ptr<FObject> &type) const
{
    if (mValue)
        return mValue.valueClass()->isA(type->classInfo());
    const auto definition = mEntryDef.getPtr();
    const auto own = definition ? definition->getType() : nullptr;
    return own && own->isTypeOf(type);
}

const FClassInfo &FEntry::valueClass() const
{
    return mValue ? *mValue.valueClass() : FObject::staticClass();
}

void FEntry::visitState(FStateVisitor &state)
{
    FEntryBase::visitState(state);
    state(mValue)(mEntryDef);
}

void FEntry::initCmds()
{
    FCmdBinder<FEntry> c;
    c.attribute("setValue", &FEntry::setValue, &FEntry::getValue, FArg{"value"})
        .title(F_TEXT("Value"))
        .disableSaving();
    c.flushNow();
    for (const auto &info :
         FCmdManager::instance()->getByReceiver(FEntry::staticClass(), "setValue"))
        mCmds.push_back(FCmd::make(info));
}

// SPDX-License-Identifier: Apache-2.0
#include "fmanaged.h"

#include "fcmdbinder.h"
#include "fhistory.h"
#include "flogmsg.h"
#include "fmarloctrl.h"
#include "fselectionset.h"

#include <algorithm>

F_CLASS_IMPL(FManaged)
F_ENUM_IMPL(DocuArea, {DocuArea::Description, "Description"}, {DocuArea::Example, "Example"},
            {DocuArea::Help, "Help"}, {DocuArea::ReturnValue, "ReturnValue"})

std::shared_ptr<FManaged> FManaged::setName(const std::string &name)
{
    const auto self = shared_from_base<FManaged>();
    if (name == mName)
        return self;
    if (!isRegistered()) {
        mName = name;
        return self;
    }
    mName.clear(); // the own name is free for the own object
    FObjectManager::instance()->reindex(this);
    mName = FObjectManager::instance()->uniqueName(name.empty() ? getClass() : name);
    FObjectManager::instance()->reindex(this);
    setOutOfDate(0);
    FHistoryTransaction transaction(nullptr, "set name", true);
    transaction.addStep(self);
    return self;
}

void FManaged::init(const std::shared_ptr<FManaged> &) {}

void FManaged::registerObject()
{
    if (isRegistered() || mInitPrototype)
        return;
    const auto self = shared_from_base<FManaged>();
    FObject *parent = currentParent();
    if (parent) {
        parent->adoptChild(self);
        if (!parent->isFCmd())
            return;
    }
    mInProject = true;
    FObjectManager::instance()->enter(self);
    FHistory::instance()->recordCreation(self);
}

void FManaged::destroy(const FExprBase &object, bool flag)
{
    destroy(std::dynamic_pointer_cast<FManaged>(object.getExpr()), flag);
}

void FManaged::destroy(const std::shared_ptr<FManaged> &object, bool)
{
    if (!object || object->isDestroyed() || object->isNull())
        return;
    FHistoryTransaction transaction(nullptr, "destroy " + object->getName(), true);
    object->setDestroyed(true); // a destructor that comes back here finds nothing to do
    object->destructFObject();
    FSelectionSet::instance()->remove(FExprBase(object));
    if (object->isRegistered())
        FHistory::instance()->recordRemoval(object);
    FObjectManager::instance()->leave(object);
    for (FObject *client : object->clients().objects()) {
        // Lists drop what is gone when they are next looked at; undo puts them back as they were.
        if (const auto managed = dynamic_cast<FManaged *>(client))
            transaction.addStep(managed->shared_from_this());
        client->setOutOfDate(0);
    }
}

void FManaged::select() const
{
    FSelectionSet::instance()->set(
        {FExprBase(std::const_pointer_cast<FObject>(shared_from_this()))}, false);
}

bool FManaged::isSelected() const
{
    return FSelectionSet::instance()->contains(
        FExprBase(std::const_pointer_cast<FObject>(shared_from_this())));
}

void FManaged::stateRestored() { FObjectManager::instance()->reindex(this); }

FExpr<FManaged> FManaged::setNameCommand(const QString &name) { return setName(S(name)); }

void FManaged::addDocuCommand(const QString &text, const QString &area)
{
    unsigned areas = 0;
    for (const QString &word : area.split('|')) {
        bool ok;
        areas |= FEnum<DocuArea>::mStrRep.getUniqueMatch(S(word), &ok);
    }
    addDocu(S(text), areas ? areas : unsigned(DocuArea::Description));
}

void FManaged::saveScopeManner(QTextStream &stream, unsigned level, bool plainCreator,
                               bool flag) const
{
    const FCmdManager::Info creator = FCmdManager::instance()->creatorOf(classInfo());
    if (!creator) {
        FLogMsg::error("Project", getName() + " can't be saved",
                       "no creator command makes a " + getClass(), nullptr);
        return;
    }
    const std::string indent(TAB * level, ' ');
    stream << "\n" << indent;
    if (!plainCreator && getConfigHandle())
        stream << "&";
    stream << creator->name << " " << getName() << "(";
    const std::vector<std::string> arguments = creatorArguments();
    for (size_t i = 0; i < arguments.size(); ++i)
        stream << (i ? "," : "") << arguments[i];
    stream << ")";
    const auto self = std::const_pointer_cast<FObject>(shared_from_this());
    auto attributes = FCmdManager::instance()->getAttributesByReceiver(self);
    QString body;
    QTextStream members(&body);
    saveDocumentation(members, level + 1);
    saveAttributes(members, attributes, level + 1, flag);
    saveMembers(members, level + 1);
    members.flush();
    if (body.isEmpty())
        stream << " {}\n";
    else
        stream << " {\n" << body << indent << "}\n";
}

void FManaged::saveDocumentation(QTextStream &stream, unsigned level) const
{
    for (const auto &area : getDocu()) {
        std::string text, words;
        for (const std::string &part : area.second)
            text += part;
        if (text.empty())
            continue;
        for (unsigned bit = 1; bit <= area.first; bit <<= 1)
            if (area.first & bit)
                words += (words.empty() ? "" : "|") + FEnum<DocuArea>::mStrRep.getValue(bit);
        stream << std::string(TAB * level, ' ') << ".addDocu(" << FLiteral::quoted(text) << ",\""
               << words << "\");\n";
    }
}

void FManaged::saveAttributes(QTextStream &stream, std::vector<std::shared_ptr<FCmd>> &attributes,
                              unsigned level, bool) const
{
    const auto self = std::const_pointer_cast<FObject>(shared_from_this());
    for (const std::shared_ptr<FCmd> &attribute : attributes) {
        if (attribute->info().savedIf && !attribute->info().savedIf(this))
            continue;
        if (!attribute->getReceiver())
            attribute->setReceiver(FExprBase(self));
        const FExprBase value = attribute->getCurrentValue();
        if (value)
            stream << std::string(TAB * level, ' ') << "." << attribute->info().name << "("
                   << value.toString() << ");\n";
    }
}

void FManaged::initCmds()
{
    FCmdBinder<FManaged> c;
    c.attribute("setName", &FManaged::setNameCommand, &FManaged::nameForScript, FArg{"name"})
        .title("Name")
        .disableSaving()
        .typeOf(0, "FObjectName");
    c.member("addDocu", &FManaged::addDocuCommand, FArg{"text"}, FArg{"area"})
        .typeOf(1, "FEnum<DocuArea>");
}

void FObject::initCmds() {}

FObjectManager *FObjectManager::instance()
{
    static FObjectManager manager;
    return &manager;
}

FModel *FModel::instance()
{
    static FModel model;
    return &model;
}

std::vector<std::shared_ptr<FManaged>> FObjectManager::all() const
{
    std::vector<std::shared_ptr<FManaged>> objects;
    objects.reserve(mAll.size());
    for (const auto &object : mAll)
        objects.push_back(object.second);
    return objects;
}

std::shared_ptr<FManaged> FObjectManager::find(const std::string &name) const
{
    if (const FObject *parent = currentParent())
        if (!parent->isFCmd())
            for (const auto &child : parent->getChildren<FManaged>())
                if (child->mName == name && !child->isDestroyed())
                    return child;
    const auto at = mByName.find(name);
    return at == mByName.end() ? nullptr
                               : std::static_pointer_cast<FManaged>(at->second->shared_from_this());
}

std::shared_ptr<FManaged> FObjectManager::findById(int id) const
{
    const auto at = mById.find(id);
    return at == mById.end() ? nullptr
                             : std::static_pointer_cast<FManaged>(at->second->shared_from_this());
}

void FObjectManager::emitNameChanged(const std::shared_ptr<FObject> &object,
                                     const std::string &name, unsigned id)
{
    for (const NameListener &listener : mListeners)
        listener(object, name, id);
}

std::string FObjectManager::uniqueName(const std::string &wanted) const
{
    std::string name = wanted;
    FObjectName::correctName(name);
    if (name.empty())
        name = "object";
    if (!mByName.count(name))
        return name;
    unsigned &number = mNextNumber[name];
    std::string candidate;
    do
        candidate = name + fromNumber(++number, 10);
    while (mByName.count(candidate));
    return candidate;
}

void FObjectManager::enter(const std::shared_ptr<FManaged> &object)
{
    object->mName = uniqueName(object->mName.empty() ? object->getClass() : object->mName);
    object->mOrder = mNextOrder++;
    while (mById.count(mNextId))
        ++mNextId;
    object->mDbId = mNextId++;
    list(object);
}

void FObjectManager::list(const std::shared_ptr<FManaged> &object)
{
    mAll[object->mOrder] = object;
    mByClass[&object->classInfo()][object->mOrder] = object;
    mById[object->mDbId] = object.get();
    reindex(object.get());
}

void FObjectManager::leave(const std::shared_ptr<FManaged> &object)
{
    if (!mAll.erase(object->mOrder))
        return;
    mByClass[&object->classInfo()].erase(object->mOrder);
    mById.erase(object->mDbId);
    mByName.erase(object->mIndexedName);
    object->mIndexedName.clear();
    // Numbers that became free are given again, so that undo and a new start name alike.
    mNextNumber.clear();
}

void FObjectManager::revive(const std::shared_ptr<FManaged> &object)
{
    object->setDestroyed(false);
    list(object);
}

void FObjectManager::reindex(FManaged *object)
{
    if (object->mIndexedName == object->mName || !mAll.count(object->mOrder))
        return;
    if (!object->mIndexedName.empty()) {
        const auto at = mByName.find(object->mIndexedName);
        if (at != mByName.end() && at->second == object)
            mByName.erase(at);
        mNextNumber.clear();
    }
    object->mIndexedName = object->mName;
    if (!object->mName.empty())
        mByName[object->mName] = object;
}

bool FObjectManager::setId(FManaged *object, int id)
{
    if (id == object->mDbId)
        return true;
    const auto holder = mById.find(id);
    if (id <= 0 || !object->isRegistered())
        return false;
    if (holder != mById.end()) {
        // Ids of a saved project come back in any order: the present holder takes a new one.
        FManaged *other = holder->second;
        mById.erase(holder);
        mNextId = std::max(mNextId, id + 1);
        other->mDbId = mNextId++;
        mById[other->mDbId] = other;
    }
    mById.erase(object->mDbId);
    object->mDbId = id;
    mById[id] = object;
    mNextId = std::max(mNextId, id + 1);
    return true;
}

void FObjectManager::clear()
{
    for (const auto &object : all()) {
        object->setDestroyed(true);
        object->clearChildren();
        object->setRecordedState(nullptr);
        object->projectClosed();
    }
    mByName.clear();
    mById.clear();
    mByClass.clear();
    mNextNumber.clear();
    mAll.clear();
    mNextOrder = 1;
    mNextId = 1;
}

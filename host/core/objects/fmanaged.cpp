// SPDX-License-Identifier: Apache-2.0
#include "fmanaged.h"

#include "fcmdbinder.h"
#include "fcmdmanager.h"
#include "fhistory.h"
#include "flogmsg.h"
#include "fmarloctrl.h"
#include "fobjectmanager.h"
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
    const std::string before = mName;
    mName.clear(); // the own name is free for the own object
    FObjectManager::instance()->reindex(this);
    mName = FObjectManager::instance()->uniqueName(name.empty() ? getClass() : name);
    FObjectManager::instance()->reindex(this);
    if (mName != before)
        nameChanged(before);
    FHistoryTransaction transaction(nullptr, F_TEXT("set name"), true);
    FHistory::instance()->addName(self);
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
    FHistoryTransaction transaction(nullptr, F_TEXT("destroy ") + object->getName(), true);
    object->setDestroyed(true); // a destructor that comes back here finds nothing to do
    object->destructFObject();
    {
        const FHistoryBlocker unrecorded;
        object->retire();
    }
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

void FManaged::retire() { FSelectionSet::instance()->remove(FExprBase(shared_from_this())); }

void FManaged::stateRestored()
{
    const std::string before = mIndexedName;
    FObjectManager::instance()->reindex(this);
    if (isListed() && !before.empty() && before != mName)
        nameChanged(before);
}

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
        .title(F_TEXT("Name"))
        .disableSaving()
        .disableHistory() // it records itself

        .typeOf(0, "FObjectName");
    c.member("destroy", &FManaged::destroyThis);
    c.member("addDocu", &FManaged::addDocuCommand, FArg{"text"}, FArg{"area"})
        .typeOf(1, "FEnum<DocuArea>")
        .fills();
}

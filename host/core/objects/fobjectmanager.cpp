// SPDX-License-Identifier: Apache-2.0
#include "fobjectmanager.h"

#include "fchanges.h"

#include <algorithm>
#include <unordered_set>

FObjectManager *FObjectManager::instance()
{
    static FObjectManager manager;
    return &manager;
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
    Q_EMIT FChanges::instance()->nameChanged(object, Q(name), id);
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
    FChanges::note(object.get(), FChanges::Created);
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
    if (!contains(object.get()))
        return;
    FChanges::note(object.get(), FChanges::Removed);
    noteReferences(object.get());
    mAll.erase(object->mOrder);
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
    FChanges::note(object.get(), FChanges::Revived);
    list(object);
    noteReferences(object.get());
}

// Who refers to an object is saved with its name, so their texts change when it gets another one,
// goes, or comes back.
void FObjectManager::noteReferences(FManaged *object) const
{
    if (!FChanges::isListening())
        return;
    std::vector<FObject *> todo = object->clients().objects();
    std::unordered_set<const FObject *> seen;
    while (!todo.empty()) {
        FObject *client = todo.back();
        todo.pop_back();
        if (!seen.insert(client).second)
            continue;
        if (client->isFCmd() || !dynamic_cast<FManaged *>(client))
            for (FObject *next : client->clients().objects())
                todo.push_back(next);
        FChanges::note(client, FChanges::Changed);
    }
    for (const auto &other : mAll) {
        std::vector<const FObject *> named;
        other.second->collectNamed(&named);
        for (const FObject *one : named)
            if (one == object || (one && one->isFCmd() && one->suppliers().contains(object)))
                FChanges::note(other.second.get(), FChanges::Changed);
    }
}

void FObjectManager::reindex(FManaged *object)
{
    if (object->mIndexedName == object->mName || !contains(object))
        return;
    if (!object->mIndexedName.empty()) {
        noteReferences(object);
        const auto at = mByName.find(object->mIndexedName);
        if (at != mByName.end() && at->second == object)
            mByName.erase(at);
        mNextNumber.clear();
    }
    object->mIndexedName = object->mName;
    FChanges::note(object, FChanges::Renamed);
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
        FChanges::note(other, FChanges::Renamed);
    }
    mById.erase(object->mDbId);
    object->mDbId = id;
    mById[id] = object;
    FChanges::note(object, FChanges::Renamed);
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

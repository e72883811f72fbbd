// SPDX-License-Identifier: Apache-2.0
#include "fobject.h"

#include "fchanges.h"
#include "fexpr.h"
#include "fini.h"
#include "fmanaged.h"
#include "foperators.h"
#include "fupdates.h"

#include <algorithm>
#include <iostream>
#include <unordered_map>

std::shared_ptr<FObject> FObject::mpNull;
unsigned FObject::mSystemFlag = 0;
bool FObject::mInitPrototype = false;

namespace {
std::unordered_map<std::string, std::shared_ptr<FObject>> &prototypeTable()
{
    static std::unordered_map<std::string, std::shared_ptr<FObject>> table;
    return table;
}
bool gRootCmdsInitialized = false;
bool gRootDocuInitialized = false;
std::vector<const FClassInfo *> gClasses;
thread_local std::vector<FObject *> gParents;
} // namespace

bool FClassInfo::isA(const FClassInfo &other) const
{
    for (const FClassInfo *info = this; info; info = info->base)
        if (info == &other)
            return true;
    return false;
}

std::vector<FInitFObjectPrototype::Function> &FInitFObjectPrototype::initFunctions()
{
    static std::vector<Function> functions;
    return functions;
}

const FClassInfo &FObject::staticClass()
{
    static const FClassInfo info{"FObject",
                                 nullptr,
                                 [] {
                                     if (!mpNull)
                                         mpNull = std::make_shared<FObject>();
                                     return mpNull;
                                 },
                                 &FObject::initCmds,
                                 &gRootCmdsInitialized,
                                 &gRootDocuInitialized};
    return info;
}

// NOLINTNEXTLINE(bugprone-copy-constructor-init): a copy has an owner of its own
FObject::FObject(const FObject &other)
    // NOLINTNEXTLINE(bugprone-copy-constructor-init)
    : std::enable_shared_from_this<FObject>()
    , mDocu(other.mDocu)
{
}

FObject::~FObject()
{
    for (FObject *supplier : mSuppliers.objects())
        supplier->mClients.remove(this, true);
    for (FObject *client : mClients.objects())
        client->mSuppliers.remove(this, true);
    FUpdates::forget(this);
}

std::shared_ptr<FObject> FObject::getSuperClass() const
{
    const FClassInfo *base = classInfo().base;
    return base ? base->prototype() : nullptr;
}

bool FObject::isNull() const { return getPrototype().get() == this; }

bool FObject::isTypeOf(const FObject *other) const
{
    return other && classInfo().isA(other->classInfo());
}

bool FObject::isSuperClassOf(const FObject *other) const
{
    return other && other->classInfo().isA(classInfo());
}

std::shared_ptr<FObject> FObject::valueObject() const
{
    auto object = std::const_pointer_cast<FObject>(shared_from_this());
    const FObject *seen = nullptr; // moves up now and then: a circle comes back to it
    size_t steps = 0, rest = 64;
    for (std::shared_ptr<FObject> next; object && object->standsFor(&next); next = nullptr) {
        object = std::move(next);
        if (object.get() == seen)
            return nullptr;
        if (++steps == rest) {
            seen = object.get();
            rest *= 2;
        }
    }
    return object;
}

std::shared_ptr<FObject> FObject::getPrototype(const std::string &className)
{
    const auto found = prototypeTable().find(className);
    return found == prototypeTable().end() ? nullptr : found->second;
}

void FObject::addPrototype(const std::shared_ptr<FObject> &prototype)
{
    prototypeTable()[prototype->getClass()] = prototype;
}

const std::vector<const FClassInfo *> &FObject::classes() { return gClasses; }

void FObject::initPrototypes()
{
    if (!gClasses.empty())
        return;
    std::vector<const FClassInfo *> all{&FObject::staticClass()};
    for (const auto function : FInitFObjectPrototype::initFunctions())
        all.push_back(&function());
    // Bases before derived classes, else by name: the order of the registry must not depend on
    // the order in which the linker met the sources.
    const auto depth = [](const FClassInfo *info) {
        int n = 0;
        while ((info = info->base))
            ++n;
        return n;
    };
    std::sort(all.begin(), all.end(), [&](const FClassInfo *a, const FClassInfo *b) {
        const int da = depth(a), db = depth(b);
        return da != db ? da < db : std::string(a->name) < b->name;
    });
    all.erase(std::unique(all.begin(), all.end()), all.end());
    gClasses = all;
    addPrototype(FObject::staticClass().prototype());
    for (const FClassInfo *info : gClasses)
        info->prototype();
    for (const FClassInfo *info : gClasses)
        if (!*info->cmdsInitialized) {
            *info->cmdsInitialized = true;
            if (!info->base || info->initCmds != info->base->initCmds)
                info->initCmds();
        }
}

void FObject::setOutOfDate(unsigned long) { FUpdates::setOutOfDate(this); }

void FObject::update(std::unique_lock<std::mutex> *) const
{
    FUpdates::update(const_cast<FObject *>(this));
}

void FObject::setImediateUpdate(bool on, bool now)
{
    mImmediateUpdate = on;
    if (on && mStale)
        FUpdates::request(this);
    if (on && now)
        update(nullptr);
}

void FObject::addClient(FObject *client)
{
    mClients.add(client);
    client->mSuppliers.add(this);
}

void FObject::removeClient(FObject *client)
{
    mClients.remove(client);
    client->mSuppliers.remove(this);
}

bool FObject::hasClient(const std::shared_ptr<FObject> &client, bool indirect) const
{
    if (!client || client->mSuppliers.isEmpty())
        return false;
    if (!indirect)
        return mClients.contains(client.get());
    const unsigned long visit = FUpdates::nextWalk();
    std::vector<const FObject *> todo{this};
    while (!todo.empty()) {
        const FObject *object = todo.back();
        todo.pop_back();
        if (object->mClients.contains(client.get()))
            return true;
        object->mClients.forEach([&](FObject *next) {
            if (next->mVisit != visit) {
                next->mVisit = visit;
                todo.push_back(next);
            }
        });
    }
    return false;
}

namespace {
void collect(const FObject *start, const FEdges &(FObject::*side)() const,
             std::set<std::shared_ptr<FObject>> &found)
{
    std::vector<const FObject *> todo{start};
    while (!todo.empty()) {
        const FObject *object = todo.back();
        todo.pop_back();
        (object->*side)().forEach([&](FObject *next) {
            const std::shared_ptr<FObject> shared = next->weak_from_this().lock();
            if (shared && found.insert(shared).second)
                todo.push_back(next);
        });
    }
}
} // namespace

void FObject::getClients(std::set<std::shared_ptr<FObject>> &found) const
{
    collect(this, &FObject::clients, found);
}

void FObject::getSuppliers(std::set<std::shared_ptr<FObject>> &found) const
{
    collect(this, &FObject::suppliers, found);
}

void FObject::startParentReg() { gParents.push_back(this); }

void FObject::stopParentReg()
{
    const auto at = std::find(gParents.rbegin(), gParents.rend(), this);
    if (at != gParents.rend())
        gParents.erase(std::next(at).base());
}

FObject *currentParent() { return gParents.empty() ? nullptr : gParents.back(); }

bool isParentRegEnabled() { return !gParents.empty(); }

void FObject::adoptChild(const std::shared_ptr<FObject> &child)
{
    mChildren.push_back(child);
    child->mParent = weak_from_this();
    FChanges::note(this, FChanges::Children);
}

void FObject::clearChildren()
{
    if (mChildren.empty())
        return;
    for (const std::shared_ptr<FObject> &child : mChildren)
        child->mParent.reset();
    mChildren.clear();
    FChanges::note(this, FChanges::Children);
}

void FObject::setUpToDate(bool upToDate) const
{
    if (mStale != upToDate)
        return;
    mStale = !upToDate;
    FChanges::note(const_cast<FObject *>(this), FChanges::State);
}

void FObject::destroyChildrenOfThis()
{
    const std::vector<std::shared_ptr<FObject>> children = mChildren;
    clearChildren();
    for (const std::shared_ptr<FObject> &child : children)
        if (auto managed = std::dynamic_pointer_cast<FManaged>(child))
            FManaged::destroy(managed, true);
}

void FObject::addDocu(const std::string &text, unsigned areas) { mDocu[areas].push_back(text); }

void FObject::removeDocu(unsigned areas) { mDocu.erase(areas); }

std::string FObject::getDocuString(int area) const
{
    std::string all;
    for (const auto &entry : mDocu)
        if (entry.first & unsigned(area))
            for (const std::string &text : entry.second)
                all += text;
    return all;
}

void FObject::addTypeDocu(const std::string &text, unsigned areas) const
{
    getPrototype()->addDocu(text, areas);
}

bool fIsVerbose()
{
    static const bool verbose = FIni().value(QStringLiteral("VERBOSE"), false).toBool();
    return verbose;
}

void fPrintPrototype(const char *name) { std::cout << "init FObject prototype: " << name << "\n"; }

void FCmdPrototypes::add(const std::string &publicName, const std::shared_ptr<FCmd> &prototype)
{
    prototypeTable()[publicName] = prototype;
}

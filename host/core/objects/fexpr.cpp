// SPDX-License-Identifier: Apache-2.0
#include "fexpr.h"

#include "fbasictype.h"
#include "fcmd.h"
#include "fscript.h"

#include <algorithm>

FExprBase::FExprBase(FExprBase &&other) noexcept
    : mObject(std::move(other.mObject))
    , mClients(std::move(other.mClients))
{
}

FExprBase &FExprBase::operator=(const FExprBase &other)
{
    if (this != &other)
        bind(other.mObject);
    return *this;
}

FExprBase &FExprBase::operator=(FExprBase &&other) noexcept
{
    if (this == &other)
        return *this;
    if (other.mClients || mClients) {
        // Elements of a vector move this way: the registrations go with the handle.
        for (size_t i = 0; mClients && mObject && i < mClients->size(); ++i)
            if (auto client = (*mClients)[i].lock())
                mObject->removeClient(client.get());
        const std::unique_ptr<Clients> mine = std::move(mClients);
        mObject = std::move(other.mObject);
        mClients = std::move(other.mClients);
        if (mine)
            for (const auto &weak : *mine)
                if (auto client = weak.lock()) {
                    registerClient(client, false);
                    client->setOutOfDate(0);
                }
    } else {
        mObject = std::move(other.mObject);
    }
    return *this;
}

FExprBase::~FExprBase()
{
    if (mClients && mObject)
        for (const auto &weak : *mClients)
            if (auto client = weak.lock())
                mObject->removeClient(client.get());
    if (mObject.use_count() == 1)
        release();
}

/// Ends the object that only this handle holds. Each may hold the next one of a long chain, so from
/// some depth on they are put aside for the outermost call.
void FExprBase::release()
{
    constexpr int kDeepest = 30;
    thread_local int tDepth = 0;
    thread_local std::vector<std::shared_ptr<FObject>> *tAside = nullptr;
    if (tDepth > kDeepest) {
        tAside->push_back(std::move(mObject));
        return;
    }
    std::vector<std::shared_ptr<FObject>> aside;
    const bool isOutermost = tDepth++ == 0;
    if (isOutermost)
        tAside = &aside;
    mObject.reset();
    while (!aside.empty()) {
        const std::shared_ptr<FObject> next = std::move(aside.back());
        aside.pop_back();
    }
    --tDepth;
    if (isOutermost)
        tAside = nullptr;
}

void FExprBase::bind(std::shared_ptr<FObject> object)
{
    if (object == mObject)
        return; // nobody has to hear of it
    if (!mClients) {
        mObject = std::move(object);
        return;
    }
    const std::shared_ptr<FObject> old = std::move(mObject);
    mObject = std::move(object);
    for (const auto &weak : *mClients)
        if (auto client = weak.lock()) {
            if (old)
                old->removeClient(client.get());
            if (mObject)
                mObject->addClient(client.get());
            client->setOutOfDate(0);
        }
}

void FExprBase::setExpr(const std::shared_ptr<FObject> &object, bool, bool, bool) { bind(object); }

std::shared_ptr<FObject> FExprBase::getPtr() const
{
    if (!mObject || mObject->isDestroyed())
        return nullptr;
    if (const FCmd *command = mObject->isFCmd())
        return command->evaluate();
    return mObject;
}

std::shared_ptr<FObject> FExprBase::getValueObject() const
{
    const std::shared_ptr<FObject> object = getPtr();
    return object ? object->valueObject() : nullptr;
}

void FExprBase::registerClient(const std::shared_ptr<FObject> &client, bool)
{
    if (!client)
        return;
    if (!mClients)
        mClients = std::make_unique<Clients>();
    for (const auto &weak : *mClients)
        if (weak.lock() == client)
            return;
    mClients->push_back(client);
    if (mObject)
        mObject->addClient(client.get());
}

void FExprBase::deregisterClient(const std::shared_ptr<FObject> &client)
{
    if (!mClients)
        return;
    const auto at = std::find_if(mClients->begin(), mClients->end(),
                                 [&](const auto &weak) { return weak.lock() == client; });
    if (at == mClients->end())
        return;
    mClients->erase(at);
    if (mObject && client)
        mObject->removeClient(client.get());
}

FExprBase FExprBase::resolve(const std::string &text) { return FScript::parseExpression(text); }

std::string FExprBase::toString(const FExprBase &) const
{
    return *this ? mObject->scriptText() : "nullptr";
}

std::string FExprBase::toPlainString(const FExprBase &) const
{
    if (isExpression())
        return toString();
    const auto value = std::dynamic_pointer_cast<FBasicType>(getValueObject());
    return value ? value->toPlainString() : toString();
}

const FClassInfo *FExprBase::valueClass() const { return *this ? &mObject->valueClass() : nullptr; }

std::shared_ptr<FObject> FExprBase::getType() const
{
    if (!*this)
        return nullptr;
    if (const auto value = std::dynamic_pointer_cast<FBasicType>(mObject))
        return value->getType();
    return mObject->valueClass().prototype();
}

bool FExprBase::canSafelyBeUpdated(bool) const
{
    if (!*this)
        return true;
    std::set<std::shared_ptr<FObject>> suppliers;
    mObject->getSuppliers(suppliers);
    return std::none_of(suppliers.begin(), suppliers.end(), [](const auto &supplier) {
        return !supplier->updatesOnDemand() && !supplier->isUpToDate();
    });
}

bool FExprBase::isEvaluated() const
{
    return mObject && (!mObject->isFCmd() || mObject->isUpToDate());
}

void FExprBase::forceReEvaluate() const
{
    if (mObject && mObject->isFCmd())
        mObject->setOutOfDate(0);
}

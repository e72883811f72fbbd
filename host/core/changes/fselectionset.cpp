// SPDX-License-Identifier: Apache-2.0
#include "fselectionset.h"

#include "fchanges.h"

#include <algorithm>

FSelectionSet *FSelectionSet::instance()
{
    static FSelectionSet selection;
    return &selection;
}

void FSelectionSet::add(const FExprBase &object)
{
    if (!object || !mMembers.insert(object.getExpr().get()).second)
        return;
    mObjects.push_back(FExpr<FObject, true>(object));
    FChanges::noteSelection();
}

void FSelectionSet::remove(const FExprBase &object)
{
    if (!mMembers.erase(object.getExpr().get()))
        return;
    mObjects.erase(std::remove(mObjects.begin(), mObjects.end(), object), mObjects.end());
    FChanges::noteSelection();
}

void FSelectionSet::set(const std::vector<FExprBase> &objects, bool)
{
    mObjects.clear();
    mMembers.clear();
    for (const FExprBase &object : objects)
        add(object);
    FChanges::noteSelection();
}

void FSelectionSet::clear(bool notify) { set({}, notify); }

bool FSelectionSet::contains(const FExprBase &object) const
{
    return mMembers.count(object.getExpr().get()) > 0;
}

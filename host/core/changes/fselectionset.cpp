// SPDX-License-Identifier: Apache-2.0
#include "fselectionset.h"

#include <algorithm>

FSelectionSet *FSelectionSet::instance()
{
    static FSelectionSet selection;
    return &selection;
}

void FSelectionSet::add(const FExprBase &object)
{
    if (object && !contains(object))
        mObjects.push_back(FExpr<FObject, true>(object));
}

void FSelectionSet::remove(const FExprBase &object)
{
    mObjects.erase(std::remove(mObjects.begin(), mObjects.end(), object), mObjects.end());
}

void FSelectionSet::set(const std::vector<FExprBase> &objects, bool)
{
    mObjects.clear();
    for (const FExprBase &object : objects)
        add(object);
}

void FSelectionSet::clear(bool) { mObjects.clear(); }

bool FSelectionSet::contains(const FExprBase &object) const
{
    return std::find(mObjects.begin(), mObjects.end(), object) != mObjects.end();
}

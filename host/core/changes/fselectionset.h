// SPDX-License-Identifier: Apache-2.0
#ifndef FSELECTIONSET_H
#define FSELECTIONSET_H
#include "fexpr.h"

#include <unordered_set>

/// The objects that are selected now; the object editor follows it.
class FSelectionSet
{
public:
    static FSelectionSet *instance();
    void add(const FExprBase &object);
    void remove(const FExprBase &object);
    /// Views are told by the change feed, whatever the flag says.
    void set(const std::vector<FExprBase> &objects, bool);
    void clear(bool);
    bool contains(const FExprBase &object) const;
    const std::vector<FExpr<FObject, true>> &getObjects() const { return mObjects; }

private:
    std::vector<FExpr<FObject, true>> mObjects;
    std::unordered_set<const FObject *> mMembers; // of mObjects, which keep them
};
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FSELECTIONSET_H
#define FSELECTIONSET_H
#include "fexpr.h"

/// The objects that are selected now; the object editor follows it.
class FSelectionSet
{
public:
    static FSelectionSet *instance();
    void add(const FExprBase &object);
    void remove(const FExprBase &object);
    void set(const std::vector<FExprBase> &objects, bool notify);
    void clear(bool notify);
    bool contains(const FExprBase &object) const;
    const std::vector<FExpr<FObject, true>> &getObjects() const { return mObjects; }

private:
    std::vector<FExpr<FObject, true>> mObjects;
};
#endif

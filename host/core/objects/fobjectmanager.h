// SPDX-License-Identifier: Apache-2.0
#ifndef FOBJECTMANAGER_H
#define FOBJECTMANAGER_H
#include "fmanaged.h"

#include <unordered_map>

/// All objects of the project, in the order of their registration.
class FObjectManager
{
public:
    static FObjectManager *instance();

    template <class T>
    std::vector<FExpr<T, true>> getManagedsByType() const
    {
        std::map<long, std::shared_ptr<T>> found;
        for (const auto &kind : mByClass)
            if (kind.first->isA(T::staticClass()))
                for (const auto &object : kind.second)
                    found.emplace(object.first, std::static_pointer_cast<T>(object.second));
        std::vector<FExpr<T, true>> handles;
        handles.reserve(found.size());
        for (const auto &object : found)
            handles.push_back(FExpr<T, true>(object.second));
        return handles;
    }
    std::vector<std::shared_ptr<FManaged>> all() const;
    size_t count() const { return mAll.size(); }
    bool contains(const FManaged *object) const
    {
        // An object of a closed project has a place that another one may have now.
        const auto found = mAll.find(object->order());
        return found != mAll.end() && found->second.get() == object;
    }
    /// By managed name: among the children of the object that collects children now, then among
    /// the objects of the project.
    std::shared_ptr<FManaged> find(const std::string &name) const;
    std::shared_ptr<FManaged> findById(int id) const;
    FExprBase getWorkingScope() const { return FExprBase(); }

    /// Tells FChanges::nameChanged at once.
    void emitNameChanged(const std::shared_ptr<FObject> &object, const std::string &name,
                         unsigned id);

    /// A free identifier made from \p name.
    std::string uniqueName(const std::string &name) const;
    void enter(const std::shared_ptr<FManaged> &object);
    /// Takes an object out of the lists; revive puts it back at its old place.
    void leave(const std::shared_ptr<FManaged> &object);
    void revive(const std::shared_ptr<FManaged> &object);
    void reindex(FManaged *object);
    /// Gives the object the id that it had when it was saved; false if another one holds it.
    bool setId(FManaged *object, int id);
    /// Forgets everything: the next project starts empty.
    void clear();

private:
    void noteReferences(FManaged *object) const;
    void list(const std::shared_ptr<FManaged> &object);

    std::map<long, std::shared_ptr<FManaged>> mAll;
    std::map<const FClassInfo *, std::map<long, std::shared_ptr<FManaged>>> mByClass;
    std::unordered_map<std::string, FManaged *> mByName;
    std::unordered_map<int, FManaged *> mById;
    mutable std::unordered_map<std::string, unsigned> mNextNumber;
    long mNextOrder = 1;
    int mNextId = 1;
};

template <class T>
std::vector<FExpr<T, true>> getManageds()
{
    return FObjectManager::instance()->getManagedsByType<T>();
}
template <class T>
std::vector<FExpr<T, true>> getEntities()
{
    return FObjectManager::instance()->getManagedsByType<T>();
}
#endif

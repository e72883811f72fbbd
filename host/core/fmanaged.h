// SPDX-License-Identifier: Apache-2.0
#ifndef FMANAGED_H
#define FMANAGED_H
#include "fenum.h"
#include "fscripttype.h"

#include <QTextStream>

F_ENUM(DocuArea)

/// A named object of the project, held by the object manager.
///
/// Names are identifiers and unique; handles stay bound when a name changes.
class FManaged : public FObject
{
    F_CLASS(FManaged, FObject)
public:
    explicit FManaged(std::string name = std::string())
        : mName(std::move(name))
    {
    }

    /// Corrects the name to a unique identifier and keeps it.
    virtual std::shared_ptr<FManaged> setName(const std::string &name);
    virtual std::string getName() const { return mName; }
    /// Id of the object in its project, 0 before registration; kept by undo, saving and loading.
    int getDbId() const { return mDbId; }

    /// Takes what is independent of the name from \p source.
    virtual void init(const std::shared_ptr<FManaged> &source);
    /// Gives the object id and unique name and enters it into the project. Idempotent. While an
    /// object that is no command collects children, the new object is only adopted by it.
    void registerObject();
    bool isRegistered() const { return mOrder != 0; }
    /// Place in the project, by the order of registration; 0 outside.
    long order() const { return mOrder; }
    /// Takes an object out of the project; all handles on it test false. Idempotent.
    static void destroy(const FExprBase &object, bool);
    static void destroy(const std::shared_ptr<FManaged> &object, bool);

    virtual bool isInProject() const { return mInProject; }
    virtual void setInProject(bool on) { mInProject = on; }
    virtual void setInUserConfig(bool) {}
    bool isDefault() const { return false; }
    FExpr<FManaged> getConfigHandle() const { return {}; }
    virtual void select() const;
    bool isSelected() const;

    // Virtuals that the tree and the clipboard call
    virtual QByteArray copy() const { return {}; }
    virtual void paste(const QByteArray &) const {}
    virtual bool doubleClickedInTree() { return false; }

    /// Writes the object as a script block; \p level is its depth. With \p plainCreator the
    /// creator word stands without its mark.
    virtual void saveScopeManner(QTextStream &stream, unsigned level, bool plainCreator,
                                 bool flag) const;
    /// One line per attribute that may be saved and has a value.
    void saveAttributes(QTextStream &stream, std::vector<std::shared_ptr<FCmd>> &attributes,
                        unsigned level, bool flag) const;
    void saveDocumentation(QTextStream &stream, unsigned level) const;
    /// Lines of a block that are no attributes, each indented by \p level.
    virtual void saveMembers(QTextStream &, unsigned) const {}
    /// Adds the object, and what it keeps in its fields, to the objects that history follows.
    virtual void collectStateful(std::vector<std::shared_ptr<FObject>> *objects)
    {
        objects->push_back(shared_from_this());
    }
    /// The project is closed and nothing revives the object. Lets go of what may refer back to it:
    /// a circle would keep itself alive.
    virtual void projectClosed() {}
    /// False for objects that exist in every project, such as the implicit design.
    virtual bool isSaved() const { return true; }
    /// Texts of the creator's arguments when the object is saved.
    virtual std::vector<std::string> creatorArguments() const { return {}; }

    std::string scriptText() const override { return getName(); }
    void visitState(FStateVisitor &state) override
    {
        FObject::visitState(state);
        state(mName);
    }
    void stateRestored() override;

    // Script commands
    FExpr<FManaged> setNameCommand(const QString &name);
    QString nameForScript() const { return Q(getName()); }
    void addDocuCommand(const QString &text, const QString &area);

    static void initCmds();

protected:
    unsigned mManageFlag = 0; ///< 2: not a row of the object tree

private:
    friend class FObjectManager;
    std::string mName;
    std::string mIndexedName; // under which the manager knows it
    int mDbId = 0;
    long mOrder = 0; // place in the project; 0 outside
    bool mInProject = false;
};

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
    /// By managed name: among the children of the object that collects children now, then among
    /// the objects of the project.
    std::shared_ptr<FManaged> find(const std::string &name) const;
    std::shared_ptr<FManaged> findById(int id) const;
    FExprBase getWorkingScope() const { return FExprBase(); }

    using NameListener =
        std::function<void(const std::shared_ptr<FObject> &, const std::string &, unsigned)>;
    void emitNameChanged(const std::shared_ptr<FObject> &object, const std::string &name,
                         unsigned id);
    void addNameListener(NameListener listener) { mListeners.push_back(std::move(listener)); }

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
    void list(const std::shared_ptr<FManaged> &object);

    std::map<long, std::shared_ptr<FManaged>> mAll;
    std::map<const FClassInfo *, std::map<long, std::shared_ptr<FManaged>>> mByClass;
    std::unordered_map<std::string, FManaged *> mByName;
    std::unordered_map<int, FManaged *> mById;
    mutable std::unordered_map<std::string, unsigned> mNextNumber;
    std::vector<NameListener> mListeners;
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
class FModel
{
public:
    static FModel *instance();
    template <class T>
    std::vector<FExpr<T, true>> getEntitiesByType() const
    {
        return getEntities<T>();
    }
};
#endif

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

    /// Corrects the name to a unique identifier and keeps it, unless something speaks against it:
    /// that is told in the log.
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
    /// True from registration to destruction.
    bool isListed() const { return isRegistered() && !isDestroyed(); }
    /// False for helpers that no tree shows.
    bool isTreeRow() const { return mManageFlag != 2; }
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
    /// Null if a copy is the script block of the object; else bytes for paste() of the class, none
    /// if the user doesn't want it after all.
    virtual QByteArray copy() const { return {}; }
    /// The same for an object among \p others that are copied with it: those that its bytes bring
    /// along are taken out of the list.
    virtual QByteArray copyAmong(std::vector<std::shared_ptr<FManaged>> * /*others*/) const
    {
        return copy();
    }
    /// Called on the prototype; false, with the reason in the log, if nothing was taken in.
    virtual bool paste(const QByteArray &) const { return false; }
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
    std::shared_ptr<FObject> toldBy() const override { return nullptr; }
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
    void retire() override;

    // Script commands
    FExpr<FManaged> setNameCommand(const QString &name);
    void destroyThis() { destroy(shared_from_base<FManaged>(), true); }
    QString nameForScript() const { return Q(getName()); }
    void addDocuCommand(const QString &text, const QString &area);

    static void initCmds();

protected:
    /// The object has another name than \p before, by setName, undo or redo. By default that is
    /// news for all who depend on it.
    virtual void nameChanged(const std::string & /*before*/) { setOutOfDate(0); }

    unsigned mManageFlag = 0; ///< 2: not a row of the object tree

private:
    friend class FObjectManager;
    std::string mName;
    std::string mIndexedName; // under which the manager knows it
    int mDbId = 0;
    long mOrder = 0; // place in the project; 0 outside
    bool mInProject = false;
};
#endif

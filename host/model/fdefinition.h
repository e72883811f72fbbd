// SPDX-License-Identifier: Apache-2.0
#ifndef FDEFINITION_H
#define FDEFINITION_H
#include "fentry.h"
#include "fparameter.h"

#include <QFile>
#include <unordered_set>

class FScope : public FEntity
{
    F_CLASS(FScope, FEntity)
public:
    explicit FScope(std::string name = std::string())
        : FEntity(std::move(name))
    {
    }
};

class FParser : public FObject
{
    F_CLASS(FParser, FObject)
};

/// A tree of entry definitions.
class FDefinitionBase : public FEntity
{
    F_CLASS(FDefinitionBase, FEntity)
public:
    explicit FDefinitionBase(std::string name = std::string())
        : FEntity(std::move(name))
    {
    }

    virtual void addEntry(const FExpr<FEntryBase> &entry);
    const std::vector<FExpr<FEntryBase, true>> &getRootEntries() const { return mRoots; }
    std::vector<FExpr<FEntryBase, true>> getVisibleRootEntries() const;
    std::shared_ptr<FEntryDef> rootEntry(const std::string &name) const;
    /// All entries of all levels under their full names.
    const std::map<std::string, FExpr<FEntryBase>> &getNameMap() const;
    /// By full name: exactly, else ignoring case. Null if there is none.
    FExpr<FEntryBase> getEntryOfScope(const std::string &fullName) const;
    /// A new entry has its place in the tree.
    void entryAdded(const std::shared_ptr<FEntryBase> &entry);
    /// The structure of the tree or a name in it has changed.
    void entriesChanged();

    // What follows a change of the entries; definitions with files or configurations know more.
    virtual bool findAndRemoveEntry(const FExpr<FEntryBase> &entry);
    virtual void reinitConfigurations(bool) {}
    virtual void updateCommandFiles(std::string, std::string) {}
    virtual std::vector<std::string> getResultValueFilenames() const { return {}; }
    virtual void entryRenamed(const std::shared_ptr<FEntryDef> &) {}

    void doUpdate() const override {}
    void visitState(FStateVisitor &state) override;
    void stateRestored() override;
    void collectStateful(std::vector<std::shared_ptr<FObject>> *objects) override;

protected:
    bool removeRoot(const FExprBase &entry);
    void clearEntries();

private:
    std::vector<FExpr<FEntryBase, true>> mRoots;
    mutable std::map<std::string, FExpr<FEntryBase>> mNameMap;
    mutable bool mNameMapValid = false;
};

class FDefinition : public FDefinitionBase
{
    F_CLASS(FDefinition, FDefinitionBase)
public:
    using FDefinitionBase::FDefinitionBase;
    FDefinition() = default;
    /// Rebuilds the tree from its saved text.
    virtual void setEntryDefsFromDB(std::string text);
    /// The tree as text; empty without entries.
    std::string getEntryDefs() const;
    /// A new entry under \p path ("group|name"); groups are made as needed, \p value gives type
    /// and default.
    FStatus addEntryCommand(const std::string &path, const FExprBase &value);
    FStatus removeEntryCommand(const std::string &path);
    FStatus renameEntryCommand(const std::string &path, const std::string &name);

    static void initCmds();

private:
    FStatus setEntryDefsCommand(const std::string &text);
    FStatus mEntryDefsStatus; // of the text that was set last
    QString entryDefsForScript() const { return Q(getEntryDefs()); }
};

class FDefinitionCustomBase : public FDefinition
{
    F_CLASS(FDefinitionCustomBase, FDefinition)
public:
    using FDefinition::FDefinition;
    FDefinitionCustomBase() = default;
};

class FDefinitionCustom : public FDefinitionCustomBase
{
    F_CLASS(FDefinitionCustom, FDefinitionCustomBase)
public:
    FDefinitionCustom() = default;
    explicit FDefinitionCustom(const FExpr<FScope> &scope, std::string name,
                               const FExpr<FParser> &parser);
    /// Takes a root entry out; false for anything else.
    virtual bool removeEntry(const FExpr<FEntryBase> &entry) { return removeRoot(entry); }
    using FDefinitionCustomBase::init;
    /// Copies the entry structure; harmless from a prototype.
    void init(const std::shared_ptr<FDefinitionCustom> &source);
    virtual void save(const std::unordered_set<FExpr<FManaged, false>> &, QFile &) {}
    virtual void save() {}
    /// Names and opens the target of a save. Without a display only a preset target is opened.
    bool openSaveFile(QFile &file);
    static void presetSaveFile(const QString &path);
};
#endif

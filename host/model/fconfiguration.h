// SPDX-License-Identifier: Apache-2.0
#ifndef FCONFIGURATION_H
#define FCONFIGURATION_H
#include "fdefinition.h"
#include "ffilevalues.h"
#include "fscript.h"

/// Values for the entries of a definition.
class FConfiguration : public FEntity
{
    F_CLASS(FConfiguration, FEntity)
public:
    explicit FConfiguration(std::string name = std::string())
        : FEntity(std::move(name))
    {
    }

    FExpr<FDefinition> getDefinition() const { return FExpr<FDefinition>(mDefinition); }
    /// Builds an entry for each entry definition that has none.
    void initEntireStructure(bool) { build(); }
    /// Adds missing entries; existing ones keep their values, stale ones stay.
    void reinit(bool) { build(); }
    const std::vector<FExpr<FEntryBase, true>> &getRootEntries() const { return mRoots; }
    /// Root entries whose definition still exists and is not hidden.
    std::vector<FExpr<FEntryBase, true>> getVisibleRootEntries() const;
    /// All entries of all levels under their full names, groups included.
    std::map<QString, FExpr<FObject>> getEntryMap() const;
    /// All entries whose value is of the class of \p type.
    std::vector<std::shared_ptr<FEntry>> getEntry(const std::shared_ptr<FObject> &type, bool) const;
    std::shared_ptr<FEntry> findEntry(const std::string &fullName) const;
    /// The same, and if there is none the entry of that name in another case.
    std::shared_ptr<FEntry> entryCalled(const std::string &path) const;
    std::shared_ptr<FEntry> entryOf(const std::shared_ptr<FEntryDef> &definition,
                                    const std::shared_ptr<FEntry> &parent) const;
    void insertEntry(const std::shared_ptr<FEntry> &entry, const std::shared_ptr<FEntry> &parent);
    bool removeEntry(const FExprBase &entry);
    /// Entries of a renamed definition take its name.
    void followRename(const std::shared_ptr<FEntryDef> &definition);

    FStatus setEntryCommand(const std::string &path, const FExprBase &value);
    FExprBase getEntryCommand(const std::string &path) const;
    /// Entries that a copy brought and that refer to objects which the project lacks: a number or
    /// text gets no value, so that nothing is run with another one; a file keeps its empty name.
    /// The answer is one text of all, a line for each; it stands in the log too.
    static std::string leaveUnset(const std::vector<FScriptReader::Missing> &entries);

    virtual std::map<std::string, std::string> getPreview() const { return {}; }
    std::map<std::string, std::string> preview() const { return getPreview(); }
    virtual bool isGenInt() const { return false; }
    /// Attributes made for the entries, for the object editor.
    virtual void getDynamicAttributes(std::vector<std::shared_ptr<FAttribCmd>> &) const {}

    void constructFObject() override;
    void saveMembers(QTextStream &stream, unsigned level) const override;
    void collectNamed(std::vector<const FObject *> *objects) const override;
    void visitState(FStateVisitor &state) override;
    void stateRestored() override;
    void collectStateful(std::vector<std::shared_ptr<FObject>> *objects) override;
    void projectClosed() override;

    static void initCmds();

protected:
    void linkDefinition(const FExprBase &definition);

private:
    void build();
    void applyPending();
    void connectEntries();
    const std::multimap<std::string, std::shared_ptr<FEntry>> &index() const;

    FExprBase mDefinition;
    std::vector<FExpr<FEntryBase, true>> mRoots;
    // Values for entries that don't exist yet: a configuration may be read before its definition.
    std::vector<std::pair<std::string, FExprBase>> mPending;
    mutable std::multimap<std::string, std::shared_ptr<FEntry>> mIndex;
    mutable bool mIndexValid = false;
};

class FConfigurationCustom : public FConfiguration
{
    F_CLASS(FConfigurationCustom, FConfiguration)
public:
    FConfigurationCustom() = default;
    FConfigurationCustom(const FExpr<FScope> &scope, std::string name,
                         const FExpr<FDefinitionCustom> &definition);
    virtual void init() {}
    using FConfiguration::init;
    /// Takes definition and values of \p source.
    void init(const std::shared_ptr<FConfigurationCustom> &source);
    void setDefinition(const FExpr<FDefinitionCustom> &definition);
    FExpr<FDefinitionCustom> customDefinition() const
    {
        return FExpr<FDefinitionCustom>(getDefinition());
    }
    /// The result files that entries name.
    std::vector<FExpr<FResultsFileName, true>> getResultsFileNames() const;
    /// Files that a run copies are copied by the next update of their values.
    void prepareFileValues() const;
    std::shared_ptr<FDefinitionCustom>
    importOvdlDefinition(const FExpr<FDefinitionCustom> &definition, const std::string &fileName);
    virtual std::shared_ptr<FDefinitionCustom> parseFile(QFile *,
                                                         const FExpr<FDefinitionCustom> &) const
    {
        return nullptr;
    }

    static void initCmds();
};
#endif

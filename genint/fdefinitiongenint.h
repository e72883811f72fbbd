// SPDX-License-Identifier: Apache-2.0
#ifndef FDEFINITIONGENINT_H
#define FDEFINITIONGENINT_H
#include "fdefinition.h"
#include "fgenintfile.h"

/// What exists in an integration: the entries, and the template files that hold their tags.
class FDefinitionGenInt : public FDefinitionCustom, public FGenIntFileOwner
{
    F_CLASS(FDefinitionGenInt, FDefinitionCustom)
public:
    using Files = std::vector<FExpr<FGenIntFile, true>>;

    FDefinitionGenInt() = default;
    FDefinitionGenInt(const FExpr<FScope> &scope, std::string name, const FExpr<FParser> &parser);
    static std::shared_ptr<FDefinitionGenInt>
    create(const FExpr<FScope> &scope, const std::string &name, const FExpr<FParser> &parser);

    // Files
    void addFile(const FExpr<FGenIntFile> &file);
    void setFiles(const Files &files);
    /// Takes the file out of the lists; the object survives.
    void removeFile(const FExpr<FGenIntFile> &file);
    /// Asks, then removes and destroys the file.
    void deleteFile(const FExpr<FGenIntFile> &file);
    /// By exact file name; null for an empty or unknown one.
    FExpr<FGenIntFile> getFile(const std::string &name) const;
    const Files &getFiles();
    /// 0: input templates; anything else: result templates.
    const Files &getFiles(unsigned kind);
    /// Drops handles whose files are gone, except while a project loads.
    void clearFileStorages();
    bool ownsFile(const FObject *file) const override;
    bool isCurCommandFile() const;
    const FExpr<FGenIntFile> &getCurFile() const { return mCurFile; }
    const FExpr<FGenIntFile> &getLastFile() const { return mLastFile; }
    void setCurFile(const FExpr<FGenIntFile> &file) { mCurFile = file; }
    void setLastFile(const FExpr<FGenIntFile> &file) { mLastFile = file; }
    std::vector<std::string> getResultValueFilenames() const override;
    /// Digits of real numbers in input files.
    int realNumberPrecision() const { return mRealNumberPrecision; }

    // Entries
    void addEntry(const FExpr<FEntryBase> &entry) override;
    bool removeEntry(const FExpr<FEntryBase> &entry) override;
    bool findAndRemoveEntry(const FExpr<FEntryBase> &entry) override;
    /// Puts the default value of an entry where its tags stood.
    void removeEntryFromCommandFiles(const FExpr<FEntryBase> &entry);
    bool commandFileReferencesEntry(const FExpr<FEntryBase> &entry);
    /// Renames tags in all input templates.
    void updateCommandFiles(std::string oldName, std::string newName) override;
    void entryRenamed(const std::shared_ptr<FEntryDef> &entry) override;
    void reassignEntryDefs();
    void reinitConfigurations(bool flag) override;
    void setEntryDefsFromDB(std::string text) override;

    void setInUserConfig(bool on) override;
    void setInProject(bool on) override;
    /// Writes structure, templates and \p objects; asks for a target if \p file isn't open.
    void save(const std::unordered_set<FExpr<FManaged, false>> &objects, QFile &file) override;
    void save() override;

    using FDefinitionCustom::init;
    virtual void init(const std::shared_ptr<FDefinitionGenInt> &source);
    std::shared_ptr<FObject> clone() const override;
    void doUpdate() const override { FDefinitionBase::doUpdate(); }
    void visitState(FStateVisitor &state) override;
    void stateRestored() override;

    static void initCmds();

private:
    static std::shared_ptr<FDefinitionGenInt> createByName(const std::string &name);
    const Files &filesForScript() const { return mFiles; }
    void sortIn(const FExpr<FGenIntFile> &file);

    int mRealNumberPrecision = 6;
    Files mFiles;
    FExpr<FGenIntFile> mCurFile, mLastFile;
    Files mCommandFiles, mResultFiles;
};
#endif

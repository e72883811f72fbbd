// SPDX-License-Identifier: Apache-2.0
#ifndef FCONFIGURATIONGENINT_H
#define FCONFIGURATIONGENINT_H
#include "fconfiguration.h"

class FDefinitionGenInt;

/// The values of an integration.
class FConfigurationGenInt : public FConfigurationCustom
{
    F_CLASS(FConfigurationGenInt, FConfigurationCustom)
public:
    FConfigurationGenInt() = default;
    FConfigurationGenInt(const FExpr<FScope> &scope, std::string name,
                         const std::shared_ptr<FDefinitionGenInt> &definition);
    static std::shared_ptr<FConfigurationGenInt>
    create(const FExpr<FScope> &scope, const std::string &name, bool initialize,
           const std::shared_ptr<FDefinitionGenInt> &definition);

    void init() override {}
    using FConfigurationCustom::init;
    virtual void init(const std::shared_ptr<FConfigurationGenInt> &source);
    std::shared_ptr<FObject> clone() const override;
    /// Links entries to entry definitions of the same names after these were rebuilt.
    void reassignEntryDefs();
    void getDynamicAttributes(std::vector<std::shared_ptr<FAttribCmd>> &list) const override;
    bool isGenInt() const override { return true; }
    /// What each input template expands to now; no file is touched.
    std::map<std::string, std::string> getPreview() const override;
    virtual void setSyntaxHighlighter() {}
    std::shared_ptr<FDefinitionCustom>
    parseFile(QFile *file, const FExpr<FDefinitionCustom> &definition) const override;
    /// Reads a saved definition; an empty name asks for one. Null if there is none, or if it could
    /// not be read whole: nothing of it is kept then.
    virtual FExpr<FDefinitionGenInt> importGenIntDefinition(const std::string &fileName) const;
    /// The same with the reason; it is empty when the user was asked and gave no name.
    FExpr<FDefinitionGenInt> importGenIntDefinition(const std::string &fileName,
                                                    FReason *why) const;

    static void initCmds();

private:
    std::shared_ptr<FDefinitionCustom>
    parseFile(QFile *file, const FExpr<FDefinitionCustom> &definition, FReason *why) const;
    static std::shared_ptr<FConfigurationGenInt> createForScript(const std::string &name,
                                                                 bool initialize);
    void setGenIntDefinition(const FExpr<FDefinitionGenInt> &definition);
    FExpr<FDefinitionGenInt> genIntDefinition() const;
};
#endif

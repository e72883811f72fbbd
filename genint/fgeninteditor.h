// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTEDITOR_H
#define FGENINTEDITOR_H
#include "fdefinitiongenint.h"

/// Stands for the editor of a definition: once it has one, each computation that uses the
/// definition gets a connector.
class FGenIntEditor : public FManaged
{
    F_CLASS(FGenIntEditor, FManaged)
public:
    explicit FGenIntEditor(std::string name = std::string())
        : FManaged(std::move(name))
    {
    }
    /// A registered editor.
    static std::shared_ptr<FGenIntEditor> create(const std::string &name);
    std::shared_ptr<FGenIntEditor> setDefinition(const FExpr<FDefinitionGenInt> &definition);
    const FExpr<FDefinitionGenInt> &getDefinition() const { return mDefinition; }
    void constructFObject() override;
    void doUpdate() const override;
    void visitState(FStateVisitor &state) override;
    static void initCmds();

private:
    FExpr<FDefinitionGenInt> mDefinition;
};
#endif

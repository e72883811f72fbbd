// SPDX-License-Identifier: Apache-2.0
#ifndef FPARAMETER_H
#define FPARAMETER_H
#include "fbasictype.h"
#include "fcmd.h"
#include "fmanaged.h"

/// Base of definitions, configurations, parameters and designs.
class FEntity : public FManaged
{
    F_CLASS(FEntity, FManaged)
public:
    explicit FEntity(std::string name = std::string())
        : FManaged(std::move(name))
    {
    }
};

/// A number, text or other value of the model under a name. Its value is an expression; the
/// current design may hold another one.
class FParameter : public FEntity
{
    F_CLASS(FParameter, FEntity)
public:
    explicit FParameter(std::string name = std::string())
        : FEntity(std::move(name))
    {
    }
    static std::shared_ptr<FParameter> create(const std::string &name, const FExprBase &value);
    static FExpr<FParameter> create(const FExprBase &scope, const std::string &name,
                                    const FDouble &value);

    /// The value as it was given, whatever the design.
    const FExprBase &getValue() const { return mValue; }
    /// Fails, and changes nothing, if the value would depend on the parameter itself.
    FStatus setValue(const FExprBase &value);
    /// Value in the current design.
    const FExprBase &currentValue() const;

    void constructFObject() override;
    bool standsFor(std::shared_ptr<FObject> *value) const override;
    const FClassInfo &valueClass() const override;
    void doUpdate() const override;
    void visitState(FStateVisitor &state) override;
    std::vector<std::string> creatorArguments() const override { return {mValue.toString()}; }

    static void initCmds();

private:
    FExprBase mValue;
    // Along a chain of parameters each would else ask all before it.
    static unsigned mClassEpoch; // counts changes of values
    mutable const FClassInfo *mKnownClass = nullptr;
    mutable unsigned mKnownEpoch = 0;
};
#endif

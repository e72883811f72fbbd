// SPDX-License-Identifier: Apache-2.0
#ifndef FPARAMETER_H
#define FPARAMETER_H
#include "fbasictype.h"
#include "fcmd.h"
#include "fmanaged.h"

#include <unordered_map>

class FDesign;

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
    std::shared_ptr<FObject> valueObject() const override;
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

/// A design: values of parameters that differ from the baseline. Exactly one design is current.
class FDesign : public FEntity
{
    F_CLASS(FDesign, FEntity)
public:
    explicit FDesign(std::string name = std::string())
        : FEntity(std::move(name))
    {
    }
    static std::shared_ptr<FDesign> create(const std::string &name);
    /// The design of the parameters' own values, in every project.
    static std::shared_ptr<FDesign> baseline();
    static std::shared_ptr<FDesign> current();
    /// Makes \p design current; what differs goes stale, runs keep their state per design.
    static void setCurrent(const std::shared_ptr<FDesign> &design);
    /// True while the current design changes: staleness is then no news for a run.
    static bool isSwitching();
    static std::vector<std::shared_ptr<FDesign>> all();

    FStatus setValue(const std::string &parameter, const FExprBase &value);
    /// Null if the design leaves the parameter at its own value.
    const FExprBase *valueOf(const FParameter *parameter) const;

    bool isSaved() const override;
    void collectNamed(std::vector<const FObject *> *objects) const override;
    void saveMembers(QTextStream &stream, unsigned level) const override;
    void visitState(FStateVisitor &state) override;
    void stateRestored() override;
    void destructFObject() override;

    static void initCmds();

private:
    struct Override
    {
        FExpr<FParameter, true> parameter;
        FExprBase value;
    };
    static void connect(Override *own);
    void touch() const;
    std::vector<Override> mValues;
    std::unordered_map<const FObject *, size_t> mPlaces; // in mValues, by parameter
};
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FDESIGN_H
#define FDESIGN_H
#include "fparameter.h"

#include <unordered_map>

class FDesign;

/// Who keeps something for each design. Called at once, on the model's thread.
class FDesignObserver
{
public:
    virtual ~FDesignObserver() = default;
    virtual void designSwitched() = 0;
    /// The values of \p design changed.
    virtual void designEdited(const FDesign *design) = 0;
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
    /// \p observer lives as long as the program.
    static void addObserver(FDesignObserver *observer);

    FStatus setValue(const std::string &parameter, const FExprBase &value);
    /// Back to the parameter's own value. Fails if the design doesn't set it.
    FStatus unsetValue(const std::string &parameter);
    /// A design of the same values under another name.
    FExpr<FDesign> duplicate(const std::string &name);
    /// Null if the design leaves the parameter at its own value.
    const FExprBase *valueOf(const FParameter *parameter) const;

    bool isSaved() const override;
    void collectNamed(std::vector<const FObject *> *objects) const override;
    void saveMembers(QTextStream &stream, unsigned level) const override;
    void visitState(FStateVisitor &state) override;
    void stateRestored() override;
    void constructFObject() override;
    void retire() override;

    static void initCmds();

private:
    struct Override
    {
        FExpr<FParameter, true> parameter;
        FExprBase value;
    };
    static void connect(Override *own);
    void touch() const;
    void valueChanged(const std::shared_ptr<FParameter> &parameter, const char *text);
    std::vector<Override> mValues;
    std::unordered_map<const FObject *, size_t> mPlaces; // in mValues, by parameter
};
#endif

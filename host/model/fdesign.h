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
    /// \p design leaves the project.
    virtual void designRetired(const FDesign *design) = 0;
    /// False while its name must stay.
    virtual bool mayRename(const FDesign *design) const = 0;
    virtual void designRenamed(const FDesign *design, const std::string &before) = 0;
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
    /// Refused with a message while a run of the design is under way: its folder has that name.
    std::shared_ptr<FManaged> setName(const std::string &name) override;
    static std::shared_ptr<FDesign> create(const std::string &name);
    /// The design of the parameters' own values, in every project.
    static std::shared_ptr<FDesign> baseline();
    /// The one that values are evaluated for.
    static std::shared_ptr<FDesign> current();
    /// The one that the user sees. The current one, but while a run is started or concluded.
    static std::shared_ptr<FDesign> chosen();
    /// Makes \p design current; what differs goes stale, runs keep their state per design.
    static void setCurrent(const std::shared_ptr<FDesign> &design);
    /// True while the current design changes: staleness is then no news for a run.
    static bool isSwitching();
    /// The design whose results alone are concerned by what gets stale now; null for all designs.
    static const FDesign *concerned();

    /// Evaluates for another design for its lifetime; the user's comes back with the outermost
    /// scope. Nobody who watches the model is told of it. Without a design it only keeps scopes
    /// inside it from going back in between.
    class Scope
    {
    public:
        explicit Scope(const std::shared_ptr<FDesign> &design);
        ~Scope();
        Scope(const Scope &) = delete;
        Scope &operator=(const Scope &) = delete;

    private:
        bool mEvaluates;
    };
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

protected:
    void nameChanged(const std::string &before) override;

private:
    struct Override
    {
        FExpr<FParameter, true> parameter;
        FExprBase value;
    };
    static void connect(Override *own);
    static void evaluateFor(const std::shared_ptr<FDesign> &design);
    void touch() const;
    void valuesChanged() const;
    void valueChanged(const std::shared_ptr<FParameter> &parameter, const char *text);
    std::vector<Override> mValues;
    std::unordered_map<const FObject *, size_t> mPlaces; // in mValues, by parameter
};
#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef FENTRY_H
#define FENTRY_H
#include "fbasictype.h"
#include "fcmd.h"

class FDefinitionBase;
class FConfiguration;
class FEntry;

/// What entry definitions and entries share: a name and a place in a tree of groups.
class FEntryBase : public FObject
{
    F_CLASS(FEntryBase, FObject)
public:
    explicit FEntryBase(std::string name = std::string())
        : mName(std::move(name))
    {
    }
    virtual std::string getName() const { return mName; }
    /// Names of the groups and the own one, joined by "|".
    std::string getFullName() const;
    const std::vector<FExpr<FEntryBase, true>> &getChildren() const { return mChildren; }
    /// Takes \p entry out of the subtree below; false if it isn't there.
    bool removeFromSubtree(const FExprBase &entry);
    std::shared_ptr<FEntryBase> child(const std::string &name) const;
    void addChild(const std::shared_ptr<FEntryBase> &entry);
    std::shared_ptr<FEntryBase> getParent() const { return mParent.lock(); }
    std::shared_ptr<FObject> treeParent() const override { return getParent(); }
    void visitState(FStateVisitor &state) override { state(mName)(mChildren); }
    std::string scriptText() const override { return FLiteral::quoted(getFullName()); }

protected:
    std::string mName;
    std::vector<FExpr<FEntryBase, true>> mChildren;
    std::weak_ptr<FEntryBase> mParent;
};

/// The definition of an entry: name, default value and with it the type. A group has no value.
class FEntryDef : public FEntryBase
{
    F_CLASS(FEntryDef, FEntryBase)
public:
    explicit FEntryDef(std::string name = std::string())
        : FEntryBase(std::move(name))
    {
    }
    /// A new entry definition at the root of \p definition, under a corrected, unique name.
    static std::shared_ptr<FEntryDef> create(const std::string &name,
                                             const std::shared_ptr<FDefinitionBase> &definition,
                                             int minimum, int maximum, bool hidden, bool isExpr,
                                             const std::string &docu, const FExprBase &value);
    /// The same as child of a group.
    static std::shared_ptr<FEntryDef> create(const std::string &name,
                                             const std::shared_ptr<FEntryDef> &parent,
                                             const std::shared_ptr<FDefinitionBase> &definition,
                                             const FExprBase &value);
    /// Letters, digits, "_" and "."; anything else becomes "_".
    static std::string correctName(const std::string &name);

    /// Renames: corrected and unique among the siblings; entries of configurations and the tags in
    /// the templates follow.
    void setName(const std::string &name);
    bool isGroup() const { return !mDefault; }
    /// The default as it was given; null for a group.
    const FExprBase &getDefaultExpr() const { return mDefault; }
    FExpr<FBasicType> getDefaultValue() const;
    void setDefaultValue(const FExprBase &value) { mDefault = value; }
    bool isHidden() const { return mHidden; }
    bool isExpr() const { return mIsExpr; }
    void setFlags(bool hidden, bool isExpr)
    {
        mHidden = hidden;
        mIsExpr = isExpr;
    }
    int minimum() const { return mMinimum; }
    int maximum() const { return mMaximum; }
    void setCounts(int minimum, int maximum)
    {
        mMinimum = minimum;
        mMaximum = maximum;
    }
    /// Prototype of the default's class; null for a group.
    std::shared_ptr<FObject> getType() const;
    std::shared_ptr<FDefinitionBase> getDefinition() const { return mDefinition.lock(); }
    void setDefinition(const std::shared_ptr<FDefinitionBase> &definition);
    std::shared_ptr<FObject> treeParent() const override;
    void visitState(FStateVisitor &state) override;
    void stateRestored() override;

private:
    FExprBase mDefault;
    bool mHidden = false, mIsExpr = true;
    int mMinimum = 1, mMaximum = 1;
    std::weak_ptr<FDefinitionBase> mDefinition;
};

/// The value that a configuration holds for an entry definition. The value stays an expression.
class FEntry : public FEntryBase
{
    F_CLASS(FEntry, FEntryBase)
public:
    explicit FEntry(std::string name = std::string())
        : FEntryBase(std::move(name))
    {
    }
    /// The entry for \p definition; the existing one if the configuration has it already.
    static std::shared_ptr<FEntry> create(const std::shared_ptr<FEntryDef> &definition,
                                          const std::shared_ptr<FConfiguration> &configuration,
                                          const std::shared_ptr<FEntry> &parent);

    const FExprBase &getValue() const { return mValue; }
    /// Fails, and changes nothing, if the value is of another kind than the definition's.
    FStatus setValue(const FExprBase &value);
    const FExpr<FEntryDef> &getEntryDefinition() const { return mEntryDef; }
    void setEntryDefinition(const FExpr<FEntryDef> &definition) { mEntryDef = definition; }
    bool isGroup() const;
    void rename(const std::string &name) { mName = name; }
    /// Links the children of a group to entry definitions of the same names.
    void reassignEntryDefs();
    /// True if the value, or the default of its definition, is of the class of \p type.
    bool hasValueType(const std::shared_ptr<FObject> &type) const;

    void constructFObject() override;
    std::shared_ptr<FObject> treeParent() const override;
    bool standsFor(std::shared_ptr<FObject> *value) const override
    {
        *value = mValue.getPtr();
        return true;
    }
    const FClassInfo &valueClass() const override;
    void visitState(FStateVisitor &state) override;

    /// Commands of an entry; the first sets its value.
    static std::vector<std::shared_ptr<FCmd>> mCmds;
    static void initCmds();

private:
    FExprBase mValue;
    FExpr<FEntryDef> mEntryDef;
};
#endif

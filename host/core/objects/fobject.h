// SPDX-License-Identifier: Apache-2.0
#ifndef FOBJECT_H
#define FOBJECT_H
#include "fedges.h"
#include "ftext.h"

#include <any>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

class FCmd;
class FManaged;
class FObject;
class FObjectList;
class FExprBase;

/// What the registry knows of a class without an object of it.
struct FClassInfo
{
    const char *name;
    const FClassInfo *base; ///< null for the root
    std::shared_ptr<FObject> (*prototype)();
    void (*initCmds)(); ///< registers the commands of the class; that of the base if it has none
    bool *cmdsInitialized;
    bool *typeDocuInitialized;

    bool isA(const FClassInfo &other) const;
};

/// Bytes that a captured field keeps beside itself.
template <class T>
size_t fStateBytes(const T &)
{
    return sizeof(T);
}
inline size_t fStateBytes(const std::string &text) { return text.size(); }
inline size_t fStateBytes(const QString &text) { return size_t(text.size()) * sizeof(QChar); }
inline size_t fStateBytes(const std::shared_ptr<const std::string> &text)
{
    return text ? text->size() : 0;
}
template <class T>
size_t fStateBytes(const std::vector<T> &list)
{
    size_t bytes = 0;
    for (const T &element : list)
        bytes += fStateBytes(element);
    return bytes;
}

/// Captures or puts back the values of an object's fields, in the order in which they are named.
class FStateVisitor
{
public:
    struct Field
    {
        std::any value;
        size_t bytes; ///< that it keeps, shared or not
    };
    struct Values
    {
        std::vector<Field> fields;
    };
    static FStateVisitor capture(Values *into) { return {into, nullptr}; }
    static FStateVisitor restore(const Values *from) { return {nullptr, from}; }

    bool isCapture() const { return mInto != nullptr; }
    template <class T>
    FStateVisitor &operator()(T &field)
    {
        if (mInto)
            mInto->fields.push_back({field, fStateBytes(field)});
        else
            field = std::any_cast<const T &>(mFrom->fields[mNext++].value);
        return *this;
    }

private:
    FStateVisitor(Values *into, const Values *from)
        : mInto(into)
        , mFrom(from)
    {
    }
    Values *mInto;
    const Values *mFrom;
    size_t mNext = 0;
};

/// Areas of an object's documentation; a set of bits.
enum class DocuArea : unsigned { Description = 1, Example = 2, Help = 4, ReturnValue = 8 };

/// Appends an initialiser of a class to the list of its kind. Made with new in static
/// initialisers, so the lists are function-local.
struct FInitFObjectPrototype
{
    using Function = const FClassInfo &(*)();
    static std::vector<Function> &initFunctions();
    explicit FInitFObjectPrototype(Function function) { initFunctions().push_back(function); }
};

/// Gives a class its statics and its mechanical accessors. The prototype is made by the
/// constructor without arguments; F_CLASS_IMPL stands in the source.
#define F_CLASS(C, B)                                                                              \
public:                                                                                            \
    using Base = B;                                                                                \
    static std::shared_ptr<C> mpNull;                                                              \
    static unsigned mSystemFlag;                                                                   \
    static bool mCmdsInitialized;                                                                  \
    static bool mTypeDocuInitialized;                                                              \
    static const FInitFObjectPrototype *mp##C##Initializer;                                        \
    static const FClassInfo &staticClass();                                                        \
    static const char *className() { return staticClass().name; }                                  \
    static std::shared_ptr<C> initPrototype();                                                     \
    const FClassInfo &classInfo() const override { return staticClass(); }                         \
    void setSystemFlag(unsigned flag) override { mSystemFlag = flag; }                             \
    unsigned getSystemFlag() const override { return mSystemFlag; }                                \
                                                                                                   \
private:

#define F_CLASS_IMPL(C)                                                                            \
    std::shared_ptr<C> C::mpNull;                                                                  \
    unsigned C::mSystemFlag = 0;                                                                   \
    bool C::mCmdsInitialized = false;                                                              \
    bool C::mTypeDocuInitialized = false;                                                          \
    const FInitFObjectPrototype *C::mp##C##Initializer =                                           \
        new FInitFObjectPrototype(&C::staticClass);                                                \
    const FClassInfo &C::staticClass()                                                             \
    {                                                                                              \
        static const FClassInfo info{#C,                                                           \
                                     &C::Base::staticClass(),                                      \
                                     [] { return std::shared_ptr<FObject>(C::initPrototype()); },                                                       \
                                     &C::initCmds,                                                 \
                                     &C::mCmdsInitialized,                                         \
                                     &C::mTypeDocuInitialized};                                    \
        return info;                                                                               \
    }                                                                                              \
    std::shared_ptr<C> C::initPrototype()                                                          \
    {                                                                                              \
        return fInitPrototype<C>([] { return new C(); });                                          \
    }

/// Root of all model objects. Held by std::shared_ptr only; usable from its prototype on.
///
/// The model lives on one thread. Each class has one prototype, which is also the token of the
/// type.
class FObject : public std::enable_shared_from_this<FObject>
{
public:
    static std::shared_ptr<FObject> mpNull;
    static unsigned mSystemFlag;
    static const FClassInfo &staticClass();
    static const char *className() { return staticClass().name; }
    /// True while a prototype is built: constructors then create nothing.
    static bool mInitPrototype;

    FObject() = default;
    FObject(const FObject &other);
    FObject &operator=(const FObject &) = delete;
    virtual ~FObject();

    // Life
    virtual void constructFObject() {}
    /// Takes along what goes with the object when it is destroyed.
    virtual void destructFObject() {}
    /// The object leaves the project, destroyed or undone: ends what it holds beside its fields.
    /// Nothing in here is recorded; constructFObject makes it anew when the object is revived.
    virtual void retire() {}
    virtual std::shared_ptr<FObject> clone() const { return nullptr; }
    /// Names the fields that undo puts back; overrides call the base first.
    virtual void visitState(FStateVisitor &state) { state(mDocu); }
    /// Adds objects that the saved form names without depending on them: they are saved first.
    virtual void collectNamed(std::vector<const FObject *> *) const {}
    /// The object whose saved form tells of this one: a change of this one is a change of it. Null
    /// if there is none.
    virtual std::shared_ptr<FObject> toldBy() const { return treeParent(); }
    /// Called after undo or redo has put the fields back.
    virtual void stateRestored() {}

    // Type
    virtual const FClassInfo &classInfo() const { return staticClass(); }
    std::string getClass() const { return classInfo().name; }
    std::shared_ptr<FObject> getPrototype() const { return classInfo().prototype(); }
    std::shared_ptr<FObject> getSuperClass() const;
    bool isNull() const;
    bool isTypeOf(const FObject *other) const;
    bool isTypeOf(const std::shared_ptr<const FObject> &other) const
    {
        return isTypeOf(other.get());
    }
    bool isSuperClassOf(const FObject *other) const;
    template <class T>
    std::shared_ptr<T> castTo()
    {
        return std::dynamic_pointer_cast<T>(shared_from_this());
    }
    template <class T>
    std::shared_ptr<T> shared_from_base()
    {
        return std::static_pointer_cast<T>(shared_from_this());
    }
    template <class T>
    std::shared_ptr<const T> shared_from_base() const
    {
        return std::static_pointer_cast<const T>(shared_from_this());
    }
    /// The object as a command, null if it is none: an expression is a tree of commands.
    virtual const FCmd *isFCmd() const { return nullptr; }
    /// The object that stands for this one in a calculation: the value of a parameter or an entry,
    /// however many refer to each other on the way.
    std::shared_ptr<FObject> valueObject() const;
    /// One step of that: false for an object that stands for itself.
    virtual bool standsFor(std::shared_ptr<FObject> *) const { return false; }
    /// Class of what valueObject gives, as far as it is known without evaluating.
    virtual const FClassInfo &valueClass() const { return classInfo(); }
    /// How a script refers to the object or writes its value.
    virtual std::string scriptText() const { return std::string(); }
    virtual void setSystemFlag(unsigned) {}
    virtual unsigned getSystemFlag() const { return mSystemFlag; }

    // Prototypes and classes
    static std::shared_ptr<FObject> getPrototype(const std::string &className);
    static void addPrototype(const std::shared_ptr<FObject> &prototype);
    /// Builds all prototypes, then registers all commands, then all documentation. Idempotent.
    static void initPrototypes();
    static const std::vector<const FClassInfo *> &classes();

    // Staleness
    /// Marks the object and everything that depends on it stale; each once per call.
    void setOutOfDate(unsigned long = 0);
    /// Called once whenever the object turns stale.
    virtual void doSetOutOfDate() const {}
    /// Called for each object that staleness passes through, stale before or not.
    virtual void stalenessPassed() const {}
    /// Brings stale suppliers up to date and then the object itself. Never starts a run.
    void update(std::unique_lock<std::mutex> *) const;
    virtual void doUpdate() const {}
    virtual bool needsUpdateInGuiThread() const { return true; }
    /// False for objects that only an explicit order brings up to date (external programs).
    virtual bool updatesOnDemand() const { return true; }
    bool isUpToDate() const { return !mStale; }
    void setUpToDate(bool upToDate = true) const;
    void setImediateUpdate(bool on, bool now = false);
    void blockImmediateUpdate(bool block) { setImediateUpdate(!block); }
    bool isImmediateUpdate() const { return mImmediateUpdate; }

    // Dependency graph
    void addClient(FObject *client);
    void removeClient(FObject *client);
    /// True if \p client depends on this object; with \p indirect through others as well.
    bool hasClient(const std::shared_ptr<FObject> &client, bool indirect) const;
    /// Everything that depends on this object, directly or through others.
    void getClients(std::set<std::shared_ptr<FObject>> &found) const;
    void getSuppliers(std::set<std::shared_ptr<FObject>> &found) const;
    const FEdges &clients() const { return mClients; }
    const FEdges &suppliers() const { return mSuppliers; }

    // Children
    /// Until the matching stop, new objects become children of this one. Nests; per thread.
    void startParentReg();
    void stopParentReg();
    template <class T>
    std::vector<std::shared_ptr<T>> getChildren() const
    {
        std::vector<std::shared_ptr<T>> found;
        for (const std::shared_ptr<FObject> &child : mChildren)
            if (auto typed = std::dynamic_pointer_cast<T>(child))
                found.push_back(std::move(typed));
        return found;
    }
    void adoptChild(const std::shared_ptr<FObject> &child);
    void clearChildren();
    void destroyChildrenOfThis();
    /// The object that adopted this one, null if none did.
    std::shared_ptr<FObject> parent() const { return mParent.lock(); }
    /// The object below which a tree shows this one, null for the top.
    virtual std::shared_ptr<FObject> treeParent() const { return parent(); }

    // Validity and documentation
    virtual bool isValid() const { return mErrors.empty(); }
    void addLastErrorString(const std::string &text) { mErrors.push_back(text); }
    const std::vector<std::string> &lastErrors() const { return mErrors; }
    void addDocu(const std::string &text, unsigned areas);
    void removeDocu(unsigned areas);
    const std::map<unsigned, std::vector<std::string>> &getDocu() const { return mDocu; }
    std::string getDocuString(int area) const;
    void addTypeDocu(const std::string &text, unsigned areas) const;

    /// An object that was destroyed tests false in every handle until undo revives it.
    bool isDestroyed() const { return mDestroyed; }
    void setDestroyed(bool destroyed) { mDestroyed = destroyed; }

    // What history knows of the object
    const std::shared_ptr<const FStateVisitor::Values> &recordedState() const { return mRecorded; }
    void setRecordedState(std::shared_ptr<const FStateVisitor::Values> values)
    {
        mRecorded = std::move(values);
        mTouched = false;
    }
    /// Marks the object as part of the open step and tells whether it was.
    bool markTouched(bool touched) { return std::exchange(mTouched, touched); }

    static void initCmds();

private:
    friend class FUpdates;
    std::shared_ptr<const FStateVisitor::Values> mRecorded;
    FEdges mClients;
    FEdges mSuppliers;
    std::vector<std::shared_ptr<FObject>> mChildren;
    std::weak_ptr<FObject> mParent;
    std::vector<std::string> mErrors;
    std::map<unsigned, std::vector<std::string>> mDocu;
    mutable unsigned long mVisit = 0; // number of the last graph walk that came by
    mutable bool mStale = true;
    mutable bool mUpdating = false;
    mutable size_t mPending = 0; // its place among the objects that wait for a flush, from 1
    bool mImmediateUpdate = true;
    bool mDestroyed = false;
    bool mTouched = false;
};

/// The object that collects new objects on this thread, null outside startParentReg.
FObject *currentParent();
bool isParentRegEnabled();

template <class T, class... A>
std::shared_ptr<T> f_make_shared(A &&...arguments)
{
    auto object = std::make_shared<T>(std::forward<A>(arguments)...);
    object->constructFObject();
    return object;
}

void fPrototypeBuilt(const std::shared_ptr<FObject> &prototype);
bool fIsVerbose();
void fPrintPrototype(const char *name);

template <class C, class Make>
std::shared_ptr<C> fInitPrototype(Make make)
{
    if (C::mpNull)
        return C::mpNull;
    if (fIsVerbose())
        fPrintPrototype(C::staticClass().name);
    const bool outer = FObject::mInitPrototype;
    FObject::mInitPrototype = true;
    C::mSystemFlag = 1;
    C::mpNull = std::shared_ptr<C>(make(), [](C *object) { delete object; });
    C::mpNull->constructFObject();
    FObject::addPrototype(C::mpNull);
    FObject::mInitPrototype = outer;
    return C::mpNull;
}

/// The object as type \p T or null.
template <class T>
std::shared_ptr<T> f_cast(const std::shared_ptr<FObject> &object)
{
    return std::dynamic_pointer_cast<T>(object);
}
#endif

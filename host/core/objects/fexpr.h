// SPDX-License-Identifier: Apache-2.0
#ifndef FEXPR_H
#define FEXPR_H
#include "fobject.h"

#include <functional>
#include <memory>
#include <type_traits>

/// A value-like reference to an object or to an expression that is not evaluated yet.
///
/// Copies start without clients; moving carries them. A handle on a destroyed object tests false.
class FExprBase
{
public:
    FExprBase() = default;
    FExprBase(std::nullptr_t) {}
    explicit FExprBase(std::shared_ptr<FObject> object)
        : mObject(std::move(object))
    {
    }
    FExprBase(const FExprBase &other)
        : mObject(other.mObject)
    {
    }
    FExprBase(FExprBase &&other) noexcept;
    FExprBase &operator=(const FExprBase &other);
    FExprBase &operator=(FExprBase &&other) noexcept;
    ~FExprBase();

    explicit operator bool() const { return mObject && !mObject->isDestroyed(); }
    bool operator==(const FExprBase &other) const { return mObject == other.mObject; }
    bool operator!=(const FExprBase &other) const { return mObject != other.mObject; }

    /// Binds the handle; its clients go stale and follow it to the new target.
    void setExpr(const std::shared_ptr<FObject> &object, bool = true, bool = true, bool = true);
    /// What is bound: the object, or the expression as a tree of commands.
    std::shared_ptr<FObject> getExpr() const { return mObject; }
    /// Evaluates. Null if nothing is bound or the expression gives nothing.
    std::shared_ptr<FObject> getPtr() const;
    std::shared_ptr<FObject> getPointer() const { return getPtr(); }
    template <class T>
    std::shared_ptr<T> ptr() const
    {
        return std::dynamic_pointer_cast<T>(getPtr());
    }
    /// The value behind the object: parameters and entries give theirs.
    std::shared_ptr<FObject> getValueObject() const;

    void addRef() const {}
    void removeRef() const {}
    /// Makes \p client depend on what the handle refers to, now and after it is bound anew.
    void registerClient(const std::shared_ptr<FObject> &client, bool);
    void deregisterClient(const std::shared_ptr<FObject> &client);

    /// Parses \p text in the working scope; null if that fails. Nothing is evaluated.
    static FExprBase resolve(const std::string &text);
    /// Script text with the present names of the objects; "nullptr" without an object.
    std::string toString(const FExprBase &scope = FExprBase()) const;
    std::string toPlainString(const FExprBase &scope = FExprBase()) const;
    /// Prototype of the value's class; null without an object.
    std::shared_ptr<FObject> getType() const;
    const FClassInfo *valueClass() const;
    /// False while evaluating would read results of a computation that is out of date.
    bool canSafelyBeUpdated(bool) const;
    bool isEvaluated() const;
    bool isValid() const { return bool(*this); }
    void forceReEvaluate() const;
    void fromString(const std::string &text) { *this = resolve(text); }
    bool isExpression() const { return mObject && mObject->isFCmd(); }

private:
    void bind(std::shared_ptr<FObject> object);
    void release();

    std::shared_ptr<FObject> mObject;
    using Clients = std::vector<std::weak_ptr<FObject>>;
    std::unique_ptr<Clients> mClients;
};

/// A handle on objects of type \p T; \p InContainer marks the form stored in containers.
template <class T, bool InContainer = false>
class FExpr : public FExprBase
{
public:
    FExpr() = default;
    FExpr(std::nullptr_t) {}
    template <class U, class = std::enable_if_t<std::is_base_of_v<T, U>>>
    FExpr(const std::shared_ptr<U> &object)
        : FExprBase(std::shared_ptr<FObject>(object))
    {
    }
    template <class U, class = std::enable_if_t<std::is_base_of_v<T, U>>>
    FExpr(std::shared_ptr<U> &&object)
        : FExprBase(std::shared_ptr<FObject>(std::move(object)))
    {
    }
    template <class U, bool B, class = std::enable_if_t<std::is_base_of_v<T, U>>>
    FExpr(const FExpr<U, B> &other)
        : FExprBase(other)
    {
    }
    template <class U, bool B, class = std::enable_if_t<std::is_base_of_v<T, U>>>
    FExpr(FExpr<U, B> &&other)
        : FExprBase(std::move(other))
    {
    }
    /// Takes any handle; what doesn't evaluate to a \p T shows as null.
    explicit FExpr(const FExprBase &other)
        : FExprBase(other)
    {
    }

    std::shared_ptr<T> getPtr() const { return ptr<T>(); }
    std::shared_ptr<T> getPointer() const { return ptr<T>(); }
    std::shared_ptr<T> operator->() const { return ptr<T>(); }
};

namespace std {
template <>
struct hash<FExprBase>
{
    size_t operator()(const FExprBase &handle) const
    {
        return hash<const void *>()(handle.getExpr().get());
    }
};
template <class T, bool B>
struct hash<FExpr<T, B>> : hash<FExprBase>
{
};
} // namespace std
#endif

#pragma once

#include <QorCore/Alert.h>

#include <concepts>
#include <memory>
#include <type_traits>
#include <utility>

namespace Qor::Core {

/// Something that can be called with one argument, kept by those who do not know what it is. Derive from it, or have
/// one made by `MakeCallback`.
///
/// Thread rule: that of what is called.
template <class R, class A>
class CallbackRetArg {
public:
    virtual ~CallbackRetArg() = default;

    virtual R Execute(A argument) = 0;

    /// Whether both call the same: an object is equal to itself, and to one of the same class with the same target and
    /// the same method where a class can tell.
    virtual bool IsEqual(const CallbackRetArg& other) const { return this == &other; }

    /// False when the target is known to be gone; `Execute` would then raise `NullPointerError`.
    virtual bool IsCallable() const { return true; }
};

/// A callback without a result.
template <class A>
using CallbackArg = CallbackRetArg<void, A>;

/// Calls a function. Equal when the function is the same.
template <class R, class A>
class FunctionCallback final : public CallbackRetArg<R, A> {
public:
    explicit FunctionCallback(R (*function)(A)) : m_function(function) {}

    R Execute(A argument) override { return m_function(std::forward<A>(argument)); }
    bool IsEqual(const CallbackRetArg<R, A>& other) const override {
        const auto* const same = dynamic_cast<const FunctionCallback*>(&other);
        return same != nullptr && same->m_function == m_function;
    }

private:
    R (*m_function)(A);
};

/// Calls a method of an object that must outlive it. Equal when object and method are the same.
template <class R, class A, class T, class Method>
class MethodCallback final : public CallbackRetArg<R, A> {
public:
    MethodCallback(T& target, Method method) : m_target(&target), m_method(method) {}

    R Execute(A argument) override { return (m_target->*m_method)(std::forward<A>(argument)); }
    bool IsEqual(const CallbackRetArg<R, A>& other) const override {
        const auto* const same = dynamic_cast<const MethodCallback*>(&other);
        return same != nullptr && same->m_target == m_target && same->m_method == m_method;
    }

private:
    T* m_target;
    Method m_method;
};

/// Calls a method of an object as long as somebody else keeps that alive. Equal when object and method are the same,
/// also when the object is gone.
template <class R, class A, class T, class Method>
class WeakMethodCallback final : public CallbackRetArg<R, A> {
public:
    WeakMethodCallback(std::weak_ptr<T> target, Method method) : m_target(std::move(target)), m_method(method) {}

    R Execute(A argument) override {
        const std::shared_ptr<T> target = m_target.lock();
        if (!target)
            Error::RaiseError(NullPointerError("The object whose method a callback was to call is gone"),
                              QOR_CODE_CONTEXT("Callback"), "Qor.Core.Callback");
        return ((*target).*m_method)(std::forward<A>(argument));
    }
    bool IsEqual(const CallbackRetArg<R, A>& other) const override {
        const auto* const same = dynamic_cast<const WeakMethodCallback*>(&other);
        return same != nullptr && !same->m_target.owner_before(m_target) && !m_target.owner_before(same->m_target) &&
               same->m_method == m_method;
    }
    bool IsCallable() const override { return !m_target.expired(); }

private:
    std::weak_ptr<T> m_target;
    Method m_method;
};

/// Calls a function object of its own. Equal to itself only.
template <class R, class A, class F>
class FunctorCallback final : public CallbackRetArg<R, A> {
public:
    explicit FunctorCallback(F functor) : m_functor(std::move(functor)) {}

    R Execute(A argument) override { return static_cast<R>(m_functor(std::forward<A>(argument))); }

private:
    F m_functor;
};

/// A callback that calls a function.
template <class R, class A>
std::shared_ptr<CallbackRetArg<R, A>> MakeCallback(R (*function)(A)) {
    return std::make_shared<FunctionCallback<R, A>>(function);
}

/// A callback that calls a method of `target`, which must outlive it.
template <class T, class C, class R, class A>
requires std::derived_from<T, C> std::shared_ptr<CallbackRetArg<R, A>> MakeCallback(T& target, R (C::*method)(A)) {
    return std::make_shared<MethodCallback<R, A, C, R (C::*)(A)>>(target, method);
}
template <class T, class C, class R, class A>
requires std::derived_from<T, C> std::shared_ptr<CallbackRetArg<R, A>> MakeCallback(const T& target,
                                                                                    R (C::*method)(A) const) {
    return std::make_shared<MethodCallback<R, A, const C, R (C::*)(A) const>>(target, method);
}

/// A callback that calls a method of an object and does not keep it alive.
template <class T, class C, class R, class A>
requires std::derived_from<T, C> std::shared_ptr<CallbackRetArg<R, A>> MakeCallback(const std::weak_ptr<T>& target,
                                                                                    R (C::*method)(A)) {
    return std::make_shared<WeakMethodCallback<R, A, C, R (C::*)(A)>>(target, method);
}

/// A callback that calls a lambda or another function object: `MakeCallback<R, A>(...)`.
template <class R, class A, class F>
requires std::is_invocable_r_v<R, F&, A> &&
    (!std::is_pointer_v<F>)std::shared_ptr<CallbackRetArg<R, A>> MakeCallback(F functor) {
    return std::make_shared<FunctorCallback<R, A, F>>(std::move(functor));
}

} // namespace Qor::Core

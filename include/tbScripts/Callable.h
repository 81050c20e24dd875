#pragma once

#include "tbScripts/Api.h"
#include "tbScripts/MemberCallable.h"

#include <cstddef>
#include <new>
#include <type_traits>

namespace tbScripts
{

/// Declared for function types only.
template <typename Signature>
class Callable;

/// What all callables have in common, whatever they call: the base of `Callable`.
///
/// The library compiles copies and destruction. A host binds hundreds of callables, each once: what
/// is inline here costs a host more time to compile than it ever saves.
///
/// Why: docs/decisions/0033-callables-of-our-own.md
class TBSCRIPTS_API CallableStorage
{
public:
    /// Returns whether there is something to call.
    explicit operator bool() const noexcept { return m_code != nullptr; }

private:
    template <typename Signature>
    friend class Callable; // the only class that derives from this one

    // A function whose type only the derived class knows.
    using Code = void (*)();

    // Returns a new copy of `original`, or destroys `doomed` if `original` is null.
    using Manager = void* (*)(const void* original, void* doomed);

    // Holds what is copied as bytes and fits, and the address of everything else.
    struct Room
    {
        alignas(void*) unsigned char bytes[2 * sizeof(void*)];
    };

    CallableStorage() noexcept
        : m_room()
        , m_code(nullptr)
        , m_manager(nullptr)
    {
    }

    // The room is to be filled.
    explicit CallableStorage(Code code) noexcept;

    CallableStorage(const CallableStorage& other);
    CallableStorage(CallableStorage&& other) noexcept;
    CallableStorage& operator=(const CallableStorage&) = delete;
    ~CallableStorage();

    void _swap(CallableStorage& other) noexcept;

    // Stores the address of `target`, which from here on belongs to this object.
    void _own(void* target, Manager manager) noexcept;

    [[noreturn]] static void _throwEmpty();

    Room m_room;
    Code m_code;       // null if there is nothing to call
    Manager m_manager; // null if the room holds everything
};

/// Calls whatever a host binds: a lambda, a function, an object with a call operator, a pointer to
/// a member, a `std::function`.
///
/// It holds a copy of its target, and copying the callable copies the target. A null pointer and an
/// empty `std::function` create an empty callable. Pointers, and targets of at most two words that
/// are copied as bytes, need no memory of their own.
template <typename R, typename... A>
class Callable<R(A...)> : public CallableStorage
{
    // What follows is instantiated for each lambda of a host, so it asks the compiler directly
    // where the standard library would instantiate a template.

    template <typename T>
    static constexpr bool FITS = __is_trivially_copyable(T) && sizeof(T) <= sizeof(Room) &&
                                 alignof(T) <= alignof(Room);

    // References stay references, numbers and pointers stay values; objects are not copied twice.
    template <typename T>
    using Passed = std::conditional_t<std::is_scalar_v<T>, T, T&&>;

    using Call = R (*)(void* room, Passed<A>... arguments);

    template <typename T>
    static T&& _make() noexcept;

    template <typename Result, typename = void>
    struct Check
    {
        static void accept(Result) noexcept;

        template <typename Target>
        using IfFitting = decltype(accept(_make<Target&>()(_make<A>()...)));
    };

    template <typename Unused>
    struct Check<void, Unused>
    {
        template <typename Target>
        using IfFitting = decltype(static_cast<void>(_make<Target&>()(_make<A>()...)));
    };

    // Admits what can be called with `A...` and returns what converts to `R`.
    template <typename Target>
    using IfFitting = typename Check<R>::template IfFitting<Target>;

public:
    using result_type = R; ///< what a call returns

    ///@{
    /// Creates an empty callable.
    Callable() noexcept = default;

    Callable(std::nullptr_t) noexcept {}

    ///@}

    /// Holds `target`.
    template <typename Target, typename = IfFitting<Target>>
    Callable(Target target)
        : CallableStorage(reinterpret_cast<Code>(&_call<Target>))
    {
        // As `_hold`, written out: this is the one for lambdas, and compilers take 4 % less time
        // for a binding without the functions in between.
        if constexpr (!FITS<Target>)
            _own(new Target(static_cast<Target&&>(target)), &_manage<Target>);
        else if constexpr (!__is_empty(Target))
            ::new (static_cast<void*>(&m_room)) Target(target);
    }

    ///@{
    /// Holds `target`; a null pointer, and a `std::function` without target, hold nothing.
    template <typename Target, typename = IfFitting<Target*>>
    Callable(Target* target)
    {
        if (target)
            _hold(target);
    }

    template <
        typename T,
        typename Class,
        typename = std::enable_if_t<std::is_invocable_r_v<R, T Class::*, A...>>>
    Callable(T Class::*target)
    {
        if (target)
        {
            MemberCallable<T, Class> call{target};
            _hold(call);
        }
    }

    template <
        template <typename>
        class Wrapper,
        typename WrappedR,
        typename... WrappedA,
        typename = IfFitting<Wrapper<WrappedR(WrappedA...)>>,
        typename = decltype(static_cast<bool>(_make<Wrapper<WrappedR(WrappedA...)>&>()))>
    Callable(Wrapper<WrappedR(WrappedA...)> target)
    {
        if (static_cast<bool>(target))
            _hold(target);
    }

    ///@}

    /// Copies the target of `other`.
    Callable(const Callable& other) = default;

    /// Takes the target of `other`, which is empty then.
    Callable(Callable&& other) noexcept = default;

    /// Takes the target of `other`. The old target is destroyed last: its destructor may run code
    /// that meets the new one.
    Callable& operator=(Callable other) noexcept
    {
        _swap(other);
        return *this;
    }

    ~Callable() = default;

    /// Exchanges the targets.
    void swap(Callable& other) noexcept { _swap(other); }

    ///@{
    /// Returns whether `callable` is empty, or is not.
    friend bool operator==(const Callable& callable, std::nullptr_t) noexcept { return !callable; }

    friend bool operator==(std::nullptr_t, const Callable& callable) noexcept { return !callable; }

    friend bool operator!=(const Callable& callable, std::nullptr_t) noexcept
    {
        return static_cast<bool>(callable);
    }

    friend bool operator!=(std::nullptr_t, const Callable& callable) noexcept
    {
        return static_cast<bool>(callable);
    }

    ///@}

    /// Calls the target.
    ///
    /// On failure: an empty callable throws `std::bad_function_call`.
    R operator()(A... arguments) const
    {
        if (!m_code)
            _throwEmpty();
        void* const room = const_cast<Room*>(&m_room); // a target may change itself
        return reinterpret_cast<Call>(m_code)(room, static_cast<Passed<A>>(arguments)...);
    }

private:
    template <typename Target>
    void _hold(Target& target)
    {
        if constexpr (!FITS<Target>)
            _own(new Target(static_cast<Target&&>(target)), &_manage<Target>);
        else
            ::new (static_cast<void*>(&m_room)) Target(target);
        m_code = reinterpret_cast<Code>(&_call<Target>);
    }

    template <typename Target>
    static R _call(void* room, Passed<A>... arguments)
    {
        auto& target = *static_cast<Target*>(FITS<Target> ? room : *static_cast<void**>(room));
        if constexpr (std::is_void_v<R>)
            static_cast<void>(target(static_cast<A&&>(arguments)...));
        else
            return target(static_cast<A&&>(arguments)...);
    }

    template <typename Target>
    static void* _manage(const void* original, void* doomed)
    {
        static_assert(std::is_copy_constructible_v<Target>, "copies of a callable copy its target");
        if (original)
            return new Target(*static_cast<const Target*>(original));
        delete static_cast<Target*>(doomed);
        return nullptr;
    }
};
} // namespace tbScripts

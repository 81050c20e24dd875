#pragma once

// One function for each binding, which reads the arguments, calls the host and pushes the results,
// and a constant description beside it. What bindings can share is in the library or depends on
// types only: what compilers spend on a host's bindings is the code that they generate.

#include "tbScripts/typed/Checks.h"

namespace tbScripts::typed
{

/// A callable with its description, on its way into the library, which destroys it.
struct BoundCallable
{
    const Signature* signature = nullptr;
    void* context = nullptr;
    void (*destroy)(void* context) = nullptr;
};

/// The same while it is the host's: destroyed unless the library takes it over.
class OwnedCallable
{
public:
    OwnedCallable(const BoundCallable& bound)
        : m_bound(bound)
    {
    }

    OwnedCallable(const OwnedCallable&) = delete;
    OwnedCallable& operator=(const OwnedCallable&) = delete;

    ~OwnedCallable()
    {
        if (m_bound.destroy)
            m_bound.destroy(m_bound.context);
    }

    BoundCallable release()
    {
        const BoundCallable released = m_bound;
        m_bound = BoundCallable();
        return released;
    }

private:
    BoundCallable m_bound;
};

template <typename R, typename... A>
inline constexpr Parameter PARAMETERS[] = {ArgumentOf<R>::PARAMETER, ArgumentOf<A>::PARAMETER...};

/// Whether an argument leaves the script with its object: all have to fit before it does.
template <typename A>
inline constexpr bool TAKES_OWNERSHIP = isUniquePointer<BareOf<A>>(0);

/// Objects that a callable returns by reference stay the host's; those of a method are taken to be
/// parts of its instance.
template <typename R, bool IS_METHOD>
struct Result
{
    static int push(Call& call, R value)
    {
        return ArgumentOf<R>::push(call, static_cast<R&&>(value));
    }
};

template <typename R, bool IS_METHOD>
struct Result<R&, IS_METHOD>
{
    static int push(Call& call, R& value)
    {
        using T = BareOf<R>;
        if constexpr (!isObjectClass<T>())
            return Argument<T>::push(call, value);
        else
        {
            if constexpr (IS_METHOD)
                call.services.pushPart(call, const_cast<T*>(&value), TYPE_ID<T>, 1);
            else
                call.services.pushObject(call, const_cast<T*>(&value), TYPE_ID<T>);
            return 1;
        }
    }
};

template <typename R>
struct Result<R*, true>
{
    static int push(Call& call, R* value)
    {
        using T = BareOf<R>;
        if constexpr (!isClass<T>)
            return Argument<R*>::push(call, value);
        else
        {
            call.services.pushPart(call, const_cast<T*>(value), TYPE_ID<T>, 1);
            return 1;
        }
    }
};

// Reading may happen in any order: the library reports the first argument that does not fit,
// whichever is read first.
#define TBSCRIPTS_RUN(IS_METHOD, EXPRESSION)                                                       \
    if constexpr ((TAKES_OWNERSHIP<A> || ...))                                                     \
        call.services.check(call);                                                                 \
    if constexpr (isSame<R, void>)                                                                 \
    {                                                                                              \
        EXPRESSION;                                                                                \
        return 0;                                                                                  \
    }                                                                                              \
    else                                                                                           \
        return Result<R, IS_METHOD>::push(call, EXPRESSION);

template <auto F, typename R, typename I, typename... A>
struct FunctionThunk;

template <auto F, typename R, Size... I, typename... A>
struct FunctionThunk<F, R, Indices<I...>, A...>
{
    static int run([[maybe_unused]] Call& call, void* /*context*/)
    {
        TBSCRIPTS_RUN(false, F(ArgumentOf<A>::read(call, static_cast<int>(I) + 1)...))
    }
};

template <auto F, typename Self, typename R, typename I, typename... A>
struct MethodThunk;

template <auto F, typename Self, typename R, Size... I, typename... A>
struct MethodThunk<F, Self, R, Indices<I...>, A...>
{
    static int run(Call& call, void* /*context*/)
    {
        TBSCRIPTS_RUN(
            true,
            (Argument<Self>::read(call, 1).*
             F)(ArgumentOf<A>::read(call, static_cast<int>(I) + 2)...))
    }
};

template <auto F, typename Self, typename R, typename I, typename... A>
struct MethodOnThunk;

template <auto F, typename Self, typename R, Size... I, typename... A>
struct MethodOnThunk<F, Self, R, Indices<I...>, A...>
{
    static int run([[maybe_unused]] Call& call, void* context)
    {
        TBSCRIPTS_RUN(
            false,
            (static_cast<Self*>(context)->*F)(
                ArgumentOf<A>::read(call, static_cast<int>(I) + 1)...))
    }
};

template <typename C, typename R, typename I, typename... A>
struct CallableThunk;

template <typename C, typename R, Size... I, typename... A>
struct CallableThunk<C, R, Indices<I...>, A...>
{
    static int run([[maybe_unused]] Call& call, void* context)
    {
        TBSCRIPTS_RUN(
            false,
            (*static_cast<C*>(context))(ArgumentOf<A>::read(call, static_cast<int>(I) + 1)...))
    }

    static void destroy(void* context) { delete static_cast<C*>(context); }
};

template <typename T, typename I, typename... A>
struct ConstructorThunk;

template <typename T, Size... I, typename... A>
struct ConstructorThunk<T, Indices<I...>, A...>
{
    static int run(Call& call, void* /*context*/)
    {
        if constexpr ((TAKES_OWNERSHIP<A> || ...))
            call.services.check(call);
        call.services.beginOwned(call, TYPE_ID<T>);
        call.services.endOwned(call, new T(ArgumentOf<A>::read(call, static_cast<int>(I) + 1)...));
        return 1;
    }
};

template <typename C, typename R, typename I, typename D, typename... A>
struct DefaultedThunk; // tbScripts/typed/Defaults.h

/// What the type of a callable says: what it takes and returns, and which thunks serve it.
template <typename T>
struct TypeOfCallable
{
    static constexpr bool IS_KNOWN = false;
    static constexpr bool IS_METHOD = false;
};

template <bool METHOD, bool MAY_THROW, typename R, typename... A>
struct KnownCallable
{
    static_assert((checkResult<R>() && ... && checkParameter<A>()));

    static constexpr bool IS_KNOWN = true;
    static constexpr bool IS_METHOD = METHOD;
    static constexpr bool THROWS = MAY_THROW;
    static constexpr unsigned char COUNT = sizeof...(A);
    static constexpr const Parameter* FUNCTION_PARAMETERS = PARAMETERS<R, A...>;

    template <typename Self>
    static constexpr const Parameter* METHOD_PARAMETERS = PARAMETERS<R, Self, A...>;

    template <auto F>
    using Function = FunctionThunk<F, R, IndicesUpTo<sizeof...(A)>, A...>;
    template <auto F, typename Self>
    using Method = MethodThunk<F, Self, R, IndicesUpTo<sizeof...(A)>, A...>;
    template <auto F, typename Self>
    using MethodOn = MethodOnThunk<F, Self, R, IndicesUpTo<sizeof...(A)>, A...>;
    template <typename C>
    using Lambda = CallableThunk<C, R, IndicesUpTo<sizeof...(A)>, A...>;
    template <template <typename...> class To>
    using Pass = To<R, A...>;
    template <typename C, typename D>
    using Defaulted = DefaultedThunk<C, R, IndicesUpTo<sizeof...(A)>, D, A...>;
};

// NOLINTBEGIN(bugprone-macro-parentheses): qualifiers have none
#define TBSCRIPTS_KNOWN(QUALIFIERS)                                                                \
    template <typename C, typename R, typename... A>                                               \
    struct TypeOfCallable<R (C::*)(A...) QUALIFIERS> : KnownCallable<true, true, R, A...>          \
    {                                                                                              \
    };                                                                                             \
    template <typename C, typename R, typename... A>                                               \
    struct TypeOfCallable<R (C::*)(A...) QUALIFIERS noexcept>                                      \
        : KnownCallable<true, false, R, A...>                                                      \
    {                                                                                              \
    };
TBSCRIPTS_KNOWN()
TBSCRIPTS_KNOWN(const)
TBSCRIPTS_KNOWN(&)
TBSCRIPTS_KNOWN(const&)
#undef TBSCRIPTS_KNOWN

// NOLINTEND(bugprone-macro-parentheses)

template <typename R, typename... A>
struct TypeOfCallable<R (*)(A...)> : KnownCallable<false, true, R, A...>
{
};

template <typename R, typename... A>
struct TypeOfCallable<R (*)(A...) noexcept> : KnownCallable<false, false, R, A...>
{
};

#undef TBSCRIPTS_RUN

/// The description of a function that the compiler knows.
template <auto F>
struct FunctionSignature
{
    using Type = TypeOfCallable<decltype(F)>;
    static_assert(Type::IS_KNOWN, "TobrelScripts: this is no function that can be bound");
    static_assert(
        !Type::IS_METHOD,
        "TobrelScripts: a member function is bound together with an object: "
        "bind<&Type::method>(scope, name, object)");
    static constexpr Signature SIGNATURE{
        &Type::template Function<F>::run, Type::FUNCTION_PARAMETERS, Type::COUNT, nullptr};
};

/// The description of a method of `Self`: a member function, or a function that takes the instance
/// as its first parameter.
template <auto F, typename Self>
constexpr Signature methodSignature()
{
    using Type = TypeOfCallable<decltype(F)>;
    static_assert(Type::IS_KNOWN, "TobrelScripts: this is no method that can be bound");
    if constexpr (Type::IS_METHOD)
        return {
            &Type::template Method<F, Self>::run,
            Type::template METHOD_PARAMETERS<Self>,
            Type::COUNT + 1,
            nullptr};
    else
        return FunctionSignature<F>::SIGNATURE;
}

template <auto F, typename Self>
inline constexpr Signature METHOD_SIGNATURE = methodSignature<F, Self>();

/// The description of a member function of one object, which scripts call without it.
template <auto F, typename Self>
struct MethodOnSignature
{
    using Type = TypeOfCallable<decltype(F)>;
    static_assert(
        Type::IS_METHOD, "TobrelScripts: only a member function is bound together with an object");
    static constexpr Signature SIGNATURE{
        &Type::template MethodOn<F, Self>::run, Type::FUNCTION_PARAMETERS, Type::COUNT, nullptr};
};

template <typename C, typename = decltype(&C::operator())>
constexpr bool hasOneSignature(int)
{
    return true;
}

template <typename C>
constexpr bool hasOneSignature(...)
{
    return TypeOfCallable<C>::IS_KNOWN;
}

template <typename C, bool IS_CLASS>
struct CallOperator
{
    using Type = C;
};

template <typename C>
struct CallOperator<C, true>
{
    using Type = decltype(&C::operator());
};

/// The description of a lambda, another function object, or a pointer to a function.
template <typename C>
struct CallableSignature
{
    static_assert(
        hasOneSignature<C>(0),
        "TobrelScripts: a callable with several signatures, or with one that is a template, cannot "
        "be bound; wrap it in a lambda with the types that scripts shall pass");
    using Type = TypeOfCallable<typename CallOperator<C, isClass<C>>::Type>;
    static_assert(
        isClass<C> || !Type::IS_METHOD,
        "TobrelScripts: a member function is bound together with an object: "
        "bind<&Type::method>(scope, name, object)");
    using Thunk = typename Type::template Lambda<C>;
    static constexpr Signature SIGNATURE{
        &Thunk::run, Type::FUNCTION_PARAMETERS, Type::COUNT, nullptr};
};

/// The description of a constructor.
template <typename T, typename... A>
struct ConstructorSignature
{
    static_assert((true && ... && checkParameter<A>()));
    static_assert(
        __is_constructible(T, A...), "TobrelScripts: the type has no constructor like this");
    using Thunk = ConstructorThunk<T, IndicesUpTo<sizeof...(A)>, A...>;
    static constexpr Signature SIGNATURE{
        &Thunk::run, PARAMETERS<void, A...>, sizeof...(A), nullptr};
};

/// How scripts destroy objects that they own; null for those that they cannot.
template <typename T>
constexpr auto destructorOf() -> void (*)(void* object)
{
    if constexpr (isDestructible<T>(0))
        return [](void* object) { delete static_cast<T*>(object); };
    else
        return [](void*) {};
}

/// Takes a callable over, or returns one that is on its way already.
template <typename C>
BoundCallable boundCallable(C&& callable)
{
    using Type = BareOf<C>;
    if constexpr (isSame<Type, OwnedCallable>)
    {
        static_assert(
            isSame<C, OwnedCallable>, "TobrelScripts: overloads that have a name are bound once");
        return callable.release();
    }
    else
    {
        using Described = CallableSignature<Type>;
        return {
            &Described::SIGNATURE,
            new Type(static_cast<C&&>(callable)),
            &Described::Thunk::destroy};
    }
}

} // namespace tbScripts::typed

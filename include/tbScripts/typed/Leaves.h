#pragma once

// Leaves: functions of the host that promise neither to call the library nor to throw, so that
// compiled script code may call them by itself. For each the compiler makes one more function, the
// entry, by the rules of C (see Leaf in tbScripts/typed/Call.h).

#include "tbScripts/typed/LeafResult.h"
#include "tbScripts/typed/Thunks.h"

namespace tbScripts::typed
{

template <typename... T>
struct Types
{
};

/// What an argument is for the entry, and how it becomes one of the function again.
template <typename T, KIND kind>
struct LeafArgument
{
    static constexpr bool IS_POSSIBLE = false;
    using Parts = Types<>;
};

template <typename T>
struct LeafNumber
{
    static constexpr bool IS_POSSIBLE = true;
    using Parts = Types<T>;

    static T from(T part) { return part; }
};

template <>
struct LeafArgument<int, KIND::INT> : LeafNumber<int>
{
};

template <>
struct LeafArgument<float, KIND::FLOAT> : LeafNumber<float>
{
};

template <>
struct LeafArgument<double, KIND::DOUBLE> : LeafNumber<double>
{
};

template <>
struct LeafArgument<bool, KIND::BOOL>
{
    static constexpr bool IS_POSSIBLE = true;
    using Parts = Types<int>;

    static bool from(int part) { return part != 0; }
};

template <typename T>
struct LeafArgument<T, KIND::TEXT>
{
    static constexpr bool IS_POSSIBLE = true;
    using Parts = Types<const char*, Size>;

    static T from(const char* data, Size size) { return T(data, size); }
};

template <>
struct LeafArgument<const char*, KIND::TEXT>
{
    static constexpr bool IS_POSSIBLE = true;
    using Parts = Types<const char*, Size>;

    static const char* from(const char* data, Size /*size*/) { return data; }
};

template <typename T>
struct LeafArgument<T, KIND::OBJECT>
{
    static constexpr bool IS_POSSIBLE = true;
    using Parts = Types<void*>;

    static T& from(void* object) { return *static_cast<T*>(object); }
};

template <typename T>
struct LeafArgument<T*, KIND::OBJECT_OR_NIL>
{
    static constexpr bool IS_POSSIBLE = true;
    using Parts = Types<void*>;

    static T* from(void* object) { return static_cast<T*>(object); }
};

template <typename T>
constexpr bool isLeafKind()
{
    // An optional argument has the kind of its value.
    return !ArgumentOf<T>::PARAMETER.isOptional;
}

template <typename T>
using LeafArgumentOf =
    LeafArgument<BareOf<T>, isLeafKind<T>() ? ArgumentOf<T>::PARAMETER.kind : KIND::OTHER>;

/// What a result is for the entry.
template <typename R, KIND kind>
struct LeafResult
{
    static constexpr bool IS_POSSIBLE = kind == KIND::NOTHING;
    using Type = void;
    using Parts = Types<>;
};

template <>
struct LeafResult<bool, KIND::BOOL>
{
    static constexpr bool IS_POSSIBLE = true;
    using Type = int;
    using Parts = Types<>;

    static int from(bool value) { return value ? 1 : 0; }
};

template <>
struct LeafResult<int, KIND::INT>
{
    static constexpr bool IS_POSSIBLE = true;
    using Type = int;
    using Parts = Types<>;

    static int from(int value) { return value; }
};

template <typename T>
struct LeafNumberResult
{
    static constexpr bool IS_POSSIBLE = true;
    using Type = T;
    using Parts = Types<>;

    static T from(T value) { return asNumber(value); }
};

template <>
struct LeafResult<float, KIND::FLOAT> : LeafNumberResult<float>
{
};

template <>
struct LeafResult<double, KIND::DOUBLE> : LeafNumberResult<double>
{
};

template <typename R>
struct LeafResult<R, KIND::TEXT>
{
    static constexpr bool IS_POSSIBLE = true;
    using Type = void;
    using Parts = Types<Text*>;
};

template <typename R>
using LeafResultOf = LeafResult<BareOf<R>, ArgumentOf<R>::PARAMETER.kind>;

// A string class that owns its characters.
template <typename T>
inline constexpr bool isOwnText = isClass<T>&& isTextClass<T>(0) && !isTextView<T>(0);

/// Writes a string where the library finds it. One that the function returns by value is kept until
/// the next call of the same leaf in this thread.
template <typename R>
void storeText(Text& text, R&& result)
{
    if constexpr (isPointer<BareOf<R>>)
    {
        text = {result, 0};
        while (result && result[text.size])
            ++text.size;
    }
    else
        text = {result.data(), result.size()};
}

/// Turns the parts back into arguments, one after the other: those that are done go to the end.
template <typename... A>
struct LeafCall;

template <>
struct LeafCall<>
{
    template <typename Function, typename... D>
    static decltype(auto) run(const Function& function, D&&... done)
    {
        return function(static_cast<D&&>(done)...);
    }
};

template <typename A, typename... Others>
struct LeafCall<A, Others...>
{
    using Argument = LeafArgumentOf<A>;
    static constexpr bool IS_TEXT = isSame<typename Argument::Parts, Types<const char*, Size>>;

    template <typename Function, typename First, typename... Left>
    static decltype(auto) run(const Function& function, First&& first, Left&&... left)
    {
        if constexpr (IS_TEXT)
            return _runText(function, first, static_cast<Left&&>(left)...);
        else
            return LeafCall<Others...>::run(
                function, static_cast<Left&&>(left)..., Argument::from(first));
    }

private:
    template <typename Function, typename... Left>
    static decltype(auto)
    _runText(const Function& function, const char* data, Size size, Left&&... left)
    {
        return LeafCall<Others...>::run(
            function, static_cast<Left&&>(left)..., Argument::from(data, size));
    }
};

/// Says that a leaf runs, for as long as this object exists.
class RunningLeaf
{
public:
    explicit RunningLeaf(LeafGuard& guard)
        : m_guard(guard)
    {
        m_guard.running = 1;
    }

    RunningLeaf(const RunningLeaf&) = delete;
    RunningLeaf& operator=(const RunningLeaf&) = delete;

    ~RunningLeaf() { m_guard.running = 0; }

private:
    LeafGuard& m_guard;
};

/// Calls `F`, a function or, on its first argument, a member function.
template <auto F, bool IS_METHOD, typename R>
struct LeafFunction
{
    template <typename... A>
    R operator()(A&&... arguments) const
    {
        if constexpr (IS_METHOD)
            return _onFirst(static_cast<A&&>(arguments)...);
        else
            return F(static_cast<A&&>(arguments)...);
    }

private:
    template <typename Self, typename... A>
    static R _onFirst(Self& self, A&&... arguments)
    {
        return (self.*F)(static_cast<A&&>(arguments)...);
    }
};

/// The same for results that are strings.
template <auto F, bool IS_METHOD, typename R>
struct LeafTextFunction
{
    template <typename... A>
    void operator()(Text* text, A&&... arguments) const
    {
        const LeafFunction<F, IS_METHOD, R> function;
        if constexpr (isOwnText<BareOf<R>>)
        {
            static thread_local BareOf<R> kept;
            kept = function(static_cast<A&&>(arguments)...);
            storeText(*text, kept);
        }
        else
            storeText(*text, function(static_cast<A&&>(arguments)...));
    }
};

template <auto F, bool IS_METHOD, bool THROWS, typename R, typename Parts, typename... A>
struct LeafEntry;

template <auto F, bool IS_METHOD, bool THROWS, typename R, typename... P, typename... A>
struct LeafEntry<F, IS_METHOD, THROWS, R, Types<P...>, A...>
{
    using Returned = typename LeafResultOf<R>::Type;

    static Returned entry(LeafGuard* guard, P... parts) noexcept
    {
        const RunningLeaf running(*guard);
        if constexpr (!THROWS)
            return _call(parts...);
        else
        {
#if defined(__cpp_exceptions)
            try
            {
                return _call(parts...);
            }
            catch (...)
            {
                reportLeafThrew();
            }
            return Returned();
#else
            return _call(parts...);
#endif
        }
    }

    inline static const Leaf LEAF{reinterpret_cast<void (*)()>(&entry)};

private:
    static Returned _call(P... parts)
    {
        if constexpr (isSame<typename LeafResultOf<R>::Parts, Types<Text*>>)
            LeafCall<A...>::run(LeafTextFunction<F, IS_METHOD, R>(), parts...);
        else if constexpr (isSame<R, void>)
            LeafCall<A...>::run(LeafFunction<F, IS_METHOD, R>(), parts...);
        else
            return LeafResultOf<R>::from(
                LeafCall<A...>::run(LeafFunction<F, IS_METHOD, R>(), parts...));
    }
};

template <typename... Lists>
struct Joined;

template <typename... T>
struct Joined<Types<T...>>
{
    using Type = Types<T...>;
};

template <typename... T, typename... U, typename... Lists>
struct Joined<Types<T...>, Types<U...>, Lists...>
{
    using Type = typename Joined<Types<T..., U...>, Lists...>::Type;
};

/// The entries of a function that takes and returns these types.
template <typename R, typename... A>
struct LeafEntries
{
    static_assert(
        (LeafResultOf<R>::IS_POSSIBLE && ... && LeafArgumentOf<A>::IS_POSSIBLE),
        "TobrelScripts: a leaf takes and returns nothing but bool, int, float, double and strings, "
        "and takes user types by reference or pointer");

    static_assert(
        ArgumentOf<R>::PARAMETER.kind != KIND::TEXT || isOwnText<BareOf<R>> ||
            !(isOwnText<BareOf<A>> || ...),
        "TobrelScripts: a leaf that takes std::string returns no view, which might show it; take "
        "std::string_view");

    template <auto F, bool THROWS>
    using Function = LeafEntry<
        F,
        false,
        THROWS,
        R,
        typename Joined<
            Types<>,
            typename LeafArgumentOf<A>::Parts...,
            typename LeafResultOf<R>::Parts>::Type,
        A...>;

    template <auto F, bool THROWS, typename Self>
    using Method = LeafEntry<
        F,
        true,
        THROWS,
        R,
        typename Joined<
            Types<void*>,
            typename LeafArgumentOf<A>::Parts...,
            typename LeafResultOf<R>::Parts>::Type,
        Self&,
        A...>;
};

/// The description of a leaf: that of the function, with the entry.
template <auto F, typename Self>
constexpr Signature leafSignature()
{
    using Type = TypeOfCallable<decltype(F)>;
    static_assert(
        Type::IS_KNOWN, "TobrelScripts: only a function that the compiler knows is a leaf");
    using Entries = typename Type::template Pass<LeafEntries>;
    if constexpr (Type::IS_METHOD)
    {
        static_assert(
            !isSame<Self, void>,
            "TobrelScripts: a member function is a leaf as a method of its type only");
        return {
            &Type::template Method<F, Self>::run,
            Type::template METHOD_PARAMETERS<Self>,
            Type::COUNT + 1,
            &Entries::template Method<F, Type::THROWS, Self>::LEAF};
    }
    else
        return {
            &Type::template Function<F>::run,
            Type::FUNCTION_PARAMETERS,
            Type::COUNT,
            &Entries::template Function<F, Type::THROWS>::LEAF};
}

template <auto F, typename Self>
inline constexpr Signature LEAF_SIGNATURE = leafSignature<F, Self>();

/// Stands for a function that is a leaf, where a callable is expected.
template <auto F>
struct LeafMark
{
};

template <typename Self, typename C>
struct CallableFor
{
    static BoundCallable bound(C&& callable) { return boundCallable(static_cast<C&&>(callable)); }
};

template <typename Self, auto F>
struct CallableFor<Self, const LeafMark<F>&>
{
    static BoundCallable bound(const LeafMark<F>& /*mark*/)
    {
        return {&LEAF_SIGNATURE<F, Self>, nullptr, nullptr};
    }
};

template <typename Self, auto F>
struct CallableFor<Self, LeafMark<F>> : CallableFor<Self, const LeafMark<F>&>
{
};

/// Takes a callable over that scripts call on instances of `Self`, or on none if that is void.
template <typename Self, typename C>
BoundCallable callableFor(C&& callable)
{
    return CallableFor<Self, C>::bound(static_cast<C&&>(callable));
}

/// The same, or none for null.
template <typename Self, typename C>
BoundCallable optionalCallableFor(C&& callable)
{
    if constexpr (isSame<BareOf<C>, decltype(nullptr)>)
        return {};
    else
        return callableFor<Self>(static_cast<C&&>(callable));
}

} // namespace tbScripts::typed

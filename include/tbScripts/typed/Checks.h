#pragma once

// Says in words why a parameter or a result cannot cross, before the compiler says it in templates.

#include "tbScripts/typed/Containers.h"

namespace tbScripts::typed
{

template <typename T>
inline constexpr bool isLValue = false;
template <typename T>
inline constexpr bool isLValue<T&> = true;
template <typename T>
inline constexpr bool isRValue = false;
template <typename T>
inline constexpr bool isRValue<T&&> = true;

template <typename T>
struct Target
{
    using Type = void;
};

template <typename T>
struct Target<T*>
{
    using Type = T;
};

template <typename T>
inline constexpr bool isFunctionType = !isConst<const T> && !isLValue<T> && !isRValue<T>;

template <typename T>
struct Referred
{
    using Type = T;
};

template <typename T>
struct Referred<T&>
{
    using Type = T;
};

template <typename T>
constexpr bool isObjectClass()
{
    if constexpr (isClass<T>)
        return ShapeOf<T>::SHAPE_OF == SHAPE::OBJECT;
    else
        return false;
}

template <typename T>
inline constexpr bool isCharacter =
    isSame<T, char> || isSame<T, wchar_t> || isSame<T, char16_t> || isSame<T, char32_t>;

// What holds for parameters and results, without reference and `const`.
template <typename T>
constexpr bool checkType()
{
    using Pointed = BareOf<typename Target<T>::Type>;
    static_assert(
        !isSame<T, long double>, "TobrelScripts: scripts have no long double; use double");
    static_assert(
        !isCharacter<T>, "TobrelScripts: scripts have no characters; use std::string or int");
    static_assert(
        !isPointer<T> || !isSame<Pointed, void> || isSame<T, void>,
        "TobrelScripts: a void pointer has no type for scripts; use a pointer to a user type");
    static_assert(
        !isPointer<T> || !isPointer<Pointed>,
        "TobrelScripts: a pointer to a pointer cannot cross; use a pointer to a user type");
    static_assert(
        !isPointer<T> || isSame<Pointed, char> || isClass<Pointed> || isPointer<Pointed> ||
            isSame<Pointed, void> || isFunctionType<Pointed>,
        "TobrelScripts: a pointer to a number cannot cross; return several results as a tuple");
    static_assert(
        !isPointer<T> || !isFunctionType<Pointed>,
        "TobrelScripts: a pointer to a function cannot cross; use ScriptFunction");
    static_assert(
        isPointer<T> || isSame<T, bool> || isSame<T, int> || isSame<T, float> ||
            isSame<T, double> || isSame<T, long double> || isCharacter<T> || isInteger<T> ||
            isClass<T> || __is_enum(T) || isSame<T, void> || isSame<T, decltype(nullptr)>,
        "TobrelScripts: this type cannot cross between host and scripts");
    return true;
}

template <typename P>
constexpr bool checkParameter()
{
    using T = BareOf<P>;
    static_assert(
        !isRValue<P>, "TobrelScripts: an argument cannot be moved from; take it by value");
    static_assert(
        !isLValue<P> || isConst<typename Referred<P>::Type> || isObjectClass<T>(),
        "TobrelScripts: an argument that is no user type cannot be changed; take it by value or "
        "const&");
    static_assert(checkType<T>());
    static_assert(
        !isSame<T, char*>, "TobrelScripts: a script's string cannot be changed; take const char*");
    static_assert(
        !isSame<T, decltype(nullptr)>, "TobrelScripts: a parameter cannot be always null");
    if constexpr (isClass<T>)
    {
        static_assert(
            ShapeOf<T>::SHAPE_OF != SHAPE::TUPLE,
            "TobrelScripts: a tuple is several results and no parameter; take several parameters");
        static_assert(
            !isObjectClass<T>() || isLValue<P> || !__is_abstract(T),
            "TobrelScripts: an abstract class cannot be passed by value; take a reference");
        static_assert(
            !isObjectClass<T>() || isLValue<P> || isSame<T, Rest> || __is_abstract(T) ||
                __is_constructible(T, const T&) || __is_constructible(T, T&),
            "TobrelScripts: an object that cannot be copied is passed by reference");
    }
    return true;
}

template <typename R>
constexpr bool checkResult()
{
    using T = BareOf<R>;
    static_assert(checkType<T>());
    static_assert(!isSame<T, Rest>, "TobrelScripts: the rest of the arguments is no result");
    if constexpr (isClass<T>)
    {
        static_assert(
            !isObjectClass<T>() || isLValue<R> || __is_constructible(T, T &&),
            "TobrelScripts: a result that cannot be moved is returned by reference or pointer");
    }
    return true;
}

} // namespace tbScripts::typed

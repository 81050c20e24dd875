#pragma once

// What the typed layer asks the compiler about types. The standard header for such questions costs
// more than all of them together.

#include "tbScripts/typed/Call.h"

namespace tbScripts::typed
{

template <typename T>
T&& any() noexcept; // only for expressions that are not evaluated

template <typename T>
struct Bare
{
    using Type = T;
};

template <typename T>
struct Bare<const T>
{
    using Type = T;
};

template <typename T>
struct Bare<T&>
{
    using Type = typename Bare<T>::Type;
};

template <typename T>
struct Bare<T&&>
{
    using Type = typename Bare<T>::Type;
};

/// `T` without reference and without `const`.
template <typename T>
using BareOf = typename Bare<T>::Type;

template <typename T, typename U>
inline constexpr bool isSame = false;
template <typename T>
inline constexpr bool isSame<T, T> = true;

template <typename T>
inline constexpr bool isPointer = false;
template <typename T>
inline constexpr bool isPointer<T*> = true;

template <typename T>
inline constexpr bool isClass = __is_class(T) || __is_union(T);

template <typename T>
inline constexpr bool isConst = false;
template <typename T>
inline constexpr bool isConst<const T> = true;

template <Size... I>
struct Indices
{
};

#if defined(__clang__) || defined(_MSC_VER)
template <typename T, T... I>
struct IndicesOf
{
    using Type = Indices<I...>;
};

template <Size N>
using IndicesUpTo = typename __make_integer_seq<IndicesOf, Size, N>::Type;
#else
template <Size N>
using IndicesUpTo = Indices<__integer_pack(N)...>;
#endif

/// The lists of types of a tuple or a variant, whatever template it is.
template <typename T>
struct TypesIn
{
    static constexpr Size COUNT = 0;
};

template <template <typename...> class Template, typename... T>
struct TypesIn<Template<T...>>
{
    static constexpr Size COUNT = sizeof...(T);
};

template <int>
void get(); // makes `get<0>(value)` an expression whose function the value's namespace has

// One question each; the second parameter decides between the overloads.
template <typename T, typename = decltype(T(any<const char*>(), Size()), *any<const T&>().data())>
constexpr bool isTextClass(int)
{
    return isSame<BareOf<decltype(*any<const T&>().data())>, char>;
}

template <typename T>
constexpr bool isTextClass(...)
{
    return false;
}

// A view of a string that something else owns.
template <typename T, typename = decltype(any<T&>().remove_prefix(Size()))>
constexpr bool isTextView(int)
{
    return true;
}

template <typename T>
constexpr bool isTextView(...)
{
    return false;
}

template <typename T, typename = decltype(any<T&>().release(), any<T&>().reset())>
constexpr bool isUniquePointer(int)
{
    return true;
}

template <typename T>
constexpr bool isUniquePointer(...)
{
    return false;
}

template <typename T, typename = decltype(any<T&>().use_count(), any<T&>().get())>
constexpr bool isSharedPointer(int)
{
    return true;
}

template <typename T>
constexpr bool isSharedPointer(...)
{
    return false;
}

template <typename T, typename = decltype(any<T&>().has_value(), any<T&>().reset(), *any<T&>())>
constexpr bool isOptionalClass(int)
{
    return true;
}

template <typename T>
constexpr bool isOptionalClass(...)
{
    return false;
}

template <typename T, typename = decltype(any<T&>().valueless_by_exception())>
constexpr bool isVariant(int)
{
    return true;
}

template <typename T>
constexpr bool isVariant(...)
{
    return false;
}

template <typename T, typename = typename T::mapped_type, typename = typename T::key_type>
constexpr bool isMap(int)
{
    return true;
}

template <typename T>
constexpr bool isMap(...)
{
    return false;
}

template <
    typename T,
    typename = decltype(any<T&>().push_back(any<typename T::value_type>()), any<T&>().begin())>
constexpr bool isSequence(int)
{
    return true;
}

template <typename T>
constexpr bool isSequence(...)
{
    return false;
}

template <
    typename T,
    typename = decltype(any<T&>().fill(any<const typename T::value_type&>()), any<T&>()[0])>
constexpr bool isArray(int)
{
    return true;
}

template <typename T>
constexpr bool isArray(...)
{
    return false;
}

template <typename T, typename = decltype(get<0>(any<T&>()))>
constexpr bool isTuple(int)
{
    return TypesIn<T>::COUNT > 0;
}

template <typename T>
constexpr bool isTuple(...)
{
    return false;
}

template <typename T, typename = decltype(any<T&>().~T())>
constexpr bool isDestructible(int)
{
    return true;
}

template <typename T>
constexpr bool isDestructible(...)
{
    return false;
}

/// What kind of class this is; the first that fits.
enum class SHAPE
{
    OBJECT,
    TEXT,
    UNIQUE_POINTER,
    SHARED_POINTER,
    OPTIONAL,
    VARIANT,
    MAP,
    SEQUENCE,
    ARRAY,
    TUPLE
};

template <typename T>
constexpr SHAPE shapeOfTemplate()
{
    if constexpr (isTextClass<T>(0))
        return SHAPE::TEXT;
    else if constexpr (isOptionalClass<T>(0))
        return SHAPE::OPTIONAL;
    else if constexpr (isUniquePointer<T>(0))
        return SHAPE::UNIQUE_POINTER;
    else if constexpr (isSharedPointer<T>(0))
        return SHAPE::SHARED_POINTER;
    else if constexpr (isVariant<T>(0))
        return SHAPE::VARIANT;
    else if constexpr (isMap<T>(0))
        return SHAPE::MAP;
    else if constexpr (isSequence<T>(0))
        return SHAPE::SEQUENCE;
    else if constexpr (isArray<T>(0))
        return SHAPE::ARRAY;
    else if constexpr (isTuple<T>(0))
        return SHAPE::TUPLE;
    else
        return SHAPE::OBJECT;
}

// Classes that are no templates are asked one question only: most are the host's own.
template <typename T>
struct ShapeOf
{
    static constexpr SHAPE SHAPE_OF = isTextClass<T>(0) ? SHAPE::TEXT : SHAPE::OBJECT;
};

template <template <typename...> class Template, typename... A>
struct ShapeOf<Template<A...>>
{
    static constexpr SHAPE SHAPE_OF = shapeOfTemplate<Template<A...>>();
};

template <template <typename, Size> class Template, typename V, Size N>
struct ShapeOf<Template<V, N>>
{
    static constexpr SHAPE SHAPE_OF = shapeOfTemplate<Template<V, N>>();
};

} // namespace tbScripts::typed

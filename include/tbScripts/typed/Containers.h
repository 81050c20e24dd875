#pragma once

// Arguments of class templates, told apart by what they offer and not by their names: so this
// header needs none of theirs.

#include "tbScripts/typed/Arguments.h"

namespace tbScripts::typed
{

inline bool acceptsTable(Call& call, int index, bool /*isStrict*/)
{
    return call.services.isOfKind(call, index, KIND::OTHER, nullptr);
}

inline constexpr Parameter TABLE_PARAMETER{KIND::OTHER, false, nullptr, "table", &acceptsTable};

inline void expectTable(Call& call, int index)
{
    if (!acceptsTable(call, index, true))
        call.services.refuse(call, index, "table");
}

/// What is in a container is one value.
template <typename T>
constexpr bool checkContent()
{
    if constexpr (isClass<T>)
    {
        static_assert(
            ShapeOf<T>::SHAPE_OF != SHAPE::TUPLE,
            "TobrelScripts: a tuple is several values; what a container holds is one");
    }
    return true;
}

/// Whether the value at `index` is a `T` without being converted.
template <typename T>
bool isStrictly(Call& call, int index)
{
    constexpr Parameter PARAMETER = ArgumentOf<T>::PARAMETER;
    if (PARAMETER.isOptional && call.services.isNone(call, index))
        return true;
    if constexpr (PARAMETER.kind == KIND::OTHER)
        return PARAMETER.accepts(call, index, true);
    else
        return call.services.isOfKind(call, index, PARAMETER.kind, PARAMETER.type);
}

template <typename T>
struct OptionalArgument
{
    using Value = BareOf<decltype(*any<T&>())>;
    static_assert(checkContent<Value>());

    static constexpr Parameter optionalOf(Parameter parameter)
    {
        parameter.isOptional = true;
        return parameter;
    }

    static constexpr Parameter PARAMETER = optionalOf(Argument<Value>::PARAMETER);

    static T read(Call& call, int index)
    {
        if (call.services.isNone(call, index))
            return T();
        return T(Argument<Value>::read(call, index));
    }

    template <typename Optional>
    static int push(Call& call, Optional&& value)
    {
        if (value.has_value())
            return Argument<Value>::push(call, *static_cast<Optional&&>(value));
        call.services.pushNil(call);
        return 1;
    }
};

template <typename T>
struct UniquePointerArgument
{
    using Object = BareOf<decltype(*any<T&>())>;
    static_assert(
        sizeof(T) == sizeof(void*),
        "TobrelScripts: a unique pointer with a deleter of its own cannot cross");

    static constexpr Parameter PARAMETER{
        KIND::OBJECT_OR_NIL, false, &TYPE_ID<Object>, nullptr, nullptr, true};

    static T read(Call& call, int index)
    {
        return T(static_cast<Object*>(call.services.takeObject(call, index, TYPE_ID<Object>)));
    }

    static int push(Call& call, T value)
    {
        if (!value)
        {
            call.services.pushNil(call);
            return 1;
        }
        call.services.beginOwned(call, TYPE_ID<Object>);
        call.services.endOwned(call, const_cast<Object*>(value.release()));
        return 1;
    }
};

template <typename T>
struct SharedPointerArgument
{
    using Object = BareOf<decltype(*any<T&>())>;

    static constexpr Parameter PARAMETER{KIND::OBJECT_OR_NIL, false, &TYPE_ID<Object>};

    static T read(Call& call, int index)
    {
        void* const holder = call.services.toHolder(call, index, TYPE_ID<Object>, TYPE_ID<T>);
        return holder ? *static_cast<T*>(holder) : T();
    }

    static void release(void* holder) { delete static_cast<T*>(holder); }

    static int push(Call& call, const T& value)
    {
        if (!value)
        {
            call.services.pushNil(call);
            return 1;
        }
        call.services.beginOwned(call, TYPE_ID<Object>);
        call.services.endShared(
            call, const_cast<Object*>(value.get()), new T(value), TYPE_ID<T>, &release);
        return 1;
    }
};

template <typename T>
struct SequenceArgument
{
    using Value = BareOf<typename T::value_type>;
    static_assert(checkContent<Value>());
    static_assert(
        !isTextView<Value>(0) && !isSame<Value, const char*>,
        "TobrelScripts: the elements of a table have to own their strings; take std::string");

    static constexpr Parameter PARAMETER = TABLE_PARAMETER;

    static T read(Call& call, int index)
    {
        expectTable(call, index);
        const int length = call.services.getLength(call, index);
        T values;
        for (int number = 1; number <= length; ++number)
        {
            values.push_back(
                Argument<Value>::read(call, call.services.pushElement(call, index, number)));
            call.services.drop(call, 1);
        }
        return values;
    }

    template <typename Sequence>
    static int push(Call& call, Sequence&& values)
    {
        const int table = call.services.pushTable(call, static_cast<int>(values.size()), 0);
        int number = 0;
        for (auto&& value : values)
        {
            Argument<Value>::push(call, static_cast<const Value&>(value));
            call.services.setElement(call, table, ++number);
        }
        return 1;
    }
};

template <typename T>
struct ArrayArgument
{
    using Value = BareOf<typename T::value_type>;
    static_assert(checkContent<Value>());
    static constexpr int LENGTH = static_cast<int>(sizeof(T) / sizeof(Value));

    static constexpr Parameter PARAMETER = TABLE_PARAMETER;

    static T read(Call& call, int index)
    {
        expectTable(call, index);
        if (call.services.getLength(call, index) != LENGTH)
            call.services.refuse(call, index, "table of the array's length");
        T values{};
        for (int number = 1; number <= LENGTH; ++number)
        {
            values[static_cast<Size>(number - 1)] =
                Argument<Value>::read(call, call.services.pushElement(call, index, number));
            call.services.drop(call, 1);
        }
        return values;
    }

    static int push(Call& call, const T& values) { return SequenceArgument<T>::push(call, values); }
};

template <typename T>
struct MapArgument
{
    using Key = BareOf<typename T::key_type>;
    using Value = BareOf<typename T::mapped_type>;
    static_assert(checkContent<Key>() && checkContent<Value>());
    static_assert(
        !isTextView<Key>(0) && !isTextView<Value>(0),
        "TobrelScripts: the fields of a table have to own their strings; take std::string");

    static constexpr Parameter PARAMETER = TABLE_PARAMETER;

    static T read(Call& call, int index)
    {
        expectTable(call, index);
        T values;
        const int key = call.services.beginFields(call);
        while (call.services.pushNext(call, index, key))
        {
            if (!isStrictly<Key>(call, key + 1))
                call.services.refuse(call, key + 1, "a key of the map");
            values.emplace(
                Argument<Key>::read(call, key + 1), Argument<Value>::read(call, key + 2));
            call.services.drop(call, 2);
        }
        return values;
    }

    template <typename Map>
    static int push(Call& call, Map&& values)
    {
        const int table = call.services.pushTable(call, 0, static_cast<int>(values.size()));
        for (auto&& field : values)
        {
            Argument<Key>::push(call, field.first);
            Argument<Value>::push(call, static_cast<const Value&>(field.second));
            call.services.setField(call, table);
        }
        return 1;
    }
};

template <typename T>
struct VariantArgument;

template <template <typename...> class Variant, typename... A>
struct VariantArgument<Variant<A...>>
{
    static_assert((checkContent<BareOf<A>>() && ...));

    using Type = Variant<A...>;

    static bool accepts(Call& call, int index, bool /*isStrict*/)
    {
        return (isStrictly<A>(call, index) || ...);
    }

    static constexpr Parameter PARAMETER{
        KIND::OTHER, false, nullptr, "one of the types of the variant", &accepts};

    static Type read(Call& call, int index)
    {
        if (!accepts(call, index, true))
            call.services.refuse(call, index, PARAMETER.expected);
        return _readFirst<A...>(call, index);
    }

    static int push(Call& call, const Type& value) { return _pushAt<0>(call, value); }

private:
    template <typename First, typename... Others>
    static Type _readFirst(Call& call, int index)
    {
        if constexpr (sizeof...(Others) > 0)
        {
            if (!isStrictly<First>(call, index))
                return _readFirst<Others...>(call, index);
        }
        return Type(ArgumentOf<First>::read(call, index));
    }

    template <Size I>
    static int _pushAt(Call& call, const Type& value)
    {
        if constexpr (I + 1 < sizeof...(A))
        {
            if (value.index() != I)
                return _pushAt<I + 1>(call, value);
        }
        using Value = decltype(get<I>(value));
        return ArgumentOf<Value>::push(call, get<I>(value));
    }
};

/// Several results. Tuples are no arguments: what scripts pass are several arguments too.
template <typename T>
struct TupleArgument
{
    static constexpr Parameter PARAMETER{KIND::OTHER, false, nullptr, "several values", nullptr};

    template <typename Tuple>
    static int push(Call& call, Tuple&& values)
    {
        return _pushAll(call, static_cast<Tuple&&>(values), IndicesUpTo<TypesIn<T>::COUNT>());
    }

    template <Size... I>
    static T readAll(Call& call, int first, Indices<I...>)
    {
        return T{BareElement<I>::read(call, first + static_cast<int>(I))...};
    }

    static T read(Call& call, int first)
    {
        return readAll(call, first, IndicesUpTo<TypesIn<T>::COUNT>());
    }

private:
    template <Size I>
    using BareElement = ArgumentOf<decltype(get<I>(any<T&>()))>;

    template <typename Tuple, Size... I>
    static int _pushAll(Call& call, Tuple&& values, Indices<I...>)
    {
        int count = 0;
        call.services.reserve(call, static_cast<int>(sizeof...(I)) + 4);
        ((count += BareElement<I>::push(call, get<I>(static_cast<Tuple&&>(values)))), ...);
        return count;
    }
};

template <typename T, SHAPE shape>
struct ClassArgument : ObjectArgument<T>
{
    static_assert(
        // NOLINTNEXTLINE(bugprone-sizeof-expression): has none if the class is incomplete
        sizeof(T) > 0,
        "TobrelScripts: the class of a parameter or result is only declared here");
};

template <typename T>
struct ClassArgument<T, SHAPE::TEXT> : TextArgument<T>
{
};

template <typename T>
struct ClassArgument<T, SHAPE::UNIQUE_POINTER> : UniquePointerArgument<T>
{
};

template <typename T>
struct ClassArgument<T, SHAPE::SHARED_POINTER> : SharedPointerArgument<T>
{
};

template <typename T>
struct ClassArgument<T, SHAPE::OPTIONAL> : OptionalArgument<T>
{
};

template <typename T>
struct ClassArgument<T, SHAPE::VARIANT> : VariantArgument<T>
{
};

template <typename T>
struct ClassArgument<T, SHAPE::MAP> : MapArgument<T>
{
};

template <typename T>
struct ClassArgument<T, SHAPE::SEQUENCE> : SequenceArgument<T>
{
};

template <typename T>
struct ClassArgument<T, SHAPE::ARRAY> : ArrayArgument<T>
{
};

template <typename T>
struct ClassArgument<T, SHAPE::TUPLE> : TupleArgument<T>
{
};

/// The arguments behind the last declared parameter: the last parameter of a callable that takes
/// any number. Valid until: the call returns.
class Rest
{
public:
    Rest(Call& call, int first)
        : m_call(call)
        , m_first(first)
    {
    }

    /// Returns how many there are.
    int size() const
    {
        const int count = m_call.services.countArguments(m_call) - m_first + 1;
        return count > 0 ? count : 0;
    }

    /// Returns whether argument `number`, counted from 0, is a `T` without conversion.
    template <typename T>
    bool is(int number) const
    {
        return isStrictly<T>(m_call, m_first + number);
    }

    /// Returns argument `number`. One that cannot be read as `T` ends the call with a script error,
    /// as a parameter does.
    template <typename T>
    T get(int number) const
    {
        return ArgumentOf<T>::read(m_call, m_first + number);
    }

private:
    Call& m_call;
    int m_first;
};

template <>
struct Argument<Rest>
{
    static constexpr Parameter PARAMETER{KIND::REST};

    static Rest read(Call& call, int index) { return Rest(call, index); }
};

template <>
struct Argument<ScriptObjectReference>
{
    static constexpr Parameter PARAMETER{KIND::REFERENCE};

    template <typename Reference = ScriptObjectReference>
    static Reference read(Call& call, int index)
    {
        Reference reference;
        call.services.toReference(call, index, reference);
        return reference;
    }

    static int push(Call& call, const ScriptObjectReference& reference)
    {
        call.services.pushReference(call, reference);
        return 1;
    }
};

template <typename S>
struct Argument<ScriptFunction<S>>
{
    static constexpr Parameter PARAMETER{KIND::FUNCTION};

    static ScriptFunction<S> read(Call& call, int index)
    {
        ScriptFunction<S> function;
        call.services.toFunction(call, index, function.editReference());
        return function;
    }

    static int push(Call& call, const ScriptFunction<S>& function)
    {
        call.services.pushReference(call, function.getReference());
        return 1;
    }
};

template <typename T>
inline constexpr bool isInteger = false;
template <>
inline constexpr bool isInteger<signed char> = true;
template <>
inline constexpr bool isInteger<unsigned char> = true;
template <>
inline constexpr bool isInteger<short> = true;
template <>
inline constexpr bool isInteger<unsigned short> = true;
template <>
inline constexpr bool isInteger<unsigned int> = true;
template <>
inline constexpr bool isInteger<long> = true;
template <>
inline constexpr bool isInteger<unsigned long> = true;
template <>
inline constexpr bool isInteger<long long> = true;
template <>
inline constexpr bool isInteger<unsigned long long> = true;

template <typename T>
constexpr auto* argumentFor()
{
    if constexpr (isInteger<T>)
        return static_cast<IntegerArgument<T>*>(nullptr);
    else if constexpr (__is_enum(T))
        return static_cast<EnumArgument<T>*>(nullptr);
    else
        return static_cast<ClassArgument<T, ShapeOf<T>::SHAPE_OF>*>(nullptr);
}

/// Everything else: what it is decides how it crosses. A host may specialise `Argument` for types
/// of its own, with the same three members.
template <typename T>
struct Argument : Bare<decltype(*argumentFor<T>())>::Type
{
};

template <typename T>
struct Argument<T*> : ObjectPointerArgument<T>
{
};

} // namespace tbScripts::typed

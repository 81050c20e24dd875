#pragma once

// How each type of the host is read from a script and passed to one: `Argument<T>` says what it is
// for scripts (`PARAMETER`), reads it (`read`) and pushes it (`push`, which returns how many
// values).

#include "tbScripts/typed/Traits.h"

namespace tbScripts
{

template <typename Signature>
class ScriptFunction;

namespace typed
{

template <typename T>
struct Argument;

/// How a parameter or a result of type `T` crosses.
template <typename T>
using ArgumentOf = Argument<BareOf<T>>;

template <>
struct Argument<void>
{
    static constexpr Parameter PARAMETER{KIND::NOTHING};
};

template <>
struct Argument<bool>
{
    static constexpr Parameter PARAMETER{KIND::BOOL};

    static bool read(Call& call, int index) { return call.services.toBool(call, index); }

    static int push(Call& call, bool value)
    {
        call.services.pushBool(call, value);
        return 1;
    }
};

template <>
struct Argument<int>
{
    static constexpr Parameter PARAMETER{KIND::INT};

    static int read(Call& call, int index) { return call.services.toInt(call, index); }

    static int push(Call& call, int value)
    {
        call.services.pushDouble(call, value);
        return 1;
    }
};

template <>
struct Argument<float>
{
    static constexpr Parameter PARAMETER{KIND::FLOAT};

    static float read(Call& call, int index) { return call.services.toFloat(call, index); }

    static int push(Call& call, float value)
    {
        call.services.pushDouble(call, static_cast<double>(value));
        return 1;
    }
};

template <>
struct Argument<double>
{
    static constexpr Parameter PARAMETER{KIND::DOUBLE};

    static double read(Call& call, int index) { return call.services.toDouble(call, index); }

    static int push(Call& call, double value)
    {
        call.services.pushDouble(call, value);
        return 1;
    }
};

template <>
struct Argument<const char*>
{
    static constexpr Parameter PARAMETER{KIND::TEXT};

    static const char* read(Call& call, int index)
    {
        return call.services.toText(call, index).data;
    }

    static int push(Call& call, const char* value)
    {
        Size size = 0;
        while (value && value[size])
            ++size;
        call.services.pushText(call, {value, size});
        return 1;
    }
};

template <>
struct Argument<char*> : Argument<const char*>
{
};

template <>
struct Argument<decltype(nullptr)>
{
    static constexpr Parameter PARAMETER{KIND::NOTHING};

    static int push(Call& call, decltype(nullptr))
    {
        call.services.pushNil(call);
        return 1;
    }
};

/// Integers other than `int`: a number beyond their range is refused.
template <typename T>
struct IntegerArgument
{
    static constexpr bool IS_SIGNED = T(-1) < T(0);
    static constexpr int BITS = static_cast<int>(sizeof(T)) * 8;
    static constexpr double HALF = static_cast<double>(Natural(1) << (BITS - 1));
    static constexpr double LOWEST = IS_SIGNED ? -HALF : 0.0;
    static constexpr double BEYOND = IS_SIGNED ? HALF : HALF * 2;

    static constexpr const char* nameOf()
    {
        switch (BITS)
        {
        case 8:
            return IS_SIGNED ? "int8" : "uint8";
        case 16:
            return IS_SIGNED ? "int16" : "uint16";
        case 32:
            return IS_SIGNED ? "int32" : "uint32";
        default:
            return IS_SIGNED ? "int64" : "uint64";
        }
    }

    static bool accepts(Call& call, int index, bool isStrict)
    {
        return call.services.isInteger(call, index, LOWEST, BEYOND, isStrict);
    }

    static constexpr Parameter PARAMETER{KIND::OTHER, false, nullptr, nameOf(), &accepts};

    static T read(Call& call, int index)
    {
        if (!accepts(call, index, false))
            call.services.refuse(call, index, nameOf());
        return static_cast<T>(call.services.toInteger(call, index));
    }

    static int push(Call& call, T value)
    {
        if constexpr (BITS < 64)
            call.services.pushDouble(call, static_cast<double>(value));
        else if constexpr (IS_SIGNED)
            call.services.pushInteger(call, value);
        else
            call.services.pushNatural(call, value);
        return 1;
    }
};

/// Enumerations are numbers for scripts. Only values that the host has declared are accepted, or
/// all of the underlying type if it has declared none.
template <typename T>
struct EnumArgument
{
    using Underlying = __underlying_type(T);

    static bool accepts(Call& call, int index, bool isStrict)
    {
        using Number = IntegerArgument<Underlying>;
        return call.services.isInteger(call, index, Number::LOWEST, Number::BEYOND, isStrict) &&
               call.services.isEnumValue(call, index, TYPE_ID<T>);
    }

    static constexpr Parameter PARAMETER{KIND::OTHER, false, &TYPE_ID<T>, "enum", &accepts};

    static T read(Call& call, int index)
    {
        if (!accepts(call, index, false))
            call.services.refuse(call, index, "enum");
        return static_cast<T>(static_cast<Underlying>(call.services.toInteger(call, index)));
    }

    static int push(Call& call, T value)
    {
        return IntegerArgument<Underlying>::push(call, static_cast<Underlying>(value));
    }
};

/// Objects of the host. Results by value move into an object that the script owns.
template <typename T>
struct ObjectArgument
{
    static constexpr Parameter PARAMETER{KIND::OBJECT, false, &TYPE_ID<T>};

    static T& read(Call& call, int index)
    {
        return *static_cast<T*>(call.services.toObject(call, index, TYPE_ID<T>));
    }

    template <typename Value>
    static int push(Call& call, Value&& value)
    {
        call.services.beginOwned(call, TYPE_ID<T>);
        call.services.endOwned(call, new T(static_cast<Value&&>(value)));
        return 1;
    }
};

template <typename T>
struct ObjectPointerArgument
{
    using Object = BareOf<T>;
    static constexpr Parameter PARAMETER{KIND::OBJECT_OR_NIL, false, &TYPE_ID<Object>};

    static T* read(Call& call, int index)
    {
        return static_cast<T*>(call.services.toObjectOrNull(call, index, TYPE_ID<Object>));
    }

    static int push(Call& call, T* object)
    {
        call.services.pushObject(call, const_cast<Object*>(object), TYPE_ID<Object>);
        return 1;
    }
};

template <typename T>
struct TextArgument
{
    static constexpr Parameter PARAMETER{KIND::TEXT};

    static T read(Call& call, int index)
    {
        const Text text = call.services.toText(call, index);
        return T(text.data, text.size);
    }

    static int push(Call& call, const T& value)
    {
        call.services.pushText(call, {value.data(), value.size()});
        return 1;
    }
};

} // namespace typed
} // namespace tbScripts

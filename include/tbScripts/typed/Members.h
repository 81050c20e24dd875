#pragma once

// Data members of a user type: plain ones are described by their place, others get a thunk that
// reads and one that writes.

#include "tbScripts/typed/Thunks.h"

namespace tbScripts::typed
{

template <typename T>
struct TypeOfMember
{
    static constexpr bool IS_KNOWN = false;
};

template <typename C, typename V>
struct TypeOfMember<V C::*>
{
    static constexpr bool IS_KNOWN = !isFunctionType<V>;
    using Class = C;
    using Value = V;
};

template <typename V>
inline constexpr bool isPlain =
    isSame<V, bool> || isSame<V, int> || isSame<V, float> || isSame<V, double>;

// Fails for a member of a virtual base class, which has no fixed place.
template <
    typename Self,
    typename V,
    typename C,
    typename = decltype(static_cast<V Self::*>(any<V C::*>()))>
constexpr bool hasFixedPlace(int)
{
    return true;
}

template <typename Self, typename V, typename C>
constexpr bool hasFixedPlace(...)
{
    return false;
}

/// Where a member lies, which is what a pointer to it holds.
template <typename Self, typename V>
Member memberAt(V Self::*member)
{
    Member described{0, Argument<BareOf<V>>::PARAMETER.kind, isConst<V>};
    __builtin_memcpy(&described.offset, &member, sizeof member);
    return described;
}

/// Reads and writes a member of another type. Objects that are members are passed as parts of their
/// instance.
template <auto F, typename Self>
struct MemberThunk
{
    using Declared = typename TypeOfMember<decltype(F)>::Value;
    using Value = BareOf<Declared>;

    static_assert(checkType<Value>());

    static int read(Call& call, void* /*context*/)
    {
        Self& self = Argument<Self>::read(call, 1);
        if constexpr (isObjectClass<Value>())
        {
            call.services.pushPart(call, const_cast<Value*>(&(self.*F)), TYPE_ID<Value>, 1);
            return 1;
        }
        else
            return Argument<Value>::push(call, self.*F);
    }

    static int write(Call& call, void* /*context*/)
    {
        Self& self = Argument<Self>::read(call, 1);
        self.*F = Argument<Value>::read(call, 2);
        return 0;
    }

    static constexpr Signature READ{&read, PARAMETERS<Value, Self>, 1, nullptr};
    static constexpr Signature WRITE{&write, PARAMETERS<void, Self, Value>, 2, nullptr};
};

} // namespace tbScripts::typed

#pragma once

// What the entry of a leaf needs of the library (see Call.h).

#include "tbScripts/Api.h"
#include "tbScripts/typed/Call.h"

namespace tbScripts::typed
{

/// Reports that a leaf has thrown: its entry catches the exception and returns a neutral value.
TBSCRIPTS_API void reportLeafThrew() noexcept;

/// Returns `number`, with plain bits if it is NaN: to scripts, some others mean another value. Not
/// by comparison, which hosts that compile for finite numbers only do without.
inline double asNumber(double number) noexcept
{
    constexpr int FRACTION = 52;
    constexpr Natural NEGATIVE_WITHOUT_FRACTION = 0xFFF;
    static_assert(sizeof(Natural) == sizeof(number), "64 bits");
#if defined(__GNUC__)
    Natural bits = 0;
    __builtin_memcpy(&bits, &number, sizeof(bits));
#else
    const Natural bits = __builtin_bit_cast(Natural, number);
#endif
    const bool isPlain =
        bits >> FRACTION != NEGATIVE_WITHOUT_FRACTION || bits << (64 - FRACTION) == 0;
    return isPlain ? number : static_cast<double>(__builtin_nanf(""));
}

inline float asNumber(float number) noexcept
{
    constexpr int FRACTION = 23;
    constexpr unsigned NEGATIVE_WITHOUT_FRACTION = 0x1FF;
    static_assert(sizeof(unsigned) == sizeof(number), "32 bits");
#if defined(__GNUC__)
    unsigned bits = 0;
    __builtin_memcpy(&bits, &number, sizeof(bits));
#else
    const unsigned bits = __builtin_bit_cast(unsigned, number);
#endif
    const bool isPlain =
        bits >> FRACTION != NEGATIVE_WITHOUT_FRACTION || bits << (32 - FRACTION) == 0;
    return isPlain ? number : __builtin_nanf("");
}

} // namespace tbScripts::typed

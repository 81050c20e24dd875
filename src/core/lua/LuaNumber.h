#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

// Conversions between kinds of numbers, defined for every number: the language leaves those beyond
// the range of the target open.
namespace tbScripts::lua
{

/// Returns `number` without its fraction, the nearest `int` for a number beyond the range, 0 for
/// NaN.
inline std::int32_t truncateToInt(double number)
{
    constexpr double LOWEST = std::numeric_limits<std::int32_t>::min();
    constexpr double HIGHEST = std::numeric_limits<std::int32_t>::max();
    if (number >= HIGHEST)
        return std::numeric_limits<std::int32_t>::max();
    if (number <= LOWEST)
        return std::numeric_limits<std::int32_t>::min();
    return std::isnan(number) ? 0 : static_cast<std::int32_t>(number);
}

/// Returns the low 32 bits of `number` as a 64-bit integer without fraction; 0 for numbers beyond
/// 64 bits and for NaN. Compatibility: parameters are clamped, globals keep the low bits (decision
/// 0006).
inline std::int32_t lowBitsToInt(double number)
{
    constexpr double BEYOND_INT64 = 9223372036854775808.0;
    if (!(std::fabs(number) < BEYOND_INT64))
        return 0;
    return static_cast<std::int32_t>(
        static_cast<std::uint32_t>(static_cast<std::uint64_t>(static_cast<std::int64_t>(number))));
}

/// Returns the nearest `float`, infinite for numbers that would round beyond its range.
inline float narrowToFloat(double number)
{
    constexpr double HIGHEST = std::numeric_limits<float>::max();
    constexpr double ROUNDS_BEYOND = 0x1.ffffffp+127; // half a step above the highest
    const double magnitude = std::fabs(number);
    if (!(magnitude > HIGHEST))
        return static_cast<float>(number);
    const float nearest = magnitude < ROUNDS_BEYOND ? std::numeric_limits<float>::max()
                                                    : std::numeric_limits<float>::infinity();
    return number < 0 ? -nearest : nearest;
}

} // namespace tbScripts::lua

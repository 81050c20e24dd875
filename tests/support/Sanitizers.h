#pragma once

namespace tbScripts::test
{

/// Whether this build carries the address checker, which makes everything slower, frames larger,
/// and limits of the process useless.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool IS_SANITIZED = true;
#elif defined(__has_feature)
    #if __has_feature(address_sanitizer)
constexpr bool IS_SANITIZED = true;
    #else
constexpr bool IS_SANITIZED = false;
    #endif
#else
constexpr bool IS_SANITIZED = false;
#endif

/// Returns how often to repeat something: `times`, or a hundredth of that where every step costs
/// more.
constexpr int repetitions(int times)
{
    return IS_SANITIZED ? times / 100 : times;
}

} // namespace tbScripts::test

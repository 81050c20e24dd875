#pragma once

#include <cstdint>

namespace tbScripts
{

/// Operators of the script language that a user type can define, see `UserType::setOperator`. The
/// numbers are fixed.
enum class BUILT_IN_FUNCTION : std::int32_t
{
    TOSTRING = 0, ///< `tostring(a)`; returns a string
    UNM = 1,      ///< `-a`
    ADD = 2,      ///< `a + b`
    SUB = 3,      ///< `a - b`
    MUL = 4,      ///< `a * b`
    DIV = 5,      ///< `a / b`
    MOD = 6,      ///< `a % b`
    POW = 7,      ///< `a ^ b`
    CONCAT = 8,   ///< `a .. b`
    EQ = 9,       ///< `a == b`; returns a boolean, as do the next two
    LT = 10,      ///< `a < b`
    LE = 11       ///< `a <= b`
};

} // namespace tbScripts

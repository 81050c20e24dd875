#pragma once

#include <cstdint>

namespace tbScripts
{

/// Kind of a value that crosses the border between host and script.
///
/// The numbers are fixed: hosts compare and store them. A number above 9 is no kind; a parameter of
/// such a kind holds nothing.
enum FUNCTION_PARAMETER_TYPE : std::uint32_t
{
    PARAM_TYPE_VOID = 0,            ///< no value
    PARAM_TYPE_BOOL = 1,            ///< boolean; every script value converts to one
    PARAM_TYPE_INT = 2,             ///< 32-bit signed integer
    PARAM_TYPE_FLOAT = 3,           ///< 32-bit float
    PARAM_TYPE_DOUBLE = 4,          ///< 64-bit float
    PARAM_TYPE_STRING = 5,          ///< string of any bytes
    PARAM_TYPE_USER_TYPE_OWNED = 6, ///< host object whose ownership passes to the script
    PARAM_TYPE_USER_TYPE = 7,       ///< host object that the host continues to own
    PARAM_TYPE_SCRIPT_FUNCTION = 8, ///< reference to a script function
    PARAM_TYPE_SCRIPT_OBJECT = 9    ///< reference to a script table
};

} // namespace tbScripts

#pragma once

#include <cstdint>

namespace tbScripts
{

/// Kind of a value that crosses the border between host and script.
///
/// The numbers are fixed: they are compared and stored as numbers. A number above 9 is no kind;
/// a parameter that carries one holds nothing.
enum FUNCTION_PARAMETER_TYPE : std::uint32_t
{
    PARAM_TYPE_VOID = 0,            ///< no value
    PARAM_TYPE_BOOL = 1,            ///< truth value; every script value has one
    PARAM_TYPE_INT = 2,             ///< 32-bit signed integer
    PARAM_TYPE_FLOAT = 3,           ///< 32-bit float
    PARAM_TYPE_DOUBLE = 4,          ///< 64-bit float
    PARAM_TYPE_STRING = 5,          ///< text
    PARAM_TYPE_USER_TYPE_OWNED = 6, ///< host object that the script owns once it is handed over
    PARAM_TYPE_USER_TYPE = 7,       ///< host object that the host keeps
    PARAM_TYPE_SCRIPT_FUNCTION = 8, ///< reference to a script function
    PARAM_TYPE_SCRIPT_OBJECT = 9    ///< reference to a script table
};

} // namespace tbScripts

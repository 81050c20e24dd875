#pragma once

#include <cstdint>

namespace tbScripts
{

/// The interpreter that a script is compiled for and that an environment runs.
enum INTERPRETER : std::uint32_t
{
    INTERPRETER_UNKNOWN = 0, ///< none; named "UNKNOWN"
    INTERPRETER_LUA = 1      ///< named "lua"
};

} // namespace tbScripts

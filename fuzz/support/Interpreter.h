#pragma once

#include <tbScripts/Environment.h>

#include <string>

namespace tbScripts::fuzz
{

/// Compiles `sources` for Lua and runs them in `environment`; returns whether both worked.
bool runScript(Environment& environment, const std::string& sources);

/// Calls the global script function `name` with two values and returns whether it gave true.
bool askScript(
    Environment& environment,
    const char* name,
    const ScriptObjectReference& left,
    const ScriptObjectReference& right);

} // namespace tbScripts::fuzz

#pragma once

#include <tbMemory/StringView.h>

#include <string>
#include <string_view>
#include <vector>

namespace tbScripts
{
class Environment;
}

namespace tool
{

/// Sets the global table `arg`: [0] to `scriptName`, [1] and following to `arguments`. On failure
/// the environment's last result says why.
bool provideArguments(
    tbScripts::Environment& environment,
    const tbMemory::StringView& scriptName,
    const std::vector<std::string>& arguments);

/// Returns a Lua string literal of these bytes.
std::string literalOf(std::string_view bytes);

} // namespace tool

#pragma once

#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

// The messages of scripts. docs/messages.md lists them with their causes.
namespace tbScripts::messages
{

constexpr const char* SCRIPT_WITHOUT_INTERPRETER =
    "Can't load if the InterpreterType has not been set.";

constexpr const char* SCRIPT_TYPE_UNKNOWN =
    "Script type requested unknown. This will disable the Script.";

constexpr const char* NOT_ENOUGH_MEMORY = "not enough memory";

inline tbMemory::String
compilationFailed(const tbMemory::StringView& scriptName, const tbMemory::StringView& reason)
{
    return "Error while compiling script '" + tbMemory::String(scriptName) + "' : " + reason;
}

} // namespace tbScripts::messages

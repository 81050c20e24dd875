#pragma once

#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

// The messages of environments. docs/messages.md lists them with their causes.
namespace tbScripts::messages
{

constexpr const char* ENVIRONMENT_TYPE_UNKNOWN =
    "Environment type requested unknown. This will disable the Environment.";

constexpr const char* NO_MEMORY_FOR_STATE =
    "Not enough memory for an interpreter. This will disable the Environment.";

constexpr const char* EXECUTION_WITHOUT_INTERPRETER =
    "Can't execute if the InterpreterType has not been set.";

constexpr const char* HAS_NO_INTERPRETER =
    "', which has no InterpreterType. This will have no effect.";
constexpr const char* HAS_NO_INTERPRETER_NULL =
    "', which has no InterpreterType. This will have no effect, returning nullptr.";
constexpr const char* HAS_NO_INTERPRETER_VOID =
    "', which has no InterpreterType. This will have no effect, returning VOID.";
constexpr const char* HAS_NO_INTERPRETER_EMPTY_BUFFER =
    "', which has no InterpreterType. This will have no effect, returning empty buffer.";

inline tbMemory::String environmentIsRunning(const tbMemory::StringView& environmentName)
{
    return "Environment '" + tbMemory::String(environmentName) +
           "' is running a script. Its type can't be changed from inside.";
}

inline tbMemory::String functionAlreadyExistant(const tbMemory::StringView& functionName)
{
    return "Function '" + tbMemory::String(functionName) +
           "' already existant. Resetting its state before returning it. This might break "
           "previous usage of the function.";
}

inline tbMemory::String userTypeAlreadyExistant(const tbMemory::StringView& typeName)
{
    return "User type '" + tbMemory::String(typeName) +
           "' already existant. Resetting its state before returning it. This might hold "
           "unexpected results.";
}

inline tbMemory::String namespaceAlreadyExistant(const tbMemory::StringView& namespaceName)
{
    return "Namespace '" + tbMemory::String(namespaceName) +
           "' already existant. Returning it as-is, this might hold unexpected results.";
}

// Compatibility: there is no blank before "not" (decision 0006).
inline tbMemory::String scriptOfOtherInterpreter(const tbMemory::StringView& scriptName)
{
    return "Script '" + tbMemory::String(scriptName) +
           "'not of the right InterpreterType. Currently expecting Lua.";
}

inline tbMemory::String scriptWithoutBytecode(const tbMemory::StringView& scriptName)
{
    return "Script '" + tbMemory::String(scriptName) +
           "' has no bytecode ready. Cannot execute anything, be sure the script is correctly "
           "loaded.";
}

inline tbMemory::String
executionFailed(const tbMemory::StringView& scriptName, const tbMemory::StringView& reason)
{
    return "Error while executing script '" + tbMemory::String(scriptName) + "' : " + reason;
}

inline tbMemory::String valueIsTooLong(const tbMemory::StringView& limit)
{
    return "A script value takes more than " + tbMemory::String(limit) +
           " bytes, the limit of its environment. It is not serialized.";
}

inline tbMemory::String outputNotUnpacked(const tbMemory::StringView& outputIndex)
{
    return "Could not unpack parameter " + tbMemory::String(outputIndex) +
           " of output from lua function, type mismatch. Aborting unpack.";
}

} // namespace tbScripts::messages

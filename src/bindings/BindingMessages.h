#pragma once

#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

// The texts of host bindings. docs/messages.md lists them with their causes.
namespace tbScripts::messages
{

inline tbMemory::String functionNotBound(const tbMemory::StringView& functionName)
{
    return "Function '" + tbMemory::String(functionName) +
           "' called but no user function is bound. Call having no effect.";
}

inline tbMemory::String functionIsGone(const tbMemory::StringView& functionName)
{
    return "Function '" + tbMemory::String(functionName) + "' does not exist anymore.";
}

inline tbMemory::String parameterNotHandled(const tbMemory::StringView& functionName)
{
    return "Error while requesting parameter for function '" + tbMemory::String(functionName) +
           "', parameter type not handled.";
}

inline tbMemory::String outputNotHandled(const tbMemory::StringView& functionName)
{
    return "Error while filling output for function '" + tbMemory::String(functionName) +
           "', parameter type not handled.";
}

inline tbMemory::String typeMismatch(
    const tbMemory::StringView& line,
    const tbMemory::StringView& functionName,
    const tbMemory::StringView& expectedTypeName,
    const tbMemory::StringView& actualTypeName)
{
    return "Error l." + tbMemory::String(line) + " while calling " + functionName + ". Expected " +
           expectedTypeName + ", got " + actualTypeName + ".";
}

} // namespace tbScripts::messages

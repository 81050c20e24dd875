#pragma once

#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

// The messages of host bindings. docs/messages.md lists them with their causes.
namespace tbScripts::messages
{

inline tbMemory::String functionNotBound(const tbMemory::StringView& functionName)
{
    return "Function '" + tbMemory::String(functionName) +
           "' called but no user function is bound. Call having no effect.";
}

constexpr const char* LEAF_HAS_THROWN =
    "A leaf function has thrown an exception, which it promised not to do.";

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

inline tbMemory::String methodAlreadyRegistered(
    const tbMemory::StringView& methodName, const tbMemory::StringView& typeName)
{
    return "Setting method '" + tbMemory::String(methodName) + "' on user type '" + typeName +
           "', but this method is already registered. State will be changed, but this might hold "
           "unexpected results";
}

inline tbMemory::String unknownOperator(const tbMemory::StringView& fullTypeName)
{
    return "Unknown build in function, can't process overload for type '" +
           tbMemory::String(fullTypeName) + "'. Aborting.";
}

inline tbMemory::String
namespaceAlreadyRegistered(const tbMemory::StringView& name, const tbMemory::StringView& parentName)
{
    return "Setting namespace '" + tbMemory::String(name) + "' in namespace '" + parentName +
           "', but this namespace is already registered. State will be changed, but this might "
           "hold unexpected results";
}

inline tbMemory::String
userTypeAlreadyRegistered(const tbMemory::StringView& name, const tbMemory::StringView& parentName)
{
    return "Setting user type '" + tbMemory::String(name) + "' in namespace '" + parentName +
           "', but this type is already registered. State will be changed, but this might hold "
           "unexpected results";
}

inline tbMemory::String
functionAlreadyRegistered(const tbMemory::StringView& name, const tbMemory::StringView& parentName)
{
    return "Setting function '" + tbMemory::String(name) + "' in namespace '" + parentName +
           "', but this function is already registered. State will be changed, but this might "
           "hold unexpected results";
}

inline tbMemory::String userTypeNotDeclared(const tbMemory::StringView& typeName)
{
    return "User type '" + tbMemory::String(typeName) +
           "' is not declared. Its instances have no methods, and scripts will not destroy them.";
}

inline tbMemory::String userTypeIsGone(const tbMemory::StringView& typeName)
{
    return "User type '" + tbMemory::String(typeName) + "' does not exist anymore.";
}

inline tbMemory::String notAnInstance(const tbMemory::StringView& typeName)
{
    return "Expected an instance of user type '" + tbMemory::String(typeName) + "'.";
}

inline tbMemory::String arrayAccessNotPrepared(const tbMemory::StringView& typeName)
{
    return "Array access of user type '" + tbMemory::String(typeName) +
           "' is not declared with an instance and an index.";
}

inline tbMemory::String baseNotBound(const tbMemory::StringView& typeName)
{
    return "User type '" + tbMemory::String(typeName) +
           "' can't have a base class that is no user type of this environment yet.";
}

inline tbMemory::String overloadIsAmbiguous()
{
    return "An overload takes the same arguments as one before it. It is dropped.";
}

constexpr const char* NO_SCRIPT_FUNCTION =
    "A script function is called that designates nothing, or whose environment is gone.";

inline tbMemory::String resultNotDeclared(const tbMemory::StringView& functionName)
{
    return "Error while calling " + tbMemory::String(functionName) +
           ". The type of its result is no user type of this environment.";
}

inline tbMemory::String resultTooLarge(const tbMemory::StringView& functionName)
{
    return "Error while calling " + tbMemory::String(functionName) +
           ". Its result is an integer that scripts can't represent.";
}

inline tbMemory::String nameIsReserved(const tbMemory::StringView& name)
{
    return "The interpreter uses the name '" + tbMemory::String(name) +
           "' itself. It can't be declared.";
}

} // namespace tbScripts::messages

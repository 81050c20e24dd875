#pragma once

#include <tbScripts/Function.h>
#include <tbScripts/UserType.h>

#include <initializer_list>
#include <string>

namespace demo
{

using Parameters = tbMemory::BufferView<tbScripts::FunctionParameter>;

/// What a host function expects in one place: a kind, and for user types the type's full name.
struct Expected
{
    Expected(tbScripts::FUNCTION_PARAMETER_TYPE expectedKind, const char* fullTypeName = "")
        : kind(expectedKind)
        , typeName(fullTypeName)
    {
    }

    tbScripts::FUNCTION_PARAMETER_TYPE kind;
    const char* typeName;
};

/// Adds `parameters` to those that `function` has already, and binds `callable`.
///
/// If the library could not create the function, `function` is null and the log says why; this does
/// nothing then.
void define(
    tbScripts::Function* function,
    std::initializer_list<Expected> parameters,
    tbScripts::Function::Callable callable);

/// Returns a copy of the string in `parameter`.
std::string textOf(const tbScripts::FunctionParameter& parameter);

} // namespace demo

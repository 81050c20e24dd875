#pragma once

#include "tbScripts/Callable.h"
#include "tbScripts/FunctionParameter.h"
#include "tbScripts/FunctionParameterType.h"

#include <tbMemory/BufferView.h>
#include <tbMemory/StringView.h>

namespace tbScripts
{

/// Input of `UserType::setField`.
struct UserTypeFieldDescriptor
{
    /// Receives the instance's object and returns the field's value. If it is empty, scripts cannot
    /// read the field. The interpreter reports what it throws.
    Callable<FunctionParameter(void*)> getter;

    /// Receives the instance and the value. If it is empty, writing has no effect. A `std::string`
    /// that it throws becomes a script error; the interpreter reports other exceptions.
    Callable<void(const tbMemory::BufferView<FunctionParameter>&)> setter;

    tbMemory::StringView name; ///< name of the field in scripts; copied

    /// Kind of the value that the setter receives; another kind is a script error.
    FUNCTION_PARAMETER_TYPE type = PARAM_TYPE_VOID;

    /// Full name of the value's user type, for the two kinds that have one. Copied.
    tbMemory::StringView userTypeName;
};

/// Input of `UserType::setArrayAccess`.
struct UserTypeArrayDescriptor
{
    /// Receives the instance and the index and returns the element. If it is empty, every element
    /// is nil.
    Callable<FunctionParameter(const tbMemory::BufferView<FunctionParameter>&)> read;

    /// Receives the instance, the index and the value. If it is empty, writing has no effect. A
    /// `std::string` that `read` or `write` throws becomes a script error.
    Callable<void(const tbMemory::BufferView<FunctionParameter>&)> write;

    /// Kind of the value that `write` receives; another kind is a script error.
    FUNCTION_PARAMETER_TYPE type = PARAM_TYPE_VOID;

    /// Full name of the value's user type, for the two kinds that have one. Copied.
    tbMemory::StringView userTypeName;
};

} // namespace tbScripts

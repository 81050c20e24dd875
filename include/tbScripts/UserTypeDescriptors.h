#pragma once

#include "tbScripts/FunctionParameter.h"
#include "tbScripts/FunctionParameterType.h"

#include <tbMemory/BufferView.h>
#include <tbMemory/StringView.h>

#include <functional>

namespace tbScripts
{

/// A field of a user type.
struct UserTypeFieldDescriptor
{
    /// Gets the instance's object, returns the field's value. Empty: cannot be read.
    std::function<FunctionParameter(void*)> getter;

    /// Gets the instance and the value. Empty: writing has no effect. A `std::string` that it
    /// throws becomes a script error; all else is left to the interpreter, as with the getter.
    std::function<void(const tbMemory::BufferView<FunctionParameter>&)> setter;

    tbMemory::StringView name; ///< what scripts call it; copied

    /// Kind of the value that the setter gets; another one in the script is a script error.
    FUNCTION_PARAMETER_TYPE type = PARAM_TYPE_VOID;

    /// Full name of the value's user type, for the two kinds that have one. Copied.
    tbMemory::StringView userTypeName;
};

/// How a user type is indexed by numbers.
struct UserTypeArrayDescriptor
{
    /// Gets the instance and the index, returns the element. Empty: every element is nil.
    std::function<FunctionParameter(const tbMemory::BufferView<FunctionParameter>&)> read;

    /// Gets the instance, the index and the value. Empty: writing has no effect. A `std::string`
    /// that it or `read` throws becomes a script error.
    std::function<void(const tbMemory::BufferView<FunctionParameter>&)> write;

    /// Kind of the value that `write` gets; another one in the script is a script error.
    FUNCTION_PARAMETER_TYPE type = PARAM_TYPE_VOID;

    /// Full name of the value's user type, for the two kinds that have one. Copied.
    tbMemory::StringView userTypeName;
};

} // namespace tbScripts

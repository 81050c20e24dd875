#pragma once

#include "tbScripts/Api.h"
#include "tbScripts/FunctionParameter.h"
#include "tbScripts/FunctionParameterType.h"

#include <tbMemory/BufferView.h>
#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

#include <functional>
#include <memory>

namespace tbScripts
{

struct FunctionDefinition;

namespace lua
{
class LuaFunction;
}

/// Host function that scripts call by name: its declared parameters and the callable behind it.
///
/// A new function is unbound: calling it logs and has no effect. It may be changed, reset or
/// destroyed while its callable runs; the running call finishes with what it began with.
class TBSCRIPTS_API Function
{
public:
    /// What the host binds: gets the script's arguments, one for each declared parameter, and
    /// returns the result, `FunctionParameter::VOID` for none. The arguments are good during the
    /// call. A `std::string` or `std::exception` that it throws becomes a script error.
    using Callable =
        std::function<FunctionParameter(const tbMemory::BufferView<FunctionParameter>&)>;

    /// Makes an unbound function without parameters.
    explicit Function(const tbMemory::StringView& name);

    ///@{
    /// Copies name, declared parameters and callable.
    ///
    /// Kept: the default callable of an unbound function still calls that of `other`; after the end
    /// of `other` it reports with its name.
    Function(const Function& other);
    Function& operator=(const Function& other);
    ///@}

    /// Ends the function. Scripts that have kept it get an error when they call it.
    virtual ~Function();

    /// Returns the name that scripts call it by.
    ///
    /// Valid until: this function is assigned to or destroyed.
    tbMemory::StringView getName() const;

    /// Declares one more parameter. `typeName` is the full name of the expected user type, empty
    /// to accept every one; it is ignored for all other kinds.
    void addParameter(
        FUNCTION_PARAMETER_TYPE type,
        const tbMemory::StringView& typeName = tbMemory::StringView());

    /// Binds `callable`. An empty one makes each call a script error.
    void setFunction(Callable callable);

    /// Forgets the declared parameters and the callable.
    void reset();

    /// What an unbound function does: logs (tag "Function") and returns
    /// `FunctionParameter::VOID`.
    FunctionParameter defaultFunction(const tbMemory::BufferView<FunctionParameter>& parameters);

private:
    friend class lua::LuaFunction; // runs the definition

    // The definition as one that may be changed: a running one is left to its calls, and this
    // function goes on with a copy.
    FunctionDefinition& _editDefinition();

    void _adopt(FunctionDefinition* definition);

    Callable _defaultCallable() const;

    std::shared_ptr<tbMemory::String> m_name; // shared with default callables and running calls
    FunctionDefinition* m_definition;         // never null, counted: running calls share it
};

} // namespace tbScripts

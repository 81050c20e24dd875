#pragma once

#include "tbScripts/Api.h"
#include "tbScripts/Callable.h"
#include "tbScripts/FunctionParameter.h"
#include "tbScripts/FunctionParameterType.h"

#include <tbMemory/BufferView.h>
#include <tbMemory/StringView.h>

namespace tbScripts
{

struct FunctionDefinition;

/// Host function that scripts call by name: its declared parameters and the callable behind it.
///
/// A new function is unbound: calling it logs and has no effect. The host may change, reset or
/// destroy a function while its callable runs; the running call finishes with the parameters and
/// the callable that it started with.
///
/// @code
/// Function* const heal = environment.setFunc("heal");
/// heal->addParameter(PARAM_TYPE_INT);
/// heal->addParameter(PARAM_TYPE_DOUBLE);
/// heal->setFunction(
///     [&world](const Parameters& arguments)
///     {
///         if (!world.isAlive(arguments[0].getInt()))
///             throw std::string("heal: there is no such unit");
///         return world.heal(arguments[0].getInt(), arguments[1].getDouble());
///     });
/// @endcode
class TBSCRIPTS_API Function
{
public:
    /// The callable that the host binds. It receives the script's arguments, one for each declared
    /// parameter, and returns the result, `FunctionParameter::VOID` for none. A `std::string` or
    /// `std::exception` that it throws becomes a script error.
    ///
    /// Valid until: the call returns, for the arguments.
    using Callable =
        tbScripts::Callable<FunctionParameter(const tbMemory::BufferView<FunctionParameter>&)>;

    /// Creates an unbound function without parameters.
    explicit Function(const tbMemory::StringView& name);

    ///@{
    /// Copies name, declared parameters and callable.
    ///
    /// Compatibility: the default callable of an unbound copy still calls that of `other`, and uses
    /// its name after `other` has been destroyed (decision 0006).
    Function(const Function& other);
    Function& operator=(const Function& other);
    ///@}

    /// Destroys the function. A script that still holds it gets an error when it calls it.
    virtual ~Function();

    /// Returns the name by which scripts call the function.
    ///
    /// Valid until: this function is assigned to or destroyed.
    tbMemory::StringView getName() const;

    /// Declares one more parameter. `typeName` is the full name of the expected user type, empty
    /// to accept every user type; other kinds ignore it.
    void addParameter(
        FUNCTION_PARAMETER_TYPE type,
        const tbMemory::StringView& typeName = tbMemory::StringView());

    /// Binds `callable`. An empty one makes each call a script error.
    void setFunction(Callable callable);

    /// Removes the declared parameters and the callable.
    void reset();

    /// The callable of an unbound function: logs (tag "Function") and returns
    /// `FunctionParameter::VOID`.
    FunctionParameter defaultFunction(const tbMemory::BufferView<FunctionParameter>& parameters);

private:
    friend struct FunctionAccess; // lends the definition to the interpreter's side, which runs it

    // The definition as one that may be changed: a running one is left to its calls, and this
    // function goes on with a copy.
    FunctionDefinition& _editDefinition();

    void _adopt(FunctionDefinition* definition);

    FunctionDefinition* m_definition; // never null, counted: running calls share it
};

} // namespace tbScripts

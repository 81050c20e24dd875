#pragma once

#include "tbScripts/Function.h"
#include "tbScripts/FunctionParameter.h"

#include <tbMemory/String.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace tbScripts
{

/// What one declaration of a host function consists of. Counted: each call that runs it holds it,
/// so that the function may be changed or destroyed meanwhile.
///
/// Invariant: while a call runs, only that call and the calls inside it touch the definition.
struct FunctionDefinition
{
    explicit FunctionDefinition(std::shared_ptr<tbMemory::String> functionName);

    FunctionDefinition(const FunctionDefinition&) = delete;
    FunctionDefinition& operator=(const FunctionDefinition&) = delete;

    /// Returns a new definition with the same declarations and callable, held once.
    FunctionDefinition* clone() const;

    /// Appends a declared parameter. Requires: no call runs.
    void addParameter(FunctionParameter parameter);

    /// Returns the parameters for a call inside `runningCalls` others of this definition. Those of
    /// the outermost call are the declared ones themselves.
    std::vector<FunctionParameter>& parametersOfNextCall()
    {
        return runningCalls == 0 ? parameters : _innerParametersOfNextCall();
    }

    std::shared_ptr<tbMemory::String> name;
    std::vector<FunctionParameter> parameters; // declared; the outermost call fills them in place
    Function::Callable callable;

    std::uint32_t holders = 1;
    std::uint32_t runningCalls = 0;

private:
    std::vector<FunctionParameter>& _innerParametersOfNextCall();

    std::vector<std::unique_ptr<std::vector<FunctionParameter>>> m_innerParameters;
};

/// Gives up one hold on `definition`.
void releaseDefinition(FunctionDefinition* definition);

/// One call of a host function: holds its definition and the parameters that are its own.
class FunctionCall
{
public:
    explicit FunctionCall(FunctionDefinition& definition)
        : m_definition(definition)
        , m_parameters(definition.parametersOfNextCall())
    {
        ++m_definition.holders;
        ++m_definition.runningCalls;
    }

    FunctionCall(const FunctionCall&) = delete;
    FunctionCall& operator=(const FunctionCall&) = delete;

    ~FunctionCall()
    {
        --m_definition.runningCalls;
        releaseDefinition(&m_definition);
    }

    std::vector<FunctionParameter>& getParameters() const { return m_parameters; }

    const tbMemory::String& getName() const { return *m_definition.name; }

    const Function::Callable& getCallable() const { return m_definition.callable; }

private:
    FunctionDefinition& m_definition;
    std::vector<FunctionParameter>& m_parameters;
};

} // namespace tbScripts

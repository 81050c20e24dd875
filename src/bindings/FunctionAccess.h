#pragma once

#include "bindings/CallDefinition.h"

#include "tbScripts/Function.h"

#include <utility>

namespace tbScripts
{

/// Lends the inside of a host function to the interpreter's side, which its public header does not
/// name.
struct FunctionAccess
{
    static FunctionDefinition& getDefinition(const Function& function)
    {
        return *function.m_definition;
    }

    /// Makes `callable` what scripts call. The one until now comes out in it, to be destroyed last:
    /// its destructor may run code of the host.
    static void bindTyped(Function& function, Counted<TypedCallable>& callable)
    {
        FunctionDefinition& definition = function._editDefinition();
        definition.endLeaf();
        std::swap(definition.typed, callable);
    }
};

} // namespace tbScripts

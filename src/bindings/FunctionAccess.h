#pragma once

#include "tbScripts/Function.h"

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
};

} // namespace tbScripts

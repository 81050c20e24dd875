#pragma once

#include "scripts/ScriptState.h"

#include "tbScripts/Script.h"

#include <memory>

namespace tbScripts
{

/// Lends the inside of a script to the environments that run it.
struct ScriptAccess
{
    /// Returns the name, shared: it outlives the script, and a later change shows in it.
    static std::shared_ptr<const tbMemory::String> getName(const Script& script)
    {
        return script.m_state->name;
    }

    /// Returns what holds the compiled form; never null.
    static const ScriptStrategy* getStrategy(const Script& script) { return script._getStrategy(); }
};

} // namespace tbScripts

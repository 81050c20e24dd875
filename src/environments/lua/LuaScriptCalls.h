#pragma once

#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateHandle.h"
#include "core/lua/calls/LuaCallOutcome.h"
#include "core/lua/calls/LuaHostCall.h"
#include "environments/lua/chunks/LuaChunkCache.h"
#include "scripts/lua/LuaBytecode.h"

#include "tbScripts/FunctionParameter.h"
#include "tbScripts/ScriptObjectReference.h"

#include <tbMemory/BufferView.h>
#include <tbMemory/String.h>

#include <cstddef>

namespace tbScripts::lua
{

/// Runs chunks and calls functions in one state, and caches what makes the next run faster.
///
/// A call that runs out of memory collects garbage before it returns: the values that took the
/// memory are garbage by then, and without the collection the interpreter would refuse every
/// further request.
class LuaScriptCalls
{
public:
    /// Requires: `handle` outlives this object.
    explicit LuaScriptCalls(const LuaStateHandle& handle)
        : m_handle(handle)
    {
    }

    /// Loads `bytecode` as a chunk of that name, unless it is cached, and runs it. Drops its
    /// results.
    LuaCallOutcome
    runChunk(LuaHostCall& call, const LuaBytecode& bytecode, const tbMemory::String& chunkName);

    /// Calls `function` with `inputs` and reads its results into `outputs`.
    ///
    /// `mismatch` becomes the index of the first output whose result is of another kind, if there
    /// is one; that output and all later ones stay unchanged.
    LuaCallOutcome callFunction(
        LuaHostCall& call,
        const ScriptObjectReference& function,
        const tbMemory::BufferView<FunctionParameter>& inputs,
        tbMemory::BufferView<FunctionParameter>& outputs,
        std::size_t& mismatch) const;

private:
    const LuaStateHandle& m_handle;
    LuaChunkCache m_chunks;
    const tbMemory::String m_nameOfCall{"callScript"}; // in messages of the bridge
};

} // namespace tbScripts::lua

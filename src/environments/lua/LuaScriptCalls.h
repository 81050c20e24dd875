#pragma once

#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateHandle.h"
#include "core/lua/calls/LuaHostCall.h"
#include "environments/lua/chunks/LuaChunkCache.h"
#include "scripts/lua/LuaBytecode.h"

#include "tbScripts/FunctionParameter.h"
#include "tbScripts/ScriptObjectReference.h"

#include <tbMemory/BufferView.h>
#include <tbMemory/String.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace tbScripts::lua
{

/// How a run or a call ended.
struct LuaCallOutcome
{
    std::int32_t code = 0; // of an ExecutionResult; 0 is success
    std::string errorText; // what the interpreter says, empty on success
};

/// Loads `bytecode` as a chunk of that name, unless `cache` has it, and runs it. Its results are
/// dropped.
LuaCallOutcome runChunk(
    LuaHostCall& call,
    const LuaStateHandle& handle,
    LuaChunkCache& cache,
    const LuaBytecode& bytecode,
    const tbMemory::String& chunkName);

/// Calls `function` with `inputs` and reads its results into `outputs`.
///
/// `mismatch` becomes the index of the first output whose result is of another kind, if there is
/// one; that output and all later ones stay as they were.
LuaCallOutcome callFunction(
    LuaHostCall& call,
    const LuaStateHandle& handle,
    const ScriptObjectReference& function,
    const tbMemory::BufferView<FunctionParameter>& inputs,
    tbMemory::BufferView<FunctionParameter>& outputs,
    std::size_t& mismatch);

} // namespace tbScripts::lua

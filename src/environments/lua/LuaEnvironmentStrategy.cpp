// How a Lua back-end opens and closes its state, and how it runs scripts.

#include "environments/lua/LuaEnvironmentStrategy.h"

#include "bindings/lua/types/LuaFinalisers.h"
#include "core/LogSources.h"
#include "core/lua/LuaTables.h"
#include "core/lua/calls/LuaHostCall.h"
#include "core/lua/references/LuaScriptObjectInterpreterReference.h"
#include "environments/EnvironmentMessages.h"
#include "environments/lua/LuaGlobals.h"
#include "environments/lua/bytes/LuaValueReader.h"
#include "environments/lua/bytes/LuaValueWriter.h"
#include "scripts/ScriptAccess.h"
#include "scripts/lua/LuaScriptStrategy.h"

#include "tbScripts/LogManager.h"
#include "tbScripts/Script.h"

#include <utility>

namespace tbScripts::lua
{

LuaEnvironmentStrategy::LuaEnvironmentStrategy(Name environmentName)
    : EnvironmentStrategy(std::move(environmentName))
    , m_handle(LuaStateHandle::open())
    , m_calls(m_handle)
{
}

LuaEnvironmentStrategy::~LuaEnvironmentStrategy()
{
    m_handle.close();
}

bool LuaEnvironmentStrategy::hasState() const
{
    return m_handle.get() != nullptr;
}

const LuaStateHandle& LuaEnvironmentStrategy::getHandle() const
{
    return m_handle;
}

bool LuaEnvironmentStrategy::execute(const Script& script)
{
    LuaHostCall call(m_handle);
    if (call.isRefused())
        return false;
    resetResult();
    // The run may destroy the script, so this holds the parts that it needs.
    const std::shared_ptr<const tbMemory::String> scriptName = ScriptAccess::getName(script);
    if (script.getTargetInterpreter() != INTERPRETER_LUA)
        return _fail(messages::scriptOfOtherInterpreter(*scriptName), EXECUTION_OTHER_INTERPRETER);

    // A disabled script still names Lua as its interpreter.
    const auto* const compiler =
        dynamic_cast<const LuaScriptStrategy*>(ScriptAccess::getStrategy(script));
    const std::shared_ptr<const LuaBytecode> bytecode =
        compiler ? compiler->getBytecode() : nullptr;
    if (!bytecode)
        return _fail(messages::scriptWithoutBytecode(*scriptName), EXECUTION_NO_BYTECODE);

    const LuaCallOutcome outcome = m_calls.runChunk(call, *bytecode, *scriptName);
    if (outcome.code != EXECUTION_SUCCESS)
        return _fail(messages::executionFailed(*scriptName, outcome.errorText), outcome.code);
    resetResult(); // calls inside the run have set theirs
    return true;
}

void LuaEnvironmentStrategy::requestGarbageCollection()
{
    LuaHostCall call(m_handle, LuaHostCall::entryOfCollection(m_handle));
    restoreFinalisers(call);
    collectGarbageTwice(call);
}

void LuaEnvironmentStrategy::clearGlobals()
{
    LuaHostCall call(m_handle, LuaHostCall::ENTRY::UPKEEP);
    restoreFinalisers(call);
    call.run(&keepForeignTables);
    call.run([this](lua_State* state) { clearAllGlobals(*m_handle.getSlot(), state); });
    collectGarbageTwice(call);
}

bool LuaEnvironmentStrategy::callScriptFunction(
    const ScriptObjectReference& function,
    const tbMemory::BufferView<FunctionParameter>& inputs,
    tbMemory::BufferView<FunctionParameter>& outputs)
{
    LuaHostCall call(m_handle);
    if (call.isRefused())
        return false;
    resetResult();
    std::size_t mismatch = outputs.size();
    const LuaCallOutcome outcome = m_calls.callFunction(call, function, inputs, outputs, mismatch);
    if (outcome.code != EXECUTION_SUCCESS)
        return _fail(outcome.errorText, outcome.code);
    if (mismatch < outputs.size())
    {
        LogManager::getInstance()->log(
            messages::outputNotUnpacked(std::to_string(mismatch)),
            LOG_SOURCE_LUA_ENVIRONMENT_STRATEGY);
    }
    resetResult(); // calls inside the function have set theirs
    return true;
}

tbMemory::Buffer LuaEnvironmentStrategy::serializeScriptObject(
    const ScriptObjectReference& object, bool transferOwnership)
{
    LuaHostCall call(m_handle);
    if (call.isRefused())
        return tbMemory::Buffer();
    LuaValueWriter writer(*m_handle.getSlot(), transferOwnership, getSerializationLimit());
    call.run(
        [&](lua_State* state)
        {
            pushReferenced(state, object, m_handle);
            writer.write(state);
        });
    return writer.takeBuffer();
}

ScriptObjectReference
LuaEnvironmentStrategy::deserializeScriptObject(const tbMemory::BufferView<unsigned char>& bytes)
{
    LuaHostCall call(m_handle);
    if (call.isRefused())
        return ScriptObjectReference();
    LuaValueReader reader(*m_handle.getSlot(), bytes);
    // Everything is created first: an anchored value without holder would stay in the registry, and
    // own objects that still belong to the bytes.
    ScriptObjectReference value =
        LuaScriptObjectInterpreterReference::make(m_handle, reader.getType());
    bool isAnchored = false;
    call.run(
        [&](lua_State* state)
        {
            if (!reader.read(state))
                return;
            LuaScriptObjectInterpreterReference::of(value).anchor(state);
            reader.handOverOwnership(state);
            isAnchored = true;
        });
    if (!isAnchored)
        value = ScriptObjectReference();
    return value;
}

bool LuaEnvironmentStrategy::isRunning() const
{
    const LuaStateSlot* const slot = m_handle.getSlot();
    return slot && slot->isRunning();
}

bool LuaEnvironmentStrategy::isTearingDown() const
{
    return !m_handle.get() || m_handle.getSlot()->isTearingDown();
}

void LuaEnvironmentStrategy::beginTeardown()
{
    if (m_handle.getSlot())
        m_handle.getSlot()->beginTeardown();
}

void LuaEnvironmentStrategy::shutDown()
{
    {
        LuaHostCall call(m_handle, LuaHostCall::ENTRY::UPKEEP);
        restoreFinalisers(call);
    }
    m_handle.close();
}

void LuaEnvironmentStrategy::defer(std::function<void()> action)
{
    m_handle.getSlot()->defer(std::move(action));
}

bool LuaEnvironmentStrategy::_fail(const tbMemory::StringView& message, std::int32_t code)
{
    setFailure(message, code);
    LogManager::getInstance()->log(message, LOG_SOURCE_LUA_ENVIRONMENT);
    setFailure(message, code); // again: calls of the receiver have set theirs
    return false;
}

} // namespace tbScripts::lua

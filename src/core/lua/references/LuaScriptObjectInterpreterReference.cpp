#include "core/lua/references/LuaScriptObjectInterpreterReference.h"

#include "core/ExceptionContainment.h"
#include "core/LogSources.h"
#include "core/ScriptObjectInterpreterReferenceAccess.h"
#include "core/ScriptObjectReferenceBlock.h"
#include "core/lua/calls/LuaBoundary.h"
#include "core/lua/references/LuaRegistry.h"

#include "tbScripts/LogManager.h"

#include <string>
#include <utility>

namespace tbScripts::lua
{

ScriptObjectReference LuaScriptObjectInterpreterReference::make(
    const LuaStateHandle& handle, FUNCTION_PARAMETER_TYPE type)
{
    return ScriptObjectReferenceAccess::make<LuaScriptObjectInterpreterReference>(handle, type, 0);
}

LuaScriptObjectInterpreterReference::LuaScriptObjectInterpreterReference(
    LuaStateHandle handle, FUNCTION_PARAMETER_TYPE type, int slot)
    : ScriptObjectInterpreterReference(type)
    , m_handle(std::move(handle))
    , m_slot(slot)
    , m_hasOwnRelease(false)
{
    ScriptObjectInterpreterReferenceAccess::setInterpreter(*this, INTERPRETER_LUA);
}

LuaScriptObjectInterpreterReference::LuaScriptObjectInterpreterReference(
    LuaStateHandle handle, FUNCTION_PARAMETER_TYPE type, int slot, LuaReleaseAction release)
    : ScriptObjectInterpreterReference(type)
    , m_handle(std::move(handle))
    , m_slot(slot)
    , m_hasOwnRelease(true)
    , m_release(std::move(release))
{
    ScriptObjectInterpreterReferenceAccess::setInterpreter(*this, INTERPRETER_LUA);
}

LuaScriptObjectInterpreterReference::~LuaScriptObjectInterpreterReference()
{
    if (!m_handle.get())
        return;
    if (m_hasOwnRelease && m_handle.getSlot()->isInLeaf())
    {
        _deferOwnRelease();
        return;
    }
    std::string errorText;
    const bool isReleased = m_hasOwnRelease
                                ? _runOwnRelease(errorText)
                                : freeRegistrySlot(*m_handle.getSlot(), m_slot, errorText);
    if (isReleased)
        return;
    contain([&] { LogManager::getInstance()->log(errorText, LOG_SOURCE_LUA_ENVIRONMENT); }, [] {});
}

// Another reference to the same value is destroyed when no leaf runs any more.
void LuaScriptObjectInterpreterReference::_deferOwnRelease()
{
    const auto destroyAnother =
        [handle = m_handle, type = getType(), slot = m_slot, release = std::move(m_release)]
    { const LuaScriptObjectInterpreterReference another(handle, type, slot, release); };
    contain([&] { m_handle.getSlot()->defer(destroyAnother); }, [] {});
}

bool LuaScriptObjectInterpreterReference::_runOwnRelease(std::string& errorText) const
{
    return containLuaErrors(
        *m_handle.getSlot(),
        m_handle.get(),
        0,
        [this](lua_State* state)
        {
            if (m_release)
                m_release(state, m_slot, getType());
        },
        errorText);
}

int LuaScriptObjectInterpreterReference::slotOf(
    const ScriptObjectReference& reference, const LuaStateHandle& handle)
{
    const LuaScriptObjectInterpreterReference* const ours = find(reference);
    return ours && ours->m_handle.sharesStateWith(handle) ? ours->m_slot : 0;
}

const LuaScriptObjectInterpreterReference*
LuaScriptObjectInterpreterReference::find(const ScriptObjectReference& reference)
{
    const ScriptObjectInterpreterReference* const value = reference.getInterpreterReference();
    if (!value || ScriptObjectInterpreterReferenceAccess::getInterpreter(*value) != INTERPRETER_LUA)
        return nullptr;
    return static_cast<const LuaScriptObjectInterpreterReference*>(value);
}

void pushReferenced(
    lua_State* state, const ScriptObjectReference& reference, const LuaStateHandle& handle)
{
    const auto* const ours = LuaScriptObjectInterpreterReference::find(reference);
    if (ours && ours->getHandle().sharesStateWith(handle))
        ours->push(state);
    else
        lua_pushnil(state);
}

} // namespace tbScripts::lua

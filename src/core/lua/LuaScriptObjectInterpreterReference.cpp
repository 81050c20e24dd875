#include "core/lua/LuaScriptObjectInterpreterReference.h"

#include "core/ExceptionContainment.h"
#include "core/LogSources.h"
#include "core/ScriptObjectReferenceBlock.h"
#include "core/lua/LuaBoundary.h"
#include "core/lua/LuaRegistry.h"

#include "tbScripts/LogManager.h"

#include <string>
#include <typeinfo>
#include <utility>

namespace tbScripts::lua
{

ScriptObjectReference LuaScriptObjectInterpreterReference::make(
    const LuaStateHandle& handle, FUNCTION_PARAMETER_TYPE type)
{
    ScriptObjectReference made;
    made.m_block->makeValue<LuaScriptObjectInterpreterReference>(handle, type, 0);
    return made;
}

LuaScriptObjectInterpreterReference::LuaScriptObjectInterpreterReference(
    LuaStateHandle handle, FUNCTION_PARAMETER_TYPE type, int slot)
    : ScriptObjectInterpreterReference(type)
    , m_handle(std::move(handle))
    , m_slot(slot)
    , m_hasOwnRelease(false)
{
}

LuaScriptObjectInterpreterReference::LuaScriptObjectInterpreterReference(
    LuaStateHandle handle, FUNCTION_PARAMETER_TYPE type, int slot, LuaReleaseAction release)
    : ScriptObjectInterpreterReference(type)
    , m_handle(std::move(handle))
    , m_slot(slot)
    , m_hasOwnRelease(true)
    , m_release(std::move(release))
{
}

LuaScriptObjectInterpreterReference::~LuaScriptObjectInterpreterReference()
{
    lua_State* const state = m_handle.get();
    if (!state || (m_slot == 0 && !m_hasOwnRelease))
        return;
    std::string errorText;
    const bool isReleased = containLuaErrors(
        *m_handle.getSlot(),
        state,
        0,
        [this](lua_State* inner)
        {
            if (!m_hasOwnRelease)
                giveRegistrySlotBack(*m_handle.getSlot(), inner, m_slot);
            else if (m_release)
                m_release(inner, m_slot, getType());
        },
        errorText);
    if (isReleased)
        return;
    contain([&] { LogManager::getInstance()->log(errorText, LOG_SOURCE_LUA_ENVIRONMENT); }, [] {});
}

int LuaScriptObjectInterpreterReference::slotOf(
    const ScriptObjectReference& reference, const LuaStateHandle& handle)
{
    const ScriptObjectInterpreterReference* const value = reference.getInterpreterReference();
    // Exact type instead of a dynamic cast: this runs for every value that is pushed.
    if (!value || typeid(*value) != typeid(LuaScriptObjectInterpreterReference))
        return 0;
    const auto& ours = static_cast<const LuaScriptObjectInterpreterReference&>(*value);
    return ours.m_handle.sharesStateWith(handle) ? ours.m_slot : 0;
}

void pushReferenced(
    lua_State* state, const ScriptObjectReference& reference, const LuaStateHandle& handle)
{
    const int slot = LuaScriptObjectInterpreterReference::slotOf(reference, handle);
    if (slot == 0) // the registry keeps its own bookkeeping there
        lua_pushnil(state);
    else
        lua_rawgeti(state, LUA_REGISTRYINDEX, slot);
}

} // namespace tbScripts::lua

#include "core/lua/references/LuaScriptObjectInterpreterView.h"

#include "core/LogSources.h"
#include "core/lua/calls/LuaBoundary.h"
#include "core/lua/calls/LuaHostCall.h"
#include "core/lua/references/LuaRegistry.h"

#include "tbScripts/LogManager.h"

#include <memory>
#include <utility>

namespace tbScripts::lua
{

LuaScriptObjectInterpreterView::LuaScriptObjectInterpreterView() = default;

LuaScriptObjectInterpreterView::~LuaScriptObjectInterpreterView()
{
    end();
}

void LuaScriptObjectInterpreterView::lend(
    LuaCallbackScope& scope, FUNCTION_PARAMETER_TYPE type, int index, LuaReleaseAction release)
{
    lend(scope, type, index);
    m_hasOwnRelease = true;
    m_release = std::move(release);
}

void LuaScriptObjectInterpreterView::end()
{
    if (!m_scope)
        return;
    LuaCallbackScope& scope = *std::exchange(m_scope, nullptr);
    scope.removeView(*this);
    m_index = 0;
    if (const int keptSlot = std::exchange(m_keptSlot, 0))
        freeRegistrySlot(scope.getSlot(), keptSlot);
}

bool LuaScriptObjectInterpreterView::isForeignTo(const LuaStateSlot& slot) const
{
    return m_scope && &m_scope->getSlot() != &slot;
}

bool LuaScriptObjectInterpreterView::pushValue(lua_State* state) const
{
    if (m_keptSlot != 0)
    {
        lua_rawgeti(state, LUA_REGISTRYINDEX, m_keptSlot);
        return true;
    }
    if (!m_scope || m_index == 0 || !m_scope->isInnermost())
        return false;
    lua_pushvalue(state, m_index);
    return true;
}

ScriptObjectInterpreterReference* LuaScriptObjectInterpreterView::createReference()
{
    lua_State* const state = m_scope ? m_scope->getSlot().getRunning() : nullptr;
    if (!state)
        return nullptr;
    LuaStateSlot& slot = m_scope->getSlot();
    if (slot.isInLeaf())
    {
        refuseInLeaf(slot);
        return nullptr;
    }
    const LuaStateHandle handle(&slot);
    auto reference =
        m_hasOwnRelease
            ? std::make_unique<LuaScriptObjectInterpreterReference>(handle, m_type, 0, m_release)
            : std::make_unique<LuaScriptObjectInterpreterReference>(handle, m_type, 0);
    if (!pushValue(state))
        return nullptr;
    std::string errorText;
    const bool isAnchored = containLuaErrors(
        slot, state, 1, [&](lua_State* inner) { reference->anchor(inner); }, errorText);
    if (!isAnchored)
    {
        LogManager::getInstance()->log(errorText, LOG_SOURCE_LUA_ENVIRONMENT);
        return nullptr;
    }
    return reference.release();
}

bool LuaScriptObjectInterpreterView::_isKept() const
{
    return m_keptSlot != 0 || m_index == 0;
}

bool LuaScriptObjectInterpreterView::_keep(std::string& errorText)
{
    LuaStateSlot& slot = m_scope->getSlot();
    lua_pushvalue(m_scope->getThread(), m_index);
    return containLuaErrors(
        slot,
        m_scope->getThread(),
        1,
        [&](lua_State* state) { m_keptSlot = takeRegistrySlot(slot, state); },
        errorText);
}

} // namespace tbScripts::lua

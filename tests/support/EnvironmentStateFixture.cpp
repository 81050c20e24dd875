#include "support/EnvironmentStateFixture.h"

#include "support/InterpreterCalls.h"

namespace tbScripts::test
{

EnvironmentStateFixture::EnvironmentStateFixture()
    : m_state(InterpreterCalls::lastOpenedState())
{
}

lua_State* EnvironmentStateFixture::state() const
{
    return m_state;
}

int EnvironmentStateFixture::stackHeight() const
{
    return lua_gettop(m_state);
}

int EnvironmentStateFixture::countRegistrySlots() const
{
    int count = 0;
    lua_pushnil(m_state);
    while (lua_next(m_state, LUA_REGISTRYINDEX))
    {
        // Free slots hold the number of the next free one.
        const bool isSlot = lua_type(m_state, -2) == LUA_TNUMBER;
        const bool isFree = lua_type(m_state, -1) == LUA_TNUMBER;
        count += isSlot && !isFree ? 1 : 0;
        lua_pop(m_state, 1);
    }
    return count;
}

} // namespace tbScripts::test

#include "support/LuaStateFixture.h"

#include "bindings/lua/values/LuaInstanceBox.h"
#include "support/TypeTable.h"

namespace tbScripts::test
{

LuaStateFixture::LuaStateFixture()
    : m_handle(lua::LuaStateHandle::open())
{
}

LuaStateFixture::~LuaStateFixture()
{
    m_handle.close();
}

void LuaStateFixture::TearDown()
{
    if (m_handle.get())
    {
        EXPECT_EQ(lua_gettop(state()), 0);
    }
    LogFixture::TearDown();
}

lua_State* LuaStateFixture::state() const
{
    return m_handle.get();
}

const lua::LuaStateHandle& LuaStateFixture::handle() const
{
    return m_handle;
}

lua::LuaStateSlot& LuaStateFixture::slot() const
{
    return *m_handle.getSlot();
}

void LuaStateFixture::closeState()
{
    m_handle.close();
}

void LuaStateFixture::reopenState()
{
    m_handle.close();
    m_handle = lua::LuaStateHandle::open();
}

void LuaStateFixture::push(const std::string& code)
{
    ASSERT_EQ(luaL_loadstring(state(), code.c_str()), 0) << lua_tostring(state(), -1);
    ASSERT_EQ(lua_pcall(state(), 0, 1, 0), 0) << lua_tostring(state(), -1);
}

void LuaStateFixture::declareUserType(const std::string& fullName)
{
    publishTypeTable(slot(), state(), fullName);
}

int LuaStateFixture::countRegistrySlots() const
{
    int count = 0;
    lua_pushnil(state());
    while (lua_next(state(), LUA_REGISTRYINDEX))
    {
        // Free slots hold the number of the next free one.
        const bool isSlot = lua_type(state(), -2) == LUA_TNUMBER;
        const bool isFree = lua_type(state(), -1) == LUA_TNUMBER;
        count += isSlot && !isFree ? 1 : 0;
        lua_pop(state(), 1);
    }
    return count;
}

} // namespace tbScripts::test

// Metatables that are read in front of blocks are those that the interpreter returns.

#include "core/lua/LuaMetatableWord.h"

#include "support/LuaFunctionFixture.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tbScripts::test
{

class LuaMetatableWordTest : public LuaFunctionFixture
{
protected:
    ~LuaMetatableWordTest() override { lua::LuaMetatableWord::setKnown(m_wasKnown); }

    // The metatable of the full userdata on top of the stack.
    const void* metatableOnTop() const
    {
        return lua::metatableOf(state(), -1, lua_touserdata(state(), -1));
    }

    bool isInstance(const char* global)
    {
        lua_getglobal(state(), global);
        const lua::LuaInstance instance = lua::instanceAt(slot(), state(), -1);
        EXPECT_EQ(lua_gettop(state()), 1);
        lua_pop(state(), 1);
        return instance.box != nullptr;
    }

    const bool m_wasKnown = lua::LuaMetatableWord::isKnown();
    int m_object = 0;
};

TEST_F(LuaMetatableWordTest, WordIsKnownWherePointersHave64Bits)
{
    EXPECT_EQ(lua::LuaMetatableWord::isKnown(), sizeof(void*) == sizeof(std::uint64_t));
}

TEST_F(LuaMetatableWordTest, BlocksOfAllSizesHaveTheMetatableThatWasSet)
{
    for (const std::size_t size : {0U, 1U, 8U, 16U, 17U, 4096U, 1U << 20U})
    {
        std::memset(lua_newuserdata(state(), size), 0xEE, size);
        EXPECT_EQ(metatableOnTop(), nullptr) << size;
        for (int tables = 0; tables < 2; ++tables)
        {
            lua_createtable(state(), 0, 0);
            const void* const table = lua_topointer(state(), -1);
            lua_setmetatable(state(), -2);
            lua_gc(state(), LUA_GCCOLLECT, 0);
            EXPECT_EQ(metatableOnTop(), table) << size;
            EXPECT_EQ(lua::askForMetatable(state(), -1), table) << size;
        }
        lua_pop(state(), 1);
    }
    EXPECT_EQ(lua_gettop(state()), 0);
}

TEST_F(LuaMetatableWordTest, InstancesAreRecognisedInBothWays)
{
    setInstance("enemy", "Enemy", &m_object, false);
    run("other = newproxy(true) handle = io.tmpfile and io.stdout "
        "enemyTable = debug.getmetatable(enemy)");
    lua_pushlightuserdata(state(), &m_object);
    lua_setglobal(state(), "light");
    for (const bool isKnown : {m_wasKnown, false})
    {
        lua::LuaMetatableWord::setKnown(isKnown);
        EXPECT_TRUE(isInstance("enemy"));
        for (const char* const global : {"other", "handle", "light", "enemyTable", "nothing"})
            EXPECT_FALSE(isInstance(global)) << global;
    }
}

// All light userdata of a state share one metatable.
TEST_F(LuaMetatableWordTest, NothingIsReadInFrontOfLightUserdata)
{
    setInstance("enemy", "Enemy", &m_object, false);
    constexpr std::uintptr_t SMALL_ADDRESS = 8; // nothing is there, nor in front of it
    lua_pushlightuserdata(state(), reinterpret_cast<void*>(SMALL_ADDRESS));
    lua_setglobal(state(), "light");
    run("debug.setmetatable(light, debug.getmetatable(enemy))");

    EXPECT_FALSE(isInstance("light"));

    run("debug.setmetatable(light, nil)");
}

} // namespace tbScripts::test

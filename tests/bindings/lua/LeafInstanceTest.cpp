// Which values a leaf takes for instances: those that the library takes for instances elsewhere.

#include "bindings/lua/values/LuaInstanceBox.h"
#include "support/LeafFixture.h"
#include "support/Sanitizers.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>

namespace tbScripts::test
{

namespace
{

using typed::KIND;

class LeafInstanceTest : public LeafFixture
{
protected:
    LeafInstanceTest()
    {
        publishWith({KIND::OBJECT, false, &BODY});
        // Compiled for an instance; what comes later meets that code.
        run("function look(value) local r for i = 1, 300 do r = f(value) end return r end "
            "look(body)");
    }

    std::string look(const std::string& value) { return run("return look(" + value + ")"); }

    /// Compiles code for the value itself.
    std::string lookAtOnce(const std::string& value)
    {
        return run(
            "jit.flush() local value = " + value +
            " local r for i = 1, 300 do r = f(value) end return r");
    }

    // Creates the global `block`.
    void pushBlock(std::size_t size, const lua::LuaInstanceBox& content)
    {
        void* const block = lua_newuserdata(state(), size);
        std::memset(block, 0, size);
        std::memcpy(block, &content, std::min(size, sizeof(content)));
        luaL_getmetatable(state(), "Body");
        lua_setmetatable(state(), -2);
        lua_setglobal(state(), "block");
    }

    void expectSlow(const std::string& value)
    {
        EXPECT_EQ(look(value), "slow");
        EXPECT_EQ(lookAtOnce(value), "slow");
    }
};

} // namespace

TEST_F(LeafInstanceTest, Instance)
{
    EXPECT_EQ(look("body"), "leaf 0.500000");
    EXPECT_EQ(lookAtOnce("body"), "leaf 0.500000");
}

TEST_F(LeafInstanceTest, OwnedInstance)
{
    box("body").gcEnabled = true;
    EXPECT_EQ(look("body"), "leaf 0.500000");
    box("body").gcEnabled = false;
}

TEST_F(LeafInstanceTest, NoneIfItsObjectWasDestroyed)
{
    box("body").isDestroyed = true;
    expectSlow("body");
}

TEST_F(LeafInstanceTest, NoneWithoutObject)
{
    box("body").object = nullptr;
    expectSlow("body");
}

TEST_F(LeafInstanceTest, NoneOfAnotherType)
{
    declareUserType("Other");
    lua::pushInstance(slot(), state(), &m_body, false, "Other");
    lua_setglobal(state(), "other");
    expectSlow("other");
}

TEST_F(LeafInstanceTest, NoneOfAMetatableThatSaysSo)
{
    run("other = newproxy(true) getmetatable(other).__metatable = Body");
    expectSlow("other");
}

TEST_F(LeafInstanceTest, IsOneWhateverItsMetatableSays)
{
    run("Body.__metatable = false");
    EXPECT_EQ(look("body"), "leaf 0.500000");
    EXPECT_EQ(lookAtOnce("body"), "leaf 0.500000");
}

TEST_F(LeafInstanceTest, NoneOfAnotherSize)
{
    pushBlock(24, {&m_body, false, false, {}});
    expectSlow("block");
    pushBlock(8, {&m_body, false, false, {}});
    expectSlow("block");
}

TEST_F(LeafInstanceTest, NoneWithFlagsOfNoBox)
{
    lua::LuaInstanceBox content{&m_body, false, false, {}};
    const unsigned char other = 2;
    std::memcpy(&content.gcEnabled, &other, 1);
    pushBlock(16, content);
    expectSlow("block");
}

TEST_F(LeafInstanceTest, NoneIsLightUserdata)
{
    lua_pushlightuserdata(state(), this);
    lua_setglobal(state(), "light");
    expectSlow("light");
    run("debug.setmetatable(light, Body)");
    expectSlow("light");
    expectSlow("body"); // nothing tells them apart any more
    run("debug.setmetatable(light, nil)");
    EXPECT_EQ(look("body"), "leaf 0.500000");
    expectSlow("light");
}

TEST_F(LeafInstanceTest, LightUserdataMayPointNowhere)
{
    lua_pushlightuserdata(state(), nullptr);
    lua_setglobal(state(), "light");
    run("debug.setmetatable(light, Body)");
    expectSlow("light");
}

TEST_F(LeafInstanceTest, NoneIsAFileOrABuffer)
{
    if (!IS_SANITIZED) // the interpreter takes a file for what it points at, and looks in front of
                       // that
    {
        run("file = io.tmpfile() debug.setmetatable(file, Body)");
        EXPECT_EQ(lookAtOnce("file"), "slow");
    }
    run("closed = io.tmpfile() closed:close() debug.setmetatable(closed, Body)");
    EXPECT_EQ(lookAtOnce("closed"), "slow");
    run("buffer = require('string.buffer').new() debug.setmetatable(buffer, Body)");
    expectSlow("buffer");
}

TEST_F(LeafInstanceTest, NoneAfterTheEndOfItsType)
{
    luaL_getmetatable(state(), "Body");
    const void* const table = lua_topointer(state(), -1);
    lua_pop(state(), 1);
    slot().forgetType(table);
    expectSlow("body");
    slot().getLeafTypes().setTable(BODY, table);
    EXPECT_EQ(look("body"), "leaf 0.500000");
    slot().getLeafTypes().forgetType(BODY);
    expectSlow("body");
}

TEST_F(LeafInstanceTest, OfTheTypeThatWasDeclaredLast)
{
    declareUserType("Again");
    luaL_getmetatable(state(), "Again");
    slot().getLeafTypes().setTable(BODY, lua_topointer(state(), -1));
    lua_pop(state(), 1);
    expectSlow("body");
    lua::pushInstance(slot(), state(), &m_body, false, "Again");
    lua_setglobal(state(), "again");
    EXPECT_EQ(look("again"), "leaf 0.500000");
}

// Two types of the host in one table: objects of the first are no objects of the second.
TEST_F(LeafInstanceTest, OfOneOfTheTypesThatShareATable)
{
    static const typed::TypeId other{0};
    luaL_getmetatable(state(), "Body");
    slot().getLeafTypes().setTable(other, lua_topointer(state(), -1));
    lua_pop(state(), 1);
    expectSlow("body");
}

TEST_F(LeafInstanceTest, TypeMayBeDeclaredAfterTheFunction)
{
    static const typed::TypeId later{0};
    publishWith({KIND::OBJECT, false, &later});
    EXPECT_EQ(lookAtOnce("body"), "slow");
    luaL_getmetatable(state(), "Body");
    slot().getLeafTypes().setTable(later, lua_topointer(state(), -1));
    lua_pop(state(), 1);
    EXPECT_EQ(lookAtOnce("body"), "leaf 0.500000");
}

} // namespace tbScripts::test

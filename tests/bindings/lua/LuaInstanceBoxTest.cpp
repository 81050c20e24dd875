#include "support/LuaFunctionFixture.h"
#include "support/RowName.h"

#include <cstddef>
#include <cstring>

namespace tbScripts::test
{

class LuaInstanceBoxTest : public LuaFunctionFixture
{
protected:
    /// Returns what is an instance in the value of `expression`.
    lua::LuaInstance instanceIn(const std::string& expression)
    {
        push("return " + expression);
        const lua::LuaInstance instance = lua::instanceAt(slot(), state(), -1);
        EXPECT_EQ(lua_gettop(state()), 1);
        lua_pop(state(), 1);
        return instance;
    }

    void* untypedObjectIn(const std::string& expression)
    {
        push("return " + expression);
        void* const object = lua::untypedObjectAt(slot(), state(), -1);
        EXPECT_EQ(lua_gettop(state()), 1);
        lua_pop(state(), 1);
        return object;
    }

    /// Makes global `name` a block of `size` bytes with the metatable of `typeName`.
    void setBlock(const char* name, std::size_t size, const char* typeName)
    {
        std::memset(lua_newuserdata(state(), size), 0, size);
        luaL_getmetatable(state(), typeName);
        lua_setmetatable(state(), -2);
        lua_setglobal(state(), name);
    }

    int m_object = 0;
};

TEST_F(LuaInstanceBoxTest, HoldsTheObjectThenTheFlagInSixteenBytes)
{
    EXPECT_EQ(sizeof(lua::LuaInstanceBox), 16U);
    EXPECT_EQ(offsetof(lua::LuaInstanceBox, object), 0U);
    EXPECT_EQ(offsetof(lua::LuaInstanceBox, gcEnabled), 8U);
}

TEST_F(LuaInstanceBoxTest, NewOneIsAnInstanceOfItsType)
{
    setInstance("enemy", "Enemy", &m_object, true);
    const lua::LuaInstance instance = instanceIn("enemy");
    ASSERT_NE(instance.box, nullptr);
    EXPECT_EQ(instance.box->object, &m_object);
    EXPECT_TRUE(instance.box->gcEnabled);
    EXPECT_EQ(instance.typeName, "Enemy");
}

TEST_F(LuaInstanceBoxTest, InstanceWithoutObjectIsOneToo)
{
    setInstance("enemy", "Enemy", nullptr, false);
    const lua::LuaInstance instance = instanceIn("enemy");
    ASSERT_NE(instance.box, nullptr);
    EXPECT_EQ(instance.box->object, nullptr);
}

TEST_F(LuaInstanceBoxTest, DestroyedOneIsNoInstance)
{
    setInstance("enemy", "Enemy", &m_object, true).isDestroyed = true;
    EXPECT_EQ(instanceIn("enemy").box, nullptr);
}

TEST_F(LuaInstanceBoxTest, TypeNameIsTheOneThatTheTypeWasMadeWith)
{
    setInstance("enemy", "Enemy", &m_object, false);
    run("debug.getmetatable(enemy).__name = 'Player'");
    EXPECT_EQ(instanceIn("enemy").typeName, "Enemy");
}

TEST_F(LuaInstanceBoxTest, IsNoInstanceWhereALaterTypeHasTheNameOfItsOwn)
{
    setInstance("old", "Enemy", &m_object, false);
    lua_pushnil(state());
    lua_setfield(state(), LUA_REGISTRYINDEX, "Enemy");
    setInstance("young", "Enemy", &m_object, false);
    run("assert(debug.getmetatable(old) ~= debug.getmetatable(young))");
    EXPECT_EQ(instanceIn("old").box, nullptr);
    EXPECT_EQ(untypedObjectIn("old"), nullptr);
    EXPECT_EQ(instanceIn("young").typeName, "Enemy");
    EXPECT_EQ(untypedObjectIn("young"), &m_object);
}

TEST_F(LuaInstanceBoxTest, TypeMayHaveAnyName)
{
    setInstance("enemy", std::string("0"), &m_object, false);
    EXPECT_EQ(instanceIn("enemy").typeName, "0");
}

namespace
{

struct Foreign
{
    const char* row;
    const char* expression;
};

} // namespace

class LuaInstanceBoxForeignTest : public OnRows<LuaInstanceBoxTest, Foreign>
{
protected:
    LuaInstanceBoxForeignTest()
    {
        setInstance("enemy", "Enemy", &m_object, true);
        setBlock("small", 8, "Enemy");
        setBlock("large", 24, "Enemy");
        setBlock("foreign", 16, "FILE*");
        lua_newuserdata(state(), 16);
        lua_setglobal(state(), "bare");
        lua_pushlightuserdata(state(), &m_object);
        lua_setglobal(state(), "light");
        run("forged = newproxy(true) getmetatable(forged).__name = 'Enemy'"
            " proxied = newproxy() debug.setmetatable(proxied, debug.getmetatable(enemy))"
            " derived = setmetatable({}, debug.getmetatable(enemy))");
    }

    void TearDown() override
    {
        // The collector would close what it takes for files.
        run("debug.setmetatable(foreign, nil)");
        LuaInstanceBoxTest::TearDown();
    }
};

TEST_P(LuaInstanceBoxForeignTest, IsNoInstance)
{
    EXPECT_EQ(instanceIn(GetParam().expression).box, nullptr);
}

ROWS(
    LuaInstanceBoxForeignTest,
    {"Nil", "nil"},
    {"Number", "7"},
    {"Text", "'Enemy'"},
    {"Table", "{}"},
    {"TableWithTheMetatable", "derived"},
    {"TheMetatableItself", "debug.getmetatable(enemy)"},
    {"ForgedName", "forged"},
    {"ProxyWithTheMetatable", "proxied"},
    {"Proxy", "newproxy()"},
    {"FileHandle", "io.stdout"},
    {"BlockOfTheSizeWithOtherMetatable", "foreign"},
    {"BlockOfTheSizeWithoutMetatable", "bare"},
    {"SmallerBlock", "small"},
    {"LargerBlock", "large"},
    {"LightUserdata", "light"},
    {"BoxedInteger", "1LL"});

TEST_F(LuaInstanceBoxTest, EmptySlotIsNoInstance)
{
    const lua::LuaInstance instance = lua::instanceAt(slot(), state(), 3);
    EXPECT_EQ(instance.box, nullptr);
}

TEST_F(LuaInstanceBoxTest, UntypedObjectOfAnInstanceIsItsObject)
{
    setInstance("enemy", "Enemy", &m_object, false);
    EXPECT_EQ(untypedObjectIn("enemy"), &m_object);
}

TEST_F(LuaInstanceBoxTest, UntypedObjectOfADestroyedInstanceIsNull)
{
    setInstance("enemy", "Enemy", &m_object, true).isDestroyed = true;
    EXPECT_EQ(untypedObjectIn("enemy"), nullptr);
}

TEST_F(LuaInstanceBoxTest, UntypedObjectOfAForeignBlockIsItsFirstPointer)
{
    void* const first = &m_object;
    std::memcpy(lua_newuserdata(state(), sizeof(first)), &first, sizeof(first));
    lua_setglobal(state(), "block");
    EXPECT_EQ(untypedObjectIn("block"), &m_object);
}

TEST_F(LuaInstanceBoxTest, UntypedObjectOfABlockThatIsTooSmallIsNull)
{
    std::memset(lua_newuserdata(state(), 4), 0xFF, 4);
    lua_setglobal(state(), "block");
    EXPECT_EQ(untypedObjectIn("block"), nullptr);
    EXPECT_EQ(untypedObjectIn("newproxy()"), nullptr);
}

TEST_F(LuaInstanceBoxTest, UntypedObjectOfLightUserdataIsNull)
{
    lua_pushlightuserdata(state(), &m_object);
    lua_setglobal(state(), "light");
    EXPECT_EQ(untypedObjectIn("light"), nullptr);
}

TEST_F(LuaInstanceBoxTest, UntypedObjectOfAnythingElseIsNull)
{
    EXPECT_EQ(untypedObjectIn("nil"), nullptr);
    EXPECT_EQ(untypedObjectIn("7"), nullptr);
    EXPECT_EQ(untypedObjectIn("{}"), nullptr);
}

} // namespace tbScripts::test

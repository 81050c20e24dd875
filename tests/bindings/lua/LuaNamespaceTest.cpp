// Namespaces in a bare state: what the interpreter's registry holds of them.

#include "bindings/lua/namespaces/LuaNamespace.h"

#include "bindings/lua/types/LuaUserType.h"
#include "support/LuaStateFixture.h"

#include <memory>
#include <string>

namespace tbScripts::test
{

class LuaNamespaceTest : public LuaStateFixture
{
protected:
    LuaNamespaceTest()
        : m_namespace(std::make_unique<lua::LuaNamespace>("a", handle()))
    {
    }

    // Returns whether the registry's entry `key` is the value of `expression`.
    bool isRegistered(const char* key, const std::string& expression)
    {
        push("return " + expression);
        lua_getfield(state(), LUA_REGISTRYINDEX, key);
        const bool isSame = lua_istable(state(), -1) && lua_rawequal(state(), -1, -2) != 0;
        lua_pop(state(), 2);
        return isSame;
    }

    // Returns whether the registry has an entry `key`.
    bool isInRegistry(const char* key)
    {
        lua_getfield(state(), LUA_REGISTRYINDEX, key);
        const bool isThere = !lua_isnil(state(), -1);
        lua_pop(state(), 1);
        return isThere;
    }

    std::unique_ptr<lua::LuaNamespace> m_namespace;
};

TEST_F(LuaNamespaceTest, TableIsRegisteredUnderItsName)
{
    EXPECT_TRUE(isRegistered("a", "a"));
}

TEST_F(LuaNamespaceTest, InnerTablesAreRegisteredUnderTheirFullNames)
{
    Namespace* const inner = m_namespace->setNamespace("b");
    inner->setNamespace("c");
    inner->setUserType("T");

    EXPECT_TRUE(isRegistered("a::b", "a.b"));
    EXPECT_TRUE(isRegistered("a::b::c", "a.b.c"));
    EXPECT_TRUE(isRegistered("a::b::T", "a.b.T"));
    EXPECT_FALSE(isInRegistry("b"));
    EXPECT_FALSE(isInRegistry("T"));
}

TEST_F(LuaNamespaceTest, FunctionsAreNotRegisteredUnderAName)
{
    m_namespace->setFunction("f");
    EXPECT_FALSE(isInRegistry("f"));
    EXPECT_FALSE(isInRegistry("a::f"));
}

TEST_F(LuaNamespaceTest, ClearingKeepsTheRegistryEntries)
{
    m_namespace->setNamespace("b");
    m_namespace->setUserType("T");
    m_namespace->clear();
    EXPECT_TRUE(isRegistered("a", "a"));
    EXPECT_TRUE(isInRegistry("a::b"));
    EXPECT_TRUE(isInRegistry("a::T"));
}

TEST_F(LuaNamespaceTest, ReleasingTakesTheEntriesOfWhatWasInside)
{
    m_namespace->setNamespace("b")->setUserType("T");
    m_namespace->setUserType("T");
    m_namespace->release();
    EXPECT_TRUE(isRegistered("a", "a"));
    EXPECT_FALSE(isInRegistry("a::b"));
    EXPECT_FALSE(isInRegistry("a::b::T"));
    EXPECT_FALSE(isInRegistry("a::T"));
}

TEST_F(LuaNamespaceTest, EndTakesItsGlobalAndItsEntry)
{
    m_namespace->setNamespace("b");
    m_namespace.reset();
    EXPECT_FALSE(isInRegistry("a"));
    EXPECT_FALSE(isInRegistry("a::b"));
    push("return a == nil");
    EXPECT_TRUE(lua_toboolean(state(), -1));
    lua_pop(state(), 1);
}

TEST_F(LuaNamespaceTest, EndTakesItsGlobalWhateverItHolds)
{
    push("a = 5 return 0");
    lua_pop(state(), 1);
    m_namespace.reset();
    push("return a == nil");
    EXPECT_TRUE(lua_toboolean(state(), -1));
    lua_pop(state(), 1);
}

TEST_F(LuaNamespaceTest, LeavesNoRegistrySlotsBehind)
{
    lua_gc(state(), LUA_GCCOLLECT, 0);
    const int before = countRegistrySlots();
    Namespace* const inner = m_namespace->setNamespace("b");
    inner->setFunction("f");
    inner->setUserType("T")->setMethod("m", false);
    m_namespace->setFunction("f");

    m_namespace->release();

    EXPECT_EQ(countRegistrySlots(), before);
}

TEST_F(LuaNamespaceTest, SharesTheTableOfAUserTypeOfItsName)
{
    const lua::LuaUserType type("T", handle());
    const lua::LuaNamespace shared("T", handle());
    EXPECT_TRUE(isRegistered("T", "T"));
    push("return T.__gc ~= nil");
    EXPECT_TRUE(lua_toboolean(state(), -1));
    lua_pop(state(), 1);
}

TEST_F(LuaNamespaceTest, LeavesForeignEntriesOfTheRegistryAlone)
{
    const lua::LuaNamespace refused("_LOADED", handle());
    EXPECT_FALSE(refused.isInstalled());
    EXPECT_TRUE(isRegistered("_LOADED", "package.loaded"));
    expectLogged(
        "The interpreter uses the name '_LOADED' itself. It can't be declared.", "LuaNamespace");
}

TEST_F(LuaNamespaceTest, RefusedGlobalLeavesNoEntry)
{
    push("setmetatable(_G, {__newindex = function() error('strict', 0) end}) return 0");
    lua_pop(state(), 1);
    const lua::LuaNamespace refused("b", handle());
    EXPECT_FALSE(refused.isInstalled());
    EXPECT_FALSE(isInRegistry("b"));
    expectLogged("strict", "LuaEnvironment");
}

TEST_F(LuaNamespaceTest, FieldThatIsRefusedLeavesNoEntry)
{
    push("setmetatable(a, {__newindex = function() error('closed', 0) end}) return 0");
    lua_pop(state(), 1);
    m_namespace->setNamespace("b");
    m_namespace->setUserType("T");
    EXPECT_FALSE(isInRegistry("a::b"));
    EXPECT_FALSE(isInRegistry("a::T"));
    expectLogCount(2);
}

TEST_F(LuaNamespaceTest, OperationsLeaveTheStackAsItWas)
{
    lua_pushinteger(state(), 7);

    m_namespace->setVar("v", 5);
    m_namespace->setNamespace("b");
    m_namespace->setUserType("T");
    m_namespace->setFunction("f");
    m_namespace->clear();
    m_namespace->release();

    EXPECT_EQ(lua_gettop(state()), 1);
    EXPECT_EQ(lua_tointeger(state(), 1), 7);
    lua_pop(state(), 1);
}

TEST_F(LuaNamespaceTest, OutlivesItsStateWithoutTouchingIt)
{
    m_namespace->setNamespace("b")->setFunction("f");
    m_namespace->setUserType("T");

    closeState();

    EXPECT_FALSE(m_namespace->isInstalled());
    m_namespace->setVar("v", 5);
    m_namespace->clear();
    EXPECT_EQ(m_namespace->setFunction("g"), nullptr);
    EXPECT_NE(m_namespace->getNamespace("b"), nullptr);
}

TEST_F(LuaNamespaceTest, InstallsInAnotherState)
{
    closeState();
    lua::LuaStateHandle next = lua::LuaStateHandle::open();

    EXPECT_TRUE(m_namespace->install(next));

    lua_getfield(next.get(), LUA_REGISTRYINDEX, "a");
    lua_getglobal(next.get(), "a");
    EXPECT_TRUE(lua_istable(next.get(), -1) && lua_rawequal(next.get(), -1, -2));
    lua_pop(next.get(), 2);
    m_namespace.reset();
    next.close();
}

} // namespace tbScripts::test

// LuaJIT 2.1.0-beta3 uses tables of its foreign function library without keeping them alive: once
// the library is let go, the end of the state read freed memory.

#include "environments/lua/LuaEnvironmentStrategy.h"
#include "support/Execution.h"
#include "support/LogFixture.h"

#include <memory>

namespace tbScripts::test
{

class ForeignLibraryTest : public LogFixture
{
protected:
    ForeignLibraryTest()
        : m_strategy(std::make_shared<const tbMemory::String>("world"))
    {
    }

    void run(const std::string& sources)
    {
        CompiledScript script(sources);
        EXPECT_TRUE(m_strategy.execute(script)) << m_strategy.getLastExecutionResult().message;
    }

    // Whether what the script put into the list "watched" of the registry, which keeps nothing
    // alive, is still there.
    bool isAlive(int place)
    {
        lua_State* const state = m_strategy.getHandle().get();
        lua_getfield(state, LUA_REGISTRYINDEX, "watched");
        lua_rawgeti(state, -1, place);
        const bool isThere = lua_istable(state, -1);
        lua_settop(state, 0);
        return isThere;
    }

    lua::LuaEnvironmentStrategy m_strategy;
};

TEST_F(ForeignLibraryTest, TablesThatTheInterpreterUsesOutliveTheGlobals)
{
    run("local ffi = require('ffi') "
        "debug.getregistry().watched = setmetatable("
        "    {debug.getfenv(ffi.gc), debug.getfenv(ffi.metatype)}, {__mode = 'v'})");

    m_strategy.clearGlobals();

    EXPECT_TRUE(isAlive(1));
    EXPECT_TRUE(isAlive(2));
}

// What scripts hang into the library goes with the globals all the same.
TEST_F(ForeignLibraryTest, LibraryItselfGoesWithTheGlobals)
{
    run("local ffi = require('ffi') "
        "debug.getregistry().watched = setmetatable({ffi}, {__mode = 'v'})");

    m_strategy.clearGlobals();

    EXPECT_FALSE(isAlive(1));
}

TEST_F(ForeignLibraryTest, ReplacedLibraryIsNoTrouble)
{
    run("package.loaded.ffi = {gc = 'text', metatype = {}}");

    m_strategy.clearGlobals();

    EXPECT_FALSE(m_strategy.isVarSet("package"));
}

TEST_F(ForeignLibraryTest, LibraryOfAnotherKindIsNoTrouble)
{
    run("package.loaded.ffi = true");

    m_strategy.clearGlobals();

    EXPECT_FALSE(m_strategy.isVarSet("package"));
}

} // namespace tbScripts::test

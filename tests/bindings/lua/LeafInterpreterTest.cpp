// What leaves leave as it was in the interpreter, and what scripts have done to it before.

#include "support/LeafFixture.h"

namespace tbScripts::test
{

namespace
{

using typed::KIND;

struct PreparedRow
{
    const char* row;
    const char* preparation;
};

class LeafInterpreterTest : public LeafFixture
{
protected:
    bool publishDouble() { return publishWith({KIND::DOUBLE}); }

    void expectLeaf()
    {
        EXPECT_TRUE(publishDouble());
        EXPECT_EQ(compiled("f(1)"), "leaf 1.000000");
    }

    void expectNoLeaf()
    {
        EXPECT_FALSE(publishDouble());
        EXPECT_FALSE(publishDouble());
        EXPECT_EQ(compiled("f(1)"), "slow");
    }
};

class LeafPreparedTest : public OnRows<LeafInterpreterTest, PreparedRow>
{
};

class LeafImpossibleTest : public OnRows<LeafInterpreterTest, PreparedRow>
{
};

} // namespace

TEST_P(LeafPreparedTest, DoesNotMindWhatScriptsHaveDone)
{
    EXPECT_EQ(run(GetParam().preparation), "nil");
    expectLeaf();
}

TEST_P(LeafPreparedTest, DoesNotMindWhatScriptsDoLater)
{
    EXPECT_TRUE(publishDouble());
    EXPECT_EQ(run(GetParam().preparation), "nil");
    EXPECT_EQ(compiled("f(1)"), "leaf 1.000000");
}

ROWS(
    LeafPreparedTest,
    {"OtherGlobals",
     "type, getmetatable, rawget, select, tostring_ = print, print, print, print, 1"},
    {"OtherPackages", "package = {} require = nil"},
    {"OtherLibraries", "debug, jit_, string, table, bit = nil, nil, {}, {}, {}"},
    {"InterfaceWasLoaded", "require 'ffi'"},
    {"InterfaceWasLoadedBySource", "assert(loadstring('return 1LL'))"},
    {"InterfaceIsFake", "package.loaded.ffi = {cast = print, typeof = print, string = print}"},
    {"InterfaceIsNoTable", "package.loaded.ffi = 1"},
    {"PreloadIsGone", "package.preload.ffi = nil"},
    {"PreloadIsFake", "package.preload.ffi = error"},
    {"PreloadedClearIsFake", "package.preload['table.clear'] = error"},
    {"ClearIsFake", "require('table.clear') table.clear = error"},
    {"Instructions", "jit.attach(function() end, 'bc')"});

// Without the interpreter's own functions there are none.
TEST_P(LeafImpossibleTest, LeavesItToTheFunction)
{
    run(GetParam().preparation);
    expectNoLeaf();
}

ROWS(
    LeafImpossibleTest,
    {"MetatablesAreFake", "package.loaded.debug = {getmetatable = getmetatable}"},
    {"AttachIsFake", "package.loaded.jit = {attach = print}"},
    {"NothingIsLoaded", "for name in pairs(package.loaded) do package.loaded[name] = nil end"},
    {"InterfaceWasChanged", "require('ffi').cast = function() end"},
    {"InterfaceWasHidden", "require('ffi') package.loaded.ffi = nil"},
    {"InterfaceWasSwapped", "local ffi = require('ffi') ffi.cast = ffi.typeof"},
    {"SomebodyWatchesTheCompiler", "jit.attach(function() end, 'record')"});

TEST_F(LeafInterpreterTest, FakeSelectCountsNoArguments)
{
    run("select = function() return 1000 end");
    EXPECT_TRUE(publishWith({KIND::OBJECT_OR_NIL, false, &BODY}));
    EXPECT_EQ(compiled("f(body)"), "leaf 0.500000");
    EXPECT_EQ(compiled("f(nil)"), "slow");
    EXPECT_EQ(compiled("f()"), "slow");
}

TEST_F(LeafInterpreterTest, HandlerThatWatchedTheCompilerStays)
{
    run("seen = 0 jit.attach(function() seen = seen + 1 end, 'record')");
    EXPECT_FALSE(publishDouble());
    compiled("#tostring(i)");
    EXPECT_NE(run("return seen"), "0");
}

TEST_F(LeafInterpreterTest, HandlerThatWatchesTheCompilerLaterTakesTheLeavesItsPlace)
{
    EXPECT_TRUE(publishDouble());
    run("seen = 0 jit.attach(function() seen = seen + 1 end, 'record')");
    EXPECT_EQ(compiled("f(1)"), "slow");
    EXPECT_NE(run("return seen"), "0");
}

// A script watches from inside a function that is being compiled.
TEST_F(LeafInterpreterTest, HandlerMayChangeWhileCodeIsCompiled)
{
    EXPECT_TRUE(publishDouble());
    EXPECT_EQ(
        run("local n = 0 for i = 1, 300 do if i == 60 then jit.attach(function() end, 'record') "
            "end "
            "if #f(i) > 0 then n = n + 1 end end return n"),
        "300");
}

TEST_F(LeafInterpreterTest, InterfaceStaysHidden)
{
    EXPECT_TRUE(publishDouble());
    EXPECT_EQ(run("return package.loaded.ffi"), "nil");
    EXPECT_EQ(run("return rawget(_G, 'ffi')"), "nil");
    EXPECT_EQ(run("return type(package.preload.ffi)"), "function");
}

TEST_F(LeafInterpreterTest, InterfaceThatTheHostHasRemovedCannotBeLoaded)
{
    run("package.preload.ffi = nil");
    EXPECT_TRUE(publishDouble());
    EXPECT_EQ(run("return pcall(require, 'ffi')"), "false");
    EXPECT_EQ(run("assert(loadstring('return 1LL')) return package.loaded.ffi"), "nil");
}

TEST_F(LeafInterpreterTest, ScriptsRequireTheInterfaceAsBefore)
{
    EXPECT_TRUE(publishDouble());
    EXPECT_EQ(run("ffi = require 'ffi' return ffi == require 'ffi'"), "true");
    EXPECT_EQ(run("return package.loaded.ffi == ffi"), "true");
    EXPECT_EQ(run("ffi.cdef 'struct point { int x; };' return ffi.new('struct point', 7).x"), "7");
    EXPECT_EQ(compiled("f(1)"), "leaf 1.000000");
}

TEST_F(LeafInterpreterTest, ValuesOfTheInterfaceOutliveTheFirstLeaf)
{
    run("ffi = require 'ffi' ffi.cdef 'struct point { int x; };' "
        "point = ffi.new('struct point', 7)");
    expectLeaf();
    EXPECT_EQ(run("return point.x"), "7");
    EXPECT_EQ(run("return ffi.istype('struct point', point)"), "true");
    EXPECT_EQ(run("return require 'ffi' == ffi"), "true");
}

// Opening it twice would create all types anew.
TEST_F(LeafInterpreterTest, InterfaceIsNotOpenedAgain)
{
    run("open = package.preload.ffi");
    expectLeaf();
    EXPECT_EQ(run("return open('ffi') == open('ffi')"), "true");
    EXPECT_EQ(run("return open('ffi') == require('ffi')"), "true");
    EXPECT_EQ(compiled("f(1)"), "leaf 1.000000");
}

TEST_F(LeafInterpreterTest, FakeInterfaceStaysWhereItWas)
{
    run("fake = {} package.loaded.ffi = fake");
    expectLeaf();
    EXPECT_EQ(run("return package.loaded.ffi == fake"), "true");
}

TEST_F(LeafInterpreterTest, ClearStaysAsItWas)
{
    expectLeaf();
    EXPECT_EQ(run("local t = {1} require('table.clear')(t) return #t"), "0");
}

TEST_F(LeafInterpreterTest, NothingIsLoadedWithoutLeaves)
{
    EXPECT_EQ(run("assert(loadstring('return 1LL')) return type(package.loaded.ffi)"), "table");
}

// LuaJIT 2.1.0-beta3 crashes here if anybody is attached to the event "trace".
TEST_F(LeafInterpreterTest, HostMayCallWhatEndsInAFunctionOfTheInterpreter)
{
    EXPECT_TRUE(publishDouble());
    push("return function(value) return string.format('%d', value) end");
    for (int i = 0; i < 1000; ++i)
    {
        lua_pushvalue(state(), 1);
        lua_pushinteger(state(), i);
        lua_call(state(), 1, 1);
        EXPECT_EQ(lua_tointeger(state(), -1), i);
        lua_settop(state(), 1);
    }
    lua_settop(state(), 0);
}

TEST_F(LeafInterpreterTest, RunsOnCoroutines)
{
    EXPECT_TRUE(publishDouble());
    EXPECT_EQ(
        run("local n = 0 for i = 1, 300 do n = n + coroutine.wrap(function() "
            "local m = 0 for j = 1, 100 do if f(j) then m = m + 1 end end return m end)() end "
            "return n"),
        "30000");
}

TEST_F(LeafInterpreterTest, RunsInFinalisersOfAClosingState)
{
    EXPECT_TRUE(publishDouble());
    run("local p = newproxy(true) getmetatable(p).__gc = function() "
        "for i = 1, 300 do f(i) end end keep = p");
    closeState();
}

} // namespace tbScripts::test

// Host objects of declared types as globals: the block that scripts hold, and its type.

#include "bindings/lua/values/LuaInstanceBox.h"
#include "environments/lua/LuaEnvironmentStrategy.h"
#include "support/Execution.h"
#include "support/LogFixture.h"
#include "support/RowName.h"
#include "support/TypeTable.h"

#include <cstring>
#include <memory>
#include <string>

namespace tbScripts::test
{

class LuaEnvironmentObjectsTest : public LogFixture
{
protected:
    LuaEnvironmentObjectsTest()
        : m_strategy(std::make_shared<const tbMemory::String>("world"))
    {
        declareType("T");
        declareType("Other");
        m_strategy.setObject("v", "T", &m_object);
    }

    lua_State* state() const { return m_strategy.getHandle().get(); }

    // Publishes a metatable as declaring a type does.
    void declareType(const char* fullName)
    {
        publishTypeTable(*m_strategy.getHandle().getSlot(), state(), fullName);
        luaL_getmetatable(state(), fullName);
        lua_pushstring(state(), fullName);
        lua_setfield(state(), -2, "__name");
        lua_pop(state(), 1);
    }

    void run(const std::string& sources)
    {
        CompiledScript script(sources);
        EXPECT_TRUE(m_strategy.execute(script)) << m_strategy.getLastExecutionResult().message;
    }

    lua::LuaEnvironmentStrategy m_strategy;
    int m_object = 0;
};

TEST_F(LuaEnvironmentObjectsTest, BlockHoldsThePointerAndZerosAndHasTheMetatableOfItsType)
{
    lua_getfield(state(), LUA_GLOBALSINDEX, "v");
    ASSERT_EQ(lua_objlen(state(), -1), 16U);
    unsigned char expected[16] = {};
    void* const object = &m_object;
    std::memcpy(expected, &object, sizeof(object));
    EXPECT_EQ(std::memcmp(lua_touserdata(state(), -1), expected, 16), 0);

    lua_getmetatable(state(), -1);
    luaL_getmetatable(state(), "T");
    EXPECT_TRUE(lua_rawequal(state(), -1, -2));
    EXPECT_TRUE(lua_istable(state(), -1));
    lua_settop(state(), 0);
}

TEST_F(LuaEnvironmentObjectsTest, ObjectIsReadWithItsTypeOrNoneAndNullForAnyOther)
{
    using tbMemory::StringView;
    EXPECT_EQ(m_strategy.getObject("v", "T"), &m_object);
    EXPECT_EQ(m_strategy.getObject("v", StringView()), &m_object);
    EXPECT_EQ(m_strategy.getObject("v", StringView("TT", 1)), &m_object);

    for (const StringView& name :
         {StringView("Other"),
          StringView("Unknown"),
          StringView(""),
          StringView("TT"),
          StringView("T\0", 2)})
        EXPECT_EQ(m_strategy.getObject("v", name), nullptr) << name;
}

TEST_F(LuaEnvironmentObjectsTest, ObjectKeepsItsTypeWhateverAScriptWritesToItsName)
{
    run("debug.getmetatable(v).__name = 'Other'");

    EXPECT_EQ(m_strategy.getObject("v", "T"), &m_object);
    EXPECT_EQ(m_strategy.getObject("v", "Other"), nullptr);
}

TEST_F(LuaEnvironmentObjectsTest, OnlyTheMetatableOfATypeMakesNoInstance)
{
    run("w = newproxy()  debug.setmetatable(w, debug.getmetatable(v)) "
        "x = setmetatable({}, debug.getmetatable(v))");

    EXPECT_EQ(m_strategy.getObject("w", "T"), nullptr);
    EXPECT_EQ(m_strategy.getObject("w", tbMemory::StringView()), nullptr);
    EXPECT_EQ(m_strategy.getObject("x", "T"), nullptr);
}

TEST_F(LuaEnvironmentObjectsTest, InputOfAScriptCallIsAnInstance)
{
    run("function f(value) w = value end");
    tbMemory::BufferView<FunctionParameter> outputs;

    m_strategy.callScriptFunction(
        m_strategy.getScriptFunction("f"),
        std::vector<FunctionParameter>{FunctionParameter(&m_object, "T", false)},
        outputs);

    EXPECT_EQ(m_strategy.getObject("w", "T"), &m_object);
}

namespace
{

// Outputs of a script call that are of a user type.
struct OutputRow
{
    const char* row;
    const char* expectedName; // the output's
    FUNCTION_PARAMETER_TYPE type;
    bool isAccepted;
};

} // namespace

using LuaEnvironmentObjectOutputTest = OnRows<LuaEnvironmentObjectsTest, OutputRow>;

TEST_P(LuaEnvironmentObjectOutputTest, IsReadIfItsTypeIsExpectedAndLeavesNoLivingView)
{
    run("function f() return v end");
    std::vector<FunctionParameter> outputs{
        FunctionParameter::ofType(GetParam().type, GetParam().expectedName)};
    tbMemory::BufferView<FunctionParameter> view(outputs);

    const bool isDone = m_strategy.callScriptFunction(
        m_strategy.getScriptFunction("f"), tbMemory::BufferView<FunctionParameter>(), view);

    EXPECT_TRUE(isDone);
    EXPECT_EQ(outputs[0].getUserTypeObject(), GetParam().isAccepted ? &m_object : nullptr);
    EXPECT_EQ(m_log.takeEntries().size(), GetParam().isAccepted ? 0U : 1U);
    const ScriptObjectReference reference(outputs[0].getUserTypeView());
    EXPECT_EQ(reference.getInterpreterReference(), nullptr); // the call has returned
}

ROWS(
    LuaEnvironmentObjectOutputTest,
    {"Kept", "T", PARAM_TYPE_USER_TYPE, true},
    {"Owned", "T", PARAM_TYPE_USER_TYPE_OWNED, true},
    {"KeptOfAnyType", "", PARAM_TYPE_USER_TYPE, true},
    {"OwnedOfAnyType", "", PARAM_TYPE_USER_TYPE_OWNED, true},
    {"KeptOfAnotherType", "Other", PARAM_TYPE_USER_TYPE, false},
    {"OwnedOfAnotherType", "Other", PARAM_TYPE_USER_TYPE_OWNED, false});

TEST_F(LuaEnvironmentObjectsTest, OutputOfAnyTypeTakesTheNameOfTheType)
{
    run("function f() return v end");
    std::vector<FunctionParameter> outputs{FunctionParameter::ofType(PARAM_TYPE_USER_TYPE)};
    tbMemory::BufferView<FunctionParameter> view(outputs);

    m_strategy.callScriptFunction(
        m_strategy.getScriptFunction("f"), tbMemory::BufferView<FunctionParameter>(), view);

    EXPECT_EQ(outputs[0].getUserTypeName(), "T");
}

// LuaJIT 2.1.0-beta3 uses tables of its foreign function library without keeping them alive: once
// the library is let go, the end of the state read freed memory.
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

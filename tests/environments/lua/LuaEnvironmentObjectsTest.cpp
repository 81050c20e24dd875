// Host objects of declared types as globals: the block that scripts hold, and its type.

#include "bindings/lua/values/LuaInstanceBox.h"
#include "environments/lua/LuaEnvironmentStrategy.h"
#include "support/Execution.h"
#include "support/LogFixture.h"

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
        luaL_newmetatable(state(), fullName);
        lua_pushstring(state(), fullName);
        lua_setfield(state(), -2, "__name");
        lua::registerTypeTable(*m_strategy.getHandle().getSlot(), state(), fullName);
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

TEST_F(LuaEnvironmentObjectsTest, BlockHoldsThePointerAndZeros)
{
    lua_getfield(state(), LUA_GLOBALSINDEX, "v");

    ASSERT_EQ(lua_objlen(state(), -1), 16U);
    unsigned char expected[16] = {};
    void* const object = &m_object;
    std::memcpy(expected, &object, sizeof(object));
    EXPECT_EQ(std::memcmp(lua_touserdata(state(), -1), expected, 16), 0);
    lua_settop(state(), 0);
}

TEST_F(LuaEnvironmentObjectsTest, BlockHasTheMetatableOfItsType)
{
    lua_getfield(state(), LUA_GLOBALSINDEX, "v");
    lua_getmetatable(state(), -1);
    luaL_getmetatable(state(), "T");

    EXPECT_TRUE(lua_rawequal(state(), -1, -2));
    EXPECT_TRUE(lua_istable(state(), -1));
    lua_settop(state(), 0);
}

TEST_F(LuaEnvironmentObjectsTest, ObjectIsReadWithItsType)
{
    EXPECT_EQ(m_strategy.getObject("v", "T"), &m_object);
}

TEST_F(LuaEnvironmentObjectsTest, ObjectIsReadWithoutAType)
{
    EXPECT_EQ(m_strategy.getObject("v", tbMemory::StringView()), &m_object);
}

TEST_F(LuaEnvironmentObjectsTest, ObjectIsNullForAnotherType)
{
    EXPECT_EQ(m_strategy.getObject("v", "Other"), nullptr);
}

TEST_F(LuaEnvironmentObjectsTest, ObjectIsNullForAnUnknownType)
{
    EXPECT_EQ(m_strategy.getObject("v", "Unknown"), nullptr);
}

TEST_F(LuaEnvironmentObjectsTest, ObjectIsNullForTheEmptyTypeName)
{
    EXPECT_EQ(m_strategy.getObject("v", ""), nullptr);
}

TEST_F(LuaEnvironmentObjectsTest, TypeNamesAreComparedWhole)
{
    EXPECT_EQ(m_strategy.getObject("v", "TT"), nullptr);
    EXPECT_EQ(m_strategy.getObject("v", tbMemory::StringView("T\0", 2)), nullptr);
}

TEST_F(LuaEnvironmentObjectsTest, TypeNameEndsWithItsView)
{
    EXPECT_EQ(m_strategy.getObject("v", tbMemory::StringView("TT", 1)), &m_object);
}

TEST_F(LuaEnvironmentObjectsTest, ObjectKeepsItsTypeWhateverAScriptWritesToItsName)
{
    run("debug.getmetatable(v).__name = 'Other'");

    EXPECT_EQ(m_strategy.getObject("v", "T"), &m_object);
    EXPECT_EQ(m_strategy.getObject("v", "Other"), nullptr);
}

TEST_F(LuaEnvironmentObjectsTest, ForeignUserdataWithTheMetatableOfATypeIsNoInstance)
{
    run("w = newproxy()  debug.setmetatable(w, debug.getmetatable(v))");

    EXPECT_EQ(m_strategy.getObject("w", "T"), nullptr);
    EXPECT_EQ(m_strategy.getObject("w", tbMemory::StringView()), nullptr);
}

TEST_F(LuaEnvironmentObjectsTest, TableWithTheMetatableOfATypeIsNoInstance)
{
    run("w = setmetatable({}, debug.getmetatable(v))");

    EXPECT_EQ(m_strategy.getObject("w", "T"), nullptr);
}

TEST_F(LuaEnvironmentObjectsTest, NullObjectIsNil)
{
    m_strategy.setObject("v", "T", nullptr);

    EXPECT_FALSE(m_strategy.isVarSet("v"));
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
    const char* name;
    const char* expectedName; // the output's
    FUNCTION_PARAMETER_TYPE type;
    bool isAccepted;
};

void PrintTo(const OutputRow& row, std::ostream* stream)
{
    *stream << row.name;
}

} // namespace

class LuaEnvironmentObjectOutputTest : public LuaEnvironmentObjectsTest,
                                       public ::testing::WithParamInterface<OutputRow>
{
};

TEST_P(LuaEnvironmentObjectOutputTest, IsReadIfItsTypeIsExpected)
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
}

// The call has returned: there is nothing left to look at.
TEST_P(LuaEnvironmentObjectOutputTest, LeavesNoLivingView)
{
    run("function f() return v end");
    std::vector<FunctionParameter> outputs{
        FunctionParameter::ofType(GetParam().type, GetParam().expectedName)};
    tbMemory::BufferView<FunctionParameter> view(outputs);

    m_strategy.callScriptFunction(
        m_strategy.getScriptFunction("f"), tbMemory::BufferView<FunctionParameter>(), view);

    const ScriptObjectReference reference(outputs[0].getUserTypeView());
    EXPECT_EQ(reference.getInterpreterReference(), nullptr);
    m_log.takeEntries();
}

INSTANTIATE_TEST_SUITE_P(
    Types,
    LuaEnvironmentObjectOutputTest,
    ::testing::Values(
        OutputRow{"Kept", "T", PARAM_TYPE_USER_TYPE, true},
        OutputRow{"Owned", "T", PARAM_TYPE_USER_TYPE_OWNED, true},
        OutputRow{"KeptOfAnyType", "", PARAM_TYPE_USER_TYPE, true},
        OutputRow{"OwnedOfAnyType", "", PARAM_TYPE_USER_TYPE_OWNED, true},
        OutputRow{"KeptOfAnotherType", "Other", PARAM_TYPE_USER_TYPE, false},
        OutputRow{"OwnedOfAnotherType", "Other", PARAM_TYPE_USER_TYPE_OWNED, false}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(LuaEnvironmentObjectsTest, OutputOfAnyTypeTakesTheNameOfTheType)
{
    run("function f() return v end");
    std::vector<FunctionParameter> outputs{FunctionParameter::ofType(PARAM_TYPE_USER_TYPE)};
    tbMemory::BufferView<FunctionParameter> view(outputs);

    m_strategy.callScriptFunction(
        m_strategy.getScriptFunction("f"), tbMemory::BufferView<FunctionParameter>(), view);

    EXPECT_EQ(outputs[0].getUserTypeName(), "T");
}

} // namespace tbScripts::test

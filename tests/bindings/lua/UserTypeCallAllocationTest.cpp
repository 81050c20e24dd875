#include "bindings/lua/values/LuaInstanceBox.h"
#include "environments/lua/LuaEnvironmentStrategy.h"
#include "support/AllocationCounter.h"
#include "support/LuaFunctionFixture.h"
#include "support/RowName.h"
#include "support/TypeTable.h"

#include <memory>

namespace tbScripts::test
{

namespace
{

struct AllocationKind
{
    const char* row;
    FUNCTION_PARAMETER_TYPE type;
};

} // namespace

class UserTypeCallAllocationTest : public LuaFunctionFixture
{
protected:
    int m_object = 0;
    int m_calls = 0;
};

using UserTypeKindAllocationTest = OnRows<UserTypeCallAllocationTest, AllocationKind>;

TEST_P(UserTypeKindAllocationTest, HostFunctionWithInstancesNeedsNoneWithAndWithoutDeclaredType)
{
    setInstance("enemy", "Enemy", &m_object, true);
    for (const char* const typeName : {"Enemy", ""})
    {
        const auto count = [this](const Parameters& parameters)
        { m_calls += parameters[0].getUserTypeObject() == &m_object ? 1 : 0; };
        declare("take", doing(count)).addParameter(GetParam().type, typeName);
        run("take(enemy)");
        ASSERT_EQ(luaL_loadstring(state(), "for i = 1, 100 do take(enemy) end"), 0);

        const AllocationCounter counter;
        const int status = lua_pcall(state(), 0, 0, 0);

        EXPECT_EQ(counter.count(), 0U);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(m_calls, 202);
}

TEST_P(UserTypeKindAllocationTest, ScriptCallWithInstancesNeedsNone)
{
    lua::LuaEnvironmentStrategy strategy(std::make_shared<tbMemory::String>("world"));
    lua_State* const inner = strategy.getHandle().get();
    publishTypeTable(*strategy.getHandle().getSlot(), inner, "Enemy");
    ASSERT_EQ(luaL_dostring(inner, "function pass(...) return ... end"), 0);
    const ScriptObjectReference function = strategy.getScriptFunction("pass");
    const std::vector<FunctionParameter> inputs{FunctionParameter(&m_object, "Enemy", true)};
    std::vector<FunctionParameter> outputs{FunctionParameter::ofType(GetParam().type, "Enemy")};
    Parameters outputView(outputs);
    ASSERT_TRUE(strategy.callScriptFunction(function, inputs, outputView));

    const AllocationCounter counter;
    for (int i = 0; i < 100; ++i)
        strategy.callScriptFunction(function, inputs, outputView);

    EXPECT_EQ(counter.count(), 0U);
    EXPECT_EQ(outputs[0].getUserTypeObject(), &m_object);
}

ROWS(
    UserTypeKindAllocationTest,
    {"Owned", PARAM_TYPE_USER_TYPE_OWNED},
    {"Kept", PARAM_TYPE_USER_TYPE});

TEST_F(UserTypeCallAllocationTest, ResultOfAShortTypeNameNeedsNone)
{
    declareUserType("Enemy");
    declare(
        "make", [this](const Parameters&) { return FunctionParameter(&m_object, "Enemy", false); });
    run("make()");
    ASSERT_EQ(luaL_loadstring(state(), "for i = 1, 100 do make() end"), 0);

    const AllocationCounter counter;
    const int status = lua_pcall(state(), 0, 0, 0);

    EXPECT_EQ(counter.count(), 0U);
    EXPECT_EQ(status, 0);
}

} // namespace tbScripts::test

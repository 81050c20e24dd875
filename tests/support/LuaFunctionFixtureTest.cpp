#include "support/LuaFunctionFixture.h"

#include "core/lua/references/LuaScriptObjectInterpreterReference.h"

namespace tbScripts::test
{

class LuaFunctionFixtureTest : public LuaFunctionFixture
{
protected:
    ScriptObjectReference referenceTo(const std::string& expression)
    {
        push("return " + expression);
        const int slotNumber = luaL_ref(state(), LUA_REGISTRYINDEX);
        return ScriptObjectReference(new lua::LuaScriptObjectInterpreterReference(
            handle(), PARAM_TYPE_SCRIPT_OBJECT, slotNumber));
    }
};

TEST_F(LuaFunctionFixtureTest, TellsTheValueOfAGlobalFromAnEqualOne)
{
    run("first = {}");

    EXPECT_TRUE(isGlobal(referenceTo("first"), "first"));
    EXPECT_FALSE(isGlobal(referenceTo("{}"), "first"));
}

TEST_F(LuaFunctionFixtureTest, GivesTheMessageOfAFailingScript)
{
    EXPECT_EQ(runExpectingError("error('broken', 0)"), "broken");
}

TEST_F(LuaFunctionFixtureTest, PublishesUntilTheLastFunctionIsDestroyed)
{
    declare("first", nullptr);
    declare("second", nullptr);

    destroyLastFunction();

    run("left = type(first) .. ' ' .. type(second)");
    EXPECT_EQ(global("left"), "function nil");
}

TEST_F(LuaFunctionFixtureTest, MakesInstancesOfTheNamedType)
{
    int object = 0;

    const lua::LuaInstanceBox& box = setInstance("enemy", "Enemy", &object, true);

    EXPECT_EQ(box.object, &object);
    EXPECT_TRUE(box.gcEnabled);
    push("return enemy");
    EXPECT_EQ(lua::instanceAt(slot(), state(), 1).typeName, "Enemy");
    lua_pop(state(), 1);
}

} // namespace tbScripts::test

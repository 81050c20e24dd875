// Host functions are gone when the last finalisers of an environment run, but other code of the
// host may be reached by them. Whatever it asks of the dying environment has no effect.

#include "core/lua/LuaApi.h"
#include "support/EnvironmentStateFixture.h"
#include "support/GlobalOperations.h"
#include "support/RowName.h"

#include <functional>
#include <string>

namespace tbScripts::test
{

namespace
{

using Action = std::function<void(Environment&)>;

int runAction(lua_State* state)
{
    const Action& action = *static_cast<const Action*>(lua_touserdata(state, lua_upvalueindex(1)));
    action(*static_cast<Environment*>(lua_touserdata(state, lua_upvalueindex(2))));
    return 0;
}

} // namespace

class DyingEnvironmentFixture : public EnvironmentStateFixture
{
protected:
    // Has a finaliser perform `action` when the globals go. Requires: `action` outlives that.
    void finaliseBy(const Action& action)
    {
        lua_newuserdata(state(), 1);
        lua_createtable(state(), 0, 1);
        lua_pushlightuserdata(state(), const_cast<Action*>(&action));
        lua_pushlightuserdata(state(), &environment());
        lua_pushcclosure(state(), &runAction, 2);
        lua_setfield(state(), -2, "__gc");
        lua_setmetatable(state(), -2);
        lua_setglobal(state(), "kept");
    }
};

using DyingEnvironmentAccessTest = OnValues<DyingEnvironmentFixture, GlobalOperation>;

VALUES(DyingEnvironmentAccessTest, ::testing::ValuesIn(allGlobalOperations()));

TEST_P(DyingEnvironmentAccessTest, IsNeutralAndSilent)
{
    std::string answer;
    const Action action = [&](Environment& dying)
    { answer = GetParam().perform(dying, "_VERSION"); };
    finaliseBy(action);

    destroyEnvironment();

    EXPECT_EQ(answer, GetParam().neutralAnswer);
}

using DyingEnvironmentTest = DyingEnvironmentFixture;

TEST_F(DyingEnvironmentTest, ExecutionIsRefused)
{
    bool isDone = true;
    const Action action = [&](Environment& dying) { isDone = runScript(dying, "return 1"); };
    finaliseBy(action);
    destroyEnvironment();
    EXPECT_FALSE(isDone);
}

TEST_F(DyingEnvironmentTest, ScriptFunctionCallIsRefused)
{
    bool isDone = true;
    run("function give() end");
    const ScriptObjectReference give = environment().getScriptFunction("give");
    const Action action = [&](Environment& dying)
    {
        Parameters outputs;
        isDone = dying.callScriptFunction(give, {}, outputs);
    };
    finaliseBy(action);

    destroyEnvironment();

    EXPECT_FALSE(isDone);
}

TEST_F(DyingEnvironmentTest, CollectionInsideTheLastCollectionDoesNothing)
{
    int calls = 0;
    const Action action = [&](Environment& dying)
    {
        ++calls;
        dying.requestGarbageCollection();
    };
    finaliseBy(action);

    destroyEnvironment();

    EXPECT_EQ(calls, 1);
}

TEST_F(DyingEnvironmentTest, SwitchIsRefused)
{
    const Action action = [](Environment& dying) { dying.setEnvironmentFor(INTERPRETER_LUA); };
    finaliseBy(action);
    destroyEnvironment();
    expectLogged(
        "Environment 'world' is running a script. Its type can't be changed from inside.",
        "Environment");
}

TEST_F(DyingEnvironmentTest, ReferencesCanStillBeReleased)
{
    run("list = {}");
    auto list = std::make_unique<ScriptObjectReference>(environment().getVar("list"));
    const Action action = [&list](Environment&) { list.reset(); };
    finaliseBy(action);
    destroyEnvironment();
    EXPECT_EQ(list, nullptr);
}

} // namespace tbScripts::test

#include "support/EnvironmentStateFixture.h"

namespace tbScripts::test
{

class EnvironmentStateFixtureTest : public EnvironmentStateFixture
{
};

TEST_F(EnvironmentStateFixtureTest, ShowsTheStateOfItsEnvironment)
{
    run("known = 42");

    lua_getglobal(state(), "known");

    EXPECT_EQ(lua_tointeger(state(), -1), 42);
    EXPECT_EQ(stackHeight(), 1);
    lua_settop(state(), 0);
}

TEST_F(EnvironmentStateFixtureTest, CountsRegistrySlotsInUse)
{
    run("list = {}");
    const int before = countRegistrySlots();

    {
        const ScriptObjectReference list = environment().getVar("list");
        EXPECT_EQ(countRegistrySlots(), before + 1);
    }

    EXPECT_EQ(countRegistrySlots(), before);
}

} // namespace tbScripts::test

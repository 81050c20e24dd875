// Collections that the host asks for.

#include "support/EnvironmentFixture.h"
#include "support/Execution.h"

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class EnvironmentCollectionTest : public EnvironmentFixture
{
};

TEST_F(EnvironmentCollectionTest, CollectsWhatNothingRefersTo)
{
    run("weak = setmetatable({{}}, {__mode = 'v'})");

    environment().requestGarbageCollection();

    run("assert(weak[1] == nil)");
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(EnvironmentCollectionTest, RunsFinalisers)
{
    run("getmetatable(newproxy(true)).__gc = function() finalised = true end");

    environment().requestGarbageCollection();

    EXPECT_TRUE(environment().getVar("finalised", false));
}

// What a finaliser of the first collection leaves behind goes in the second, and no further.
TEST_F(EnvironmentCollectionTest, RunsTwice)
{
    run("collectgarbage() "
        "local globals, newproxy, getmetatable = _G, newproxy, getmetatable "
        "globals.generations = 0 "
        "local function chain() "
        "    getmetatable(newproxy(true)).__gc = function() "
        "        globals.generations = (globals.generations or 0) + 1 "
        "        chain() "
        "    end "
        "end "
        "chain()");

    environment().requestGarbageCollection();

    EXPECT_EQ(environment().getVar("generations", 0), 2);
}

TEST_F(EnvironmentCollectionTest, LeavesTheLastResult)
{
    runExpectingError("error('boom', 0)");

    environment().requestGarbageCollection();

    EXPECT_EQ(
        lastOutcome(environment()),
        Outcome(5, false, "Error while executing script 'test' : boom"));
}

TEST_F(EnvironmentCollectionTest, LogsEachFinaliserThatRaisesAndGoesOn)
{
    run("for i = 1, 3 do "
        "    getmetatable(newproxy(true)).__gc = function() "
        "        finalised = (finalised or 0) + 1 "
        "        error('finaliser', 0) "
        "    end "
        "end");

    environment().requestGarbageCollection();

    EXPECT_EQ(environment().getVar("finalised", 0), 3);
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(
            LogEntry{"finaliser", "LuaEnvironment"},
            LogEntry{"finaliser", "LuaEnvironment"},
            LogEntry{"finaliser", "LuaEnvironment"}));
}

TEST_F(EnvironmentCollectionTest, MayBeAskedForByAHostFunction)
{
    declare(
        "collect",
        {},
        [this](const Parameters&)
        {
            environment().requestGarbageCollection();
            return FunctionParameter::VOID;
        });

    run("getmetatable(newproxy(true)).__gc = function() finalised = true end  collect()");

    EXPECT_TRUE(environment().getVar("finalised", false));
}

} // namespace tbScripts::test

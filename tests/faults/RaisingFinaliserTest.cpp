// On this interpreter the error of a finaliser leaves through whatever call happened to allocate.
// So every call of the host may meet it, and each has to contain and log it.

#include "support/CallContextFixture.h"
#include "support/GlobalOperations.h"
#include "support/RowName.h"

#include <memory>
#include <string>

namespace tbScripts::test
{

namespace
{

// Puts `makeRaising` before a script: it returns an object whose finaliser raises, also when the
// globals are gone.
std::string withRaisingObjects(const std::string& sources)
{
    return "local error = error "
           "local function makeRaising()"
           "  local object = newproxy(true)"
           "  getmetatable(object).__gc = function() error('finaliser failed', 0) end"
           "  return object "
           "end " +
           sources;
}

} // namespace

class RaisingFinaliserFixture : public CallContextFixture
{
protected:
    // Makes one dead object whose finaliser raises, and has the collector run through to its end in
    // the next call that allocates.
    void armFinaliser()
    {
        run(withRaisingObjects("collectgarbage() collectgarbage() collectgarbage('stop')"
                               "makeRaising()"
                               "collectgarbage('setstepmul', 0) collectgarbage('restart')"));
    }

    static LogEntry failure() { return LogEntry{"finaliser failed", "LuaEnvironment"}; }
};

using RaisingFinaliserAccessTest = OnValues<RaisingFinaliserFixture, GlobalOperation>;

VALUES(RaisingFinaliserAccessTest, ::testing::ValuesIn(allGlobalOperations()));

TEST_P(RaisingFinaliserAccessTest, IsAnsweredNeutrallyAndLoggedAndTheNextAccessWorks)
{
    environment().setVar("known", 42);
    armFinaliser();

    const std::string answer = GetParam().perform(environment(), "score");

    EXPECT_EQ(answer, GetParam().neutralAnswer);
    expectLogged({failure()});
    environment().requestGarbageCollection();
    EXPECT_EQ(environment().getVar("known", 0), 42);
}

using RaisingFinaliserTest = OnValues<RaisingFinaliserFixture, CALL_CONTEXT>;

VALUES(RaisingFinaliserTest, ::testing::ValuesIn(allCallContexts()));

TEST_P(RaisingFinaliserTest, CollectionLogsEachFinaliserAndGoesOn)
{
    run(withRaisingObjects("collectgarbage('stop') for i = 1, 100 do makeRaising() end"));

    performIn(GetParam(), [this] { environment().requestGarbageCollection(); });

    const std::vector<LogEntry> entries = m_log.takeEntries();
    EXPECT_THAT(entries, SizeIs(100));
    EXPECT_THAT(entries, Each(failure()));
}

TEST_P(RaisingFinaliserTest, EndOfTheEnvironmentLogsEachFinaliser)
{
    run(withRaisingObjects("kept = {} for i = 1, 100 do kept[i] = makeRaising() end "
                           "package.loaded.mine = {kept}"));

    performIn(GetParam(), [this] { destroyEnvironment(); });

    const std::vector<LogEntry> entries = m_log.takeEntries();
    EXPECT_THAT(entries, SizeIs(100));
    EXPECT_THAT(entries, Each(failure()));
}

using RaisingFinaliserCallTest = RaisingFinaliserFixture;

TEST_F(RaisingFinaliserCallTest, ReleaseOfAReferenceDoesNotMeetIt)
{
    run("list = {}");
    auto list = std::make_unique<ScriptObjectReference>(environment().getVar("list"));
    armFinaliser();

    list.reset();

    EXPECT_THAT(m_log.takeEntries(), ::testing::IsEmpty());
    environment().requestGarbageCollection();
    expectLogged({failure()});
}

TEST_F(RaisingFinaliserCallTest, ScriptFunctionCallFailsWhileItsInputsAreHandedOver)
{
    run("function take() called = true end");
    const ScriptObjectReference take = environment().getScriptFunction("take");
    const std::vector<FunctionParameter> inputs{FunctionParameter("a text of its own")};
    Parameters outputs;
    armFinaliser();

    EXPECT_FALSE(environment().callScriptFunction(take, inputs, outputs));

    EXPECT_EQ(environment().getLastExecutionResult().code, 5);
    EXPECT_EQ(environment().getLastExecutionResult().message, "finaliser failed");
    EXPECT_FALSE(environment().isVarSet("called"));
    expectLogged({failure()});
}

TEST_F(RaisingFinaliserCallTest, ScriptFunctionCallFailsWhereTheScriptAllocates)
{
    run("function allocate() return {} end");
    const ScriptObjectReference allocate = environment().getScriptFunction("allocate");
    std::vector<FunctionParameter> outputs{FunctionParameter(1)};
    Parameters outputView(outputs);
    armFinaliser();

    EXPECT_FALSE(environment().callScriptFunction(allocate, {}, outputView));

    EXPECT_EQ(environment().getLastExecutionResult().code, 5);
    EXPECT_EQ(outputs[0].getInt(), 1);
    expectLogged({failure()});
}

TEST_F(RaisingFinaliserCallTest, ExecutionFailsWithTheFinalisersText)
{
    armFinaliser();

    EXPECT_FALSE(runScript(environment(), "executed = true", "round"));

    EXPECT_EQ(environment().getLastExecutionResult().code, 5);
    expectLogged("Error while executing script 'round' : finaliser failed", "LuaEnvironment");
}

TEST_F(RaisingFinaliserCallTest, ScriptsAllocationsArgumentsAndResultsOfHostFunctionsMayMeetIt)
{
    declare("take", {PARAM_TYPE_STRING}, [](const Parameters&) { return FunctionParameter(1); });
    declare("give", {}, [](const Parameters&) { return FunctionParameter("a text of its own"); });

    // The number becomes a string inside of the host function.
    for (const char* allocating : {"return {}", "take(12.75)", "give()"})
    {
        run(withRaisingObjects(
            std::string("local take, give = take, give "
                        "collectgarbage() collectgarbage('stop') makeRaising() "
                        "collectgarbage('setstepmul', 0) "
                        "works, text = pcall(function() collectgarbage('restart') ") +
            allocating + " end)"));

        EXPECT_EQ(environment().getVar("text", ""), "finaliser failed") << allocating;
        EXPECT_FALSE(environment().getVar("works", true)) << allocating;
    }
}

TEST_F(RaisingFinaliserCallTest, WhatFinalisersRaiseWhileTheStateClosesIsLost)
{
    run(withRaisingObjects("kept = makeRaising()"));

    environment().setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_FALSE(environment().isVarSet("kept"));
}

TEST_F(RaisingFinaliserCallTest, ObjectsThatFinalisersMakeAnewDoNotKeepTheCollectionBusy)
{
    run("function renew()"
        "  getmetatable(newproxy(true)).__gc = function() renew() error('again', 0) end "
        "end renew()");

    environment().requestGarbageCollection();

    EXPECT_THAT(m_log.takeEntries(), Each(LogEntry{"again", "LuaEnvironment"}));
    run("renew = function() end");
    environment().requestGarbageCollection();
    m_log.takeEntries();
}

} // namespace tbScripts::test

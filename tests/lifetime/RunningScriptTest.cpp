// A script that is changed or destroyed by its own run: the run holds what it needs.

#include "support/EnvironmentFixture.h"

#include <tbScripts/Script.h>

#include <functional>
#include <memory>
#include <string>

namespace tbScripts::test
{

class RunningScriptTest : public EnvironmentFixture
{
protected:
    // Compiles `sources` as the script "round", whose global `act` performs `action`.
    void prepare(const std::string& sources, std::function<void()> action)
    {
        declare("act", {}, doing([action = std::move(action)] { action(); }));
        m_script = std::make_unique<Script>();
        m_script->setName("round");
        m_script->setTargetInterpreter(INTERPRETER_LUA);
        m_script->setSources(sources);
        ASSERT_TRUE(m_script->load());
    }

    bool execute() { return environment().execute(*m_script); }

    LogEntry failureOf(const std::string& name)
    {
        return LogEntry{"Error while executing script '" + name + "' : lost", "LuaEnvironment"};
    }

    std::unique_ptr<Script> m_script;
};

TEST_F(RunningScriptTest, MayBeDestroyedByItsRun)
{
    prepare("act() collectgarbage() done = true", [this] { m_script.reset(); });
    EXPECT_TRUE(execute());
    EXPECT_TRUE(environment().getVar("done", false));
}

TEST_F(RunningScriptTest, FailureAfterItsDestructionIsReportedUnderTheLastName)
{
    prepare(
        "act() error('lost', 0)",
        [this]
        {
            m_script->setName("final");
            m_script.reset();
        });

    EXPECT_FALSE(execute());

    expectLogged({failureOf("final")});
}

TEST_F(RunningScriptTest, FailureIsReportedUnderTheNameThatItHasAfterTheRun)
{
    prepare("act() error('lost', 0)", [this] { m_script->setName("renamed"); });
    EXPECT_FALSE(execute());
    expectLogged({failureOf("renamed")});
}

TEST_F(RunningScriptTest, MayBeUnloadedByItsRun)
{
    prepare("act() collectgarbage() done = true", [this] { m_script->unload(); });
    EXPECT_TRUE(execute());
    EXPECT_TRUE(environment().getVar("done", false));
}

TEST_F(RunningScriptTest, MayBeCompiledAnewByItsRun)
{
    prepare(
        "act() round = 1",
        [this]
        {
            m_script->setSources("round = 2");
            m_script->load();
        });

    EXPECT_TRUE(execute());

    EXPECT_EQ(environment().getVar("round", 0), 1);
    EXPECT_TRUE(execute());
    EXPECT_EQ(environment().getVar("round", 0), 2);
}

TEST_F(RunningScriptTest, MayBeGivenToAnotherInterpreterByItsRun)
{
    prepare("act() done = true", [this] { m_script->setTargetInterpreter(INTERPRETER_LUA); });
    EXPECT_TRUE(execute());
    EXPECT_TRUE(environment().getVar("done", false));
}

TEST_F(RunningScriptTest, MayBeAssignedByItsRun)
{
    prepare("act() done = true", [this] { *m_script = Script(); });
    EXPECT_TRUE(execute());
    EXPECT_TRUE(environment().getVar("done", false));
}

TEST_F(RunningScriptTest, MayRunItself)
{
    prepare(
        "count = (count or 0) + 1 if count < 5 then act() end", [this] { EXPECT_TRUE(execute()); });
    EXPECT_TRUE(execute());
    EXPECT_EQ(environment().getVar("count", 0), 5);
}

TEST_F(RunningScriptTest, FailureInsideLeavesNoTraceInASuccessfulResult)
{
    prepare("act()", [this] { runScript(environment(), "error('lost', 0)", "inner"); });

    EXPECT_TRUE(execute());

    forgetLog();
    const ExecutionResult& result = environment().getLastExecutionResult();
    EXPECT_TRUE(result.success);
    EXPECT_EQ(result.code, 0);
    EXPECT_TRUE(result.message.empty());
}

TEST_F(RunningScriptTest, SuccessInsideLeavesNoTraceInAFailedResult)
{
    prepare("act() error('lost', 0)", [this] { runScript(environment(), "return 1", "inner"); });
    EXPECT_FALSE(execute());
    forgetLog();
    EXPECT_EQ(environment().getLastExecutionResult().code, 5);
}

} // namespace tbScripts::test

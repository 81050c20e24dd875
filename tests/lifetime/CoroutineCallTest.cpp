// Host calls made while a coroutine runs work on that coroutine, and on the main thread again as
// soon as it has yielded, ended or failed.

#include "support/EnvironmentFixture.h"
#include "support/Sanitizers.h"

#include <string>
#include <vector>

namespace tbScripts::test
{

class CoroutineCallTest : public EnvironmentFixture
{
protected:
    CoroutineCallTest()
    {
        run("function current() return tostring(coroutine.running()) end");
        m_current = environment().getScriptFunction("current");
        declare(
            "hostsCurrent",
            {},
            [this](const Parameters&) { return FunctionParameter(currentForHost().c_str()); });
    }

    void TearDown() override
    {
        m_current = ScriptObjectReference();
        EnvironmentFixture::TearDown();
    }

    // What a script function that the host calls sees as the running coroutine.
    std::string currentForHost()
    {
        std::vector<FunctionParameter> outputs{FunctionParameter("")};
        Parameters outputView(outputs);
        EXPECT_TRUE(environment().callScriptFunction(m_current, {}, outputView));
        return std::string(std::string_view(outputs[0].getString()));
    }

private:
    ScriptObjectReference m_current;
};

TEST_F(CoroutineCallTest, ScriptFunctionThatTheHostCallsRunsInTheCoroutine)
{
    run("coroutine.wrap(function() assert(hostsCurrent() == current() and current() ~= 'nil')"
        "  done = true end)()");
    EXPECT_TRUE(environment().getVar("done", false));
}

TEST_F(CoroutineCallTest, InnermostCoroutineCounts)
{
    run(R"(
        coroutine.wrap(function()
            local outer = hostsCurrent()
            coroutine.wrap(function() inner = hostsCurrent() assert(inner == current()) end)()
            assert(hostsCurrent() == outer and inner ~= outer)
            done = true
        end)()
    )");

    EXPECT_TRUE(environment().getVar("done", false));
}

TEST_F(CoroutineCallTest, MainThreadCountsAfterAYield)
{
    run("kept = coroutine.create(function() hostsCurrent() coroutine.yield() end) "
        "coroutine.resume(kept) assert(hostsCurrent() == 'nil')");
    EXPECT_EQ(currentForHost(), "nil");
}

TEST_F(CoroutineCallTest, MainThreadCountsAfterAnEnd)
{
    run("coroutine.wrap(hostsCurrent)() collectgarbage() collectgarbage()"
        "assert(hostsCurrent() == 'nil')");
    EXPECT_EQ(currentForHost(), "nil");
}

TEST_F(CoroutineCallTest, MainThreadCountsAfterAScriptError)
{
    declare("fail", {}, [](const Parameters&) -> FunctionParameter { throw std::string("lost"); });
    run("works = coroutine.resume(coroutine.create(fail)) collectgarbage()"
        "assert(not works and hostsCurrent() == 'nil')");
    EXPECT_EQ(currentForHost(), "nil");
    expectLogged("lost", "LuaFunction");
}

TEST_F(CoroutineCallTest, MainThreadCountsAfterAForeignException)
{
    declare("fail", {}, [](const Parameters&) -> FunctionParameter { throw 7; });
    run("works = coroutine.resume(coroutine.create(fail)) collectgarbage()"
        "assert(not works and hostsCurrent() == 'nil')");
    EXPECT_EQ(currentForHost(), "nil");
}

TEST_F(CoroutineCallTest, MainThreadCountsAfterAFailureThatTheHostContained)
{
    run("function failing() error('lost', 0) end");
    const ScriptObjectReference failing = environment().getScriptFunction("failing");
    declare(
        "tryIt",
        {},
        [&](const Parameters&)
        {
            Parameters outputs;
            return FunctionParameter(environment().callScriptFunction(failing, {}, outputs));
        });

    run("coroutine.wrap(function() assert(tryIt() == false and hostsCurrent() == current())"
        "  done = true end)() assert(done and hostsCurrent() == 'nil')");

    expectLogged("lost", "LuaEnvironment");
}

TEST_F(CoroutineCallTest, ValuesThatTheHostReadsLandInTheCoroutine)
{
    declare(
        "read",
        {},
        [this](const Parameters&) { return FunctionParameter(environment().getVar("shared")); });

    run("shared = {7} "
        "local thread = coroutine.wrap(function() local a, b = 1, 2 local t = read()"
        "  coroutine.yield(a) coroutine.yield(b) coroutine.yield(t) end)"
        "assert(thread() == 1 and thread() == 2 and thread() == shared)");
}

TEST_F(CoroutineCallTest, CollectionsInsideLeaveTheCoroutinesValuesAlone)
{
    declare(
        "collect",
        {PARAM_TYPE_INT},
        [this](const Parameters& parameters)
        {
            collect();
            environment().setVar("seen", std::to_string(parameters[0].getInt()).c_str());
            collect();
            return FunctionParameter(environment().getVar("seen", 0));
        });

    run(R"(
        local function level(n)
            local values = {n, tostring(n), {n}}
            if n > 0 then coroutine.wrap(level)(n - 1) end
            assert(collect(n) == n)
            assert(values[1] == n and values[2] == tostring(n) and values[3][1] == n)
        end
        for i = 1, 10 do coroutine.wrap(level)(10) end
        done = true
    )");

    EXPECT_TRUE(environment().getVar("done", false));
}

TEST_F(CoroutineCallTest, FunctionDeclaredInsideACoroutineIsEverybodys)
{
    declare(
        "declareLate",
        {},
        [this](const Parameters&)
        {
            declare("late", {}, returning(42));
            return FunctionParameter::VOID;
        });

    run("local declareLate = declareLate "
        "coroutine.wrap(function() setfenv(0, {}) declareLate() end)() collectgarbage()");

    run("assert(late() == 42)");
}

TEST_F(CoroutineCallTest, CallbackOfACoroutineThatFailedIsCalledOnTheMainThread)
{
    ScriptObjectReference callback;
    declare(
        "listen",
        {PARAM_TYPE_SCRIPT_FUNCTION},
        doing([&callback](const Parameters& parameters)
              { callback = parameters[0].getScriptObject(); }));
    run("coroutine.resume(coroutine.create(function() local state = 5"
        "  listen(function() return state, coroutine.running() == nil end) error('lost') end)) "
        "collectgarbage()");
    std::vector<FunctionParameter> outputs{FunctionParameter(0), FunctionParameter(false)};
    Parameters outputView(outputs);

    EXPECT_TRUE(environment().callScriptFunction(callback, {}, outputView));

    EXPECT_EQ(outputs[0].getInt(), 5);
    EXPECT_TRUE(outputs[1].getBool());
    environment().getFunc("listen")->reset();
}

TEST_F(CoroutineCallTest, HostMayResumeOtherCoroutinesFromInsideOne)
{
    run("worker = coroutine.create(function() for i = 1, 5 do coroutine.yield(i) end end) "
        "function step() local _, value = coroutine.resume(worker) return value or -1 end");
    const ScriptObjectReference step = environment().getScriptFunction("step");
    declare(
        "stepByHost",
        {},
        [&](const Parameters&)
        {
            std::vector<FunctionParameter> outputs{FunctionParameter(0)};
            Parameters outputView(outputs);
            environment().callScriptFunction(step, {}, outputView);
            return outputs[0];
        });

    run("local sum = 0 for i = 1, 5 do coroutine.wrap(function()"
        "  sum = sum + stepByHost() end)() end total = sum");

    EXPECT_EQ(environment().getVar("total", 0), 15);
}

TEST_F(CoroutineCallTest, ResumingTheRunningCoroutineThroughTheHostIsAScriptsOutcome)
{
    run("function resume() return coroutine.resume(running) end");
    std::vector<FunctionParameter> outputs{FunctionParameter(true), FunctionParameter("")};
    declare(
        "resumeByHost",
        {},
        [&](const Parameters&)
        {
            call("resume", {}, outputs);
            return FunctionParameter::VOID;
        });

    run("running = coroutine.create(function() resumeByHost() return 'end' end)"
        "_, result = coroutine.resume(running) assert(result == 'end')");

    EXPECT_FALSE(outputs[0].getBool());
    EXPECT_EQ(outputs[1].getString(), "cannot resume running coroutine");
}

TEST_F(CoroutineCallTest, ManyCoroutinesCallTheHostThatCallsBack)
{
    environment().setVar("count", repetitions(10000));
    run("local seen = 0 for i = 1, count do"
        "  coroutine.wrap(function() if hostsCurrent() == current() then seen = seen + 1 end end)()"
        " end matching = seen");
    EXPECT_EQ(environment().getVar("matching", 0), repetitions(10000));
}

} // namespace tbScripts::test

// Copies of an environment share its interpreter and its bindings; the last one takes them down.

#include "support/CountedObject.h"
#include "support/EnvironmentFixture.h"
#include "support/Execution.h"

#include <string>
#include <vector>

namespace tbScripts::test
{

class EnvironmentCopyTest : public EnvironmentFixture
{
protected:
    EnvironmentCopyTest()
        : m_copy(std::make_unique<Environment>(environment()))
    {
    }

    void TearDown() override
    {
        m_copy.reset();
        EnvironmentFixture::TearDown();
    }

    std::unique_ptr<Environment> m_copy;
};

TEST_F(EnvironmentCopyTest, SharesItsGlobalsWithItsSource)
{
    environment().setVar("v", 1);
    m_copy->setVar("w", 2);

    EXPECT_EQ(m_copy->getVar("v", -1), 1);
    EXPECT_EQ(environment().getVar("w", -1), 2);
}

TEST_F(EnvironmentCopyTest, SharesTheResultUntilASwitchResetsThatOfTheSwitchedOneOnly)
{
    const Outcome failure(5, false, "Error while executing script 'test' : boom");
    runExpectingError("error('boom', 0)");
    EXPECT_EQ(lastOutcome(*m_copy), failure);

    environment().setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_EQ(lastOutcome(environment()), Outcome(0, true, ""));
    EXPECT_EQ(lastOutcome(*m_copy), failure);
}

TEST_F(EnvironmentCopyTest, ResultStaysInItsPlaceThroughAnAssignment)
{
    Environment other;
    const ExecutionResult& result = other.getLastExecutionResult();

    other = environment();
    m_log.takeEntries(); // of the end of what it had
    runExpectingError("error('boom', 0)");

    EXPECT_EQ(&other.getLastExecutionResult(), &result);
    EXPECT_EQ(result.message, "Error while executing script 'test' : boom");
}

TEST_F(EnvironmentCopyTest, StartsWithTheNameOfItsSourceAndHasOneOfItsOwn)
{
    EXPECT_EQ(m_copy->getName(), "world");

    m_copy->setName("copy");

    EXPECT_EQ(environment().getName(), "world");
    EXPECT_EQ(m_copy->getName(), "copy");
}

TEST_F(EnvironmentCopyTest, FunctionDeclaredThroughACopyOutlivesThatCopy)
{
    m_copy->setFunc("f")->setFunction([](const Parameters&) { return FunctionParameter(42); });

    m_copy.reset();

    run("assert(f() == 42)");
}

TEST_F(EnvironmentCopyTest, SwitchOfTheSourceLeavesTheCopyWithItsFunctions)
{
    environment().setVar("v", 1);
    declare("f", {}, [](const Parameters&) { return FunctionParameter(42); });

    environment().setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_EQ(m_copy->getVar("v", -1), 1);
    EXPECT_TRUE(runScript(*m_copy, "assert(f() == 42)"));
    EXPECT_FALSE(environment().isVarSet("v"));
    EXPECT_FALSE(environment().isVarSet("f"));
}

TEST_F(EnvironmentCopyTest, SwitchOfTheCopyLeavesTheSource)
{
    environment().setVar("v", 1);

    m_copy->setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_EQ(environment().getVar("v", -1), 1);
    EXPECT_FALSE(m_copy->isVarSet("v"));
}

TEST_F(EnvironmentCopyTest, SwitchIsRefusedWhileTheSourceRuns)
{
    declareAction(
        "switch",
        [this]
        {
            m_copy->setName("copy");
            m_copy->setEnvironmentFor(INTERPRETER_LUA);
        });

    run("v = 1  switch()");

    EXPECT_EQ(m_copy->getVar("v", -1), 1);
    expectLogged(
        "Environment 'copy' is running a script. Its type can't be changed from inside.",
        "Environment");
}

TEST_F(EnvironmentCopyTest, MayEndInsideARunOfItsSource)
{
    declareAction("endCopy", [this] { m_copy.reset(); });

    run("endCopy()  answer = 42");

    EXPECT_EQ(environment().getVar("answer", 0), 42);
    run("assert(type(endCopy) == 'function')");
}

// Both wait for the end of the run. The first of them must not close the interpreter for the
// second, which removes the functions before anything is collected.
TEST_F(EnvironmentCopyTest, BothMayEndInsideOneRunAndAreTornDownInOrder)
{
    std::vector<std::string> notes;
    declareAction("note", [&notes] { notes.emplace_back("called"); });
    declareAction(
        "endBoth",
        [this]
        {
            destroyEnvironment();
            m_copy.reset();
        });

    run("local kept, pcall = note, pcall"
        " keeper = newproxy(true) getmetatable(keeper).__gc = function() pcall(kept) end"
        " kept() endBoth()");

    EXPECT_THAT(notes, ::testing::SizeIs(1)); // not by the finaliser: the function is gone by then
}

TEST_F(EnvironmentCopyTest, SelfAssignmentChangesNothing)
{
    environment().setVar("v", 1);
    Function* const function = environment().setFunc("f");
    Environment& same = environment();

    environment() = same;

    EXPECT_EQ(environment().getName(), "world");
    EXPECT_EQ(environment().getVar("v", -1), 1);
    EXPECT_EQ(environment().getFunc("f"), function);
    run("assert(type(f) == 'function')");
}

TEST_F(EnvironmentCopyTest, AssignmentOfACopyTakesItsNameAndFunctionsOnly)
{
    environment().setVar("v", 1);
    m_copy->setName("copy");
    Function* const function = m_copy->setFunc("f");

    environment() = *m_copy;

    EXPECT_EQ(environment().getName(), "copy");
    EXPECT_EQ(environment().getFunc("f"), function);
    EXPECT_EQ(environment().getVar("v", -1), 1);
}

TEST_F(EnvironmentCopyTest, AssignmentSharesTheOtherInterpreter)
{
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);
    other.setVar("v", 1);

    *m_copy = other;

    EXPECT_EQ(m_copy->getVar("v", -1), 1);
    EXPECT_FALSE(environment().isVarSet("v"));
}

TEST_F(EnvironmentCopyTest, AssignmentTearsItsOwnWorldDown)
{
    CountedObject::restart();
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);
    other.setFunc("f")->setFunction([counted = CountedObject()](const Parameters&)
                                    { return FunctionParameter::VOID; });
    runScript(
        other,
        "local error = error  kept = newproxy(true) "
        "getmetatable(kept).__gc = function() error('gone', 0) end");

    other = environment();

    EXPECT_EQ(CountedObject::getLiving(), 0);
    EXPECT_FALSE(other.isFuncSet("f"));
    expectLogged("gone", "LuaEnvironment");
}

TEST_F(EnvironmentCopyTest, AssignmentInsideARunWaitsWithTheTeardown)
{
    CountedObject::restart();
    m_copy.reset();
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);
    int livingAfterwards = -1;
    declareAction(
        "assign",
        [&, counted = CountedObject()]
        {
            environment() = other;
            livingAfterwards = CountedObject::getLiving();
        });

    run("assign()  assert(type(assign) == 'function')");

    EXPECT_EQ(livingAfterwards, 1);
    EXPECT_EQ(CountedObject::getLiving(), 0);
    other.setVar("v", 1);
    EXPECT_EQ(environment().getVar("v", -1), 1);
}

// The order in which source and copy end.
class EnvironmentCopyEndTest : public EnvironmentCopyTest,
                               public ::testing::WithParamInterface<bool>
{
protected:
    void endFirst() { endOne(GetParam()); }

    void endSecond() { endOne(!GetParam()); }

    Environment& survivor() { return GetParam() ? *m_copy : environment(); }

private:
    void endOne(bool isSource)
    {
        if (isSource)
            destroyEnvironment();
        else
            m_copy.reset();
    }
};

TEST_P(EnvironmentCopyEndTest, LeavesTheOtherWorkingWithItsFunctions)
{
    environment().setVar("v", 1);
    declare("f", {}, [](const Parameters&) { return FunctionParameter(42); });

    endFirst();

    EXPECT_EQ(survivor().getVar("v", -1), 1);
    EXPECT_TRUE(runScript(survivor(), "assert(v == 1 and f() == 42)"));
}

TEST_P(EnvironmentCopyEndTest, FunctionsAndFinalisersGoOnceWithTheLastHolder)
{
    CountedObject::restart();
    declareAction("f", [counted = CountedObject()] {});
    run("local error = error  kept = newproxy(true) "
        "getmetatable(kept).__gc = function() error('gone', 0) end");

    endFirst();
    EXPECT_EQ(CountedObject::getLiving(), 1);
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
    endSecond();

    EXPECT_EQ(CountedObject::getLiving(), 0);
    expectLogged("gone", "LuaEnvironment");
}

TEST_P(EnvironmentCopyEndTest, IsSafeAfterTheSourceWasSwitched)
{
    CountedObject::restart();
    declareAction("f", [counted = CountedObject()] {});
    environment().setEnvironmentFor(INTERPRETER_LUA);

    endFirst();
    endSecond();

    EXPECT_EQ(CountedObject::getLiving(), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Orders,
    EnvironmentCopyEndTest,
    ::testing::Bool(),
    [](const ::testing::TestParamInfo<bool>& row)
    { return row.param ? "SourceFirst" : "CopyFirst"; });

// Messages of a shared back-end name the environment that it was made for.
class DummyEnvironmentCopyTest : public LogFixture
{
protected:
    DummyEnvironmentCopyTest()
        : m_source(std::make_unique<Environment>())
    {
        m_source->setName("source");
        m_copy = std::make_unique<Environment>(*m_source);
        m_copy->setName("copy");
    }

    void TearDown() override
    {
        LogFixture::TearDown();
        m_source.reset();
        m_copy.reset();
        m_log.takeEntries();
    }

    static LogEntry warningOf(const std::string& name)
    {
        return {
            "Requesting a garbage collection in environment '" + name +
                "', which has no InterpreterType. This will have no effect.",
            "Environment"};
    }

    std::unique_ptr<Environment> m_source;
    std::unique_ptr<Environment> m_copy;
};

TEST_F(DummyEnvironmentCopyTest, WarnsWithTheNameOfItsSourceUpToItsLast)
{
    m_copy->requestGarbageCollection();
    m_source->setName("renamed");
    m_copy->requestGarbageCollection();
    m_source->setName("last");
    m_source.reset();
    m_copy->requestGarbageCollection();

    expectLogged({warningOf("source"), warningOf("renamed"), warningOf("last")});
}

TEST_F(DummyEnvironmentCopyTest, WarnsWithItsOwnNameAfterASwitch)
{
    m_copy->setEnvironmentFor(INTERPRETER_UNKNOWN);
    m_log.takeEntries();

    m_copy->requestGarbageCollection();

    expectLogged({warningOf("copy")});
}

TEST_F(DummyEnvironmentCopyTest, TearsDownOnceWithTheLastHolder)
{
    m_source.reset();
    const std::vector<LogEntry> between = m_log.takeEntries();

    m_copy.reset();

    EXPECT_THAT(between, IsEmpty());
    expectLogged({warningOf("source")});
}

} // namespace tbScripts::test

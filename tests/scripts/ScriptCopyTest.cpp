// A copy is a second handle on the same compiled state.

#include "support/ScriptFixture.h"

#include <memory>
#include <utility>

namespace tbScripts::test
{

namespace
{

// Assigned through a function, so that the compiler does not see one object on both sides.
void assign(Script& target, const Script& source)
{
    target = source;
}

} // namespace

class ScriptCopyTest : public ScriptFixture
{
protected:
    // The one message of a failed compilation.
    void expectLoggedFailureOf(const std::string& scriptName)
    {
        expectLogged(
            "Error while compiling script '" + scriptName +
                "' : [string \"x = = 1\"]:1: unexpected symbol near '='",
            "LuaScript");
    }
};

TEST_F(ScriptCopyTest, HasNameSourcesInterpreterAndCompiledFormOfTheOriginal)
{
    load("x = 1");

    const Script copy(m_script);

    EXPECT_EQ(copy.getName(), "x");
    EXPECT_EQ(copy.getSources(), "x = 1");
    EXPECT_EQ(copy.getTargetInterpreter(), 1U);
    EXPECT_EQ(run(copy), 1);
}

TEST_F(ScriptCopyTest, LoadsAndUnloadsItsOwnSourcesForBothAsTheOriginalDoes)
{
    Script copy(m_script);

    load("x = 1");
    EXPECT_EQ(run(copy), 1);
    EXPECT_EQ(copy.getSources(), "");
    copy.setSources("x = 2");
    EXPECT_TRUE(copy.load());
    EXPECT_EQ(run(m_script), 2);
    EXPECT_EQ(m_script.getSources(), "x = 1");
    copy.unload();
    EXPECT_FALSE(hasBytecode(m_script));
    copy.load();
    m_script.unload();
    EXPECT_FALSE(hasBytecode(copy));
}

TEST_F(ScriptCopyTest, ShowsTheSameResult)
{
    const Script copy(m_script);

    loadExpectingError("x = = 1");

    EXPECT_EQ(&copy.getLastCompilationResult(), &m_script.getLastCompilationResult());
    EXPECT_EQ(copy.getLastCompilationResult().errorCode, 3U);
}

TEST_F(ScriptCopyTest, SharesTheRefusalOfAScriptWithoutInterpreter)
{
    Script script;
    const Script copy(script);

    script.load();

    EXPECT_EQ(copy.getLastCompilationResult().errorCode, 2U);
}

TEST_F(ScriptCopyTest, HasANameOfItsOwn)
{
    Script copy(m_script);

    copy.setName("copy");

    EXPECT_EQ(m_script.getName(), "x");
}

TEST_F(ScriptCopyTest, ReportsWithTheNameOfTheOriginalUpToItsLast)
{
    auto original = std::make_unique<Script>(m_script);
    original->setTargetInterpreter(INTERPRETER_LUA);
    Script copy(*original);
    copy.setName("copy");
    copy.setSources("x = = 1");

    copy.load();
    expectLoggedFailureOf("x");
    original->setName("renamed");
    copy.load();
    expectLoggedFailureOf("renamed");
    original->setName("last");
    original.reset();

    EXPECT_FALSE(copy.load());
    EXPECT_EQ(copy.getLastCompilationResult().errorCode, 3U);
    expectLoggedFailureOf("last");
}

TEST_F(ScriptCopyTest, WorksAfterTheOriginalIsGone)
{
    auto original = std::make_unique<Script>();
    original->setTargetInterpreter(INTERPRETER_LUA);
    original->setSources("x = 1");
    original->load();
    Script copy(*original);

    original.reset();

    EXPECT_EQ(run(copy), 1);
    copy.setSources("x = 2");
    EXPECT_TRUE(copy.load());
    EXPECT_EQ(run(copy), 2);
}

TEST_F(ScriptCopyTest, OriginalWorksAfterItsCopyIsGone)
{
    load("x = 1");

    {
        const Script copy(m_script);
    }

    EXPECT_EQ(run(m_script), 1);
    EXPECT_TRUE(m_script.load());
}

TEST_F(ScriptCopyTest, KeepsTheCompiledFormWhenTheOriginalChoosesAnInterpreterAnew)
{
    load("x = 1");
    const Script copy(m_script);

    m_script.setTargetInterpreter(INTERPRETER_LUA);

    EXPECT_EQ(run(copy), 1);
    EXPECT_FALSE(hasBytecode(m_script));
}

TEST_F(ScriptCopyTest, ReportsWithItsOwnNameAfterItChoseAnInterpreter)
{
    Script copy(m_script);
    copy.setName("copy");
    copy.setTargetInterpreter(INTERPRETER_LUA);
    copy.setSources("x = = 1");

    copy.load();

    expectLoggedFailureOf("copy");
}

TEST_F(ScriptCopyTest, AssignmentTakesEverythingOfTheSource)
{
    load("x = 1");
    Script target;
    target.setName("target");

    Script& result = target = m_script;

    EXPECT_EQ(&result, &target);
    EXPECT_EQ(target.getName(), "x");
    EXPECT_EQ(target.getSources(), "x = 1");
    EXPECT_EQ(target.getTargetInterpreter(), 1U);
    EXPECT_EQ(&target.getLastCompilationResult(), &m_script.getLastCompilationResult());
    EXPECT_EQ(run(target), 1);
}

TEST_F(ScriptCopyTest, AssignmentTakesTheLackOfAnInterpreterAndLeavesTheFormToItsOtherHolders)
{
    load("x = 1");
    const Script copy(m_script);

    m_script = Script();

    EXPECT_EQ(m_script.getTargetInterpreter(), 0U);
    EXPECT_FALSE(m_script.load());
    EXPECT_EQ(m_script.getLastCompilationResult().errorCode, 2U);
    EXPECT_EQ(run(copy), 1);
}

TEST_F(ScriptCopyTest, AssignedScriptReportsWithTheNameOfTheSource)
{
    Script target;
    target = m_script;
    target.setName("target");
    target.setSources("x = = 1");

    target.load();

    expectLoggedFailureOf("x");
}

TEST_F(ScriptCopyTest, AssigningToItselfChangesNothing)
{
    load("x = 1");

    assign(m_script, m_script);

    EXPECT_EQ(m_script.getName(), "x");
    EXPECT_EQ(m_script.getSources(), "x = 1");
    EXPECT_EQ(run(m_script), 1);
}

TEST_F(ScriptCopyTest, MovingIsCopying)
{
    load("x = 1");

    const Script moved(std::move(m_script));

    EXPECT_EQ(run(moved), 1);
    EXPECT_EQ(run(m_script), 1);
    EXPECT_EQ(m_script.getName(), "x");
}

} // namespace tbScripts::test

// An environment without interpreter: each call warns once and returns its neutral value.

#include "support/Execution.h"
#include "support/FakeScriptObjects.h"
#include "support/LogFixture.h"

#include <tbScripts/Environment.h>
#include <tbScripts/Function.h>

#include <memory>
#include <string>
#include <vector>

namespace tbScripts::test
{

using Parameters = tbMemory::BufferView<FunctionParameter>;

class DummyEnvironmentTest : public LogFixture
{
protected:
    DummyEnvironmentTest()
        : m_environment(std::make_unique<Environment>())
    {
        m_environment->setName("limbo");
    }

    void TearDown() override
    {
        LogFixture::TearDown();
        m_environment.reset();
        m_log.takeEntries(); // the teardown warns, which a test of its own shows
    }

    static LogEntry warning(
        const std::string& beginning,
        const std::string& name = "limbo",
        const std::string& end = "This will have no effect.")
    {
        return {
            beginning + " in environment '" + name + "', which has no InterpreterType. " + end,
            "Environment"};
    }

    // Expects one and the same warning of each of `calls` calls, and nothing else.
    void expectWarnings(std::size_t calls, const LogEntry& expected)
    {
        expectLogged(std::vector<LogEntry>(calls, expected));
    }

    std::unique_ptr<Environment> m_environment;
};

TEST_F(DummyEnvironmentTest, SettingAVariableWarnsWhateverItsKind)
{
    m_environment->setVar("v", ScriptObjectReference());
    m_environment->setVar("v", "t");
    m_environment->setVar("v", tbMemory::StringView("t"));
    m_environment->setVar("v", 1.5);
    m_environment->setVar("v", 1.5F);
    m_environment->setVar("v", 1);
    m_environment->setVar("v", true);

    expectWarnings(7, warning("Setting a variable"));
}

TEST_F(DummyEnvironmentTest, RequestingAVariableWarnsAndReturnsTheDefaultWhateverItsKind)
{
    const ScriptObjectReference value = m_environment->getVar("v");

    EXPECT_EQ(value.getInterpreterReference(), nullptr);
    EXPECT_EQ(value.getUseCount(), 1U);
    EXPECT_EQ(m_environment->getVar("v", "else"), "else");
    EXPECT_EQ(m_environment->getVar("v", tbMemory::StringView("elsewhere", 4)), "else");
    EXPECT_TRUE(m_environment->getVar("v", tbMemory::StringView()).isNull());
    EXPECT_EQ(m_environment->getVar("v", 2.5), 2.5);
    EXPECT_EQ(m_environment->getVar("v", 2.5F), 2.5F);
    EXPECT_EQ(m_environment->getVar("v", 7), 7);
    EXPECT_TRUE(m_environment->getVar("v", true));
    expectWarnings(8, warning("Requesting a variable"));
}

TEST_F(DummyEnvironmentTest, WhetherAVariableIsSetIsWarnedOf)
{
    EXPECT_FALSE(m_environment->isVarSet("v"));

    expectLogged({warning("Querying if a a variable is set")});
}

TEST_F(DummyEnvironmentTest, ObjectsAreNeitherSetNorFound)
{
    m_environment->setObject("v", "T", this);

    EXPECT_EQ(m_environment->getObject("v", "T"), nullptr);
    expectLogged({warning("Setting an object"), warning("Requesting an object variable")});
}

TEST_F(DummyEnvironmentTest, ScriptFunctionIsAnEmptyReference)
{
    const ScriptObjectReference function = m_environment->getScriptFunction("f");

    EXPECT_EQ(function.getInterpreterReference(), nullptr);
    EXPECT_EQ(function.getUseCount(), 1U);
    expectLogged({warning("Requesting a script function")});
}

TEST_F(DummyEnvironmentTest, FunctionDeclarationReturnsNull)
{
    EXPECT_EQ(m_environment->setFunc("f"), nullptr);

    expectLogged({warning(
        "Requesting a function", "limbo", "This will have no effect, returning nullptr.")});
}

TEST_F(DummyEnvironmentTest, NothingIsSerialized)
{
    EXPECT_TRUE(m_environment->serializeScriptObject(ScriptObjectReference(), false).empty());

    expectLogged({warning(
        "Requesting a script object serialization",
        "limbo",
        "This will have no effect, returning empty buffer.")});
}

TEST_F(DummyEnvironmentTest, DeserializationReturnsAnEmptyReference)
{
    const std::vector<unsigned char> bytes{'t'};

    const ScriptObjectReference value = m_environment->deserializeScriptObject(bytes);

    EXPECT_EQ(value.getInterpreterReference(), nullptr);
    EXPECT_EQ(value.getUseCount(), 1U);
    expectLogged({warning("Requesting a script object deserialization")});
}

TEST_F(DummyEnvironmentTest, ScriptCallFailsAndLeavesTheOutputs)
{
    std::vector<FunctionParameter> outputs{FunctionParameter(42)};
    Parameters outputView(outputs);

    const bool isDone = m_environment->callScriptFunction(ScriptObjectReference(), {}, outputView);

    EXPECT_FALSE(isDone);
    EXPECT_EQ(outputs[0].getInt(), 42);
    expectLogged({warning(
        "Requesting a script function call",
        "limbo",
        "This will have no effect, returning VOID.")});
}

TEST_F(DummyEnvironmentTest, ExecutionFailsWithCode2UntilAnother)
{
    const std::string message = "Can't execute if the InterpreterType has not been set.";
    CompiledScript script("return 1");

    EXPECT_FALSE(m_environment->execute(script));

    EXPECT_EQ(lastOutcome(*m_environment), Outcome(2, false, message));
    expectLogged(message, "Environment");
    m_environment->setVar("v", 1);
    EXPECT_EQ(lastOutcome(*m_environment), Outcome(2, false, message));
    m_log.takeEntries();
}

TEST_F(DummyEnvironmentTest, WarnsWithAllBytesOfTheNameAtThatTime)
{
    m_environment->setName("elsewhere");
    m_environment->requestGarbageCollection();
    m_environment->setName(tbMemory::StringView("a\0b", 3));

    m_environment->requestGarbageCollection();

    expectLogged(
        {warning("Requesting a garbage collection", "elsewhere"),
         warning("Requesting a garbage collection", std::string("a\0b", 3))});
}

TEST_F(DummyEnvironmentTest, RegistryQueriesAskNobody)
{
    EXPECT_FALSE(m_environment->isFuncSet("f"));
    EXPECT_EQ(m_environment->getFunc("f"), nullptr);

    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(DummyEnvironmentTest, DestructionWarnsOfItsCollectionOnly)
{
    m_environment.reset();

    expectLogged({warning("Requesting a garbage collection")});
}

TEST_F(DummyEnvironmentTest, ForeignReferencesAreLeftAlone)
{
    const ScriptObjectReference foreign(new FakeReference);

    m_environment->setVar("v", foreign);

    EXPECT_EQ(foreign.getUseCount(), 1U);
    m_log.takeEntries();
}

} // namespace tbScripts::test

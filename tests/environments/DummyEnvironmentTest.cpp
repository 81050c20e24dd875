// An environment without interpreter: each call warns once and gives its neutral value.

#include "support/Execution.h"
#include "support/FakeScriptObjects.h"
#include "support/LogFixture.h"

#include <tbScripts/Environment.h>
#include <tbScripts/Function.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

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

    std::unique_ptr<Environment> m_environment;
};

namespace
{

struct Warning
{
    const char* name;
    std::function<void(Environment&)> act; // asserts the neutral value
    const char* message;
};

void PrintTo(const Warning& row, std::ostream* stream)
{
    *stream << row.name;
}

std::string nameOf(const ::testing::TestParamInfo<Warning>& row)
{
    return row.param.name;
}

} // namespace

class DummyEnvironmentWarningTest : public DummyEnvironmentTest,
                                    public ::testing::WithParamInterface<Warning>
{
};

TEST_P(DummyEnvironmentWarningTest, IsLoggedOnceWithTheNeutralValue)
{
    GetParam().act(*m_environment);

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{GetParam().message, "Environment"}));
}

constexpr const char* SETTING =
    "Setting a variable in environment 'limbo', which has no InterpreterType. This will have no "
    "effect.";

INSTANTIATE_TEST_SUITE_P(
    Setting,
    DummyEnvironmentWarningTest,
    ::testing::Values(
        Warning{
            "Reference",
            [](Environment& environment) { environment.setVar("v", ScriptObjectReference()); },
            SETTING},
        Warning{
            "CharacterPointer",
            [](Environment& environment) { environment.setVar("v", "t"); },
            SETTING},
        Warning{
            "TextView",
            [](Environment& environment) { environment.setVar("v", tbMemory::StringView("t")); },
            SETTING},
        Warning{"Double", [](Environment& environment) { environment.setVar("v", 1.5); }, SETTING},
        Warning{"Float", [](Environment& environment) { environment.setVar("v", 1.5F); }, SETTING},
        Warning{"Int", [](Environment& environment) { environment.setVar("v", 1); }, SETTING},
        Warning{"Bool", [](Environment& environment) { environment.setVar("v", true); }, SETTING},
        Warning{
            "Object",
            [](Environment& environment) { environment.setObject("v", "T", &environment); },
            "Setting an object in environment 'limbo', which has no InterpreterType. This will "
            "have no effect."}),
    &nameOf);

constexpr const char* REQUESTING =
    "Requesting a variable in environment 'limbo', which has no InterpreterType. This will have no "
    "effect.";

INSTANTIATE_TEST_SUITE_P(
    Requesting,
    DummyEnvironmentWarningTest,
    ::testing::Values(
        Warning{
            "WhetherSet",
            [](Environment& environment) { EXPECT_FALSE(environment.isVarSet("v")); },
            "Querying if a a variable is set in environment 'limbo', which has no "
            "InterpreterType. This will have no effect."},
        Warning{
            "Reference",
            [](Environment& environment)
            {
                const ScriptObjectReference value = environment.getVar("v");
                EXPECT_EQ(value.getInterpreterReference(), nullptr);
                EXPECT_EQ(value.getUseCount(), 1U);
            },
            REQUESTING},
        Warning{
            "CharacterPointer",
            [](Environment& environment) { EXPECT_EQ(environment.getVar("v", "else"), "else"); },
            REQUESTING},
        Warning{
            "TextView",
            [](Environment& environment)
            { EXPECT_EQ(environment.getVar("v", tbMemory::StringView("elsewhere", 4)), "else"); },
            REQUESTING},
        Warning{
            "Double",
            [](Environment& environment) { EXPECT_EQ(environment.getVar("v", 2.5), 2.5); },
            REQUESTING},
        Warning{
            "Float",
            [](Environment& environment) { EXPECT_EQ(environment.getVar("v", 2.5F), 2.5F); },
            REQUESTING},
        Warning{
            "Int",
            [](Environment& environment) { EXPECT_EQ(environment.getVar("v", 7), 7); },
            REQUESTING},
        Warning{
            "Bool",
            [](Environment& environment) { EXPECT_TRUE(environment.getVar("v", true)); },
            REQUESTING},
        Warning{
            "Object",
            [](Environment& environment) { EXPECT_EQ(environment.getObject("v", "T"), nullptr); },
            "Requesting an object variable in environment 'limbo', which has no InterpreterType. "
            "This will have no effect."},
        Warning{
            "ScriptFunction",
            [](Environment& environment)
            {
                const ScriptObjectReference function = environment.getScriptFunction("f");
                EXPECT_EQ(function.getInterpreterReference(), nullptr);
                EXPECT_EQ(function.getUseCount(), 1U);
            },
            "Requesting a script function in environment 'limbo', which has no InterpreterType. "
            "This will have no effect."}),
    &nameOf);

INSTANTIATE_TEST_SUITE_P(
    Doing,
    DummyEnvironmentWarningTest,
    ::testing::Values(
        Warning{
            "Collection",
            [](Environment& environment) { environment.requestGarbageCollection(); },
            "Requesting a garbage collection in environment 'limbo', which has no "
            "InterpreterType. This will have no effect."},
        Warning{
            "FunctionDeclaration",
            [](Environment& environment) { EXPECT_EQ(environment.setFunc("f"), nullptr); },
            "Requesting a function in environment 'limbo', which has no InterpreterType. This "
            "will have no effect, returning nullptr."},
        Warning{
            "Serialization",
            [](Environment& environment) {
                EXPECT_TRUE(
                    environment.serializeScriptObject(ScriptObjectReference(), false).empty());
            },
            "Requesting a script object serialization in environment 'limbo', which has no "
            "InterpreterType. This will have no effect, returning empty buffer."},
        Warning{
            "Deserialization",
            [](Environment& environment)
            {
                const std::vector<unsigned char> bytes{'t'};
                const ScriptObjectReference value = environment.deserializeScriptObject(bytes);
                EXPECT_EQ(value.getInterpreterReference(), nullptr);
                EXPECT_EQ(value.getUseCount(), 1U);
            },
            "Requesting a script object deserialization in environment 'limbo', which has no "
            "InterpreterType. This will have no effect."}),
    &nameOf);

TEST_F(DummyEnvironmentTest, ScriptCallFailsAndLeavesTheOutputs)
{
    std::vector<FunctionParameter> outputs{FunctionParameter(42)};
    Parameters outputView(outputs);

    const bool isDone = m_environment->callScriptFunction(ScriptObjectReference(), {}, outputView);

    EXPECT_FALSE(isDone);
    EXPECT_EQ(outputs[0].getInt(), 42);
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Requesting a script function call in environment 'limbo', which has no "
            "InterpreterType. This will have no effect, returning VOID.",
            "Environment"}));
}

TEST_F(DummyEnvironmentTest, ExecutionFailsWithCode2)
{
    CompiledScript script("return 1");

    const bool isDone = m_environment->execute(script);

    EXPECT_FALSE(isDone);
    EXPECT_EQ(
        lastOutcome(*m_environment),
        Outcome(2, false, "Can't execute if the InterpreterType has not been set."));
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(
            LogEntry{"Can't execute if the InterpreterType has not been set.", "Environment"}));
}

TEST_F(DummyEnvironmentTest, OtherCallsLeaveTheResultOfAnExecution)
{
    CompiledScript script("return 1");
    m_environment->execute(script);

    m_environment->setVar("v", 1);

    EXPECT_EQ(
        lastOutcome(*m_environment),
        Outcome(2, false, "Can't execute if the InterpreterType has not been set."));
    m_log.takeEntries();
}

TEST_F(DummyEnvironmentTest, WarnsOncePerCall)
{
    m_environment->getVar("v", 1);
    m_environment->getVar("v", 1);

    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{REQUESTING, "Environment"}, LogEntry{REQUESTING, "Environment"}));
}

TEST_F(DummyEnvironmentTest, WarnsWithTheNameOfTheMoment)
{
    m_environment->setName("elsewhere");

    m_environment->requestGarbageCollection();

    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Requesting a garbage collection in environment 'elsewhere', which has no "
            "InterpreterType. This will have no effect.",
            "Environment"}));
}

TEST_F(DummyEnvironmentTest, WarnsWithAllBytesOfTheName)
{
    m_environment->setName(tbMemory::StringView("a\0b", 3));

    m_environment->requestGarbageCollection();

    const std::string name("a\0b", 3);
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Requesting a garbage collection in environment '" + name +
                "', which has no InterpreterType. This will have no effect.",
            "Environment"}));
}

TEST_F(DummyEnvironmentTest, GivesBackANullDefaultAsNull)
{
    const tbMemory::StringView text = m_environment->getVar("v", tbMemory::StringView());

    EXPECT_TRUE(text.isNull());
    m_log.takeEntries();
}

TEST_F(DummyEnvironmentTest, RegistryQueriesAskNobody)
{
    EXPECT_FALSE(m_environment->isFuncSet("f"));
    EXPECT_EQ(m_environment->getFunc("f"), nullptr);

    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(DummyEnvironmentTest, EndWarnsOfItsCollectionOnly)
{
    m_environment.reset();

    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Requesting a garbage collection in environment 'limbo', which has no "
            "InterpreterType. This will have no effect.",
            "Environment"}));
}

TEST_F(DummyEnvironmentTest, ForeignReferencesAreLeftAlone)
{
    const ScriptObjectReference foreign(new FakeReference);

    m_environment->setVar("v", foreign);

    EXPECT_EQ(foreign.getUseCount(), 1U);
    m_log.takeEntries();
}

} // namespace tbScripts::test

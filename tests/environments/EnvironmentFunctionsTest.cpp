// Host functions in the registry of an environment, and what a change of interpreter makes of them.

#include "support/CountedObject.h"
#include "support/EnvironmentFixture.h"

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class EnvironmentFunctionsTest : public EnvironmentFixture
{
protected:
    static LogEntry alreadyExistant(const std::string& name)
    {
        return {
            "Function '" + name +
                "' already existant. Resetting its state before returning it. This might break "
                "previous usage of the function.",
            "Environment"};
    }

    static LogEntry withoutInterpreter()
    {
        return {
            "Requesting a function in environment 'world', which has no InterpreterType. This will "
            "have no effect, returning nullptr.",
            "Environment"};
    }

    Function* declareAnswer(const std::string& name, int answer)
    {
        return declare(name, {}, [answer](const Parameters&) { return FunctionParameter(answer); });
    }

    void TearDown() override
    {
        EXPECT_THAT(m_log.takeEntries(), IsEmpty());
        destroyEnvironment();
        if (m_isDisabled)
            m_log.takeEntries(); // without interpreter the teardown warns
        EnvironmentFixture::TearDown();
    }

    // Leaves the environment without interpreter and without unread entries.
    void disable()
    {
        environment().setEnvironmentFor(INTERPRETER_UNKNOWN);
        m_log.takeEntries();
        m_isDisabled = true;
    }

    bool m_isDisabled = false;
};

TEST_F(EnvironmentFunctionsTest, DeclaredFunctionHasItsName)
{
    Function* const function = environment().setFunc("f");

    ASSERT_NE(function, nullptr);
    EXPECT_EQ(function->getName(), "f");
}

TEST_F(EnvironmentFunctionsTest, FirstDeclarationIsSilent)
{
    environment().setFunc("f");

    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(EnvironmentFunctionsTest, DeclaredFunctionIsAGlobal)
{
    environment().setFunc("f");

    run("assert(type(f) == 'function')");
}

TEST_F(EnvironmentFunctionsTest, DeclaredFunctionCanBeCalled)
{
    declareAnswer("f", 42);

    run("assert(f() == 42)");
}

TEST_F(EnvironmentFunctionsTest, DeclarationReplacesAGlobal)
{
    environment().setVar("f", 5);

    environment().setFunc("f");

    run("assert(type(f) == 'function')");
}

TEST_F(EnvironmentFunctionsTest, DeclaredFunctionIsFound)
{
    Function* const function = environment().setFunc("f");

    EXPECT_TRUE(environment().isFuncSet("f"));
    EXPECT_EQ(environment().getFunc("f"), function);
}

TEST_F(EnvironmentFunctionsTest, UnknownFunctionIsNotFound)
{
    EXPECT_FALSE(environment().isFuncSet("f"));
    EXPECT_EQ(environment().getFunc("f"), nullptr);
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(EnvironmentFunctionsTest, GlobalsOfScriptsAreNoDeclaredFunctions)
{
    run("function f() end");

    EXPECT_FALSE(environment().isFuncSet("f"));
    EXPECT_EQ(environment().getFunc("f"), nullptr);
}

TEST_F(EnvironmentFunctionsTest, GlobalRemovedByAScriptStaysDeclared)
{
    Function* const function = environment().setFunc("f");

    run("f = nil");

    EXPECT_EQ(environment().getFunc("f"), function);
}

TEST_F(EnvironmentFunctionsTest, RepeatedDeclarationGivesTheSameFunctionWithAWarning)
{
    Function* const first = environment().setFunc("f");

    Function* const second = environment().setFunc("f");

    EXPECT_EQ(first, second);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(alreadyExistant("f")));
}

TEST_F(EnvironmentFunctionsTest, RepeatedDeclarationUnbinds)
{
    declareAnswer("f", 42);

    environment().setFunc("f");

    run("assert(select('#', f()) == 0)");
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(
            alreadyExistant("f"),
            LogEntry{
                "Function 'f' called but no user function is bound. Call having no effect.",
                "Function"}));
}

TEST_F(EnvironmentFunctionsTest, RepeatedDeclarationForgetsTheParameters)
{
    declare("f", {PARAM_TYPE_INT}, [](const Parameters&) { return FunctionParameter::VOID; });
    std::size_t seen = 99;

    environment().setFunc("f")->setFunction(
        [&seen](const Parameters& parameters)
        {
            seen = parameters.size();
            return FunctionParameter::VOID;
        });

    run("f('no number')");
    EXPECT_EQ(seen, 0U);
    m_log.takeEntries();
}

// A script keeps what it wrote over a global: only a change of interpreter publishes again.
TEST_F(EnvironmentFunctionsTest, RepeatedDeclarationKeepsAScriptsOwnValue)
{
    environment().setFunc("f");
    run("f = 5");

    environment().setFunc("f");

    EXPECT_EQ(environment().getVar("f", 0), 5);
    m_log.takeEntries();
}

TEST_F(EnvironmentFunctionsTest, RepeatedDeclarationLeavesARemovedGlobalRemoved)
{
    environment().setFunc("f");
    run("f = nil");

    environment().setFunc("f");

    EXPECT_FALSE(environment().isVarSet("f"));
    m_log.takeEntries();
}

TEST_F(EnvironmentFunctionsTest, ThousandFunctionsKeepTheirPointers)
{
    std::vector<Function*> functions;
    for (int i = 0; i < 1000; ++i)
        functions.push_back(declareAnswer("f" + std::to_string(i), i));

    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(
            environment().getFunc("f" + std::to_string(i)),
            functions.at(static_cast<std::size_t>(i)));
    run("for i = 0, 999 do assert(_G['f' .. i]() == i) end");
}

// Declared under no interpreter: the entry is null, and there.
TEST_F(EnvironmentFunctionsTest, DeclarationWithoutInterpreterIsNull)
{
    disable();

    Function* const function = environment().setFunc("f");

    EXPECT_EQ(function, nullptr);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(withoutInterpreter()));
}

TEST_F(EnvironmentFunctionsTest, NullEntryCountsAsDeclared)
{
    disable();

    environment().setFunc("f");

    EXPECT_TRUE(environment().isFuncSet("f"));
    EXPECT_EQ(environment().getFunc("f"), nullptr);
    m_log.takeEntries();
}

TEST_F(EnvironmentFunctionsTest, NullEntryDeclaredAgainAsksAgain)
{
    disable();
    environment().setFunc("f");
    m_log.takeEntries();

    Function* const function = environment().setFunc("f");

    EXPECT_EQ(function, nullptr);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(alreadyExistant("f"), withoutInterpreter()));
}

TEST_F(EnvironmentFunctionsTest, NullEntryDeclaredAgainUnderLuaBecomesAFunction)
{
    disable();
    environment().setFunc("f");
    environment().setEnvironmentFor(INTERPRETER_LUA);
    m_log.takeEntries();

    Function* const function = environment().setFunc("f");

    ASSERT_NE(function, nullptr);
    EXPECT_EQ(environment().getFunc("f"), function);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(alreadyExistant("f")));
    run("assert(type(f) == 'function')");
}

TEST_F(EnvironmentFunctionsTest, NullEntriesEndWithTheEnvironment)
{
    disable();
    environment().setFunc("f");
    environment().setEnvironmentFor(INTERPRETER_LUA);
    m_log.takeEntries();

    destroyEnvironment();

    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

// A global that cannot be set gives null too.
TEST_F(EnvironmentFunctionsTest, RefusedGlobalIsLoggedAndGivesNull)
{
    run("setmetatable(_G, {__newindex = function() error('strict', 0) end})");

    Function* const function = environment().setFunc("f");

    EXPECT_EQ(function, nullptr);
    EXPECT_TRUE(environment().isFuncSet("f"));
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{"strict", "LuaEnvironment"}));
}

TEST_F(EnvironmentFunctionsTest, RefusedGlobalMayBeDeclaredAgain)
{
    run("setmetatable(_G, {__newindex = function() error('strict', 0) end})");
    environment().setFunc("f");
    run("setmetatable(_G, nil)");
    m_log.takeEntries();

    Function* const function = environment().setFunc("f");

    EXPECT_NE(function, nullptr);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(alreadyExistant("f")));
    run("assert(type(f) == 'function')");
}

// Functions that were made for an earlier interpreter.
TEST_F(EnvironmentFunctionsTest, FunctionStaysRegisteredOverASwitch)
{
    Function* const function = environment().setFunc("f");

    environment().setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_TRUE(environment().isFuncSet("f"));
    EXPECT_EQ(environment().getFunc("f"), function);
}

TEST_F(EnvironmentFunctionsTest, FunctionStaysRegisteredOverSwitchesToNoneAndBack)
{
    Function* const function = environment().setFunc("f");

    disable();
    environment().setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_TRUE(environment().isFuncSet("f"));
    EXPECT_EQ(environment().getFunc("f"), function);
}

TEST_F(EnvironmentFunctionsTest, FunctionIsNotPublishedByASwitch)
{
    environment().setFunc("f");

    environment().setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_FALSE(environment().isVarSet("f"));
}

TEST_F(EnvironmentFunctionsTest, InertFunctionCanBeChanged)
{
    Function* const function = declareAnswer("f", 42);
    environment().setEnvironmentFor(INTERPRETER_LUA);

    function->reset();
    function->addParameter(PARAM_TYPE_INT);
    function->setFunction([](const Parameters&) { return FunctionParameter::VOID; });

    EXPECT_EQ(function->getName(), "f");
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(EnvironmentFunctionsTest, InertFunctionDeclaredAgainIsTheSameAndPublished)
{
    Function* const before = environment().setFunc("f");
    environment().setEnvironmentFor(INTERPRETER_LUA);

    Function* const after = environment().setFunc("f");

    EXPECT_EQ(before, after);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(alreadyExistant("f")));
    run("assert(type(f) == 'function')");
}

TEST_F(EnvironmentFunctionsTest, InertFunctionDeclaredAgainIsReset)
{
    declareAnswer("f", 42);
    environment().setEnvironmentFor(INTERPRETER_LUA);
    environment().setFunc("f");
    m_log.takeEntries();

    run("assert(f() == nil)");

    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Function 'f' called but no user function is bound. Call having no effect.",
            "Function"}));
}

TEST_F(EnvironmentFunctionsTest, InertFunctionDeclaredAgainCanBeCalled)
{
    declareAnswer("f", 42);
    environment().setEnvironmentFor(INTERPRETER_LUA);

    declareAnswer("f", 43);

    run("assert(f() == 43)");
    m_log.takeEntries();
}

TEST_F(EnvironmentFunctionsTest, InertFunctionDeclaredAgainReplacesAGlobal)
{
    environment().setFunc("f");
    environment().setEnvironmentFor(INTERPRETER_LUA);
    environment().setVar("f", 5);

    environment().setFunc("f");

    run("assert(type(f) == 'function')");
    m_log.takeEntries();
}

TEST_F(EnvironmentFunctionsTest, InertFunctionDeclaredTwiceIsPublishedOnce)
{
    environment().setFunc("f");
    environment().setEnvironmentFor(INTERPRETER_LUA);
    environment().setFunc("f");
    run("f = 5");

    environment().setFunc("f");

    EXPECT_EQ(environment().getVar("f", 0), 5);
    m_log.takeEntries();
}

TEST_F(EnvironmentFunctionsTest, InertFunctionDeclaredAgainWithoutInterpreterIsTheSame)
{
    Function* const before = environment().setFunc("f");
    disable();

    Function* const after = environment().setFunc("f");

    EXPECT_EQ(before, after);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(alreadyExistant("f")));
}

TEST_F(EnvironmentFunctionsTest, InertFunctionEndsWithTheEnvironment)
{
    CountedObject::restart();
    declare(
        "f",
        {},
        [counted = CountedObject()](const Parameters&) { return FunctionParameter::VOID; });
    environment().setEnvironmentFor(INTERPRETER_LUA);
    ASSERT_EQ(CountedObject::getLiving(), 1);

    destroyEnvironment();

    EXPECT_EQ(CountedObject::getLiving(), 0);
}

} // namespace tbScripts::test

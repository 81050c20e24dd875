// Calling script functions: inputs, the outcome, and what cannot be called.

#include "support/EnvironmentFixture.h"
#include "support/Execution.h"
#include "support/FakeScriptObjects.h"

#include <limits>
#include <optional>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ScriptFunctionCallTest : public EnvironmentFixture
{
protected:
    bool callReference(
        const ScriptObjectReference& function, const std::vector<FunctionParameter>& inputs = {})
    {
        Parameters outputs;
        return environment().callScriptFunction(function, inputs, outputs);
    }

    bool callGlobal(const std::string& name, const std::vector<FunctionParameter>& inputs = {})
    {
        return callReference(environment().getScriptFunction(name), inputs);
    }

    // Expects a failed call that was logged with its message.
    void expectFailure(int code, const std::string& message)
    {
        EXPECT_EQ(lastOutcome(environment()), Outcome(code, false, message));
        EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{message, "LuaEnvironment"}));
    }
};

TEST_F(ScriptFunctionCallTest, SuccessIsSilentWithCode0)
{
    run("function f() called = true end");

    const bool isDone = callGlobal("f");

    EXPECT_TRUE(isDone);
    EXPECT_TRUE(environment().getVar("called", false));
    EXPECT_EQ(lastOutcome(environment()), Outcome(0, true, ""));
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(ScriptFunctionCallTest, InputsArriveInOrder)
{
    run("function f(a, b, ...) assert(a == 1 and b == 'two' and select('#', ...) == 0) end");

    EXPECT_TRUE(callGlobal("f", {FunctionParameter(1), FunctionParameter("two")}));
}

TEST_F(ScriptFunctionCallTest, FunctionOutlivesItsGlobal)
{
    run("function f() called = true end");
    const ScriptObjectReference function = environment().getScriptFunction("f");
    run("f = nil");
    environment().requestGarbageCollection();

    callReference(function);

    EXPECT_TRUE(environment().getVar("called", false));
}

TEST_F(ScriptFunctionCallTest, FunctionKeepsItsUpvalues)
{
    run("local count = 0  function f() count = count + 1  total = count end");
    const ScriptObjectReference function = environment().getScriptFunction("f");

    callReference(function);
    callReference(function);

    EXPECT_EQ(environment().getVar("total", 0), 2);
}

TEST_F(ScriptFunctionCallTest, HostFunctionCanBeCalled)
{
    int seen = 0;
    declare(
        "f",
        {PARAM_TYPE_INT},
        [&seen](const Parameters& parameters)
        {
            seen = parameters[0].getInt();
            return FunctionParameter::VOID;
        });

    callGlobal("f", {FunctionParameter(42)});

    EXPECT_EQ(seen, 42);
}

// What kind a reference is of does not matter, only whether its value can be called.
TEST_F(ScriptFunctionCallTest, CallableTableCanBeCalled)
{
    run("v = setmetatable({}, {__call = function(self, value) seen = value end})");

    const bool isDone = callReference(environment().getVar("v"), {FunctionParameter(42)});

    EXPECT_TRUE(isDone);
    EXPECT_EQ(environment().getVar("seen", 0), 42);
}

namespace
{

// What a script sees of an input.
struct InputRow
{
    const char* name;
    std::function<FunctionParameter(Environment&)> make;
    int count;               // of the values that arrive
    const char* expectation; // of a script about v, the first of them
};

void PrintTo(const InputRow& row, std::ostream* stream)
{
    *stream << row.name;
}

int hostObject = 0;

} // namespace

class ScriptFunctionInputTest : public EnvironmentFixture,
                                public ::testing::WithParamInterface<InputRow>
{
};

TEST_P(ScriptFunctionInputTest, IsSeenByTheScript)
{
    run("shared = {}  function f(...) v = ...  count = select('#', ...) end");
    std::vector<FunctionParameter> outputs;

    call("f", {GetParam().make(environment())}, outputs);

    EXPECT_EQ(environment().getVar("count", -1), GetParam().count);
    run(std::string("assert(") + GetParam().expectation + ")");
}

INSTANTIATE_TEST_SUITE_P(
    Values,
    ScriptFunctionInputTest,
    ::testing::Values(
        InputRow{"Void", [](Environment&) { return FunctionParameter::VOID; }, 0, "v == nil"},
        InputRow{"True", [](Environment&) { return FunctionParameter(true); }, 1, "v == true"},
        InputRow{"False", [](Environment&) { return FunctionParameter(false); }, 1, "v == false"},
        InputRow{"Int", [](Environment&) { return FunctionParameter(42); }, 1, "v == 42"},
        InputRow{
            "LowestInt",
            [](Environment&) { return FunctionParameter(std::numeric_limits<int>::min()); },
            1,
            "v == -2147483648"},
        InputRow{
            "FloatIsWidened",
            [](Environment&) { return FunctionParameter(0.1F); },
            1,
            "v == 0.100000001490116119384765625"},
        InputRow{"Double", [](Environment&) { return FunctionParameter(0.1); }, 1, "v == 0.1"},
        InputRow{"Text", [](Environment&) { return FunctionParameter("text"); }, 1, "v == 'text'"},
        InputRow{"EmptyText", [](Environment&) { return FunctionParameter(""); }, 1, "v == ''"},
        InputRow{
            "NullText",
            [](Environment&) { return FunctionParameter(static_cast<const char*>(nullptr)); },
            1,
            "v == ''"},
        InputRow{
            "NullTextView",
            [](Environment&) { return FunctionParameter(tbMemory::StringView()); },
            1,
            "v == ''"},
        InputRow{
            "TextEndsAtItsFirstNul",
            [](Environment&) { return FunctionParameter(tbMemory::StringView("te\0xt", 5)); },
            1,
            "v == 'te'"},
        InputRow{
            "TextEndsWithItsView",
            [](Environment&) { return FunctionParameter(tbMemory::StringView("textual", 4)); },
            1,
            "v == 'text'"},
        InputRow{
            "HostObject",
            [](Environment&) { return FunctionParameter(&hostObject, "", false); },
            1,
            "type(v) == 'userdata' and debug.getmetatable(v) == nil"},
        InputRow{
            "OwnedHostObjectOfUnknownType",
            [](Environment&) { return FunctionParameter(&hostObject, "T", true); },
            1,
            "type(v) == 'userdata' and debug.getmetatable(v) == nil"},
        InputRow{
            "NullHostObject",
            [](Environment&) { return FunctionParameter(nullptr, "T", false); },
            0,
            "v == nil"},
        InputRow{
            "Table",
            [](Environment& world) { return FunctionParameter(world.getVar("shared")); },
            1,
            "v == shared"},
        InputRow{
            "Function",
            [](Environment& world) { return FunctionParameter(world.getScriptFunction("f")); },
            1,
            "v == f"},
        InputRow{
            "EmptyReference",
            [](Environment&) { return FunctionParameter(ScriptObjectReference()); },
            1,
            "v == nil"},
        InputRow{
            "DeclaredFunctionWithoutValue",
            [](Environment&) { return FunctionParameter::ofType(PARAM_TYPE_SCRIPT_FUNCTION); },
            1,
            "v == nil"},
        InputRow{
            "ReferenceThatIsNotOurs",
            [](Environment&)
            { return FunctionParameter(ScriptObjectReference(new FakeReference)); },
            1,
            "v == nil"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(ScriptFunctionCallTest, HostObjectArrivesWithItsPointer)
{
    run("function f(value) v = value end");

    callGlobal("f", {FunctionParameter(&hostObject, "", false)});

    EXPECT_EQ(environment().getObject("v", tbMemory::StringView()), &hostObject);
}

TEST_F(ScriptFunctionCallTest, EmptyReferenceIsAParameterOfKindObject)
{
    const FunctionParameter parameter{ScriptObjectReference()};

    EXPECT_EQ(parameter.getType(), PARAM_TYPE_SCRIPT_OBJECT);
    EXPECT_EQ(parameter.getScriptObject().getInterpreterReference(), nullptr);
}

TEST_F(ScriptFunctionCallTest, InputOfAnotherEnvironmentIsNil)
{
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);
    other.setVar("v", "text");
    run("function f(...) v = ...  count = select('#', ...) end");

    callGlobal("f", {FunctionParameter(other.getVar("v"))});

    EXPECT_EQ(environment().getVar("count", -1), 1);
    EXPECT_FALSE(environment().isVarSet("v"));
}

// Inputs that push nothing leave no hole.
TEST_F(ScriptFunctionCallTest, LaterInputsTakeThePlaceOfThoseThatPushNothing)
{
    run("function f(a, b, ...) assert(a == 1 and b == 2 and select('#', ...) == 0) end");

    EXPECT_TRUE(callGlobal(
        "f",
        {FunctionParameter(1),
         FunctionParameter::VOID,
         FunctionParameter(nullptr, "T", false),
         FunctionParameter(2)}));
}

TEST_F(ScriptFunctionCallTest, InputOfNoKindIsLoggedAndLeftOut)
{
    run("function f(...) count = select('#', ...) end");

    const bool isDone = callGlobal(
        "f",
        {FunctionParameter::ofType(static_cast<FUNCTION_PARAMETER_TYPE>(10)),
         FunctionParameter(1)});

    EXPECT_TRUE(isDone);
    EXPECT_EQ(environment().getVar("count", -1), 1);
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Error while filling output for function 'callScript', parameter type not handled.",
            "LuaFunction"}));
}

TEST_F(ScriptFunctionCallTest, RaisedErrorFailsWithCode5)
{
    run("function f() error('boom') end");

    const bool isDone = callGlobal("f");

    EXPECT_FALSE(isDone);
    expectFailure(5, "[string \"function f() error('boom') end\"]:1: boom");
}

TEST_F(ScriptFunctionCallTest, SuccessReplacesAnEarlierFailure)
{
    runExpectingError("function f() end  error('boom')");

    callGlobal("f");

    EXPECT_EQ(lastOutcome(environment()), Outcome(0, true, ""));
}

TEST_F(ScriptFunctionCallTest, SuccessHidesTheFailureOfANestedCall)
{
    declare(
        "callInner",
        {},
        [this](const Parameters&)
        {
            callGlobal("inner");
            return FunctionParameter::VOID;
        });
    run("function inner() error('boom', 0) end  function outer() callInner() end");

    const bool isDone = callGlobal("outer");

    EXPECT_TRUE(isDone);
    EXPECT_EQ(lastOutcome(environment()), Outcome(0, true, ""));
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{"boom", "LuaEnvironment"}));
}

TEST_F(ScriptFunctionCallTest, SuccessfulRunHidesTheFailureOfANestedCall)
{
    declare(
        "callInner",
        {},
        [this](const Parameters&)
        {
            callGlobal("inner");
            return FunctionParameter::VOID;
        });

    run("function inner() error('boom', 0) end  callInner()");

    EXPECT_EQ(lastOutcome(environment()), Outcome(0, true, ""));
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{"boom", "LuaEnvironment"}));
}

TEST_F(ScriptFunctionCallTest, ResultIsFreshWhileTheFunctionRuns)
{
    std::optional<Outcome> during;
    declare(
        "look",
        {},
        [&](const Parameters&)
        {
            during = lastOutcome(environment());
            return FunctionParameter::VOID;
        });
    runExpectingError("function f() look() end  error('boom')");

    callGlobal("f");

    EXPECT_EQ(during, Outcome(0, true, ""));
}

TEST_F(ScriptFunctionCallTest, OverflowInsideTheHandlingOfOneFailsWithCode1)
{
    bool isDone = true;
    std::optional<Outcome> inner;
    declare(
        "callOverflow",
        {},
        [&](const Parameters&)
        {
            isDone = callGlobal("overflow");
            inner = lastOutcome(environment());
            return FunctionParameter::VOID;
        });

    run("function overflow() return 1 + overflow() end  xpcall(overflow, callOverflow)");

    EXPECT_FALSE(isDone);
    EXPECT_EQ(inner, Outcome(1, false, "stack overflow"));
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{"stack overflow", "LuaEnvironment"}));
}

// Once a registry slot was freed, the interpreter keeps a number where an empty reference points.
TEST_F(ScriptFunctionCallTest, EmptyReferenceFailsAsCallingNil)
{
    environment().getScriptFunction("print");

    const bool isDone = callReference(ScriptObjectReference());

    EXPECT_FALSE(isDone);
    expectFailure(5, "attempt to call a nil value");
}

TEST_F(ScriptFunctionCallTest, ReferenceOfAnotherEnvironmentFailsAsCallingNil)
{
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);

    callReference(other.getScriptFunction("print"));

    expectFailure(5, "attempt to call a nil value");
}

TEST_F(ScriptFunctionCallTest, ReferenceThatIsNotOursFailsAsCallingNil)
{
    callReference(ScriptObjectReference(new FakeReference(PARAM_TYPE_SCRIPT_FUNCTION)));

    expectFailure(5, "attempt to call a nil value");
}

TEST_F(ScriptFunctionCallTest, ReferenceOfAnEarlierInterpreterFailsAsCallingNil)
{
    const ScriptObjectReference stale = environment().getScriptFunction("print");
    environment().setEnvironmentFor(INTERPRETER_LUA);

    callReference(stale);

    expectFailure(5, "attempt to call a nil value");
}

TEST_F(ScriptFunctionCallTest, TableFailsAsCallingATable)
{
    run("v = {}");

    callReference(environment().getVar("v"));

    expectFailure(5, "attempt to call a table value");
}

TEST_F(ScriptFunctionCallTest, EnvironmentIsUsableAfterAFailure)
{
    run("function f() error('boom') end  function g() return 42 end");
    callGlobal("f");
    m_log.takeEntries();

    EXPECT_TRUE(callGlobal("g"));
}

// The interpreter's stack ends at about 65,000 values.
TEST_F(ScriptFunctionCallTest, TenThousandInputsArrive)
{
    run("function f(...) count = select('#', ...)  last = select(count, ...) end");
    std::vector<FunctionParameter> inputs(10000, FunctionParameter(1));
    inputs.back() = FunctionParameter("last");

    const bool isDone = callGlobal("f", inputs);

    EXPECT_TRUE(isDone);
    EXPECT_EQ(environment().getVar("count", 0), 10000);
    EXPECT_EQ(environment().getVar("last", ""), "last");
}

TEST_F(ScriptFunctionCallTest, HundredThousandInputsFailWithCode5)
{
    run("function f(...) called = true end");

    const bool isDone =
        callGlobal("f", std::vector<FunctionParameter>(100000, FunctionParameter(1)));

    EXPECT_FALSE(isDone);
    EXPECT_FALSE(environment().isVarSet("called"));
    expectFailure(5, "stack overflow");
}

TEST_F(ScriptFunctionCallTest, EnvironmentIsUsableAfterTooManyInputs)
{
    run("function f(...) count = select('#', ...) end");
    callGlobal("f", std::vector<FunctionParameter>(100000, FunctionParameter(1)));
    m_log.takeEntries();

    const bool isDone = callGlobal("f", {FunctionParameter(1)});

    EXPECT_TRUE(isDone);
    EXPECT_EQ(environment().getVar("count", 0), 1);
}

} // namespace tbScripts::test

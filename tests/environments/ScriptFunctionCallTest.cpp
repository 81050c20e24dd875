// Calling script functions: inputs, the outcome, and what cannot be called.

#include "support/EnvironmentFixture.h"
#include "support/Execution.h"
#include "support/FakeScriptObjects.h"
#include "support/RowName.h"

#include <climits>
#include <optional>

namespace tbScripts::test
{

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
        expectLogged(message, "LuaEnvironment");
    }
};

TEST_F(ScriptFunctionCallTest, SuccessIsSilentWithCode0)
{
    run("function f() called = true end");

    const bool isDone = callGlobal("f");

    EXPECT_TRUE(isDone);
    EXPECT_TRUE(environment().getVar("called", false));
    EXPECT_EQ(lastOutcome(environment()), Outcome(0, true, ""));
}

TEST_F(ScriptFunctionCallTest, FunctionOutlivesItsGlobalAndKeepsItsUpvalues)
{
    run("local count = 0  function f() count = count + 1  total = count end");
    const ScriptObjectReference function = environment().getScriptFunction("f");
    run("f = nil");
    environment().requestGarbageCollection();

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
    const char* row;
    std::function<FunctionParameter(Environment&)> make;
    int count;               // of the values that arrive
    const char* expectation; // of a script about v, the first of them
};

using World = Environment;
using Input = FunctionParameter;
using View = tbMemory::StringView;

constexpr const char* NULL_STRING = nullptr;

int hostObject = 0;

} // namespace

using ScriptFunctionInputTest = OnRows<EnvironmentFixture, InputRow>;

TEST_P(ScriptFunctionInputTest, IsSeenByTheScript)
{
    run("shared = {}  function f(...) v = ...  count = select('#', ...) end");
    std::vector<FunctionParameter> outputs;

    call("f", {GetParam().make(environment())}, outputs);

    EXPECT_EQ(environment().getVar("count", -1), GetParam().count);
    run(std::string("assert(") + GetParam().expectation + ")");
}

ROWS(
    ScriptFunctionInputTest,
    {"Void", [](World&) { return Input::VOID; }, 0, "v == nil"},
    {"True", [](World&) { return Input(true); }, 1, "v == true"},
    {"False", [](World&) { return Input(false); }, 1, "v == false"},
    {"Int", [](World&) { return Input(42); }, 1, "v == 42"},
    {"LowestInt", [](World&) { return Input(INT_MIN); }, 1, "v == -2147483648"},
    {"FloatIsWidened", [](World&) { return Input(0.1F); }, 1, "v == 0.100000001490116119384765625"},
    {"Double", [](World&) { return Input(0.1); }, 1, "v == 0.1"},
    {"String", [](World&) { return Input("text"); }, 1, "v == 'text'"},
    {"EmptyString", [](World&) { return Input(""); }, 1, "v == ''"},
    {"NullString", [](World&) { return Input(NULL_STRING); }, 1, "v == ''"},
    {"NullView", [](World&) { return Input(View()); }, 1, "v == ''"},
    {"EndsAtItsNul", [](World&) { return Input(View("a\0b", 3)); }, 1, "v == 'a'"},
    {"EndsWithItsView", [](World&) { return Input(View("abc", 2)); }, 1, "v == 'ab'"},
    {"HostObject",
     [](Environment&) { return FunctionParameter(&hostObject, "", false); },
     1,
     "type(v) == 'userdata' and debug.getmetatable(v) == nil"},
    {"NullHostObject",
     [](Environment&) { return FunctionParameter(nullptr, "T", false); },
     0,
     "v == nil"},
    {"Table", [](World& e) { return Input(e.getVar("shared")); }, 1, "v == shared"},
    {"Function", [](World& e) { return Input(e.getScriptFunction("f")); }, 1, "v == f"},
    {"EmptyReference", [](World&) { return Input(ScriptObjectReference()); }, 1, "v == nil"},
    {"DeclaredFunctionWithoutValue",
     [](World&) { return Input::ofType(PARAM_TYPE_SCRIPT_FUNCTION); },
     1,
     "v == nil"},
    {"ReferenceThatIsNotOurs",
     [](World&) { return Input(ScriptObjectReference(new FakeReference)); },
     1,
     "v == nil"});

TEST_F(ScriptFunctionCallTest, OwnedHostObjectOfUnknownTypeArrivesWithoutMetatable)
{
    run("function f(...) v = ...  count = select('#', ...) end");

    callGlobal("f", {FunctionParameter(&hostObject, "T", true)});

    EXPECT_EQ(environment().getVar("count", -1), 1);
    run("assert(type(v) == 'userdata' and debug.getmetatable(v) == nil)");
    EXPECT_THAT(
        m_log.takeEntries(), ElementsAre(::testing::Field(&LogEntry::source, "LuaFunction")));
}

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
TEST_F(ScriptFunctionCallTest, InputsArriveInOrderWithoutThoseThatPushNothing)
{
    run("function f(a, b, ...) assert(a == 1 and b == 'two' and select('#', ...) == 0) end");

    EXPECT_TRUE(callGlobal("f", {Input(1), Input("two")}));
    EXPECT_TRUE(callGlobal("f", {Input(1), Input::VOID, Input(nullptr, "T", false), Input("two")}));
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
    expectLogged(
        "Error while filling output for function 'callScript', parameter type not handled.",
        "LuaFunction");
}

TEST_F(ScriptFunctionCallTest, RaisedErrorFailsWithCode5)
{
    run("function f() error('boom') end");

    const bool isDone = callGlobal("f");

    EXPECT_FALSE(isDone);
    expectFailure(5, "[string \"function f() error('boom') end\"]:1: boom");
}

TEST_F(ScriptFunctionCallTest, SuccessHidesTheFailureOfANestedCall)
{
    declareAction("callInner", [this] { callGlobal("inner"); });
    run("function inner() error('boom', 0) end  function outer() callInner() end  callInner()");
    EXPECT_EQ(lastOutcome(environment()), Outcome(0, true, ""));
    expectLogged("boom", "LuaEnvironment");

    EXPECT_TRUE(callGlobal("outer"));

    EXPECT_EQ(lastOutcome(environment()), Outcome(0, true, ""));
    expectLogged("boom", "LuaEnvironment");
}

TEST_F(ScriptFunctionCallTest, ResultIsFreshWhileTheFunctionRunsAndAfterItsSuccess)
{
    std::optional<Outcome> during;
    declareAction("look", [&] { during = lastOutcome(environment()); });
    runExpectingError("function f() look() end  error('boom')");

    callGlobal("f");

    EXPECT_EQ(during, Outcome(0, true, ""));
    EXPECT_EQ(lastOutcome(environment()), Outcome(0, true, ""));
}

TEST_F(ScriptFunctionCallTest, OverflowInsideTheHandlingOfOneFailsWithCode1)
{
    bool isDone = true;
    std::optional<Outcome> inner;
    declareAction(
        "callOverflow",
        [&]
        {
            isDone = callGlobal("overflow");
            inner = lastOutcome(environment());
        });

    run("function overflow() return 1 + overflow() end  xpcall(overflow, callOverflow)");

    EXPECT_FALSE(isDone);
    EXPECT_EQ(inner, Outcome(1, false, "stack overflow"));
    expectLogged("stack overflow", "LuaEnvironment");
}

// Once a registry slot was freed, the interpreter keeps a number where an empty reference points.
TEST_F(ScriptFunctionCallTest, WhatIsNoFunctionHereFailsAsCallingNil)
{
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);
    const ScriptObjectReference stale = environment().getScriptFunction("print");
    environment().setEnvironmentFor(INTERPRETER_LUA);
    environment().getScriptFunction("print");

    for (const ScriptObjectReference& reference :
         {ScriptObjectReference(),
          other.getScriptFunction("print"),
          ScriptObjectReference(new FakeReference(PARAM_TYPE_SCRIPT_FUNCTION)),
          stale})
    {
        EXPECT_FALSE(callReference(reference));
        expectFailure(5, "attempt to call a nil value");
    }
}

TEST_F(ScriptFunctionCallTest, TableFailsAsCallingATableAndLeavesAUsableEnvironment)
{
    run("v = {}  function g() return 42 end");

    EXPECT_FALSE(callReference(environment().getVar("v")));

    expectFailure(5, "attempt to call a table value");
    EXPECT_TRUE(callGlobal("g"));
}

} // namespace tbScripts::test

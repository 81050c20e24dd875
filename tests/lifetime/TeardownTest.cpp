// What the host asks of an environment that is going: nothing has an effect, everything has its
// neutral answer, in silence.

#include "support/EnvironmentFixture.h"
#include "support/Farewell.h"
#include "support/GlobalOperations.h"
#include "support/RowName.h"

#include <tbScripts/Script.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tbScripts::test
{

class DepartureFixture : public EnvironmentFixture
{
protected:
    // Declares a function whose end performs `action`.
    void declareDeparting(const std::string& name, std::function<void()> action)
    {
        declare(name, {}, doing([farewell = makeFarewell(std::move(action))] {}));
    }

    // Declares a function that performs `action`, and has the finaliser of a value that lives until
    // the state closes call it.
    void finaliseBy(std::function<void()> action)
    {
        declare("act", {}, doing([action = std::move(action)] { action(); }));
        run("kept = newproxy(true) getmetatable(kept).__gc = act");
    }
};

using TeardownAccessTest = OnValues<DepartureFixture, GlobalOperation>;

VALUES(TeardownAccessTest, ::testing::ValuesIn(allGlobalOperations()));

TEST_P(TeardownAccessTest, IsNeutralWhileFunctionsGo)
{
    std::string answer;
    Environment& dying = environment();
    declareDeparting("departing", [&] { answer = GetParam().perform(dying, "_VERSION"); });
    destroyEnvironment();
    EXPECT_EQ(answer, GetParam().neutralAnswer);
}

TEST_P(TeardownAccessTest, IsNeutralWhileTheStateCloses)
{
    std::string answer;
    finaliseBy([&] { answer = GetParam().perform(environment(), "_VERSION"); });
    restart();
    EXPECT_EQ(answer, GetParam().neutralAnswer);
}

namespace
{

/// Something else that the host may ask of an environment. Returns whether it worked.
struct RequestRow
{
    const char* row;
    bool (*ask)(Environment& environment, const ScriptObjectReference& function);
};

std::vector<RequestRow> allRequests()
{
    return {
        {"Execution",
         [](Environment& environment, const ScriptObjectReference&)
         { return runScript(environment, "reached = true"); }},
        {"ExecutionOfAnEmptyScript",
         [](Environment& environment, const ScriptObjectReference&)
         { return environment.execute(Script()); }},
        {"ScriptFunctionCall",
         [](Environment& environment, const ScriptObjectReference& function)
         {
             Parameters outputs;
             return environment.callScriptFunction(function, {}, outputs);
         }},
        {"Collection",
         [](Environment& environment, const ScriptObjectReference&)
         {
             environment.requestGarbageCollection();
             return false;
         }}};
}

} // namespace

using TeardownRequestTest = OnRows<DepartureFixture, RequestRow>;

ROWS(TeardownRequestTest, allRequests());

TEST_P(TeardownRequestTest, IsRefusedWhileFunctionsGo)
{
    bool isDone = true;
    Environment& dying = environment();
    run("function give() end");
    const ScriptObjectReference give = environment().getScriptFunction("give");
    declareDeparting("departing", [&] { isDone = GetParam().ask(dying, give); });

    destroyEnvironment();

    EXPECT_FALSE(isDone);
}

TEST_P(TeardownRequestTest, IsRefusedWhileTheStateCloses)
{
    bool isDone = true;
    run("function give() end");
    const ScriptObjectReference give = environment().getScriptFunction("give");
    finaliseBy([&] { isDone = GetParam().ask(environment(), give); });

    restart();

    EXPECT_FALSE(isDone);
}

using TeardownTest = DepartureFixture;

TEST_F(TeardownTest, FunctionsGoInTheOrderOfTheirDeclaration)
{
    std::vector<std::string> gone;
    for (const std::string name : {"first", "second", "third"})
        declareDeparting(name, [&gone, name] { gone.push_back(name); });
    destroyEnvironment();
    EXPECT_THAT(gone, ElementsAre("first", "second", "third"));
}

TEST_F(TeardownTest, LastResultCanStillBeRead)
{
    int code = -1;
    Environment& dying = environment();
    declareDeparting("departing", [&] { code = dying.getLastExecutionResult().code; });
    runExpectingError("error('lost')");
    destroyEnvironment();
    EXPECT_EQ(code, 5);
}

TEST_F(TeardownTest, ReferencesThatBindingsHoldAreReleasedWithThem)
{
    run("list = setmetatable({}, {}) function give() return list end");
    const ScriptObjectReference list = environment().getVar("list");
    const ScriptObjectReference give = environment().getScriptFunction("give");
    declare("holder", {}, [list, give](const Parameters&) { return FunctionParameter(list); });

    destroyEnvironment();

    EXPECT_EQ(list.getUseCount(), 1U);
    EXPECT_EQ(give.getUseCount(), 1U);
}

TEST_F(TeardownTest, ReferencesMayBeDroppedWhileTheStateCloses)
{
    run("list = {}");
    auto list = std::make_unique<ScriptObjectReference>(environment().getVar("list"));
    finaliseBy([&list] { list.reset(); });
    restart();
    EXPECT_EQ(list, nullptr);
}

TEST_F(TeardownTest, HostFunctionsGetTheirArgumentsWhileTheStateCloses)
{
    std::string text;
    FUNCTION_PARAMETER_TYPE type = PARAM_TYPE_BOOL;
    declare(
        "act",
        {PARAM_TYPE_STRING, PARAM_TYPE_SCRIPT_OBJECT},
        [&](const Parameters& parameters)
        {
            text = std::string(std::string_view(parameters[0].getString()));
            type = parameters[1].getScriptObject().getType();
            return FunctionParameter("a result");
        });
    run("kept = newproxy(true) local act = act "
        "getmetatable(kept).__gc = function() act('bye', {}) end");

    restart();

    EXPECT_EQ(text, "bye");
    EXPECT_EQ(type, PARAM_TYPE_VOID); // nothing can be kept any more
}

TEST_F(TeardownTest, FunctionMayBeChangedWhileTheStateCloses)
{
    finaliseBy(
        [this]
        {
            Function* const act = environment().getFunc("act");
            act->reset();
            act->addParameter(PARAM_TYPE_INT);
            act->setFunction(returning(7));
        });

    restart();

    EXPECT_TRUE(environment().isFuncSet("act"));
}

TEST_F(TeardownTest, HostExceptionWhileTheStateClosesIsLost)
{
    int calls = 0;
    finaliseBy(
        [&calls]
        {
            ++calls;
            throw 7;
        });

    EXPECT_NO_THROW(environment().setEnvironmentFor(INTERPRETER_LUA));

    EXPECT_EQ(calls, 1);
}

TEST_F(TeardownTest, SwitchWhileFunctionsGoHasNoEffectWithoutInterpreterEither)
{
    Environment& dying = environment();
    Function* late = nullptr;
    declareDeparting(
        "departing",
        [&]
        {
            dying.setEnvironmentFor(INTERPRETER_LUA);
            late = dying.setFunc("late");
        });
    environment().setEnvironmentFor(INTERPRETER_UNKNOWN);
    forgetLog();

    destroyEnvironment();

    EXPECT_EQ(late, nullptr);
    expectLogged(
        "Requesting a garbage collection in environment 'world', which has no "
        "InterpreterType. This will have no effect.",
        "Environment");
}

TEST_F(TeardownTest, OtherEnvironmentsWorkWhileOneGoes)
{
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);
    bool hasSucceeded = false;
    declareDeparting("departing", [&] { hasSucceeded = runScript(other, "reached = true"); });

    destroyEnvironment();

    EXPECT_TRUE(hasSucceeded);
    EXPECT_TRUE(other.getVar("reached", false));
}

} // namespace tbScripts::test

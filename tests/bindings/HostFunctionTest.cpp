#include "support/Steps.h"

namespace tbScripts::test
{

class HostFunctionTest : public EnvironmentFixture
{
protected:
    // Declares `take`, which notes its arguments.
    void declareTake(const std::vector<FUNCTION_PARAMETER_TYPE>& types)
    {
        declare("take", types, recording(m_calls));
    }

    std::vector<std::string> m_calls;
};

TEST_F(HostFunctionTest, IsVisibleUnderItsName)
{
    environment().setFunc("spawn");
    is("type(spawn)", "function");
}

TEST_F(HostFunctionTest, ScriptNameEndsAtItsFirstZero)
{
    environment().setFunc(tbMemory::StringView("spawn\0er", 8));
    is("type(spawn)", "function");
}

TEST_F(HostFunctionTest, NameNeedNotBeZeroTerminated)
{
    const std::string text = "spawnExtra";
    environment().setFunc(tbMemory::StringView(text.data(), 5));
    is("type(spawn)", "function");
    EXPECT_FALSE(environment().isVarSet("spawnExtra"));
}

TEST_F(HostFunctionTest, NullNameIsTheEmptyGlobal)
{
    environment().setFunc(tbMemory::StringView());
    is("type(_G[''])", "function");
}

TEST_F(HostFunctionTest, ArgumentsArriveInTheOrderOfDeclaration)
{
    declareTake({PARAM_TYPE_STRING, PARAM_TYPE_INT, PARAM_TYPE_BOOL});
    run("take('a', 2, true)");
    EXPECT_THAT(m_calls, ElementsAre("a, 2, true"));
}

TEST_F(HostFunctionTest, ArgumentsBeyondTheDeclaredAreIgnored)
{
    declareTake({PARAM_TYPE_INT, PARAM_TYPE_INT});
    run("take(1, 2, {})");
    EXPECT_THAT(m_calls, ElementsAre("1, 2"));
}

TEST_F(HostFunctionTest, MissingSecondArgumentOfABoolIsFalse)
{
    declareTake({PARAM_TYPE_INT, PARAM_TYPE_BOOL});
    run("take(1)");
    EXPECT_THAT(m_calls, ElementsAre("1, false"));
}

TEST_F(HostFunctionTest, MismatchKeepsTheCallableFromBeingCalled)
{
    declareTake({PARAM_TYPE_BOOL, PARAM_TYPE_INT});
    is("pcall(take, true, {})", "false");
    EXPECT_THAT(m_calls, ElementsAre());
    expectLogCount(1);
}

TEST_F(HostFunctionTest, MoreParametersThanTheStackHasRoomForAreMissing)
{
    declareTake(std::vector<FUNCTION_PARAMETER_TYPE>(1000, PARAM_TYPE_BOOL));
    run("take(true, false, true)");
    std::string expected = "true, false, true";
    for (int i = 3; i < 1000; ++i)
        expected += ", false";
    EXPECT_THAT(m_calls, ElementsAre(expected));
}

TEST_F(HostFunctionTest, FunctionArgumentCanBeCalled)
{
    declare(
        "take",
        {PARAM_TYPE_SCRIPT_FUNCTION},
        [this](const Parameters& parameters)
        {
            std::vector<FunctionParameter> outputs{0};
            Parameters outputView(outputs);
            environment().callScriptFunction(
                parameters[0].getScriptObject(), {FunctionParameter(20)}, outputView);
            return outputs[0];
        });
    is("take(function(n) return n + 1 end)", "21");
}

TEST_F(HostFunctionTest, TableArgumentIsTheVeryTable)
{
    declare(
        "take",
        {PARAM_TYPE_SCRIPT_OBJECT},
        doing([this](const Parameters& parameters)
              { environment().setVar("taken", parameters[0].getScriptObject()); }));
    run("local given = {} take(given) assert(taken == given)");
}

TEST_F(HostFunctionTest, ReferenceResultIsTheVeryValue)
{
    declare(
        "pass",
        {PARAM_TYPE_SCRIPT_OBJECT},
        [](const Parameters& parameters) { return parameters[0]; });
    run("local given = {} assert(pass(given) == given)");
}

TEST_F(HostFunctionTest, ReferenceArgumentOutlivesTheCoroutineThatGaveIt)
{
    ScriptObjectReference kept;
    declare(
        "keep",
        {PARAM_TYPE_SCRIPT_OBJECT},
        doing([&kept](const Parameters& parameters) { kept = parameters[0].getScriptObject(); }));
    run("coroutine.wrap(function() keep({ 'treasure' }) end)()");
    run("for i = 1, 3 do collectgarbage() end");
    environment().setVar("kept", kept);
    is("kept[1]", "treasure");
}

TEST_F(HostFunctionTest, ClosureCalledAfterItsFunctionDiedIsAScriptError)
{
    declare("spawn", {}, returning(1));
    run("local kept = spawn"
        " keeper = newproxy(true)"
        " getmetatable(keeper).__gc = function() kept() end");
    destroyEnvironment();
    expectLogged("Function 'spawn' does not exist anymore.", "LuaEnvironment");
}

} // namespace tbScripts::test

#include "support/EnvironmentFixture.h"

namespace tbScripts::test
{

using ::testing::ElementsAre;

namespace
{

// What the host reads out of a boolean, an int or a string.
std::string textOf(const FunctionParameter& parameter)
{
    switch (parameter.getType())
    {
    case PARAM_TYPE_BOOL:
        return parameter.getBool() ? "true" : "false";
    case PARAM_TYPE_INT:
        return std::to_string(parameter.getInt());
    default:
        return std::string(std::string_view(parameter.getString()));
    }
}

} // namespace

class HostFunctionTest : public EnvironmentFixture
{
};

TEST_F(HostFunctionTest, IsVisibleUnderItsName)
{
    environment().setFunc("spawn");

    run("kind = type(spawn)");

    EXPECT_EQ(environment().getVar("kind", ""), "function");
}

TEST_F(HostFunctionTest, ScriptNameEndsAtItsFirstZero)
{
    environment().setFunc(tbMemory::StringView("spawn\0er", 8));

    run("kind = type(spawn)");

    EXPECT_EQ(environment().getVar("kind", ""), "function");
}

TEST_F(HostFunctionTest, NameNeedNotBeZeroTerminated)
{
    const std::string text = "spawnExtra";
    environment().setFunc(tbMemory::StringView(text.data(), 5));

    run("kind = type(spawn)");

    EXPECT_EQ(environment().getVar("kind", ""), "function");
    EXPECT_FALSE(environment().isVarSet("spawnExtra"));
}

TEST_F(HostFunctionTest, NullNameIsTheEmptyGlobal)
{
    environment().setFunc(tbMemory::StringView());

    run("kind = type(_G[''])");

    EXPECT_EQ(environment().getVar("kind", ""), "function");
}

TEST_F(HostFunctionTest, ArgumentsArriveInTheOrderOfDeclaration)
{
    std::string received;
    declare(
        "take",
        {PARAM_TYPE_STRING, PARAM_TYPE_INT, PARAM_TYPE_BOOL},
        [&received](const Parameters& parameters)
        {
            for (const FunctionParameter& parameter : parameters)
                received += textOf(parameter) + ";";
            return FunctionParameter::VOID;
        });

    run("take('a', 2, true)");

    EXPECT_EQ(received, "a;2;true;");
}

TEST_F(HostFunctionTest, ArgumentsBeyondTheDeclaredAreIgnored)
{
    std::string received;
    declare(
        "take",
        {PARAM_TYPE_INT, PARAM_TYPE_INT},
        [&received](const Parameters& parameters)
        {
            received = std::to_string(parameters.size()) + ":" + textOf(parameters[0]) + "," +
                       textOf(parameters[1]);
            return FunctionParameter::VOID;
        });

    run("take(1, 2, {})");

    EXPECT_EQ(received, "2:1,2");
}

TEST_F(HostFunctionTest, MissingSecondArgumentOfABoolIsFalse)
{
    std::string received;
    declare(
        "take",
        {PARAM_TYPE_INT, PARAM_TYPE_BOOL},
        [&received](const Parameters& parameters)
        {
            received = textOf(parameters[0]) + "," + textOf(parameters[1]);
            return FunctionParameter::VOID;
        });

    run("take(1)");

    EXPECT_EQ(received, "1,false");
}

TEST_F(HostFunctionTest, MismatchKeepsTheCallableFromBeingCalled)
{
    bool isCalled = false;
    declare(
        "take",
        {PARAM_TYPE_BOOL, PARAM_TYPE_INT},
        [&isCalled](const Parameters&) { return isCalled = true; });

    run("isDone = pcall(take, true, {})");

    EXPECT_FALSE(isCalled);
    EXPECT_FALSE(environment().getVar("isDone", true));
    EXPECT_EQ(m_log.takeEntries().size(), 1U);
}

TEST_F(HostFunctionTest, MoreParametersThanTheStackHasRoomForAreMissing)
{
    std::size_t received = 0;
    declare(
        "take",
        std::vector<FUNCTION_PARAMETER_TYPE>(1000, PARAM_TYPE_BOOL),
        [&received](const Parameters& parameters)
        {
            for (const FunctionParameter& parameter : parameters)
                received += parameter.getBool() ? 1U : 0U;
            return FunctionParameter::VOID;
        });

    run("take(true, false, true)");

    EXPECT_EQ(received, 2U);
}

TEST_F(HostFunctionTest, FunctionArgumentCanBeCalled)
{
    int result = 0;
    declare(
        "take",
        {PARAM_TYPE_SCRIPT_FUNCTION},
        [this, &result](const Parameters& parameters)
        {
            std::vector<FunctionParameter> outputs{0};
            Parameters outputView(outputs);
            environment().callScriptFunction(
                parameters[0].getScriptObject(), {FunctionParameter(20)}, outputView);
            result = outputs[0].getInt();
            return FunctionParameter::VOID;
        });

    run("take(function(n) return n + 1 end)");

    EXPECT_EQ(result, 21);
}

TEST_F(HostFunctionTest, TableArgumentIsTheVeryTable)
{
    declare(
        "take",
        {PARAM_TYPE_SCRIPT_OBJECT},
        [this](const Parameters& parameters)
        {
            environment().setVar("taken", parameters[0].getScriptObject());
            return FunctionParameter::VOID;
        });

    run("local given = {} take(given) isSame = taken == given");

    EXPECT_TRUE(environment().getVar("isSame", false));
}

TEST_F(HostFunctionTest, ReferenceResultIsTheVeryValue)
{
    declare(
        "pass",
        {PARAM_TYPE_SCRIPT_OBJECT},
        [](const Parameters& parameters) { return parameters[0]; });

    run("local given = {} isSame = pass(given) == given");

    EXPECT_TRUE(environment().getVar("isSame", false));
}

TEST_F(HostFunctionTest, ReferenceArgumentOutlivesTheCoroutineThatGaveIt)
{
    ScriptObjectReference kept;
    declare(
        "keep",
        {PARAM_TYPE_SCRIPT_OBJECT},
        [&kept](const Parameters& parameters)
        {
            kept = parameters[0].getScriptObject();
            return FunctionParameter::VOID;
        });
    run("coroutine.wrap(function() keep({ 'treasure' }) end)()");

    run("for i = 1, 3 do collectgarbage() end");

    environment().setVar("kept", kept);
    run("result = kept[1]");
    EXPECT_EQ(environment().getVar("result", ""), "treasure");
}

TEST_F(HostFunctionTest, ClosureCalledAfterItsFunctionDiedIsAScriptError)
{
    declare("spawn", {}, [](const Parameters&) { return 1; });
    run("local kept = spawn"
        " keeper = newproxy(true)"
        " getmetatable(keeper).__gc = function() kept() end");

    destroyEnvironment();

    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{"Function 'spawn' does not exist anymore.", "LuaEnvironment"}));
}

} // namespace tbScripts::test

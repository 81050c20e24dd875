#include "support/EnvironmentFixture.h"

#include <memory>

namespace tbScripts::test
{

using ::testing::ElementsAre;

class HostFunctionReentranceTest : public EnvironmentFixture
{
protected:
    /// Calls the script function that `parameter` refers to, without inputs and outputs.
    void callBack(const FunctionParameter& parameter)
    {
        Parameters outputs;
        EXPECT_TRUE(
            environment().callScriptFunction(parameter.getScriptObject(), Parameters(), outputs));
    }

    static std::string textOf(const FunctionParameter& parameter)
    {
        return std::string(std::string_view(parameter.getString()));
    }
};

TEST_F(HostFunctionReentranceTest, EachOfFiftyLevelsSeesItsOwnValues)
{
    std::vector<std::string> seen;
    declare(
        "descend",
        {PARAM_TYPE_INT, PARAM_TYPE_STRING, PARAM_TYPE_SCRIPT_FUNCTION},
        [&](const Parameters& parameters)
        {
            callBack(parameters[2]);
            seen.push_back(std::to_string(parameters[0].getInt()) + textOf(parameters[1]));
            return parameters[0].getInt();
        });

    run("function level(n)"
        "  if n > 50 then return end"
        "  local result = descend(n, 'level' .. n, function() level(n + 1) end)"
        "  assert(result == n)"
        " end"
        " level(1)");

    ASSERT_EQ(seen.size(), 50U);
    for (int i = 0; i < 50; ++i)
    {
        const std::string number = std::to_string(50 - i);
        EXPECT_EQ(seen[static_cast<std::size_t>(i)], number + "level" + number);
    }
}

TEST_F(HostFunctionReentranceTest, OuterCallSeesItsOwnTableAfterTheInnerOne)
{
    ScriptObjectReference last;
    declare(
        "enter",
        {PARAM_TYPE_SCRIPT_OBJECT, PARAM_TYPE_SCRIPT_FUNCTION},
        [&](const Parameters& parameters)
        {
            callBack(parameters[1]);
            last = parameters[0].getScriptObject();
            return FunctionParameter::VOID;
        });

    run("outer, inner = {}, {}"
        " enter(outer, function() enter(inner, function() end) end)");

    environment().setVar("last", last);
    run("isOuter = last == outer");
    EXPECT_TRUE(environment().getVar("isOuter", false));
}

TEST_F(HostFunctionReentranceTest, OuterCallSeesItsOwnValuesAfterAnInnerMismatch)
{
    int seen = 0;
    declare(
        "enter",
        {PARAM_TYPE_INT, PARAM_TYPE_SCRIPT_FUNCTION},
        [&](const Parameters& parameters)
        {
            callBack(parameters[1]);
            seen = parameters[0].getInt();
            return FunctionParameter::VOID;
        });

    run("enter(7, function() pcall(enter, 8, 'no function') end)");

    EXPECT_EQ(seen, 7);
    EXPECT_EQ(m_log.takeEntries().size(), 1U);
}

TEST_F(HostFunctionReentranceTest, OuterCallSeesItsOwnValuesAfterAnInnerThrow)
{
    int seen = 0;
    declare(
        "enter",
        {PARAM_TYPE_INT, PARAM_TYPE_SCRIPT_FUNCTION},
        [&](const Parameters& parameters)
        {
            if (parameters[0].getInt() == 8)
                throw 8;
            callBack(parameters[1]);
            seen = parameters[0].getInt();
            return FunctionParameter::VOID;
        });

    run("enter(7, function() pcall(enter, 8, print) end)");

    EXPECT_EQ(seen, 7);
}

TEST_F(HostFunctionReentranceTest, FinaliserThatRunsWhileArgumentsAreReadHasValuesOfItsOwn)
{
    std::vector<int> seen;
    declare(
        "take",
        {PARAM_TYPE_INT, PARAM_TYPE_STRING},
        [&seen](const Parameters& parameters)
        {
            seen.push_back(parameters[0].getInt());
            return FunctionParameter::VOID;
        });

    // Reading a number as a text allocates, and so may run the finaliser.
    run("for i = 1, 20000 do"
        "  getmetatable(newproxy(true)).__gc = function() take(-1, 'x') end"
        "  take(i, i + 0.5)"
        " end"
        " collectgarbage() collectgarbage()");

    std::vector<int> ownValues;
    for (const int value : seen)
    {
        if (value != -1)
            ownValues.push_back(value);
    }
    ASSERT_EQ(ownValues.size(), 20000U);
    for (int i = 0; i < 20000; ++i)
        ASSERT_EQ(ownValues[static_cast<std::size_t>(i)], i + 1);
    EXPECT_GT(seen.size(), 20000U);
}

TEST_F(HostFunctionReentranceTest, CallsThroughACoroutineSeeTheirOwnValues)
{
    std::vector<int> seen;
    declare(
        "enter",
        {PARAM_TYPE_INT, PARAM_TYPE_SCRIPT_FUNCTION},
        [&](const Parameters& parameters)
        {
            callBack(parameters[1]);
            seen.push_back(parameters[0].getInt());
            return FunctionParameter::VOID;
        });

    run("enter(1, function()"
        "  coroutine.wrap(function() enter(2, function() enter(3, function() end) end) end)()"
        " end)");

    EXPECT_THAT(seen, ElementsAre(3, 2, 1));
}

/// What a callable does to its own function while it runs.
class HostFunctionChangedWhileRunningTest : public HostFunctionReentranceTest
{
protected:
    /// Declares `spawn`, whose callable does `change` to it and then notes what it still sees.
    void declareChanging(void (*change)(Function& function, Environment& environment))
    {
        const auto token = std::make_shared<int>(5);
        m_token = token;
        Function* const function = declare("spawn", {PARAM_TYPE_STRING, PARAM_TYPE_INT}, nullptr);
        function->setFunction(
            [this, function, change, token](const Parameters& parameters)
            {
                change(*function, environment());
                m_seen = textOf(parameters[0]) + std::to_string(parameters[1].getInt()) +
                         std::to_string(*token) + (m_token.expired() ? "gone" : "kept");
                return 9;
            });
    }

    std::string m_seen;
    std::weak_ptr<int> m_token; // captured by the callable
};

TEST_F(HostFunctionChangedWhileRunningTest, ResetLeavesTheRunningCallItsOwn)
{
    declareChanging([](Function& function, Environment&) { function.reset(); });

    run("result = spawn('a text that is too long for the short form', 2)");

    EXPECT_EQ(m_seen, "a text that is too long for the short form25kept");
    EXPECT_EQ(environment().getVar("result", -1), 9);
    EXPECT_TRUE(m_token.expired());
}

TEST_F(HostFunctionChangedWhileRunningTest, ResetCountsForTheNextCall)
{
    declareChanging([](Function& function, Environment&) { function.reset(); });

    run("spawn('a', 2) results = select('#', spawn())");

    EXPECT_EQ(environment().getVar("results", -1), 0);
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Function 'spawn' called but no user function is bound. Call having no effect.",
            "Function"}));
}

TEST_F(HostFunctionChangedWhileRunningTest, SetFunctionLeavesTheRunningCallItsOwn)
{
    declareChanging([](Function& function, Environment&)
                    { function.setFunction([](const Parameters&) { return 10; }); });

    run("first = spawn('a', 2) second = spawn('b', 3)");

    EXPECT_EQ(m_seen, "a25kept");
    EXPECT_EQ(environment().getVar("first", -1), 9);
    EXPECT_EQ(environment().getVar("second", -1), 10);
    EXPECT_TRUE(m_token.expired());
}

TEST_F(HostFunctionChangedWhileRunningTest, AddParameterLeavesTheRunningCallItsOwn)
{
    declareChanging(
        [](Function& function, Environment&)
        {
            for (int i = 0; i < 100; ++i)
                function.addParameter(PARAM_TYPE_BOOL);
        });

    run("result = spawn('a', 2)");

    EXPECT_EQ(m_seen, "a25kept");
    EXPECT_EQ(environment().getVar("result", -1), 9);
}

TEST_F(HostFunctionChangedWhileRunningTest, AddParameterCountsForTheNextCall)
{
    std::vector<std::size_t> sizes;
    Function* const function = environment().setFunc("spawn");
    function->setFunction(
        [&sizes, function](const Parameters& parameters)
        {
            function->addParameter(PARAM_TYPE_INT);
            sizes.push_back(parameters.size());
            return FunctionParameter::VOID;
        });

    run("spawn() spawn(1) spawn(1, 2)");

    EXPECT_THAT(sizes, ElementsAre(0U, 1U, 2U));
}

TEST_F(HostFunctionReentranceTest, ParameterAddedAfterNestedCallsCountsForInnerCallsToo)
{
    std::vector<std::size_t> sizes;
    Function* const function = declare(
        "enter",
        {PARAM_TYPE_SCRIPT_FUNCTION},
        [&](const Parameters& parameters)
        {
            callBack(parameters[0]);
            sizes.push_back(parameters.size());
            return FunctionParameter::VOID;
        });
    const std::string nested = "enter(function() enter(idle, 2) end, 1)";
    run("function idle() end " + nested);

    function->addParameter(PARAM_TYPE_INT);

    run(nested);
    EXPECT_THAT(sizes, ElementsAre(1U, 1U, 2U, 2U));
}

TEST_F(HostFunctionChangedWhileRunningTest, AssignmentLeavesTheRunningCallItsOwn)
{
    declareChanging([](Function& function, Environment&) { function = Function("other"); });

    run("result = spawn('a', 2)");

    EXPECT_EQ(m_seen, "a25kept");
    EXPECT_EQ(environment().getVar("result", -1), 9);
    EXPECT_TRUE(m_token.expired());
}

TEST_F(HostFunctionChangedWhileRunningTest, DeclaringItAgainLeavesTheRunningCallItsOwn)
{
    declareChanging([](Function&, Environment& environment) { environment.setFunc("spawn"); });

    run("result = spawn('a', 2)");

    EXPECT_EQ(m_seen, "a25kept");
    EXPECT_EQ(environment().getVar("result", -1), 9);
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Function 'spawn' already existant. Resetting its state before returning it. This "
            "might break previous usage of the function.",
            "Environment"}));
}

TEST_F(HostFunctionChangedWhileRunningTest, InnerCallsUseWhatWasChanged)
{
    int innerCount = -1;
    Function* const function = environment().setFunc("spawn");
    function->addParameter(PARAM_TYPE_INT);
    function->setFunction(
        [&, function](const Parameters& parameters)
        {
            function->addParameter(PARAM_TYPE_INT);
            function->setFunction(
                [&innerCount](const Parameters& inner)
                {
                    innerCount = inner[0].getInt() * 10 + inner[1].getInt();
                    return FunctionParameter::VOID;
                });
            EXPECT_TRUE(runScript(environment(), "spawn(4, 5)", "nested"));
            return parameters[0].getInt();
        });

    run("result = spawn(7)");

    EXPECT_EQ(innerCount, 45);
    EXPECT_EQ(environment().getVar("result", -1), 7);
}

TEST_F(HostFunctionChangedWhileRunningTest, ChangeInsideAnInnerCallLeavesTheOuterOneItsOwn)
{
    std::vector<int> seen;
    Function* const function = environment().setFunc("spawn");
    function->addParameter(PARAM_TYPE_INT);
    function->addParameter(PARAM_TYPE_SCRIPT_FUNCTION);
    function->setFunction(
        [&, function](const Parameters& parameters)
        {
            if (parameters[0].getInt() == 2)
                function->reset();
            callBack(parameters[1]);
            seen.push_back(parameters[0].getInt());
            return FunctionParameter::VOID;
        });

    run("spawn(1, function() spawn(2, function() spawn(3) end) end)");

    EXPECT_THAT(seen, ElementsAre(2, 1));
    EXPECT_EQ(m_log.takeEntries().size(), 1U);
}

TEST_F(HostFunctionChangedWhileRunningTest, DestroyingTheEnvironmentLeavesTheRunningCallItsOwn)
{
    std::string seen;
    const auto token = std::make_shared<int>(5);
    declare(
        "quit",
        {PARAM_TYPE_STRING},
        [this, &seen, token](const Parameters& parameters)
        {
            destroyEnvironment();
            seen = textOf(parameters[0]) + std::to_string(*token);
            return FunctionParameter::VOID;
        });

    const bool isDone = runScript(environment(), "quit('a text beyond the short form of texts')");

    EXPECT_TRUE(isDone);
    EXPECT_EQ(seen, "a text beyond the short form of texts5");
    EXPECT_EQ(token.use_count(), 1);
}

TEST_F(HostFunctionReentranceTest, ResultOfTheInnerCallIsTheInnerOne)
{
    declare(
        "add",
        {PARAM_TYPE_INT, PARAM_TYPE_INT},
        [](const Parameters& parameters)
        { return parameters[0].getInt() + parameters[1].getInt(); });

    run("result = add(add(1, 2), add(3, add(4, 5)))");

    EXPECT_EQ(environment().getVar("result", -1), 15);
}

} // namespace tbScripts::test

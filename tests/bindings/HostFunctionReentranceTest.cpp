#include "support/EnvironmentFixture.h"
#include "support/RowName.h"

#include <memory>

namespace tbScripts::test
{

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

    /// Declares `enter(number, f)`, which calls `f`, then notes the number that it still sees.
    void declareEnter()
    {
        declare(
            "enter",
            {PARAM_TYPE_INT, PARAM_TYPE_SCRIPT_FUNCTION},
            doing(
                [this](const Parameters& parameters)
                {
                    if (parameters[0].getInt() == 8)
                        throw 8;
                    callBack(parameters[1]);
                    m_seen.push_back(parameters[0].getInt());
                }));
    }

    std::vector<int> m_seen;
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
            seen.push_back(valueOf(parameters[0]) + valueOf(parameters[1]));
            return parameters[0].getInt();
        });

    run("function level(n)"
        "  if n > 50 then return end"
        "  local result = descend(n, 'level' .. n, function() level(n + 1) end)"
        "  assert(result == n)"
        " end"
        " level(1)");

    std::vector<std::string> expected;
    for (int i = 50; i > 0; --i)
        expected.push_back(std::to_string(i) + "level" + std::to_string(i));
    EXPECT_EQ(seen, expected);
}

TEST_F(HostFunctionReentranceTest, OuterCallSeesItsOwnTableAfterTheInnerOne)
{
    ScriptObjectReference last;
    declare(
        "enter",
        {PARAM_TYPE_SCRIPT_OBJECT, PARAM_TYPE_SCRIPT_FUNCTION},
        doing(
            [&](const Parameters& parameters)
            {
                callBack(parameters[1]);
                last = parameters[0].getScriptObject();
            }));
    run("outer, inner = {}, {}"
        " enter(outer, function() enter(inner, function() end) end)");
    environment().setVar("last", last);
    is("last == outer", "true");
}

TEST_F(HostFunctionReentranceTest, OuterCallSeesItsOwnValuesAfterAnInnerMismatch)
{
    declareEnter();
    run("enter(7, function() pcall(enter, 9, 'no function') end)");
    EXPECT_THAT(m_seen, ElementsAre(7));
    expectLogCount(1);
}

TEST_F(HostFunctionReentranceTest, OuterCallSeesItsOwnValuesAfterAnInnerThrow)
{
    declareEnter();
    run("enter(7, function() pcall(enter, 8, print) end)");
    EXPECT_THAT(m_seen, ElementsAre(7));
}

TEST_F(HostFunctionReentranceTest, CallsThroughACoroutineSeeTheirOwnValues)
{
    declareEnter();
    run("enter(1, function()"
        "  coroutine.wrap(function() enter(2, function() enter(3, function() end) end) end)()"
        " end)");
    EXPECT_THAT(m_seen, ElementsAre(3, 2, 1));
}

TEST_F(HostFunctionReentranceTest, FinaliserThatRunsWhileArgumentsAreReadHasValuesOfItsOwn)
{
    std::vector<int> ownValues;
    std::size_t calls = 0;
    declare(
        "take",
        {PARAM_TYPE_INT, PARAM_TYPE_STRING},
        doing(
            [&](const Parameters& parameters)
            {
                ++calls;
                if (parameters[0].getInt() != -1)
                    ownValues.push_back(parameters[0].getInt());
            }));

    // Reading a number as a text allocates, and so may run the finaliser.
    run("for i = 1, 20000 do"
        "  getmetatable(newproxy(true)).__gc = function() take(-1, 'x') end"
        "  take(i, i + 0.5)"
        " end"
        " collectgarbage() collectgarbage()");

    ASSERT_EQ(ownValues.size(), 20000U);
    for (int i = 0; i < 20000; ++i)
        ASSERT_EQ(ownValues[static_cast<std::size_t>(i)], i + 1);
    EXPECT_GT(calls, 20000U);
}

TEST_F(HostFunctionReentranceTest, ParameterAddedAfterNestedCallsCountsForInnerCallsToo)
{
    std::vector<std::size_t> sizes;
    Function* const function = declare(
        "enter",
        {PARAM_TYPE_SCRIPT_FUNCTION},
        doing(
            [&](const Parameters& parameters)
            {
                callBack(parameters[0]);
                sizes.push_back(parameters.size());
            }));
    const std::string nested = "enter(function() enter(idle, 2) end, 1)";
    run("function idle() end " + nested);
    function->addParameter(PARAM_TYPE_INT);
    run(nested);
    EXPECT_THAT(sizes, ElementsAre(1U, 1U, 2U, 2U));
}

TEST_F(HostFunctionReentranceTest, ResultOfTheInnerCallIsTheInnerOne)
{
    declare(
        "add",
        {PARAM_TYPE_INT, PARAM_TYPE_INT},
        [](const Parameters& parameters)
        { return parameters[0].getInt() + parameters[1].getInt(); });
    is("add(add(1, 2), add(3, add(4, 5)))", "15");
}

namespace
{

/// What a callable does to its own function while it runs.
struct Change
{
    const char* row;
    void (*perform)(Function& function, Environment& environment);
    const char* nextResult; // of a call afterwards
    std::vector<LogEntry> entries;
};

const LogEntry UNBOUND{
    "Function 'spawn' called but no user function is bound. Call having no effect.", "Function"};

} // namespace

using HostFunctionChangedWhileRunningTest = OnRows<HostFunctionReentranceTest, Change>;

TEST_P(HostFunctionChangedWhileRunningTest, LeavesTheRunningCallItsOwnAndCountsForTheNextOne)
{
    std::string seen;
    bool isFirst = true;
    std::weak_ptr<int> captured;
    {
        const auto token = std::make_shared<int>(5);
        captured = token;
        Function* const function = declare("spawn", {PARAM_TYPE_STRING, PARAM_TYPE_INT}, nullptr);
        function->setFunction(
            [this, function, token, &seen, &isFirst, &captured](const Parameters& parameters)
            {
                if (isFirst)
                    GetParam().perform(*function, environment());
                isFirst = false;
                seen = valuesOf(parameters) + ", " + std::to_string(*token) +
                       (captured.expired() ? " gone" : " kept");
                return 9;
            });
    }

    is("spawn('a text that is too long for the short form', 2)", "9");
    EXPECT_EQ(seen, "a text that is too long for the short form, 2, 5 kept");
    is("spawn('b', 3)", GetParam().nextResult);

    EXPECT_EQ(captured.expired(), std::string(GetParam().nextResult) != "9");
    expectLogged(GetParam().entries);
}

ROWS(
    HostFunctionChangedWhileRunningTest,
    {"Reset", [](Function& function, Environment&) { function.reset(); }, "nil", {UNBOUND}},
    {"SetFunction",
     [](Function& function, Environment&) { function.setFunction(returning(10)); },
     "10",
     {}},
    {"AddParameter",
     [](Function& function, Environment&)
     {
         for (int i = 0; i < 100; ++i)
             function.addParameter(PARAM_TYPE_BOOL);
     },
     "9",
     {}},
    {"Assignment",
     [](Function& function, Environment&) { function = Function("other"); },
     "nil",
     {{"Function 'other' called but no user function is bound. Call having no effect.",
       "Function"}}},
    {"DeclaringItAgain",
     [](Function&, Environment& environment) { environment.setFunc("spawn"); },
     "nil",
     {{"Function 'spawn' already existant. Resetting its state before returning it. This "
       "might break previous usage of the function.",
       "Environment"},
      UNBOUND}});

using HostFunctionRunningTest = HostFunctionReentranceTest;

TEST_F(HostFunctionRunningTest, AddParameterCountsForTheNextCall)
{
    std::vector<std::size_t> sizes;
    Function* const function = environment().setFunc("spawn");
    function->setFunction(doing(
        [&sizes, function](const Parameters& parameters)
        {
            function->addParameter(PARAM_TYPE_INT);
            sizes.push_back(parameters.size());
        }));
    run("spawn() spawn(1) spawn(1, 2)");
    EXPECT_THAT(sizes, ElementsAre(0U, 1U, 2U));
}

TEST_F(HostFunctionRunningTest, InnerCallsUseWhatWasChanged)
{
    std::vector<std::string> inner;
    Function* const function = declare("spawn", {PARAM_TYPE_INT}, nullptr);
    function->setFunction(
        [&, function](const Parameters& parameters)
        {
            function->addParameter(PARAM_TYPE_INT);
            function->setFunction(recording(inner));
            EXPECT_TRUE(runScript(environment(), "spawn(4, 5)", "nested"));
            return parameters[0].getInt();
        });
    is("spawn(7)", "7");
    EXPECT_THAT(inner, ElementsAre("4, 5"));
}

TEST_F(HostFunctionRunningTest, ChangeInsideAnInnerCallLeavesTheOuterOneItsOwn)
{
    Function* const function =
        declare("spawn", {PARAM_TYPE_INT, PARAM_TYPE_SCRIPT_FUNCTION}, nullptr);
    function->setFunction(doing(
        [&, function](const Parameters& parameters)
        {
            if (parameters[0].getInt() == 2)
                function->reset();
            callBack(parameters[1]);
            m_seen.push_back(parameters[0].getInt());
        }));
    run("spawn(1, function() spawn(2, function() spawn(3) end) end)");
    EXPECT_THAT(m_seen, ElementsAre(2, 1));
    expectLogged({UNBOUND});
}

TEST_F(HostFunctionRunningTest, DestroyingTheEnvironmentLeavesTheRunningCallItsOwn)
{
    std::string seen;
    const auto token = std::make_shared<int>(5);
    declare(
        "quit",
        {PARAM_TYPE_STRING},
        doing(
            [this, &seen, token](const Parameters& parameters)
            {
                destroyEnvironment();
                seen = valueOf(parameters[0]) + std::to_string(*token);
            }));
    EXPECT_TRUE(runScript(environment(), "quit('a text beyond the short form of texts')"));
    EXPECT_EQ(seen, "a text beyond the short form of texts5");
    EXPECT_EQ(token.use_count(), 1);
}

} // namespace tbScripts::test

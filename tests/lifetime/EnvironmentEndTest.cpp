// An environment that is destroyed from inside one of its own calls: the object goes at once, its
// interpreter and bindings follow when the outermost call returns, in the usual order.

#include "support/EnvironmentFixture.h"
#include "support/Farewell.h"
#include "support/GlobalOperations.h"
#include "support/RowName.h"

#include <tbScripts/LogManager.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tbScripts::test
{

namespace
{

// Puts what is logged between the other events.
class TracingLogger : public tbLog::Logger
{
public:
    explicit TracingLogger(std::vector<std::string>& events)
        : m_events(events)
    {
    }

    void log(const tbLog::StringView& message, const tbLog::StringView&) override
    {
        m_events.emplace_back(message.data(), message.size());
    }

private:
    std::vector<std::string>& m_events;
};

// Scripts end the environment by `quit` and leave remarks by `note`. Two functions and a value of
// the script tell when they go.
class EnvironmentEndFixture : public ::testing::Test
{
protected:
    EnvironmentEndFixture()
        : m_logger(m_events)
        , m_environment(std::make_unique<Environment>())
    {
        LogManager::getInstance()->setReceiver(&m_logger);
        m_environment->setName("world");
        m_environment->setEnvironmentFor(INTERPRETER_LUA);
        declare(
            "quit",
            doing(
                [this]
                {
                    m_events.emplace_back("quit");
                    m_environment.reset();
                }));
        declare(
            "note",
            doing([this](const Parameters& parameters)
                  { m_events.emplace_back(std::string_view(parameters[0].getString())); }));
        m_environment->getFunc("note")->addParameter(PARAM_TYPE_STRING);
        declareDeparting("first");
        declareDeparting("second");
        run("kept = newproxy(true) local note = note "
            "getmetatable(kept).__gc = function() note('finaliser speaks') end");
    }

    ~EnvironmentEndFixture() override
    {
        m_environment.reset();
        LogManager::getInstance()->kill();
    }

    void declare(const std::string& name, Function::Callable callable)
    {
        m_environment->setFunc(name)->setFunction(std::move(callable));
    }

    void declareDeparting(const std::string& name)
    {
        declare(
            name,
            [farewell = makeFarewell([this, name] { m_events.push_back(name + " is gone"); })](
                const Parameters&) { return FunctionParameter::VOID; });
    }

    void run(const std::string& sources) { EXPECT_TRUE(runScript(*m_environment, sources)); }

    // What follows a `quit`. The script's value goes last, when nothing can be called any more.
    static auto isTheUsualEnd()
    {
        return ElementsAre(
            "quit",
            "script goes on",
            "first is gone",
            "second is gone",
            "Function 'note' does not exist anymore.");
    }

    std::vector<std::string> m_events;
    TracingLogger m_logger;
    std::unique_ptr<Environment> m_environment;
};

struct WayRow
{
    const char* row;
    const char* script; // prepares
    void (*go)(Environment& environment);
};

void execute(Environment& environment, const char* sources)
{
    EXPECT_TRUE(runScript(environment, sources));
}

std::vector<WayRow> allWays()
{
    return {
        {"Execution",
         "",
         [](Environment& environment) { execute(environment, "quit() note('script goes on')"); }},
        {"ProtectedCallOfAScript",
         "",
         [](Environment& environment)
         { execute(environment, "assert(pcall(quit)) note('script goes on')"); }},
        {"Coroutine",
         "",
         [](Environment& environment)
         {
             execute(
                 environment,
                 "coroutine.wrap(function() quit() coroutine.yield() end)() note('script goes "
                 "on')");
         }},
        {"BodyOfACoroutine",
         "",
         [](Environment& environment)
         { execute(environment, "coroutine.wrap(quit)() note('script goes on')"); }},
        {"ScriptFunctionCall",
         "function leave() quit() note('script goes on') end",
         [](Environment& environment)
         {
             Parameters outputs;
             EXPECT_TRUE(environment.callScriptFunction(
                 environment.getScriptFunction("leave"), {}, outputs));
         }},
        {"FinaliserOfARequestedCollection",
         "getmetatable(newproxy(true)).__gc = function() quit() note('script goes on') end",
         [](Environment& environment) { environment.requestGarbageCollection(); }},
        {"SortingByAScript",
         "",
         [](Environment& environment)
         {
             execute(
                 environment,
                 "local left table.sort({3, 1, 2}, function(a, b)"
                 "  if not left then left = true quit() end return a < b end)"
                 "note('script goes on')");
         }}};
}

using EnvironmentEndTest = OnRows<EnvironmentEndFixture, WayRow>;

ROWS(EnvironmentEndTest, allWays());

TEST_P(EnvironmentEndTest, EverythingFollowsWhenTheOutermostCallReturns)
{
    run(GetParam().script);
    GetParam().go(*m_environment);
    EXPECT_EQ(m_environment, nullptr);
    EXPECT_THAT(m_events, isTheUsualEnd());
}

TEST_P(EnvironmentEndTest, ScriptThatIsNestedDeepStaysAliveToo)
{
    run(GetParam().script);
    Environment& environment = *m_environment;
    declare("nest", doing([&environment] { GetParam().go(environment); }));

    EXPECT_TRUE(runScript(environment, "local nest, note = nest, note nest() note('outer')"));

    const auto outer = std::find(m_events.begin(), m_events.end(), "outer");
    ASSERT_NE(outer, m_events.end());
    EXPECT_THAT(
        std::vector<std::string>(outer, m_events.end()),
        ElementsAre(
            "outer", "first is gone", "second is gone", "Function 'note' does not exist anymore."));
}

// The metamethods of the globals are scripts that a host call runs, too.
using EnvironmentEndByMetamethodTest = OnValues<EnvironmentEndFixture, GlobalOperation>;

VALUES(EnvironmentEndByMetamethodTest, ::testing::ValuesIn(allGlobalOperations()));

TEST_P(EnvironmentEndByMetamethodTest, EverythingFollowsWhenTheOperationReturns)
{
    run("local function leave() quit() note('script goes on') end "
        "setmetatable(_G, {__index = leave, __newindex = leave})");
    EXPECT_EQ(GetParam().perform(*m_environment, "score"), GetParam().neutralAnswer);
    EXPECT_EQ(m_environment, nullptr);
    EXPECT_THAT(m_events, isTheUsualEnd());
}

TEST_P(EnvironmentEndByMetamethodTest, ErrorAfterwardsIsLoggedBeforeTheEnd)
{
    run("local function leave() quit() note('script goes on') error('lost', 0) end "
        "setmetatable(_G, {__index = leave, __newindex = leave})");

    GetParam().perform(*m_environment, "score");

    EXPECT_THAT(
        m_events,
        ElementsAre(
            "quit",
            "script goes on",
            "lost",
            "first is gone",
            "second is gone",
            "Function 'note' does not exist anymore."));
}

using EnvironmentEndDetailTest = EnvironmentEndFixture;

TEST_F(EnvironmentEndDetailTest, FailureAfterwardsIsReportedUnderTheLastNames)
{
    EXPECT_FALSE(runScript(*m_environment, "quit() error('lost', 0)", "round"));
    EXPECT_THAT(
        m_events,
        ElementsAre(
            "quit",
            "Error while executing script 'round' : lost",
            "first is gone",
            "second is gone",
            "Function 'note' does not exist anymore."));
}

TEST_F(EnvironmentEndDetailTest, HostFunctionThatTheHostCallsMayEndIt)
{
    Parameters outputs;

    EXPECT_TRUE(
        m_environment->callScriptFunction(m_environment->getScriptFunction("quit"), {}, outputs));

    EXPECT_EQ(m_environment, nullptr);
    EXPECT_THAT(
        m_events,
        ElementsAre(
            "quit", "first is gone", "second is gone", "Function 'note' does not exist anymore."));
}

TEST_F(EnvironmentEndDetailTest, ResultsOfTheCallStillArrive)
{
    run("function leave() quit() return 12, 'text' end");
    std::vector<FunctionParameter> outputs{FunctionParameter(0), FunctionParameter("")};
    Parameters outputView(outputs);

    EXPECT_TRUE(m_environment->callScriptFunction(
        m_environment->getScriptFunction("leave"), {}, outputView));

    EXPECT_EQ(outputs[0].getInt(), 12);
    EXPECT_EQ(outputs[1].getString(), "text");
}

TEST_F(EnvironmentEndDetailTest, ReferencesAmongTheResultsOutliveIt)
{
    run("function leave() quit() return {}, function() end end");
    std::vector<FunctionParameter> outputs{
        FunctionParameter::ofType(PARAM_TYPE_SCRIPT_OBJECT),
        FunctionParameter::ofType(PARAM_TYPE_SCRIPT_FUNCTION)};
    Parameters outputView(outputs);

    m_environment->callScriptFunction(m_environment->getScriptFunction("leave"), {}, outputView);

    Environment next;
    next.setEnvironmentFor(INTERPRETER_LUA);
    next.setVar("object", outputs[0].getScriptObject());
    EXPECT_FALSE(next.isVarSet("object"));
}

TEST_F(EnvironmentEndDetailTest, NewEnvironmentTakesThePlaceMeanwhile)
{
    declare(
        "reload",
        doing(
            [this]
            {
                m_environment = std::make_unique<Environment>();
                m_environment->setEnvironmentFor(INTERPRETER_LUA);
                m_environment->setVar("fresh", true);
            }));

    EXPECT_TRUE(runScript(*m_environment, "reload() assert(fresh == nil)"));

    EXPECT_TRUE(m_environment->getVar("fresh", false));
    EXPECT_EQ(m_events[0], "first is gone");
}

TEST_F(EnvironmentEndDetailTest, AssignmentFromInsideWaitsTheSame)
{
    declare(
        "renew",
        doing(
            [this]
            {
                *m_environment = Environment();
                m_events.emplace_back("assigned");
            }));

    EXPECT_TRUE(runScript(*m_environment, "local note = note renew() note('script goes on')"));

    ASSERT_GE(m_events.size(), 3U);
    EXPECT_EQ(m_events[m_events.size() - 5], "assigned");
    EXPECT_EQ(m_events[m_events.size() - 4], "script goes on");
    EXPECT_EQ(m_events[m_events.size() - 3], "first is gone");
}

TEST_F(EnvironmentEndDetailTest, CopyKeepsEverythingUntilItGoes)
{
    auto copy = std::make_unique<Environment>(*m_environment);
    run("quit() note('script goes on')");
    EXPECT_THAT(m_events, ElementsAre("quit", "script goes on"));
    EXPECT_TRUE(copy->isVarSet("kept"));
    copy.reset();
    EXPECT_THAT(m_events, isTheUsualEnd());
}

TEST_F(EnvironmentEndDetailTest, AnotherEnvironmentGoesOn)
{
    Environment outer;
    outer.setEnvironmentFor(INTERPRETER_LUA);
    outer.setFunc("runInner")
        ->setFunction(
            [this](const Parameters&)
            {
                run("quit() note('script goes on')");
                m_events.emplace_back("inner has returned");
                return FunctionParameter::VOID;
            });

    EXPECT_TRUE(runScript(outer, "runInner() done = true"));

    EXPECT_TRUE(outer.getVar("done", false));
    EXPECT_EQ(m_events.back(), "inner has returned");
    EXPECT_EQ(m_events.size(), 6U);
}

TEST_F(EnvironmentEndDetailTest, FinaliserMayEndItWhileASwitchClosesTheState)
{
    run("kept = nil last = newproxy(true) getmetatable(last).__gc = quit");
    m_environment->setEnvironmentFor(INTERPRETER_LUA);
    EXPECT_EQ(m_environment, nullptr);
    EXPECT_THAT(
        m_events, ElementsAre("quit", "finaliser speaks", "first is gone", "second is gone"));
}

TEST_F(EnvironmentEndDetailTest, FinaliserMayEndItInTheMiddleOfAnAllocation)
{
    run("collectgarbage() collectgarbage('stop') local quit = quit "
        "getmetatable(newproxy(true)).__gc = function() quit() end "
        "collectgarbage('setstepmul', 0) collectgarbage('restart')");

    m_environment->setVar("a name of its own", "a text of its own");

    EXPECT_EQ(m_environment, nullptr);
    EXPECT_EQ(m_events[0], "quit");
    EXPECT_EQ(m_events.size(), 4U);
}

TEST_F(EnvironmentEndDetailTest, FinaliserMayEndItDuringADeclaration)
{
    run("collectgarbage() collectgarbage('stop') local quit = quit "
        "getmetatable(newproxy(true)).__gc = function() quit() end "
        "collectgarbage('setstepmul', 0) collectgarbage('restart')");

    Function* const late = m_environment->setFunc("late");

    EXPECT_EQ(late, nullptr);
    EXPECT_EQ(m_environment, nullptr);
    EXPECT_EQ(m_events[0], "quit");
}

} // namespace

} // namespace tbScripts::test

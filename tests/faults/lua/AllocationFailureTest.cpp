// For n = 0, 1, 2, ... until nothing is refused any more: the interpreter gets no memory from its
// n-th request on. The call gives its neutral value and says why, the stack is back where it was,
// the environment goes on, and in the end nothing is left over.

#include "support/EnvironmentFixture.h"
#include "support/GlobalOperations.h"
#include "support/InterpreterCalls.h"
#include "support/RowName.h"

#include <tbScripts/Script.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tbScripts::test
{

namespace
{

/// What a host call works on, made while there was memory.
struct Prepared
{
    Environment environment;
    ScriptObjectReference function;
    Script script;
};

/// A call of the host, and its outcome without memory.
struct HostCallRow
{
    const char* row;
    const char* sources; // run beforehand; the global function `call` is fetched
    std::string (*perform)(Prepared& prepared);
    const char* neutralAnswer;
    const char* message;
};

// Calls the function with `inputs`; answers what the output is and how it ended.
std::string callWith(Prepared& prepared, const std::vector<FunctionParameter>& inputs)
{
    std::vector<FunctionParameter> outputs{FunctionParameter("untouched")};
    Parameters outputView(outputs);
    prepared.environment.callScriptFunction(prepared.function, inputs, outputView);
    return std::to_string(prepared.environment.getLastExecutionResult().code) + " " +
           std::string(std::string_view(outputs[0].getString()));
}

std::string execute(Prepared& prepared)
{
    prepared.environment.execute(prepared.script);
    return std::to_string(prepared.environment.getLastExecutionResult().code);
}

constexpr const char* UNTOUCHED = "6 untouched";
constexpr const char* NO_MEMORY = "not enough memory";

int hostObject = 0;

std::vector<HostCallRow> allHostCalls()
{
    return {
        {"CallWithoutInputs",
         "function call() return 'a' .. math.sqrt(2) end",
         [](Prepared& p) { return callWith(p, {}); },
         UNTOUCHED,
         NO_MEMORY},
        {"CallWithATextInput",
         "function call(text) return text end",
         [](Prepared& p) { return callWith(p, {FunctionParameter("a text of its own")}); },
         UNTOUCHED,
         NO_MEMORY},
        {"CallWithAHostObjectAsInput",
         "function call(object) return 'text' end",
         [](Prepared& p) { return callWith(p, {FunctionParameter(&hostObject, "Type", false)}); },
         UNTOUCHED,
         NO_MEMORY},
        {"CallWithManyInputs",
         "function call(...) return 'text' end",
         [](Prepared& p)
         { return callWith(p, std::vector<FunctionParameter>(500, FunctionParameter(1))); },
         UNTOUCHED,
         NO_MEMORY},
        {"CallThatCallsTheHost",
         "function call() return host({}, function() end, 'a' .. math.sqrt(2)) end",
         [](Prepared& p) { return callWith(p, {}); },
         UNTOUCHED,
         NO_MEMORY},
        {"CallThatGetsATextFromTheHost",
         "function call() return host({}, print, 'text') end",
         [](Prepared& p) { return callWith(p, {}); },
         UNTOUCHED,
         NO_MEMORY},
        {"Execution",
         "",
         &execute,
         "6",
         "Error while executing script 'round' : not enough memory"}};
}

} // namespace

class AllocationFailureFixture : public LogFixture
{
protected:
    // Makes an environment with what the rows need.
    void prepare(const char* sources)
    {
        m_prepared = std::make_unique<Prepared>();
        m_prepared->environment.setEnvironmentFor(INTERPRETER_LUA);
        m_state = InterpreterCalls::lastOpenedState();
        m_prepared->environment.setUserType("Type");
        Function* const host = m_prepared->environment.setFunc("host");
        host->addParameter(PARAM_TYPE_SCRIPT_OBJECT);
        host->addParameter(PARAM_TYPE_SCRIPT_FUNCTION);
        host->addParameter(PARAM_TYPE_STRING);
        host->setFunction([](const Parameters&)
                          { return FunctionParameter("a text of the host"); });
        runScript(m_prepared->environment, sources);
        m_prepared->function = m_prepared->environment.getScriptFunction("call");
        m_prepared->script.setName("round");
        m_prepared->script.setTargetInterpreter(INTERPRETER_LUA);
        m_prepared->script.setSources("local t = {1, {2}} result = 'a' .. math.sqrt(t[1] + 1)");
        m_prepared->script.load();
        m_height = lua_gettop(m_state);
    }

    // Acts with memory for `allowed` requests. Returns whether one was refused.
    bool actWith(std::size_t allowed, const std::function<void()>& act)
    {
        m_memory.refuseAfter(allowed);
        act();
        m_memory.allowAll();
        EXPECT_EQ(lua_gettop(m_state), m_height);
        return m_memory.hasRefused();
    }

    // Acts with memory for 0, 1, 2 and so on requests, each time in a new environment, until none
    // is refused. Looks at the answer and the entries of those that were.
    void untilNothingIsRefused(
        const char* sources,
        const std::function<std::string()>& act,
        const std::function<void(const std::string&, const std::vector<LogEntry>&)>& expectRefusal)
    {
        std::size_t refusals = 0;
        for (bool isRefused = true; isRefused; refusals += isRefused ? 1 : 0)
        {
            prepare(sources);
            std::string answer;
            isRefused = actWith(refusals, [&] { answer = act(); });
            const std::vector<LogEntry> entries = m_log.takeEntries();
            if (isRefused)
                expectRefusal(answer, entries);
            else
                EXPECT_THAT(entries, IsEmpty());
            expectThatTheEnvironmentGoesOn();
            endEnvironment();
        }
        EXPECT_GT(refusals, 0U);
    }

    void expectThatTheEnvironmentGoesOn()
    {
        m_prepared->environment.setVar("afterwards", "a text");
        EXPECT_EQ(m_prepared->environment.getVar("afterwards", ""), "a text");
        EXPECT_TRUE(runScript(m_prepared->environment, "local t = {} assert(afterwards)"));
    }

    void endEnvironment()
    {
        m_prepared.reset();
        EXPECT_EQ(m_memory.countLivingBlocks(), 0U);
    }

    StateMemory m_memory;
    std::unique_ptr<Prepared> m_prepared;

private:
    lua_State* m_state = nullptr;
    int m_height = 0;
};

using AllocationFailureAccessTest = OnValues<AllocationFailureFixture, GlobalOperation>;

VALUES(AllocationFailureAccessTest, ::testing::ValuesIn(allGlobalOperations()));

TEST_P(AllocationFailureAccessTest, IsAnsweredNeutrallyAndLogged)
{
    untilNothingIsRefused(
        "",
        [this] { return GetParam().perform(m_prepared->environment, "new name"); },
        [](const std::string& answer, const std::vector<LogEntry>& entries)
        {
            EXPECT_EQ(answer, GetParam().neutralAnswer);
            EXPECT_THAT(entries, Not(IsEmpty())); // two where a value is read to be set
            EXPECT_THAT(entries, Each(LogEntry{"not enough memory", "LuaEnvironment"}));
        });
}

using AllocationFailureCallTest = OnRows<AllocationFailureFixture, HostCallRow>;

ROWS(AllocationFailureCallTest, allHostCalls());

TEST_P(AllocationFailureCallTest, FailsAndSaysWhy)
{
    untilNothingIsRefused(
        GetParam().sources,
        [this] { return GetParam().perform(*m_prepared); },
        [](const std::string& answer, const std::vector<LogEntry>& entries)
        {
            EXPECT_EQ(answer, GetParam().neutralAnswer);
            EXPECT_THAT(entries, ElementsAre(LogEntry{GetParam().message, "LuaEnvironment"}));
        });
}

using AllocationFailureTest = AllocationFailureFixture;

TEST_F(AllocationFailureTest, EnvironmentEndsWithoutMemory)
{
    prepare("list = {} for i = 1, 100 do list[i] = {} end collectgarbage('stop')");
    m_memory.refuseAfter(0);

    endEnvironment();

    m_log.takeEntries(); // whether anything had to be asked for
    EXPECT_EQ(m_prepared, nullptr);
}

TEST_F(AllocationFailureTest, FirstReferenceIsReleasedWithoutMemory)
{
    prepare("list = {}");
    auto list = std::make_unique<ScriptObjectReference>(m_prepared->environment.getVar("list"));
    m_prepared->function = ScriptObjectReference();
    m_memory.refuseAfter(0);

    list.reset();

    m_memory.allowAll();
    EXPECT_TRUE(m_prepared->environment.isVarSet("list"));
    endEnvironment();
}

TEST_F(AllocationFailureTest, FunctionsAreReplacedAndGarbageIsCollectedWithoutMemory)
{
    prepare("for i = 1, 1000 do local t = {} end");
    m_memory.refuseAfter(0);

    m_prepared->environment.requestGarbageCollection();
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
    Function* const host = m_prepared->environment.setFunc("host");

    m_memory.allowAll();
    EXPECT_NE(host, nullptr);
    EXPECT_EQ(m_log.takeEntries().size(), 1U); // that it is declared again
    endEnvironment();
}

} // namespace tbScripts::test

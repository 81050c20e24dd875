#include "support/EnvironmentFixture.h"
#include "support/ReactingLogger.h"

#include <ostream>
#include <tuple>
#include <utility>

namespace tbScripts::test
{

using ::testing::ElementsAre;

namespace
{

struct Mismatch
{
    const char* name;
    FUNCTION_PARAMETER_TYPE type;
    const char* expected;
};

std::ostream& operator<<(std::ostream& stream, const Mismatch& row)
{
    return stream << row.name;
}

struct WrongValue
{
    const char* name;
    const char* expression;
    const char* typeName;
};

std::ostream& operator<<(std::ostream& stream, const WrongValue& row)
{
    return stream << row.name;
}

} // namespace

class MismatchMessageTest : public EnvironmentFixture
{
protected:
    /// Declares `spawn` with a parameter of `type`; its callable must not be called.
    void declareSpawn(FUNCTION_PARAMETER_TYPE type = PARAM_TYPE_INT)
    {
        Function* const function = environment().setFunc("spawn");
        function->addParameter(type, "Enemy");
        function->setFunction(
            [](const Parameters&)
            {
                ADD_FAILURE() << "the callable was called";
                return FunctionParameter::VOID;
            });
    }

    /// Expects `message` as global `message` of the script, and logged once.
    void expectMessage(const std::string& message)
    {
        EXPECT_EQ(environment().getVar("message", ""), message);
        EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{message, "LuaFunction"}));
    }
};

class MismatchMessageTypesTest
    : public MismatchMessageTest,
      public ::testing::WithParamInterface<std::tuple<Mismatch, WrongValue>>
{
};

TEST_P(MismatchMessageTypesTest, NamesBothTypes)
{
    const auto& [expected, actual] = GetParam();
    declareSpawn(expected.type);

    run(std::string("isDone, message = pcall(function() local x = spawn(") + actual.expression +
        ") end)");

    expectMessage(
        std::string("Error l.1 while calling spawn. Expected ") + expected.expected + ", got " +
        actual.typeName + ".");
}

namespace
{

std::string rowName(const ::testing::TestParamInfo<std::tuple<Mismatch, WrongValue>>& info)
{
    return std::string(std::get<0>(info.param).name) + "Given" + std::get<1>(info.param).name;
}

const Mismatch INT{"Int", PARAM_TYPE_INT, "int"};
const Mismatch FLOAT{"Float", PARAM_TYPE_FLOAT, "float"};
const Mismatch DOUBLE{"Double", PARAM_TYPE_DOUBLE, "double"};
const Mismatch STRING{"String", PARAM_TYPE_STRING, "string"};
const Mismatch OWNED{"OwnedUserType", PARAM_TYPE_USER_TYPE_OWNED, "Enemy"};
const Mismatch KEPT{"UserType", PARAM_TYPE_USER_TYPE, "Enemy"};
const Mismatch FUNCTION{"ScriptFunction", PARAM_TYPE_SCRIPT_FUNCTION, "lua function"};
const Mismatch OBJECT{"ScriptObject", PARAM_TYPE_SCRIPT_OBJECT, "lua object"};

const WrongValue MISSING{"Nothing", "", "no value"};
const WrongValue NIL{"Nil", "nil", "nil"};
const WrongValue BOOL{"Bool", "true", "boolean"};
const WrongValue NUMBER{"Number", "7", "number"};
const WrongValue TEXT{"Text", "'seven'", "string"};
const WrongValue TABLE{"Table", "{}", "table"};
const WrongValue CLOSURE{"Function", "print", "function"};
const WrongValue THREAD{"Coroutine", "coroutine.create(print)", "thread"};
const WrongValue FILE_HANDLE{"FileHandle", "io.stdout", "userdata"};
const WrongValue PROXY{"Proxy", "newproxy(true)", "userdata"};
const WrongValue BOXED{"BoxedInteger", "1LL", "cdata"};

} // namespace

INSTANTIATE_TEST_SUITE_P(
    Numbers,
    MismatchMessageTypesTest,
    ::testing::Combine(
        ::testing::Values(INT, FLOAT, DOUBLE),
        ::testing::Values(MISSING, NIL, BOOL, TEXT, TABLE, CLOSURE, THREAD, FILE_HANDLE, BOXED)),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Texts,
    MismatchMessageTypesTest,
    ::testing::Combine(
        ::testing::Values(STRING),
        ::testing::Values(MISSING, NIL, BOOL, TABLE, CLOSURE, THREAD, FILE_HANDLE, BOXED)),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    UserTypes,
    MismatchMessageTypesTest,
    ::testing::Combine(
        ::testing::Values(OWNED, KEPT),
        ::testing::Values(
            MISSING, BOOL, NUMBER, TEXT, TABLE, CLOSURE, THREAD, FILE_HANDLE, PROXY, BOXED)),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Functions,
    MismatchMessageTypesTest,
    ::testing::Combine(
        ::testing::Values(FUNCTION),
        ::testing::Values(MISSING, NIL, BOOL, NUMBER, TEXT, TABLE, THREAD, FILE_HANDLE, BOXED)),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Objects,
    MismatchMessageTypesTest,
    ::testing::Combine(
        ::testing::Values(OBJECT),
        ::testing::Values(MISSING, NIL, BOOL, NUMBER, TEXT, CLOSURE, THREAD, FILE_HANDLE, BOXED)),
    rowName);

TEST_F(MismatchMessageTest, CarriesTheLineOfTheCall)
{
    declareSpawn();

    const std::string message = runExpectingError("\n\n\n\n\n\n\n\n\n\n\nspawn('x')");

    EXPECT_EQ(
        message,
        "Error while executing script 'test' : Error l.12 while calling spawn. Expected int, got "
        "string.");
}

TEST_F(MismatchMessageTest, IsLoggedBeforeTheFailureOfTheScript)
{
    declareSpawn();

    const bool isDone = runScript(environment(), "spawn('x')");

    EXPECT_FALSE(isDone);
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(
            LogEntry{"Error l.1 while calling spawn. Expected int, got string.", "LuaFunction"},
            LogEntry{
                "Error while executing script 'test' : Error l.1 while calling spawn. Expected "
                "int, got string.",
                "LuaEnvironment"}));
}

TEST_F(MismatchMessageTest, NamesTheFirstOfSeveralWrongArguments)
{
    Function* const function = declare("spawn", {PARAM_TYPE_INT, PARAM_TYPE_STRING}, nullptr);
    function->addParameter(PARAM_TYPE_USER_TYPE, "Enemy");

    run("isDone, message = pcall(function() local x = spawn(1, {}, 7) end)");

    expectMessage("Error l.1 while calling spawn. Expected string, got table.");
}

TEST_F(MismatchMessageTest, KeepsAllBytesOfTheFunctionNameInTheLog)
{
    Function* const function = environment().setFunc(tbMemory::StringView("spawn\0er", 8));
    function->addParameter(PARAM_TYPE_INT);

    run("isDone, message = pcall(function() local x = spawn({}) end)");

    EXPECT_EQ(environment().getVar("message", ""), "Error l.1 while calling spawn");
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            std::string("Error l.1 while calling spawn\0er. Expected int, got table.", 58),
            "LuaFunction"}));
}

TEST_F(MismatchMessageTest, CarriesTheLineInsideACoroutine)
{
    declareSpawn();

    run("local routine = coroutine.create(function()\n"
        "  coroutine.yield()\n"
        "  spawn('x')\n"
        "end)\n"
        "coroutine.resume(routine)\n"
        "isDone, message = coroutine.resume(routine)");

    expectMessage("Error l.3 while calling spawn. Expected int, got string.");
}

TEST_F(MismatchMessageTest, CarriesTheLineThroughAProtectedCall)
{
    declareSpawn();

    run("isDone, message = pcall(function()\n"
        "  local value = 1\n"
        "  value = spawn('x')\n"
        "end)");

    expectMessage("Error l.3 while calling spawn. Expected int, got string.");
}

TEST_F(MismatchMessageTest, CarriesTheLineThroughAMessageHandler)
{
    declareSpawn();

    run("isDone, message = xpcall(function()\n"
        "  local value = spawn('x')\n"
        "end, function(text) return 'handled ' .. text end)");

    EXPECT_EQ(
        environment().getVar("message", ""),
        "handled Error l.2 while calling spawn. Expected int, got string.");
    EXPECT_EQ(m_log.takeEntries().size(), 1U);
}

TEST_F(MismatchMessageTest, CarriesTheLineInsideACompiledLoop)
{
    declare("spawn", {PARAM_TYPE_INT}, [](const Parameters&) { return 1; });

    run("local arguments = {}\n"
        "for i = 1, 5000 do arguments[i] = i end\n"
        "arguments[5000] = 'x'\n"
        "require('jit').flush()\n"
        "isDone, message = pcall(function()\n"
        "  local sum = 0\n"
        "  for i = 1, 5000 do\n"
        "    local argument = arguments[i]\n"
        "    sum = sum + spawn(argument)\n"
        "    sum = sum + 1\n"
        "  end\n"
        "end)\n"
        "isCompiled = require('jit.util').traceinfo(1) ~= nil");

    EXPECT_TRUE(environment().getVar("isCompiled", false));
    expectMessage("Error l.9 while calling spawn. Expected int, got string.");
}

TEST_F(MismatchMessageTest, CarriesTheLineInsideACompiledFunctionCalledInALoop)
{
    declare("spawn", {PARAM_TYPE_INT}, [](const Parameters&) { return 1; });

    run("local function once(i)\n"
        "  local argument = i == 5000 and 'x' or i\n"
        "  local result = spawn(argument)\n"
        "  return result\n"
        "end\n"
        "require('jit').flush()\n"
        "isDone, message = pcall(function()\n"
        "  for i = 1, 5000 do once(i) end\n"
        "end)\n"
        "isCompiled = require('jit.util').traceinfo(1) ~= nil");

    EXPECT_TRUE(environment().getVar("isCompiled", false));
    expectMessage("Error l.3 while calling spawn. Expected int, got string.");
}

TEST_F(MismatchMessageTest, CarriesTheLineOfTheAccessThatCallsAMetamethod)
{
    declareSpawn();

    run("local object = setmetatable({}, { __index = spawn })\n"
        "isDone, message = pcall(function()\n"
        "  local value = object.health\n"
        "end)");

    expectMessage("Error l.3 while calling spawn. Expected int, got table.");
}

TEST_F(MismatchMessageTest, CarriesTheLineOfTheInnermostScript)
{
    declareSpawn();
    declare(
        "nest",
        {},
        [this](const Parameters&) { return runScript(environment(), "\n\nspawn('x')", "nested"); });

    run("nest()");

    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(
            LogEntry{"Error l.3 while calling spawn. Expected int, got string.", "LuaFunction"},
            LogEntry{
                "Error while executing script 'nested' : Error l.3 while calling spawn. Expected "
                "int, got string.",
                "LuaEnvironment"}));
}

TEST_F(MismatchMessageTest, HasNoLineWhereTheCoroutineIsTheHostFunctionItself)
{
    declareSpawn();

    run("isDone, message = pcall(coroutine.wrap(spawn), 'wrong type')");

    expectMessage("Error l.-1 while calling spawn. Expected int, got string.");
}

TEST_F(MismatchMessageTest, HasNoLineWhereTheHostCalls)
{
    declareSpawn();
    Parameters outputs;

    const bool isDone = environment().callScriptFunction(
        environment().getScriptFunction("spawn"), {FunctionParameter("x")}, outputs);

    EXPECT_FALSE(isDone);
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(
            LogEntry{"Error l.-1 while calling spawn. Expected int, got string.", "LuaFunction"},
            LogEntry{
                "Error l.-1 while calling spawn. Expected int, got string.", "LuaEnvironment"}));
}

TEST_F(MismatchMessageTest, HasNoLineWhereTheHostCallsFromAHostFunction)
{
    declareSpawn();
    declare(
        "nest",
        {PARAM_TYPE_SCRIPT_FUNCTION},
        [this](const Parameters& parameters)
        {
            Parameters outputs;
            return environment().callScriptFunction(
                parameters[0].getScriptObject(), {FunctionParameter("x")}, outputs);
        });

    run("nest(spawn)");

    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(
            LogEntry{"Error l.-1 while calling spawn. Expected int, got string.", "LuaFunction"},
            LogEntry{
                "Error l.-1 while calling spawn. Expected int, got string.", "LuaEnvironment"}));
}

TEST_F(MismatchMessageTest, HasNoLineWhereALibraryFunctionCalls)
{
    declareSpawn();

    run("isDone, message = pcall(string.gsub, 'x', 'x', spawn)");

    expectMessage("Error l.-1 while calling spawn. Expected int, got string.");
}

TEST_F(MismatchMessageTest, ReceiverMayAskTheEnvironmentWhileACoroutineFails)
{
    declareSpawn();
    run("lives = 3"
        " function onLog(n) collectgarbage() return n + 1 end");
    int lives = 0;
    std::vector<FunctionParameter> outputs{0};
    const ReactingLogger logger(
        [&]
        {
            lives = environment().getVar("lives", -1);
            call("onLog", {20}, outputs);
        });

    run("isDone, message = coroutine.resume(coroutine.create(function() spawn('x') end))");

    EXPECT_EQ(lives, 3);
    EXPECT_EQ(outputs[0].getInt(), 21);
    EXPECT_EQ(
        environment().getVar("message", ""),
        "Error l.1 while calling spawn. Expected int, got string.");
}

TEST_F(MismatchMessageTest, ReceiverMayFailTheSameWayOnce)
{
    declareSpawn();
    run("function onLog() local isDone = pcall(spawn, {}) end");
    bool isFirst = true;
    std::vector<FunctionParameter> outputs;
    ReactingLogger logger(
        [&]
        {
            if (std::exchange(isFirst, false))
                call("onLog", {}, outputs);
        });

    run("isDone, message = coroutine.resume(coroutine.create(function() spawn('x') end))");

    EXPECT_THAT(
        logger.takeEntries(),
        ElementsAre(
            LogEntry{"Error l.1 while calling spawn. Expected int, got string.", "LuaFunction"},
            LogEntry{"Error l.-1 while calling spawn. Expected int, got table.", "LuaFunction"}));
    EXPECT_EQ(
        environment().getVar("message", ""),
        "Error l.1 while calling spawn. Expected int, got string.");
}

TEST_F(MismatchMessageTest, ReceiverMayResetTheFunctionThatFails)
{
    declareSpawn();
    const ReactingLogger logger([this] { environment().getFunc("spawn")->reset(); });

    run("isDone, message = pcall(function() local x = spawn('x') end)");

    EXPECT_EQ(
        environment().getVar("message", ""),
        "Error l.1 while calling spawn. Expected int, got string.");
}

} // namespace tbScripts::test

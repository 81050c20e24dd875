#include "support/ReactingLogger.h"
#include "support/RowName.h"
#include "support/Steps.h"

#include <tuple>
#include <utility>

namespace tbScripts::test
{

namespace
{

struct Mismatch
{
    const char* name;
    FUNCTION_PARAMETER_TYPE type;
    const char* expected;
};

struct WrongValue
{
    const char* name;
    const char* expression;
    const char* typeName;
};

class MismatchMessageTest : public EnvironmentFixture
{
public:
    /// Declares `spawn` with a parameter of `type`; its callable must not be called.
    void declareSpawn(FUNCTION_PARAMETER_TYPE type = PARAM_TYPE_INT)
    {
        Function* const function = environment().setFunc("spawn");
        function->addParameter(type, "Enemy");
        function->setFunction(uncallable());
    }

    /// Expects `message` as global `message` of the script, and logged once.
    void expectMessage(const std::string& message)
    {
        is("message", message);
        expectLogged(message, "LuaFunction");
    }
};

using MismatchMessageTypesTest = OnValues<MismatchMessageTest, std::tuple<Mismatch, WrongValue>>;

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

TEST_F(MismatchMessageTest, NamesTheFirstOfSeveralWrongArguments)
{
    Function* const function = declare("spawn", {PARAM_TYPE_INT, PARAM_TYPE_STRING}, nullptr);
    function->addParameter(PARAM_TYPE_USER_TYPE, "Enemy");
    run("isDone, message = pcall(function() local x = spawn(1, {}, 7) end)");
    expectMessage("Error l.1 while calling spawn. Expected string, got table.");
}

TEST_F(MismatchMessageTest, KeepsAllBytesOfTheFunctionNameInTheLog)
{
    environment().setFunc(tbMemory::StringView("spawn\0er", 8))->addParameter(PARAM_TYPE_INT);
    raises("local x = spawn({})", "Error l.1 while calling spawn");
    expectLogged(
        std::string("Error l.1 while calling spawn\0er. Expected int, got table.", 58),
        "LuaFunction");
}

// What every call of `spawn` with a string says, by the line that it names.
std::string gotString(int line)
{
    return "Error l." + std::to_string(line) + " while calling spawn. Expected int, got string.";
}

auto spawn()
{
    return [](MismatchMessageTest& test) { test.declareSpawn(); };
}

// Declares a `spawn` that takes numbers.
Step numberSpawn()
{
    return function("spawn", {PARAM_TYPE_INT}, returning(1));
}

auto message(const std::string& text)
{
    return [=](MismatchMessageTest& test) { test.expectMessage(text); };
}

// Has the host call the script function `spawn` with a string.
Step callFromHost()
{
    return [](EnvironmentFixture& test)
    {
        Parameters outputs;
        Environment& environment = test.environment();
        EXPECT_FALSE(environment.callScriptFunction(
            environment.getScriptFunction("spawn"), {FunctionParameter("x")}, outputs));
    };
}

// Declares the host function `nest`, which does `step`.
Step nesting(const Step& step)
{
    return [=](EnvironmentFixture& test)
    { test.declareAction("nest", [&test, step] { step(test); }); };
}

Step runNested(const std::string& sources)
{
    return [=](EnvironmentFixture& test)
    { EXPECT_FALSE(runScript(test.environment(), sources, "nested")); };
}

const Facts<MismatchMessageTest> FACTS(
    "MismatchMessageTest",
    {
        {"CarriesTheLineOfTheCallAndIsLoggedBeforeTheFailureOfTheScript",
         {spawn(),
          runNested("\n\n\n\n\n\n\n\n\n\n\nspawn('x')"),
          logs(
              {{gotString(12), "LuaFunction"},
               {"Error while executing script 'nested' : Error l.12 while calling spawn. Expected "
                "int, got string.",
                "LuaEnvironment"}})}},
        {"CarriesTheLineInsideACoroutine",
         {spawn(),
          run("local routine = coroutine.create(function()\n"
              "  coroutine.yield()\n"
              "  spawn('x')\n"
              "end)\n"
              "coroutine.resume(routine)\n"
              "isDone, message = coroutine.resume(routine)"),
          message(gotString(3))}},
        {"CarriesTheLineThroughAProtectedCall",
         {spawn(),
          run("isDone, message = pcall(function()\n"
              "  local value = 1\n"
              "  value = spawn('x')\n"
              "end)"),
          message(gotString(3))}},
        {"CarriesTheLineThroughAMessageHandler",
         {spawn(),
          run("isDone, message = xpcall(function()\n"
              "  local value = spawn('x')\n"
              "end, function(text) return 'handled ' .. text end)"),
          is("message", "handled " + gotString(2)),
          logsCount(1)}},
        {"CarriesTheLineInsideACompiledLoop",
         {numberSpawn(),
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
              "isCompiled = require('jit.util').traceinfo(1) ~= nil"),
          is("isCompiled", "true"),
          message(gotString(9))}},
        {"CarriesTheLineInsideACompiledFunctionCalledInALoop",
         {numberSpawn(),
          run("local function once(i)\n"
              "  local argument = i == 5000 and 'x' or i\n"
              "  local result = spawn(argument)\n"
              "  return result\n"
              "end\n"
              "require('jit').flush()\n"
              "isDone, message = pcall(function()\n"
              "  for i = 1, 5000 do once(i) end\n"
              "end)\n"
              "isCompiled = require('jit.util').traceinfo(1) ~= nil"),
          is("isCompiled", "true"),
          message(gotString(3))}},
        {"CarriesTheLineOfTheAccessThatCallsAMetamethod",
         {spawn(),
          run("local object = setmetatable({}, { __index = spawn })\n"
              "isDone, message = pcall(function()\n"
              "  local value = object.health\n"
              "end)"),
          message("Error l.3 while calling spawn. Expected int, got table.")}},
        {"CarriesTheLineOfTheInnermostScript",
         {spawn(),
          nesting(runNested("\n\nspawn('x')")),
          run("nest()"),
          logs(
              {{gotString(3), "LuaFunction"},
               {"Error while executing script 'nested' : Error l.3 while calling spawn. Expected "
                "int, got string.",
                "LuaEnvironment"}})}},
        {"HasNoLineWhereTheCoroutineIsTheHostFunctionItself",
         {spawn(),
          run("isDone, message = pcall(coroutine.wrap(spawn), 'wrong type')"),
          message(gotString(-1))}},
        {"HasNoLineWhereTheHostCalls",
         {spawn(),
          callFromHost(),
          logs({{gotString(-1), "LuaFunction"}, {gotString(-1), "LuaEnvironment"}})}},
        {"HasNoLineWhereTheHostCallsFromAHostFunction",
         {spawn(),
          nesting(callFromHost()),
          run("nest()"),
          logs({{gotString(-1), "LuaFunction"}, {gotString(-1), "LuaEnvironment"}})}},
        {"HasNoLineWhereALibraryFunctionCalls",
         {spawn(),
          run("isDone, message = pcall(string.gsub, 'x', 'x', spawn)"),
          message(gotString(-1))}},
    });

const char* const FAIL_IN_A_COROUTINE =
    "isDone, message = coroutine.resume(coroutine.create(function() spawn('x') end))";

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
    run(FAIL_IN_A_COROUTINE);
    EXPECT_EQ(lives, 3);
    EXPECT_EQ(outputs[0].getInt(), 21);
    is("message", gotString(1));
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
    run(FAIL_IN_A_COROUTINE);
    const std::vector<LogEntry> expected{
        {gotString(1), "LuaFunction"},
        {"Error l.-1 while calling spawn. Expected int, got table.", "LuaFunction"}};
    EXPECT_EQ(logger.takeEntries(), expected);
    is("message", gotString(1));
}

TEST_F(MismatchMessageTest, ReceiverMayResetTheFunctionThatFails)
{
    declareSpawn();
    const ReactingLogger logger([this] { environment().getFunc("spawn")->reset(); });
    raises("local x = spawn('x')", gotString(1));
}

} // namespace

} // namespace tbScripts::test

// Scripts that change the global table itself, and host calls out of coroutines.

#include "support/EnvironmentFixture.h"
#include "support/Execution.h"

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class EnvironmentGlobalTableTest : public EnvironmentFixture
{
protected:
    void declareWork(const std::string& name, std::function<void()> work)
    {
        declare(
            name,
            {},
            [work = std::move(work)](const Parameters&)
            {
                work();
                return FunctionParameter::VOID;
            });
    }
};

TEST_F(EnvironmentGlobalTableTest, ReplacedTableIsRead)
{
    run("v = 1  setfenv(0, {v = 2})");

    EXPECT_EQ(environment().getVar("v", -1), 2);
    EXPECT_FALSE(environment().isVarSet("print"));
}

TEST_F(EnvironmentGlobalTableTest, ReplacedTableIsWritten)
{
    run("replacement = {replacement = true}  setfenv(0, replacement)");

    environment().setVar("v", 2);

    EXPECT_EQ(environment().getVar("v", -1), 2);
    EXPECT_EQ(environment().getVar("replacement", false), true);
}

TEST_F(EnvironmentGlobalTableTest, ReplacedTableIsThatOfLaterScripts)
{
    run("setfenv(0, {v = 2})");

    run("w = v");

    EXPECT_EQ(environment().getVar("w", -1), 2);
}

TEST_F(EnvironmentGlobalTableTest, ReplacedTableLacksWhatTheScriptLeftOut)
{
    run("setfenv(0, {})");

    const std::string message = runExpectingError("print('x')");

    EXPECT_EQ(
        message,
        "Error while executing script 'test' : [string \"print('x')\"]:1: attempt to call global "
        "'print' (a nil value)");
}

TEST_F(EnvironmentGlobalTableTest, ReplacedTableTakesFunctions)
{
    run("setfenv(0, {})");

    declareWork("f", [] {});

    EXPECT_TRUE(environment().isVarSet("f"));
    run("f()");
}

// What the interpreter's own end finalises cannot report any more: this goes before.
TEST_F(EnvironmentGlobalTableTest, ReplacedTableIsClearedAtTheEnd)
{
    run("local error, kept = error, newproxy(true) "
        "getmetatable(kept).__gc = function() error('gone', 0) end "
        "setfenv(0, {kept = kept})");

    destroyEnvironment();

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{"gone", "LuaEnvironment"}));
}

TEST_F(EnvironmentGlobalTableTest, InheritingGlobalsAreRead)
{
    run("setmetatable(_G, {__index = function(_, name) return name .. '!' end})");

    EXPECT_EQ(environment().getVar("v", "else"), "v!");
}

TEST_F(EnvironmentGlobalTableTest, ForwardingGlobalsAreWritten)
{
    run("log = {}  setmetatable(_G, {__newindex = function(_, name, v) log[name] = v end})");

    environment().setVar("v", 1);

    run("assert(rawget(_G, 'v') == nil and log.v == 1)");
}

TEST_F(EnvironmentGlobalTableTest, StrictGlobalsEndSilently)
{
    declareWork("f", [] {});
    run("setmetatable(_G, {__index = error, __newindex = error})");

    destroyEnvironment();

    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

// Host functions that are called in a coroutine.
TEST_F(EnvironmentGlobalTableTest, GlobalIsReadOutOfACoroutine)
{
    int seen = 0;
    declareWork("look", [&] { seen = environment().getVar("v", -1); });

    run("v = 42  coroutine.wrap(function() look() end)()");

    EXPECT_EQ(seen, 42);
}

TEST_F(EnvironmentGlobalTableTest, GlobalIsSetOutOfACoroutine)
{
    declareWork("put", [&] { environment().setVar("v", 42); });

    run("coroutine.wrap(function() put()  assert(v == 42) end)()");

    EXPECT_EQ(environment().getVar("v", -1), 42);
}

TEST_F(EnvironmentGlobalTableTest, ScriptRunsOutOfACoroutine)
{
    declareWork("runInner", [&] { runScript(environment(), "v = 42  return 1, 2, 3"); });

    run("coroutine.wrap(function() local a, b = 'a', 'b'  runInner()  w = a .. b end)()");

    EXPECT_EQ(environment().getVar("v", -1), 42);
    EXPECT_EQ(environment().getVar("w", ""), "ab");
}

TEST_F(EnvironmentGlobalTableTest, ScriptFunctionIsCalledOutOfACoroutine)
{
    std::vector<FunctionParameter> outputs{FunctionParameter(0)};
    declareWork("callInner", [&] { call("inner", {FunctionParameter(41)}, outputs); });

    run("function inner(value) return value + 1 end "
        "coroutine.wrap(function() callInner() end)()");

    EXPECT_EQ(outputs[0].getInt(), 42);
}

TEST_F(EnvironmentGlobalTableTest, ReferenceMadeInACoroutineOutlivesIt)
{
    ScriptObjectReference reference;
    declareWork("take", [&] { reference = environment().getVar("v"); });
    run("v = {answer = 42}  coroutine.wrap(function() take() end)()  v = nil");
    environment().requestGarbageCollection();

    environment().setVar("w", reference);

    run("assert(w.answer == 42)");
}

// A coroutine may have globals of its own; those of the host are the main ones.
TEST_F(EnvironmentGlobalTableTest, MainGlobalsAreReadOutOfACoroutineWithItsOwn)
{
    int seen = 0;
    declareWork("look", [&] { seen = environment().getVar("v", -1); });

    run("v = 42  local look, setfenv = look, setfenv "
        "coroutine.wrap(function() setfenv(0, {v = 43})  look() end)()");

    EXPECT_EQ(seen, 42);
}

TEST_F(EnvironmentGlobalTableTest, MainGlobalsAreWrittenOutOfACoroutineWithItsOwn)
{
    declareWork("put", [&] { environment().setVar("v", 42); });

    run("local put, setfenv = put, setfenv "
        "coroutine.wrap(function() setfenv(0, {})  put() end)()");

    EXPECT_EQ(environment().getVar("v", -1), 42);
}

TEST_F(EnvironmentGlobalTableTest, ScriptsSeeMainGlobalsOutOfACoroutineWithItsOwn)
{
    declareWork("runInner", [&] { runScript(environment(), "w = v"); });

    run("v = 42  local runInner, setfenv = runInner, setfenv "
        "coroutine.wrap(function() setfenv(0, {v = 43})  runInner() end)()");

    EXPECT_EQ(environment().getVar("w", -1), 42);
}

} // namespace tbScripts::test

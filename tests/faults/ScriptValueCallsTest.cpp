// Writing and reading values from wherever a host may call, while finalisers run and raise, and
// where there is no more room on the interpreter's stack.

#include "support/CallContextFixture.h"
#include "support/RowName.h"
#include "support/ScriptValueFixture.h"

#include <memory>
#include <string>

namespace tbScripts::test
{

namespace
{

// Makes dead objects whose finaliser runs `code`, in the next call that allocates.
std::string armed(int count, const std::string& code)
{
    return "collectgarbage() collectgarbage() collectgarbage('stop')"
           " for i = 1, " +
           std::to_string(count) +
           " do local dead = newproxy(true) getmetatable(dead).__gc = function() " + code +
           " end end collectgarbage('setstepmul', 0) collectgarbage('restart')";
}

constexpr const char* NESTED = "{first = {1, {2}}, second = 'text', [3] = {x = {y = {z = 0.5}}}}";

} // namespace

class ScriptValueContextTest : public CallContextFixture,
                               public ::testing::WithParamInterface<CALL_CONTEXT>
{
protected:
    ScriptValueContextTest() { run(std::string("value = ") + NESTED); }
};

VALUES(ScriptValueContextTest, ::testing::ValuesIn(allCallContexts()));

TEST_P(ScriptValueContextTest, TablesAndFunctionsAreWrittenAndRead)
{
    run("known = 'known'  function f() return known end");

    performIn(
        GetParam(),
        [this]
        {
            Environment& world = environment();
            const auto copied = [&world](const ScriptObjectReference& value)
            { return world.deserializeScriptObject(world.serializeScriptObject(value, false)); };
            world.setVar("copy", copied(world.getVar("value")));
            world.setVar("g", copied(world.getScriptFunction("f")));
        });

    run("assert(copy.first[2][1] == 2 and copy.second == 'text' and copy[3].x.y.z == 0.5)");
    run("assert(g ~= f and g() == 'known')");
}

TEST_P(ScriptValueContextTest, CycleIsNotWritten)
{
    run("value = {} value.value = {value}");
    tbMemory::Buffer bytes("x", 1);

    performIn(
        GetParam(),
        [&] { bytes = environment().serializeScriptObject(environment().getVar("value"), false); });

    EXPECT_TRUE(bytes.empty());
}

using ScriptValueCallsTest = ScriptValueFixture;

TEST_F(ScriptValueCallsTest, RaisingFinaliserGivesNoBytesIsLoggedAndLeavesTheOwnersAsTheyWere)
{
    ScriptObjectReference value = refer("{Vec.new(), {Vec.new()}}");
    run(armed(1, "error('finaliser failed', 0)"));

    EXPECT_THAT(write(value, true), IsEmpty());

    expectLogged("finaliser failed", "LuaEnvironment");
    value = ScriptObjectReference();
    run("written = nil");
    collect();
    EXPECT_EQ(m_destroyed.size(), 2U);
}

TEST_F(ScriptValueCallsTest, ReadingThatAFinaliserEndsGivesAnEmptyReferenceAndTransfersNothing)
{
    const Bytes bytes = write("{Vec.new(), {Vec.new()}}", true);
    run("written = nil");
    run(armed(1, "error('finaliser failed', 0)"));

    const ScriptObjectReference value = environment().deserializeScriptObject(bytes);

    EXPECT_EQ(value.getInterpreterReference(), nullptr);
    expectLogged("finaliser failed", "LuaEnvironment");
    collect();
    EXPECT_THAT(m_destroyed, IsEmpty());
}

TEST_F(ScriptValueCallsTest, FinalisersMayWriteAndReadMeanwhile)
{
    int actions = 0;
    const ScriptObjectReference inner = refer(NESTED);
    declareAction(
        "act",
        [&]
        {
            const Bytes bytes = write(inner);
            const ScriptObjectReference value = environment().deserializeScriptObject(bytes);
            actions += write(value).size() == bytes.size() ? 1 : 0;
        });
    const Bytes bytes =
        write("(function() local t = {} for i = 1, 1000 do t[i] = {i, {i}} end return t end)()");
    run("written = nil " + armed(100, "act()"));

    const ScriptObjectReference value = environment().deserializeScriptObject(bytes);

    EXPECT_EQ(actions, 100);
    EXPECT_EQ(write(value), bytes);
}

TEST_F(ScriptValueCallsTest, FinalisersMayEmptyWhatIsWritten)
{
    const ScriptObjectReference value =
        refer("(function() local t = {} for i = 1, 1000 do t['k' .. i] = {i} end return t end)()");
    run("local t = written  written = nil " +
        armed(100, "for k in pairs(t) do t[k] = nil end collectgarbage()"));

    const Bytes bytes = write(value);

    EXPECT_EQ(bytes, (Bytes{'{', 0, 0, 0, '}', 0, 0, 0}));
}

TEST_F(ScriptValueCallsTest, FunctionThatACoroutineReadsHasTheEnvironmentsGlobals)
{
    run("known = 'known'");
    const Bytes bytes = write("function() return known end");
    declareAction("act", [&] { read(bytes); });

    run("local act = act coroutine.wrap(function() setfenv(0, {known = 'other'}) act() end)()");

    EXPECT_EQ(evaluate("read()"), "known");
}

// The number of arguments of a host function, around what the interpreter gives to one.
using FullStackTest = OnValues<ScriptValueFixture, int>;

INSTANTIATE_TEST_SUITE_P(
    Arguments,
    FullStackTest,
    ::testing::Values(7700, 7826, 7827, 7828, 7900, 7980, 7999, 8000, 10000, 20000));

TEST_P(FullStackTest, LeavesRoomForAnyValue)
{
    const ScriptObjectReference value =
        refer("(function() local v = {'deepest'} for i = 1, 500 do v = {i, v, {i}} end"
              " return v end)()");
    const Bytes expected = write(value);
    Bytes bytes;
    declareAction(
        "act", [&] { bytes = write(environment().deserializeScriptObject(write(value))); });

    run("function spread(...) act(...) end");
    const std::vector<FunctionParameter> arguments(
        static_cast<std::size_t>(GetParam()), FunctionParameter(1));
    std::vector<FunctionParameter> none;
    call("spread", arguments, none);

    EXPECT_EQ(bytes, expected);
}

TEST_F(ScriptValueCallsTest, CallsThatNestTooDeepGiveNothing)
{
    const ScriptObjectReference value = refer("{1}");
    const ScriptObjectReference again = refer("function() act() end");
    Bytes bytes{1};
    bool isRead = true;
    int depth = 0;
    declareAction(
        "act",
        [&]
        {
            Parameters none;
            if (++depth < 200)
            {
                environment().callScriptFunction(again, {}, none);
                return;
            }
            bytes = write(value);
            isRead = environment().deserializeScriptObject(Bytes{'b', 1, 0, 0}).getType() != 0;
        });

    run("act()");

    EXPECT_THAT(bytes, IsEmpty());
    EXPECT_FALSE(isRead);
    const LogEntry refusal{"C stack overflow", "LuaEnvironment"};
    expectLogged({refusal, refusal});
}

TEST_F(ScriptValueCallsTest, NothingIsWrittenOrReadWhileTheEnvironmentEnds)
{
    const Bytes record = write("{1}");
    const ScriptObjectReference value = refer("{1}");
    Environment& ending = environment();
    std::vector<std::size_t> sizes;
    std::vector<unsigned> types;
    vec().setDestructor(
        [&](void*)
        {
            sizes.push_back(ending.serializeScriptObject(value, false).size());
            types.push_back(ending.deserializeScriptObject(record).getType());
        });
    run("kept = Vec.new()");

    destroyEnvironment();

    EXPECT_THAT(sizes, ElementsAre(0U));
    EXPECT_THAT(types, ElementsAre(0U));
}

} // namespace tbScripts::test

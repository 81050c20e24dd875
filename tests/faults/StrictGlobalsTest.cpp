// A script may give the global table metamethods that raise. Every access of the host then fails;
// none of them may end the host, wherever it is called from.

#include "support/CallContextFixture.h"
#include "support/GlobalOperations.h"
#include "support/RowName.h"

#include <string>
#include <tuple>

namespace tbScripts::test
{

namespace
{

constexpr const char* MAKE_GLOBALS_STRICT =
    "setmetatable(_G, {"
    "__index = function(_, name) error('no global ' .. name, 0) end,"
    "__newindex = function(_, name) error('no new global ' .. name, 0) end})";

using Row = std::tuple<GlobalOperation, CALL_CONTEXT>;

std::string rowName(const ::testing::TestParamInfo<Row>& row)
{
    return ::testing::PrintToString(std::get<0>(row.param)) + "In" +
           ::testing::PrintToString(std::get<1>(row.param));
}

} // namespace

class StrictGlobalsTest : public OnValues<CallContextFixture, Row>
{
protected:
    const GlobalOperation& operation() const { return std::get<0>(GetParam()); }

    CALL_CONTEXT context() const { return std::get<1>(GetParam()); }
};

INSTANTIATE_TEST_SUITE_P(
    Accesses,
    StrictGlobalsTest,
    ::testing::Combine(
        ::testing::ValuesIn(allGlobalOperations()), ::testing::ValuesIn(allCallContexts())),
    rowName);

TEST_P(StrictGlobalsTest, AccessIsAnsweredNeutrallyAndLoggedAndTheNextIsOneLikeAnyOther)
{
    const std::string message = operation().isWriting ? "no new global score" : "no global score";
    run("known = 42");
    run(MAKE_GLOBALS_STRICT);

    std::string answer;
    performIn(context(), [&] { answer = operation().perform(environment(), "score"); });
    EXPECT_EQ(answer, operation().neutralAnswer);
    expectLogged(message, "LuaEnvironment");
    int known = 0;
    performIn(context(), [&] { known = environment().getVar("known", 0); });

    EXPECT_EQ(known, 42);
}

using StrictGlobalsContextTest = OnValues<CallContextFixture, CALL_CONTEXT>;

VALUES(StrictGlobalsContextTest, ::testing::ValuesIn(allCallContexts()));

TEST_P(StrictGlobalsContextTest, EndOfAnEnvironmentLogsWhatItsFunctionsCannotRemove)
{
    declare("shown", {}, [](const Parameters&) { return FunctionParameter::VOID; });
    // A name that is still there could be removed without a question.
    run("rawset(_G, 'shown', nil)");
    run(MAKE_GLOBALS_STRICT);

    performIn(GetParam(), [this] { destroyEnvironment(); });

    expectLogged("no new global shown", "LuaEnvironment");
}

TEST_P(StrictGlobalsContextTest, FunctionThatCannotBeDeclaredCountsAsDeclared)
{
    run(MAKE_GLOBALS_STRICT);

    performIn(GetParam(), [this] { environment().setFunc("late"); });

    EXPECT_TRUE(environment().isFuncSet("late"));
    EXPECT_EQ(environment().getFunc("late"), nullptr);
    expectLogged("no new global late", "LuaEnvironment");
}

TEST_P(StrictGlobalsContextTest, ExecutionAndScriptFunctionCallFailWithTheTextThatWasRaised)
{
    run("function readScore() return score end");
    const ScriptObjectReference readScore = environment().getScriptFunction("readScore");
    run(MAKE_GLOBALS_STRICT);

    bool hasSucceeded = true;
    performIn(
        GetParam(), [&] { hasSucceeded = runScript(environment(), "return score", "round"); });
    EXPECT_FALSE(hasSucceeded);
    expectLogged("Error while executing script 'round' : no global score", "LuaEnvironment");
    hasSucceeded = true;
    Parameters outputs;
    performIn(
        GetParam(),
        [&] { hasSucceeded = environment().callScriptFunction(readScore, {}, outputs); });

    EXPECT_FALSE(hasSucceeded);
    expectLogged("no global score", "LuaEnvironment");
}

// Metamethods of the global table that work are part of the script's world: the host goes through
// them as scripts do.
class ProxyGlobalsTest : public EnvironmentFixture
{
protected:
    // Reads come from `store` and writes go there.
    void makeGlobalsAProxy()
    {
        run("store = {}"
            "setmetatable(_G, {__index = store,"
            "__newindex = function(_, name, value) store[name] = value end})");
    }
};

TEST_F(ProxyGlobalsTest, SetVarGoesThroughNewindexAndReachesARawGlobalDirectly)
{
    makeGlobalsAProxy();
    run("rawset(_G, 'raw', 1)");

    environment().setVar("score", 12);
    environment().setVar("raw", 13);

    run("assert(store.score == 12 and rawget(_G, 'score') == nil)");
    run("assert(rawget(_G, 'raw') == 13 and store.raw == nil)");
}

TEST_F(ProxyGlobalsTest, GetVarAndIsVarSetAskIndex)
{
    makeGlobalsAProxy();
    run("store.score, store.flag = 12, false");

    EXPECT_EQ(environment().getVar("score", -1), 12);
    EXPECT_TRUE(environment().isVarSet("flag"));
    EXPECT_FALSE(environment().isVarSet("other"));
}

TEST_F(ProxyGlobalsTest, GetVarSeesWhatAnIndexFunctionComputes)
{
    run("setmetatable(_G, {__index = function(_, name) return name .. '!' end})");

    EXPECT_EQ(environment().getVar("greeting", "none"), tbMemory::StringView("greeting!"));
}

TEST_F(ProxyGlobalsTest, ReferenceToAValueBehindIndexWorks)
{
    makeGlobalsAProxy();
    run("store.list = {7}");

    const ScriptObjectReference list = environment().getVar("list");
    environment().setVar("again", list);

    EXPECT_EQ(list.getType(), PARAM_TYPE_SCRIPT_OBJECT);
    run("assert(again == store.list)");
}

TEST_F(ProxyGlobalsTest, ScriptFunctionBehindIndexIsCallable)
{
    makeGlobalsAProxy();
    run("function double(n) return n * 2 end assert(rawget(_G, 'double') == nil)");
    std::vector<FunctionParameter> outputs{FunctionParameter(0)};

    call("double", {FunctionParameter(21)}, outputs);

    EXPECT_EQ(outputs[0].getInt(), 42);
}

TEST_F(ProxyGlobalsTest, HostObjectIsSetAndReadThroughBothMetamethods)
{
    int object = 0;
    makeGlobalsAProxy();

    environment().setObject("thing", "Type", &object);

    EXPECT_EQ(environment().getObject("thing", tbMemory::StringView()), &object);
    run("assert(store.thing ~= nil)");
}

TEST_F(ProxyGlobalsTest, HostFunctionIsPublishedThroughNewindex)
{
    makeGlobalsAProxy();

    declare("answer", {}, [](const Parameters&) { return FunctionParameter(42); });

    run("assert(store.answer() == 42 and rawget(_G, 'answer') == nil)");
}

TEST_F(ProxyGlobalsTest, EndOfAFunctionIsToldToNewindex)
{
    int told = 0;
    declare(
        "tell",
        {PARAM_TYPE_STRING, PARAM_TYPE_BOOL},
        [&told](const Parameters& parameters)
        {
            const bool isRemoved =
                parameters[0].getString() == "answer" && !parameters[1].getBool();
            told += isRemoved ? 1 : 0;
            return FunctionParameter::VOID;
        });
    // The later one goes last, so `tell` is dead by then, and its name must not be needed.
    run("local tell = tell rawset(_G, 'tell', nil)"
        "setmetatable(_G, {__newindex = function(_, name, value)"
        "  if name == 'tell' then tell('answer', nil) else rawset(_G, name, value) end end})");

    destroyEnvironment();

    // The function is gone for scripts before its name is.
    EXPECT_EQ(told, 0);
    expectLogged("Function 'tell' does not exist anymore.", "LuaEnvironment");
}

TEST_F(ProxyGlobalsTest, MetamethodThatCallsTheHostSeesItsOwnEnvironment)
{
    declare(
        "lookUp",
        {PARAM_TYPE_STRING},
        [this](const Parameters& parameters)
        {
            const std::string hidden = "hidden_" + std::string(parameters[0].getString().data());
            return FunctionParameter(environment().getVar(hidden, 0));
        });
    run("hidden_score = 9 setmetatable(_G, {__index = function(_, name)"
        " if name == 'score' then return lookUp(name) end end})");

    EXPECT_EQ(environment().getVar("score", -1), 9);
}

using ProxyGlobalsContextTest = OnValues<CallContextFixture, CALL_CONTEXT>;

VALUES(ProxyGlobalsContextTest, ::testing::ValuesIn(allCallContexts()));

TEST_P(ProxyGlobalsContextTest, WhatWasSetIsRead)
{
    run("local store = {} setmetatable(_G, {__index = store,"
        "__newindex = function(_, name, value) store[name] = value end})");

    double score = 0;
    performIn(
        GetParam(),
        [&]
        {
            environment().setVar("score", 2.5);
            score = environment().getVar("score", -1.0);
        });

    EXPECT_EQ(score, 2.5);
}

TEST_P(ProxyGlobalsContextTest, MetamethodMayRaiseAndCatchInsideItself)
{
    run("setmetatable(_G, {__index = function(_, name)"
        " local _, text = pcall(error, 'inner', 0) return text end})");

    std::string text;
    performIn(
        GetParam(),
        [&] { text = std::string(std::string_view(environment().getVar("score", "none"))); });

    EXPECT_EQ(text, "inner");
}

} // namespace tbScripts::test

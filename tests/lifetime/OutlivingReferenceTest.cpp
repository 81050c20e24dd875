// References that outlive what they refer to: used in every way afterwards they are empty.

#include "support/EnvironmentFixture.h"
#include "support/RowName.h"

#include <tbScripts/ScriptObjectInterpreterReference.h>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace tbScripts::test
{

namespace
{

/// How a value's interpreter ends.
struct EndRow
{
    const char* row;
    void (*end)(std::unique_ptr<Environment>& environment);
};

std::vector<EndRow> allEnds()
{
    return {
        {"Destroyed", [](std::unique_ptr<Environment>& environment) { environment.reset(); }},
        {"SwitchedToLua",
         [](std::unique_ptr<Environment>& environment)
         { environment->setEnvironmentFor(INTERPRETER_LUA); }},
        {"SwitchedToNone",
         [](std::unique_ptr<Environment>& environment)
         { environment->setEnvironmentFor(INTERPRETER_UNKNOWN); }},
        {"AssignedOver",
         [](std::unique_ptr<Environment>& environment) { *environment = Environment(); }}};
}

LogEntry callOfNil()
{
    return LogEntry{"attempt to call a nil value", "LuaEnvironment"};
}

} // namespace

// The fixture's environment is the one that goes on; `m_ending` is the one that ends.
class OutlivingReferenceTest : public OnRows<EnvironmentFixture, EndRow>
{
protected:
    OutlivingReferenceTest()
        : m_ending(std::make_unique<Environment>())
    {
        m_ending->setEnvironmentFor(INTERPRETER_LUA);
        runScript(*m_ending, "list = {1} text = 'text' function give() return 1 end");
        m_list = m_ending->getVar("list");
        m_text = m_ending->getVar("text");
        m_give = m_ending->getScriptFunction("give");
        run("function isNil(value) return value == nil end");
    }

    void TearDown() override
    {
        m_list = m_text = m_give = ScriptObjectReference();
        expectLogged({});
        m_ending.reset();
        forgetLog(); // without interpreter, its end warns
        EnvironmentFixture::TearDown();
    }

    void endTheirInterpreter()
    {
        GetParam().end(m_ending);
        forgetLog(); // that there is no interpreter, where there is none
    }

    bool isNilAsInput(const ScriptObjectReference& reference)
    {
        std::vector<FunctionParameter> outputs{FunctionParameter(false)};
        call("isNil", {FunctionParameter(reference)}, outputs);
        return outputs[0].getBool();
    }

    std::unique_ptr<Environment> m_ending;
    ScriptObjectReference m_list;
    ScriptObjectReference m_text;
    ScriptObjectReference m_give;
};

ROWS(OutlivingReferenceTest, allEnds());

TEST_P(OutlivingReferenceTest, IsDestroyedWithoutEffect)
{
    auto reference = std::make_unique<ScriptObjectReference>(m_list);
    endTheirInterpreter();
    reference.reset();
    m_list = ScriptObjectReference();
    EXPECT_EQ(m_list.getType(), PARAM_TYPE_VOID);
}

TEST_P(OutlivingReferenceTest, IsNilAsAnInput)
{
    endTheirInterpreter();
    EXPECT_TRUE(isNilAsInput(m_list));
    EXPECT_TRUE(isNilAsInput(m_text));
    EXPECT_TRUE(isNilAsInput(m_give));
}

TEST_P(OutlivingReferenceTest, StoresNilAsAGlobal)
{
    environment().setVar("kept", 1);
    endTheirInterpreter();
    environment().setVar("kept", m_list);
    EXPECT_FALSE(environment().isVarSet("kept"));
}

TEST_P(OutlivingReferenceTest, CallingItFailsAsCallingNilDoes)
{
    endTheirInterpreter();
    Parameters outputs;
    EXPECT_FALSE(environment().callScriptFunction(m_give, {}, outputs));
    EXPECT_EQ(environment().getLastExecutionResult().code, 5);
    expectLogged({callOfNil()});
}

TEST_P(OutlivingReferenceTest, IsNilAsTheResultOfAHostFunction)
{
    declare("give", {}, [this](const Parameters&) { return FunctionParameter(m_list); });
    endTheirInterpreter();
    run("assert(select('#', give()) == 1 and give() == nil)");
}

TEST_P(OutlivingReferenceTest, CanBeCopiedMovedAndAssigned)
{
    endTheirInterpreter();

    ScriptObjectReference copy(m_list);
    const ScriptObjectReference moved(std::move(copy));
    copy = m_give;
    copy = environment().getScriptFunction("isNil");

    EXPECT_TRUE(isNilAsInput(moved));
    EXPECT_FALSE(isNilAsInput(copy));
}

TEST_P(OutlivingReferenceTest, NeverReadsTheValueThatTookItsSlot)
{
    endTheirInterpreter();
    Environment next;
    next.setEnvironmentFor(INTERPRETER_LUA);
    runScript(next, "other = {} function isNil(value) return value == nil end");
    std::vector<ScriptObjectReference> others(100);
    for (ScriptObjectReference& other : others)
        other = next.getVar("other");

    next.setVar("stale", m_list);

    EXPECT_FALSE(next.isVarSet("stale"));
}

TEST_P(OutlivingReferenceTest, CallbacksThatTheHostKeepsAreReportedDead)
{
    std::vector<ScriptObjectReference> listeners(3, m_give);
    endTheirInterpreter();
    Parameters outputs;
    for (const ScriptObjectReference& listener : listeners)
        environment().callScriptFunction(listener, {}, outputs);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(callOfNil(), callOfNil(), callOfNil()));
}

using ForeignReferenceTest = EnvironmentFixture;

TEST_F(ForeignReferenceTest, ReferenceOfALivingEnvironmentDesignatesNothingInAnother)
{
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);
    runScript(other, "function give() end");
    const ScriptObjectReference give = other.getScriptFunction("give");
    Parameters outputs;

    EXPECT_FALSE(environment().callScriptFunction(give, {}, outputs));
    EXPECT_TRUE(other.callScriptFunction(give, {}, outputs));

    expectLogged({callOfNil()});
}

TEST_F(ForeignReferenceTest, InterpreterSideThatIsNotOursDesignatesNothing)
{
    class OfAnotherKind : public ScriptObjectInterpreterReference
    {
    public:
        OfAnotherKind()
            : ScriptObjectInterpreterReference(PARAM_TYPE_SCRIPT_FUNCTION)
        {
        }
    };

    const ScriptObjectReference foreign(new OfAnotherKind);
    Parameters outputs;

    environment().setVar("kept", foreign);

    EXPECT_FALSE(environment().isVarSet("kept"));
    EXPECT_FALSE(environment().callScriptFunction(foreign, {}, outputs));
    expectLogged({callOfNil()});
}

TEST_F(ForeignReferenceTest, OldCopyNeverReadsTheValueThatTookItsSlot)
{
    run("first, second = {}, {} function isFirst(value) return value == first end");
    ScriptObjectReference first = environment().getVar("first");
    const FunctionParameter kept(first);
    first = environment().getVar("second");
    std::vector<FunctionParameter> outputs{FunctionParameter(false)};

    call("isFirst", {kept}, outputs);

    EXPECT_TRUE(outputs[0].getBool());
}

// References that were born in a coroutine must not need it.
class CoroutineReferenceTest : public EnvironmentFixture
{
protected:
    CoroutineReferenceTest()
    {
        declare(
            "give",
            {PARAM_TYPE_SCRIPT_FUNCTION, PARAM_TYPE_SCRIPT_OBJECT},
            doing(
                [this](const Parameters& parameters)
                {
                    m_function = parameters[0].getScriptObject();
                    m_table = parameters[1].getScriptObject();
                    m_global = environment().getVar("shared");
                }));
        run("shared = {7} coroutine.wrap(function()"
            "  local t = {5} give(function() return t[1] end, t) "
            "end)() "
            "collectgarbage() collectgarbage()"
            "for i = 1, 20000 do coroutine.wrap(function(n) return n * 2 end)(i) end "
            "collectgarbage()");
    }

    void TearDown() override
    {
        m_function = m_table = m_global = ScriptObjectReference();
        EnvironmentFixture::TearDown();
    }

    ScriptObjectReference m_function;
    ScriptObjectReference m_table;
    ScriptObjectReference m_global;
};

TEST_F(CoroutineReferenceTest, FunctionIsCalledAfterItsCoroutineIsGone)
{
    std::vector<FunctionParameter> outputs{FunctionParameter(0)};
    Parameters outputView(outputs);
    EXPECT_TRUE(environment().callScriptFunction(m_function, {}, outputView));
    EXPECT_EQ(outputs[0].getInt(), 5);
}

TEST_F(CoroutineReferenceTest, TablesAreReadAfterTheirCoroutineIsGone)
{
    environment().setVar("table", m_table);
    environment().setVar("again", m_global);
    run("assert(table[1] == 5 and again == shared)");
}

TEST_F(CoroutineReferenceTest, ReferencesAreReleasedAfterTheirCoroutineIsGone)
{
    run("released = setmetatable({}, {__mode = 'v'})");
    environment().setVar("held", m_table);
    run("released[1] = held held = nil");
    environment().getFunc("give")->reset();

    m_function = m_table = ScriptObjectReference();
    collect();

    run("assert(released[1] == nil)");
}

TEST_F(CoroutineReferenceTest, EnvironmentMayEndBeforeThem)
{
    destroyEnvironment();
    m_function = m_table = m_global = ScriptObjectReference();
    EXPECT_EQ(m_function.getInterpreterReference(), nullptr);
}

} // namespace tbScripts::test

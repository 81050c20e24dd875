// For n = 0, 1, 2, ... until nothing is refused any more: the interpreter gets no memory from its
// n-th request on, while a value is written or read. The call gives its neutral value, the stack is
// back where it was, no instance changes its owner, and in the end nothing is left over.

#include "support/EnvironmentFixture.h"
#include "support/InterpreterCalls.h"
#include "support/LogFixture.h"
#include "support/RowName.h"

#include <tbScripts/UserType.h>

#include <functional>
#include <memory>
#include <string>

namespace tbScripts::test
{

namespace
{

struct ValueRow
{
    const char* row;
    const char* code; // makes the global `v`
    std::size_t instances;
};

} // namespace

class ScriptValueMemoryTest : public OnRows<LogFixture, ValueRow>
{
protected:
    // Makes an environment with the value and its bytes.
    void prepare()
    {
        m_environment = std::make_unique<Environment>();
        m_environment->setEnvironmentFor(INTERPRETER_LUA);
        m_state = InterpreterCalls::lastOpenedState();
        UserType& type = *m_environment->setUserType("T");
        type.setConstructor([this](const Parameters&) { return &m_object[m_made++ % 1000]; });
        type.setDestructor([this](void*) { ++m_destroyed; });
        m_made = 0;
        m_destroyed = 0;
        runScript(*m_environment, GetParam().code);
        m_value = m_environment->getScriptFunction("v");
        if (!m_value.getInterpreterReference())
            m_value = m_environment->getVar("v");
    }

    // Acts with memory for `allowed` requests. Returns whether one was refused.
    bool actWith(std::size_t allowed, const std::function<void()>& act)
    {
        m_memory.refuseAfter(allowed);
        act();
        m_memory.allowAll();
        EXPECT_EQ(lua_gettop(m_state), 0);
        return m_memory.hasRefused();
    }

    // Prepares and tries with memory for 0, 1, 2 and so on requests, until none is refused.
    void untilNothingIsRefused(const std::function<bool(std::size_t allowed)>& attempt)
    {
        std::size_t refusals = 0;
        for (bool isRefused = true; isRefused; refusals += isRefused ? 1 : 0)
        {
            prepare();
            isRefused = attempt(refusals);
        }
        EXPECT_GT(refusals, 0U);
    }

    // Loading and dumping of functions end without an error that could be logged.
    void expectRefusalOnce()
    {
        EXPECT_THAT(
            m_log.takeEntries(),
            AnyOf(ElementsAre(LogEntry{"not enough memory", "LuaEnvironment"}), IsEmpty()));
    }

    // Lets everything go and returns how many objects were destroyed by then.
    std::size_t end()
    {
        m_value = ScriptObjectReference();
        m_environment.reset();
        EXPECT_EQ(m_memory.countLivingBlocks(), 0U);
        return m_destroyed;
    }

    StateMemory m_memory;
    std::unique_ptr<Environment> m_environment;
    ScriptObjectReference m_value;
    lua_State* m_state = nullptr;
    int m_object[1000] = {};
    std::size_t m_made = 0;
    std::size_t m_destroyed = 0;
};

ROWS(
    ScriptValueMemoryTest,
    {"Table", "v = {1, 2, a = {b = {c = 'text'}}, d = false}", 0},
    {"Texts", "v = {} for i = 1, 40 do v['key' .. i] = 'value ' .. i end", 0},
    {"NewTextsOfALargeTable", // which are made anew when they are read: without their zero
     "v = {('x'):rep(263000)} for i = 1, 40 do v[i + 1] = ('%03d'):format(i) .. '\\0' end",
     0},
    {"DeepTable", "v = {} for i = 1, 200 do v = {v, i} end", 0},
    {"Instance", "v = T.new()", 1},
    {"Instances", "v = {T.new(), {T.new()}, a = {b = T.new()}}", 3},
    {"Function",
     "function v(a) local function f() return a .. 'text' end return {f(), b = {a}} end",
     0});

TEST_P(ScriptValueMemoryTest, WritingGivesNoBytes)
{
    untilNothingIsRefused(
        [this](std::size_t allowed)
        {
            tbMemory::Buffer bytes;

            const bool isRefused = actWith(
                allowed, [&] { bytes = m_environment->serializeScriptObject(m_value, true); });

            EXPECT_EQ(bytes.empty(), isRefused);
            expectRefusalOnce();
            EXPECT_EQ(end(), isRefused ? GetParam().instances : 0U);
            return isRefused;
        });
}

TEST_P(ScriptValueMemoryTest, ReadingGivesAnEmptyReference)
{
    untilNothingIsRefused(
        [this](std::size_t allowed)
        {
            const tbMemory::Buffer bytes = m_environment->serializeScriptObject(m_value, true);
            ScriptObjectReference read;

            const bool isRefused =
                actWith(allowed, [&] { read = m_environment->deserializeScriptObject(bytes); });

            EXPECT_EQ(read.getInterpreterReference() == nullptr, isRefused);
            expectRefusalOnce();
            read = ScriptObjectReference();
            EXPECT_EQ(end(), isRefused ? 0U : GetParam().instances);
            return isRefused;
        });
}

TEST_P(ScriptValueMemoryTest, ValueCanBeWrittenAndReadAfterwards)
{
    prepare();
    actWith(1, [&] { m_environment->serializeScriptObject(m_value, false); });
    m_log.takeEntries();

    const tbMemory::Buffer bytes = m_environment->serializeScriptObject(m_value, false);
    actWith(3, [&] { m_environment->deserializeScriptObject(bytes); });
    m_log.takeEntries();

    const ScriptObjectReference read = m_environment->deserializeScriptObject(bytes);
    EXPECT_EQ(m_environment->serializeScriptObject(read, false).size(), bytes.size());
    end();
}

} // namespace tbScripts::test

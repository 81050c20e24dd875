// Script values whose bytes exceed the limit of the environment.

#include "core/lua/LuaApi.h"
#include "environments/lua/LuaEnvironmentStrategy.h"
#include "support/Execution.h"
#include "support/LogFixture.h"
#include "support/RowName.h"

#include <tbScripts/Function.h>
#include <tbScripts/UserType.h>

#include <cstddef>
#include <memory>
#include <string>

namespace tbScripts::test
{

namespace
{

/// A value, given as an expression.
struct ValueRow
{
    const char* row;
    const char* expression;
};

} // namespace

class SerializationLimitTest : public LogFixture
{
protected:
    SerializationLimitTest()
        : m_strategy(std::make_shared<const tbMemory::String>("world"))
    {
    }

    void run(const std::string& sources)
    {
        CompiledScript script(sources);
        EXPECT_TRUE(m_strategy.execute(script)) << m_strategy.getLastExecutionResult().message;
    }

    // Returns the bytes of the global `v`.
    tbMemory::Buffer write(bool transferOwnership = false)
    {
        // Functions are obtained as functions.
        ScriptObjectReference value = m_strategy.getScriptFunction("v");
        if (!value.getInterpreterReference())
            value = m_strategy.getVarObjectReference("v");
        return m_strategy.serializeScriptObject(value, transferOwnership);
    }

    static LogEntry tooLong(std::size_t limit)
    {
        return {
            "A script value takes more than " + std::to_string(limit) +
                " bytes, the limit of its environment. It is not serialized.",
            "LuaEnvironment"};
    }

    lua::LuaEnvironmentStrategy m_strategy;
};

TEST_F(SerializationLimitTest, IsUsually256MiB)
{
    EXPECT_EQ(m_strategy.getSerializationLimit(), std::size_t{268435456});
}

TEST_F(SerializationLimitTest, TablesThatShareTablesEndAtTheLimit)
{
    run("v = {} for i = 1, 24 do v = {a = v, b = v} end");
    m_strategy.setSerializationLimit(1000000);

    EXPECT_EQ(write().size(), 0U);

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(tooLong(1000000)));
}

TEST_F(SerializationLimitTest, NoLimitAllowsTwoToTheTenthTables)
{
    run("v = {} for i = 1, 10 do v = {a = v, b = v} end");

    EXPECT_EQ(write().size(), std::size_t{1024 * 8 + 1023 * 16}); // 8 for a table, 4 for a key
}

TEST_F(SerializationLimitTest, InstancesKeepTheirOwnersBeyondTheLimit)
{
    int object = 0;
    int destroyed = 0;
    const std::unique_ptr<UserType> type = m_strategy.createUserType("T");
    type->setConstructor([&object](const auto&) { return &object; });
    type->setDestructor([&destroyed](void*) { ++destroyed; });
    run("v = {T.new(), string.rep('x', 100)}");
    m_strategy.setSerializationLimit(100);

    EXPECT_EQ(write(true).size(), 0U);

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(tooLong(100)));
    run("v = nil");
    m_strategy.requestGarbageCollection();
    EXPECT_EQ(destroyed, 1);
}

TEST_F(SerializationLimitTest, ZeroLeavesRoomForNothing)
{
    run("v = true");
    m_strategy.setSerializationLimit(0);

    EXPECT_EQ(write().size(), 0U);

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(tooLong(0)));
}

using SerializationLimitValueTest = OnRows<SerializationLimitTest, ValueRow>;

ROWS(
    SerializationLimitValueTest,
    {"Boolean", "true"},
    {"Number", "1.5"},
    {"ShortString", "'text'"},
    {"LongString", "string.rep('x', 5000)"},
    {"EmptyTable", "{}"},
    {"TableWithKeysOfBothKinds", "{10, 20, a = {true}, b = string.rep('y', 300)}"},
    {"Userdata", "newproxy()"},
    {"ShortFunction", "function() end"},
    {"LongFunction", "loadstring(string.rep('x = \"some text\" ', 500))"});

TEST_P(SerializationLimitValueTest, IsWrittenUpToTheLastByte)
{
    run(std::string("v = ") + GetParam().expression);
    const tbMemory::Buffer bytes = write();
    ASSERT_GT(bytes.size(), 0U);

    m_strategy.setSerializationLimit(bytes.size());
    EXPECT_EQ(write().size(), bytes.size());

    m_strategy.setSerializationLimit(bytes.size() - 1);
    EXPECT_EQ(write().size(), 0U);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(tooLong(bytes.size() - 1)));
}

} // namespace tbScripts::test

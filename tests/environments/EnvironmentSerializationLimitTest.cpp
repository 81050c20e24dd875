// How many bytes of a script value an environment writes.

#include "support/ScriptValueFixture.h"

#include <cstddef>

namespace tbScripts::test
{

namespace
{

constexpr std::size_t USUAL_LIMIT = 268435456;

} // namespace

using EnvironmentSerializationLimitTest = ScriptValueFixture;

TEST_F(EnvironmentSerializationLimitTest, IsUsually256MiB)
{
    EXPECT_EQ(environment().getSerializationLimit(), USUAL_LIMIT);
    EXPECT_EQ(Environment().getSerializationLimit(), USUAL_LIMIT);
    m_log.takeEntries(); // of a teardown without interpreter
}

TEST_F(EnvironmentSerializationLimitTest, ValueIsWrittenUpToTheLimitAndLoggedBeyond)
{
    environment().setSerializationLimit(12);
    EXPECT_THAT(write("1.5"), SizeIs(12));

    environment().setSerializationLimit(11);
    EXPECT_THAT(write("1.5"), SizeIs(0));

    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "A script value takes more than 11 bytes, the limit of its environment. It is not "
            "serialized.",
            "LuaEnvironment"}));
}

TEST_F(EnvironmentSerializationLimitTest, LimitBeforeTheInterpreterHolds)
{
    Environment other;
    other.setSerializationLimit(100);

    other.setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_EQ(other.getSerializationLimit(), 100U);
}

TEST_F(EnvironmentSerializationLimitTest, LimitOutlivesTheInterpreter)
{
    environment().setSerializationLimit(100);

    environment().setEnvironmentFor(INTERPRETER_LUA);
    EXPECT_EQ(environment().getSerializationLimit(), 100U);

    environment().setEnvironmentFor(INTERPRETER_UNKNOWN);
    EXPECT_EQ(environment().getSerializationLimit(), 100U);
    destroyEnvironment();
    m_log.takeEntries(); // that this disables the environment, and of its teardown
}

TEST_F(EnvironmentSerializationLimitTest, CopiesShareTheLimitAsLongAsTheInterpreter)
{
    environment().setSerializationLimit(100);
    Environment copy(environment());
    Environment assigned;
    assigned = copy;
    m_log.takeEntries(); // of the teardown of what `assigned` was, without interpreter
    EXPECT_EQ(copy.getSerializationLimit(), 100U);
    EXPECT_EQ(assigned.getSerializationLimit(), 100U);

    copy.setSerializationLimit(200);
    EXPECT_EQ(environment().getSerializationLimit(), 200U);

    copy.setEnvironmentFor(INTERPRETER_LUA);
    copy.setSerializationLimit(300);
    EXPECT_EQ(environment().getSerializationLimit(), 200U);
}

} // namespace tbScripts::test

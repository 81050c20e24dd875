// An operation that would not reach its global could not fail either.

#include "support/GlobalOperations.h"

#include "support/EnvironmentFixture.h"

namespace tbScripts::test
{

class GlobalOperationsTest : public EnvironmentFixture,
                             public ::testing::WithParamInterface<GlobalOperation>
{
};

INSTANTIATE_TEST_SUITE_P(
    Operations,
    GlobalOperationsTest,
    ::testing::ValuesIn(allGlobalOperations()),
    ::testing::PrintToStringParamName());

TEST_P(GlobalOperationsTest, AsksForItsGlobalOrSetsIt)
{
    run("asked, set = 0, 0 setmetatable(_G, {"
        "__index = function(_, name) if name == 'subject' then asked = asked + 1 end end,"
        "__newindex = function(_, name) if name == 'subject' then set = set + 1 end end})");

    GetParam().perform(environment(), "subject");

    EXPECT_EQ(environment().getVar("asked", -1), GetParam().isWriting ? 0 : 1);
    EXPECT_EQ(environment().getVar("set", -1), GetParam().isWriting ? 1 : 0);
}

TEST_P(GlobalOperationsTest, AnswersNeutrallyWhenItFails)
{
    run("local function fail() error('failed', 0) end "
        "setmetatable(_G, {__index = fail, __newindex = fail})");

    const std::string answer = GetParam().perform(environment(), "subject");

    EXPECT_EQ(answer, GetParam().neutralAnswer);
    EXPECT_THAT(m_log.takeEntries(), ::testing::SizeIs(1));
}

} // namespace tbScripts::test

#include "support/UserTypeFixture.h"

#include <gtest/gtest-spi.h>

namespace tbScripts::test
{

using ::testing::ElementsAre;

class UserTypeFixtureTest : public UserTypeFixture
{
};

TEST_F(UserTypeFixtureTest, RecordsWhatIsMadeAndDestroyed)
{
    run("Vec.new() Vec.new()");

    collect();

    EXPECT_EQ(m_made.size(), 2U);
    EXPECT_THAT(m_destroyed, ::testing::UnorderedElementsAre(&m_made[0], &m_made[1]));
}

TEST_F(UserTypeFixtureTest, RecordsADestructionEachTime)
{
    m_made.emplace_back();
    Function* const give = environment().setFunc("give");
    give->setFunction([this](const Parameters&)
                      { return FunctionParameter(&m_made[0], "Vec", true); });
    run("give() give()");

    collect();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0], &m_made[0]));
}

TEST_F(UserTypeFixtureTest, EvaluatesAsTostringShowsIt)
{
    EXPECT_EQ(evaluate("nil"), "nil");
    EXPECT_EQ(evaluate("1 + 1"), "2");
}

TEST_F(UserTypeFixtureTest, GivesTheMessageOfAnError)
{
    EXPECT_EQ(errorOf("error('no', 0)"), "no");
}

TEST_F(UserTypeFixtureTest, NoticesThatThereIsNoError)
{
    EXPECT_NONFATAL_FAILURE(errorOf("local a = 1"), "isDone");
}

TEST_F(UserTypeFixtureTest, FieldsAndIndicesReachTheHostsObject)
{
    declareField("x", &Vec::x);
    declareArrayAccess();
    setHostObject("object", m_hostObject);

    run("object.x = 3  object[2] = object[1] + 1");

    EXPECT_EQ(m_hostObject.x, 3.0);
    EXPECT_EQ(m_hostObject.y, 4.0);
}

} // namespace tbScripts::test

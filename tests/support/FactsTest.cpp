#include "support/Steps.h"

#include <gtest/gtest-spi.h>

namespace tbScripts::test
{

class FactsTest : public EnvironmentFixture
{
};

TEST_F(FactsTest, RowIsATestOfItsSuite)
{
    const ::testing::TestSuite& suite = *::testing::UnitTest::GetInstance()->current_test_suite();
    std::vector<std::string> names;
    for (int i = 0; i < suite.total_test_count(); ++i)
        names.emplace_back(suite.GetTestInfo(i)->name());
    EXPECT_THAT(names, ::testing::Contains("StepsActInTheirOrder"));
}

TEST_F(FactsTest, StepsCanFail)
{
    EnvironmentFixture& test = *this;
    EXPECT_NONFATAL_FAILURE(tbScripts::test::is("1 + 1", "3")(test), "1 + 1");
    EXPECT_NONFATAL_FAILURE(tbScripts::test::raises("error('a', 0)", "b")(test), "error('a', 0)");
    EXPECT_NONFATAL_FAILURE(tbScripts::test::stops("error('a', 0)", "b")(test), "error('a', 0)");
    EXPECT_NONFATAL_FAILURE(tbScripts::test::logs("message", "Source")(test), "message");
    EXPECT_NONFATAL_FAILURE(tbScripts::test::logsCount(1)(test), "1");
    EXPECT_NONFATAL_FAILURE(tbScripts::test::run("error('a', 0)")(test), "a");
    forgetLog();
}

TEST_F(FactsTest, UncallableOneFailsWhenItIsCalled)
{
    declare("f", {}, uncallable());
    EXPECT_NONFATAL_FAILURE(run("f()"), "called");
}

namespace
{

const Facts<FactsTest> FACTS(
    "FactsTest",
    {
        {"StepsActInTheirOrder", {run("x = 1"), is("x", "1"), run("x = x + 1"), is("x", "2")}},
    });

} // namespace

} // namespace tbScripts::test

#include "support/TeardownFixture.h"

namespace tbScripts::test
{

class TeardownFixtureTest : public TeardownFixture
{
};

TEST_F(TeardownFixtureTest, StartsWithAnEmptyTrace)
{
    EXPECT_EQ(m_trace.text(), "");
}

TEST_F(TeardownFixtureTest, TracesScriptsAndHostInTheirOrder)
{
    run("note(('s'):byte())");
    m_trace.add('h');
    run("note(('t'):byte())");

    EXPECT_EQ(m_trace.text(), "sht");
}

TEST_F(TeardownFixtureTest, TracesTheEndOfAValueAndDoesItsAction)
{
    run("onEnd('v', function() note(('a'):byte()) end)");

    environment().requestGarbageCollection();

    EXPECT_EQ(m_trace.text(), "va");
}

TEST_F(TeardownFixtureTest, TracesTheEndOfACallableOnce)
{
    declareWithEnd("f", [this] { m_trace.add('f'); });
    const std::string before = m_trace.text();

    environment().getFunc("f")->reset();

    EXPECT_EQ(before, "");
    EXPECT_EQ(m_trace.text(), "f");
}

} // namespace tbScripts::test

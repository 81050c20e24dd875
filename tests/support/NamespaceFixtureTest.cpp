#include "support/NamespaceFixture.h"

#include "support/CountedObject.h"
#include "support/Farewell.h"

namespace tbScripts::test
{

class NamespaceFixtureTest : public NamespaceFixture
{
};

TEST_F(NamespaceFixtureTest, ScopeIsWhatScriptsCallA)
{
    scope().setVar("v", 5);

    run("assert(a.v == 5)");
}

TEST_F(NamespaceFixtureTest, CountedTypeCountsItsInstances)
{
    makeCounted(scope().setUserType("T"));
    run("t = a.T.new()");
    EXPECT_EQ(CountedObject::getLiving(), 1);

    run("t = nil collectgarbage()");

    EXPECT_EQ(CountedObject::getLiving(), 0);
    EXPECT_EQ(CountedObject::getMade(), 1);
}

TEST_F(NamespaceFixtureTest, BoundFunctionGivesItsAnswer)
{
    bindAnswer(scope().setFunction("f"), 42);

    run("assert(a.f() == 42)");
}

TEST_F(NamespaceFixtureTest, HeldFarewellComesWhenTheFunctionIsReset)
{
    bool isGone = false;
    Function* const function = scope().setFunction("f");
    bindHolding(function, makeFarewell([&isGone] { isGone = true; }));
    ASSERT_FALSE(isGone);

    function->reset();

    EXPECT_TRUE(isGone);
}

TEST_F(NamespaceFixtureTest, DeclaredActionIsDone)
{
    int done = 0;
    declareAction("act", [&done] { ++done; });

    run("act()");

    EXPECT_EQ(done, 1);
}

} // namespace tbScripts::test

// A user type and a namespace of one name share one table. Clearing the namespace takes the type's
// entries, but objects that scripts own are destroyed all the same, each once.

#include "support/UserTypeFixture.h"

#include <tbScripts/Namespace.h>

namespace tbScripts::test
{

class SharedTableClearTest : public UserTypeFixture
{
protected:
    SharedTableClearTest()
        : m_scope(environment().setNamespace("Vec"))
    {
        run("v = Vec.new()");
    }

    void dropAndCollect()
    {
        run("v = nil");
        collect();
    }

    Namespace* m_scope;
};

TEST_F(SharedTableClearTest, InstanceThatAScriptOwnsIsDestroyedWhenItIsCollected)
{
    m_scope->clear();
    EXPECT_THAT(m_destroyed, IsEmpty());

    dropAndCollect();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(SharedTableClearTest, InstanceThatIsGarbageIsDestroyedByTheClearing)
{
    run("v = nil");

    m_scope->clear();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(SharedTableClearTest, InstanceIsDestroyedAfterARelease)
{
    m_scope->release();
    dropAndCollect();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(SharedTableClearTest, InstanceIsDestroyedAtTheLatestWithItsEnvironment)
{
    m_scope->clear();

    destroyEnvironment();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(SharedTableClearTest, InstanceIsDestroyedAtTheLatestWithItsEnvironmentIfNothingWasCleared)
{
    run("package.loaded.keeper = v");

    destroyEnvironment();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(SharedTableClearTest, InstanceThatAScriptDisownedIsNotDestroyed)
{
    run("v:disableGc()");

    m_scope->clear();
    dropAndCollect();

    EXPECT_THAT(m_destroyed, IsEmpty());
}

TEST_F(SharedTableClearTest, ObjectThatTheHostHandsOverAfterwardsIsDestroyed)
{
    m_scope->clear();
    Function* const give = environment().setFunc("give");
    give->setFunction([this](const Parameters&)
                      { return FunctionParameter(&m_hostObject, "Vec", true); });

    run("given = give() given = nil");
    collect();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_hostObject));
}

TEST_F(SharedTableClearTest, DestructorThatIsSetAfterwardsIsUsed)
{
    m_scope->clear();
    std::vector<Vec*> destroyed;
    vec().setDestructor([&destroyed](void* object) { destroyed.push_back(&vecAt(object)); });

    dropAndCollect();

    EXPECT_THAT(destroyed, ElementsAre(&m_made[0]));
    EXPECT_THAT(m_destroyed, IsEmpty());
}

TEST_F(SharedTableClearTest, NothingButTheFinaliserStays)
{
    vec().setMethod("length", false);
    run("Vec.own = 1 Vec[1] = 2 Vec[true] = 3");

    m_scope->clear();

    run("assert(type(Vec.__gc) == 'function') Vec.__gc = nil assert(next(Vec) == nil)");
    run("v = nil"); // without the entry nobody destroys it: the script's own doing
}

TEST_F(SharedTableClearTest, FinaliserIsPutBackWhereAScriptPutSomethingElse)
{
    run("Vec.__gc = function() end");

    m_scope->clear();

    run("assert(next(Vec) == '__gc' and next(Vec, '__gc') == nil)");
    dropAndCollect();
    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(SharedTableClearTest, FinaliserUnderAnotherNameIsPutBack)
{
    run("Vec.finalise = Vec.__gc Vec.__gc = nil");

    m_scope->clear();

    run("assert(next(Vec) == '__gc' and next(Vec, '__gc') == nil)");
    dropAndCollect();
    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(SharedTableClearTest, FinaliserInTheTableOfANamespaceAloneDoesNotStay)
{
    Namespace* const other = environment().setNamespace("other");
    run("other.__gc = Vec.__gc");

    other->clear();

    run("assert(next(other) == nil)");
}

TEST_F(SharedTableClearTest, NestedTypesAreClearedAndReleasedInTheSameWay)
{
    declareType("world::Vec");
    Namespace* const world = environment().getNamespace("world");
    world->setNamespace("Vec");
    run("keep = {world.Vec.new(), world.Vec.new()}");

    world->clear();
    run("keep[1] = nil");
    collect();
    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[1]));

    world->release();
    run("keep = nil");
    collect();
    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[1], &m_made[2]));
}

} // namespace tbScripts::test

#include "support/UserTypeFixture.h"

#include <algorithm>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class UserTypeOwnershipTest : public UserTypeFixture
{
protected:
    /// Declares `give(isOwned)`, which hands the host's object to the script.
    void declareGive()
    {
        declare(
            "give",
            {PARAM_TYPE_BOOL},
            [this](const Parameters& parameters)
            { return FunctionParameter(&m_hostObject, "Vec", parameters[0].getBool()); });
    }
};

TEST_F(UserTypeOwnershipTest, InstanceThatAScriptMadeIsDestroyedWithIt)
{
    run("local v = Vec.new()");

    collect();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(UserTypeOwnershipTest, InstanceThatIsInUseIsNotDestroyed)
{
    run("v = Vec.new()");

    collect();

    EXPECT_THAT(m_destroyed, IsEmpty());
}

TEST_F(UserTypeOwnershipTest, EachInstanceIsDestroyedOnce)
{
    run("for i = 1, 10000 do Vec.new() end");

    collect();
    destroyEnvironment();

    EXPECT_EQ(m_made.size(), 10000U);
    ASSERT_EQ(m_destroyed.size(), 10000U);
    std::sort(m_destroyed.begin(), m_destroyed.end());
    EXPECT_EQ(std::adjacent_find(m_destroyed.begin(), m_destroyed.end()), m_destroyed.end());
}

TEST_F(UserTypeOwnershipTest, InstanceLeftAtTheEndIsDestroyedThen)
{
    run("v = Vec.new()");

    destroyEnvironment();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(UserTypeOwnershipTest, DisabledInstanceIsNotDestroyed)
{
    run("local v = Vec.new()  v:disableGc()");

    collect();
    destroyEnvironment();

    EXPECT_THAT(m_destroyed, IsEmpty());
}

TEST_F(UserTypeOwnershipTest, InstanceEnabledAgainIsDestroyed)
{
    run("local v = Vec.new()  v:disableGc()  v:enableGc()");

    collect();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(UserTypeOwnershipTest, HostsInstanceIsNotDestroyed)
{
    setHostObject("v", m_hostObject);

    run("v = nil");
    collect();

    EXPECT_THAT(m_destroyed, IsEmpty());
}

TEST_F(UserTypeOwnershipTest, HostsInstanceThatAScriptEnabledIsDestroyed)
{
    setHostObject("v", m_hostObject);

    run("v:enableGc()  v = nil");
    collect();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_hostObject));
}

TEST_F(UserTypeOwnershipTest, InstanceThatTheHostHandedOverIsDestroyed)
{
    declareGive();

    run("local v = give(true)");
    collect();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_hostObject));
}

TEST_F(UserTypeOwnershipTest, InstanceThatTheHostOnlyShowedIsNotDestroyed)
{
    declareGive();

    run("local v = give(false)");
    collect();

    EXPECT_THAT(m_destroyed, IsEmpty());
}

TEST_F(UserTypeOwnershipTest, InstanceHandedOverAndDisabledIsNotDestroyed)
{
    declareGive();

    run("give(true):disableGc()");
    collect();

    EXPECT_THAT(m_destroyed, IsEmpty());
}

TEST_F(UserTypeOwnershipTest, SwitchesGiveNoResults)
{
    run("v = Vec.new()");

    EXPECT_EQ(evaluate("select('#', v:disableGc())"), "0");
    EXPECT_EQ(evaluate("select('#', v:enableGc())"), "0");
}

TEST_F(UserTypeOwnershipTest, SwitchesActOnTheLastArgument)
{
    run("first, last = Vec.new(), Vec.new()  Vec.disableGc(first, last)");

    run("first, last = nil, nil");
    collect();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(UserTypeOwnershipTest, SwitchesServeInstancesOfOtherTypes)
{
    declareType("Enemy");

    run("local enemy = Enemy.new()  Vec.disableGc(enemy)");
    collect();

    EXPECT_THAT(m_destroyed, IsEmpty());
}

TEST_F(UserTypeOwnershipTest, FinaliserCalledByHandDestroysOnce)
{
    run("v = Vec.new()  v:__gc()");

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
    run("v:__gc()  v = nil");
    collect();
    destroyEnvironment();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(UserTypeOwnershipTest, FinaliserCalledByHandLeavesADisabledInstance)
{
    declareField("x", &Vec::x);

    run("v = Vec.new()  v:disableGc()  v:__gc()  v.x = 3");

    EXPECT_THAT(m_destroyed, IsEmpty());
    EXPECT_EQ(evaluate("v.x"), "3");
}

TEST_F(UserTypeOwnershipTest, FinaliserGivesNoResults)
{
    EXPECT_EQ(evaluate("select('#', Vec.new():__gc())"), "0");
}

TEST_F(UserTypeOwnershipTest, FinaliserActsOnTheLastArgument)
{
    run("first, last = Vec.new(), Vec.new()  Vec.__gc(first, last)");

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[1]));
}

class UserTypeDestroyedInstanceTest : public UserTypeFixture
{
protected:
    UserTypeDestroyedInstanceTest()
    {
        declareField("x", &Vec::x);
        declareArrayAccess();
        run("v = Vec.new()  v:__gc()");
    }
};

TEST_F(UserTypeDestroyedInstanceTest, CannotBeRead)
{
    EXPECT_EQ(errorOf("local x = v.x"), "Expected an instance of user type 'Vec'.");
    EXPECT_EQ(errorOf("local x = v[1]"), "Expected an instance of user type 'Vec'.");
}

TEST_F(UserTypeDestroyedInstanceTest, CannotBeWritten)
{
    EXPECT_EQ(errorOf("v.x = 1"), "Expected an instance of user type 'Vec'.");
    EXPECT_EQ(errorOf("v[1] = 1"), "Expected an instance of user type 'Vec'.");
    EXPECT_EQ(m_made[0].x, 0.0);
}

TEST_F(UserTypeDestroyedInstanceTest, IsAMismatchAsAnArgument)
{
    declareMethod("length", {}, [](const Parameters&) { return 1; });

    const std::string message = errorOf("local x = v:length()");

    EXPECT_EQ(message, "Error l.1 while calling length. Expected Vec, got userdata.");
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{message, "LuaFunction"}));
}

TEST_F(UserTypeDestroyedInstanceTest, IsNullForTheHost)
{
    EXPECT_EQ(environment().getObject("v", "Vec"), nullptr);
    EXPECT_EQ(environment().getObject("v", tbMemory::StringView()), nullptr);
}

TEST_F(UserTypeDestroyedInstanceTest, CannotBeEnabled)
{
    run("v:disableGc()  v:enableGc()  v = nil");
    collect();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(UserTypeDestroyedInstanceTest, StillHasRawEntriesAndUnknownNames)
{
    run("v.unknown = 1");

    EXPECT_EQ(evaluate("v.unknown"), "nil");
    EXPECT_EQ(evaluate("v.__name"), "Vec");
    EXPECT_EQ(evaluate("v.new == Vec.new"), "true");
}

TEST_F(UserTypeDestroyedInstanceTest, IsWhatAnotherFinaliserOfTheSameCollectionSees)
{
    run("seen, proxy = {}, newproxy(true) "
        "do local w = Vec.new() "
        "getmetatable(proxy).__gc = function() "
        "    seen.read, seen.message = pcall(function() return w.x end) "
        "    seen.isEnabled = pcall(w.enableGc, w) "
        "end end "
        "proxy = nil");

    collect();

    EXPECT_EQ(evaluate("seen.read"), "false");
    EXPECT_EQ(evaluate("seen.message"), "Expected an instance of user type 'Vec'.");
    EXPECT_EQ(evaluate("seen.isEnabled"), "true");
    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0], &m_made[1]));
}

TEST_F(UserTypeDestroyedInstanceTest, RevivedByAnotherFinaliserIsNotDestroyedAgain)
{
    run("proxy = newproxy(true) "
        "do local w = Vec.new() "
        "getmetatable(proxy).__gc = function() revived = w end end "
        "proxy = nil");
    collect();

    EXPECT_EQ(errorOf("local x = revived.x"), "Expected an instance of user type 'Vec'.");
    run("revived:enableGc()  revived = nil");
    collect();
    destroyEnvironment();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0], &m_made[1]));
}

TEST_F(UserTypeOwnershipTest, DestructorThatCallsTheFinaliserAgainDestroysOnce)
{
    vec().setDestructor(
        [this](void* object)
        {
            m_destroyed.push_back(&vecAt(object));
            run("v:__gc()");
        });

    run("v = Vec.new()  v:__gc()");

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(UserTypeOwnershipTest, TypeWithoutDestructorDestroysNothing)
{
    UserType* const type = environment().setUserType("Bare");
    type->setConstructor([this](const Parameters&) { return &m_hostObject; });

    run("Bare.new()");
    collect();

    EXPECT_THAT(m_destroyed, IsEmpty());
}

TEST_F(UserTypeOwnershipTest, ConstructorThatThrowsLeavesNothingToDestroy)
{
    vec().setConstructor([](const Parameters&) -> void* { throw std::string("no more"); });

    EXPECT_EQ(errorOf("Vec.new()"), "C++ exception");
    collect();
    destroyEnvironment();

    EXPECT_THAT(m_destroyed, IsEmpty());
}

TEST_F(UserTypeOwnershipTest, TwoBoxesOfOneObjectAreTwoOwners)
{
    declareGive();

    run("local a, b = give(true), give(true)");
    collect();

    EXPECT_THAT(m_destroyed, UnorderedElementsAre(&m_hostObject, &m_hostObject));
}

} // namespace tbScripts::test

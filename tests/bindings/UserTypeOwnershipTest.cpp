#include "support/UserTypeSteps.h"

#include <algorithm>

namespace tbScripts::test
{

namespace
{

class UserTypeOwnershipTest : public UserTypeFixture
{
protected:
    /// Scripts find `give(isOwned)`, which gives them the host's object.
    UserTypeOwnershipTest()
    {
        declare(
            "give",
            {PARAM_TYPE_BOOL},
            [this](const Parameters& parameters)
            { return FunctionParameter(&m_hostObject, "Vec", parameters[0].getBool()); });
    }
};

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

TEST_F(UserTypeOwnershipTest, DestructorThatCallsTheFinaliserAgainDestroysOnce)
{
    vec().setDestructor(
        [this](void* object)
        {
            m_destroyed.push_back(&vecAt(object));
            run("v:__gc()");
        });
    run("v = Vec.new()  v:__gc()");
    isDestroyed({0});
}

TEST_F(UserTypeOwnershipTest, TypeWithoutDestructorDestroysNothing)
{
    environment().setUserType("Bare")->setConstructor([this](auto&) { return &m_hostObject; });
    run("Bare.new()");
    collect();
    isDestroyed({});
}

TEST_F(UserTypeOwnershipTest, ConstructorThatThrowsLeavesNothingToDestroy)
{
    vec().setConstructor([](const Parameters&) -> void* { throw std::string("no more"); });
    raises("Vec.new()", "C++ exception");
    collect();
    destroyEnvironment();
    isDestroyed({});
}

const Facts<UserTypeOwnershipTest> FACTS(
    "UserTypeOwnershipTest",
    {
        {"InstanceThatAScriptMadeIsDestroyedWithIt",
         {run("local v = Vec.new()"), collect(), isDestroyed({0})}},
        {"InstanceThatIsInUseIsNotDestroyed", {run("v = Vec.new()"), collect(), isDestroyed({})}},
        {"InstanceLeftAtTheEndIsDestroyedThen",
         {run("v = Vec.new()"), destroyEnvironment(), isDestroyed({0})}},
        {"DisabledInstanceIsNotDestroyed",
         {run("local v = Vec.new()  v:disableGc()"),
          collect(),
          destroyEnvironment(),
          isDestroyed({})}},
        {"InstanceEnabledAgainIsDestroyed",
         {run("local v = Vec.new()  v:disableGc()  v:enableGc()"), collect(), isDestroyed({0})}},
        {"HostsInstanceIsNotDestroyed",
         {hostObject("v"), run("v = nil"), collect(), isDestroyed({})}},
        {"HostsInstanceThatAScriptEnabledIsDestroyed",
         {hostObject("v"), run("v:enableGc()  v = nil"), collect(), isDestroyed({HOST_OBJECT})}},
        {"InstanceThatTheHostHandedOverIsDestroyed",
         {run("local v = give(true)"), collect(), isDestroyed({HOST_OBJECT})}},
        {"InstanceThatTheHostOnlyShowedIsNotDestroyed",
         {run("local v = give(false)"), collect(), isDestroyed({})}},
        {"InstanceHandedOverAndDisabledIsNotDestroyed",
         {run("give(true):disableGc()"), collect(), isDestroyed({})}},
        {"SwitchesGiveNoResults",
         {run("v = Vec.new()"),
          is("select('#', v:disableGc())", "0"),
          is("select('#', v:enableGc())", "0")}},
        {"SwitchesActOnTheLastArgument",
         {run("first, last = Vec.new(), Vec.new()  Vec.disableGc(first, last)"),
          run("first, last = nil, nil"),
          collect(),
          isDestroyed({0})}},
        {"SwitchesServeInstancesOfOtherTypes",
         {type("Enemy"),
          run("local enemy = Enemy.new()  Vec.disableGc(enemy)"),
          collect(),
          isDestroyed({})}},
        {"FinaliserCalledByHandDestroysOnce",
         {run("v = Vec.new()  v:__gc()"),
          isDestroyed({0}),
          run("v:__gc()  v = nil"),
          collect(),
          destroyEnvironment(),
          isDestroyed({0})}},
        {"FinaliserCalledByHandLeavesADisabledInstance",
         {field("x"),
          run("v = Vec.new()  v:disableGc()  v:__gc()  v.x = 3"),
          isDestroyed({}),
          is("v.x", "3")}},
        {"FinaliserGivesNoResults", {is("select('#', Vec.new():__gc())", "0")}},
        {"FinaliserActsOnTheLastArgument",
         {run("first, last = Vec.new(), Vec.new()  Vec.__gc(first, last)"), isDestroyed({1})}},
        {"TwoBoxesOfOneObjectAreTwoOwners",
         {run("local a, b = give(true), give(true)"),
          collect(),
          isDestroyed({HOST_OBJECT, HOST_OBJECT})}},
    });

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

constexpr const char* NO_VEC = "Expected an instance of user type 'Vec'.";

const Facts<UserTypeDestroyedInstanceTest> DESTROYED_FACTS(
    "UserTypeDestroyedInstanceTest",
    {
        {"CannotBeRead", {raises("local x = v.x", NO_VEC), raises("local x = v[1]", NO_VEC)}},
        {"CannotBeWritten", {raises("v.x = 1", NO_VEC), raises("v[1] = 1", NO_VEC), hasX(0, 0.0)}},
        {"IsAMismatchAsAnArgument",
         {method("length", 1),
          raises(
              "local x = v:length()",
              "Error l.1 while calling length. Expected Vec, got userdata."),
          logs("Error l.1 while calling length. Expected Vec, got userdata.", "LuaFunction")}},
        {"IsNullForTheHost", {isObject("v", NO_OBJECT), isObject("v", NO_OBJECT, "")}},
        {"CannotBeEnabled",
         {run("v:disableGc()  v:enableGc()  v = nil"), collect(), isDestroyed({0})}},
        {"StillHasRawEntriesAndUnknownNames",
         {run("v.unknown = 1"),
          is("v.unknown", "nil"),
          is("v.__name", "Vec"),
          is("v.new == Vec.new", "true")}},
        {"IsWhatAnotherFinaliserOfTheSameCollectionSees",
         {run("seen, proxy = {}, newproxy(true) "
              "do local w = Vec.new() "
              "getmetatable(proxy).__gc = function() "
              "    seen.read, seen.message = pcall(function() return w.x end) "
              "    seen.isEnabled = pcall(w.enableGc, w) "
              "end end "
              "proxy = nil"),
          collect(),
          is("seen.read", "false"),
          is("seen.message", NO_VEC),
          is("seen.isEnabled", "true"),
          isDestroyed({0, 1})}},
        {"RevivedByAnotherFinaliserIsNotDestroyedAgain",
         {run("proxy = newproxy(true) "
              "do local w = Vec.new() "
              "getmetatable(proxy).__gc = function() revived = w end end "
              "proxy = nil"),
          collect(),
          raises("local x = revived.x", NO_VEC),
          run("revived:enableGc()  revived = nil"),
          collect(),
          destroyEnvironment(),
          isDestroyed({0, 1})}},
    });

} // namespace

} // namespace tbScripts::test

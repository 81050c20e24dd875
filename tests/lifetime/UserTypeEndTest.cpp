// A type that is gone while scripts still hold instances of it, its table and its functions.

#include "support/Farewell.h"
#include "support/UserTypeSteps.h"

#include <tbScripts/Namespace.h>

#include <memory>

namespace tbScripts::test
{

namespace
{

const auto NO_OPERATOR = ::testing::HasSubstr("attempt to perform arithmetic");
constexpr const char* TYPE_IS_GONE = "User type 'world::Vec' does not exist anymore.";

class UserTypeEndTest : public UserTypeFixture
{
public:
    UserTypeEndTest()
    {
        declareMembers(declareType("world::Vec"));
        run("Class = world.Vec  v = Class.new() "
            "new, length, read, write = Class.new, Class.length, Class.__index, Class.__newindex "
            "finalise, enableGc, disableGc = Class.__gc, Class.enableGc, Class.disableGc");
    }

    static void declareMembers(UserType& type)
    {
        type.setMethod("length", false)->setFunction(returning(1));
        type.setOperator(BUILT_IN_FUNCTION::UNM)->setFunction(returning(2));
        setGetter(type, "x", [](void* object) { return vecAt(object).x; });
        setSetter(
            type,
            "x",
            PARAM_TYPE_DOUBLE,
            [](auto& parameters) { vecOf(parameters[0]).x = parameters[1].getDouble(); });
        UserTypeArrayDescriptor access;
        access.read = returning(3);
        access.write = [](const Parameters&) {};
        type.setArrayAccess(access);
    }

    void release() { environment().getNamespace("world")->release(); }
};

TypeStep release()
{
    return [](auto& test) { test.environment().getNamespace("world")->release(); };
}

TypeStep declareWhole()
{
    return [](auto& test) { UserTypeEndTest::declareMembers(test.declareType("world::Vec")); };
}

const Facts<UserTypeEndTest> FACTS(
    "UserTypeEndTest",
    {
        {"InstancesHaveNoFields",
         {release(),
          raises("local x = v.x", TYPE_IS_GONE),
          raises("v.x = 1", TYPE_IS_GONE),
          hasX(0, 0.0)}},
        {"InstancesHaveNoElements",
         {release(), raises("local x = v[1]", TYPE_IS_GONE), raises("v[1] = 1", TYPE_IS_GONE)}},
        {"InstancesHaveNoMethodsAndOperators",
         {release(),
          raises("v:length()", TYPE_IS_GONE),
          [](auto& test) { EXPECT_THAT(test.errorOf("return -v"), NO_OPERATOR); }}},
        {"InstancesKeepTheRawEntriesOfTheirTable",
         {run("Class.ext = 'mine'"), release(), is("v.__name", "world::Vec"), is("v.ext", "mine")}},
        {"MethodThatAScriptKeptIsAnErrorThatNamesIt",
         {release(), raises("length(v)", "Function 'length' does not exist anymore.")}},
        {"FactoryThatAScriptKeptIsAnErrorThatNamesTheType",
         {release(),
          raises("new()", TYPE_IS_GONE),
          raises("Class.new()", TYPE_IS_GONE),
          [](auto& test) { EXPECT_EQ(test.m_made.size(), 1U); }}},
        {"DispatchersThatAScriptKeptAreErrors",
         {release(),
          raises("read(v, 'x')", TYPE_IS_GONE),
          raises("write(v, 'x', 1)", TYPE_IS_GONE)}},
        {"NameIsRemovedFromTheScript",
         {release(),
          is("world.Vec", "nil"),
          [](auto& test) { EXPECT_FALSE(test.environment().getUserType("world::Vec")); }}},
        {"InstanceIsDestroyedWhenItIsCollected",
         {release(), run("v = nil"), collect(), isDestroyed({0})}},
        {"InstanceIsDestroyedOnceWithTheEnvironment",
         {release(), isDestroyed({}), destroyEnvironment(), isDestroyed({0})}},
        {"SwitchesThatAScriptKeptStillDecide",
         {run("w = Class.new()"),
          release(),
          run("disableGc(v)  disableGc(w)  enableGc(w)  v, w = nil, nil"),
          collect(),
          isDestroyed({1})}},
        {"FinaliserThatAScriptKeptDestroysOnce",
         {release(), run("finalise(v)  finalise(v)  v = nil"), collect(), isDestroyed({0})}},
        {"TypeDeclaredAgainIsAnotherTable",
         {release(),
          declareWhole(),
          is("world.Vec == Class", "false"),
          is("world.Vec.new().x", "0")}},
        {"OldInstancesStayWithoutFieldsWhenTheTypeIsDeclaredAgain",
         {release(),
          declareWhole(),
          raises("local x = v.x", TYPE_IS_GONE),
          raises("new()", TYPE_IS_GONE)}},
        {"ObjectOfATypeThatIsGoneIsABoxWithoutMetatable",
         {release(),
          [](auto& test) { test.environment().setObject("box", "world::Vec", &test.m_hostObject); },
          is("type(box)", "userdata"),
          is("getmetatable(box)", "nil")}},
    });

TEST_F(UserTypeEndTest, WhatTheDestructorCapturedLivesUntilTheLastInstanceIsDestroyed)
{
    std::vector<std::string> events;
    {
        const auto farewell = makeFarewell([&events] { events.emplace_back("gone"); });
        environment()
            .getUserType("world::Vec")
            ->setDestructor([farewell, &events](void*) { events.emplace_back("destroyed"); });
    }
    release();
    EXPECT_THAT(events, IsEmpty());

    run("v, Class, new, length, read, write, finalise, enableGc, disableGc = nil");
    collect();
    collect();

    EXPECT_THAT(events, ElementsAre("destroyed", "gone"));
}

TEST_F(UserTypeEndTest, OldAndNewInstancesAreDestroyedOnceEach)
{
    release();
    declareType("world::Vec");
    run("w = world.Vec.new()");

    run("v, w = nil, nil");
    collect();
    destroyEnvironment();

    EXPECT_THAT(m_destroyed, UnorderedElementsAre(&m_made[0], &m_made[1]));
}

TEST_F(UserTypeEndTest, OldInstancesAreDestroyedByTheirOwnDestructor)
{
    release();
    std::vector<void*> others;
    declareType("world::Vec").setDestructor([&others](void* object) { others.push_back(object); });
    run("w = world.Vec.new()");

    run("v, w = nil, nil");
    collect();

    isDestroyed({0});
    EXPECT_THAT(others, ElementsAre(&m_made[1]));
}

TEST_F(UserTypeEndTest, ManyTypesOfOneNameDestroyTheirInstancesOnceEach)
{
    for (int i = 0; i < 20; ++i)
    {
        run("kept = kept or {}  kept[#kept + 1] = world.Vec.new()");
        release();
        declareType("world::Vec");
    }

    destroyEnvironment();

    EXPECT_EQ(m_made.size(), 21U);
    EXPECT_EQ(m_destroyed.size(), 21U);
}

// Namespaces take names as they are, so that one full name can be reached in two ways.
TEST_F(UserTypeEndTest, TypesThatShareATableDestroyTheirInstancesOnceEach)
{
    UserType& first = *environment().getNamespace("world")->setUserType("inner::Vec");
    setMaker(first);
    run("a = world['inner::Vec'].new()");
    UserType& second = declareType("world::inner::Vec");
    ASSERT_NE(&first, &second);
    run("b = world.inner.Vec.new()");
    ASSERT_EQ(evaluate("world['inner::Vec'] == world.inner.Vec"), "true");
    release();

    run("v, a, b = nil");
    collect();

    EXPECT_THAT(m_destroyed, UnorderedElementsAre(&m_made[0], &m_made[1], &m_made[2]));
}

// The block behind the closures was finalised, its function revived, and then the type destroyed.
TEST_F(UserTypeEndTest, FunctionRevivedByAFinaliserInTheCallThatEndedTheTypeIsAnError)
{
    declareAction("release", [this] { release(); });
    run("do local kept = Class.enableGc "
        "    keeper = newproxy(true) "
        "    getmetatable(keeper).__gc = function() revived = kept end "
        "end "
        "v, Class, new, length, read, write, finalise, enableGc, disableGc = nil "
        "function forget() keeper = nil end");

    run("release() forget() collectgarbage() collectgarbage()");

    raises("revived(io.stdout)", TYPE_IS_GONE);
}

} // namespace

} // namespace tbScripts::test

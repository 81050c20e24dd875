// A type that is gone while scripts still hold instances of it, its table and its functions.

#include "support/Farewell.h"
#include "support/UserTypeFixture.h"

#include <tbScripts/Namespace.h>

#include <memory>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

namespace
{

constexpr const char* TYPE_IS_GONE = "User type 'world::Vec' does not exist anymore.";

} // namespace

class UserTypeEndTest : public UserTypeFixture
{
protected:
    UserTypeEndTest()
    {
        declareMembers(declareType("world::Vec"));
        run("Class = world.Vec  v = Class.new() "
            "new, length, read, write = Class.new, Class.length, Class.__index, Class.__newindex "
            "finalise, enableGc, disableGc = Class.__gc, Class.enableGc, Class.disableGc");
    }

    static void declareMembers(UserType& type)
    {
        type.setMethod("length", false)->setFunction([](const Parameters&) { return 1; });
        type.setOperator(BUILT_IN_FUNCTION::UNM)->setFunction([](const Parameters&) { return 2; });
        UserTypeFieldDescriptor field;
        field.getter = [](void* object) { return FunctionParameter(vecAt(object).x); };
        field.setter = [](const Parameters& parameters)
        { vecOf(parameters[0]).x = parameters[1].getDouble(); };
        field.name = "x";
        field.type = PARAM_TYPE_DOUBLE;
        type.setField(field);
        UserTypeArrayDescriptor access;
        access.read = [](const Parameters&) { return FunctionParameter(3); };
        access.write = [](const Parameters&) {};
        type.setArrayAccess(access);
    }

    void release() { environment().getNamespace("world")->release(); }
};

TEST_F(UserTypeEndTest, InstancesHaveNoFields)
{
    release();

    EXPECT_EQ(errorOf("local x = v.x"), TYPE_IS_GONE);
    EXPECT_EQ(errorOf("v.x = 1"), TYPE_IS_GONE);
    EXPECT_EQ(m_made[0].x, 0.0);
}

TEST_F(UserTypeEndTest, InstancesHaveNoElements)
{
    release();

    EXPECT_EQ(errorOf("local x = v[1]"), TYPE_IS_GONE);
    EXPECT_EQ(errorOf("v[1] = 1"), TYPE_IS_GONE);
}

TEST_F(UserTypeEndTest, InstancesHaveNoMethodsAndOperators)
{
    release();

    EXPECT_EQ(errorOf("v:length()"), TYPE_IS_GONE);
    EXPECT_THAT(errorOf("return -v"), ::testing::HasSubstr("attempt to perform arithmetic"));
}

TEST_F(UserTypeEndTest, InstancesKeepTheRawEntriesOfTheirTable)
{
    run("Class.ext = 'mine'");

    release();

    EXPECT_EQ(evaluate("v.__name"), "world::Vec");
    EXPECT_EQ(evaluate("v.ext"), "mine");
}

TEST_F(UserTypeEndTest, MethodThatAScriptKeptIsAnErrorThatNamesIt)
{
    release();

    EXPECT_EQ(errorOf("length(v)"), "Function 'length' does not exist anymore.");
}

TEST_F(UserTypeEndTest, FactoryThatAScriptKeptIsAnErrorThatNamesTheType)
{
    release();

    EXPECT_EQ(errorOf("new()"), TYPE_IS_GONE);
    EXPECT_EQ(errorOf("Class.new()"), TYPE_IS_GONE);
    EXPECT_EQ(m_made.size(), 1U);
}

TEST_F(UserTypeEndTest, DispatchersThatAScriptKeptAreErrors)
{
    release();

    EXPECT_EQ(errorOf("read(v, 'x')"), TYPE_IS_GONE);
    EXPECT_EQ(errorOf("write(v, 'x', 1)"), TYPE_IS_GONE);
}

TEST_F(UserTypeEndTest, NameIsRemovedFromTheScript)
{
    release();

    EXPECT_EQ(evaluate("world.Vec"), "nil");
    EXPECT_EQ(environment().getUserType("world::Vec"), nullptr);
}

TEST_F(UserTypeEndTest, InstanceIsDestroyedWhenItIsCollected)
{
    release();

    run("v = nil");
    collect();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(UserTypeEndTest, InstanceIsDestroyedOnceWhenTheEnvironmentEnds)
{
    release();
    EXPECT_THAT(m_destroyed, IsEmpty());

    destroyEnvironment();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(UserTypeEndTest, SwitchesThatAScriptKeptStillDecide)
{
    run("w = Class.new()");
    release();

    run("disableGc(v)  disableGc(w)  enableGc(w)  v, w = nil, nil");
    collect();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[1]));
}

TEST_F(UserTypeEndTest, FinaliserThatAScriptKeptDestroysOnce)
{
    release();

    run("finalise(v)  finalise(v)  v = nil");
    collect();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

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

TEST_F(UserTypeEndTest, TypeDeclaredAgainIsAnotherTable)
{
    release();

    declareMembers(declareType("world::Vec"));

    EXPECT_EQ(evaluate("world.Vec == Class"), "false");
    EXPECT_EQ(evaluate("world.Vec.new().x"), "0");
}

TEST_F(UserTypeEndTest, OldInstancesStayWithoutFieldsWhenTheTypeIsDeclaredAgain)
{
    release();

    declareMembers(declareType("world::Vec"));

    EXPECT_EQ(errorOf("local x = v.x"), TYPE_IS_GONE);
    EXPECT_EQ(errorOf("new()"), TYPE_IS_GONE);
}

TEST_F(UserTypeEndTest, OldInstancesMatchAsSelfOfTheTypeDeclaredAgain)
{
    release();

    declareMembers(declareType("world::Vec"));

    EXPECT_EQ(evaluate("world.Vec.length(v)"), "1");
    EXPECT_EQ(evaluate("world.Vec.__index(v, 'x')"), "0");
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

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
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

TEST_F(UserTypeEndTest, ObjectOfATypeThatIsGoneIsABoxWithoutMetatable)
{
    release();

    environment().setObject("box", "world::Vec", &m_hostObject);

    EXPECT_EQ(evaluate("type(box)"), "userdata");
    EXPECT_EQ(evaluate("getmetatable(box)"), "nil");
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

    EXPECT_EQ(errorOf("revived(io.stdout)"), TYPE_IS_GONE);
}

} // namespace tbScripts::test

// Types over a change of interpreter, and in copies of an environment.

#include "support/Farewell.h"
#include "support/UserTypeFixture.h"

#include <memory>

namespace tbScripts::test
{

class UserTypeSwitchTest : public UserTypeFixture
{
protected:
    /// Declares `Vec` again, as one does after a switch.
    UserType* declareAgain()
    {
        UserType* const type = environment().setUserType("Vec");
        forgetLog(); // that it was declared already
        return type;
    }
};

TEST_F(UserTypeSwitchTest, DestroysOwnedInstancesOnce)
{
    run("v = Vec.new()  Vec.new():disableGc()");
    restart();
    isDestroyed({0});
    destroyEnvironment();
    isDestroyed({0});
}

TEST_F(UserTypeSwitchTest, DestroysWhatIsHandedOverWhileTheInterpreterCloses)
{
    run("older = newproxy(true)  getmetatable(older).__gc = function() Late.give() end");
    declareType("Late").setStaticMethod("give")->setFunction(
        [this](const Parameters&) { return FunctionParameter(&m_hostObject, "Late", true); });
    restart();
    isDestroyed({HOST_OBJECT});
}

TEST_F(UserTypeSwitchTest, InertTypeGivesNull)
{
    Function* const length = declareMethod("length", {}, returning(1));
    restart();
    EXPECT_EQ(vec().setMethod("length", false), nullptr);
    EXPECT_EQ(vec().setStaticMethod("origin"), nullptr);
    EXPECT_EQ(vec().setOperator(BUILT_IN_FUNCTION::ADD), nullptr);
    EXPECT_EQ(vec().setOperator(static_cast<BUILT_IN_FUNCTION>(12)), nullptr);
    EXPECT_EQ(vec().getMethod("length"), length);
}

TEST_F(UserTypeSwitchTest, InertTypeIgnoresWhatIsSet)
{
    restart();

    vec().setConstructor([this](const Parameters&) { return &m_hostObject; });
    vec().setDestructor([](void*) { ADD_FAILURE() << "the destructor was called"; });
    declareField("x", &Vec::x);
    vec().setArrayAccess(UserTypeArrayDescriptor());
    vec().clear();

    is("Vec", "nil");
    EXPECT_EQ(vec().getName(), "Vec");
    EXPECT_EQ(vec().getFullName(), "Vec");
}

TEST_F(UserTypeSwitchTest, DeclaredAgainAfterEachOfManySwitches)
{
    for (int i = 0; i < 5; ++i)
    {
        run("v = Vec.new()");
        restart();
        declareAgain();
    }

    EXPECT_EQ(m_made.size(), 5U);
    EXPECT_EQ(m_destroyed.size(), 5U);
}

TEST_F(UserTypeSwitchTest, TypeInANamespaceIsInstalledAgainToo)
{
    UserType* const type = &declareType("world::Vec");
    restart();

    UserType* const again = environment().setUserType("world::Vec");
    forgetLog(); // that it was declared already
    run("v = world.Vec.new()");

    EXPECT_EQ(again, type);
    EXPECT_EQ(environment().getObject("v", "world::Vec"), &m_made[0]);
}

TEST_F(UserTypeSwitchTest, ReferenceToAnInstanceDoesNotOutliveIt)
{
    run("v = Vec.new()");
    const ScriptObjectReference reference = environment().getVar("v");
    restart();
    environment().setVar("again", reference);
    is("again", "nil");
    isDestroyed({0});
}

TEST_F(UserTypeSwitchTest, TypeLivesAsLongAsTheLastCopy)
{
    declareField("x", &Vec::x);
    auto copy = std::make_unique<Environment>(environment());
    run("v = Vec.new()");

    destroyEnvironment();

    isDestroyed({});
    EXPECT_TRUE(runScript(*copy, "v.x = 3  result = v.x"));
    EXPECT_EQ(copy->getVar("result", 0), 3);
    copy.reset();
    isDestroyed({0});
}

TEST_F(UserTypeSwitchTest, SwitchOfACopyLeavesTheTypeToTheOther)
{
    Environment copy(environment());
    run("v = Vec.new()");
    copy.setEnvironmentFor(INTERPRETER_LUA);
    isDestroyed({});
    is("getmetatable(v) == Vec", "true");
    EXPECT_NE(vec().setMethod("length", false), nullptr);
}

TEST_F(UserTypeSwitchTest, WhatCallablesCapturedGoesWithTheTypesMembers)
{
    int ends = 0;
    {
        const auto farewell = makeFarewell([&ends] { ++ends; });
        UserTypeFieldDescriptor field;
        field.getter = [farewell](void*) { return FunctionParameter(1); };
        field.name = "x";
        vec().setField(field);
    }

    restart();
    declareAgain();

    EXPECT_EQ(ends, 1);
}

} // namespace tbScripts::test

// Two environments that share an interpreter declare one type each under the same name, so that
// both have one table. The second declaration fails: the first type goes on as if nothing had been
// tried.

#include "support/UserTypeFixture.h"

#include <memory>

namespace tbScripts::test
{

class FailedRivalTypeTest : public UserTypeFixture
{
protected:
    FailedRivalTypeTest()
        : m_other(std::make_unique<Environment>(environment())) // knows nothing that comes later
    {
        UserType& late = declareType("world::Late");
        UserTypeFieldDescriptor field;
        field.name = "x";
        field.type = PARAM_TYPE_DOUBLE;
        field.getter = [](void* object) { return FunctionParameter(vecAt(object).x); };
        late.setField(field);
        late.setMethod("answer", false)->setFunction(returning(42));
        run("late = world.Late.new()");
        m_made.back().x = 7.0;
    }

    // Has everything that is published in the namespace raise.
    void refuseNames()
    {
        run("world.Late = nil "
            "setmetatable(world, {__newindex = function(_, name) error('no ' .. name, 0) end})");
    }

    std::unique_ptr<Environment> m_other;
};

TEST_F(FailedRivalTypeTest, ItsMembersGoOn)
{
    refuseNames();
    EXPECT_EQ(m_other->setUserType("world::Late"), nullptr);
    expectLogged("no Late", "LuaEnvironment");
    is("late.x", "7");
    is("late:answer()", "42");
}

TEST_F(FailedRivalTypeTest, ItsInstancesAreDestroyedOnce)
{
    refuseNames();
    EXPECT_EQ(m_other->setUserType("world::Late"), nullptr);
    forgetLog();
    run("late = nil");
    collect();
    isDestroyed({0});
}

TEST_F(FailedRivalTypeTest, ItGoesOnWhereTheNamespaceWentToAnotherInterpreter)
{
    m_other->setNamespace("world"); // two of them with one table
    restart();
    environment().setNamespace("world"); // takes that table along

    EXPECT_EQ(m_other->setUserType("world::Late"), nullptr);
    forgetLog();

    EXPECT_TRUE(runScript(*m_other, "assert(late.x == 7 and late:answer() == 42) late = nil"));
    m_other->requestGarbageCollection();
    isDestroyed({0});
}

TEST_F(FailedRivalTypeTest, ItsInstancesAreDestroyedAsItSaidUntilTheSecondSaysMore)
{
    ASSERT_NE(m_other->setUserType("world::Late"), nullptr);
    run("late = nil");
    collect();
    isDestroyed({0});
}

TEST_F(FailedRivalTypeTest, ADestructorOfTheSecondLeavesThatOfTheFirst)
{
    UserType* const second = m_other->setUserType("world::Late");
    ASSERT_NE(second, nullptr);
    int destructions = 0;
    second->setDestructor([&destructions](void*) { ++destructions; });

    setMaker(*environment().getUserType("world::Late")); // its finaliser is that of the table again
    run("late = nil");
    collect();

    EXPECT_EQ(destructions, 0);
    isDestroyed({0});
}

TEST_F(FailedRivalTypeTest, ADeclarationThatWorksTakesTheTableOver)
{
    UserType* const second = m_other->setUserType("world::Late");

    ASSERT_NE(second, nullptr);
    EXPECT_NE(second, environment().getUserType("world::Late"));
    setMaker(*second);
    run("late = nil second = world.Late.new()");
    collect();
    EXPECT_THAT(m_made, SizeIs(2));
    isDestroyed({0});
}

} // namespace tbScripts::test

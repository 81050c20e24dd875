// Two environments that share an interpreter declare one type each under the same name, so that
// both have one table. The second declaration fails: the first type goes on as if nothing had been
// tried.

#include "support/UserTypeFixture.h"

#include <memory>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::SizeIs;

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
        late.setMethod("answer", false)
            ->setFunction([](const Parameters&) { return FunctionParameter(42); });
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

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{"no Late", "LuaEnvironment"}));
    EXPECT_EQ(evaluate("late.x"), "7");
    EXPECT_EQ(evaluate("late:answer()"), "42");
}

TEST_F(FailedRivalTypeTest, ItsInstancesAreDestroyedOnce)
{
    refuseNames();
    EXPECT_EQ(m_other->setUserType("world::Late"), nullptr);
    m_log.takeEntries();

    run("late = nil");
    collect();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(FailedRivalTypeTest, ItGoesOnWhereTheNamespaceWentToAnotherInterpreter)
{
    m_other->setNamespace("world"); // two of them with one table
    environment().setEnvironmentFor(INTERPRETER_LUA);
    environment().setNamespace("world"); // takes that table along

    EXPECT_EQ(m_other->setUserType("world::Late"), nullptr);
    m_log.takeEntries();

    EXPECT_TRUE(runScript(*m_other, "assert(late.x == 7 and late:answer() == 42) late = nil"));
    m_other->requestGarbageCollection();
    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(FailedRivalTypeTest, ItsInstancesAreDestroyedAsItSaidUntilTheSecondSaysMore)
{
    ASSERT_NE(m_other->setUserType("world::Late"), nullptr);

    run("late = nil");
    collect();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
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
    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
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
    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

} // namespace tbScripts::test

// Types over a change of interpreter, and in copies of an environment.

#include "support/Farewell.h"
#include "support/UserTypeFixture.h"

#include <memory>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class UserTypeSwitchTest : public UserTypeFixture
{
protected:
    /// Throws the interpreter away and starts another one.
    void switchInterpreter() { environment().setEnvironmentFor(INTERPRETER_LUA); }

    /// Declares `Vec` again, as one does after a switch.
    UserType* declareAgain()
    {
        UserType* const type = environment().setUserType("Vec");
        m_log.takeEntries(); // that it was declared already
        return type;
    }
};

TEST_F(UserTypeSwitchTest, DestroysOwnedInstancesOnce)
{
    run("v = Vec.new()  Vec.new():disableGc()");

    switchInterpreter();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
    destroyEnvironment();
    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(UserTypeSwitchTest, DestroysWhatIsHandedOverWhileTheInterpreterCloses)
{
    run("older = newproxy(true)  getmetatable(older).__gc = function() Late.give() end");
    declareType("Late").setStaticMethod("give")->setFunction(
        [this](const Parameters&) { return FunctionParameter(&m_hostObject, "Late", true); });

    switchInterpreter();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_hostObject));
}

TEST_F(UserTypeSwitchTest, TypeStaysRegisteredWithItsPointer)
{
    UserType* const type = &vec();

    switchInterpreter();

    EXPECT_EQ(environment().getUserType("Vec"), type);
    EXPECT_TRUE(environment().isUserTypeSet("Vec"));
}

TEST_F(UserTypeSwitchTest, TypeIsUnknownToTheNewInterpreter)
{
    switchInterpreter();

    EXPECT_EQ(evaluate("Vec"), "nil");
}

TEST_F(UserTypeSwitchTest, InertTypeGivesNull)
{
    declareMethod("length", {}, [](const Parameters&) { return 1; });

    switchInterpreter();

    EXPECT_EQ(vec().setMethod("length", false), nullptr);
    EXPECT_EQ(vec().setStaticMethod("origin"), nullptr);
    EXPECT_EQ(vec().setOperator(BUILT_IN_FUNCTION::ADD), nullptr);
    EXPECT_EQ(vec().setOperator(static_cast<BUILT_IN_FUNCTION>(12)), nullptr);
}

TEST_F(UserTypeSwitchTest, InertTypeIgnoresWhatIsSet)
{
    switchInterpreter();

    vec().setConstructor([this](const Parameters&) { return &m_hostObject; });
    vec().setDestructor([](void*) { ADD_FAILURE() << "the destructor was called"; });
    declareField("x", &Vec::x);
    vec().setArrayAccess(UserTypeArrayDescriptor());
    vec().clear();

    EXPECT_EQ(evaluate("Vec"), "nil");
    EXPECT_EQ(vec().getName(), "Vec");
    EXPECT_EQ(vec().getFullName(), "Vec");
}

TEST_F(UserTypeSwitchTest, DeclaredAgainIsTheSameObjectInstalled)
{
    UserType* const type = &vec();
    switchInterpreter();

    UserType* const again = environment().setUserType("Vec");

    EXPECT_EQ(again, type);
    EXPECT_EQ(evaluate("Vec.__name"), "Vec");
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "User type 'Vec' already existant. Resetting its state before returning it. This "
            "might hold unexpected results.",
            "Environment"}));
}

TEST_F(UserTypeSwitchTest, DeclaredAgainHasItsConstructorAndDestructor)
{
    switchInterpreter();
    declareAgain();

    run("Vec.new()");
    collect();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(UserTypeSwitchTest, DeclaredAgainHasNothingElse)
{
    declareField("x", &Vec::x);
    declareMethod("length", {}, [](const Parameters&) { return 1; });
    declareArrayAccess();
    switchInterpreter();
    declareAgain();

    EXPECT_EQ(evaluate("Vec.new().x"), "nil");
    EXPECT_EQ(evaluate("Vec.new()[1]"), "nil");
    EXPECT_EQ(evaluate("Vec.length"), "nil");
    EXPECT_EQ(vec().getMethod("length"), nullptr);
}

TEST_F(UserTypeSwitchTest, DeclaredAgainTakesNewDeclarations)
{
    switchInterpreter();
    declareAgain();

    declareField("x", &Vec::x);
    declareMethod("length", {}, [](const Parameters&) { return 1; });

    EXPECT_EQ(evaluate("Vec.new().x"), "0");
    EXPECT_EQ(evaluate("Vec.new():length()"), "1");
}

TEST_F(UserTypeSwitchTest, DeclaredAgainAfterEachOfManySwitches)
{
    for (int i = 0; i < 5; ++i)
    {
        run("v = Vec.new()");
        switchInterpreter();
        declareAgain();
    }

    EXPECT_EQ(m_made.size(), 5U);
    EXPECT_EQ(m_destroyed.size(), 5U);
}

TEST_F(UserTypeSwitchTest, TypeInANamespaceIsInstalledAgainToo)
{
    UserType* const type = &declareType("world::Vec");
    switchInterpreter();

    UserType* const again = environment().setUserType("world::Vec");
    m_log.takeEntries(); // that it was declared already
    run("v = world.Vec.new()");

    EXPECT_EQ(again, type);
    EXPECT_EQ(environment().getObject("v", "world::Vec"), &m_made[0]);
}

TEST_F(UserTypeSwitchTest, TypeDeclaredWithoutInterpreterIsMadeWhenDeclaredAgain)
{
    Environment other;
    EXPECT_EQ(other.setUserType("Vec"), nullptr);
    m_log.takeEntries(); // that there is no interpreter
    other.setEnvironmentFor(INTERPRETER_LUA);

    UserType* const type = other.setUserType("Vec");
    m_log.takeEntries(); // that it was declared already

    EXPECT_NE(type, nullptr);
    EXPECT_EQ(other.getUserType("Vec"), type);
}

TEST_F(UserTypeSwitchTest, ReferenceToAnInstanceDoesNotOutliveIt)
{
    run("v = Vec.new()");
    const ScriptObjectReference reference = environment().getVar("v");

    switchInterpreter();
    environment().setVar("again", reference);

    EXPECT_EQ(evaluate("again"), "nil");
    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(UserTypeSwitchTest, CopyOfTheEnvironmentSharesTheType)
{
    const Environment copy(environment());

    EXPECT_EQ(copy.getUserType("Vec"), &vec());
}

TEST_F(UserTypeSwitchTest, TypeLivesAsLongAsTheLastCopy)
{
    declareField("x", &Vec::x);
    auto copy = std::make_unique<Environment>(environment());
    run("v = Vec.new()");

    destroyEnvironment();

    EXPECT_THAT(m_destroyed, IsEmpty());
    EXPECT_TRUE(runScript(*copy, "v.x = 3  result = v.x"));
    EXPECT_EQ(copy->getVar("result", 0), 3);
    copy.reset();
    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(UserTypeSwitchTest, SwitchOfACopyLeavesTheTypeToTheOther)
{
    Environment copy(environment());
    run("v = Vec.new()");

    copy.setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_THAT(m_destroyed, IsEmpty());
    EXPECT_EQ(evaluate("getmetatable(v) == Vec"), "true");
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

    switchInterpreter();
    declareAgain();

    EXPECT_EQ(ends, 1);
}

} // namespace tbScripts::test

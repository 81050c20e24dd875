// Namespaces of an environment that were made for an earlier interpreter.

#include "support/CountedObject.h"
#include "support/NamespaceFixture.h"

#include <tbScripts/ScriptObjectReference.h>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class InertNamespacesTest : public NamespaceFixture
{
protected:
    static LogEntry alreadyExistant(const std::string& name)
    {
        return {
            "Namespace '" + name +
                "' already existant. Returning it as-is, this might hold unexpected results.",
            "Environment"};
    }

    void TearDown() override
    {
        EXPECT_THAT(m_log.takeEntries(), IsEmpty());
        destroyEnvironment();
        if (m_isDisabled)
            m_log.takeEntries(); // without interpreter the teardown warns
        NamespaceFixture::TearDown();
    }

    // Leaves the environment without interpreter and without unread entries.
    void disable()
    {
        environment().setEnvironmentFor(INTERPRETER_UNKNOWN);
        m_log.takeEntries();
        m_isDisabled = true;
    }

    // Starts the interpreter anew; what was declared is inert then.
    void restart() { environment().setEnvironmentFor(INTERPRETER_LUA); }

    bool m_isDisabled = false;
};

TEST_F(InertNamespacesTest, StayRegisteredOverASwitch)
{
    restart();

    EXPECT_TRUE(environment().isNamespaceSet("a"));
    EXPECT_EQ(environment().getNamespace("a"), &scope());
    EXPECT_FALSE(environment().isVarSet("a"));
}

TEST_F(InertNamespacesTest, StayRegisteredOverSwitchesToNoneAndBack)
{
    disable();
    restart();

    EXPECT_TRUE(environment().isNamespaceSet("a"));
    EXPECT_EQ(environment().getNamespace("a"), &scope());
}

TEST_F(InertNamespacesTest, StillGiveWhatTheyHold)
{
    Namespace* const inner = scope().setNamespace("b");
    UserType* const type = scope().setUserType("T");

    restart();

    EXPECT_EQ(scope().getNamespace("b"), inner);
    EXPECT_EQ(scope().getUserType("T"), type);
    EXPECT_EQ(environment().getUserType("a::T"), type);
    EXPECT_TRUE(environment().isNamespaceSet("a::b"));
}

TEST_F(InertNamespacesTest, DeclareNothing)
{
    scope().setNamespace("b");
    restart();

    EXPECT_EQ(scope().setNamespace("b"), nullptr);
    EXPECT_EQ(scope().setUserType("T"), nullptr);
    EXPECT_EQ(scope().setFunction("f"), nullptr);
    EXPECT_EQ(scope().getUserType("T"), nullptr);
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(InertNamespacesTest, SetNoVariables)
{
    restart();
    run("a = {v = 'own'}");

    scope().setVar("v", 5);
    scope().setVar("v", "text");
    scope().setVar("v", environment().getVar("_VERSION"));
    scope().setVar("v", "a::T", &scope());

    run("assert(a.v == 'own')");
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(InertNamespacesTest, KeepWhatTheyHoldWhenCleared)
{
    Namespace* const inner = scope().setNamespace("b");
    restart();
    run("a = {v = 'own'}");

    scope().clear();

    EXPECT_EQ(scope().getNamespace("b"), inner);
    run("assert(a.v == 'own')");
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(InertNamespacesTest, DropWhatTheyHoldWhenReleased)
{
    scope().setNamespace("b")->setFunction("f");
    scope().setUserType("T")->setMethod("m", false);
    restart();
    run("a = {v = 'own'}");

    scope().release();

    EXPECT_EQ(scope().getNamespace("b"), nullptr);
    EXPECT_EQ(scope().getUserType("T"), nullptr);
    run("assert(a.v == 'own')");
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(InertNamespacesTest, AreTheSameAndPublishedWhenDeclaredAgain)
{
    restart();

    Namespace* const declared = environment().setNamespace("a");

    EXPECT_EQ(declared, &scope());
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(alreadyExistant("a")));
    scope().setVar("v", 5);
    run("assert(a.v == 5)");
}

TEST_F(InertNamespacesTest, GetBackWhatTheyHeldOnlyAsItIsDeclaredAgain)
{
    scope().setVar("v", 5);
    bindAnswer(scope().setFunction("f"), 42);
    scope().setNamespace("b");
    scope().setUserType("T");
    restart();

    environment().setNamespace("a");

    run("assert(next(a) == nil)");
    m_log.takeEntries();
}

TEST_F(InertNamespacesTest, GetBackTheVeryObjectsTheyHeld)
{
    Function* const function = scope().setFunction("f");
    Namespace* const inner = scope().setNamespace("b");
    UserType* const type = scope().setUserType("T");
    restart();
    environment().setNamespace("a");

    EXPECT_EQ(scope().setFunction("f"), function);
    EXPECT_EQ(scope().setNamespace("b"), inner);
    EXPECT_EQ(scope().setUserType("T"), type);

    run("assert(type(a.f) == 'function' and type(a.b) == 'table' and type(a.T) == 'table')");
    EXPECT_EQ(m_log.takeEntries().size(), 4U);
}

TEST_F(InertNamespacesTest, InnerNamespaceStaysInertUntilItIsDeclaredAgain)
{
    Namespace* const inner = scope().setNamespace("b");
    restart();
    environment().setNamespace("a");
    m_log.takeEntries();

    EXPECT_EQ(inner->setFunction("f"), nullptr);

    run("assert(next(a) == nil)");
}

TEST_F(InertNamespacesTest, ConstructorComesBackWithItsType)
{
    makeCounted(scope().setUserType("T"));
    restart();
    environment().setNamespace("a");

    scope().setUserType("T");

    run("a.T.new() collectgarbage()");
    EXPECT_EQ(CountedObject::getMade(), 1);
    EXPECT_EQ(CountedObject::getLiving(), 0);
    m_log.takeEntries();
}

TEST_F(InertNamespacesTest, ArePublishedOnceWhenDeclaredTwice)
{
    restart();
    environment().setNamespace("a");
    run("a = 5");

    environment().setNamespace("a");

    EXPECT_EQ(environment().getVar("a", 0), 5);
    m_log.takeEntries();
}

TEST_F(InertNamespacesTest, AreTheSameWhenDeclaredAgainWithoutInterpreter)
{
    disable();

    Namespace* const declared = environment().setNamespace("a");

    EXPECT_EQ(declared, &scope());
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(alreadyExistant("a")));
}

TEST_F(InertNamespacesTest, InstancesOfAnEarlierInterpreterAreDestroyedWithIt)
{
    makeCounted(scope().setUserType("T"));
    run("t = a.T.new()");

    restart();

    EXPECT_EQ(CountedObject::getLiving(), 0);
}

TEST_F(InertNamespacesTest, EndWithTheEnvironment)
{
    makeCounted(scope().setUserType("T"));
    scope().setNamespace("b")->setFunction("f");
    restart();

    destroyEnvironment();

    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

} // namespace tbScripts::test

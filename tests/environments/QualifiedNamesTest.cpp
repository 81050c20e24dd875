// Names with "::", by which an environment reaches into its namespaces.

#include "support/CountedObject.h"
#include "support/EnvironmentFixture.h"
#include "support/NamespaceFixture.h"
#include "support/RowName.h"
#include "support/SwitchingFixture.h"

#include <tbScripts/Namespace.h>
#include <tbScripts/ScriptObjectReference.h>
#include <tbScripts/UserType.h>

namespace tbScripts::test
{

namespace
{

LogEntry namespaceAlreadyExistant(const std::string& name)
{
    return {
        "Namespace '" + name +
            "' already existant. Returning it as-is, this might hold unexpected results.",
        "Environment"};
}

LogEntry withoutInterpreter(const std::string& what)
{
    return {
        "Requesting a " + what +
            " in environment 'world', which has no InterpreterType. This will have no effect, "
            "returning nullptr.",
        "Environment"};
}

using QualifiedNamesTest = Switching<EnvironmentFixture>;

TEST_F(QualifiedNamesTest, UserTypesAndNamespacesAreCreatedSilentlyWithTheNamespacesOnTheWay)
{
    UserType* const type = environment().setUserType("a::b::T");
    Namespace* const inner = environment().setNamespace("a::b::c");
    environment().setUserType("a::b::U");

    ASSERT_NE(type, nullptr);
    EXPECT_EQ(type->getName(), "T");
    EXPECT_EQ(type->getFullName(), "a::b::T");
    ASSERT_NE(inner, nullptr);
    EXPECT_EQ(inner->getName(), "c");
    inner->setVar("v", 5);
    run("assert(type(a.b.T) == 'table' and a.b.c.v == 5)");
}

TEST_F(QualifiedNamesTest, FirstNamespaceIsTheEnvironmentsAndTheOthersAreInside)
{
    UserType* const type = environment().setUserType("a::b::T");

    Namespace* const outer = environment().getNamespace("a");
    ASSERT_NE(outer, nullptr);
    ASSERT_NE(outer->getNamespace("b"), nullptr);
    EXPECT_EQ(outer->getNamespace("b")->getUserType("T"), type);
    EXPECT_FALSE(environment().isNamespaceSet("b"));
}

TEST_F(QualifiedNamesTest, DeclarationsAreFoundUnderTheirWholeNameOnly)
{
    UserType* const type = environment().setUserType("a::b::T");
    Namespace* const inner = environment().setNamespace("a::c");

    EXPECT_TRUE(environment().isUserTypeSet("a::b::T"));
    EXPECT_EQ(environment().getUserType("a::b::T"), type);
    EXPECT_TRUE(environment().isNamespaceSet("a::c"));
    EXPECT_EQ(environment().getNamespace("a::c"), inner);
    EXPECT_TRUE(environment().isNamespaceSet("a::b"));
    EXPECT_FALSE(environment().isUserTypeSet("T"));
    EXPECT_EQ(environment().getUserType("T"), nullptr);
    EXPECT_FALSE(environment().isUserTypeSet("b::T"));
    EXPECT_FALSE(environment().isNamespaceSet("c"));
    EXPECT_FALSE(environment().isVarSet("T"));
}

TEST_F(QualifiedNamesTest, NamespacesOnTheWayAreUsedAsTheyAre)
{
    Namespace* const outer = environment().setNamespace("a");
    Namespace* const inner = outer->setNamespace("b");
    inner->setVar("v", 5);

    UserType* const type = environment().setUserType("a::b::T");

    EXPECT_EQ(inner->getUserType("T"), type);
    run("assert(a.b.v == 5)");
}

TEST_F(QualifiedNamesTest, RepeatedUserTypeIsReportedByItsNamespace)
{
    UserType* const first = environment().setUserType("a::b::T");
    first->setMethod("m", false);

    UserType* const second = environment().setUserType("a::b::T");

    EXPECT_EQ(first, second);
    EXPECT_EQ(second->getMethod("m"), nullptr);
    expectLogged(
        "Setting user type 'T' in namespace 'b', but this type is already registered. State "
        "will be changed, but this might hold unexpected results",
        "LuaNamespace");
}

TEST_F(QualifiedNamesTest, RepeatedNamespaceIsReportedByItsNamespace)
{
    Namespace* const first = environment().setNamespace("a::b");
    first->setVar("v", 5);

    Namespace* const second = environment().setNamespace("a::b");

    EXPECT_EQ(first, second);
    expectLogged(
        "Setting namespace 'b' in namespace 'a', but this namespace is already registered. "
        "State will be changed, but this might hold unexpected results",
        "LuaNamespace");
    run("assert(a.b.v == 5)");
}

TEST_F(QualifiedNamesTest, QueriesDeclareNothing)
{
    environment().setNamespace("a");

    EXPECT_EQ(environment().getUserType("x::T"), nullptr);
    EXPECT_EQ(environment().getNamespace("x::y"), nullptr);
    EXPECT_EQ(environment().getUserType("a::x::T"), nullptr);
    EXPECT_FALSE(environment().isUserTypeSet("x::y::T"));
    EXPECT_FALSE(environment().isNamespaceSet("a::x::y"));

    EXPECT_FALSE(environment().isNamespaceSet("x"));
    EXPECT_FALSE(environment().isNamespaceSet("a::x"));
    run("assert(x == nil and next(a) == nil)");
}

TEST_F(QualifiedNamesTest, QueriesDoNotGoThroughUserTypes)
{
    environment().setUserType("T");

    EXPECT_EQ(environment().getUserType("T::U"), nullptr);
    EXPECT_FALSE(environment().isNamespaceSet("T::U"));
}

TEST_F(QualifiedNamesTest, FunctionsAreNeverSplitNorLookedForInNamespaces)
{
    environment().setNamespace("b")->setFunction("f");

    Function* const function = environment().setFunc("a::b::f");

    ASSERT_NE(function, nullptr);
    EXPECT_EQ(function->getName(), "a::b::f");
    EXPECT_TRUE(environment().isFuncSet("a::b::f"));
    EXPECT_EQ(environment().getFunc("a::b::f"), function);
    EXPECT_FALSE(environment().isFuncSet("f"));
    EXPECT_FALSE(environment().isNamespaceSet("a"));
    run("assert(type(_G['a::b::f']) == 'function' and a == nil)");
    EXPECT_FALSE(environment().isFuncSet("b::f"));
    EXPECT_EQ(environment().getFunc("b::f"), nullptr);
}

TEST_F(QualifiedNamesTest, FiftyPartsLeadFiftyDeep)
{
    std::string name;
    for (int i = 0; i < 50; ++i)
        name += "n::";

    UserType* const type = environment().setUserType(name + "T");

    EXPECT_EQ(environment().getUserType(name + "T"), type);
    run("local inner = _G for i = 1, 50 do inner = inner.n end assert(inner.T)");
}

/// A text and the keys by which scripts find what it names.
struct NameRow
{
    const char* row;
    const char* name;
    const char* path;
    const char* fullName;
};

using SplitNameTest = OnRows<EnvironmentFixture, NameRow>;

ROWS(
    SplitNameTest,
    {"OnePart", "a", "_G['a']", "a"},
    {"TwoParts", "a::b", "_G['a']['b']", "a::b"},
    {"ThreeParts", "a::b::c", "_G['a']['b']['c']", "a::b::c"},
    {"EmptyText", "", "_G['']", ""},
    {"EmptyLastPart", "a::", "_G['a']['']", "a::"},
    {"EmptyFirstPart", "::a", "_G['']['a']", "::a"},
    {"EmptyMiddlePart", "a::::b", "_G['a']['']['b']", "a::::b"},
    {"OnlyASeparator", "::", "_G['']['']", "::"},
    {"SingleColon", "a:b", "_G['a:b']", "a:b"},
    {"OnlyAColon", ":", "_G[':']", ":"},
    {"ThreeColons", "a:::b", "_G['a'][':b']", "a:::b"},
    {"ColonBeforeTheSeparator", "a:b::c", "_G['a:b']['c']", "a:b::c"});

TEST_P(SplitNameTest, LeadsToTheUserTypeOnceItIsDeclared)
{
    EXPECT_EQ(environment().getUserType(GetParam().name), nullptr);
    EXPECT_FALSE(environment().isUserTypeSet(GetParam().name));

    UserType* const type = environment().setUserType(GetParam().name);

    ASSERT_NE(type, nullptr);
    EXPECT_EQ(type->getFullName(), GetParam().fullName);
    EXPECT_EQ(environment().getUserType(GetParam().name), type);
    EXPECT_TRUE(environment().isUserTypeSet(GetParam().name));
    run(std::string("assert(rawget(") + GetParam().path + ", '__gc'))");
}

TEST_P(SplitNameTest, LeadsToTheNamespaceOnceItIsDeclared)
{
    EXPECT_EQ(environment().getNamespace(GetParam().name), nullptr);
    EXPECT_FALSE(environment().isNamespaceSet(GetParam().name));

    Namespace* const declared = environment().setNamespace(GetParam().name);

    ASSERT_NE(declared, nullptr);
    EXPECT_EQ(environment().getNamespace(GetParam().name), declared);
    EXPECT_TRUE(environment().isNamespaceSet(GetParam().name));
    declared->setVar("v", 5);
    run(std::string("assert(") + GetParam().path + ".v == 5)");
}

// Null namespaces on the way.

TEST_F(QualifiedNamesTest, WithoutInterpreterTheFirstNamespaceIsAskedFor)
{
    disable();

    EXPECT_EQ(environment().setUserType("a::b::T"), nullptr);

    EXPECT_TRUE(environment().isNamespaceSet("a"));
    EXPECT_FALSE(environment().isUserTypeSet("a::b::T"));
    expectLogged({withoutInterpreter("namespace")});
}

TEST_F(QualifiedNamesTest, NullNamespaceOnTheWayIsAskedForAgainWithAWarning)
{
    disable();
    environment().setNamespace("a");
    m_log.takeEntries();

    EXPECT_EQ(environment().setNamespace("a::b"), nullptr);

    expectLogged({namespaceAlreadyExistant("a"), withoutInterpreter("namespace")});
}

TEST_F(QualifiedNamesTest, NullNamespaceOnTheWayIsMadeUnderTheNextInterpreter)
{
    disable();
    environment().setNamespace("a");
    restart();
    m_log.takeEntries();

    UserType* const type = environment().setUserType("a::b::T");

    EXPECT_NE(type, nullptr);
    expectLogged({namespaceAlreadyExistant("a")});
    run("assert(a.b.T)");
}

TEST_F(QualifiedNamesTest, QueriesOverANullNamespaceFindNothing)
{
    disable();
    environment().setNamespace("a");
    m_log.takeEntries();

    EXPECT_EQ(environment().getUserType("a::T"), nullptr);
    EXPECT_EQ(environment().getNamespace("a::b::c"), nullptr);
    EXPECT_FALSE(environment().isUserTypeSet("a::T"));
    EXPECT_FALSE(environment().isNamespaceSet("a::b"));
}

TEST_F(QualifiedNamesTest, RefusedNamespaceOnTheWayGivesNull)
{
    run("setmetatable(_G, {__newindex = function() error('strict', 0) end})");

    EXPECT_EQ(environment().setUserType("a::b::T"), nullptr);

    expectLogged("strict", "LuaEnvironment");
    run("setmetatable(_G, nil)");
}

// Namespaces on the way that were made for an earlier interpreter.

TEST_F(QualifiedNamesTest, InertNamespacesOnTheWayAreInstalledInSilenceWithoutWhatTheyHeld)
{
    Namespace* const outer = environment().setNamespace("a");
    Namespace* const inner = outer->setNamespace("b");
    outer->setVar("v", 5);
    outer->setFunction("f");
    outer->setUserType("U");
    restart();

    UserType* const type = environment().setUserType("a::b::T");

    EXPECT_NE(type, nullptr);
    EXPECT_EQ(environment().getNamespace("a"), outer);
    EXPECT_EQ(environment().getNamespace("a::b"), inner);
    EXPECT_EQ(inner->getUserType("T"), type);
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
    run("assert(type(a.b.T) == 'table' and a.v == nil and a.f == nil and a.U == nil)");
}

TEST_F(QualifiedNamesTest, InertTypeDeclaredAgainIsTheSameWithTheUsualWarning)
{
    UserType* const before = environment().setUserType("a::T");
    restart();

    UserType* const after = environment().setUserType("a::T");

    EXPECT_EQ(before, after);
    expectLogged(
        "Setting user type 'T' in namespace 'a', but this type is already registered. State "
        "will be changed, but this might hold unexpected results",
        "LuaNamespace");
    run("assert(type(a.T) == 'table')");
}

TEST_F(QualifiedNamesTest, WithoutInterpreterInertNamespacesGiveNull)
{
    environment().setNamespace("a::b");
    disable();

    EXPECT_EQ(environment().setUserType("a::b::T"), nullptr);
    EXPECT_EQ(environment().setNamespace("a::b"), nullptr);

    EXPECT_TRUE(environment().isNamespaceSet("a::b"));
}

TEST_F(QualifiedNamesTest, QueriesFindWhatInertNamespacesHold)
{
    UserType* const type = environment().setUserType("a::b::T");

    restart();

    EXPECT_EQ(environment().getUserType("a::b::T"), type);
    EXPECT_TRUE(environment().isUserTypeSet("a::b::T"));
    EXPECT_FALSE(environment().isVarSet("a"));
}

// Namespaces of an environment that were made for an earlier interpreter.
using InertNamespacesTest = Switching<NamespaceFixture>;

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

TEST_F(InertNamespacesTest, DeclareAndSetNothing)
{
    scope().setNamespace("b");
    restart();
    run("a = {v = 'own'}");

    EXPECT_EQ(scope().setNamespace("b"), nullptr);
    EXPECT_EQ(scope().setUserType("T"), nullptr);
    EXPECT_EQ(scope().setFunction("f"), nullptr);
    EXPECT_EQ(scope().getUserType("T"), nullptr);
    scope().setVar("v", 5);
    scope().setVar("v", "text");
    scope().setVar("v", environment().getVar("_VERSION"));
    scope().setVar("v", "a::T", &scope());

    run("assert(a.v == 'own')");
}

TEST_F(InertNamespacesTest, KeepWhatTheyHoldWhenClearedAndDropItWhenReleased)
{
    Namespace* const inner = scope().setNamespace("b");
    inner->setFunction("f");
    scope().setUserType("T")->setMethod("m", false);
    restart();
    run("a = {v = 'own'}");

    scope().clear();
    EXPECT_EQ(scope().getNamespace("b"), inner);
    scope().release();

    EXPECT_EQ(scope().getNamespace("b"), nullptr);
    EXPECT_EQ(scope().getUserType("T"), nullptr);
    run("assert(a.v == 'own')");
}

TEST_F(InertNamespacesTest, GetBackTheVeryObjectsTheyHeldOnlyAsTheseAreDeclaredAgain)
{
    scope().setVar("v", 5);
    Function* const function = scope().setFunction("f");
    Namespace* const inner = scope().setNamespace("b");
    UserType* const type = scope().setUserType("T");
    restart();
    environment().setNamespace("a");
    EXPECT_EQ(inner->setFunction("f"), nullptr);
    run("assert(next(a) == nil)");

    EXPECT_EQ(scope().setFunction("f"), function);
    EXPECT_EQ(scope().setNamespace("b"), inner);
    EXPECT_EQ(scope().setUserType("T"), type);

    run("assert(type(a.f) == 'function' and type(a.b) == 'table' and type(a.T) == 'table')");
    EXPECT_EQ(m_log.takeEntries().size(), 4U);
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

TEST_F(InertNamespacesTest, EndSilentlyWithTheEnvironmentAfterTheirInstances)
{
    makeCounted(scope().setUserType("T"));
    scope().setNamespace("b")->setFunction("f");
    run("t = a.T.new()");
    restart();
    EXPECT_EQ(CountedObject::getLiving(), 0);

    destroyEnvironment();
}

} // namespace

} // namespace tbScripts::test

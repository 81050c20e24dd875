// Namespaces in the registry of an environment; what they have in common with the other kinds is in
// EnvironmentDeclarationsTest.

#include "support/CountedObject.h"
#include "support/NamespaceSteps.h"
#include "support/RowName.h"

namespace tbScripts::test
{

using EnvironmentNamespacesTest = NamespaceFixture;

TEST_F(EnvironmentNamespacesTest, ClearingTakesTheEntriesOfATypeOfTheSameNameButItsFinaliser)
{
    int object = 0;
    int destroyed = 0;
    UserType* const type = environment().setUserType("a");
    type->setConstructor([&object](const Parameters&) { return &object; });
    type->setDestructor([&destroyed](void*) { ++destroyed; });
    run("t = a.new()");
    scope().clear();
    run("assert(next(a) == '__gc' and next(a, '__gc') == nil)");
    run("t = nil collectgarbage()");
    EXPECT_EQ(destroyed, 1);
}

TEST_F(EnvironmentNamespacesTest, CopyFindsWhatItsNamespacesGetLater)
{
    const Environment copy(environment());
    Namespace* const inner = scope().setNamespace("b");
    EXPECT_EQ(copy.getNamespace("a::b"), inner);
}

TEST_F(EnvironmentNamespacesTest, NamespaceLivesAsLongAsTheLastCopy)
{
    Environment copy(environment());
    bindAnswer(scope().setFunction("f"), 42);
    destroyEnvironment();
    EXPECT_TRUE(runScript(copy, "assert(a.f() == 42)"));
    EXPECT_NE(copy.getNamespace("a")->setFunction("g"), nullptr);
}

namespace
{

const Facts<EnvironmentNamespacesTest> FACTS(
    "EnvironmentNamespacesTest",
    {
        {"NamespaceWithoutItsGlobalCanStillBeFilled",
         {run("kept = a a = nil"), variable("a.v", 5), is("kept.v", "5")}},
        {"RepeatedDeclarationResetsNothing",
         {variable("a.v", 5),
          answering("a.f", 42),
          space("a"),
          is("a.v", "5"),
          is("a.f()", "42"),
          logsCount(1)}},
        // They share what scripts see.
        {"UserTypeOfTheSameNameSharesTheTable",
         {variable("a.v", 5), countedType("a"), run("assert(a.v == 5 and a.new())")}},
        {"NamespaceOfATypesNameSharesTheTable",
         {countedType("T"), space("T"), variable("T.v", 5), run("assert(T.v == 5 and T.new())")}},
        {"InnerUserTypeOfTheSameNameSharesTheTable",
         {space("a.b"),
          variable("a.b.v", 5),
          countedType("a.b"),
          run("assert(a.b.v == 5 and a.b.new())")}},
        {"SharedTablesAreDestroyedInSilence",
         {countedType("a"),
          countedType("a.b"),
          space("a.b"),
          unboundFunction("a.b.f"),
          run("first = a.new() second = a.b.new()"),
          destroyEnvironment(),
          living(0),
          logs({})}},
    });

/// A key of the interpreter's registry.
struct ReservedNameRow
{
    const char* row;
    const char* name;
};

} // namespace

class ReservedNamespaceTest : public OnRows<NamespaceFixture, ReservedNameRow>
{
protected:
    void logsRefusal()
    {
        expectLogged(
            "The interpreter uses the name '" + m_name + "' itself. It can't be declared.",
            "LuaNamespace");
    }

    const std::string m_name = GetParam().name;
};

ROWS(
    ReservedNamespaceTest,
    {"LoadedModules", "_LOADED"},
    {"PreloadedModules", "_PRELOAD"},
    {"Files", "FILE*"});

TEST_P(ReservedNamespaceTest, IsRefusedAndCountsAsDeclaredAllTheSame)
{
    EXPECT_EQ(environment().setNamespace(m_name), nullptr);
    logsRefusal();
    EXPECT_TRUE(environment().isNamespaceSet(m_name));
    EXPECT_EQ(environment().getNamespace(m_name), nullptr);
}

TEST_P(ReservedNamespaceTest, IsRefusedOnTheWayOfAQualifiedName)
{
    EXPECT_EQ(environment().setUserType(m_name + "::T"), nullptr);
    logsRefusal();
}

TEST_P(ReservedNamespaceTest, LeavesTheInterpreterAsItWas)
{
    environment().setNamespace(m_name);
    EXPECT_FALSE(environment().isVarSet(m_name));
    run("assert(require('string') == string and tostring(io.stdout):find('file'))");
    logsRefusal();
}

TEST_P(ReservedNamespaceTest, IsFreeInsideAnotherNamespace)
{
    Namespace* const inner = scope().setNamespace(m_name);
    ASSERT_NE(inner, nullptr);
    inner->setVar("v", 5);
    is("a['" + m_name + "'].v", "5");
}

} // namespace tbScripts::test

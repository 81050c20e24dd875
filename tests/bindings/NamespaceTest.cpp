// What a namespace holds, and how scripts see it.

#include "support/NamespaceSteps.h"

#include <tbScripts/ScriptObjectReference.h>

namespace tbScripts::test
{

using NamespaceTest = NamespaceFixture;

TEST_F(NamespaceTest, InnerNamespaceIsFoundAndKnowsItsShortName)
{
    EXPECT_EQ(scope().getName(), "a");
    Namespace* const inner = scope().setNamespace("b");
    EXPECT_EQ(inner->getName(), "b");
    EXPECT_EQ(scope().getNamespace("b"), inner);
}

TEST_F(NamespaceTest, InnerNamespaceIsNoGlobal)
{
    scope().setNamespace("b");
    EXPECT_FALSE(environment().isVarSet("b"));
    EXPECT_FALSE(environment().isVarSet("a::b"));
}

TEST_F(NamespaceTest, NamesAreNotSplit)
{
    Namespace* const inner = scope().setNamespace("b::c");
    EXPECT_EQ(scope().getNamespace("b::c"), inner);
    EXPECT_EQ(scope().getNamespace("b"), nullptr);
    run("assert(type(a['b::c']) == 'table' and a.b == nil)");
}

TEST_F(NamespaceTest, NullNameIsTheEmptyName)
{
    Namespace* const inner = scope().setNamespace(tbMemory::StringView());
    EXPECT_EQ(scope().getNamespace(""), inner);
    is("type(a[''])", "table");
}

TEST_F(NamespaceTest, NameEndsAtItsFirstNulForScripts)
{
    Namespace* const inner = scope().setNamespace(tbMemory::StringView("b\0c", 3));
    EXPECT_EQ(scope().getNamespace("b"), nullptr);
    EXPECT_EQ(scope().getNamespace(tbMemory::StringView("b\0c", 3)), inner);
    is("type(a.b)", "table");
}

TEST_F(NamespaceTest, UserTypeIsFoundAndHasTheNamesOfAllNamespacesBeforeItsOwn)
{
    Namespace* const inner = scope().setNamespace("b");
    UserType* const type = inner->setUserType("c");
    EXPECT_EQ(type->getName(), "c");
    EXPECT_EQ(type->getFullName(), "a::b::c");
    EXPECT_EQ(inner->getUserType("c"), type);
}

TEST_F(NamespaceTest, InstancesHaveTheFullNameOfTheirType)
{
    scope().setNamespace("b")->setUserType("c");
    int object = 0;
    environment().setObject("instance", "a::b::c", &object);
    EXPECT_EQ(environment().getObject("instance", "a::b::c"), &object);
    EXPECT_EQ(environment().getObject("instance", "c"), nullptr);
    is("getmetatable(instance) == a.b.c", "true");
}

TEST_F(NamespaceTest, UnknownOnesAreNotFound)
{
    scope().setUserType("T");
    scope().setNamespace("b");
    run("a.table = {}");
    EXPECT_EQ(scope().getNamespace("T"), nullptr);
    EXPECT_EQ(scope().getNamespace("table"), nullptr);
    EXPECT_EQ(scope().getUserType("b"), nullptr);
    EXPECT_EQ(environment().getUserType("T"), nullptr);
}

TEST_F(NamespaceTest, FunctionIsAFieldUnderItsNameAndNoFunctionOfTheEnvironment)
{
    Function* const function = scope().setFunction("f");
    ASSERT_NE(function, nullptr);
    EXPECT_EQ(function->getName(), "f");
    is("type(a.f)", "function");
    EXPECT_FALSE(environment().isVarSet("f"));
    EXPECT_FALSE(environment().isFuncSet("f"));
    EXPECT_FALSE(environment().isFuncSet("a::f"));
}

TEST_F(NamespaceTest, FunctionGetsItsArgumentsAndGivesItsResult)
{
    Function* const function = scope().setFunction("twice");
    function->addParameter(PARAM_TYPE_INT);
    function->setFunction([](const Parameters& parameters) { return parameters[0].getInt() * 2; });
    is("a.twice(21)", "42");
}

TEST_F(NamespaceTest, MismatchNamesTheFunctionByItsShortName)
{
    scope().setFunction("f")->addParameter(PARAM_TYPE_INT);
    stops("a.f({})", "Error l.1 while calling f. Expected int, got table.");
}

TEST_F(NamespaceTest, ThousandThingsKeepTheirPointers)
{
    std::vector<Namespace*> inner;
    for (int i = 0; i < 1000; ++i)
    {
        inner.push_back(scope().setNamespace("n" + std::to_string(i)));
        bindAnswer(scope().setFunction("f" + std::to_string(i)), i);
    }
    for (std::size_t i = 0; i < 1000; ++i)
        ASSERT_EQ(scope().getNamespace("n" + std::to_string(i)), inner[i]);
    run("for i = 0, 999 do assert(a['f' .. i]() == i and a['n' .. i]) end");
}

TEST_F(NamespaceTest, FiftyNamespacesMayLieInEachOther)
{
    Namespace* innermost = &scope();
    std::string fullName = "a";
    for (int i = 0; i < 50; ++i)
    {
        innermost = innermost->setNamespace("n");
        fullName += "::n";
    }
    EXPECT_EQ(innermost->setUserType("T")->getFullName(), fullName + "::T");
    run("local inner = a for i = 1, 50 do inner = inner.n end assert(inner.T and not inner.n)");
}

namespace
{

const Facts<NamespaceTest> FACTS(
    "NamespaceTest",
    {
        {"IsAnEmptyTableUnderItsName",
         {is("type(a)", "table"), is("next(a)", "nil"), is("getmetatable(a)", "nil")}},
        {"ReplacesAGlobalInSilence",
         {variable("b", 5), space("b"), is("type(b)", "table"), logs({})}},
        {"MayBeFilledByScripts",
         {run("a.own = 5 function a.add(x) return x + a.own end"), is("a.add(2)", "7")}},
        {"InnerNamespaceIsAFieldOfTheOuterOne",
         {space("a.b"), variable("a.b.v", 5), is("a.b.v", "5")}},
        {"InnerNamespacesOfOneNameAreApart",
         {space("a.inner"),
          space("b"),
          space("b.inner"),
          variable("a.inner.v", 1),
          variable("b.inner.v", 2),
          run("assert(a.inner.v == 1 and b.inner.v == 2)")}},
        {"LookingForSomethingDeclaresNothing",
         {knows("b", false), is("next(a)", "nil"), knows("b", false)}},
        {"NamesAreCaseSensitive",
         {space("a.b"), userType("a.T"), knows("B", false), knows("t", false)}},
        {"UserTypeIsAFieldUnderItsName",
         {countedType("a.T"),
          run("local t = a.T.new() assert(type(t) == 'userdata' and getmetatable(t) == a.T)")}},
        {"NewFunctionIsUnbound",
         {unboundFunction("a.f"),
          is("a.f()", "nil"),
          logs(
              "Function 'f' called but no user function is bound. Call having no effect.",
              "Function")}},
        {"FunctionsOfOneNameAreApart",
         {answering("f", 1),
          answering("a.f", 2),
          space("a.b"),
          answering("a.b.f", 3),
          run("assert(f() == 1 and a.f() == 2 and a.b.f() == 3)")}},
        {"FunctionNamespaceAndUserTypeMayHaveOneName",
         {space("a.x"),
          userType("a.x"),
          unboundFunction("a.x"),
          [](auto& test) { EXPECT_TRUE(test.scope().getNamespace("x")); },
          [](auto& test) { EXPECT_TRUE(test.scope().getUserType("x")); },
          is("type(a.x)", "function"),
          logs({})}},
        {"MetamethodsOfItsTableRunAsItIsFilled",
         {run("seen = {} local seen, type, rawset = seen, type, rawset setmetatable(a, "
              "{__newindex = function(t, k, v) seen[k] = type(v) rawset(t, k, v) end})"),
          unboundFunction("a.f"),
          space("a.b"),
          userType("a.T"),
          variable("a.v", 5),
          run("assert(seen.f == 'function' and seen.b == 'table' and seen.T == 'table')"
              " assert(seen.v == 'number')")}},
    });

// The part that hosts may derive from; notes texts.
class NotingNamespace final : public Namespace
{
public:
    using Namespace::Namespace;
    using Namespace::setVar;

    Namespace* getNamespace(const tbMemory::StringView&) const override { return nullptr; }

    UserType* getUserType(const tbMemory::StringView&) const override { return nullptr; }

    void setVar(const tbMemory::StringView&, const ScriptObjectReference&) override {}

    void setVar(const tbMemory::StringView& name, const tbMemory::StringView& value) override
    {
        m_noted = std::string(std::string_view(name)) + "=" +
                  (value.isNull() ? "null" : std::string(std::string_view(value)));
    }

    void setVar(const tbMemory::StringView&, double) override {}

    void setVar(const tbMemory::StringView&, float) override {}

    void setVar(const tbMemory::StringView&, int) override {}

    void setVar(const tbMemory::StringView&, bool) override {}

    void setVar(const tbMemory::StringView&, const tbMemory::StringView&, void*) override {}

    Namespace* setNamespace(const tbMemory::StringView&) override { return nullptr; }

    UserType* setUserType(const tbMemory::StringView&) override { return nullptr; }

    Function* setFunction(const tbMemory::StringView&) override { return nullptr; }

    void clear() override {}

    void release() override {}

    std::string m_noted;
};

} // namespace

TEST_F(NamespaceTest, CopyAndAssignmentHaveTheName)
{
    const NotingNamespace first("first");
    const NotingNamespace copy(first); // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_EQ(copy.getName(), "first");
    NotingNamespace second("second");
    second = first;
    EXPECT_EQ(second.getName(), "first");
}

TEST_F(NamespaceTest, NameIsCopiedFromTheCaller)
{
    std::string name = "first";
    const NotingNamespace named(name);
    name = "other";
    EXPECT_EQ(named.getName(), "first");
}

TEST_F(NamespaceTest, ZeroTerminatedTextIsSetAsAView)
{
    NotingNamespace noting("n");
    noting.setVar("v", "text");
    EXPECT_EQ(noting.m_noted, "v=text");
    noting.setVar("v", static_cast<const char*>(nullptr));
    EXPECT_EQ(noting.m_noted, "v=null");
}

} // namespace tbScripts::test

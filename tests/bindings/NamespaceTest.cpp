// What a namespace holds, and how scripts see it.

#include "support/NamespaceFixture.h"

#include <tbScripts/ScriptObjectReference.h>

namespace tbScripts::test
{

using ::testing::IsEmpty;

class NamespaceTest : public NamespaceFixture
{
};

TEST_F(NamespaceTest, KnowsItsName)
{
    EXPECT_EQ(scope().getName(), "a");
}

TEST_F(NamespaceTest, IsATableUnderItsName)
{
    run("assert(type(a) == 'table')");
}

TEST_F(NamespaceTest, IsEmptyAtFirst)
{
    run("assert(next(a) == nil and getmetatable(a) == nil)");
}

TEST_F(NamespaceTest, ReplacesAGlobalInSilence)
{
    environment().setVar("b", 5);

    environment().setNamespace("b");

    run("assert(type(b) == 'table')");
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(NamespaceTest, MayBeFilledByScripts)
{
    run("a.own = 5 function a.add(x) return x + a.own end");

    run("assert(a.add(2) == 7)");
}

TEST_F(NamespaceTest, InnerNamespaceIsAFieldOfTheOuterOne)
{
    Namespace* const inner = scope().setNamespace("b");

    ASSERT_NE(inner, nullptr);
    inner->setVar("v", 5);
    run("assert(a.b.v == 5)");
}

TEST_F(NamespaceTest, InnerNamespaceIsNoGlobal)
{
    scope().setNamespace("b");

    EXPECT_FALSE(environment().isVarSet("b"));
    EXPECT_FALSE(environment().isVarSet("a::b"));
}

TEST_F(NamespaceTest, InnerNamespaceKnowsItsShortName)
{
    Namespace* const inner = scope().setNamespace("b");

    EXPECT_EQ(inner->getName(), "b");
}

TEST_F(NamespaceTest, InnerNamespacesOfOneNameAreApart)
{
    Namespace* const ofA = scope().setNamespace("inner");
    Namespace* const ofB = environment().setNamespace("b")->setNamespace("inner");

    ofA->setVar("v", 1);
    ofB->setVar("v", 2);

    EXPECT_NE(ofA, ofB);
    run("assert(a.inner.v == 1 and b.inner.v == 2)");
}

TEST_F(NamespaceTest, DeclaredNamespaceIsFound)
{
    Namespace* const inner = scope().setNamespace("b");

    EXPECT_EQ(scope().getNamespace("b"), inner);
}

TEST_F(NamespaceTest, UnknownNamespaceIsNotFound)
{
    scope().setUserType("T");
    run("a.table = {}");

    EXPECT_EQ(scope().getNamespace("T"), nullptr);
    EXPECT_EQ(scope().getNamespace("table"), nullptr);
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(NamespaceTest, LookingForANamespaceDeclaresNothing)
{
    scope().getNamespace("b");
    scope().getUserType("T");

    run("assert(next(a) == nil)");
    EXPECT_EQ(scope().getNamespace("b"), nullptr);
    EXPECT_EQ(scope().getUserType("T"), nullptr);
}

TEST_F(NamespaceTest, NamesAreCaseSensitive)
{
    scope().setNamespace("b");
    scope().setUserType("T");

    EXPECT_EQ(scope().getNamespace("B"), nullptr);
    EXPECT_EQ(scope().getUserType("t"), nullptr);
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
    run("assert(type(a['']) == 'table')");
}

TEST_F(NamespaceTest, NameEndsAtItsFirstNulForScripts)
{
    Namespace* const inner = scope().setNamespace(tbMemory::StringView("b\0c", 3));

    EXPECT_EQ(scope().getNamespace("b"), nullptr);
    EXPECT_EQ(scope().getNamespace(tbMemory::StringView("b\0c", 3)), inner);
    run("assert(type(a.b) == 'table')");
}

TEST_F(NamespaceTest, UserTypeIsAFieldUnderItsName)
{
    makeCounted(scope().setUserType("T"));

    run("local t = a.T.new() assert(type(t) == 'userdata' and getmetatable(t) == a.T)");
}

TEST_F(NamespaceTest, UserTypeHasTheNamesOfAllNamespacesBeforeItsOwn)
{
    UserType* const type = scope().setNamespace("b")->setUserType("c");

    EXPECT_EQ(type->getName(), "c");
    EXPECT_EQ(type->getFullName(), "a::b::c");
}

TEST_F(NamespaceTest, InstancesHaveTheFullNameOfTheirType)
{
    scope().setNamespace("b")->setUserType("c");
    int object = 0;

    environment().setObject("instance", "a::b::c", &object);

    EXPECT_EQ(environment().getObject("instance", "a::b::c"), &object);
    EXPECT_EQ(environment().getObject("instance", "c"), nullptr);
    run("assert(getmetatable(instance) == a.b.c)");
}

TEST_F(NamespaceTest, DeclaredUserTypeIsFound)
{
    UserType* const type = scope().setUserType("T");

    EXPECT_EQ(scope().getUserType("T"), type);
}

TEST_F(NamespaceTest, UnknownUserTypeIsNotFound)
{
    scope().setNamespace("b");

    EXPECT_EQ(scope().getUserType("b"), nullptr);
    EXPECT_EQ(environment().getUserType("T"), nullptr);
}

TEST_F(NamespaceTest, FunctionIsAFieldUnderItsName)
{
    Function* const function = scope().setFunction("f");

    ASSERT_NE(function, nullptr);
    EXPECT_EQ(function->getName(), "f");
    run("assert(type(a.f) == 'function')");
}

TEST_F(NamespaceTest, FunctionIsNoFunctionOfTheEnvironment)
{
    scope().setFunction("f");

    EXPECT_FALSE(environment().isVarSet("f"));
    EXPECT_FALSE(environment().isFuncSet("f"));
    EXPECT_FALSE(environment().isFuncSet("a::f"));
}

TEST_F(NamespaceTest, FunctionGetsItsArgumentsAndGivesItsResult)
{
    Function* const function = scope().setFunction("twice");
    function->addParameter(PARAM_TYPE_INT);

    function->setFunction([](const Parameters& parameters)
                          { return FunctionParameter(parameters[0].getInt() * 2); });

    run("assert(a.twice(21) == 42)");
}

TEST_F(NamespaceTest, NewFunctionIsUnbound)
{
    scope().setFunction("f");

    run("assert(a.f() == nil)");

    EXPECT_THAT(
        m_log.takeEntries(),
        ::testing::ElementsAre(LogEntry{
            "Function 'f' called but no user function is bound. Call having no effect.",
            "Function"}));
}

TEST_F(NamespaceTest, MismatchNamesTheFunctionByItsShortName)
{
    scope().setFunction("f")->addParameter(PARAM_TYPE_INT);

    const std::string message = runExpectingError("a.f({})");

    EXPECT_EQ(
        message,
        "Error while executing script 'test' : "
        "Error l.1 while calling f. Expected int, got table.");
}

TEST_F(NamespaceTest, FunctionsOfOneNameAreApart)
{
    bindAnswer(environment().setFunc("f"), 1);
    bindAnswer(scope().setFunction("f"), 2);
    bindAnswer(scope().setNamespace("b")->setFunction("f"), 3);

    run("assert(f() == 1 and a.f() == 2 and a.b.f() == 3)");
}

TEST_F(NamespaceTest, FunctionNamespaceAndUserTypeMayHaveOneName)
{
    Namespace* const inner = scope().setNamespace("x");
    UserType* const type = scope().setUserType("x");

    scope().setFunction("x");

    EXPECT_EQ(scope().getNamespace("x"), inner);
    EXPECT_EQ(scope().getUserType("x"), type);
    run("assert(type(a.x) == 'function')");
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(NamespaceTest, ThousandThingsKeepTheirPointers)
{
    std::vector<Namespace*> inner;
    for (int i = 0; i < 1000; ++i)
    {
        inner.push_back(scope().setNamespace("n" + std::to_string(i)));
        bindAnswer(scope().setFunction("f" + std::to_string(i)), i);
    }

    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(
            scope().getNamespace("n" + std::to_string(i)), inner.at(static_cast<std::size_t>(i)));
    run("for i = 0, 999 do assert(a['f' .. i]() == i and a['n' .. i]) end");
}

TEST_F(NamespaceTest, FiftyNamespacesMayLieInEachOther)
{
    Namespace* innermost = &scope();
    for (int i = 0; i < 50; ++i)
        innermost = innermost->setNamespace("n");

    UserType* const type = innermost->setUserType("T");

    std::string fullName = "a";
    for (int i = 0; i < 50; ++i)
        fullName += "::n";
    EXPECT_EQ(type->getFullName(), fullName + "::T");
    run("local inner = a for i = 1, 50 do inner = inner.n end assert(inner.T and not inner.n)");
}

TEST_F(NamespaceTest, MetamethodsOfItsTableRunAsItIsFilled)
{
    run("seen = {} local seen, type, rawset = seen, type, rawset"
        " setmetatable(a, {__newindex = function(t, k, v) seen[k] = type(v) rawset(t, k, v) end})");

    scope().setFunction("f");
    scope().setNamespace("b");
    scope().setUserType("T");
    scope().setVar("v", 5);

    run("assert(seen.f == 'function' and seen.b == 'table' and seen.T == 'table')"
        " assert(seen.v == 'number')");
}

namespace
{

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

TEST_F(NamespaceTest, CopyHasTheName)
{
    const NotingNamespace first("first");

    const NotingNamespace copy(first); // NOLINT(performance-unnecessary-copy-initialization)

    EXPECT_EQ(copy.getName(), "first");
}

TEST_F(NamespaceTest, AssignmentTakesTheNameOver)
{
    const NotingNamespace first("first");
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
}

TEST_F(NamespaceTest, NullTextIsSetAsANullView)
{
    NotingNamespace noting("n");

    noting.setVar("v", static_cast<const char*>(nullptr));

    EXPECT_EQ(noting.m_noted, "v=null");
}

} // namespace tbScripts::test

// Names that are declared more than once in a namespace, and names that cannot be declared.

#include "support/NamespaceSteps.h"
#include "support/RowName.h"

namespace tbScripts::test
{

using NamespaceDeclarationTest = NamespaceFixture;

TEST_F(NamespaceDeclarationTest, RepeatedNamespaceKeepsItsContents)
{
    Namespace* const inner = scope().setNamespace("x");
    inner->setVar("v", 5);
    bindAnswer(inner->setFunction("f"), 42);
    UserType* const type = inner->setUserType("T");
    Namespace* const innermost = inner->setNamespace("n");

    scope().setNamespace("x");

    run("assert(a.x.v == 5 and a.x.f() == 42 and a.x.T and a.x.n)");
    EXPECT_EQ(inner->getUserType("T"), type);
    EXPECT_EQ(inner->getNamespace("n"), innermost);
    forgetLog();
}

TEST_F(NamespaceDeclarationTest, RepeatedUserTypeHasNoMethodsAnyMore)
{
    UserType* const type = scope().setUserType("x");
    bindAnswer(type->setStaticMethod("give"), 42);
    type->setMethod("act", false);

    scope().setUserType("x");

    EXPECT_EQ(type->getMethod("act"), nullptr);
    EXPECT_EQ(type->getStaticMethod("give"), nullptr);
    run("assert(rawget(a.x, 'act') == nil and rawget(a.x, 'give') == nil)");
    forgetLog();
}

TEST_F(NamespaceDeclarationTest, RepeatedUserTypeHasNoFieldsAnyMore)
{
    UserType* const type = scope().setUserType("x");
    makeCounted(type);
    int written = 0;
    UserTypeFieldDescriptor field;
    field.name = "field";
    field.type = PARAM_TYPE_INT;
    field.getter = [](void*) { return FunctionParameter(42); };
    field.setter = [&written](const Parameters&) { ++written; };
    type->setField(field);
    run("t = a.x.new() assert(t.field == 42) t.field = 1");

    scope().setUserType("x");

    run("assert(t.field == nil) t.field = 2");
    EXPECT_EQ(written, 1);
    forgetLog();
}

TEST_F(NamespaceDeclarationTest, RepeatedFunctionHasNoParametersAnyMore)
{
    scope().setFunction("x")->addParameter(PARAM_TYPE_INT);
    std::vector<std::string> calls;
    scope().setFunction("x")->setFunction(recording(calls));
    run("a.x('no number')");
    EXPECT_THAT(calls, ::testing::ElementsAre(""));
    forgetLog();
}

namespace
{

const Facts<NamespaceDeclarationTest> FACTS(
    "NamespaceDeclarationTest",
    {
        {"RepeatedUserTypeKeepsConstructorAndDestructor",
         {countedType("a.x"),
          userType("a.x"),
          run("t = a.x.new()"),
          living(1),
          run("t = nil collectgarbage()"),
          living(0),
          logsCount(1)}},
        {"RepeatedFunctionIsUnbound",
         {answering("a.x", 42),
          unboundFunction("a.x"),
          forgetLog(),
          is("a.x()", "nil"),
          logs(
              "Function 'x' called but no user function is bound. Call having no effect.",
              "Function")}},
        {"WarningNamesTheNamespaceByItsShortName",
         {space("a.b"),
          space("a.b.x"),
          space("a.b.x"),
          logs(
              "Setting namespace 'x' in namespace 'b', but this namespace is already registered. "
              "State will be changed, but this might hold unexpected results",
              "LuaNamespace")}},
    });

/// One of the three things that a namespace declares. Returns what it got.
struct DeclarationRow
{
    const char* row;
    void* (*declare)(Namespace& scope, const char* name);
    const char* repeated; // what is logged about "x"
};

const std::vector<DeclarationRow> DECLARATIONS{
    {"Namespace",
     [](Namespace& scope, const char* name) -> void* { return scope.setNamespace(name); },
     "Setting namespace 'x' in namespace 'a', but this namespace is already registered. State will "
     "be changed, but this might hold unexpected results"},
    {"UserType",
     [](Namespace& scope, const char* name) -> void* { return scope.setUserType(name); },
     "Setting user type 'x' in namespace 'a', but this type is already registered. State will be "
     "changed, but this might hold unexpected results"},
    {"Function",
     [](Namespace& scope, const char* name) -> void* { return scope.setFunction(name); },
     "Setting function 'x' in namespace 'a', but this function is already registered. State will "
     "be "
     "changed, but this might hold unexpected results"}};

} // namespace

class NamespaceAnyDeclarationTest : public OnRows<NamespaceFixture, DeclarationRow>
{
protected:
    void* declareIt() { return GetParam().declare(scope(), "x"); }

    void isPublished() { run("assert(type(a.x) == 'table' or type(a.x) == 'function')"); }
};

ROWS(NamespaceAnyDeclarationTest, DECLARATIONS);

TEST_P(NamespaceAnyDeclarationTest, IsSilentTheFirstTimeAndReplacesWhatAScriptPutThere)
{
    run("a.x = 5");
    EXPECT_NE(declareIt(), nullptr);
    expectLogged({});
    isPublished();
}

TEST_P(NamespaceAnyDeclarationTest, IsTheSameWithAWarningWhenItIsRepeated)
{
    void* const first = declareIt();
    EXPECT_EQ(declareIt(), first);
    expectLogged(GetParam().repeated, "LuaNamespace");
}

// Only a change of interpreter publishes again.
TEST_P(NamespaceAnyDeclarationTest, KeepsAScriptsOwnValueWhenItIsRepeated)
{
    for (const char* const value : {"5", "nil"})
    {
        declareIt();
        forgetLog();
        run(std::string("a.x = ") + value);
        declareIt();
        is("a.x", value);
        expectLogCount(1);
    }
}

TEST_P(NamespaceAnyDeclarationTest, IsNullAndLoggedIfTheFieldIsRefused)
{
    run("setmetatable(a, {__newindex = function() error('closed', 0) end})");
    EXPECT_EQ(declareIt(), nullptr);
    EXPECT_EQ(scope().getNamespace("x"), nullptr);
    EXPECT_EQ(scope().getUserType("x"), nullptr);
    expectLogged("closed", "LuaEnvironment");
}

// What was refused counts as never declared: there are no null entries here.
TEST_P(NamespaceAnyDeclarationTest, WorksInSilenceAfterARefusal)
{
    run("setmetatable(a, {__newindex = function() error('closed', 0) end})");
    declareIt();
    run("setmetatable(a, nil)");
    forgetLog();
    EXPECT_NE(declareIt(), nullptr);
    expectLogged({});
    isPublished();
}

TEST_P(NamespaceAnyDeclarationTest, DoesNotReadTheFieldThroughMetamethods)
{
    run("setmetatable(a, {__index = function() error('strict', 0) end})");
    EXPECT_NE(declareIt(), nullptr);
}

TEST_P(NamespaceAnyDeclarationTest, WorksFromInsideAHostFunctionAndACoroutine)
{
    for (const char* const code : {"act()", "coroutine.wrap(act)() collectgarbage()"})
    {
        void* declared = nullptr;
        declareAction("act", [&] { declared = declareIt(); });
        run(std::string(code) + " assert(a.x ~= nil)");
        EXPECT_NE(declared, nullptr);
        scope().release();
        forgetLog(); // that `act` was declared already
    }
}

// The one that was declared by the nested call is what the name stands for.
TEST_P(NamespaceAnyDeclarationTest, MayBeNestedInItselfByAMetamethod)
{
    void* nested = nullptr;
    declareAction(
        "act",
        [&]
        {
            if (!nested)
                nested = declareIt();
        });
    run("local rawset, act = rawset, act "
        "setmetatable(a, {__newindex = function(t, k, v) rawset(t, k, v) act() end})");
    EXPECT_EQ(declareIt(), nested);
    run("assert(a.x ~= nil) setmetatable(a, nil)");
}

} // namespace tbScripts::test

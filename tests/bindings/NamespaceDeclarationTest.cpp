// Names that are declared more than once in a namespace, and names that cannot be declared.

#include "support/CountedObject.h"
#include "support/NamespaceFixture.h"
#include "support/RowName.h"

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{

constexpr const char* NAMESPACE_ALREADY_REGISTERED =
    "Setting namespace 'x' in namespace 'a', but this namespace is already registered. State will "
    "be changed, but this might hold unexpected results";
constexpr const char* USER_TYPE_ALREADY_REGISTERED =
    "Setting user type 'x' in namespace 'a', but this type is already registered. State will be "
    "changed, but this might hold unexpected results";
constexpr const char* FUNCTION_ALREADY_REGISTERED =
    "Setting function 'x' in namespace 'a', but this function is already registered. State will be "
    "changed, but this might hold unexpected results";

} // namespace

class NamespaceDeclarationTest : public NamespaceFixture
{
};

TEST_F(NamespaceDeclarationTest, RepeatedNamespaceIsTheSameWithAWarning)
{
    Namespace* const first = scope().setNamespace("x");

    Namespace* const second = scope().setNamespace("x");

    EXPECT_EQ(first, second);
    EXPECT_THAT(
        m_log.takeEntries(), ElementsAre(LogEntry{NAMESPACE_ALREADY_REGISTERED, "LuaNamespace"}));
}

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
    m_log.takeEntries();
}

TEST_F(NamespaceDeclarationTest, RepeatedUserTypeIsTheSameWithAWarning)
{
    UserType* const first = scope().setUserType("x");

    UserType* const second = scope().setUserType("x");

    EXPECT_EQ(first, second);
    EXPECT_THAT(
        m_log.takeEntries(), ElementsAre(LogEntry{USER_TYPE_ALREADY_REGISTERED, "LuaNamespace"}));
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
    m_log.takeEntries();
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
    m_log.takeEntries();
}

TEST_F(NamespaceDeclarationTest, RepeatedUserTypeKeepsConstructorAndDestructor)
{
    makeCounted(scope().setUserType("x"));

    scope().setUserType("x");

    run("a.x.new() collectgarbage()");
    EXPECT_EQ(CountedObject::getMade(), 1);
    EXPECT_EQ(CountedObject::getLiving(), 0);
    m_log.takeEntries();
}

TEST_F(NamespaceDeclarationTest, RepeatedFunctionIsTheSameWithAWarning)
{
    Function* const first = scope().setFunction("x");

    Function* const second = scope().setFunction("x");

    EXPECT_EQ(first, second);
    EXPECT_THAT(
        m_log.takeEntries(), ElementsAre(LogEntry{FUNCTION_ALREADY_REGISTERED, "LuaNamespace"}));
}

TEST_F(NamespaceDeclarationTest, RepeatedFunctionHasNoParametersAnyMore)
{
    scope().setFunction("x")->addParameter(PARAM_TYPE_INT);
    std::size_t seen = 99;

    scope().setFunction("x")->setFunction(
        [&seen](const Parameters& parameters)
        {
            seen = parameters.size();
            return FunctionParameter::VOID;
        });

    run("a.x('no number')");
    EXPECT_EQ(seen, 0U);
    m_log.takeEntries();
}

TEST_F(NamespaceDeclarationTest, RepeatedFunctionIsUnbound)
{
    bindAnswer(scope().setFunction("x"), 42);

    scope().setFunction("x");

    run("assert(a.x() == nil)");
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(
            LogEntry{FUNCTION_ALREADY_REGISTERED, "LuaNamespace"},
            LogEntry{
                "Function 'x' called but no user function is bound. Call having no effect.",
                "Function"}));
}

TEST_F(NamespaceDeclarationTest, WarningNamesTheNamespaceByItsShortName)
{
    Namespace* const inner = scope().setNamespace("b");
    inner->setNamespace("x");

    inner->setNamespace("x");

    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Setting namespace 'x' in namespace 'b', but this namespace is already registered. "
            "State will be changed, but this might hold unexpected results",
            "LuaNamespace"}));
}

namespace
{

/// One of the three things that a namespace declares. Returns what it got.
struct DeclarationRow
{
    const char* row;
    void* (*declare)(Namespace& scope, const char* name);
};

std::ostream& operator<<(std::ostream& stream, const DeclarationRow& row)
{
    return stream << row.row;
}

const std::vector<DeclarationRow>& allDeclarations()
{
    static const std::vector<DeclarationRow> rows{
        {"Namespace",
         [](Namespace& scope, const char* name) -> void* { return scope.setNamespace(name); }},
        {"UserType",
         [](Namespace& scope, const char* name) -> void* { return scope.setUserType(name); }},
        {"Function",
         [](Namespace& scope, const char* name) -> void* { return scope.setFunction(name); }}};
    return rows;
}

} // namespace

class NamespaceAnyDeclarationTest : public NamespaceFixture,
                                    public ::testing::WithParamInterface<DeclarationRow>
{
};

INSTANTIATE_TEST_SUITE_P(
    Declarations, NamespaceAnyDeclarationTest, ::testing::ValuesIn(allDeclarations()), RowName());

TEST_P(NamespaceAnyDeclarationTest, IsSilentTheFirstTime)
{
    EXPECT_NE(GetParam().declare(scope(), "x"), nullptr);

    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_P(NamespaceAnyDeclarationTest, ReplacesWhatAScriptPutThere)
{
    run("a.x = 5");

    GetParam().declare(scope(), "x");

    run("assert(type(a.x) == 'table' or type(a.x) == 'function')");
}

// Only a change of interpreter publishes again.
TEST_P(NamespaceAnyDeclarationTest, KeepsAScriptsOwnValueWhenItIsRepeated)
{
    GetParam().declare(scope(), "x");
    run("a.x = 5");

    GetParam().declare(scope(), "x");

    run("assert(a.x == 5)");
    EXPECT_EQ(m_log.takeEntries().size(), 1U);
}

TEST_P(NamespaceAnyDeclarationTest, LeavesARemovedFieldRemovedWhenItIsRepeated)
{
    GetParam().declare(scope(), "x");
    run("a.x = nil");

    GetParam().declare(scope(), "x");

    run("assert(a.x == nil)");
    EXPECT_EQ(m_log.takeEntries().size(), 1U);
}

TEST_P(NamespaceAnyDeclarationTest, IsNullAndLoggedIfTheFieldIsRefused)
{
    run("setmetatable(a, {__newindex = function() error('closed', 0) end})");

    void* const declared = GetParam().declare(scope(), "x");

    EXPECT_EQ(declared, nullptr);
    EXPECT_EQ(scope().getNamespace("x"), nullptr);
    EXPECT_EQ(scope().getUserType("x"), nullptr);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{"closed", "LuaEnvironment"}));
}

// What was refused counts as never declared: there are no null entries here.
TEST_P(NamespaceAnyDeclarationTest, WorksInSilenceAfterARefusal)
{
    run("setmetatable(a, {__newindex = function() error('closed', 0) end})");
    GetParam().declare(scope(), "x");
    run("setmetatable(a, nil)");
    m_log.takeEntries();

    void* const declared = GetParam().declare(scope(), "x");

    EXPECT_NE(declared, nullptr);
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
    run("assert(type(a.x) == 'table' or type(a.x) == 'function')");
}

TEST_P(NamespaceAnyDeclarationTest, DoesNotReadTheFieldThroughMetamethods)
{
    run("setmetatable(a, {__index = function() error('strict', 0) end})");

    EXPECT_NE(GetParam().declare(scope(), "x"), nullptr);

    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_P(NamespaceAnyDeclarationTest, WorksFromInsideAHostFunction)
{
    void* declared = nullptr;
    declareAction("act", [&] { declared = GetParam().declare(scope(), "x"); });

    run("act() assert(a.x ~= nil)");

    EXPECT_NE(declared, nullptr);
}

TEST_P(NamespaceAnyDeclarationTest, WorksFromInsideACoroutine)
{
    void* declared = nullptr;
    declareAction("act", [&] { declared = GetParam().declare(scope(), "x"); });

    run("coroutine.wrap(act)() collectgarbage() assert(a.x ~= nil)");

    EXPECT_NE(declared, nullptr);
}

// The one that was declared meanwhile is what the name stands for.
TEST_P(NamespaceAnyDeclarationTest, MayBeMadeByAMetamethodOfTheSameDeclaration)
{
    void* meanwhile = nullptr;
    declareAction(
        "act",
        [&]
        {
            if (!meanwhile)
                meanwhile = GetParam().declare(scope(), "x");
        });
    run("local rawset, act = rawset, act "
        "setmetatable(a, {__newindex = function(t, k, v) rawset(t, k, v) act() end})");

    void* const declared = GetParam().declare(scope(), "x");

    EXPECT_EQ(declared, meanwhile);
    run("assert(a.x ~= nil) setmetatable(a, nil)");
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

} // namespace tbScripts::test

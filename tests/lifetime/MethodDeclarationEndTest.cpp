// User types and namespaces that go while something is declared in them, and those that are of
// another interpreter than what they are in.

#include "support/Farewell.h"
#include "support/NamespaceFixture.h"
#include "support/ReactingLogger.h"
#include "support/RowName.h"

#include <string>
#include <tuple>
#include <vector>

namespace tbScripts::test
{

namespace
{

struct MethodKind
{
    const char* row;
    Function* (*declare)(UserType& type);
};

struct Ending
{
    const char* row;
    void (*perform)(Environment& environment);
};

const std::vector<MethodKind> KINDS = {
    {"Method", [](UserType& type) { return type.setMethod("m", false); }},
    {"MethodOfAnOwnedInstance", [](UserType& type) { return type.setMethod("m", true); }},
    {"StaticMethod", [](UserType& type) { return type.setStaticMethod("m"); }},
    {"UnaryOperator", [](UserType& type) { return type.setOperator(BUILT_IN_FUNCTION::UNM); }},
    {"BinaryOperator", [](UserType& type) { return type.setOperator(BUILT_IN_FUNCTION::ADD); }}};

const Ending ENDINGS[] = {
    {"Release", [](Environment& environment) { environment.getNamespace("a::b")->release(); }},
    {"ReleaseOfTheParent",
     [](Environment& environment) { environment.getNamespace("a")->release(); }},
    {"Clear", [](Environment& environment) { environment.getUserType("a::b::T")->clear(); }}};

} // namespace

class MethodDeclarationFixture : public NamespaceFixture
{
protected:
    MethodDeclarationFixture()
        : m_type(environment().setUserType("a::b::T"))
    {
    }

    void TearDown() override
    {
        destroyEnvironment();
        forgetLog(); // of what was declared again
        NamespaceFixture::TearDown();
    }

    UserType* m_type; // good until it has ended
};

using MethodDeclarationEndTest = OnRows<MethodDeclarationFixture, MethodKind>;

ROWS(MethodDeclarationEndTest, KINDS);

TEST_P(MethodDeclarationEndTest, GivesNullIfTheLogReceiverDestroysTheEnvironment)
{
    GetParam().declare(*m_type);
    ReactingLogger receiver([this] { destroyEnvironment(); });
    EXPECT_EQ(GetParam().declare(*m_type), nullptr);
}

TEST_P(MethodDeclarationEndTest, GivesNullIfTheEndOfTheEarlierOneDestroysTheEnvironment)
{
    bindHolding(GetParam().declare(*m_type), makeFarewell([this] { destroyEnvironment(); }));
    EXPECT_EQ(GetParam().declare(*m_type), nullptr);
}

TEST_P(MethodDeclarationEndTest, GivesNullIfAMetamethodDestroysTheEnvironment)
{
    declareAction("quit", [this] { destroyEnvironment(); });
    run("local rawset, quit = rawset, quit setmetatable(a.b.T, "
        "{__newindex = function(t, k, v) rawset(t, k, v) quit() end})");
    EXPECT_EQ(GetParam().declare(*m_type), nullptr);
}

// The type of another namespace waits for the end of the declaration; its constructor goes with it,
// and takes the namespace of the declared method along.
TEST_P(MethodDeclarationEndTest, GivesNullIfWhatWaitedReleasesTheNamespace)
{
    environment()
        .setUserType("other::T")
        ->setConstructor(
            [farewell = makeFarewell([this] { scope().release(); })](const Parameters&) -> void*
            { return nullptr; });
    bindHolding(
        GetParam().declare(*m_type),
        makeFarewell(
            [this]
            {
                environment().getNamespace("other")->release();
                collect();
            }));

    EXPECT_EQ(GetParam().declare(*m_type), nullptr);
    EXPECT_EQ(environment().getUserType("a::b::T"), nullptr);
}

using MethodDeclarationReleaseTest =
    OnValues<MethodDeclarationFixture, std::tuple<MethodKind, Ending>>;

INSTANTIATE_TEST_SUITE_P(
    Kinds,
    MethodDeclarationReleaseTest,
    ::testing::Combine(::testing::ValuesIn(KINDS), ::testing::ValuesIn(ENDINGS)),
    [](const auto& row)
    { return std::string(std::get<0>(row.param).row) + "Under" + std::get<1>(row.param).row; });

TEST_P(MethodDeclarationReleaseTest, GivesNullIfTheEndOfTheEarlierOneTakesIt)
{
    const auto& [kind, ending] = GetParam();
    const auto perform = ending.perform;
    bindHolding(kind.declare(*m_type), makeFarewell([this, perform] { perform(environment()); }));
    EXPECT_EQ(kind.declare(*m_type), nullptr);
}

using FunctionDeclarationEndTest = NamespaceFixture;

TEST_F(FunctionDeclarationEndTest, GivesNullIfWhatWaitedReleasesTheNamespace)
{
    environment()
        .setUserType("other::T")
        ->setConstructor(
            [farewell = makeFarewell([this] { scope().release(); })](const Parameters&) -> void*
            { return nullptr; });
    bindHolding(
        scope().setFunction("f"),
        makeFarewell(
            [this]
            {
                environment().getNamespace("other")->release();
                collect();
            }));

    EXPECT_EQ(scope().setFunction("f"), nullptr);
    forgetLog(); // that it was declared already
}

using EndingUserTypeTest = NamespaceFixture;

TEST_F(EndingUserTypeTest, DeclaresNothingMore)
{
    UserType* const type = environment().setUserType("a::T");
    Function* last = type->setMethod("m", false);
    const auto declareLast = [&last, type] { last = type->setMethod("last", false); };
    bindHolding(
        last,
        makeFarewell([declareLast, type]
                     { bindHolding(type->setMethod("again", false), makeFarewell(declareLast)); }));

    scope().release();

    EXPECT_EQ(last, nullptr);
    expectLogged({});
}

/// A namespace of the interpreter of one copy, inside of one that went over to that of another.
class NamespaceOfTwoInterpretersTest : public NamespaceFixture
{
protected:
    NamespaceOfTwoInterpretersTest()
        : m_inner(environment().setNamespace("a::b"))
        , m_copy(environment())
    {
        restart();
        environment().setNamespace("a");
        forgetLog(); // that it was declared already
    }

    Namespace* m_inner;
    Environment m_copy;
};

TEST_F(NamespaceOfTwoInterpretersTest, StaysWhileAnOperationOfItRuns)
{
    m_copy.setFunc("act")->setFunction(doing([this] { scope().release(); }));
    m_inner->setNamespace("c")->setVar("v", 1);
    ASSERT_TRUE(runScript(m_copy, "getmetatable(newproxy(true)).__gc = act"));

    m_inner->release();

    forgetLog(); // that it cannot leave the table of the one that went over
    EXPECT_EQ(environment().getNamespace("a::b"), nullptr);
}

TEST_F(NamespaceOfTwoInterpretersTest, MayLoseTheEnvironmentThatItGoesOverTo)
{
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);
    ReactingLogger receiver([this, &other] { environment() = other; });

    EXPECT_EQ(environment().setUserType("a::b::T"), nullptr);
    EXPECT_THAT(
        receiver.takeEntries(),
        ::testing::Contains(LogEntry{"attempt to index a nil value", "LuaEnvironment"}));
}

} // namespace tbScripts::test

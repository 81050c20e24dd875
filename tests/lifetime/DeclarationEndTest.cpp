// Environments that end, and namespaces that are released, while something is declared in them.

#include "support/Farewell.h"
#include "support/NamespaceFixture.h"
#include "support/ReactingLogger.h"
#include "support/RowName.h"

#include <string>

namespace tbScripts::test
{

namespace
{

/// A declaration in an environment; says whether it gives something.
struct DeclarationRow
{
    const char* row;
    bool (*declare)(Environment& environment);
};

const std::vector<DeclarationRow>& allDeclarations()
{
    static const std::vector<DeclarationRow> rows{
        {"UserType",
         [](Environment& environment) { return environment.setUserType("x") != nullptr; }},
        {"Namespace",
         [](Environment& environment) { return environment.setNamespace("x") != nullptr; }},
        {"QualifiedUserType",
         [](Environment& environment) { return environment.setUserType("x::y::T") != nullptr; }},
        {"QualifiedNamespace",
         [](Environment& environment) { return environment.setNamespace("x::y::z") != nullptr; }}};
    return rows;
}

} // namespace

class DeclarationEndTest : public OnRows<NamespaceFixture, DeclarationRow>
{
protected:
    DeclarationEndTest()
    {
        declareAction("quit", [this] { destroyEnvironment(); });
    }

    void TearDown() override
    {
        destroyEnvironment();
        forgetLog(); // of what was declared again
        NamespaceFixture::TearDown();
    }

    // Has the global function "act" called when field `name` of a new namespace is set.
    void actWhenSetting(const std::string& name)
    {
        run("local rawset, setmetatable, type, act = rawset, setmetatable, type, act "
            "local watch = {} "
            "watch.__newindex = function(t, k, v) "
            "    rawset(t, k, v) "
            "    if type(v) == 'table' then setmetatable(v, watch) end "
            "    if k == '" +
            name +
            "' then act() end "
            "end "
            "setmetatable(_G, watch)");
    }
};

ROWS(DeclarationEndTest, allDeclarations());

TEST_P(DeclarationEndTest, GivesNullIfAMetamethodDestroysTheEnvironment)
{
    run("local rawset, quit = rawset, quit "
        "setmetatable(_G, {__newindex = function(t, k, v) rawset(t, k, v) quit() end})");
    EXPECT_FALSE(GetParam().declare(environment()));
}

TEST_P(DeclarationEndTest, GivesNullIfTheLogReceiverDestroysTheEnvironment)
{
    GetParam().declare(environment());
    ReactingLogger receiver([this] { destroyEnvironment(); });
    EXPECT_FALSE(GetParam().declare(environment()));
}

TEST_P(DeclarationEndTest, GivesNullIfAMessageOfARefusalDestroysTheEnvironment)
{
    run("setmetatable(_G, {__newindex = function() error('strict', 0) end})");
    ReactingLogger receiver([this] { destroyEnvironment(); });
    EXPECT_FALSE(GetParam().declare(environment()));
}

TEST_P(DeclarationEndTest, GivesNullIfAMetamethodOfTheNextInterpreterDestroysTheEnvironment)
{
    GetParam().declare(environment());
    restart();
    declareAction("quit", [this] { destroyEnvironment(); });
    run("local rawset, quit = rawset, quit "
        "setmetatable(_G, {__newindex = function(t, k, v) rawset(t, k, v) quit() end})");
    EXPECT_FALSE(GetParam().declare(environment()));
}

TEST_P(DeclarationEndTest, GivesNullInsideAScriptThatQuitsMeanwhile)
{
    bool isGiven = true;
    declareAction("declareAll", [this, &isGiven] { isGiven = GetParam().declare(environment()); });
    run("local rawset, quit = rawset, quit "
        "setmetatable(_G, {__newindex = function(t, k, v) rawset(t, k, v) quit() end})");
    runScript(environment(), "declareAll()");
    EXPECT_FALSE(isGiven);
}

// The namespaces on the way are released while those inside are made or installed.

TEST_P(DeclarationEndTest, SurvivesThatTheWayIsReleasedMeanwhile)
{
    Namespace* outer = environment().setNamespace("x");
    declareAction("act", [&outer] { outer->release(); });
    actWhenSetting("y");
    run("setmetatable(x, getmetatable(_G))");
    GetParam().declare(environment());
    EXPECT_EQ(environment().getNamespace("x"), outer);
}

TEST_P(DeclarationEndTest, SurvivesThatAnInertWayIsReleasedMeanwhile)
{
    Namespace* outer = environment().setNamespace("x");
    environment().setNamespace("x::y::z");
    restart();
    declareAction("act", [&outer] { outer->release(); });
    actWhenSetting("y");

    GetParam().declare(environment());

    EXPECT_EQ(environment().getNamespace("x"), outer);
}

using RepeatedTypeEndTest = NamespaceFixture;

TEST_F(RepeatedTypeEndTest, GivesNullIfTheEndOfAMethodDestroysTheEnvironment)
{
    bindHolding(
        environment().setUserType("T")->setMethod("m", false),
        makeFarewell([this] { destroyEnvironment(); }));
    EXPECT_EQ(environment().setUserType("T"), nullptr);
    forgetLog();
}

TEST_F(RepeatedTypeEndTest, GivesNullIfTheEndOfAnInertMethodDestroysTheEnvironment)
{
    UserType* const type = environment().setUserType("T");
    for (const char* const name : {"k", "l", "m", "n"})
        bindHolding(type->setMethod(name, false), makeFarewell([this] { destroyEnvironment(); }));
    restart();
    EXPECT_EQ(environment().setUserType("T"), nullptr);
    forgetLog();
}

TEST_F(RepeatedTypeEndTest, GivesNullIfTheEndOfAMethodInANamespaceDestroysTheEnvironment)
{
    bindHolding(
        environment().setUserType("a::b::T")->setMethod("m", false),
        makeFarewell([this] { destroyEnvironment(); }));
    EXPECT_EQ(environment().setUserType("a::b::T"), nullptr);
    forgetLog();
}

} // namespace tbScripts::test

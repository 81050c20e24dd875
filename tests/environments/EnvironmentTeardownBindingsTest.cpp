// The end of an environment, seen from the host objects behind its functions, user types and
// namespaces.

#include "support/CountedObject.h"
#include "support/Farewell.h"
#include "support/NamespaceFixture.h"
#include "support/RowName.h"

#include <tbScripts/ScriptObjectReference.h>

#include <string>
#include <vector>

namespace tbScripts::test
{

class EnvironmentTeardownBindingsTest : public NamespaceFixture
{
protected:
    // Returns something to capture that notes `name` when it goes.
    std::shared_ptr<const void> noteEnd(const std::string& name)
    {
        return makeFarewell([this, name] { m_ends.push_back(name); });
    }

    // Declares user type `name`, whose instances are texts that are noted when they are destroyed.
    UserType* declareNoting(const std::string& name)
    {
        UserType* const type = environment().setUserType(name);
        EXPECT_NE(type, nullptr);
        type->setDestructor([this](void* object)
                            { m_ends.push_back(*static_cast<std::string*>(object)); });
        return type;
    }

    std::vector<std::string> m_ends;
};

TEST_F(EnvironmentTeardownBindingsTest, GoesFromFunctionsOverGlobalsAndNamespacesToUserTypes)
{
    std::string global = "instance in a global";
    std::string inner = "instance in the namespace";
    std::string kept = "instance that the host keeps";
    bindHolding(environment().setFunc("f"), noteEnd("function"));
    bindHolding(scope().setFunction("f"), noteEnd("function in the namespace"));
    bindHolding(
        declareNoting("a::T")->setMethod("m", false), noteEnd("method of the namespace's type"));
    bindHolding(declareNoting("T")->setMethod("m", false), noteEnd("method"));
    environment().setObject("global", "T", &global);
    environment().setObject("kept", "T", &kept);
    scope().setVar("inner", "a::T", &inner);
    run("global:enableGc() kept:enableGc() a.inner:enableGc()");
    const ScriptObjectReference reference = environment().getVar("kept");

    destroyEnvironment();

    EXPECT_THAT(
        m_ends,
        ElementsAre(
            "function",
            "instance in a global",
            "function in the namespace",
            "method of the namespace's type",
            "instance in the namespace",
            "method",
            "instance that the host keeps"));
}

TEST_F(EnvironmentTeardownBindingsTest, TypesDestroyTheirInstancesUpToTheLast)
{
    makeCounted(environment().setUserType("T"));
    run("package.loaded.kept = T.new() kept = T.new() other = T.new()");
    const ScriptObjectReference reference = environment().getVar("kept");

    destroyEnvironment();

    EXPECT_EQ(CountedObject::getLiving(), 0);
    EXPECT_EQ(CountedObject::getMade(), 3);
}

TEST_F(EnvironmentTeardownBindingsTest, WhatADestructorCapturedOutlivesTheLastInstance)
{
    int object = 0;
    int livingThen = 0;
    environment().setUserType("T")->setDestructor([&livingThen, counted = CountedObject()](void*)
                                                  { livingThen = CountedObject::getLiving(); });
    environment().setObject("kept", "T", &object);
    run("kept:enableGc()");
    const ScriptObjectReference reference = environment().getVar("kept");

    destroyEnvironment();

    EXPECT_GE(livingThen, 1);
    EXPECT_EQ(CountedObject::getLiving(), 0);
}

TEST_F(EnvironmentTeardownBindingsTest, NamespacesAndTypesGoInTheOrderOfTheirDeclaration)
{
    for (const std::string name : {"x", "y", "z"})
        bindHolding(environment().setNamespace(name)->setFunction("f"), noteEnd("in " + name));
    for (const std::string name : {"X", "Y", "Z"})
        bindHolding(environment().setUserType(name)->setMethod("m", false), noteEnd("of " + name));

    destroyEnvironment();

    EXPECT_THAT(m_ends, ElementsAre("in x", "in y", "in z", "of X", "of Y", "of Z"));
}

TEST_F(EnvironmentTeardownBindingsTest, EverythingHasLeftTheRegistriesBefore)
{
    Environment& going = environment();
    bool isFound = true;
    going.setUserType("T");
    bindHolding(
        scope().setFunction("f"),
        makeFarewell(
            [&]
            {
                isFound = going.isNamespaceSet("a") || going.getNamespace("a") ||
                          going.isUserTypeSet("T") || going.getUserType("T") ||
                          going.getUserType("a::T");
            }));

    destroyEnvironment();

    EXPECT_FALSE(isFound);
}

TEST_F(EnvironmentTeardownBindingsTest, RaisingGlobalTableHoldsNothingUp)
{
    makeCounted(scope().setUserType("T"));
    run("kept = a.T.new() local error = error "
        "local function refuse() error('strict', 0) end "
        "setmetatable(_G, {__index = refuse, __newindex = refuse})");

    destroyEnvironment();

    EXPECT_EQ(CountedObject::getLiving(), 0);
    // The name of the namespace is taken out of globals that are empty by then.
    expectLogged("strict", "LuaEnvironment");
}

TEST_F(EnvironmentTeardownBindingsTest, WithoutInterpreterOnlyTheCollectionIsReported)
{
    bindHolding(scope().setFunction("f"), noteEnd("in the namespace"));
    bindHolding(environment().setUserType("T")->setMethod("m", false), noteEnd("of the type"));
    environment().setEnvironmentFor(INTERPRETER_UNKNOWN);
    environment().setNamespace("null");
    environment().setUserType("null");
    m_log.takeEntries();

    destroyEnvironment();

    EXPECT_THAT(m_ends, ElementsAre("in the namespace", "of the type"));
    expectLogged(
        "Requesting a garbage collection in environment 'world', which has no "
        "InterpreterType. This will have no effect.",
        "Environment");
}

TEST_F(EnvironmentTeardownBindingsTest, ChangeOfInterpreterKeepsWhatCallablesCaptured)
{
    bindHolding(scope().setFunction("f"), noteEnd("in the namespace"));
    bindHolding(environment().setUserType("T")->setMethod("m", false), noteEnd("of the type"));

    environment().setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_THAT(m_ends, IsEmpty());
}

namespace
{

/// Somebody who is asked while the environment goes.
struct WitnessRow
{
    const char* row;
    void (*call)(Environment& environment, Namespace& scope, const std::function<void()>& act);
};

Function::Callable holding(std::function<void()> act)
{
    return [held = makeFarewell(std::move(act))](const Parameters&)
    { return FunctionParameter::VOID; };
}

const std::vector<WitnessRow>& allWitnesses()
{
    static const std::vector<WitnessRow> rows{
        {"EndOfAFunction",
         [](Environment& environment, Namespace&, const std::function<void()>& act)
         { environment.setFunc("f")->setFunction(holding(act)); }},
        {"EndOfAFunctionInANamespace",
         [](Environment&, Namespace& scope, const std::function<void()>& act)
         { scope.setFunction("f")->setFunction(holding(act)); }},
        {"EndOfAMethod",
         [](Environment& environment, Namespace&, const std::function<void()>& act)
         { environment.setUserType("T")->setMethod("m", false)->setFunction(holding(act)); }},
        {"Destructor",
         [](Environment& environment, Namespace& scope, const std::function<void()>& act)
         {
             environment.setUserType("T")->setDestructor([act](void*) { act(); });
             environment.setObject("instance", "T", &scope);
             runScript(environment, "instance:enableGc()");
         }},
        {"DestructorInANamespace",
         [](Environment& environment, Namespace& scope, const std::function<void()>& act)
         {
             scope.setUserType("T")->setDestructor([act](void*) { act(); });
             scope.setVar("instance", "a::T", &scope);
             runScript(environment, "a.instance:enableGc()");
         }},
        {"Finaliser",
         [](Environment& environment, Namespace&, const std::function<void()>& act)
         {
             environment.setUserType("T")->setStaticMethod("act")->setFunction(
                 [act](const Parameters&)
                 {
                     act();
                     return FunctionParameter::VOID;
                 });
             runScript(
                 environment,
                 "value = newproxy(true) local act = T.act "
                 "getmetatable(value).__gc = function() act() end");
         }}};
    return rows;
}

} // namespace

using TeardownWitnessTest = OnRows<NamespaceFixture, WitnessRow>;

ROWS(TeardownWitnessTest, allWitnesses());

TEST_P(TeardownWitnessTest, DeclaresNothing)
{
    Environment& going = environment();
    Namespace& space = scope();
    std::vector<const void*> given;
    GetParam().call(
        going,
        space,
        [&]
        {
            given = {
                going.setFunc("late"),
                going.setUserType("late"),
                going.setNamespace("late"),
                going.setUserType("a::late"),
                going.setNamespace("a::late"),
                space.setFunction("late"),
                space.setUserType("late"),
                space.setNamespace("late")};
        });

    destroyEnvironment();

    EXPECT_EQ(given, std::vector<const void*>(8, nullptr));
}

TEST_P(TeardownWitnessTest, SetsNothingInANamespace)
{
    int done = 0;
    Namespace& going = scope();
    GetParam().call(
        environment(),
        going,
        [&]
        {
            going.setVar("late", 5);
            going.setVar("late", "text");
            going.setVar("late", "a::T", &going);
            going.clear();
            going.release();
            ++done;
        });
    run("local error = error setmetatable(a, {__newindex = function(t, k) "
        "if k == 'late' then error('set', 0) end end})");

    destroyEnvironment();

    EXPECT_EQ(done, 1);
}

} // namespace tbScripts::test

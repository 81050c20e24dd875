// A reference that designates nothing is nil to the interpreter.

#include "support/EnvironmentFixture.h"
#include "support/FakeScriptObjects.h"
#include "support/RowName.h"

#include <tbScripts/ScriptObjectReference.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tbScripts::test
{

namespace
{

struct EmptyReference
{
    const char* row;
    std::function<ScriptObjectReference()> make;
};

ScriptObjectReference referenceOfAnotherEnvironment()
{
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);
    runScript(other, "value = {}");
    return other.getVar("value"); // outlives its environment, too
}

} // namespace

using EmptyReferenceTest = OnRows<EnvironmentFixture, EmptyReference>;

ROWS(
    EmptyReferenceTest,
    {"Default", [] { return ScriptObjectReference(); }},
    {"ViewOnNothing", [] { return ScriptObjectReference(ScriptObjectView()); }},
    {"NotOfAnInterpreterOfOurs", [] { return ScriptObjectReference(new FakeReference()); }},
    {"OfAnEnvironmentThatIsGone", &referenceOfAnotherEnvironment});

TEST_P(EmptyReferenceTest, IsStoredAsNil)
{
    environment().setVar("value", 7);

    environment().setVar("value", GetParam().make());

    EXPECT_FALSE(environment().isVarSet("value"));
}

TEST_P(EmptyReferenceTest, IsNilAsAnInputOfAScriptCall)
{
    run("function isNil(...) return select('#', ...) == 1 and (...) == nil end");
    std::vector<FunctionParameter> outputs = {FunctionParameter(false)};

    call("isNil", {FunctionParameter(GetParam().make())}, outputs);

    EXPECT_TRUE(outputs[0].getBool());
}

TEST_P(EmptyReferenceTest, IsNilAsTheResultOfAHostFunction)
{
    const auto result = std::make_shared<ScriptObjectReference>(GetParam().make());
    declare("give", {}, [result](const Parameters&) { return FunctionParameter(*result); });

    run("count = select('#', give()) isNil = give() == nil");

    EXPECT_EQ(environment().getVar("count", -1), 1);
    EXPECT_TRUE(environment().getVar("isNil", false));
}

TEST_P(EmptyReferenceTest, CannotBeCalled)
{
    Parameters nothing;

    EXPECT_FALSE(environment().callScriptFunction(GetParam().make(), {}, nothing));

    EXPECT_EQ(environment().getLastExecutionResult().code, 5);
    expectLogged("attempt to call a nil value", "LuaEnvironment");
}

} // namespace tbScripts::test

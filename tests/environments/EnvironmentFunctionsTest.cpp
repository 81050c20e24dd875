// Host functions in the registry of an environment; what they have in common with the other kinds
// is in EnvironmentDeclarationsTest.

#include "support/CountedObject.h"
#include "support/Steps.h"

namespace tbScripts::test
{

using EnvironmentFunctionsTest = EnvironmentFixture;

TEST_F(EnvironmentFunctionsTest, RepeatedDeclarationForgetsTheParameters)
{
    declare("f", {PARAM_TYPE_INT}, uncallable());
    std::vector<std::string> calls;
    environment().setFunc("f")->setFunction(recording(calls));
    run("f('no number')");
    EXPECT_THAT(calls, ::testing::ElementsAre(""));
    forgetLog();
}

TEST_F(EnvironmentFunctionsTest, ManyFunctionsAreCalledByTheirNames)
{
    for (int i = 0; i < 1000; ++i)
        declare("f" + std::to_string(i), {}, returning(i));
    run("for i = 0, 999 do assert(_G['f' .. i]() == i) end");
}

TEST_F(EnvironmentFunctionsTest, InertFunctionCanBeChanged)
{
    Function* const function = declare("f", {}, returning(42));
    restart();
    function->reset();
    function->addParameter(PARAM_TYPE_INT);
    function->setFunction(returning(FunctionParameter::VOID));
    EXPECT_EQ(function->getName(), "f");
}

TEST_F(EnvironmentFunctionsTest, InertFunctionIsDestroyedWithTheEnvironment)
{
    CountedObject::restart();
    declare("f", {}, doing([counted = CountedObject()] {}));
    restart();
    ASSERT_EQ(CountedObject::getLiving(), 1);
    destroyEnvironment();
    EXPECT_EQ(CountedObject::getLiving(), 0);
}

namespace
{

const LogEntry REPEATED{
    "Function 'f' already existant. Resetting its state before returning it. This might break "
    "previous usage of the function.",
    "Environment"};
const LogEntry UNBOUND{
    "Function 'f' called but no user function is bound. Call having no effect.", "Function"};

// Declares the function and leaves it unbound.
Step unbound()
{
    return [](EnvironmentFixture& test) { test.environment().setFunc("f"); };
}

const Facts<EnvironmentFunctionsTest> FACTS(
    "EnvironmentFunctionsTest",
    {
        {"DeclaredFunctionCanBeCalled", {function("f", {}, returning(42)), is("f()", "42")}},
        {"RepeatedDeclarationUnbinds",
         {function("f", {}, returning(42)),
          unbound(),
          is("select('#', f())", "0"),
          logs({REPEATED, UNBOUND})}},
        {"InertFunctionDeclaredAgainIsReset",
         {function("f", {}, returning(42)),
          restart(),
          unbound(),
          is("f()", "nil"),
          logs({REPEATED, UNBOUND})}},
        {"InertFunctionDeclaredAgainCanBeCalled",
         {function("f", {}, returning(42)),
          restart(),
          function("f", {}, returning(43)),
          is("f()", "43"),
          logs({REPEATED})}},
    });

} // namespace

} // namespace tbScripts::test

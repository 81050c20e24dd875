#include "support/EnvironmentFixture.h"

#include <memory>

namespace tbScripts::test
{

using ::testing::ElementsAre;

class FunctionCopyTest : public EnvironmentFixture
{
protected:
    /// Assigns `function` to a declared one, which scripts see as `spawn`.
    void publish(const Function& function) { *environment().setFunc("spawn") = function; }
};

TEST_F(FunctionCopyTest, HasTheNameOfItsSource)
{
    auto source = std::make_unique<Function>("spawn");
    const Function copy(*source);

    source.reset();

    EXPECT_EQ(copy.getName(), "spawn");
}

TEST_F(FunctionCopyTest, HasTheParametersOfItsSource)
{
    Function source("spawn");
    source.addParameter(PARAM_TYPE_INT);
    source.addParameter(PARAM_TYPE_USER_TYPE, "Enemy");

    const Function copy(source);

    publish(copy);
    EXPECT_EQ(
        runExpectingError("spawn(1, 2)"),
        "Error while executing script 'test' : Error l.1 while calling spawn. Expected Enemy, got "
        "number.");
}

TEST_F(FunctionCopyTest, HasTheCallableOfItsSource)
{
    Function source("spawn");
    source.addParameter(PARAM_TYPE_INT);
    source.setFunction([](const Parameters& parameters) { return parameters[0].getInt() * 2; });

    const Function copy(source);

    publish(copy);
    run("result = spawn(21)");
    EXPECT_EQ(environment().getVar("result", -1), 42);
}

TEST_F(FunctionCopyTest, OwnsACallableOfItsOwn)
{
    const auto token = std::make_shared<int>(1);
    Function source("spawn");
    source.setFunction([token](const Parameters&) { return FunctionParameter::VOID; });

    const Function copy(source);

    EXPECT_EQ(token.use_count(), 3);
}

TEST_F(FunctionCopyTest, GoesItsOwnWay)
{
    Function source("spawn");
    source.addParameter(PARAM_TYPE_BOOL);
    const Function copy(source);

    source.addParameter(PARAM_TYPE_INT);
    source.setFunction([](const Parameters&) { return 1; });

    publish(copy);
    run("results = select('#', spawn())");
    EXPECT_EQ(environment().getVar("results", -1), 0);
    EXPECT_EQ(m_log.takeEntries().size(), 1U);
}

TEST_F(FunctionCopyTest, OfAnUnboundFunctionCallsTheDefaultOfItsSource)
{
    Function source("source");
    const Function copy(source);

    source = Function("renamed");

    publish(copy);
    run("spawn()");
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Function 'renamed' called but no user function is bound. Call having no effect.",
            "Function"}));
}

TEST_F(FunctionCopyTest, OfAnUnboundFunctionReportsTheNameThatItsGoneSourceHad)
{
    auto source = std::make_unique<Function>("source");
    const Function copy(*source);

    source.reset();

    publish(copy);
    run("spawn()");
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Function 'source' called but no user function is bound. Call having no effect.",
            "Function"}));
}

TEST_F(FunctionCopyTest, ResetLeavesTheDefaultOfTheSource)
{
    Function source("source");
    Function* const function = environment().setFunc("spawn");
    *function = source;
    source = Function("renamed");

    function->reset();

    run("spawn()");
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Function 'source' called but no user function is bound. Call having no effect.",
            "Function"}));
}

TEST_F(FunctionCopyTest, AssignmentTakesTheName)
{
    Function function("spawn");

    function = Function("attack");

    EXPECT_EQ(function.getName(), "attack");
}

TEST_F(FunctionCopyTest, AssignmentReplacesParametersAndCallable)
{
    Function* const function =
        declare("spawn", {PARAM_TYPE_INT, PARAM_TYPE_INT}, [](const Parameters&) { return 1; });
    Function source("attack");
    source.addParameter(PARAM_TYPE_STRING);
    source.setFunction([](const Parameters& parameters)
                       { return static_cast<int>(parameters.size()) * 10; });

    *function = source;

    run("result = spawn('x')");
    EXPECT_EQ(environment().getVar("result", -1), 10);
}

TEST_F(FunctionCopyTest, AssignmentChangesTheNameInMessages)
{
    Function source("attack");
    source.addParameter(PARAM_TYPE_INT);

    publish(source);

    EXPECT_EQ(
        runExpectingError("spawn('x')"),
        "Error while executing script 'test' : Error l.1 while calling attack. Expected int, got "
        "string.");
}

TEST_F(FunctionCopyTest, AssignmentEndsTheEarlierCallable)
{
    const auto token = std::make_shared<int>(1);
    Function function("spawn");
    function.setFunction([token](const Parameters&) { return FunctionParameter::VOID; });

    function = Function("other");

    EXPECT_EQ(token.use_count(), 1);
}

TEST_F(FunctionCopyTest, SelfAssignmentChangesNothing)
{
    Function* const function = declare(
        "spawn",
        {PARAM_TYPE_INT},
        [](const Parameters& parameters) { return parameters[0].getInt() + 1; });
    const Function& same = *function;

    *function = same;

    run("result = spawn(7)");
    EXPECT_EQ(environment().getVar("result", -1), 8);
    EXPECT_EQ(function->getName(), "spawn");
}

TEST_F(FunctionCopyTest, MadeInsideTheRunningCallableWorksOnItsOwn)
{
    Function* const other = environment().setFunc("other");
    Function* const function = environment().setFunc("spawn");
    function->addParameter(PARAM_TYPE_INT);
    function->setFunction(
        [function, other](const Parameters& parameters)
        {
            if (parameters[0].getInt() == 1)
                *other = Function(*function);
            return parameters[0].getInt();
        });

    run("first = spawn(1) second = other(5) third = spawn(7)");

    EXPECT_EQ(environment().getVar("first", -1), 1);
    EXPECT_EQ(environment().getVar("second", -1), 5);
    EXPECT_EQ(environment().getVar("third", -1), 7);
}

} // namespace tbScripts::test

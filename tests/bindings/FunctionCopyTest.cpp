#include "support/EnvironmentFixture.h"

#include <memory>

namespace tbScripts::test
{

class FunctionCopyTest : public EnvironmentFixture
{
protected:
    /// Assigns `function` to a declared one, which scripts see as `spawn`.
    void publish(const Function& function) { *environment().setFunc("spawn") = function; }

    void expectUnbound(const std::string& name)
    {
        expectLogged(
            "Function '" + name + "' called but no user function is bound. Call having no effect.",
            "Function");
    }

    std::unique_ptr<Function> m_source = std::make_unique<Function>("source");
    std::shared_ptr<int> m_token = std::make_shared<int>(1);
};

TEST_F(FunctionCopyTest, HasTheNameOfItsSource)
{
    const Function copy(*m_source);
    m_source.reset();
    EXPECT_EQ(copy.getName(), "source");
}

TEST_F(FunctionCopyTest, HasTheParametersOfItsSource)
{
    m_source->addParameter(PARAM_TYPE_INT);
    m_source->addParameter(PARAM_TYPE_USER_TYPE, "Enemy");
    publish(Function(*m_source));
    stops("spawn(1, 2)", "Error l.1 while calling source. Expected Enemy, got number.");
}

TEST_F(FunctionCopyTest, HasTheCallableOfItsSource)
{
    m_source->addParameter(PARAM_TYPE_INT);
    m_source->setFunction([](const Parameters& parameters) { return parameters[0].getInt() * 2; });
    publish(Function(*m_source));
    is("spawn(21)", "42");
}

TEST_F(FunctionCopyTest, OwnsACallableOfItsOwn)
{
    m_source->setFunction(doing([token = m_token] {}));
    const Function copy(*m_source);
    EXPECT_EQ(m_token.use_count(), 3);
}

TEST_F(FunctionCopyTest, GoesItsOwnWay)
{
    m_source->addParameter(PARAM_TYPE_BOOL);
    const Function copy(*m_source);
    m_source->addParameter(PARAM_TYPE_INT);
    m_source->setFunction(returning(1));
    publish(copy);
    is("select('#', spawn())", "0");
    expectLogCount(1);
}

TEST_F(FunctionCopyTest, OfAnUnboundFunctionCallsTheDefaultOfItsSource)
{
    const Function copy(*m_source);
    *m_source = Function("renamed");
    publish(copy);
    run("spawn()");
    expectUnbound("renamed");
}

TEST_F(FunctionCopyTest, OfAnUnboundFunctionReportsTheNameThatItsDestroyedSourceHad)
{
    const Function copy(*m_source);
    m_source.reset();
    publish(copy);
    run("spawn()");
    expectUnbound("source");
}

TEST_F(FunctionCopyTest, ResetLeavesTheDefaultOfTheSource)
{
    Function* const function = environment().setFunc("spawn");
    *function = *m_source;
    *m_source = Function("renamed");
    function->reset();
    run("spawn()");
    expectUnbound("source");
}

TEST_F(FunctionCopyTest, AssignmentTakesTheName)
{
    *m_source = Function("attack");
    EXPECT_EQ(m_source->getName(), "attack");
}

TEST_F(FunctionCopyTest, AssignmentReplacesParametersAndCallable)
{
    Function* const function = declare("spawn", {PARAM_TYPE_INT, PARAM_TYPE_INT}, returning(1));
    m_source->addParameter(PARAM_TYPE_STRING);
    m_source->setFunction([](const Parameters& parameters)
                          { return static_cast<int>(parameters.size()) * 10; });
    *function = *m_source;
    is("spawn('x')", "10");
}

TEST_F(FunctionCopyTest, AssignmentChangesTheNameInMessages)
{
    m_source->addParameter(PARAM_TYPE_INT);
    publish(*m_source);
    stops("spawn('x')", "Error l.1 while calling source. Expected int, got string.");
}

TEST_F(FunctionCopyTest, AssignmentDestroysTheEarlierCallable)
{
    m_source->setFunction(doing([token = m_token] {}));
    *m_source = Function("other");
    EXPECT_EQ(m_token.use_count(), 1);
}

TEST_F(FunctionCopyTest, SelfAssignmentChangesNothing)
{
    Function* const function = declare(
        "spawn",
        {PARAM_TYPE_INT},
        [](const Parameters& parameters) { return parameters[0].getInt() + 1; });
    const Function& same = *function;
    *function = same;
    is("spawn(7)", "8");
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
    is("spawn(1) .. other(5) .. spawn(7)", "157");
}

} // namespace tbScripts::test

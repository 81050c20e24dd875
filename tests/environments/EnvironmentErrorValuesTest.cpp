// Whatever a script raises ends in a message.

#include "support/EnvironmentFixture.h"
#include "support/Execution.h"

namespace tbScripts::test
{

using ::testing::ElementsAre;

namespace
{

struct ErrorRow
{
    const char* name;
    const char* raise; // a statement
    std::string text;
};

void PrintTo(const ErrorRow& row, std::ostream* stream)
{
    *stream << row.name;
}

} // namespace

class EnvironmentErrorValueTest : public EnvironmentFixture,
                                  public ::testing::WithParamInterface<ErrorRow>
{
};

TEST_P(EnvironmentErrorValueTest, IsTheReasonOfAFailedRun)
{
    CompiledScript script(GetParam().raise);

    environment().execute(script);

    const std::string message = "Error while executing script 'test' : " + GetParam().text;
    EXPECT_EQ(lastOutcome(environment()), Outcome(5, false, message));
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{message, "LuaEnvironment"}));
}

TEST_P(EnvironmentErrorValueTest, IsTheMessageOfAFailedCall)
{
    run(std::string("function f() ") + GetParam().raise + " end");
    Parameters outputs;

    const bool isDone = environment().callScriptFunction(
        environment().getScriptFunction("f"), Parameters(), outputs);

    EXPECT_FALSE(isDone);
    EXPECT_EQ(lastOutcome(environment()), Outcome(5, false, GetParam().text));
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{GetParam().text, "LuaEnvironment"}));
}

INSTANTIATE_TEST_SUITE_P(
    Values,
    EnvironmentErrorValueTest,
    ::testing::Values(
        ErrorRow{"Text", "error('boom', 0)", "boom"},
        ErrorRow{"EmptyText", "error('', 0)", ""},
        ErrorRow{"TextWithNul", "error('bo\\0om', 0)", std::string("bo\0om", 5)},
        ErrorRow{"WholeNumber", "error(42, 0)", "42"},
        ErrorRow{"Fraction", "error(1/3, 0)", "0.33333333333333"},
        ErrorRow{"HugeNumber", "error(1e100, 0)", "1e+100"},
        ErrorRow{"Infinity", "error(math.huge, 0)", "inf"},
        ErrorRow{"Nothing", "error()", "(error object is a nil value)"},
        ErrorRow{"Nil", "error(nil)", "(error object is a nil value)"},
        ErrorRow{"True", "error(true)", "(error object is a boolean value)"},
        ErrorRow{"False", "error(false)", "(error object is a boolean value)"},
        ErrorRow{"Table", "error({})", "(error object is a table value)"},
        ErrorRow{
            "TableWithText",
            "error(setmetatable({}, {__tostring = function() return 'boom' end}))",
            "(error object is a table value)"},
        ErrorRow{
            "TableThatRaises",
            "error(setmetatable({}, {__tostring = error, __index = error}))",
            "(error object is a table value)"},
        ErrorRow{"Function", "error(print)", "(error object is a function value)"},
        ErrorRow{"Coroutine", "error(coroutine.create(print))", "(error object is a thread value)"},
        ErrorRow{"Userdata", "error(newproxy())", "(error object is a userdata value)"},
        ErrorRow{"ForeignInteger", "error(1LL)", "(error object is a cdata value)"}),
    [](const auto& row) { return std::string(row.param.name); });

} // namespace tbScripts::test

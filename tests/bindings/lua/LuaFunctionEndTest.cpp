#include "support/LuaFunctionFixture.h"
#include "support/ReactingLogger.h"

#include <memory>

namespace tbScripts::test
{

using ::testing::ElementsAre;

class LuaFunctionEndTest : public LuaFunctionFixture
{
};

TEST_F(LuaFunctionEndTest, DestroyedByItsOwnCallableItFinishesTheCall)
{
    std::string seen;
    const auto token = std::make_shared<int>(5);
    lua::LuaFunction& function = declare(
        "quit",
        [this, &seen, token](const Parameters& parameters)
        {
            destroyLastFunction();
            seen = std::string(std::string_view(parameters[0].getString())) +
                   std::to_string(*token) + global("quit");
            return 9;
        });
    function.addParameter(PARAM_TYPE_STRING);

    run("result = quit('a text that is too long for the storage inside a text')");

    EXPECT_EQ(seen, "a text that is too long for the storage inside a text5nil");
    EXPECT_EQ(global("result"), "9");
    EXPECT_EQ(token.use_count(), 1);
}

TEST_F(LuaFunctionEndTest, DestroyedByItsOwnCallableItsMessagesKeepTheName)
{
    declare(
        "quit",
        [this](const Parameters&)
        {
            destroyLastFunction();
            return FunctionParameter::ofType(static_cast<FUNCTION_PARAMETER_TYPE>(10));
        });

    run("quit()");

    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Error while filling output for function 'quit', parameter type not handled.",
            "LuaFunction"}));
}

TEST_F(LuaFunctionEndTest, DestroyedByItsOwnCallableItMayStillThrow)
{
    const auto token = std::make_shared<int>(5);
    declare(
        "quit",
        [this, token](const Parameters&) -> FunctionParameter
        {
            destroyLastFunction();
            throw std::string("gone while running");
        });

    const std::string message = runExpectingError("quit()");

    EXPECT_EQ(message, "gone while running");
    EXPECT_EQ(token.use_count(), 1);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{"gone while running", "LuaFunction"}));
}

TEST_F(LuaFunctionEndTest, DestroyedByTheLogReceiverItsMismatchIsStillRaised)
{
    declare("spawn", nullptr).addParameter(PARAM_TYPE_INT);
    const ReactingLogger logger([this] { destroyLastFunction(); });

    const std::string message = runExpectingError("spawn('x')");

    EXPECT_EQ(message, "Error l.1 while calling spawn. Expected int, got string.");
}

TEST_F(LuaFunctionEndTest, DestroyedWhileItsArgumentsAreReadItFinishesTheCall)
{
    int seen = 0;
    auto function = std::make_unique<lua::LuaFunction>("take", handle());
    function->addParameter(PARAM_TYPE_INT);
    function->addParameter(PARAM_TYPE_STRING); // a number becomes a text, which allocates
    function->setFunction(
        [&seen](const Parameters& parameters)
        {
            seen = parameters[0].getInt();
            return FunctionParameter::VOID;
        });
    declare(
        "destroyTake",
        [&function](const Parameters&)
        {
            function.reset();
            return FunctionParameter::VOID;
        });

    run("getmetatable(newproxy(true)).__gc = function() destroyTake() end"
        " local kept = take"
        " count = 0"
        " while take do count = count + 1 kept(count, count + 0.5) end");

    EXPECT_EQ(std::to_string(seen), global("count"));
}

} // namespace tbScripts::test

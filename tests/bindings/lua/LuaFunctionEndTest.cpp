#include "support/LuaFunctionFixture.h"
#include "support/ReactingLogger.h"

#include <memory>

namespace tbScripts::test
{

class LuaFunctionEndTest : public LuaFunctionFixture
{
protected:
    std::shared_ptr<int> m_token = std::make_shared<int>(5); // captured by callables
};

TEST_F(LuaFunctionEndTest, DestroyedByItsOwnCallableItFinishesTheCall)
{
    std::string seen;
    declare(
        "quit",
        [this, &seen, token = m_token](const Parameters& parameters)
        {
            destroyLastFunction();
            seen = valueOf(parameters[0]) + std::to_string(*token) + global("quit");
            return 9;
        })
        .addParameter(PARAM_TYPE_STRING);
    is("quit('a text that is too long for the storage inside a text')", "9");
    EXPECT_EQ(seen, "a text that is too long for the storage inside a text5nil");
    EXPECT_EQ(m_token.use_count(), 1);
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
    expectLogged(
        "Error while filling output for function 'quit', parameter type not handled.",
        "LuaFunction");
}

TEST_F(LuaFunctionEndTest, DestroyedByItsOwnCallableItMayStillThrow)
{
    declare(
        "quit",
        [this, token = m_token](const Parameters&) -> FunctionParameter
        {
            destroyLastFunction();
            throw std::string("gone while running");
        });
    raises("quit()", "gone while running");
    EXPECT_EQ(m_token.use_count(), 1);
    expectLogged("gone while running", "LuaFunction");
}

TEST_F(LuaFunctionEndTest, DestroyedByTheLogReceiverItsMismatchIsStillRaised)
{
    declare("spawn", nullptr).addParameter(PARAM_TYPE_INT);
    const ReactingLogger logger([this] { destroyLastFunction(); });
    raises("spawn('x')", "Error l.1 while calling spawn. Expected int, got string.");
}

TEST_F(LuaFunctionEndTest, DestroyedWhileItsArgumentsAreReadItFinishesTheCall)
{
    int seen = 0;
    auto function = std::make_unique<lua::LuaFunction>("take", handle());
    function->addParameter(PARAM_TYPE_INT);
    function->addParameter(PARAM_TYPE_STRING); // a number becomes a text, which allocates
    function->setFunction(doing([&seen](auto& parameters) { seen = parameters[0].getInt(); }));
    declare("destroyTake", doing([&function] { function.reset(); }));
    run("getmetatable(newproxy(true)).__gc = function() destroyTake() end"
        " local kept = take"
        " count = 0"
        " while take do count = count + 1 kept(count, count + 0.5) end");
    EXPECT_EQ(std::to_string(seen), global("count"));
}

} // namespace tbScripts::test

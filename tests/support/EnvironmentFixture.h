#pragma once

#include "support/Callables.h"
#include "support/LogFixture.h"

#include <tbScripts/Environment.h>
#include <tbScripts/Function.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tbScripts::test
{

/// Compiles `sources` as a Lua script called `scriptName` and runs it in `environment`.
bool runScript(
    Environment& environment, const std::string& sources, const std::string& scriptName = "test");

/// A Lua environment called "world", with the recording log.
class EnvironmentFixture : public LogFixture
{
public:
    Environment& environment();

    /// Destroys the environment before the test ends.
    void destroyEnvironment();

    /// Starts the interpreter anew; what was declared is inert then.
    void restart();

    /// Collects garbage as a host does.
    void collect();

    /// Runs a script that has to succeed.
    void run(const std::string& sources);

    /// Runs a script that has to fail, takes the entry that it logs last and returns the message
    /// of the execution result.
    std::string runExpectingError(const std::string& sources);

    /// Runs the script "test", which has to stop with `message`.
    void stops(const std::string& sources, const std::string& message, int line = __builtin_LINE());

    /// Returns the value of `expression` as `tostring` shows it.
    std::string evaluate(const std::string& expression);

    /// Expects the value of `expression` to show as `shown`.
    void is(const std::string& expression, const std::string& shown, int line = __builtin_LINE());

    /// Runs `code`, on line 1, which has to raise an error, and returns the message. Nothing is
    /// logged by that.
    std::string errorOf(const std::string& code);

    /// Runs `code`, on line 1, which has to raise an error with that message.
    void raises(const std::string& code, const std::string& message, int line = __builtin_LINE());

    /// Declares a global host function with parameters of the given kinds.
    Function* declare(
        const std::string& name,
        const std::vector<FUNCTION_PARAMETER_TYPE>& types,
        Function::Callable callable);

    /// Declares the host function `name`, which performs `action`.
    void declareAction(const std::string& name, std::function<void()> action);

    /// Calls the global script function `name`; it has to succeed.
    void call(
        const std::string& name,
        const std::vector<FunctionParameter>& inputs,
        std::vector<FunctionParameter>& outputs);

protected:
    EnvironmentFixture();

    /// Destroys the environment, then looks for unread log entries.
    void TearDown() override;

private:
    std::unique_ptr<Environment> m_environment;
};

} // namespace tbScripts::test

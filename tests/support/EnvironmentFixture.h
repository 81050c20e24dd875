#pragma once

#include "support/LogFixture.h"

#include <tbScripts/Environment.h>
#include <tbScripts/Function.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tbScripts::test
{

using Parameters = tbMemory::BufferView<FunctionParameter>;

/// Compiles `sources` as a Lua script called `scriptName` and runs it in `environment`.
bool runScript(
    Environment& environment, const std::string& sources, const std::string& scriptName = "test");

/// A Lua environment called "world", with the recording log.
class EnvironmentFixture : public LogFixture
{
protected:
    EnvironmentFixture();

    /// Destroys the environment, then looks for unread log entries.
    void TearDown() override;

    Environment& environment();

    /// Destroys the environment before the test ends.
    void destroyEnvironment();

    /// Runs a script that has to succeed.
    void run(const std::string& sources);

    /// Runs a script that has to fail, takes the entry that it logs last and returns the message
    /// of the execution result.
    std::string runExpectingError(const std::string& sources);

    /// Declares a global host function with parameters of the given kinds.
    Function* declare(
        const std::string& name,
        const std::vector<FUNCTION_PARAMETER_TYPE>& types,
        Function::Callable callable);

    /// Declares the global host function `name`, which performs `action`.
    void declareAction(const std::string& name, std::function<void()> action);

    /// Calls the global script function `name`; it has to succeed.
    void call(
        const std::string& name,
        const std::vector<FunctionParameter>& inputs,
        std::vector<FunctionParameter>& outputs);

private:
    std::unique_ptr<Environment> m_environment;
};

} // namespace tbScripts::test

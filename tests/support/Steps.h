#pragma once

#include "support/EnvironmentFixture.h"
#include "support/Facts.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace tbScripts::test
{

/// What rows of `Facts` are made of. Each does what the function of the fixture does that has its
/// name.
using Step = std::function<void(EnvironmentFixture&)>;

Step run(const std::string& sources);
Step is(const std::string& expression, const std::string& shown);
Step raises(const std::string& code, const std::string& message);
Step stops(const std::string& sources, const std::string& message);
Step logs(const std::string& message, const std::string& source);
Step logs(const std::vector<LogEntry>& entries);
Step logsCount(std::size_t count);
Step forgetLog();
Step collect();
Step restart();
Step destroyEnvironment();

/// Declares a global host function.
Step function(
    const std::string& name,
    const std::vector<FUNCTION_PARAMETER_TYPE>& types,
    const Function::Callable& callable);

} // namespace tbScripts::test

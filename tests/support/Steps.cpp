#include "support/Steps.h"

namespace tbScripts::test
{

Step run(const std::string& sources)
{
    return [=](EnvironmentFixture& test) { test.run(sources); };
}

Step is(const std::string& expression, const std::string& shown)
{
    return [=](EnvironmentFixture& test) { test.is(expression, shown); };
}

Step raises(const std::string& code, const std::string& message)
{
    return [=](EnvironmentFixture& test) { test.raises(code, message); };
}

Step stops(const std::string& sources, const std::string& message)
{
    return [=](EnvironmentFixture& test) { test.stops(sources, message); };
}

Step logs(const std::string& message, const std::string& source)
{
    return [=](EnvironmentFixture& test) { test.expectLogged(message, source); };
}

Step logs(const std::vector<LogEntry>& entries)
{
    return [=](EnvironmentFixture& test) { test.expectLogged(entries); };
}

Step logsCount(std::size_t count)
{
    return [=](EnvironmentFixture& test) { test.expectLogCount(count); };
}

Step forgetLog()
{
    return &EnvironmentFixture::forgetLog;
}

Step collect()
{
    return &EnvironmentFixture::collect;
}

Step restart()
{
    return &EnvironmentFixture::restart;
}

Step destroyEnvironment()
{
    return &EnvironmentFixture::destroyEnvironment;
}

Step function(
    const std::string& name,
    const std::vector<FUNCTION_PARAMETER_TYPE>& types,
    const Function::Callable& callable)
{
    return [=](EnvironmentFixture& test) { test.declare(name, types, callable); };
}

} // namespace tbScripts::test

#include "support/EnvironmentFixture.h"

#include <tbScripts/Script.h>

#include <utility>

namespace tbScripts::test
{

bool runScript(Environment& environment, const std::string& sources, const std::string& scriptName)
{
    Script script;
    script.setName(scriptName);
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources(sources);
    return script.load() && environment.execute(script);
}

EnvironmentFixture::EnvironmentFixture()
    : m_environment(std::make_unique<Environment>())
{
    m_environment->setName("world");
    m_environment->setEnvironmentFor(INTERPRETER_LUA);
}

void EnvironmentFixture::TearDown()
{
    destroyEnvironment();
    LogFixture::TearDown();
}

Environment& EnvironmentFixture::environment()
{
    return *m_environment;
}

void EnvironmentFixture::destroyEnvironment()
{
    m_environment.reset();
}

void EnvironmentFixture::restart()
{
    m_environment->setEnvironmentFor(INTERPRETER_LUA);
}

void EnvironmentFixture::collect()
{
    m_environment->requestGarbageCollection();
}

void EnvironmentFixture::run(const std::string& sources)
{
    EXPECT_TRUE(runScript(*m_environment, sources))
        << m_environment->getLastExecutionResult().message;
}

std::string EnvironmentFixture::runExpectingError(const std::string& sources)
{
    EXPECT_FALSE(runScript(*m_environment, sources));
    const ExecutionResult& result = m_environment->getLastExecutionResult();
    EXPECT_FALSE(result.success);
    const std::string message(std::string_view(result.message));
    const std::vector<LogEntry> entries = m_log.takeEntries();
    EXPECT_FALSE(entries.empty());
    if (!entries.empty())
    {
        EXPECT_EQ(entries.back(), (LogEntry{message, "LuaEnvironment"}));
    }
    return message;
}

void EnvironmentFixture::stops(const std::string& sources, const std::string& message, int line)
{
    EXPECT_EQ(runExpectingError(sources), "Error while executing script 'test' : " + message)
        << sources << ", in line " << line;
}

std::string EnvironmentFixture::evaluate(const std::string& expression)
{
    run("result = tostring((" + expression + "))");
    return std::string(std::string_view(m_environment->getVar("result", "(no result)")));
}

void EnvironmentFixture::is(const std::string& expression, const std::string& shown, int line)
{
    EXPECT_EQ(evaluate(expression), shown) << expression << ", in line " << line;
}

std::string EnvironmentFixture::errorOf(const std::string& code)
{
    run("isDone, message = pcall(function() " + code + "\nend)  message = tostring(message)");
    EXPECT_FALSE(m_environment->getVar("isDone", true));
    return std::string(std::string_view(m_environment->getVar("message", "(no message)")));
}

void EnvironmentFixture::raises(const std::string& code, const std::string& message, int line)
{
    EXPECT_EQ(errorOf(code), message) << code << ", in line " << line;
}

Function* EnvironmentFixture::declare(
    const std::string& name,
    const std::vector<FUNCTION_PARAMETER_TYPE>& types,
    Function::Callable callable)
{
    Function* const function = m_environment->setFunc(name);
    EXPECT_NE(function, nullptr);
    if (!function)
        return nullptr;
    for (const FUNCTION_PARAMETER_TYPE type : types)
        function->addParameter(type);
    function->setFunction(std::move(callable));
    return function;
}

void EnvironmentFixture::declareAction(const std::string& name, std::function<void()> action)
{
    declare(name, {}, doing(std::move(action)));
}

void EnvironmentFixture::call(
    const std::string& name,
    const std::vector<FunctionParameter>& inputs,
    std::vector<FunctionParameter>& outputs)
{
    Parameters outputView(outputs);
    EXPECT_TRUE(m_environment->callScriptFunction(
        m_environment->getScriptFunction(name), inputs, outputView))
        << m_environment->getLastExecutionResult().message;
}

} // namespace tbScripts::test

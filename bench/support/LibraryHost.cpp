#include "support/LibraryHost.h"

#include "support/Failure.h"

#include <tbLog/Logger.h>
#include <tbLog/StringView.h>
#include <tbScripts/LogManager.h>
#include <tbScripts/Script.h>

#include <string_view>
#include <utility>

namespace bench
{

namespace
{

class FailingLogger : public tbLog::Logger
{
public:
    void log(const tbLog::StringView& message, const tbLog::StringView& /*source*/) override
    {
        fail("the library says: " + std::string(message.data(), message.size()));
    }
};

} // namespace

LibraryHost::LibraryHost()
{
    m_environment.setEnvironmentFor(tbScripts::INTERPRETER_LUA);
    run("function countBytes() return collectgarbage('count') * 1024 end");
    m_countBytes = m_environment.getScriptFunction("countBytes");
}

void LibraryHost::run(const std::string& source)
{
    tbScripts::Script script;
    script.setTargetInterpreter(tbScripts::INTERPRETER_LUA);
    script.setSources(source.c_str());
    if (!script.load() || !m_environment.execute(script))
        fail("a script does not run");
}

double LibraryHost::call(const tbScripts::ScriptObjectReference& function, double argument)
{
    tbScripts::FunctionParameter results[] = {0.0};
    tbMemory::BufferView<tbScripts::FunctionParameter> outputs = results;
    if (!m_environment.callScriptFunction(function, {argument}, outputs))
        fail("a script function does not run");
    return results[0].getDouble();
}

double LibraryHost::callGlobal(const char* name, double argument)
{
    return call(m_environment.getScriptFunction(name), argument);
}

void LibraryHost::collect()
{
    m_environment.requestGarbageCollection();
}

double LibraryHost::countScriptBytes()
{
    collect();
    return call(m_countBytes, 0.0);
}

void failOnLibraryMessages()
{
    static FailingLogger logger;
    tbScripts::LogManager::getInstance()->setReceiver(&logger);
}

void define(
    tbScripts::Function* function,
    std::initializer_list<tbScripts::FUNCTION_PARAMETER_TYPE> parameters,
    tbScripts::Function::Callable callable)
{
    if (!function)
        fail("a function cannot be declared");
    for (const tbScripts::FUNCTION_PARAMETER_TYPE type : parameters)
        function->addParameter(type);
    function->setFunction(std::move(callable));
}

} // namespace bench

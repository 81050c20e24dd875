// The code of docs/guide/errors.md.

#include <tbLog/Logger.h>
#include <tbScripts/Environment.h>
#include <tbScripts/Function.h>
#include <tbScripts/LogManager.h>
#include <tbScripts/Script.h>

#include <iostream>
#include <string>
#include <string_view>

using namespace tbScripts;
using Parameters = tbMemory::BufferView<FunctionParameter>;

namespace
{

// [shown]
class ConsoleLog : public tbLog::Logger
{
public:
    void log(const tbLog::StringView& message, const tbLog::StringView& source) override
    {
        std::cerr << '[' << std::string_view(source) << "] " << std::string_view(message) << '\n';
    }
};

// [/shown]

} // namespace

int main()
{
    std::cout << std::unitbuf; // in step with the log

    // [shown]
    ConsoleLog log;
    LogManager::getInstance()->setReceiver(&log); // it has to outlive its use there
    // [/shown]

    Environment environment;
    environment.setEnvironmentFor(INTERPRETER_LUA);
    // [shown]
    environment.setFunc("open")->setFunction(
        [](const Parameters&) -> FunctionParameter { throw std::string("the gate is locked"); });

    Script script;
    script.setName("gate.lua");
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources("-- gate.lua\nopened = 0\nopen()\nopened = 1\n");
    script.load();
    if (!environment.execute(script))
        std::cout << "code " << environment.getLastExecutionResult().code << '\n';
    std::cout << "opened is " << environment.getVar("opened", -1) << '\n';
    // [/shown]

    LogManager::getInstance()->kill();
}

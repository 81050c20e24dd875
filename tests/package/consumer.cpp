// A host that uses the library, wherever it comes from: what it logs and what it runs shows that
// library, interpreter and host agree.
#include <tbLog/Logger.h>
#include <tbScripts/Environment.h>
#include <tbScripts/LogManager.h>
#include <tbScripts/Script.h>

#include <iostream>
#include <string>
#include <string_view>

namespace
{

class OwnLogger : public tbLog::Logger
{
public:
    void log(const tbLog::StringView& message, const tbLog::StringView& source) override
    {
        m_lastEntry = std::string(std::string_view(source)) + ": ";
        m_lastEntry += std::string_view(message);
    }

    const std::string& getLastEntry() const { return m_lastEntry; }

private:
    std::string m_lastEntry;
};

// The logger is reached only if host and library see one instance of the manager.
std::string logOneEntry()
{
    OwnLogger logger;
    tbScripts::LogManager::getInstance()->setReceiver(&logger);
    tbScripts::LogManager::getInstance()->log("found", "Consumer");
    tbScripts::LogManager::getInstance()->kill();
    return logger.getLastEntry();
}

int runOneScript()
{
    tbScripts::Environment environment;
    environment.setEnvironmentFor(tbScripts::INTERPRETER_LUA);
    tbScripts::Script script;
    script.setTargetInterpreter(tbScripts::INTERPRETER_LUA);
    script.setSources("answer = 6 * 7");
    if (!script.load() || !environment.execute(script))
        return -1;
    return environment.getVar("answer", -1);
}

} // namespace

int main()
{
    const std::string entry = logOneEntry();
    const int answer = runOneScript();

    std::cout << entry << ", " << answer << '\n';
    return entry == "Consumer: found" && answer == 42 ? 0 : 1;
}

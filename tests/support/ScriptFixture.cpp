#include "support/ScriptFixture.h"

#include <string_view>

namespace tbScripts::test
{

ScriptFixture::ScriptFixture()
{
    m_script.setName("x");
    m_script.setTargetInterpreter(INTERPRETER_LUA);
}

bool ScriptFixture::load(const tbMemory::StringView& sources)
{
    m_script.setSources(sources);
    return m_script.load();
}

std::string ScriptFixture::loadExpectingError(const tbMemory::StringView& sources)
{
    EXPECT_FALSE(load(sources));
    const CompilationResult& result = m_script.getLastCompilationResult();
    EXPECT_FALSE(result.success);
    const std::string message{std::string_view(result.message)};
    EXPECT_THAT(m_log.takeEntries(), ::testing::ElementsAre(LogEntry{message, "LuaScript"}));
    return message;
}

int ScriptFixture::run(const Script& script)
{
    Environment environment;
    environment.setEnvironmentFor(INTERPRETER_LUA);
    EXPECT_TRUE(environment.execute(script)) << environment.getLastExecutionResult().message;
    return environment.getVar("x", -1);
}

bool ScriptFixture::hasBytecode(const Script& script)
{
    Environment environment;
    environment.setEnvironmentFor(INTERPRETER_LUA);
    if (environment.execute(script))
        return true;
    const std::string message =
        "Script '" + std::string(std::string_view(script.getName())) +
        "' has no bytecode ready. Cannot execute anything, be sure the script is correctly loaded.";
    EXPECT_EQ(environment.getLastExecutionResult().code, 4);
    EXPECT_THAT(m_log.takeEntries(), ::testing::ElementsAre(LogEntry{message, "LuaEnvironment"}));
    return false;
}

} // namespace tbScripts::test

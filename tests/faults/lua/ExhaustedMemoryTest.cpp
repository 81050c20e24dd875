// Scripts that use up all memory fail; as soon as there is memory again the environment goes on.

#include "support/EnvironmentFixture.h"
#include "support/InterpreterCalls.h"
#include "support/RowName.h"

#include <tbScripts/Script.h>

namespace tbScripts::test
{

namespace
{

struct GreedyRow
{
    const char* row;
    const char* sources;
    int code; // 5 if the script meets the error as a text and raises that
};

} // namespace

class ExhaustedMemoryTest : public OnRows<LogFixture, GreedyRow>
{
protected:
    ExhaustedMemoryTest()
    {
        m_environment.setEnvironmentFor(INTERPRETER_LUA);
        m_script.setName("greedy");
        m_script.setTargetInterpreter(INTERPRETER_LUA);
        m_script.setSources(GetParam().sources);
        EXPECT_TRUE(m_script.load());
    }

    // Enough for loops to become hot and be compiled.
    bool runShortOfMemory()
    {
        m_memory.refuseAfter(20000);
        const bool hasSucceeded = m_environment.execute(m_script);
        m_memory.allowAll();
        return hasSucceeded;
    }

    StateMemory m_memory;
    Environment m_environment;
    Script m_script;
};

ROWS(
    ExhaustedMemoryTest,
    {"Tables", "local all = {} while true do all[#all + 1] = {} end", 6},
    {"Fields", "local all = {} for i = 1, 1e9 do all['k' .. i] = i end", 6},
    {"Texts", "local all = {} for i = 1, 1e9 do all[i % 9] = 'a' .. i end", 6},
    {"Closures", "local f while true do local g = f f = function() return g end end", 6},
    {"Coroutines", "local all = {} while true do all[#all + 1] = coroutine.create(print) end", 6},
    {"LoadedCode", "while true do assert(loadstring('return 1')) end", 6},
    {"InterpretedLoop", "jit.off() local all = {} for i = 1, 1e9 do all[i] = {i} end", 6},
    {"ProtectedCalls",
     "while true do local ok, text = pcall(function() local t = {} for i = 1, 1e9 do"
     " t[i] = {} end end) if not ok then error(text, 0) end end",
     5});

TEST_P(ExhaustedMemoryTest, FailsWithTheCodeOfItsErrorAndLeavesAUsableEnvironment)
{
    EXPECT_FALSE(runShortOfMemory());
    EXPECT_EQ(m_environment.getLastExecutionResult().code, GetParam().code);
    expectLogged("Error while executing script 'greedy' : not enough memory", "LuaEnvironment");

    m_environment.requestGarbageCollection();

    EXPECT_TRUE(runScript(
        m_environment,
        "local t = {} for i = 1, 1000 do t[i] = {i} end assert(t[1000][1] == 1000)"));
}

} // namespace tbScripts::test

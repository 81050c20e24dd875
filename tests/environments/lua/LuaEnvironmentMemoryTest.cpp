// Runs and calls that exhaust the memory of their interpreter.

#include "environments/lua/LuaEnvironmentStrategy.h"
#include "environments/lua/LuaScriptCalls.h"
#include "support/Execution.h"
#include "support/InjectedAllocator.h"
#include "support/LogFixture.h"
#include "support/RowName.h"

#include <memory>
#include <string>

namespace tbScripts::test
{

namespace
{

class LuaEnvironmentMemoryTest : public LogFixture
{
protected:
    LuaEnvironmentMemoryTest()
        : m_strategy(std::make_shared<const tbMemory::String>("world"))
        , m_allocator(m_strategy.getHandle().get())
    {
    }

    bool execute(const std::string& sources)
    {
        CompiledScript script(sources, "greedy");
        return m_strategy.execute(script);
    }

    Outcome outcome() const { return outcomeOf(m_strategy.getLastExecutionResult()); }

    lua::LuaEnvironmentStrategy m_strategy;
    InjectedAllocator m_allocator; // goes first
};

// The failed load leaves its message where the chunk should be, and calling that is the error. The
// interpreter needs no memory to say so if a script holds the very text already.
TEST_F(LuaEnvironmentMemoryTest, ChunkThatFindsNoMemoryToBeLoadedFailsWithCode5)
{
    execute("pcall(function() local text = 'x'  text() end) "
            "kept = 'attempt to call a string value'");
    CompiledScript script(std::string(5000, ' ') + "local answer = 42", "greedy");
    m_allocator.refuseAfter(0);

    const bool isDone = m_strategy.execute(script);
    m_allocator.allowAll();

    EXPECT_FALSE(isDone);
    EXPECT_EQ(
        outcome(),
        Outcome(
            5, false, "Error while executing script 'greedy' : attempt to call a string value"));
    m_log.takeEntries();
}

// What a chunk that is none does to a run.
struct ChunkRow
{
    const char* row;
    std::string bytes;
};

using LuaBrokenChunkTest = OnRows<LuaEnvironmentMemoryTest, ChunkRow>;

TEST_P(LuaBrokenChunkTest, FailsWithCode5AsCallingAText)
{
    const lua::LuaBytecode bytes{
        tbMemory::Buffer(GetParam().bytes.data(), GetParam().bytes.size()), 1, 1};
    lua::LuaScriptCalls calls(m_strategy.getHandle());
    lua::LuaHostCall call(m_strategy.getHandle());

    const lua::LuaCallOutcome outcome = calls.runChunk(call, bytes, "broken");

    EXPECT_EQ(outcome.code, 5);
    EXPECT_EQ(outcome.errorText, "attempt to call a string value");
    EXPECT_EQ(lua_gettop(m_strategy.getHandle().get()), 0);
}

ROWS(
    LuaBrokenChunkTest,
    {"NoSentence", "return +"},
    {"TruncatedBytecode", "\x1bLJ"},
    {"BytecodeOfAnotherVersion", std::string("\x1bLJ\x7f\x02\x00", 6)});

} // namespace

} // namespace tbScripts::test

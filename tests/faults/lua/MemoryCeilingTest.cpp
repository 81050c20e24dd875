// Scripts that take all memory below a ceiling which stays. What took the memory is garbage when
// the host is told, so the environment works at once. Two rows run uncompiled: the interpreter
// itself dies of them in compiled code (docs/reliability.md#what-is-not-promised).

#include "support/Execution.h"
#include "support/InterpreterCalls.h"
#include "support/RowName.h"
#include "support/UserTypeFixture.h"

namespace tbScripts::test
{

namespace
{

struct CeilingRow
{
    const char* row;
    const char* sources;
};

constexpr std::size_t KIBIBYTE = 1024;

} // namespace

class MemoryCeilingTest : public OnRows<::testing::Test, CeilingRow>
{
protected:
    // Returns what is wrong with an environment in which the script has met the ceiling.
    static std::string look(std::size_t ceiling)
    {
        StateMemory memory;
        Environment environment;
        environment.setEnvironmentFor(INTERPRETER_LUA);
        UserType& type = *environment.setUserType("Vec");
        std::deque<int> objects;
        std::size_t destroyed = 0;
        type.setDestructor([&destroyed](void*) { ++destroyed; });
        type.setConstructor([&objects](const Parameters&) { return &objects.emplace_back(); });
        // LuaJIT 2.1.0-beta3 dies if it gets some of the memory for a new state but not all.
        CompiledScript later("local t = {} for i = 1, 100 do t[i] = {Vec.new()} end", "later");
        CompiledScript greedy(GetParam().sources, "greedy");
        memory.refuseAbove(ceiling);
        if (environment.execute(greedy))
            return "the script has succeeded";
        const std::string message(std::string_view(environment.getLastExecutionResult().message));
        if (message.find("not enough memory") == std::string::npos)
            return message;
        environment.setVar("a name of its own", "a text");
        if (!environment.isVarSet("a name of its own") || !environment.setFunc("another"))
            return "nothing can be declared";
        if (!environment.execute(later))
            return "no script can run";
        environment.setEnvironmentFor(INTERPRETER_UNKNOWN);
        return destroyed == objects.size() ? "" : "objects are left";
    }
};

ROWS(
    MemoryCeilingTest,
    {"Tables", "local all = {} while true do all[#all + 1] = {} end"},
    {"Fields", "local all = {} for i = 1, 1e9 do all['k' .. i] = i end"},
    {"OneTable", "local all = {} for i = 1, 1e9 do all[i] = i end"},
    {"Nested", "local all = {} while true do all = {all, 1} end"},
    {"Texts", "local all = {} for i = 1, 1e9 do all[i] = ('a'):rep(100) .. i end"},
    {"OneText", "local all = 'a' while true do all = all .. all end"},
    {"Repeated", "local all = ('a'):rep(1e8)"},
    {"Concatenated",
     "jit.off() local all = {} for i = 1, 1e9 do all[i] = 'abc' table.concat(all) end"},
    {"Closures", "local f while true do local g = f f = function() return g end end"},
    {"Coroutines", "local all = {} while true do all[#all + 1] = coroutine.create(print) end"},
    {"LoadedCode",
     "local all = {} while true do all[#all + 1] = assert(loadstring('return 1')) end"},
    {"Instances", "local all = {} while true do all[#all + 1] = Vec.new() end"},
    {"InterpretedLoop", "jit.off() local all = {} for i = 1, 1e9 do all[i] = {i} end"},
    {"ProtectedCalls",
     "jit.off() local all = {} local function grow() while true do all[#all + 1] = {} end end "
     "pcall(grow) pcall(grow) grow()"});

TEST_P(MemoryCeilingTest, EnvironmentWorksAtOnce)
{
    constexpr std::size_t LOWEST = 64 * KIBIBYTE;
    constexpr std::size_t STEP = 20 * KIBIBYTE;
    constexpr std::size_t STEPS = 60;
    for (std::size_t i = 0; i < STEPS; ++i)
        EXPECT_EQ(look(LOWEST + i * STEP), "") << LOWEST + i * STEP;
}

} // namespace tbScripts::test

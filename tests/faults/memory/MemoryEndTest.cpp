// What has nowhere to note that it should go later stays, rather than going too early.

#include "faults/memory/MemoryFlow.h"
#include "support/ChildProcess.h"

#include <tbScripts/UserType.h>

#include <memory>
#include <optional>

namespace tbScripts::test
{

namespace
{

constexpr int PASSED = 0;
constexpr int FAILED = 1;

// Runs a script that has the host destroy the environment while memory is refused, and uses what is
// on the stack afterwards.
int endEnvironmentInsideItsOwnCall()
{
    FlowWorld world;
    world.report().reset();
    world.report().setFunction(
        [&world](const Parameters&)
        {
            const RefusedMemory memory(0, RefusedMemory::SPAN::ALL_FURTHER);
            world.environment.reset();
            return FunctionParameter(7);
        });
    return runIn(*world.environment, "assert(report_to_the_host() == 7) local thing = Thing.new()")
               ? PASSED
               : FAILED;
}

// Where a script keeps what an environment that clears its globals does not reach. The finaliser,
// older than every type, runs after theirs.
constexpr const char* MAKE_A_PLACE = R"(
    local type, used = type, {}
    local last = newproxy(true)
    getmetatable(last).__gc = function() used.kind = type(used.read) used.read(used.instance, 'x') end
    used.last = last
    debug.getregistry().used = used
)";
constexpr const char* FILL_IT = R"(
    local used = debug.getregistry().used
    used.instance = Thing.new()
    used.read = getmetatable(used.instance).__index
)";

} // namespace

// In a process of its own, since the interpreter that stays would count as a leak.
TEST(MemoryEndTest, EnvironmentThatCannotNoteItsEndGoesOnUntilTheRunIsOver)
{
    ChildProcess child(&endEnvironmentInsideItsOwnCall);

    EXPECT_EQ(child.wait(), PASSED);
}

TEST(MemoryEndTest, FinalisersMeetAWholeTypeThoughNothingCanBeNotedAtTheEnd)
{
    int destructions = 0;
    int object = 0;
    std::optional<RefusedMemory> memory;
    auto environment = std::make_unique<Environment>();
    environment->setEnvironmentFor(INTERPRETER_LUA);
    ASSERT_TRUE(runIn(*environment, MAKE_A_PLACE));
    UserType& type = *environment->setUserType("Thing");
    type.setConstructor([&object](const Parameters&) { return &object; });
    type.setDestructor(
        [&](void*)
        {
            ++destructions;
            memory.emplace(0, RefusedMemory::SPAN::ALL_FURTHER);
        });
    ASSERT_TRUE(runIn(*environment, FILL_IT));

    environment.reset();
    memory.reset();

    EXPECT_EQ(destructions, 1);
}

} // namespace tbScripts::test

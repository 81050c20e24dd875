// What has nowhere to note that it should go later stays, rather than going too early.

#include "faults/memory/MemoryFlow.h"
#include "support/ChildProcess.h"

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

} // namespace

// In a process of its own, since the interpreter that stays would count as a leak.
TEST(MemoryEndTest, EnvironmentThatCannotNoteItsEndGoesOnUntilTheRunIsOver)
{
    ChildProcess child(&endEnvironmentInsideItsOwnCall);

    EXPECT_EQ(child.wait(), PASSED);
}

} // namespace tbScripts::test

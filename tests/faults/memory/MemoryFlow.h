#pragma once

#include "support/RefusedMemory.h"
#include "support/TemporaryFolder.h"

#include <tbLog/Logger.h>
#include <tbMemory/Buffer.h>
#include <tbMemory/BufferView.h>
#include <tbScripts/Environment.h>
#include <tbScripts/Function.h>
#include <tbScripts/Script.h>
#include <tbScripts/UserType.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

namespace tbScripts::test
{

using Parameters = tbMemory::BufferView<FunctionParameter>;

/// What a flow works on, made while there is memory. All names are too long for a text that needs
/// none.
struct FlowWorld
{
    FlowWorld();

    FlowWorld(const FlowWorld&) = delete;
    FlowWorld& operator=(const FlowWorld&) = delete;

    ~FlowWorld();

    /// Gives `type` objects that are counted.
    static void makeCounted(UserType& type);

    /// Returns how many of those live.
    static int countLivingObjects();

    /// Returns the host function that scripts call as `report_to_the_host`. It takes a text, a
    /// table and an instance, uses the environment and returns a text.
    Function& report();

    std::unique_ptr<Environment> environment;
    Script script;               // calls the host
    ScriptObjectReference table; // holds texts, tables and instances
    ScriptObjectReference call;  // the script function that calls the host
    tbMemory::Buffer bytes;      // of the table
    tbMemory::Buffer owningBytes;
};

/// Compiles and runs `sources` in `environment`.
bool runIn(Environment& environment, const char* sources);

/// Part of a host's work.
struct MemoryFlow
{
    const char* name;

    /// Performs it and returns whether it came out as it does with memory; false for the neutral
    /// outcome. It may throw `std::bad_alloc`.
    bool (*perform)(FlowWorld& world);
};

inline std::ostream& operator<<(std::ostream& stream, const MemoryFlow& flow)
{
    return stream << flow.name;
}

using MemoryFlowRow = std::tuple<MemoryFlow, RefusedMemory::SPAN>;

/// For each request that a flow makes of `operator new`: performs the flow while that request is
/// refused, alone or with all that follow.
class MemoryFlowTest : public ::testing::TestWithParam<MemoryFlowRow>
{
protected:
    MemoryFlowTest();
    ~MemoryFlowTest() override;

    /// Performs the flow with memory for `allowed` requests, in a world of its own that has to be
    /// usable afterwards. Returns whether a request was refused.
    bool performWith(std::size_t allowed);

    /// Performs it again and again until nothing is refused any more.
    void performUntilDone();

    std::size_t m_refusals = 0;
    bool m_isDone = false;        // whether the last one came out as it does with memory
    std::size_t m_leaked = 0;     // blocks that are left over, of all rounds
    int m_undestroyedObjects = 0; // objects of the host that are left over

private:
    // Logs without memory.
    class Receiver : public tbLog::Logger
    {
        void log(const tbLog::StringView& message, const tbLog::StringView& source) override;
    };

    Receiver m_receiver;
    TemporaryFolder m_folder;
    tbMemory::String m_workingPath;
};

/// Names a row: "SwitchWithoutOneRequest".
std::string nameOfFlow(const ::testing::TestParamInfo<MemoryFlowRow>& row);

} // namespace tbScripts::test

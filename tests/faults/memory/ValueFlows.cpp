// Values go to the host and back, as references and as bytes, while memory is refused.

#include "faults/memory/MemoryFlow.h"

namespace tbScripts::test
{

namespace
{

bool readGlobals(FlowWorld& world)
{
    const ScriptObjectReference table = world.environment->getVar("things");
    const ScriptObjectReference call = world.environment->getScriptFunction("call_the_host");
    return table.getInterpreterReference() && call.getInterpreterReference();
}

bool copyParameters(FlowWorld& world)
{
    FunctionParameter text("a text that needs memory of its own");
    FunctionParameter copy(text);
    copy = FunctionParameter(world.table);
    copy = text;
    text = FunctionParameter::ofType(PARAM_TYPE_USER_TYPE, "a type name that needs memory");
    text.prepareForString();
    return copy.getString() == "a text that needs memory of its own";
}

bool writeBytes(FlowWorld& world)
{
    return world.environment->serializeScriptObject(world.table, false).size() ==
           world.bytes.size();
}

bool readBytes(FlowWorld& world)
{
    return world.environment->deserializeScriptObject(world.bytes).getInterpreterReference();
}

// What is written to its end owns the objects, and goes on to if it cannot be read.
bool handObjectsOver(FlowWorld& world)
{
    world.owningBytes = world.environment->serializeScriptObject(world.table, true);
    if (world.owningBytes.size() == 0)
        return false;
    const ScriptObjectReference copy =
        world.environment->deserializeScriptObject(world.owningBytes);
    if (!copy.getInterpreterReference())
        return false;
    world.owningBytes.clear();
    return true;
}

bool writeAndReadFunction(FlowWorld& world)
{
    const tbMemory::Buffer bytes = world.environment->serializeScriptObject(world.call, false);
    return world.environment->deserializeScriptObject(bytes).getInterpreterReference();
}

} // namespace

INSTANTIATE_TEST_SUITE_P(
    Values,
    MemoryFlowTest,
    ::testing::Combine(
        ::testing::Values(
            MemoryFlow{"Globals", &readGlobals},
            MemoryFlow{"Parameters", &copyParameters},
            MemoryFlow{"Writing", &writeBytes},
            MemoryFlow{"Reading", &readBytes},
            MemoryFlow{"TransferOfOwnership", &handObjectsOver},
            MemoryFlow{"FunctionAsBytes", &writeAndReadFunction}),
        ::testing::Values(RefusedMemory::SPAN::ONE_REQUEST, RefusedMemory::SPAN::ALL_FURTHER)),
    &nameOfFlow);

} // namespace tbScripts::test

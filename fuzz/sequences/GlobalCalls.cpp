// Calls that read and write globals, and those that turn values into bytes.

#include "sequences/Names.h"
#include "sequences/World.h"
#include "support/MemoryCeiling.h"
#include "support/Require.h"

#include <cstring>

namespace tbScripts::fuzz
{

namespace
{

void setVariable(World& world)
{
    world.trace("set variable");
    Environment& environment = world.anyEnvironment();
    const char* const name = world.bytes().numbered<8>(VARIABLE_NAMES);
    switch (world.bytes().choice<16>(7))
    {
    case 0:
        return environment.setVar(name, world.bytes().flag());
    case 1:
        return environment.setVar(name, static_cast<int>(world.bytes().byte()));
    case 2:
        return environment.setVar(name, 0.5F);
    case 3:
        return environment.setVar(name, 1e300);
    case 4:
        return environment.setVar(name, static_cast<const char*>(nullptr));
    case 5:
        return environment.setVar(name, tbMemory::StringView(world.bytes().text(12)));
    default:
        return environment.setVar(name, world.anyReference());
    }
}

void setHostObject(World& world)
{
    world.trace("set host object");
    Environment& environment = world.anyEnvironment();
    HostObject* const object =
        world.bytes().flag() ? world.objects().anyHostOwned(world.bytes().below(8)) : nullptr;
    const char* const name = world.bytes().numbered<8>(VARIABLE_NAMES);
    environment.setObject(name, anyNameOf(world, TYPE_NAMES), object);
}

void readVariable(World& world)
{
    world.trace("read variable");
    Environment& environment = world.anyEnvironment();
    const char* const name = world.bytes().numbered<8>(VARIABLE_NAMES);
    switch (world.bytes().choice<16>(8))
    {
    case 0:
        environment.isVarSet(name);
        break;
    case 1:
        environment.getVar(name, true);
        break;
    case 2:
        environment.getVar(name, -1);
        break;
    case 3:
        environment.getVar(name, 0.25F);
        break;
    case 4:
        environment.getVar(name, 0.25);
        break;
    case 5:
    {
        // Read at once: it is good as long as the script's value.
        const tbMemory::StringView text = environment.getVar(name, "default");
        require(!text.isNull(), "a text with a default is never null");
        break;
    }
    case 6:
    {
        const char* const type =
            world.bytes().flag() ? world.bytes().numbered<8>(TYPE_NAMES) : nullptr;
        void* const object = environment.getObject(name, type);
        require(!object || world.objects().contains(object), "only objects of the host come back");
        break;
    }
    default:
        world.anyReference() = environment.getVar(name);
        break;
    }
}

void takeFunction(World& world)
{
    world.trace("take function");
    Environment& environment = world.anyEnvironment();
    const char* const name = world.bytes().flag() ? world.bytes().numbered<8>(FUNCTION_NAMES)
                                                  : world.bytes().numbered<8>(VARIABLE_NAMES);
    world.anyReference() = environment.getScriptFunction(name);
}

void collect(World& world)
{
    world.trace("collect");
    world.anyEnvironment().requestGarbageCollection();
}

// A variable that was set is read back, unless somebody was called meanwhile or the globals have a
// metatable.
void setAndRead(World& world)
{
    world.trace("set and read");
    Environment fresh;
    fresh.setEnvironmentFor(INTERPRETER_LUA);
    const int value = world.bytes().byte();
    fresh.setVar("answer", value);
    require(
        fresh.getVar("answer", -1) == value || MemoryCeiling::hasRefused(),
        "a number is read back as it was set");
}

void write(World& world)
{
    world.trace("write");
    Environment& environment = world.anyEnvironment();
    const ScriptObjectReference& value = world.anyReference();
    WrittenValue written;
    written.isTransfer = world.bytes().below(4) == 3;
    written.bytes = environment.serializeScriptObject(value, written.isTransfer);
    for (std::size_t at = 0; at + sizeof(void*) <= written.bytes.size(); ++at)
    {
        void* object = nullptr;
        std::memcpy(&object, written.bytes.data() + at, sizeof(object));
        if (world.objects().contains(object))
            world.objects().write(object, written.isTransfer);
    }
    if (world.writtenValues().size() < 4 && !written.bytes.empty())
        world.writtenValues().push_back(std::move(written));
}

// What was read is written, read and written again. The first writing may leave out what the bytes
// that were read could not hold, the second one may not.
void compareGenerations(World& world, Environment& environment, const ScriptObjectReference& value)
{
    const unsigned int activity = world.getActivity();
    const tbMemory::Buffer first = environment.serializeScriptObject(value, false);
    if (first.empty() || activity != world.getActivity())
        return;
    const ScriptObjectReference again = environment.deserializeScriptObject(first);
    if (activity != world.getActivity())
        return;
    const tbMemory::Buffer second = environment.serializeScriptObject(again, false);
    // Nothing is written where a finaliser of a script raised meanwhile.
    const bool isKnown = activity == world.getActivity() && !second.empty();
    require(!isKnown || second.size() == first.size(), "what is read writes as many bytes again");
}

void read(World& world)
{
    world.trace("read");
    if (world.writtenValues().empty())
        return;
    Environment& environment = world.anyEnvironment();
    std::vector<WrittenValue>& values = world.writtenValues();
    if (values.empty())
        return;
    const std::size_t index = world.bytes().below(values.size());
    const WrittenValue written = values[index];
    if (written.isTransfer) // once only
        values.erase(values.begin() + static_cast<std::ptrdiff_t>(index));
    const unsigned int activity = world.getActivity();
    const ScriptObjectReference value = environment.deserializeScriptObject(written.bytes);
    world.anyReference() = value;
    if (!written.isTransfer && activity == world.getActivity())
        compareGenerations(world, environment, value);
}

} // namespace

void performGlobalCall(World& world)
{
    constexpr auto CALLS = makeCases<16, Call>(
        {{0, &setVariable},
         {1, &setHostObject},
         {2, &readVariable},
         {3, &readVariable},
         {4, &takeFunction},
         {5, &takeFunction},
         {6, &collect},
         {7, &setAndRead}});
    world.bytes().caseOf(CALLS)(world);
}

void performBytesCall(World& world)
{
    if (world.bytes().flag())
        write(world);
    else
        read(world);
}

} // namespace tbScripts::fuzz

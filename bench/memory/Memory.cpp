#include "memory/Memory.h"

#include "rows/LibraryBody.h"
#include "rows/TwiceFunction.h"
#include "support/Failure.h"
#include "support/LibraryHost.h"
#include "support/LuaHost.h"

#include <tbScripts/Script.h>
#include <tbScripts/ScriptObjectReference.h>
#include <tbScripts/UserType.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <malloc.h>
#include <string>
#include <utility>

namespace bench
{

namespace
{

using tbScripts::FunctionParameter;

using Arguments = tbMemory::BufferView<FunctionParameter>;

// What the process has allocated; the interpreter has an allocator of its own.
double countHostBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

// Returns by how many bytes host and interpreter together grow while `work` runs.
template <typename Host>
double bytesOf(Host& host, const std::function<void()>& work)
{
    host.countScriptBytes(); // so that what this makes the first time is there already
    const double before = host.countScriptBytes() + countHostBytes();
    work();
    return host.countScriptBytes() + countHostBytes() - before;
}

std::string nameOf(const char* prefix, std::size_t number)
{
    return prefix + std::to_string(number);
}

MemoryResult measureFunctions(std::size_t count)
{
    LibraryHost library;
    LuaHost byHand;
    const double inLibrary = bytesOf(
        library,
        [&]
        {
            for (std::size_t i = 0; i < count; ++i)
                declareTwice(library.getEnvironment().setFunc(nameOf("twice", i).c_str()));
        });
    const double bare = bytesOf(
        byHand,
        [&]
        {
            for (std::size_t i = 0; i < count; ++i)
                lua_register(byHand.getState(), nameOf("twice", i).c_str(), &twiceByHand);
        });
    const auto each = static_cast<double>(count);
    return {"bound function with one parameter", inLibrary / each, bare / each, "C function"};
}

MemoryResult measureMethods(std::size_t count)
{
    LibraryHost host;
    declareLibraryBody(host.getEnvironment());
    tbScripts::UserType& type = *host.getEnvironment().getUserType("Body");
    const double bytes = bytesOf(
        host,
        [&]
        {
            for (std::size_t i = 0; i < count; ++i)
            {
                define(
                    type.setMethod(nameOf("get", i).c_str(), false),
                    {},
                    [](const Arguments& arguments) { return bodyIn(arguments[0]).value; });
            }
        });
    return {"method", bytes / static_cast<double>(count), 0.0, ""};
}

MemoryResult measureFields(std::size_t count)
{
    LibraryHost host;
    declareLibraryBody(host.getEnvironment());
    tbScripts::UserType& type = *host.getEnvironment().getUserType("Body");
    const double bytes = bytesOf(
        host,
        [&]
        {
            for (std::size_t i = 0; i < count; ++i)
            {
                const std::string name = nameOf("field", i);
                tbScripts::UserTypeFieldDescriptor field;
                field.name = name.c_str();
                field.type = tbScripts::PARAM_TYPE_DOUBLE;
                field.getter = [](void* object) { return static_cast<Body*>(object)->value; };
                field.setter = [](const Arguments& arguments)
                { bodyIn(arguments[0]).value = arguments[1].getDouble(); };
                type.setField(field);
            }
        });
    return {"field that can be read and written", bytes / static_cast<double>(count), 0.0, ""};
}

MemoryResult measureReferences(std::size_t count)
{
    LibraryHost library;
    library.run("settings = {}");
    LuaHost byHand;
    byHand.run("settings = {}");
    std::deque<tbScripts::ScriptObjectReference> held;
    const double inLibrary = bytesOf(
        library,
        [&]
        {
            for (std::size_t i = 0; i < count; ++i)
                held.push_back(library.getEnvironment().getVar("settings"));
        });
    const double bare = bytesOf(
        byHand,
        [&]
        {
            for (std::size_t i = 0; i < count; ++i)
                byHand.refer("settings");
        });
    const auto each = static_cast<double>(count);
    return {"reference that is held", inLibrary / each, bare / each, "registry reference"};
}

MemoryResult measureEnvironments(std::size_t count)
{
    LibraryHost observer;
    std::deque<LibraryHost> environments;
    double inLibrary = bytesOf(observer, [&] { environments.resize(count); });
    for (LibraryHost& environment : environments)
        inLibrary += environment.countScriptBytes();

    std::deque<LuaHost> states;
    double bare = bytesOf(observer, [&] { states.resize(count); });
    for (LuaHost& state : states)
        bare += state.countScriptBytes();
    const auto each = static_cast<double>(count);
    return {"environment", inLibrary / each, bare / each, "state with libraries"};
}

// What is left each time that `work` was done often. The least of several times: what grows does so
// every time, while the C library keeps now more and now less for its next requests.
MemoryResult measureGrowth(const char* name, LibraryHost& host, const std::function<void()>& work)
{
    constexpr int TIMES = 5;
    work();
    double least = bytesOf(host, work);
    for (int i = 1; i < TIMES; ++i)
        least = std::min(least, bytesOf(host, work));
    return {name, std::max(least, 0.0), 0.0, ""};
}

void addGrowth(std::vector<MemoryResult>& results, std::size_t times)
{
    LibraryHost host;
    declareLibraryBody(host.getEnvironment());
    declareTwice(host.getEnvironment().setFunc("twice"));
    host.run("settings = {} function step(x) return x end "
             "function call(n) for i = 1, n do twice(i) end return 0 end "
             "function make(n) for i = 1, n do local b = Body.new() + Body.new() end return 0 end");
    tbScripts::Script script;
    script.setTargetInterpreter(tbScripts::INTERPRETER_LUA);
    script.setSources("total = 1");
    script.load();
    const auto step = host.getEnvironment().getScriptFunction("step");
    const auto count = static_cast<double>(times);
    const auto add = [&](const char* name, const std::function<void()>& work)
    { results.push_back(measureGrowth(name, host, work)); };
    const auto repeat = [times](const std::function<void()>& work)
    {
        for (std::size_t i = 0; i < times; ++i)
            work();
    };

    add("left by many calls of a host function", [&] { host.callGlobal("call", count); });
    add("left by many instances", [&] { host.callGlobal("make", count); });
    add("left by many calls of a script function", [&] { repeat([&] { host.call(step, 1.0); }); });
    add("left by many runs of a script",
        [&] { repeat([&] { host.getEnvironment().execute(script); }); });
    add("left by many references",
        [&] { repeat([&] { host.getEnvironment().getVar("settings"); }); });
    add("left by many globals set and read",
        [&]
        {
            repeat(
                [&]
                {
                    host.getEnvironment().setVar("lives", 3.0);
                    host.getEnvironment().getVar("lives", 0.0);
                });
        });
}

} // namespace

std::vector<MemoryResult> measureMemory(bool isSmoke)
{
    const std::size_t things = isSmoke ? 100 : 10'000;
    const std::size_t environments = isSmoke ? 5 : 500;
    const std::size_t times = isSmoke ? 1'000 : 200'000;
    std::vector<MemoryResult> results{
        measureFunctions(things),
        measureMethods(things),
        measureFields(things),
        measureReferences(things),
        measureEnvironments(environments)};
    addGrowth(results, times);
    return results;
}

} // namespace bench

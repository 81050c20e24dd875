// Bytes that are read as a script value. What comes of them is written and read again, and has to
// be the same value of the same length.
//
// Compiled functions are turned away, and the environment knows no types: code and the pointers of
// instances are trusted by design. An instance without type is never looked into.

#include "support/Interpreter.h"
#include "support/Require.h"

#include <tbScripts/Environment.h>

#include <cstddef>
#include <cstdint>

namespace tbScripts::fuzz
{

namespace
{

using ByteView = tbMemory::BufferView<unsigned char>;

constexpr const char* COMPARISON = R"(
function isSame(a, b)
    if type(a) ~= type(b) then return false end
    if type(a) ~= 'table' then
        return a == b or a ~= a and b ~= b or type(a) == 'userdata' or type(a) == 'function'
    end
    for key, value in pairs(a) do
        if not isSame(value, b[key]) then return false end
    end
    for key in pairs(b) do
        if a[key] == nil then return false end
    end
    return true
end
)";

bool isCompiledFunction(const ByteView& bytes)
{
    constexpr unsigned char ESCAPE = 27; // begins what the interpreter dumps
    return bytes.size() > 1 && bytes[0] == 'f' && bytes[1] == ESCAPE;
}

// One for all inputs: only garbage stays of them.
Environment& reader()
{
    static Environment* const environment = []
    {
        auto* const made = new Environment;
        made->setEnvironmentFor(INTERPRETER_LUA);
        require(runScript(*made, COMPARISON), "the comparison is a correct script");
        return made;
    }();
    return *environment;
}

void readAndCompare(const ByteView& bytes)
{
    // The first writing may change a value: a text key that reads as a number becomes one, also if
    // that number is a key already. What comes back of it changes no more.
    const ScriptObjectReference raw = reader().deserializeScriptObject(bytes);
    const tbMemory::Buffer first = reader().serializeScriptObject(raw, false);
    const ScriptObjectReference value = reader().deserializeScriptObject(first);
    require(first.empty() || value.getType() == raw.getType(), "bytes that were written are read");
    const tbMemory::Buffer second = reader().serializeScriptObject(value, false);
    const ScriptObjectReference again = reader().deserializeScriptObject(second);
    const tbMemory::Buffer third = reader().serializeScriptObject(again, false);
    require(third.size() == second.size(), "a value that was read writes to the same length");
    require(askScript(reader(), "isSame", value, again), "a value that was read is read again");
}

} // namespace

} // namespace tbScripts::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const tbMemory::Buffer copy(data, size); // of its exact size, so that reading past it shows
    const tbScripts::fuzz::ByteView bytes = copy;
    if (!tbScripts::fuzz::isCompiledFunction(bytes))
        tbScripts::fuzz::readAndCompare(bytes);
    return 0;
}

#include "support/ScriptValueFixture.h"

#include <cstring>

namespace tbScripts::test
{

Bytes joined(const std::vector<Bytes>& parts)
{
    Bytes all;
    for (const Bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

Bytes bytesOf(const void* pointer)
{
    Bytes bytes(8);
    std::memcpy(bytes.data(), &pointer, sizeof(pointer));
    return bytes;
}

ScriptObjectReference ScriptValueFixture::refer(const std::string& expression)
{
    run("written = " + expression);
    const ScriptObjectReference function = environment().getScriptFunction("written");
    return function.getInterpreterReference() ? function : environment().getVar("written");
}

Bytes ScriptValueFixture::write(const ScriptObjectReference& value, bool transferOwnership)
{
    const tbMemory::Buffer buffer = environment().serializeScriptObject(value, transferOwnership);
    return Bytes(buffer.begin(), buffer.end());
}

Bytes ScriptValueFixture::write(const std::string& expression, bool transferOwnership)
{
    return write(refer(expression), transferOwnership);
}

bool ScriptValueFixture::read(const Bytes& bytes)
{
    const ScriptObjectReference value = environment().deserializeScriptObject(bytes);
    environment().setVar("read", value);
    return value.getInterpreterReference() != nullptr;
}

bool ScriptValueFixture::holds(const std::string& expression)
{
    return evaluate(expression) == "true";
}

} // namespace tbScripts::test

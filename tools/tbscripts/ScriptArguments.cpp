#include "tbscripts/ScriptArguments.h"

#include <tbScripts/Environment.h>
#include <tbScripts/Script.h>

#include <algorithm>
#include <cstddef>

namespace tool
{

namespace
{

// A chunk holds at most 65,536 constants, and an assignment needs up to two.
constexpr std::size_t ASSIGNMENTS_PER_CHUNK = 10000;

bool isPlain(unsigned char byte)
{
    return byte >= 0x20 && byte < 0x7F && byte != '"' && byte != '\\';
}

bool execute(
    tbScripts::Environment& environment,
    const tbMemory::StringView& name,
    const std::string& sources)
{
    tbScripts::Script script;
    script.setName(name); // an error in this script is shown as one of the user's script
    script.setTargetInterpreter(tbScripts::INTERPRETER_LUA);
    script.setSources(sources);
    script.load();
    return environment.execute(script);
}

} // namespace

bool provideArguments(
    tbScripts::Environment& environment,
    const tbMemory::StringView& scriptName,
    const std::vector<std::string>& arguments)
{
    if (!execute(environment, scriptName, "arg = {[0] = " + literalOf(scriptName) + '}'))
        return false;
    for (std::size_t begin = 0; begin < arguments.size(); begin += ASSIGNMENTS_PER_CHUNK)
    {
        std::string sources = "local arg = arg\n";
        const std::size_t end = std::min(begin + ASSIGNMENTS_PER_CHUNK, arguments.size());
        for (std::size_t i = begin; i < end; ++i)
            sources += "arg[" + std::to_string(i + 1) + "] = " + literalOf(arguments[i]) + '\n';
        if (!execute(environment, scriptName, sources))
            return false;
    }
    return true;
}

std::string literalOf(std::string_view bytes)
{
    std::string literal = "\"";
    for (const char byte : bytes)
    {
        const auto value = static_cast<unsigned char>(byte);
        if (isPlain(value))
        {
            literal += byte;
            continue;
        }
        const std::string digits = std::to_string(value);
        literal += '\\' + std::string(3 - digits.size(), '0') + digits;
    }
    return literal + '"';
}

} // namespace tool

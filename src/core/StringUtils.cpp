#include "tbScripts/StringUtils.h"

#include <string_view>

namespace tbScripts
{

namespace
{

constexpr const char* TEXT_UNKNOWN = "UNKNOWN";
constexpr const char* TEXT_LUA = "lua";
constexpr std::string_view NAME_SEPARATOR = "::";

} // namespace

tbMemory::StringView StringUtils::interpreterToString(INTERPRETER interpreter)
{
    return interpreter == INTERPRETER_LUA ? TEXT_LUA : TEXT_UNKNOWN;
}

INTERPRETER StringUtils::stringToInterpreter(const tbMemory::StringView& text)
{
    return text == tbMemory::StringView(TEXT_LUA) ? INTERPRETER_LUA : INTERPRETER_UNKNOWN;
}

tbMemory::BufferCast<tbMemory::String>
StringUtils::splitUserTypeName(const tbMemory::StringView& name)
{
    const std::string_view text = name;
    tbMemory::BufferCast<tbMemory::String> parts;
    std::size_t start = 0;
    for (std::size_t end = text.find(NAME_SEPARATOR); end != std::string_view::npos;
         end = text.find(NAME_SEPARATOR, start))
    {
        parts.append(tbMemory::String(text.substr(start, end - start)));
        start = end + NAME_SEPARATOR.size();
    }
    parts.append(tbMemory::String(text.substr(start)));
    return parts;
}

} // namespace tbScripts

#pragma once

#include "core/lua/LuaApi.h"

#include <tbMemory/StringView.h>

#include <cstring>

namespace tbScripts::lua
{

/// Returns `text` up to its first NUL: names and texts end there for the interpreter, whether or
/// not the view is zero-terminated.
inline tbMemory::StringView upToFirstNul(const tbMemory::StringView& text)
{
    if (text.empty())
        return text;
    const void* const end = std::memchr(text.data(), '\0', text.size());
    if (!end)
        return text;
    return tbMemory::StringView(
        text.data(), static_cast<std::size_t>(static_cast<const char*>(end) - text.data()));
}

/// Stack: +1, the name; a null one is the empty name.
inline void pushName(lua_State* state, const tbMemory::StringView& name)
{
    const tbMemory::StringView shown = upToFirstNul(name);
    lua_pushlstring(state, shown.empty() ? "" : shown.data(), shown.size());
}

/// Stack: +1, the text; a null one is nil.
inline void pushText(lua_State* state, const tbMemory::StringView& text)
{
    if (text.isNull())
        lua_pushnil(state);
    else
        pushName(state, text);
}

/// Returns the characters of the text or number at `index`. A number there becomes a text.
inline tbMemory::StringView textAt(lua_State* state, int index)
{
    std::size_t size = 0;
    const char* const data = lua_tolstring(state, index, &size);
    return tbMemory::StringView(data, size);
}

} // namespace tbScripts::lua

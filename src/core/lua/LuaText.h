#pragma once

#include "core/ByteWords.h"
#include "core/lua/LuaApi.h"

#include <tbMemory/StringView.h>

#include <cstddef>
#include <cstring>

namespace tbScripts::lua
{

/// Returns `text` up to its first NUL: for the interpreter, names and strings of the host end
/// there, whether or not the view is zero-terminated.
inline tbMemory::StringView upToFirstNul(const tbMemory::StringView& text)
{
    if (!holdsZero(text.data(), text.size()))
        return text;
    return tbMemory::StringView(text.data(), std::strlen(text.data()));
}

/// Stack: +1, the name; a null view is the empty name.
inline void pushName(lua_State* state, const tbMemory::StringView& name)
{
    const tbMemory::StringView shown = upToFirstNul(name);
    lua_pushlstring(state, shown.empty() ? "" : shown.data(), shown.size());
}

/// Stack: +1, the string; a null view is nil.
inline void pushText(lua_State* state, const tbMemory::StringView& text)
{
    if (text.isNull())
        lua_pushnil(state);
    else
        pushName(state, text);
}

/// Returns the bytes of the string or number at `index`. A number there becomes a string.
inline tbMemory::StringView textAt(lua_State* state, int index)
{
    std::size_t size = 0;
    const char* const data = lua_tolstring(state, index, &size);
    return tbMemory::StringView(data, size);
}

} // namespace tbScripts::lua

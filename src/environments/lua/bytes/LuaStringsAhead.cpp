#include "environments/lua/bytes/LuaStringsAhead.h"

#include "environments/lua/bytes/LuaValueFormat.h"

#include <algorithm>

namespace tbScripts::lua
{

namespace
{

// `_find` searches so many bytes for further strings.
constexpr std::size_t REACH = 4096;

// Returns the size of the record at the start of the `room` bytes at `record`, which is no
// instance; more than `room` if the record does not end there.
std::size_t recordSize(const unsigned char* record, std::size_t room)
{
    switch (*record)
    {
    case TAG_NUMBER:
    case TAG_NUMBER_KEY:
        return NUMBER_SIZE;
    case TAG_TEXT_KEY:
        return textRecordSizeAt(record, room);
    default:
        return ALIGNMENT;
    }
}

} // namespace

void LuaStringsAhead::reserve(lua_State* state)
{
    const int top = lua_gettop(state);
    m_base = top + 1;
    lua_settop(state, top + CAPACITY);
}

std::size_t LuaStringsAhead::push(lua_State* state, std::size_t position)
{
    if (m_base == 0)
    {
        const tbMemory::StringView text = _textAt(position);
        lua_pushlstring(state, text.data(), text.size());
        return textRecordSize(text.size());
    }
    if (m_next == m_count || m_texts[m_next].position != position)
    {
        _find(position);
        _lookUp(state);
    }
    lua_pushvalue(state, _indexOf(m_next));
    return textRecordSize(m_texts[m_next++].bytes.size());
}

// Finds the strings from `position` on. Behind the end of the value, some of them may be no
// strings; the reader never asks for those.
void LuaStringsAhead::_find(std::size_t position)
{
    const std::size_t end = position + std::min(m_size - position, REACH);
    m_next = 0;
    m_count = 0;
    while (position < end && m_count < m_texts.size() && m_data[position] != TAG_INSTANCE)
    {
        if (m_data[position] != TAG_TEXT)
        {
            position += recordSize(m_data + position, m_size - position);
            continue;
        }
        m_texts[m_count] = Text{position, _textAt(position)};
        position += textRecordSize(m_texts[m_count++].bytes.size());
    }
}

// Puts the strings that `_find` found into their slots. Stack: +0.
void LuaStringsAhead::_lookUp(lua_State* state) const
{
    for (std::size_t i = 0; i < m_count; ++i)
        lua_pushlstring(state, m_texts[i].bytes.data(), m_texts[i].bytes.size());
    for (std::size_t i = m_count; i-- > 0;)
        lua_replace(state, _indexOf(i));
}

tbMemory::StringView LuaStringsAhead::_textAt(std::size_t position) const
{
    return textIn(m_data, m_size, position + TEXT_OFFSET);
}

} // namespace tbScripts::lua

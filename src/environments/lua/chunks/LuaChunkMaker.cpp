#include "environments/lua/chunks/LuaChunkMaker.h"

#include "core/lua/LuaPrivateState.h"
#include "environments/lua/chunks/LuaDump.h"

#include <cstring>

namespace tbScripts::lua
{

namespace
{

constexpr const char* SOURCES = "return function(...) end";

// Compiled code as the interpreter writes it, piece by piece.
struct Dump
{
    std::array<char, 256> bytes{};
    std::size_t size = 0;
};

int append(lua_State* /*state*/, const void* bytes, std::size_t size, void* target)
{
    Dump& dump = *static_cast<Dump*>(target);
    if (size > dump.bytes.size() - dump.size)
        return 1;
    std::memcpy(dump.bytes.data() + dump.size, bytes, size);
    dump.size += size;
    return 0;
}

int compile(lua_State* state)
{
    Dump& dump = *static_cast<Dump*>(lua_touserdata(state, 1));
    if (luaL_loadstring(state, SOURCES) != 0 || lua_dump(state, &append, &dump) != 0)
        dump.size = 0;
    return 0;
}

// What is loaded: the chunk without its end, then the tail.
struct Pieces
{
    std::array<const char*, 2> bytes;
    std::array<std::size_t, 2> sizes;
    std::size_t next;
};

const char* readPiece(lua_State* /*state*/, void* source, std::size_t* size)
{
    Pieces& pieces = *static_cast<Pieces*>(source);
    if (pieces.next == pieces.bytes.size())
        return nullptr;
    *size = pieces.sizes[pieces.next];
    return pieces.bytes[pieces.next++];
}

} // namespace

// In a state of its own: scripts can have the interpreter report what it compiles.
void LuaChunkMaker::_compile()
{
    m_isCompiled = true;
    Dump dump;
    const LuaPrivateState state;
    if (!state.get() || lua_cpcall(state.get(), &compile, &dump) != 0)
        return;
    const LuaDumpTail tail = tailOf(tbMemory::StringView(dump.bytes.data(), dump.size));
    if (tail.bytes.empty())
        return;
    std::memcpy(m_tail.data(), tail.bytes.data(), tail.bytes.size());
    m_size = tail.bytes.size();
    m_flags = tail.flags;
}

bool LuaChunkMaker::push(lua_State* state, const LuaBytecode& bytecode, const char* chunkName)
{
    if (!m_isCompiled)
        _compile();
    const tbMemory::Buffer& code = bytecode.code;
    const tbMemory::StringView front = frontForTail(
        tbMemory::StringView(reinterpret_cast<const char*>(code.data()), code.size()), m_flags);
    if (m_size == 0 || front.empty())
        return false;

    Pieces pieces{{front.data(), m_tail.data()}, {front.size(), m_size}, 0};
    if (lua_load(state, &readPiece, &pieces, chunkName) == 0)
        return true;
    lua_pop(state, 1);
    return false;
}

} // namespace tbScripts::lua

#include "rows/BareCompiler.h"

#include "support/Failure.h"

namespace bench
{

namespace
{

int append(lua_State* /*state*/, const void* bytes, std::size_t size, void* result)
{
    static_cast<std::string*>(result)->append(static_cast<const char*>(bytes), size);
    return 0;
}

} // namespace

BareCompiler::BareCompiler()
    : m_state(luaL_newstate())
{
}

BareCompiler::~BareCompiler()
{
    lua_close(m_state);
}

std::string BareCompiler::compile(const char* source, std::size_t size)
{
    std::string bytecode;
    // The same chunk name as in the library: it is a part of what is compiled.
    if (luaL_loadbufferx(m_state, source, size, source, "t") != 0 ||
        lua_dump(m_state, &append, &bytecode) != 0)
        fail("a script does not compile");
    lua_pop(m_state, 1);
    return bytecode;
}

} // namespace bench

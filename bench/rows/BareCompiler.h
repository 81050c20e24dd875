#pragma once

#include <lua.hpp>

#include <string>

namespace bench
{

/// Compiles texts into bytecode in one state that is kept, and does nothing else.
class BareCompiler
{
public:
    BareCompiler();
    BareCompiler(const BareCompiler&) = delete;
    BareCompiler& operator=(const BareCompiler&) = delete;
    ~BareCompiler();

    std::string compile(const char* source, std::size_t size);

private:
    lua_State* m_state;
};

} // namespace bench

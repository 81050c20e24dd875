#include <lua.hpp>

#include <cstdio>

int main()
{
    lua_State* const state = luaL_newstate();
    std::puts(LUAJIT_VERSION);
    lua_close(state);
    return 0;
}

#include "peers/Peer.h"
#include "rows/HandWrittenBody.h"
#include "support/Failure.h"
#include "support/Workload.h"

#include <string_view>

namespace bench
{

namespace
{

int callTwice(lua_State* state)
{
    lua_pushnumber(state, twice(luaL_checknumber(state, 1)));
    return 1;
}

int callTrimmed(lua_State* state)
{
    std::size_t size = 0;
    const char* const text = luaL_checklstring(state, 1, &size);
    const std::string_view result = trimmed(std::string_view(text, size));
    lua_pushlstring(state, result.data(), result.size());
    return 1;
}

int callSumOfEight(lua_State* state)
{
    const auto at = [state](int index) { return luaL_checknumber(state, index); };
    lua_pushnumber(state, sumOfEight(at(1), at(2), at(3), at(4), at(5), at(6), at(7), at(8)));
    return 1;
}

int callKeep(lua_State* state)
{
    luaL_checktype(state, 1, LUA_TFUNCTION);
    lua_pushvalue(state, 1);
    luaL_unref(state, LUA_REGISTRYINDEX, luaL_ref(state, LUA_REGISTRYINDEX));
    return 0;
}

int callMassOf(lua_State* state)
{
    lua_pushnumber(state, massOf(checkBody(state, 1)));
    return 1;
}

int callGet(lua_State* state)
{
    lua_pushnumber(state, checkBody(state, 1).value);
    return 1;
}

void declareFunctions(lua_State* state)
{
    lua_register(state, "twice", &callTwice);
    lua_register(state, "trimmed", &callTrimmed);
    lua_register(state, "sumOfEight", &callSumOfEight);
    lua_register(state, "keep", &callKeep);
    lua_register(state, "massOf", &callMassOf);

    lua_newtable(state);
    lua_newtable(state);
    lua_pushcfunction(state, &callTwice);
    lua_setfield(state, -2, "twice");
    lua_setfield(state, -2, "b");
    lua_setglobal(state, "a");
}

void declareMethodOnly(lua_State* state)
{
    declareHandWrittenBody(state);
    luaL_getmetatable(state, "Body");
    lua_newtable(state);
    lua_pushcfunction(state, &callGet);
    lua_setfield(state, -2, "get");
    lua_setfield(state, -2, "__index");
    lua_pop(state, 1);
}

// Calls `step` with i, 2, 3 and so on, and adds its results up.
template <int ARGUMENTS, int RESULTS>
PeerLoop beginCalls(lua_State* state)
{
    lua_getglobal(state, "step");
    const int step = luaL_ref(state, LUA_REGISTRYINDEX);
    return [state, step](std::size_t n)
    {
        double sum = 0.0;
        for (std::size_t i = 0; i < n; ++i)
        {
            lua_rawgeti(state, LUA_REGISTRYINDEX, step);
            lua_pushnumber(state, static_cast<double>(i));
            for (int argument = 2; argument <= ARGUMENTS; ++argument)
                lua_pushnumber(state, argument);
            if (lua_pcall(state, ARGUMENTS, RESULTS, 0) != 0)
                fail(lua_tostring(state, -1));
            for (int result = -RESULTS; result < 0; ++result)
                sum += luaL_checknumber(state, result);
            lua_pop(state, RESULTS);
        }
        return sum;
    };
}

} // namespace

Peer getByHand()
{
    return {
        "hand-written",
        "Body.new()",
        &declareFunctions,
        &declareHandWrittenBody,
        &declareMethodOnly,
        &beginCalls<1, 1>,
        &beginCalls<8, 1>,
        &beginCalls<1, 3>};
}

} // namespace bench

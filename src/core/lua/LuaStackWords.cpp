#include "core/lua/LuaStackWords.h"

#include <initializer_list>

namespace tbScripts::lua
{

std::atomic<bool> LuaStackWords::s_isKnown{false};
std::atomic<std::uint64_t> LuaStackWords::s_tagOfUserdata{0};

/// Compares what stands in the places with what the interpreter says.
struct LuaStackProbe
{
    using Words = LuaStackWords;

    // The ends of the stack, if they are where they are expected. Only words of the thread are read
    // until that is certain.
    static bool areEndsKnown(lua_State* state)
    {
        const char* const bottom = Words::_pointerAt(Words::_inside(state) + Words::BOTTOM);
        const char* const end = Words::_pointerAt(Words::_inside(state) + Words::END);
        const int values = lua_gettop(state);
        lua_pushnil(state);
        const char* const raised = Words::_pointerAt(Words::_inside(state) + Words::END);
        const char* const same = Words::_pointerAt(Words::_inside(state) + Words::BOTTOM);
        lua_pop(state, 1);
        constexpr std::ptrdiff_t SIZE = sizeof(std::uint64_t);
        return bottom && end == bottom + SIZE * values && raised == end + SIZE && same == bottom;
    }

    static bool areNumbersKnown(lua_State* state)
    {
        for (const double number : {0.0, -0.0, 1.0, -2.5, 1e300, -4503599627370497.0, 5e-324})
        {
            std::uint64_t expected = 0;
            std::memcpy(&expected, &number, sizeof number);
            lua_pushnumber(state, number);
            const char* const end = Words::_pointerAt(Words::_inside(state) + Words::END);
            const std::uint64_t found = Words::_wordAt(end - sizeof expected);
            lua_pop(state, 1);
            if (found != expected)
                return false;
        }
        return true;
    }

    static bool areOtherValuesNoNumbers(lua_State* state)
    {
        lua_settop(state, 1);
        lua_pushnil(state);
        lua_pushboolean(state, 1);
        lua_pushlightuserdata(state, state);
        lua_pushliteral(state, "text");
        lua_createtable(state, 0, 0);
        lua_pushthread(state);
        lua_pushcfunction(state, &run);
        const char* const bottom = Words::_pointerAt(Words::_inside(state) + Words::BOTTOM);
        bool areNone = true;
        for (int i = 1; i < lua_gettop(state); ++i)
        {
            const std::uint64_t word =
                Words::_wordAt(bottom + static_cast<std::ptrdiff_t>(sizeof word) * i);
            areNone =
                areNone && (word & Words::EXPONENT) == Words::EXPONENT && !Words::_blockOf(word);
        }
        lua_settop(state, 1);
        return areNone;
    }

    // Runs as a C function with a userdata as argument and as upvalue.
    static int run(lua_State* state)
    {
        bool isAsExpected = areEndsKnown(state) && areNumbersKnown(state);
        if (isAsExpected)
        {
            const auto block = reinterpret_cast<std::uintptr_t>(lua_touserdata(state, 1));
            const std::uint64_t word =
                Words::_wordAt(Words::_pointerAt(Words::_inside(state) + Words::BOTTOM));
            const std::uint64_t tag = word ^ (block - Words::HEADER_OF_USERDATA);
            isAsExpected = (tag & Words::ADDRESS) == 0 && block <= Words::ADDRESS;
            Words::s_tagOfUserdata.store(tag, std::memory_order_relaxed);
        }
        isAsExpected = isAsExpected && areOtherValuesNoNumbers(state) && isFunctionKnown(state) &&
                       Words::readSize(lua_touserdata(state, 1)) == lua_objlen(state, 1);
        Words::setKnown(isAsExpected);
        return 0;
    }

    static bool isFunctionKnown(lua_State* state)
    {
        lua_Debug activation;
        if (!lua_getstack(state, 0, &activation) || !lua_getinfo(state, "f", &activation))
            return false;
        const auto function = reinterpret_cast<std::uintptr_t>(lua_topointer(state, -1));
        lua_pop(state, 1);
        const char* const bottom = Words::_pointerAt(Words::_inside(state) + Words::BOTTOM);
        const std::uint64_t word = Words::_wordAt(bottom - Words::FUNCTION_BELOW_BOTTOM);
        return (word & Words::ADDRESS) == function &&
               Words::readFirstUpvalue(state) == lua_touserdata(state, lua_upvalueindex(1));
    }
};

void LuaStackWords::probe(lua_State* state)
{
    static_assert(sizeof(lua_Number) == sizeof(std::uint64_t));
    constexpr std::size_t SIZE_OF_PROBE = 16;
    static std::atomic<bool> isProbed{false};
    if (sizeof(void*) != sizeof(std::uint64_t) || isProbed.exchange(true))
        return;
    lua_newuserdata(state, SIZE_OF_PROBE);
    lua_pushvalue(state, -1);
    lua_pushcclosure(state, &LuaStackProbe::run, 1);
    lua_insert(state, -2);
    lua_call(state, 1, 0);
}

} // namespace tbScripts::lua

// The rows with LuaBridge3.

#include "peers/Peer.h"
#include "support/Failure.h"
#include "support/Workload.h"

#include <LuaBridge/LuaBridge.h>
#include <lua.hpp>

namespace bench
{

namespace
{

using luabridge::LuaRef;
using luabridge::LuaResult;

void keep(const LuaRef& /*function*/) {}

double getValue(const Body* body)
{
    return body->value;
}

void setValue(Body* body, double value)
{
    body->value = value;
}

Body add(const Body* left, const Body& right)
{
    return sumOf(*left, right);
}

bool isBefore(const Body* left, const Body& right)
{
    return isLess(*left, right);
}

// For keys that are no members.
LuaRef readElement(Body& body, const LuaRef& key, lua_State* state)
{
    return LuaRef(state, elementOf(body, key.unsafe_cast<int>()));
}

LuaRef writeElement(Body& body, const LuaRef& key, const LuaRef& value, lua_State* state)
{
    elementOf(body, key.unsafe_cast<int>()) = value.unsafe_cast<double>();
    return LuaRef(state);
}

void declareFunctions(lua_State* state)
{
    luabridge::getGlobalNamespace(state)
        .addFunction("twice", &twice)
        .addFunction("trimmed", &trimmed)
        .addFunction("sumOfEight", &sumOfEight)
        .addFunction("keep", &keep)
        .addFunction("massOf", &massOf)
        .beginNamespace("a")
        .beginNamespace("b")
        .addFunction("twice", &twice)
        .endNamespace()
        .endNamespace();
}

void declareBody(lua_State* state)
{
    luabridge::getGlobalNamespace(state)
        .beginClass<Body>("Body")
        .addConstructor<void()>()
        .addFunction("get", &getValue)
        .addFunction("set", &setValue)
        .addProperty("var", &Body::value)
        .addProperty("mass", &Body::mass)
        .addFunction("__add", &add)
        .addFunction("__lt", &isBefore)
        .addIndexMetaMethod(&readElement)
        .addNewIndexMetaMethod(&writeElement)
        .endClass();
}

void declareMethodOnly(lua_State* state)
{
    luabridge::getGlobalNamespace(state)
        .beginClass<Body>("Body")
        .addConstructor<void()>()
        .addFunction("get", &getValue)
        .endClass();
}

double resultAt(const LuaResult& result, std::size_t index)
{
    if (result.hasFailed())
        fail(result.errorMessage());
    return result[index].unsafe_cast<double>();
}

PeerLoop beginCalls(lua_State* state)
{
    const LuaRef step = luabridge::getGlobal(state, "step");
    return [step](std::size_t n)
    {
        double sum = 0.0;
        for (std::size_t i = 0; i < n; ++i)
            sum += resultAt(step(static_cast<double>(i)), 0);
        return sum;
    };
}

PeerLoop beginCallsWithEight(lua_State* state)
{
    const LuaRef step = luabridge::getGlobal(state, "step");
    return [step](std::size_t n)
    {
        double sum = 0.0;
        for (std::size_t i = 0; i < n; ++i)
            sum += resultAt(step(static_cast<double>(i), 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0), 0);
        return sum;
    };
}

PeerLoop beginCallsForThree(lua_State* state)
{
    const LuaRef step = luabridge::getGlobal(state, "step");
    return [step](std::size_t n)
    {
        double sum = 0.0;
        for (std::size_t i = 0; i < n; ++i)
        {
            const LuaResult result = step(static_cast<double>(i));
            sum += resultAt(result, 0) + resultAt(result, 1) + resultAt(result, 2);
        }
        return sum;
    };
}

} // namespace

Peer getPeer()
{
    return {
        "LuaBridge3",
        "Body()",
        &declareFunctions,
        &declareBody,
        &declareMethodOnly,
        &beginCalls,
        &beginCallsWithEight,
        &beginCallsForThree};
}

} // namespace bench

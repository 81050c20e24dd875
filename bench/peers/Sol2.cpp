// The rows with sol2. Its checks are on, as those of the hand-written side are.

#define SOL_ALL_SAFETIES_ON 1
#include "peers/Peer.h"
#include "support/Failure.h"
#include "support/Workload.h"

#include <sol/sol.hpp>

namespace bench
{

namespace
{

void declareFunctions(lua_State* state)
{
    sol::state_view lua(state);
    lua.set_function("twice", &twice);
    lua.set_function("trimmed", &trimmed);
    lua.set_function("sumOfEight", &sumOfEight);
    lua.set_function("keep", [](const sol::protected_function&) {});
    lua.set_function("massOf", &massOf);
    sol::table outer = lua.create_named_table("a");
    sol::table inner = outer.create_named("b");
    inner.set_function("twice", &twice);
}

void declareBody(lua_State* state)
{
    sol::state_view lua(state);
    sol::usertype<Body> type = lua.new_usertype<Body>("Body", sol::constructors<Body()>());
    type["get"] = [](const Body& body) { return body.value; };
    type["set"] = [](Body& body, double value) { body.value = value; };
    type["var"] = &Body::value;
    type["mass"] = &Body::mass;
    type[sol::meta_function::addition] = &sumOf;
    type[sol::meta_function::less_than] = &isLess;
    type[sol::meta_function::index] = [](Body& body, int index) { return elementOf(body, index); };
    type[sol::meta_function::new_index] = [](Body& body, int index, double value)
    { elementOf(body, index) = value; };
}

void declareMethodOnly(lua_State* state)
{
    sol::state_view lua(state);
    sol::usertype<Body> type = lua.new_usertype<Body>("Body", sol::constructors<Body()>());
    type["get"] = [](const Body& body) { return body.value; };
}

void check(const sol::protected_function_result& result)
{
    if (!result.valid())
        fail("step");
}

PeerLoop beginCalls(lua_State* state)
{
    const sol::protected_function step = sol::state_view(state)["step"];
    return [step](std::size_t n)
    {
        double sum = 0.0;
        for (std::size_t i = 0; i < n; ++i)
        {
            const sol::protected_function_result result = step(static_cast<double>(i));
            check(result);
            sum += result.get<double>();
        }
        return sum;
    };
}

PeerLoop beginCallsWithEight(lua_State* state)
{
    const sol::protected_function step = sol::state_view(state)["step"];
    return [step](std::size_t n)
    {
        double sum = 0.0;
        for (std::size_t i = 0; i < n; ++i)
        {
            const sol::protected_function_result result =
                step(static_cast<double>(i), 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0);
            check(result);
            sum += result.get<double>();
        }
        return sum;
    };
}

PeerLoop beginCallsForThree(lua_State* state)
{
    const sol::protected_function step = sol::state_view(state)["step"];
    return [step](std::size_t n)
    {
        double sum = 0.0;
        for (std::size_t i = 0; i < n; ++i)
        {
            const sol::protected_function_result result = step(static_cast<double>(i));
            check(result);
            sum += result.get<double>(0) + result.get<double>(1) + result.get<double>(2);
        }
        return sum;
    };
}

} // namespace

Peer getPeer()
{
    return {
        "sol2",
        "Body.new()",
        &declareFunctions,
        &declareBody,
        &declareMethodOnly,
        &beginCalls,
        &beginCallsWithEight,
        &beginCallsForThree};
}

} // namespace bench

#include "rows/TwiceFunction.h"

#include "support/LibraryHost.h"
#include "support/Workload.h"

#include <tbScripts/Bind.h>

namespace bench
{

int twiceByHand(lua_State* state)
{
    lua_pushnumber(state, twice(luaL_checknumber(state, 1)));
    return 1;
}

void declareTwiceByHand(lua_State* state)
{
    lua_register(state, "twice", &twiceByHand);
}

void declareTwice(tbScripts::Function* function)
{
    define(
        function,
        {tbScripts::PARAM_TYPE_DOUBLE},
        [](const tbMemory::BufferView<tbScripts::FunctionParameter>& arguments)
        { return twice(arguments[0].getDouble()); });
}

void bindTwice(tbScripts::Environment& environment)
{
    tbScripts::bind<&twice>(environment, "twice");
}

void bindTwiceAsLeaf(tbScripts::Environment& environment)
{
    tbScripts::bind(environment, "twice", tbScripts::leaf<&twice>);
}

} // namespace bench

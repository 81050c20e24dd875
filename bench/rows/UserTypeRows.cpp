#include "rows/HandWrittenBody.h"
#include "rows/LibraryBody.h"
#include "rows/Rows.h"
#include "rows/ScriptRow.h"
#include "rows/TypedBody.h"

#include <tbScripts/Bind.h>
#include <tbScripts/UserType.h>

#include <string>
#include <utility>

namespace bench
{

namespace
{

using tbScripts::Environment;
using tbScripts::FunctionParameter;

using Arguments = tbMemory::BufferView<FunctionParameter>;

constexpr const char* SUBJECT = "User types";

int massByHand(lua_State* state)
{
    lua_pushnumber(state, massOf(checkBody(state, 1)));
    return 1;
}

// A row about instances of `Body`; the loop has `i`, `sum` and the instances `a` and `b` at hand.
Row makeBodyRow(std::string name, const std::string& statement, bool hasLeaf = true)
{
    ScriptRow row{
        SUBJECT,
        std::move(name),
        goals::DESCRIBED,
        R"(local massOf, Body = massOf, Body
            function run(n)
                local a, b, sum = Body.new(), Body.new(), 0
                for i = 1, n do )" +
            statement + R"( end
                return sum + b.var + b[1]
            end)",
        [](Environment& environment)
        {
            declareLibraryBody(environment);
            tbScripts::Function* const function = environment.setFunc("massOf");
            function->addParameter(tbScripts::PARAM_TYPE_USER_TYPE, "Body");
            function->setFunction([](const Arguments& arguments)
                                  { return massOf(bodyIn(arguments[0])); });
        },
        [](lua_State* state)
        {
            declareHandWrittenBody(state);
            lua_register(state, "massOf", &massByHand);
        },
        [](Environment& environment)
        {
            bindTypedBody(environment);
            tbScripts::bind<&massOf>(environment, "massOf");
        }};
    if (hasLeaf)
        row.declareLeaf = [](Environment& environment)
        {
            bindBodyOfLeaves(environment);
            tbScripts::bind(environment, "massOf", tbScripts::leaf<&massOf>);
        };
    return makeScriptRow(std::move(row));
}

int getByHand(lua_State* state)
{
    lua_pushnumber(state, checkBody(state, 1).value);
    return 1;
}

// A hand-written type without fields and elements needs no function to find its methods: a table
// does.
void declareMethodOnlyByHand(lua_State* state)
{
    declareHandWrittenBody(state);
    luaL_getmetatable(state, "Body");
    lua_newtable(state);
    lua_pushcfunction(state, &getByHand);
    lua_setfield(state, -2, "get");
    lua_setfield(state, -2, "__index");
    lua_pop(state, 1);
}

void declareMethodOnly(Environment& environment)
{
    tbScripts::UserType& type = *environment.setUserType("Body");
    type.setConstructor([](const Arguments&) { return new Body(); });
    type.setDestructor([](void* object) { delete static_cast<Body*>(object); });
    define(
        type.setMethod("get", false),
        {},
        [](const Arguments& arguments) { return bodyIn(arguments[0]).value; });
}

Row makeMethodOnlyRow()
{
    return makeScriptRow(
        {SUBJECT,
         "b:get() of a type with nothing but methods",
         goals::DESCRIBED,
         R"(function run(n)
                local b, sum = Body.new(), n
                for i = 1, n do sum = sum + b:get() end
                return sum
            end)",
         &declareMethodOnly,
         &declareMethodOnlyByHand,
         &bindTypedMethodOnly,
         &bindMethodOnlyOfLeaves});
}

} // namespace

void addUserTypeRows(RowList& rows)
{
    rows.push_back(makeBodyRow("double f(T)", "sum = sum + massOf(b)"));
    rows.push_back(makeBodyRow("b:set(b:get() + 1)", "b:set(b:get() + 1)"));
    rows.push_back(makeMethodOnlyRow());
    rows.push_back(makeBodyRow("b.var = b.var + 1", "b.var = b.var + 1"));
    rows.push_back(
        makeBodyRow("T.new() and its collection", "a = Body.new() sum = sum + 1", false));
    rows.push_back(makeBodyRow("a + b, a new instance", "local c = a + b sum = sum + 1", false));
    rows.push_back(makeBodyRow("a < b", "if not (a < b) then sum = sum + 1 end"));
    rows.push_back(makeBodyRow("sum = sum + b[1]", "sum = sum + b[1] + 1"));
    rows.push_back(makeBodyRow("b[1] = i", "b[1] = i"));
}

} // namespace bench

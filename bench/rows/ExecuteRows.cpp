#include "rows/Rows.h"
#include "rows/ScriptRow.h"
#include "support/Failure.h"

#include <tbScripts/Environment.h>
#include <tbScripts/Script.h>

#include <memory>
#include <string>
#include <utility>

namespace bench
{

namespace
{

constexpr const char* SUBJECT = "Executing again";

constexpr const char* LOOP = R"(
local sum = 0
for i = 1, 1000 do sum = sum + i * 2 end
total = sum
)";

constexpr const char* LARGER = R"(
local entities = {}
local function spawn(id, x, y)
    local entity = { id = id, x = x, y = y, life = 100, kind = id % 2 == 0 and 'guard' or 'raider' }
    entities[#entities + 1] = entity
    return entity
end
local function distance(a, b)
    local dx, dy = a.x - b.x, a.y - b.y
    return math.sqrt(dx * dx + dy * dy)
end
local function nearest(entity)
    local best, bestDistance
    for _, other in ipairs(entities) do
        if other ~= entity and other.kind ~= entity.kind then
            local d = distance(entity, other)
            if not bestDistance or d < bestDistance then best, bestDistance = other, d end
        end
    end
    return best, bestDistance
end
for i = 1, 12 do spawn(i, i * 3 % 7, i * 5 % 11) end
for round = 1, 3 do
    for _, entity in ipairs(entities) do
        local foe, d = nearest(entity)
        if foe then
            if d < 2 then foe.life = foe.life - 5
            else entity.x = entity.x + (foe.x - entity.x) / d end
        end
    end
end
total = 0
for _, entity in ipairs(entities) do total = total + entity.life end
)";

// Defines `run(n)`, which creates tables in a function that a script has left behind.
constexpr const char* TABLES = R"(
local latest
function run(n)
    for i = 1, n do
        latest = { id = i, x = i, y = i, life = 100, kind = 'guard' }
    end
    return latest.id
end
)";

// The hand-written side keeps the loaded chunk and calls it again.
LuaLoop executeByHand(LuaHost& host, const char* source)
{
    if (luaL_loadstring(host.getState(), source) != 0)
        fail("a script does not compile");
    const int chunk = luaL_ref(host.getState(), LUA_REGISTRYINDEX);
    return [chunk](LuaHost& running, std::size_t n)
    {
        lua_State* const state = running.getState();
        for (std::size_t i = 0; i < n; ++i)
        {
            lua_rawgeti(state, LUA_REGISTRYINDEX, chunk);
            if (lua_pcall(state, 0, 0, 0) != 0)
                fail(lua_tostring(state, -1));
        }
        lua_getglobal(state, "total");
        const double total = lua_tonumber(state, -1);
        lua_pop(state, 1);
        return total;
    };
}

LibraryLoop executeInLibrary(const char* source)
{
    const auto script = std::make_shared<tbScripts::Script>();
    script->setTargetInterpreter(tbScripts::INTERPRETER_LUA);
    script->setSources(source);
    if (!script->load())
        fail("a script does not compile");
    return [script](LibraryHost& host, std::size_t n)
    {
        for (std::size_t i = 0; i < n; ++i)
        {
            if (!host.getEnvironment().execute(*script))
                fail("a script does not run");
        }
        return host.getEnvironment().getVar("total", 0.0);
    };
}

Row makeExecuteRow(const char* name, const char* source, std::size_t operations)
{
    return makeHostRow(
        {SUBJECT,
         name,
         1.1,
         "",
         [source](LibraryHost&) { return executeInLibrary(source); },
         [source](LuaHost& host) { return executeByHand(host, source); },
         operations});
}

} // namespace

void addExecuteRows(RowList& rows)
{
    constexpr std::size_t FEW = 10'000; // of those that take tens of microseconds
    rows.push_back(makeExecuteRow("a script: a loop of 1,000 steps", LOOP, MANY));
    rows.push_back(makeExecuteRow("a script of 40 lines", LARGER, FEW));
    rows.push_back(makeScriptRow(
        {SUBJECT,
         "tables made in a script",
         1.05,
         TABLES,
         [](tbScripts::Environment&) {},
         [](lua_State*) {}}));
}

} // namespace bench

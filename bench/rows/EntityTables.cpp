#include "rows/EntityTables.h"

#include "support/Failure.h"
#include "support/LibraryHost.h"
#include "support/LuaHost.h"

#include <memory>
#include <string>

namespace bench
{

namespace
{

constexpr const char* ENTITIES = R"(
function build(count)
    entities = {}
    for i = 1, count do
        entities[i] = {
            id = i, name = 'entity ' .. i, pos = { x = i * 0.5, y = i * 0.25 }, alive = i % 3 ~= 0
        }
    end
    return checksum(entities)
end
function checksum(list)
    local sum = 0
    for i = 1, #list do
        local e = list[i]
        sum = sum + e.id + #e.name + e.pos.x + e.pos.y + (e.alive and 1 or 0)
    end
    return sum
end
function checkRestored() return checksum(restored) end
)";

void checkRestored(double before, double after)
{
    if (before != after)
        fail("a table does not come back as it was");
}

// A host that keeps a table, its bytes and nothing else.
class LibraryTable
{
public:
    explicit LibraryTable(std::size_t entities)
    {
        m_host.run(ENTITIES);
        const double before = m_host.callGlobal("build", static_cast<double>(entities));
        m_table = m_host.getEnvironment().getVar("entities");
        write();
        m_host.getEnvironment().setVar("restored", _restore());
        checkRestored(before, m_host.callGlobal("checkRestored", 0.0));
        m_host.run("restored = nil");
    }

    void collect() { m_host.collect(); }

    void write() { m_bytes = m_host.getEnvironment().serializeScriptObject(m_table, false); }

    void read()
    {
        if (_restore().getType() == tbScripts::PARAM_TYPE_VOID)
            fail("a table is not restored");
    }

private:
    tbScripts::ScriptObjectReference _restore()
    {
        return m_host.getEnvironment().deserializeScriptObject(m_bytes);
    }

    LibraryHost m_host;
    tbScripts::ScriptObjectReference m_table;
    tbMemory::Buffer m_bytes;
};

// The same by two functions of a module, text = encode(value) and value = decode(text).
class ModuleTable
{
public:
    ModuleTable(const std::string& module, std::size_t entities)
    {
        m_host.run(ENTITIES);
        const double before = m_host.callGlobal("build", static_cast<double>(entities));
        m_host.run(
            "encode, decode = require('" + module + "').encode, require('" + module + "').decode");
        m_encode = m_host.refer("encode");
        m_decode = m_host.refer("decode");
        m_table = m_host.refer("entities");
        write();
        _restore();
        lua_setglobal(m_host.getState(), "restored");
        checkRestored(before, m_host.callGlobal("checkRestored", 0.0));
        m_host.run("restored = nil");
    }

    void collect() { m_host.collect(); }

    void write()
    {
        lua_State* const state = m_host.getState();
        lua_rawgeti(state, LUA_REGISTRYINDEX, m_encode);
        lua_rawgeti(state, LUA_REGISTRYINDEX, m_table);
        if (lua_pcall(state, 1, 1, 0) != 0)
            fail(lua_tostring(state, -1));
        std::size_t size = 0;
        const char* const text = lua_tolstring(state, -1, &size);
        m_bytes.assign(text, size);
        lua_pop(state, 1);
    }

    void read()
    {
        _restore();
        lua_pop(m_host.getState(), 1);
    }

private:
    // Stack: +1, the table.
    void _restore()
    {
        lua_State* const state = m_host.getState();
        lua_rawgeti(state, LUA_REGISTRYINDEX, m_decode);
        lua_pushlstring(state, m_bytes.data(), m_bytes.size());
        if (lua_pcall(state, 1, 1, 0) != 0 || !lua_istable(state, -1))
            fail("a table is not restored");
    }

    LuaHost m_host;
    int m_encode = LUA_NOREF;
    int m_decode = LUA_NOREF;
    int m_table = LUA_NOREF;
    std::string m_bytes;
};

template <typename Table>
Variant makeVariant(std::shared_ptr<Table> table, BYTES_WORK work, std::size_t entities)
{
    return {
        [table, work, entities]
        {
            if (work != BYTES_WORK::READ)
                table->write();
            if (work != BYTES_WORK::WRITE)
                table->read();
            return static_cast<double>(entities);
        },
        [table] { table->collect(); }};
}

} // namespace

Variant makeLibraryVariant(BYTES_WORK work, std::size_t entities)
{
    return makeVariant(std::make_shared<LibraryTable>(entities), work, entities);
}

Variant makeStringBufferVariant(BYTES_WORK work, std::size_t entities)
{
    return makeVariant(std::make_shared<ModuleTable>("string.buffer", entities), work, entities);
}

Variant makeCjsonVariant(BYTES_WORK work, std::size_t entities)
{
    return makeVariant(std::make_shared<ModuleTable>("cjson", entities), work, entities);
}

} // namespace bench

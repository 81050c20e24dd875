#pragma once

#include <lua.hpp>

#include <string>

namespace bench
{

/// A host that uses the C interface of the interpreter and nothing else.
class LuaHost
{
public:
    LuaHost();
    LuaHost(const LuaHost&) = delete;
    LuaHost& operator=(const LuaHost&) = delete;
    ~LuaHost();

    lua_State* getState() const { return m_state; }

    /// Compiles and runs `source`.
    void run(const std::string& source);

    /// Returns a registry reference on global `name`.
    int refer(const char* name);

    /// Calls the function behind `reference` with one number and returns the one it gives.
    double call(int reference, double argument);

    double callGlobal(const char* name, double argument);

    /// Collects all garbage, twice: finalised objects go in the second round.
    void collect();

    /// Returns the bytes that the interpreter holds, after a collection.
    double countScriptBytes();

private:
    lua_State* m_state;
};

} // namespace bench

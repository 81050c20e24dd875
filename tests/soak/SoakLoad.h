#pragma once

#include <tbScripts/Environment.h>
#include <tbScripts/Script.h>

#include <cstddef>
#include <memory>
#include <vector>

struct lua_State;

namespace tbScripts::test
{

/// A host at work: one environment that stays, others that come and go, scripts that are loaded
/// anew. Each round does all of it once, and leaves nothing behind.
class SoakLoad
{
public:
    SoakLoad();
    ~SoakLoad();

    SoakLoad(const SoakLoad&) = delete;
    SoakLoad& operator=(const SoakLoad&) = delete;

    /// Binds, runs, calls, collects, serialises, switches, reloads. Returns false, after saying why
    /// on the standard error, if something came out wrong.
    bool runRound();

    /// What the environment that stays has taken.
    struct Taken
    {
        int references; // slots of its registry
        int stackValues;
        double kilobytes; // of its interpreter
    };

    /// Collects all garbage, drops what the interpreter has compiled, and counts what is left.
    Taken countTaken();

    /// Returns the number of host objects that live.
    static int countObjects();

private:
    void _bind();
    bool _callAndKeep();
    bool _writeAndRead();
    bool _comeAndGo();
    bool _reload();

    Environment m_environment; // the one that stays
    lua_State* m_state;        // its interpreter
    Environment m_switched;    // gets another interpreter each round
    Script m_script;
    std::vector<ScriptObjectReference> m_kept;
    std::size_t m_rounds = 0;
};

} // namespace tbScripts::test

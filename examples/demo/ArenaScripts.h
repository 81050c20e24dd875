#pragma once

#include "demo/Arena.h"
#include "demo/Binding.h"
#include "demo/Project.h"
#include "demo/VecStore.h"

#include <tbScripts/Environment.h>
#include <tbScripts/Namespace.h>
#include <tbScripts/Script.h>

#include <map>
#include <string>
#include <vector>

namespace demo
{

/// What a script wants an entity to do.
struct Decision
{
    std::string action;
    Vec step;
};

/// What the scripts' own counting says.
struct Score
{
    int raidersFallen = 0;
    int guardsFallen = 0;
};

/// Connects the arena with its scripts: the environment in which they run, the functions that they
/// may call besides those of World.h, and every script function that the arena calls.
class ArenaScripts
{
public:
    /// Creates the environment and declares in it what scripts may use.
    ///
    /// Requires: `arena`, `vecs` and `project` outlive this object.
    ArenaScripts(Arena& arena, VecStore& vecs, Project& project);

    ArenaScripts(const ArenaScripts&) = delete;
    ArenaScripts& operator=(const ArenaScripts&) = delete;

    /// Runs a compiled script once, so that it defines its functions and passes its callbacks.
    bool run(const tbScripts::Script& script);

    /// Looks up what the arena needs of the environment, and gives the scripts their settings back
    /// to begin with. Returns false, after saying so, if a script function is missing.
    bool begin(int lastTick);

    /// Tells the scripts what time it is, and calls what they have scheduled for `tick`, or for
    /// before.
    void startTick(int tick);

    /// Returns what `entity` is to do; nothing if the script fails.
    Decision decide(Entity& entity);

    /// Tells every callback that waits for it about `event`.
    void dispatch(const Event& event);

    Score score();

    /// Returns what the scripts know of the world, as bytes; empty if the script fails. The
    /// environment that reads the bytes owns the vectors in them; bytes that are never read leak
    /// the vectors.
    tbMemory::Buffer handOverState();

    /// Returns the scripts' count of `name`.
    double tally(const std::string& name);

    /// Returns what the scripts have to say in the end.
    std::string report();

    int countTimersFired() const { return m_timersFired; }

    int countDecisions() const { return m_decisions; }

    int countFailedCalls() const { return m_failedCalls; }

    /// Returns how many calls the scripts mean to fail.
    int countPlannedMistakes() const;

private:
    struct Timer
    {
        int tick;
        tbScripts::ScriptObjectReference callback;
    };

    void _declareFunctions();

    // Returns true and sets `function` if there is a script function called `name`.
    bool _findFunction(const char* name, tbScripts::ScriptObjectReference& function);

    // Every call of a script goes through here, so that failures are counted in one place.
    bool _call(
        const tbScripts::ScriptObjectReference& function,
        const Parameters& inputs,
        Parameters outputs);

    double _readSetting(const char* name);

    Arena& m_arena;
    VecStore& m_vecs;
    int m_tick = 0;
    int m_timersFired = 0;
    int m_decisions = 0;
    int m_failedCalls = 0;

    // The environment's, as long as it lives.
    tbScripts::Namespace* m_world = nullptr;
    tbScripts::Namespace* m_field = nullptr;

    // A reference keeps its script value alive. References may be destroyed before the environment
    // or after it, so the order of these members does not matter.
    std::vector<Timer> m_timers;
    std::map<std::string, std::vector<tbScripts::ScriptObjectReference>> m_listeners;
    tbScripts::ScriptObjectReference m_settings;
    tbScripts::ScriptObjectReference m_decide;
    tbScripts::ScriptObjectReference m_score;
    tbScripts::ScriptObjectReference m_state;
    tbScripts::ScriptObjectReference m_tally;
    tbScripts::ScriptObjectReference m_report;
    tbScripts::ScriptObjectReference m_readSetting;

    // Last, so that it is destroyed first: the callables in it use everything above.
    tbScripts::Environment m_environment;
};

} // namespace demo

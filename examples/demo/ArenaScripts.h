#pragma once

#include "demo/Arena.h"

#include <tbScripts/Environment.h>
#include <tbScripts/Function.h>
#include <tbScripts/Script.h>

#include <initializer_list>
#include <map>
#include <string>
#include <vector>

namespace demo
{

/// What a script wants a unit to do.
struct Decision
{
    std::string action;
    double dx = 0.0;
    double dy = 0.0;
};

/// What the scripts' own counting says.
struct Score
{
    int raidersFallen = 0;
    int guardsFallen = 0;
};

/// The border between the arena and its scripts: everything that scripts may call, and every script
/// function that the arena calls.
class ArenaScripts
{
public:
    /// Makes the environment and declares the host functions in it.
    explicit ArenaScripts(Arena& arena);

    ArenaScripts(const ArenaScripts&) = delete;
    ArenaScripts& operator=(const ArenaScripts&) = delete;

    /// Runs a compiled script once, so that it defines its functions and hands over its callbacks.
    bool run(const tbScripts::Script& script);

    /// Looks up the script functions that the arena needs, and gives the scripts their settings
    /// back to begin with. Returns false, after saying so, if a function is missing.
    bool begin(int lastTick);

    /// Calls what scripts have scheduled for `tick`, or for before.
    void fireTimers(int tick);

    /// Returns what `unit` is to do; nothing if the script fails.
    Decision decide(const Unit& unit);

    /// Tells every callback that waits for it about `event`.
    void dispatch(const Event& event);

    Score score();

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

    using Parameters = tbMemory::BufferView<tbScripts::FunctionParameter>;

    void _declare(
        const char* name,
        std::initializer_list<tbScripts::FUNCTION_PARAMETER_TYPE> parameters,
        tbScripts::Function::Callable callable);

    void _declareQueries();
    void _declareActions();
    void _declareCallbacks();

    // Returns true and sets `function` if there is a script function called `name`.
    bool _findFunction(const char* name, tbScripts::ScriptObjectReference& function);

    // Every call of a script goes through here, so that failures are counted in one place.
    bool _call(
        const tbScripts::ScriptObjectReference& function,
        const Parameters& inputs,
        Parameters outputs);

    double _readSetting(const char* name);

    Arena& m_arena;
    int m_tick = 0;
    int m_timersFired = 0;
    int m_decisions = 0;
    int m_failedCalls = 0;

    // A reference keeps its script value alive. It may go before the environment or after it, so
    // the order of these members does not matter.
    std::vector<Timer> m_timers;
    std::map<std::string, std::vector<tbScripts::ScriptObjectReference>> m_listeners;
    tbScripts::ScriptObjectReference m_settings;
    tbScripts::ScriptObjectReference m_decide;
    tbScripts::ScriptObjectReference m_score;
    tbScripts::ScriptObjectReference m_tally;
    tbScripts::ScriptObjectReference m_report;
    tbScripts::ScriptObjectReference m_readSetting;

    // Last, so that it goes first: the callables in it use everything above.
    tbScripts::Environment m_environment;
};

} // namespace demo

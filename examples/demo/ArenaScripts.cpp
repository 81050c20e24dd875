#include "demo/ArenaScripts.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <string_view>
#include <utility>

namespace demo
{

namespace
{

using tbScripts::FunctionParameter;
using tbScripts::ScriptObjectReference;

using tbScripts::PARAM_TYPE_BOOL;
using tbScripts::PARAM_TYPE_DOUBLE;
using tbScripts::PARAM_TYPE_INT;
using tbScripts::PARAM_TYPE_SCRIPT_FUNCTION;
using tbScripts::PARAM_TYPE_SCRIPT_OBJECT;
using tbScripts::PARAM_TYPE_STRING;

// The host cannot look into a script table by itself; one line of script can.
constexpr const char* OWN_SCRIPT = "-- ArenaScripts.cpp\n"
                                   "function readSetting(settings, name) return settings[name] end";

constexpr int LONGEST_TIMER = 1000000;

std::string textOf(const FunctionParameter& parameter)
{
    return std::string(std::string_view(parameter.getString()));
}

} // namespace

ArenaScripts::ArenaScripts(Arena& arena)
    : m_arena(arena)
{
    m_environment.setName("arena");
    m_environment.setEnvironmentFor(tbScripts::INTERPRETER_LUA);
    _declareQueries();
    _declareActions();
    _declareCallbacks();

    tbScripts::Script own;
    own.setName("ArenaScripts.cpp");
    own.setTargetInterpreter(tbScripts::INTERPRETER_LUA);
    own.setSources(OWN_SCRIPT);
    own.load();
    run(own);
}

bool ArenaScripts::run(const tbScripts::Script& script)
{
    return m_environment.execute(script);
}

bool ArenaScripts::begin(int lastTick)
{
    ScriptObjectReference begin;
    const bool isComplete = _findFunction("begin", begin) && _findFunction("decide", m_decide) &&
                            _findFunction("score", m_score) && _findFunction("tally", m_tally) &&
                            _findFunction("report", m_report) &&
                            _findFunction("readSetting", m_readSetting);
    if (!isComplete)
        return false;

    // Nothing in the scripts refers to the settings any more; the reference alone keeps them.
    m_environment.requestGarbageCollection();
    m_environment.setVar("lastTick", lastTick);
    m_arena.resize(_readSetting("width"), _readSetting("height"));
    return _call(begin, {m_settings}, {});
}

void ArenaScripts::fireTimers(int tick)
{
    m_tick = tick;
    // Taken out before any is called: a callback may schedule the next one.
    const auto isDue = [tick](const Timer& timer) { return timer.tick <= tick; };
    const auto firstLater = std::stable_partition(m_timers.begin(), m_timers.end(), isDue);
    const std::vector<Timer> due(m_timers.begin(), firstLater);
    m_timers.erase(m_timers.begin(), firstLater);
    for (const Timer& timer : due)
    {
        ++m_timersFired;
        _call(timer.callback, {tick}, {});
    }
}

Decision ArenaScripts::decide(const Unit& unit)
{
    // The kind of each output says what is expected. One that the script does not give, or gives
    // as something else, stays as it is here.
    std::array<FunctionParameter, 3> outputs{"rest", 0.0, 0.0};
    ++m_decisions;
    _call(m_decide, {unit.id, unit.x, unit.y, unit.hitPoints}, outputs);
    return {textOf(outputs[0]), outputs[1].getDouble(), outputs[2].getDouble()};
}

void ArenaScripts::dispatch(const Event& event)
{
    const auto listeners = m_listeners.find(event.name);
    if (listeners == m_listeners.end())
        return;
    // A copy shares the references: a callback may add listeners meanwhile.
    const std::vector<ScriptObjectReference> callbacks = listeners->second;
    for (const ScriptObjectReference& callback : callbacks)
        _call(callback, {event.unitId, event.amount}, {});
}

Score ArenaScripts::score()
{
    std::array<FunctionParameter, 2> outputs{0, 0};
    _call(m_score, {}, outputs);
    return {outputs[0].getInt(), outputs[1].getInt()};
}

double ArenaScripts::tally(const std::string& name)
{
    std::array<FunctionParameter, 1> outputs{0.0};
    _call(m_tally, {tbMemory::StringView(name)}, outputs);
    return outputs[0].getDouble();
}

std::string ArenaScripts::report()
{
    std::array<FunctionParameter, 1> outputs{""};
    _call(m_report, {m_settings}, outputs);
    return textOf(outputs[0]);
}

int ArenaScripts::countPlannedMistakes() const
{
    return m_environment.getVar("plannedMistakes", 0);
}

void ArenaScripts::_declare(
    const char* name,
    std::initializer_list<tbScripts::FUNCTION_PARAMETER_TYPE> parameters,
    tbScripts::Function::Callable callable)
{
    tbScripts::Function* const function = m_environment.setFunc(name);
    if (!function)
        return; // the log says why
    for (const tbScripts::FUNCTION_PARAMETER_TYPE type : parameters)
        function->addParameter(type);
    function->setFunction(std::move(callable));
}

// The library has checked and converted the arguments before a callable runs: it finds exactly the
// declared kinds.
void ArenaScripts::_declareQueries()
{
    _declare(
        "isAlive",
        {PARAM_TYPE_INT},
        [this](const Parameters& arguments) { return m_arena.isAlive(arguments[0].getInt()); });
    _declare(
        "nearestFoe",
        {PARAM_TYPE_INT},
        [this](const Parameters& arguments) { return m_arena.nearestFoe(arguments[0].getInt()); });
    _declare(
        "positionX",
        {PARAM_TYPE_INT},
        [this](const Parameters& arguments)
        {
            const Unit* const unit = m_arena.find(arguments[0].getInt());
            return unit ? FunctionParameter(unit->x) : FunctionParameter::VOID; // nil for scripts
        });
    _declare(
        "positionY",
        {PARAM_TYPE_INT},
        [this](const Parameters& arguments)
        {
            const Unit* const unit = m_arena.find(arguments[0].getInt());
            return unit ? FunctionParameter(unit->y) : FunctionParameter::VOID;
        });
    _declare(
        "random",
        {PARAM_TYPE_INT, PARAM_TYPE_INT},
        [this](const Parameters& arguments)
        { return m_arena.random(arguments[0].getInt(), arguments[1].getInt()); });
}

void ArenaScripts::_declareActions()
{
    _declare(
        "spawn",
        {PARAM_TYPE_STRING, PARAM_TYPE_DOUBLE, PARAM_TYPE_DOUBLE},
        [this](const Parameters& arguments)
        {
            const tbMemory::StringView kind = arguments[0].getString();
            // What a callable throws as a text is a script error for the one who called.
            if (kind != "guard" && kind != "raider")
                throw "spawn knows guards and raiders, but no " + textOf(arguments[0]);
            return m_arena.spawn(
                kind == "guard" ? KIND::GUARD : KIND::RAIDER,
                arguments[1].getDouble(),
                arguments[2].getDouble());
        });
    _declare(
        "damage",
        {PARAM_TYPE_INT, PARAM_TYPE_INT},
        [this](const Parameters& arguments)
        { return m_arena.damage(arguments[0].getInt(), arguments[1].getInt()); });
    _declare(
        "shield",
        {PARAM_TYPE_INT, PARAM_TYPE_BOOL},
        [this](const Parameters& arguments)
        {
            m_arena.setShielded(arguments[0].getInt(), arguments[1].getBool());
            return FunctionParameter::VOID;
        });
    _declare(
        "log",
        {PARAM_TYPE_STRING},
        [this](const Parameters& arguments)
        {
            std::cout << "  tick " << m_tick << ": " << arguments[0].getString() << '\n';
            return FunctionParameter::VOID;
        });
}

// Copying a reference out of the arguments is all it takes to keep a script value.
void ArenaScripts::_declareCallbacks()
{
    _declare(
        "schedule",
        {PARAM_TYPE_INT, PARAM_TYPE_SCRIPT_FUNCTION},
        [this](const Parameters& arguments)
        {
            // The kind of an argument is checked, its value is the host's to judge.
            const int ticks = std::clamp(arguments[0].getInt(), 1, LONGEST_TIMER);
            m_timers.push_back({m_tick + ticks, arguments[1].getScriptObject()});
            return FunctionParameter::VOID;
        });
    _declare(
        "onEvent",
        {PARAM_TYPE_STRING, PARAM_TYPE_SCRIPT_FUNCTION},
        [this](const Parameters& arguments)
        {
            m_listeners[textOf(arguments[0])].push_back(arguments[1].getScriptObject());
            return FunctionParameter::VOID;
        });
    _declare(
        "configure",
        {PARAM_TYPE_SCRIPT_OBJECT},
        [this](const Parameters& arguments)
        {
            m_settings = arguments[0].getScriptObject();
            return FunctionParameter::VOID;
        });
}

bool ArenaScripts::_findFunction(const char* name, ScriptObjectReference& function)
{
    function = m_environment.getScriptFunction(name);
    if (function.getType() == PARAM_TYPE_SCRIPT_FUNCTION)
        return true;
    std::cout << "The scripts define no function '" << name << "'.\n";
    return false;
}

bool ArenaScripts::_call(
    const ScriptObjectReference& function, const Parameters& inputs, Parameters outputs)
{
    if (m_environment.callScriptFunction(function, inputs, outputs))
        return true;
    // The log has the message; getLastExecutionResult() would give it too. The world goes on.
    ++m_failedCalls;
    return false;
}

double ArenaScripts::_readSetting(const char* name)
{
    std::array<FunctionParameter, 1> outputs{0.0};
    _call(m_readSetting, {m_settings, name}, outputs);
    return outputs[0].getDouble();
}

} // namespace demo

#include "demo/ArenaScripts.h"

#include "demo/EntityType.h"
#include "demo/VecType.h"
#include "demo/World.h"

#include <algorithm>
#include <array>
#include <iostream>

namespace demo
{

namespace
{

using tbScripts::FunctionParameter;
using tbScripts::ScriptObjectReference;

using tbScripts::PARAM_TYPE_INT;
using tbScripts::PARAM_TYPE_SCRIPT_FUNCTION;
using tbScripts::PARAM_TYPE_SCRIPT_OBJECT;
using tbScripts::PARAM_TYPE_STRING;
using tbScripts::PARAM_TYPE_USER_TYPE;

// The host cannot read the fields of a script table directly; one line of script can.
constexpr const char* OWN_SCRIPT = "-- ArenaScripts.cpp\n"
                                   "function readSetting(settings, name) return settings[name] end";

constexpr int LONGEST_TIMER = 1000000;

} // namespace

ArenaScripts::ArenaScripts(Arena& arena, VecStore& vecs, Project& project)
    : m_arena(arena)
    , m_vecs(vecs)
{
    m_environment.setName("arena");
    m_environment.setEnvironmentFor(tbScripts::INTERPRETER_LUA);
    declareWorld(m_environment, arena, vecs);
    project.declareIn(m_environment);
    _declareFunctions();

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
                            _findFunction("score", m_score) && _findFunction("state", m_state) &&
                            _findFunction("tally", m_tally) && _findFunction("report", m_report) &&
                            _findFunction("readSetting", m_readSetting);
    m_world = m_environment.getNamespace("world");
    m_field = m_environment.getNamespace("world::field");
    if (!isComplete || !m_world || !m_field)
        return false;

    // Nothing in the scripts refers to the settings any more; the reference alone keeps them.
    m_environment.requestGarbageCollection();
    const Vec size{_readSetting("width"), _readSetting("height")};
    m_arena.resize(size);
    m_field->setVar("width", size.x);
    m_field->setVar("height", size.y);
    m_world->setVar("tick", m_tick);
    m_world->setVar("lastTick", lastTick);
    return _call(begin, {m_settings}, {});
}

void ArenaScripts::startTick(int tick)
{
    m_tick = tick;
    m_world->setVar("tick", tick);
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

Decision ArenaScripts::decide(Entity& entity)
{
    // The kind of each output is the kind that the host expects. If the script returns no value for
    // an output, or one of another kind, the output stays unchanged.
    std::array<FunctionParameter, 2> outputs{
        "rest", FunctionParameter::ofType(PARAM_TYPE_USER_TYPE, VEC_TYPE)};
    ++m_decisions;
    _call(m_decide, {toScript(&entity)}, outputs);
    // The script owns the vector and may collect it as soon as it runs again, so the host copies
    // it.
    const Vec* const step = m_vecs.find(outputs[1].getUserTypeObject());
    return {textOf(outputs[0]), step ? *step : Vec()};
}

void ArenaScripts::dispatch(const Event& event)
{
    // A variable may hold an entity too. Each setVar overwrites what was there.
    if (!isAlive(*event.entity))
        m_field->setVar("lastToFall", ENTITY_TYPE, event.entity);
    const auto listeners = m_listeners.find(event.name);
    if (listeners == m_listeners.end())
        return;
    // A copy, because a callback may add listeners during the loop.
    const std::vector<ScriptObjectReference> callbacks = listeners->second;
    for (const ScriptObjectReference& callback : callbacks)
        _call(callback, {toScript(event.entity), event.amount}, {});
}

Score ArenaScripts::score()
{
    std::array<FunctionParameter, 2> outputs{0, 0};
    _call(m_score, {}, outputs);
    return {outputs[0].getInt(), outputs[1].getInt()};
}

tbMemory::Buffer ArenaScripts::handOverState()
{
    constexpr bool TRANSFERS_OWNERSHIP = true;
    tbMemory::Buffer bytes;
    {
        std::array<FunctionParameter, 1> outputs{
            FunctionParameter::ofType(PARAM_TYPE_SCRIPT_OBJECT)};
        _call(m_state, {}, outputs);
        bytes =
            m_environment.serializeScriptObject(outputs[0].getScriptObject(), TRANSFERS_OWNERSHIP);
    } // destroys the last reference to the table: state.lua keeps neither it nor its contents
    // The collector has not freed the instances in that table yet. They own nothing any more, but
    // they point at vectors that the environment which reads the bytes will destroy. No script can
    // reach these instances, and after a collection they no longer exist.
    m_environment.requestGarbageCollection();
    return bytes;
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

// The library has checked and converted the arguments before a callable runs: it finds exactly the
// declared kinds. Copying a reference out of them is all it takes to keep a script value.
void ArenaScripts::_declareFunctions()
{
    define(
        m_environment.setFunc("log"),
        {PARAM_TYPE_STRING},
        [this](const Parameters& arguments)
        {
            std::cout << "  tick " << m_tick << ": " << arguments[0].getString() << '\n';
            return FunctionParameter::VOID;
        });
    define(
        m_environment.setFunc("schedule"),
        {PARAM_TYPE_INT, PARAM_TYPE_SCRIPT_FUNCTION},
        [this](const Parameters& arguments)
        {
            // The library checks the kind of an argument, the host its value.
            const int ticks = std::clamp(arguments[0].getInt(), 1, LONGEST_TIMER);
            m_timers.push_back({m_tick + ticks, arguments[1].getScriptObject()});
            return FunctionParameter::VOID;
        });
    define(
        m_environment.setFunc("onEvent"),
        {PARAM_TYPE_STRING, PARAM_TYPE_SCRIPT_FUNCTION},
        [this](const Parameters& arguments)
        {
            m_listeners[textOf(arguments[0])].push_back(arguments[1].getScriptObject());
            return FunctionParameter::VOID;
        });
    define(
        m_environment.setFunc("configure"),
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

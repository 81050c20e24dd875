#include "demo/Witness.h"

#include "demo/Binding.h"
#include "demo/World.h"

#include <array>
#include <iostream>

namespace demo
{

using tbScripts::FunctionParameter;
using tbScripts::ScriptObjectReference;

Witness::Witness(Arena& arena, VecStore& vecs, Project& project)
    : m_arena(arena)
    , m_vecs(vecs)
{
    m_environment.setName("witness");
    m_environment.setEnvironmentFor(tbScripts::INTERPRETER_LUA);
    declareWorld(m_environment, arena, vecs);
    project.declareIn(m_environment);
}

bool Witness::run(const tbScripts::Script& script)
{
    return m_environment.execute(script);
}

bool Witness::begin()
{
    m_compare = m_environment.getScriptFunction("compare");
    if (m_compare.getType() == tbScripts::PARAM_TYPE_SCRIPT_FUNCTION)
        return true;
    std::cout << "The scripts of the witness define no function 'compare'.\n";
    return false;
}

bool Witness::check(int tick, const tbMemory::Buffer& state)
{
    const int vecsBefore = m_vecs.countLeft();
    const Findings findings = _compare(tick, state);
    // The vectors of the state belong to this environment now, as do those that the script has made
    // to compare them. Nothing refers to any of them: the collector destroys them all.
    m_environment.requestGarbageCollection();
    const int vecs = vecsBefore - m_vecs.countLeft();

    m_entities += findings.entities;
    m_vecsTakenOver += vecs;
    std::cout << "tick " << tick << ": state of " << state.size() << " bytes, " << findings.entries
              << " entries and " << vecs << " vectors: "
              << (findings.differences.empty() ? "as in the arena" : findings.differences) << '\n';
    return findings.differences.empty();
}

Witness::Findings Witness::_compare(int tick, const tbMemory::Buffer& state)
{
    const ScriptObjectReference restored = m_environment.deserializeScriptObject(state);
    const Totals& totals = m_arena.getTotals();
    std::array<FunctionParameter, 3> outputs{0, 0, ""};
    tbMemory::BufferView<FunctionParameter> results = outputs;
    if (!m_environment.callScriptFunction(
            m_compare, {restored, tick, totals.raidersFallen, totals.guardsFallen}, results))
        return {0, 0, "it could not be compared"};
    return {outputs[0].getInt(), outputs[1].getInt(), textOf(outputs[2])};
}

} // namespace demo

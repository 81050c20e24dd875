#pragma once

#include "demo/Arena.h"
#include "demo/Project.h"
#include "demo/VecStore.h"

#include <tbScripts/Environment.h>
#include <tbScripts/Script.h>

#include <string>

namespace demo
{

/// A second environment, which restores states of the first and compares them with the arena.
///
/// It sees nothing of the first environment, whose references are empty here; only bytes pass from
/// one to the other. The library looks up user types by their full names, so this environment
/// declares the same ones.
class Witness
{
public:
    /// Requires: `arena`, `vecs` and `project` outlive this object.
    Witness(Arena& arena, VecStore& vecs, Project& project);

    Witness(const Witness&) = delete;
    Witness& operator=(const Witness&) = delete;

    bool run(const tbScripts::Script& script);

    /// Looks up the script function that is needed. Returns false, after saying so, if it is
    /// missing.
    bool begin();

    /// Restores a state, has it compared with the arena, and destroys it. Prints one line, and
    /// returns whether all is as the arena has it.
    bool check(int tick, const tbMemory::Buffer& state);

    /// Returns how many entities the states held, all together.
    int countEntities() const { return m_entities; }

    /// Returns how many vectors came with the states; they are destroyed.
    int countVecs() const { return m_vecsTakenOver; }

private:
    struct Findings
    {
        int entries = 0;
        int entities = 0;
        std::string differences;
    };

    // The restored state is garbage when this returns: nothing refers to it any more.
    Findings _compare(int tick, const tbMemory::Buffer& state);

    Arena& m_arena;
    VecStore& m_vecs;
    int m_entities = 0;
    int m_vecsTakenOver = 0;
    tbScripts::ScriptObjectReference m_compare;
    tbScripts::Environment m_environment; // last, as in ArenaScripts
};

} // namespace demo

// The example host: a small arena in which guards hold a gate against raiders. What they do, when
// the raiders come and who counts the points is up to the scripts of a project:
//
//     demo <project script list>
//
// The build packs such a list from the files in scripts/.
//
// Read it in this order:
//
//     Arena.h         the game, without scripts
//     VecType.h       a type of the host whose objects scripts make and own
//     EntityType.h    a type of the host whose objects stay the host's
//     World.h         namespaces, which show scripts the game
//     ArenaScripts.h  callbacks, timers, and calls of script functions
//     Witness.h       a second environment, which gets a script's table as bytes
//     Project.h       the scripts, loaded from a list and saved again
//
// In the end host and scripts compare what they have counted; the exit status is 0 if all agrees, 1
// if not, and 2 if there was nothing to run.

#include "demo/Arena.h"
#include "demo/ArenaScripts.h"
#include "demo/ConsoleLog.h"
#include "demo/Project.h"
#include "demo/Summary.h"
#include "demo/VecStore.h"
#include "demo/Witness.h"

#include <iostream>
#include <string>

namespace
{

using demo::Arena;
using demo::ArenaScripts;
using demo::KIND;
using demo::Project;
using demo::Summary;
using demo::VecStore;
using demo::Witness;

constexpr int TICKS = 300;
constexpr int TICKS_BETWEEN_REPORTS = 50;
constexpr int TICKS_BETWEEN_STATES = 100;

constexpr int STATUS_AGREED = 0;
constexpr int STATUS_DIFFERENCE = 1;
constexpr int STATUS_NOTHING_TO_RUN = 2;

// What the host has seen beside the arena's totals.
struct Observations
{
    int ticksThatDiffered = 0;
    int states = 0;
    int entitiesInStates = 0;
    int statesThatDiffered = 0;
};

void letEntitiesAct(Arena& arena, ArenaScripts& scripts)
{
    const int count = arena.countEntities(); // who comes during this tick acts in the next one
    for (int id = 1; id <= count; ++id)
    {
        demo::Entity& entity = *arena.find(id);
        if (!isAlive(entity))
            continue;
        const demo::Decision decision = scripts.decide(entity);
        if (decision.action == "move")
            arena.walk(entity, decision.step);
        else if (decision.action == "rest")
            arena.rest(entity);
    }
}

// Returns whether the scripts know the same of the dead as the host.
bool runTick(int tick, Arena& arena, ArenaScripts& scripts)
{
    scripts.startTick(tick);
    letEntitiesAct(arena, scripts);
    for (const demo::Event& event : arena.takeEvents())
        scripts.dispatch(event);

    const demo::Score score = scripts.score();
    if (tick % TICKS_BETWEEN_REPORTS == 0)
    {
        std::cout << "tick " << tick << ": " << arena.countAlive(KIND::GUARD) << " guards, "
                  << arena.countAlive(KIND::RAIDER) << " raiders, score " << score.raidersFallen
                  << " to " << score.guardsFallen << '\n';
    }
    return score.raidersFallen == arena.getTotals().raidersFallen &&
           score.guardsFallen == arena.getTotals().guardsFallen;
}

Observations runMatch(Arena& arena, ArenaScripts& scripts, Witness& witness)
{
    Observations seen;
    for (int tick = 1; tick <= TICKS; ++tick)
    {
        seen.ticksThatDiffered += runTick(tick, arena, scripts) ? 0 : 1;
        if (tick % TICKS_BETWEEN_STATES != 0)
            continue;
        ++seen.states;
        seen.entitiesInStates += arena.countAlive(KIND::GUARD) + arena.countAlive(KIND::RAIDER);
        seen.statesThatDiffered += witness.check(tick, scripts.handOverState()) ? 0 : 1;
    }
    return seen;
}

void compareCounts(
    Summary& summary,
    const Arena& arena,
    ArenaScripts& scripts,
    const Witness& witness,
    const Project& project,
    const Observations& seen)
{
    const demo::Totals& totals = arena.getTotals();
    Summary::begin("Summary after the match", "host", "scripts");
    summary.compare("scripts run", project.countRuns(), project.countStarted());
    summary.compare("units spawned", totals.spawned, scripts.tally("spawned"));
    summary.compare("decisions", scripts.countDecisions(), scripts.tally("decisions"));
    summary.compare("hits", totals.hits, scripts.tally("hits"));
    summary.compare("damage dealt", totals.damage, scripts.tally("damage"));
    summary.compare("raiders fallen", totals.raidersFallen, scripts.tally("raidersFallen"));
    summary.compare("guards fallen", totals.guardsFallen, scripts.tally("guardsFallen"));
    summary.compare(
        "sum of random numbers", static_cast<double>(totals.randomSum), scripts.tally("random"));
    summary.compare("timers fired", scripts.countTimersFired(), scripts.tally("timers"));
    summary.compare("way walked", totals.walked, scripts.tally("walked"), 3);
    summary.compare("states transferred", seen.states, scripts.tally("states"));
    summary.compare("units in states", seen.entitiesInStates, witness.countEntities());
    summary.compare("vectors in states", witness.countVecs(), scripts.tally("vectorsInStates"));
    summary.compare(
        "failed script calls", scripts.countFailedCalls(), scripts.countPlannedMistakes());
    summary.addDifferences(seen.ticksThatDiffered + seen.statesThatDiffered);
    std::cout << "Scripts: " << scripts.report() << '\n';
}

// Returns whether there was something to run. Both environments are destroyed before it returns.
bool play(Project& project, Arena& arena, VecStore& vecs, Summary& summary)
{
    ArenaScripts scripts(arena, vecs, project);
    Witness witness(arena, vecs, project);
    if (!project.run("", scripts) || !project.run("witness", witness))
    {
        std::cout << "There is no script to run.\n";
        return false;
    }
    if (!scripts.begin(TICKS) || !witness.begin())
        return false;
    const Observations seen = runMatch(arena, scripts, witness);
    compareCounts(summary, arena, scripts, witness, project, seen);
    return true;
}

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 2)
    {
        std::cerr << "Usage: demo <project script list>\n";
        return STATUS_NOTHING_TO_RUN;
    }

    const demo::ConsoleLog
        log;     // first, so that it receives all messages, those of the teardown too
    Arena arena; // before the environments, which hold its entities
    VecStore vecs;
    Summary summary;
    std::cout << "Lines that begin with a [tag] are the library's log.\n"
              << "Scripts of " << arguments[1] << '\n';
    Project project(arguments[1]);
    if (!play(project, arena, vecs, summary))
        return STATUS_NOTHING_TO_RUN;

    // The destruction of an environment destroys every vector that its scripts still held.
    Summary::begin("Both environments are gone", "made", "destroyed");
    summary.compare("Vec objects", vecs.countMade(), vecs.countDestroyed());
    summary.expectNone("Vec objects left", vecs.countLeft());
    project.saveAgain(summary);
    return summary.finish() ? STATUS_AGREED : STATUS_DIFFERENCE;
}

// The example host: a small arena in which guards hold a gate against raiders. What the units do,
// when the raiders come and who counts the points is up to the scripts in a folder:
//
//     demo <folder of scripts>
//
// Arena.h is the world, without scripts. ArenaScripts.h is the border: read it to see how a host
// offers functions and calls back. In the end host and scripts compare what they have counted; the
// exit status is 0 if all agrees, 1 if not, and 2 if there was nothing to run.

#include "demo/Arena.h"
#include "demo/ArenaScripts.h"
#include "demo/ConsoleLog.h"
#include "demo/ScriptFolder.h"

#include <cmath>
#include <iomanip>
#include <iostream>
#include <string>

namespace
{

using demo::Arena;
using demo::ArenaScripts;
using demo::KIND;

constexpr int TICKS = 300;
constexpr int TICKS_BETWEEN_REPORTS = 50;

constexpr int STATUS_AGREED = 0;
constexpr int STATUS_DIFFERENCE = 1;
constexpr int STATUS_NOTHING_TO_RUN = 2;

bool runScripts(const std::filesystem::path& folder, ArenaScripts& scripts)
{
    std::cout << "Scripts from " << folder.string()
              << " (lines that begin with a [tag] are the library's log)\n";
    const auto compiled = demo::compileFolder(folder);
    for (const auto& script : compiled)
    {
        const bool isDone = scripts.run(*script);
        std::cout << "  " << script->getName() << (isDone ? "" : ": failed") << '\n';
    }
    // The compiled forms may go: what the scripts have defined lives in the environment.
    return !compiled.empty();
}

void letUnitsAct(Arena& arena, ArenaScripts& scripts)
{
    const int count = arena.getUnitCount(); // who comes during this tick acts in the next one
    for (int id = 1; id <= count; ++id)
    {
        if (!arena.isAlive(id))
            continue;
        const demo::Decision decision = scripts.decide(*arena.find(id));
        if (decision.action == "move")
            arena.move(id, decision.dx, decision.dy);
        else if (decision.action == "rest")
            arena.rest(id);
    }
}

// Returns whether the scripts know the same of the dead as the host.
bool runTick(int tick, Arena& arena, ArenaScripts& scripts)
{
    scripts.fireTimers(tick);
    letUnitsAct(arena, scripts);
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

// Prints one line of the summary and returns whether both sides agree.
bool compare(const char* what, double counted, double told)
{
    // The sum of the ways is one of fractions; everything else is exact.
    const bool isSame = std::abs(counted - told) < 1e-6;
    std::cout << "  " << std::left << std::setw(22) << what << std::right << std::setw(12)
              << counted << std::setw(12) << told << (isSame ? "" : "   <- differs") << '\n';
    return isSame;
}

int summarise(const Arena& arena, ArenaScripts& scripts, int ticksThatDiffered)
{
    const demo::Totals& totals = arena.getTotals();
    std::cout << "Summary after " << TICKS << " ticks" << std::setw(15) << "host" << std::setw(12)
              << "scripts" << '\n'
              << std::fixed;
    int differences = ticksThatDiffered;
    const auto check = [&](const char* what, double counted, const char* name)
    { differences += compare(what, counted, scripts.tally(name)) ? 0 : 1; };

    std::cout << std::setprecision(0);
    check("units spawned", totals.spawned, "spawned");
    check("decisions", scripts.countDecisions(), "decisions");
    check("hits", totals.hits, "hits");
    check("damage dealt", totals.damage, "damage");
    check("raiders fallen", totals.raidersFallen, "raidersFallen");
    check("guards fallen", totals.guardsFallen, "guardsFallen");
    check("sum of random numbers", static_cast<double>(totals.randomSum), "random");
    check("timers fired", scripts.countTimersFired(), "timers");
    std::cout << std::setprecision(3);
    check("way walked", totals.walked, "walked");
    std::cout << std::setprecision(0);
    differences +=
        compare("failed script calls", scripts.countFailedCalls(), scripts.countPlannedMistakes())
            ? 0
            : 1;

    std::cout << "Scripts: " << scripts.report() << '\n'
              << (differences == 0 ? "Host and scripts agree.\n" : "Host and scripts DIFFER.\n");
    return differences == 0 ? STATUS_AGREED : STATUS_DIFFERENCE;
}

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 2)
    {
        std::cerr << "Usage: demo <folder of scripts>\n";
        return STATUS_NOTHING_TO_RUN;
    }

    const demo::ConsoleLog log; // first, so that it hears everything, the teardown included
    Arena arena;
    ArenaScripts scripts(arena);
    if (!runScripts(arguments[1], scripts))
    {
        std::cout << "There is no script to run.\n";
        return STATUS_NOTHING_TO_RUN;
    }
    if (!scripts.begin(TICKS))
        return STATUS_NOTHING_TO_RUN;

    int ticksThatDiffered = 0;
    for (int tick = 1; tick <= TICKS; ++tick)
        ticksThatDiffered += runTick(tick, arena, scripts) ? 0 : 1;
    return summarise(arena, scripts, ticksThatDiffered);
}

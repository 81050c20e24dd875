// Keeps a mixed load going for as many seconds as the argument says, and fails if something came
// out wrong or memory grows: in the last half by 1 percent at most, references and stack not at
// all. With `--moment` it does everything a few times and leaves the memory of the process aside,
// which checkers change.

#include "soak/SoakLoad.h"

#include <tbLog/Logger.h>
#include <tbScripts/LogManager.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <string_view>
#include <unistd.h>

namespace
{

using tbScripts::Environment;
using tbScripts::test::SoakLoad;
using Clock = std::chrono::steady_clock;

constexpr double MAX_GROWTH = 0.01;
constexpr double NOISE_MEGABYTES = 0.25; // pages that allocators keep or give back at their whim
constexpr int ROUNDS_OF_A_CYCLE = 4;     // references are kept over so many

struct Plan
{
    int environments = 10'000;
    int references = 1'000'000;
    std::chrono::seconds duration{1200};
    bool isMoment = false;
};

// The load fails on purpose, too: nobody wants to read that.
class SilentLogger final : public tbLog::Logger
{
public:
    void log(const tbLog::StringView& /*message*/, const tbLog::StringView& /*source*/) override {}
};

double residentMegabytes()
{
    std::ifstream statistics("/proc/self/statm");
    double mapped = 0.0;
    double resident = 0.0;
    statistics >> mapped >> resident;
    constexpr double MEGABYTE = 1024.0 * 1024.0;
    return resident * static_cast<double>(::sysconf(_SC_PAGESIZE)) / MEGABYTE;
}

// Returns whether memory is no more than `settled`, but for the growth that is allowed.
bool isFlat(const Plan& plan, const char* what, double settled)
{
    const double now = residentMegabytes();
    const double allowed = std::max(settled * MAX_GROWTH, NOISE_MEGABYTES);
    const bool isRight = plan.isMoment || now <= settled + allowed;
    std::cout << what << ": " << settled << " MB, then " << now << " MB"
              << (isRight ? "\n" : ", which has GROWN\n");
    return isRight;
}

bool makeManyEnvironments(const Plan& plan)
{
    double settled = 0.0;
    for (int i = 0; i < plan.environments; ++i)
    {
        if (i == plan.environments / 2)
            settled = residentMegabytes();
        Environment environment;
        environment.setEnvironmentFor(tbScripts::INTERPRETER_LUA);
        environment.setVar("i", i);
    }
    return isFlat(plan, "many environments", settled);
}

bool takeManyReferences(const Plan& plan)
{
    Environment environment;
    environment.setEnvironmentFor(tbScripts::INTERPRETER_LUA);
    double settled = 0.0;
    for (int i = 0; i < plan.references; ++i)
    {
        if (i == plan.references / 2)
            settled = residentMegabytes();
        const tbScripts::ScriptObjectReference reference = environment.getScriptFunction("print");
    }
    return isFlat(plan, "many references", settled);
}

// Goes on for half of the time; returns the number of rounds, 0 if one came out wrong.
long loadForHalf(const Plan& plan, SoakLoad& load)
{
    const Clock::time_point start = Clock::now();
    long rounds = 0;
    do
    {
        for (int i = 0; i < ROUNDS_OF_A_CYCLE; ++i, ++rounds)
        {
            if (!load.runRound())
                return 0;
        }
    } while (!plan.isMoment && Clock::now() - start < plan.duration / 2);
    return rounds;
}

bool keepLoading(const Plan& plan)
{
    SoakLoad load;
    const long warmUp = loadForHalf(plan, load);
    const SoakLoad::Taken settled = load.countTaken();
    const double settledMegabytes = residentMegabytes();
    const long rounds = loadForHalf(plan, load);
    const SoakLoad::Taken taken = load.countTaken();

    std::cout << warmUp + rounds << " rounds; references " << settled.references << ", then "
              << taken.references << "; stack " << taken.stackValues << "; interpreter "
              << settled.kilobytes << " KB, then " << taken.kilobytes << " KB\n";
    const bool isInterpreterFlat =
        plan.isMoment || taken.kilobytes <= settled.kilobytes * (1.0 + MAX_GROWTH);
    return isFlat(plan, "mixed load", settledMegabytes) && isInterpreterFlat && warmUp > 0 &&
           rounds > 0 && taken.references == settled.references && taken.stackValues == 0;
}

} // namespace

int main(int count, char** arguments)
{
    Plan plan;
    plan.isMoment = count > 1 && arguments[1] == std::string_view("--moment");
    if (plan.isMoment)
        plan = {100, 1000, std::chrono::seconds(0), true};
    else if (count > 1)
        plan.duration = std::chrono::seconds(std::max(2, std::atoi(arguments[1])));

    SilentLogger logger;
    tbScripts::LogManager::getInstance()->setReceiver(&logger);
    std::cout << std::fixed << std::setprecision(2);
    bool isRight = makeManyEnvironments(plan);
    isRight = takeManyReferences(plan) && isRight;
    isRight = keepLoading(plan) && isRight;
    std::cout << SoakLoad::countObjects() << " objects left\n";
    isRight = SoakLoad::countObjects() == 0 && isRight;
    std::cout << (isRight ? "nothing has grown\n" : "FAILED\n");
    tbScripts::LogManager::getInstance()->setReceiver(nullptr);
    return isRight ? EXIT_SUCCESS : EXIT_FAILURE;
}

// The interpreter and the library meet the end of the address space. Each case runs in a child
// process, with a limit of its own.

#include "support/ChildProcess.h"
#include "support/Execution.h"
#include "support/RowName.h"
#include "support/Sanitizers.h"
#include "support/UserTypeFixture.h"

#include <cstddef>
#include <fstream>
#include <new>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

namespace tbScripts::test
{

namespace
{

constexpr int PASSED = 0;
constexpr int NOT_REFUSED = 1;
constexpr int WRONG_OUTCOME = 2;
constexpr int NOT_USABLE = 3;
constexpr int NEVER_ENOUGH = 4;

constexpr std::size_t MEBIBYTE = std::size_t{1} << 20;

// This process gets `headroom` bytes more, until its end.
class AddressSpaceLimit
{
public:
    explicit AddressSpaceLimit(std::size_t headroom)
    {
        std::ifstream statistics("/proc/self/statm");
        rlim_t pages = 0;
        statistics >> pages;
        const auto pageSize = static_cast<rlim_t>(::sysconf(_SC_PAGESIZE));
        const rlimit limit{pages * pageSize + headroom, RLIM_INFINITY};
        ::setrlimit(RLIMIT_AS, &limit);
    }

    AddressSpaceLimit(const AddressSpaceLimit&) = delete;
    AddressSpaceLimit& operator=(const AddressSpaceLimit&) = delete;

    ~AddressSpaceLimit()
    {
        const rlimit limit{RLIM_INFINITY, RLIM_INFINITY};
        ::setrlimit(RLIMIT_AS, &limit);
    }
};

struct GreedyRow
{
    const char* row;
    const char* sources;
};

} // namespace

class AddressSpaceFixture : public UserTypeFixture
{
protected:
    void SetUp() override
    {
        if (IS_SANITIZED)
            GTEST_SKIP() << "the checkers need more address space than any limit leaves";
    }

    // Asks for no collection: what took the memory is garbage, and the library has collected it.
    bool isUsable()
    {
        environment().setVar("a name of its own", "a text");
        return environment().isVarSet("a name of its own") && environment().setFunc("another") &&
               runScript(
                   environment(),
                   "local t = {} for i = 1, 10000 do t[i] = {Vec.new()} end assert(#t == 10000)");
    }
};

class GreedyScriptTest : public OnRows<AddressSpaceFixture, GreedyRow>
{
protected:
    int runGreedily()
    {
        CompiledScript script(GetParam().sources, "greedy");
        m_destroyed.reserve(MEBIBYTE); // a destructor that needs memory would destroy nothing
        {
            const AddressSpaceLimit limit(32 * MEBIBYTE);
            if (environment().execute(script))
                return NOT_REFUSED;
            const Outcome outcome = lastOutcome(environment());
            if (std::get<2>(outcome) != "Error while executing script 'greedy' : not enough memory")
                return WRONG_OUTCOME;
            if (!isUsable())
                return NOT_USABLE;
        }
        destroyEnvironment();
        return m_destroyed.size() == m_made.size() ? PASSED : WRONG_OUTCOME;
    }
};

ROWS(
    GreedyScriptTest,
    {"Tables", "local all = {} while true do all[#all + 1] = {} end"},
    {"Texts", "local all = {} for i = 1, 1e9 do all[i] = ('a'):rep(1000) .. i end"},
    {"OneText", "local all = 'a' while true do all = all .. all end"},
    {"CompiledLoop",
     "local all = {} for i = 1, 1000 do all[i] = i end "
     "for i = 1, 1e9 do all[i] = {i, i + 1} end"},
    {"InterpretedLoop", "jit.off() local all = {} for i = 1, 1e9 do all[i] = {i} end"},
    {"Instances", "local all = {} while true do all[#all + 1] = Vec.new() end"},
    {"Coroutines", "local all = {} while true do all[#all + 1] = coroutine.wrap(print) end"});

TEST_P(GreedyScriptTest, FailsAndLeavesAUsableEnvironment)
{
    ChildProcess child([this] { return runGreedily(); });

    EXPECT_EQ(child.wait(), PASSED);
}

class AddressSpaceTest : public AddressSpaceFixture
{
protected:
    // A host's work from beginning to end. Returns whether all of it came out as it does with
    // memory.
    static bool workThrough()
    {
        Environment world;
        world.setEnvironmentFor(INTERPRETER_LUA);
        UserType* const type = world.setUserType("space::Vec");
        Function* const function = world.setFunc("twice");
        if (!type || !function)
            return false;
        type->setMethod("id", false);
        function->addParameter(PARAM_TYPE_INT);
        function->setFunction([](const Parameters& parameters)
                              { return parameters[0].getInt() * 2; });
        if (!runScript(world, "list = {} for i = 1, 5000 do list[i] = {twice(i), 'text' .. i} end"))
            return false;
        const tbMemory::Buffer bytes = world.serializeScriptObject(world.getVar("list"), false);
        world.setVar("copy", world.deserializeScriptObject(bytes));
        return runScript(world, "assert(#copy == 5000 and copy[5000][1] == 10000)");
    }

    static bool workThroughWith(std::size_t headroom)
    {
        const AddressSpaceLimit limit(headroom);
        try
        {
            return workThrough();
        }
        catch (const std::bad_alloc&)
        {
            return false; // one of the outcomes
        }
    }
};

TEST_F(AddressSpaceTest, WorkWithTooLittleOfItFailsUntilThereIsEnough)
{
    ChildProcess child(
        [this]
        {
            int failures = 0;
            std::size_t headroom = 0;
            for (; !workThroughWith(headroom) && headroom < 256 * MEBIBYTE; headroom += 32768)
            {
                ++failures;
                m_log.takeEntries();
                if (!runScript(environment(), "local v = Vec.new()"))
                    return NOT_USABLE;
            }
            if (headroom >= 256 * MEBIBYTE)
                return NEVER_ENOUGH;
            return failures > 0 ? PASSED : NOT_REFUSED;
        });

    EXPECT_EQ(child.wait(), PASSED);
}

} // namespace tbScripts::test

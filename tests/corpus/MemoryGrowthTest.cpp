// What is done over and over takes no more memory the thousandth time than the hundredth.

#include "support/Sanitizers.h"
#include "support/ScriptValueFixture.h"

#include <tbScripts/Namespace.h>

#include <fstream>
#include <unistd.h>

namespace tbScripts::test
{

namespace
{

// Resident memory of this process.
long residentKilobytes()
{
    std::ifstream statistics("/proc/self/statm");
    long mapped = 0;
    long resident = 0;
    statistics >> mapped >> resident;
    return resident * (::sysconf(_SC_PAGESIZE) / 1024);
}

// Fills an environment with something of everything, and uses it.
void fillAndUse(Environment& environment)
{
    environment.setEnvironmentFor(INTERPRETER_LUA);
    UserType* const type = environment.setUserType("space::Thing");
    type->setConstructor([](const Parameters&) { return new int(7); });
    type->setDestructor([](void* object) { delete static_cast<int*>(object); });
    type->setMethod("get", false)
        ->setFunction(
            [](const Parameters& parameters)
            { return FunctionParameter(*static_cast<int*>(parameters[0].getUserTypeObject())); });
    environment.setFunc("twice")->addParameter(PARAM_TYPE_INT);
    environment.getFunc("twice")->setFunction([](const Parameters& parameters)
                                              { return parameters[0].getInt() * 2; });
    runScript(
        environment,
        "local t = {} for i = 1, 100 do t[i] = space.Thing.new() end "
        "function sum() local n = 0 for _, v in ipairs(t) do n = n + twice(v:get()) end return n "
        "end");
    const ScriptObjectReference sum = environment.getScriptFunction("sum");
    std::vector<FunctionParameter> outputs{FunctionParameter(0)};
    Parameters outputView(outputs);
    environment.callScriptFunction(sum, {}, outputView);
}

} // namespace

class MemoryGrowthTest : public ScriptValueFixture
{
protected:
    double interpreterKilobytes()
    {
        environment().requestGarbageCollection();
        run("memory = collectgarbage('count')");
        return environment().getVar("memory", 0.0);
    }
};

TEST_F(MemoryGrowthTest, EnvironmentsThatComeAndGoOrAreSwitchedOverAndOverTakeNoMore)
{
    if (IS_SANITIZED)
        GTEST_SKIP() << "the checkers keep what was freed";
    Environment switched;
    long settled = 0;
    for (int i = 0; i < 1000; ++i)
    {
        if (i == 200)
            settled = residentKilobytes();
        Environment fresh;
        fillAndUse(fresh);
        fillAndUse(switched);
        m_log.takeEntries(); // that everything is declared again
    }

    EXPECT_LE(residentKilobytes(), settled + 512);
}

TEST_F(MemoryGrowthTest, TablesThatTheHostMakesForAScriptAreFreedRoundByRound)
{
    const Bytes bytes = write(
        "(function() local t = {} for i = 1, " + std::to_string(repetitions(100000)) +
        " do t[i] = {i, x = 'text'} end return t end)()");
    run("written = nil");
    ASSERT_TRUE(read(bytes));
    run("read = nil");
    const double settled = interpreterKilobytes();

    for (int round = 0; round < 20; ++round)
    {
        ASSERT_TRUE(read(bytes));
        run("read = nil");
    }

    EXPECT_LE(interpreterKilobytes(), settled + 16.0);
}

TEST_F(MemoryGrowthTest, LookupsWithKeysOfEveryKindTakeNoMore)
{
    declareField("x", &Vec::x);
    setHostObject("v", m_hostObject);
    environment().setVar("rounds", repetitions(200000));
    const double before = interpreterKilobytes();

    run("local keys = {{}, 1.5, 12, true, print, v, 'x', 'missing'} "
        "for i = 1, rounds do for k = 1, #keys do local found = v[keys[k]] end end");

    EXPECT_LE(interpreterKilobytes(), before + 64.0);
}

} // namespace tbScripts::test

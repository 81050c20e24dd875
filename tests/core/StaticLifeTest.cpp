// The library's static data is there before any static object of a host, and after all of them.
// Here the library's code is part of the executable, so an object can be made before all of it.

#include <tbScripts/Environment.h>
#include <tbScripts/Function.h>
#include <tbScripts/FunctionParameter.h>
#include <tbScripts/Script.h>
#include <tbScripts/ScriptObjectReference.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>

namespace tbScripts::test
{

namespace
{

// Whether what a host reads of the void value is right now as it should be.
bool isVoidUsable()
{
    const FunctionParameter copy(FunctionParameter::VOID);
    const ScriptObjectReference reference(copy.getScriptObject());
    return copy.getType() == 0U && copy.getString().isNull() && reference.getUseCount() == 1 &&
           copy.getScriptObject().getUseCount() == 1 && !reference.getInterpreterReference();
}

// Whether scripts run right now as they should, also again and called by the host.
bool doScriptsRun()
{
    Environment environment;
    environment.setEnvironmentFor(INTERPRETER_LUA);
    environment.setFunc("one")->setFunction([](const tbMemory::BufferView<FunctionParameter>&)
                                            { return FunctionParameter(1); });
    Script script;
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources("runs = (runs or 0) + one() function twice(x) return 2 * x end");
    script.load();
    constexpr int RUNS = 4; // from the second on the chunk is not loaded again
    bool isDone = true;
    for (int i = 0; i < RUNS; ++i)
        isDone = environment.execute(script) && isDone;

    std::array<FunctionParameter, 1> inputs{4};
    std::array<FunctionParameter, 1> results{0};
    tbMemory::BufferView<FunctionParameter> outputs = results;
    isDone =
        environment.callScriptFunction(environment.getScriptFunction("twice"), inputs, outputs) &&
        isDone;
    return isDone && environment.getVar("runs", 0) == RUNS && results[0].getInt() == 8;
}

class FirstObjectOfTheProcess
{
public:
    FirstObjectOfTheProcess()
        : m_wasVoidUsable(isVoidUsable())
        , m_endsProcess(false)
    {
    }

    FirstObjectOfTheProcess(const FirstObjectOfTheProcess&) = delete;
    FirstObjectOfTheProcess& operator=(const FirstObjectOfTheProcess&) = delete;

    ~FirstObjectOfTheProcess()
    {
        if (m_endsProcess)
            std::_Exit(isVoidUsable() && doScriptsRun() ? 42 : 1);
    }

    bool wasVoidUsable() const { return m_wasVoidUsable; }

    // Makes the end of this object tell by the exit code what it found.
    void endProcess() { m_endsProcess = true; }

private:
    bool m_wasVoidUsable;
    bool m_endsProcess;
};

// The first number that is not reserved: made before all objects without a number, destroyed last.
FirstObjectOfTheProcess first __attribute__((init_priority(101)));

} // namespace

TEST(StaticLifeTest, VoidIsUsableBeforeMain)
{
    EXPECT_TRUE(first.wasVoidUsable());
}

TEST(StaticLifeTest, VoidIsUsableAndScriptsRunAfterMain)
{
    ::testing::GTEST_FLAG(death_test_style) = "fast";

    EXPECT_EXIT(
        {
            if (!doScriptsRun()) // what this creates is destroyed before the first object
                std::_Exit(2);
            first.endProcess();
            std::exit(0);
        },
        ::testing::ExitedWithCode(42),
        "");
}

} // namespace tbScripts::test

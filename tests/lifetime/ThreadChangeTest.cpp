// The rule for threads, docs/reliability.md#threads: one thread at a time, which may change.

#include "support/EnvironmentFixture.h"

#include <tbScripts/Script.h>

#include <functional>
#include <memory>
#include <thread>

namespace tbScripts::test
{

namespace
{

void runOnThread(const std::function<void()>& work)
{
    std::thread(work).join();
}

} // namespace

using ThreadChangeTest = LogFixture; // nothing is logged

TEST_F(ThreadChangeTest, OneThreadAfterTheOtherUsesAnEnvironment)
{
    auto used = std::make_unique<Environment>();
    ScriptObjectReference twice;
    double result = 0.0;

    runOnThread(
        [&]
        {
            used->setEnvironmentFor(INTERPRETER_LUA);
            used->setFunc("half")->addParameter(PARAM_TYPE_DOUBLE);
            used->getFunc("half")->setFunction([](const Parameters& arguments)
                                               { return arguments[0].getDouble() / 2; });
            runScript(*used, "function twice(n) return half(4 * n) end");
        });
    runOnThread([&] { twice = used->getScriptFunction("twice"); });
    runOnThread(
        [&]
        {
            FunctionParameter results[] = {0.0};
            Parameters outputs = results;
            used->callScriptFunction(twice, {21}, outputs);
            result = results[0].getDouble();
        });
    runOnThread([&] { used.reset(); });
    runOnThread([&] { twice = ScriptObjectReference(); });

    EXPECT_EQ(result, 42.0);
}

} // namespace tbScripts::test

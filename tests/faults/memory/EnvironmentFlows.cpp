// Environments come and go, and scripts run in them, while memory is refused.

#include "faults/memory/MemoryFlow.h"

#include <tbScripts/EnvironmentManager.h>
#include <tbScripts/LogManager.h>

namespace tbScripts::test
{

namespace
{

bool makeEnvironment(FlowWorld& /*world*/)
{
    Environment environment;
    environment.setName("one more world whose name needs memory");
    environment.setEnvironmentFor(INTERPRETER_LUA);
    return runIn(environment, "x = 1");
}

bool switchInterpreter(FlowWorld& world)
{
    world.environment->setEnvironmentFor(INTERPRETER_LUA);
    return world.environment->isVarSet("print");
}

bool copyEnvironment(FlowWorld& world)
{
    Environment copy(*world.environment);
    copy.setVar("a_variable_with_a_long_name", "a text that needs memory of its own");
    return copy.isVarSet("a_variable_with_a_long_name");
}

bool assignEnvironment(FlowWorld& world)
{
    Environment environment;
    environment.setName("one more world whose name needs memory");
    environment.setEnvironmentFor(INTERPRETER_LUA);
    environment.setFunc("a_function_with_a_long_name");
    *world.environment = environment;
    return world.environment->isFuncSet("a_function_with_a_long_name");
}

bool manageEnvironments(FlowWorld& /*world*/)
{
    EnvironmentManager* const manager = EnvironmentManager::getInstance();
    manager->createOrRetrieve("a managed world with a long name");
    Environment* const other = manager->createOrRetrieve("another managed world with a long name");
    other->setEnvironmentFor(INTERPRETER_LUA);
    const bool isDone = other->isVarSet("print");
    manager->kill();
    return isDone;
}

bool endEnvironment(FlowWorld& world)
{
    world.environment.reset();
    return true;
}

bool collectGarbage(FlowWorld& world)
{
    world.table = ScriptObjectReference();
    runIn(*world.environment, "things = nil");
    world.environment->requestGarbageCollection();
    return true;
}

bool execute(FlowWorld& world)
{
    return world.environment->execute(world.script);
}

bool executeWhatRaises(FlowWorld& world)
{
    return !runIn(*world.environment, "error('a message that needs memory of its own')");
}

bool catchErrorsInAScript(FlowWorld& world)
{
    return runIn(
        *world.environment,
        "for i = 1, 3 do pcall(call_the_host, 'text', {}) pcall(report_to_the_host) end");
}

bool callFunction(FlowWorld& world)
{
    const std::vector<FunctionParameter> inputs{
        FunctionParameter("an input that needs memory of its own"), FunctionParameter(world.table)};
    std::vector<FunctionParameter> outputs{FunctionParameter("")};
    Parameters outputView(outputs);
    return world.environment->callScriptFunction(world.call, inputs, outputView) &&
           outputs[0].getString() == "an answer that needs memory of its own";
}

bool callBackFromTheHost(FlowWorld& world)
{
    Environment& environment = *world.environment;
    runIn(environment, "function inner(thing) return coroutine.wrap(type)(thing) end");
    world.report().setFunction(
        [&environment](const Parameters& parameters)
        {
            const FunctionParameter kept(parameters[2]);
            const ScriptObjectReference thing(kept.getUserTypeView());
            const std::vector<FunctionParameter> inputs{FunctionParameter(thing)};
            Parameters outputs;
            environment.callScriptFunction(environment.getScriptFunction("inner"), inputs, outputs);
            return kept;
        });
    return environment.execute(world.script);
}

bool reportWithoutLogManager(FlowWorld& world)
{
    LogManager::getInstance()->kill();
    Parameters outputs;
    world.environment->setFunc("report_to_the_host");
    return !world.environment->callScriptFunction(world.table, {}, outputs);
}

} // namespace

INSTANTIATE_TEST_SUITE_P(
    Environments,
    MemoryFlowTest,
    ::testing::Combine(
        ::testing::Values(
            MemoryFlow{"NewEnvironment", &makeEnvironment},
            MemoryFlow{"Switch", &switchInterpreter},
            MemoryFlow{"Copy", &copyEnvironment},
            MemoryFlow{"Assignment", &assignEnvironment},
            MemoryFlow{"Manager", &manageEnvironments},
            MemoryFlow{"EndOfAnEnvironment", &endEnvironment},
            MemoryFlow{"Collection", &collectGarbage},
            MemoryFlow{"Execution", &execute},
            MemoryFlow{"ExecutionThatFails", &executeWhatRaises},
            MemoryFlow{"ErrorsCaughtByAScript", &catchErrorsInAScript},
            MemoryFlow{"ScriptFunctionCall", &callFunction},
            MemoryFlow{"CallBack", &callBackFromTheHost},
            MemoryFlow{"FirstMessage", &reportWithoutLogManager}),
        ::testing::Values(RefusedMemory::SPAN::ONE_REQUEST, RefusedMemory::SPAN::ALL_FURTHER)),
    &nameOfFlow);

} // namespace tbScripts::test

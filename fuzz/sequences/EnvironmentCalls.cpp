// Calls that make, end, run and declare in environments.

#include "sequences/Names.h"
#include "sequences/World.h"
#include "support/MemoryCeiling.h"
#include "support/Require.h"

#include <utility>

namespace tbScripts::fuzz
{

namespace
{

void forgetNames(EnvironmentSlot& slot)
{
    ++slot.generation;
    slot.functions.clear();
    slot.userTypes.clear();
    slot.namespaces.clear();
}

// Notes what `slot` has to know now, if it is still the environment that was asked.
void note(
    const EnvironmentSlot& slot,
    unsigned int generation,
    std::set<std::string>& names,
    const std::string& name,
    bool isDeclared)
{
    if (slot.environment && slot.generation == generation && isDeclared)
        names.insert(name);
}

void makeFresh(World& world)
{
    world.trace("make fresh");
    EnvironmentSlot& slot = world.anySlot();
    forgetNames(slot);
    std::unique_ptr<Environment> fresh = std::make_unique<Environment>();
    if (world.bytes().flag())
        fresh->setEnvironmentFor(INTERPRETER_LUA);
    fresh->setName(world.bytes().numbered<8>(SCRIPT_NAMES));
    std::swap(slot.environment, fresh); // out of the slot first: its end may call the host
}

void copy(World& world)
{
    world.trace("copy");
    world.noteSharing();
    EnvironmentSlot& slot = world.anySlot();
    const EnvironmentSlot& source = world.anySlot();
    if (!source.environment)
        return;
    std::unique_ptr<Environment> made = std::make_unique<Environment>(*source.environment);
    if (&slot != &source)
    {
        forgetNames(slot);
        slot.functions = source.functions;
        slot.userTypes = source.userTypes;
        slot.namespaces = source.namespaces;
    }
    std::swap(slot.environment, made);
}

void assign(World& world)
{
    world.noteSharing();
    world.trace("assign");
    EnvironmentSlot& slot = world.anySlot();
    EnvironmentSlot& source = world.anySlot();
    if (!slot.environment || !source.environment)
        return;
    if (&slot == &source)
    {
        *slot.environment = *source.environment;
        return;
    }
    const std::set<std::string> functions = source.functions;
    const std::set<std::string> userTypes = source.userTypes;
    const std::set<std::string> namespaces = source.namespaces;
    const unsigned int activity = world.getActivity();
    forgetNames(slot);
    *slot.environment = *source.environment;
    if (activity != world.getActivity())
    {
        forgetNames(slot); // whoever was called may have declared in either of them
        return;
    }
    slot.functions = functions;
    slot.userTypes = userTypes;
    slot.namespaces = namespaces;
}

void destroy(World& world)
{
    world.trace("destroy");
    EnvironmentSlot& slot = world.anySlot();
    forgetNames(slot);
    const std::unique_ptr<Environment> dying = std::move(slot.environment);
}

void switchInterpreter(World& world)
{
    world.trace("switch interpreter");
    Environment& environment = world.anyEnvironment();
    constexpr std::array CHOICES{
        INTERPRETER_LUA, INTERPRETER_LUA, INTERPRETER_LUA, INTERPRETER_UNKNOWN};
    environment.setEnvironmentFor(world.bytes().numbered<8>(CHOICES));
}

void execute(World& world)
{
    world.trace("execute");
    Environment& environment = world.anyEnvironment();
    Script& script = world.anyScript();
    const unsigned int activity = world.getActivity();
    const bool isDone = environment.execute(script);
    if (activity != world.getActivity() || world.isNested())
        return; // nested, it may be one that is going
    const ExecutionResult& result = environment.getLastExecutionResult();
    require(result.success == isDone, "the last result says what execute returned");
    require(isDone == (result.code == 0), "code 0 is success");
    require(isDone == result.message.empty(), "a failure has a message, a success has none");
}

void callFunction(World& world)
{
    world.trace("call function");
    Environment& environment = world.anyEnvironment();
    const ScriptObjectReference& function = world.anyReference();
    std::vector<FunctionParameter> inputs;
    for (std::size_t count = world.bytes().below(4); count > 0; --count)
        inputs.push_back(world.anyValue());
    std::vector<FunctionParameter> outputs;
    for (std::size_t count = world.bytes().below(4); count > 0; --count)
    {
        const auto kind = static_cast<FUNCTION_PARAMETER_TYPE>(world.bytes().choice<16>(11));
        outputs.push_back(FunctionParameter::ofType(kind, world.bytes().numbered<8>(TYPE_NAMES)));
    }
    Parameters view = outputs;
    environment.callScriptFunction(function, inputs, view);
    for (const FunctionParameter& output : outputs)
        world.anyParameter() = output;
}

void declareFunction(World& world)
{
    EnvironmentSlot& slot = world.anySlot();
    if (!slot.environment)
        return;
    const std::string name = world.bytes().numbered<8>(FUNCTION_NAMES);
    world.trace("declare function", name);
    const unsigned int generation = slot.generation;
    const unsigned int activity = world.getActivity();
    const Function* const made = slot.environment->setFunc(name);
    if (activity != world.getActivity())
        return;
    require(!made || slot.environment->getFunc(name) == made, "a function is found under its name");
    note(slot, generation, slot.functions, name, slot.environment->isFuncSet(name));
}

void declareUserType(World& world)
{
    EnvironmentSlot& slot = world.anySlot();
    if (!slot.environment)
        return;
    const std::string name = anyNameOf(world, TYPE_NAMES);
    world.trace("declare user type", name);
    const bool isPlain = name.find("::") == std::string::npos;
    const unsigned int generation = slot.generation;
    const unsigned int activity = world.getActivity();
    UserType* const made = slot.environment->setUserType(name);
    if (activity == world.getActivity())
        world.makeInstantiable(made);
    else
        world.objects().allowLeaks(); // the type may be there, without destructor
    if (isPlain && activity == world.getActivity())
        note(slot, generation, slot.userTypes, name, slot.environment->isUserTypeSet(name));
}

void declareNamespace(World& world)
{
    EnvironmentSlot& slot = world.anySlot();
    if (!slot.environment)
        return;
    const std::string name = anyNameOf(world, NAMESPACE_NAMES);
    world.trace("declare namespace", name);
    const bool isPlain = name.find("::") == std::string::npos;
    const unsigned int generation = slot.generation;
    const unsigned int activity = world.getActivity();
    const Namespace* const made = slot.environment->setNamespace(name);
    if (activity != world.getActivity())
        return;
    require(
        !made || slot.environment->getNamespace(name) == made, "a namespace is found by its name");
    if (isPlain)
        note(slot, generation, slot.namespaces, name, slot.environment->isNamespaceSet(name));
}

void compileScripts(World& world)
{
    world.trace("compile scripts");
    world.compileScripts();
}

// In compiled code a lack of memory can end the process, which is the interpreter's own fault.
void limitMemory(World& world)
{
    world.trace("limit memory");
    constexpr std::size_t UNIT = std::size_t{2} * 1024;
    const std::size_t bytes = UNIT * (1 + world.bytes().byte());
    if (!world.isCompilingScripts())
        MemoryCeiling::set(bytes);
}

void liftLimit(World& world)
{
    world.trace("lift limit");
    MemoryCeiling::lift();
}

} // namespace

void performEnvironmentCall(World& world)
{
    constexpr auto CALLS = makeCases<16, Call>(
        {{0, &makeFresh},
         {1, &copy},
         {2, &assign},
         {3, &destroy},
         {4, &switchInterpreter},
         {5, &execute},
         {6, &execute},
         {7, &callFunction},
         {8, &callFunction},
         {9, &declareFunction},
         {10, &declareUserType},
         {11, &declareNamespace},
         {12, &compileScripts},
         {13, &limitMemory},
         {14, &liftLimit}});
    world.bytes().caseOf(CALLS)(world);
}

} // namespace tbScripts::fuzz

// Calls that make, compile and end scripts, and those of the managers.

#include "sequences/Names.h"
#include "sequences/ScriptTexts.h"
#include "sequences/World.h"
#include "support/MemoryCeiling.h"
#include "support/Require.h"

#include <tbScripts/ContentLoader.h>
#include <tbScripts/EnvironmentManager.h>
#include <tbScripts/LogManager.h>
#include <tbScripts/ScriptManager.h>

#include <regex>
#include <utility>

namespace tbScripts::fuzz
{

namespace
{

// Wraps what a script makes a finaliser: it raises nothing then.
std::string withQuietFinalisers(const std::string& text)
{
    static const std::regex FINALISER("__gc = (function.*|[a-z0-9]+)");
    return "local function quiet(f) return f and function(...) pcall(f, ...) end end " +
           std::regex_replace(text, FINALISER, "__gc = quiet($1)");
}

std::string anyText(World& world)
{
    bool mayLeak = false;
    std::string text = anyScriptText(world.bytes(), mayLeak);
    if (mayLeak)
        world.objects().allowLeaks();
    if (!world.isCompilingScripts())
        text = "if jit then jit.off() end " + text;
    else
        text = withQuietFinalisers(text);
    world.trace("script:", text);
    return text;
}

void compile(World& world)
{
    world.trace("compile");
    Script& script = world.anyScript();
    const unsigned int activity = world.getActivity();
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources(anyText(world));
    const bool isDone = script.load();
    require(
        isDone || activity != world.getActivity() || MemoryCeiling::hasRefused(),
        "the statements are correct");
}

// The usual thing to do: without it, two calls have to meet by chance for anything to run.
void compileAndExecute(World& world)
{
    world.trace("compile and execute");
    Script script;
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources(anyText(world));
    script.load();
    world.anyEnvironment().execute(script);
}

void reload(World& world)
{
    world.trace("reload");
    Script& script = world.anyScript();
    switch (world.bytes().choice<8>(4))
    {
    case 0:
        script.load();
        break;
    case 1:
        script.unload();
        break;
    case 2:
        script.setSources(world.bytes().text(20));
        script.load();
        break;
    default:
        script.setTargetInterpreter(world.bytes().flag() ? INTERPRETER_LUA : INTERPRETER_UNKNOWN);
        break;
    }
}

void copyScript(World& world)
{
    world.trace("copy script");
    std::unique_ptr<Script>& slot = world.anyScriptSlot();
    const std::unique_ptr<Script>& source = world.anyScriptSlot();
    if (!source)
        return;
    if (slot && world.bytes().flag())
        *slot = *source;
    else
        slot = std::make_unique<Script>(*source);
}

void destroyScript(World& world)
{
    world.trace("destroy script");
    const std::unique_ptr<Script> dying = std::move(world.anyScriptSlot());
}

// What the manager has to have is followed here: names and their number.
void file(World& world)
{
    world.trace("file");
    std::set<std::string>& names = world.managedScripts();
    const std::string name = world.bytes().numbered<8>(SCRIPT_NAMES);
    const std::string other = world.bytes().numbered<8>(SCRIPT_NAMES);
    ScriptManager* const manager = ScriptManager::getInstance();
    switch (world.bytes().choice<8>(4))
    {
    case 0:
        names.insert(name);
        manager->createOrRetrieve(name);
        break;
    case 1:
        names.erase(name);
        manager->erase(name);
        break;
    case 2:
    {
        Script* const renamed = manager->get(name);
        manager->rename(name, other);
        if (renamed && manager->get(other) != renamed)
            world.orphans().emplace_back(renamed);
        if (renamed)
        {
            names.erase(name);
            names.insert(other);
        }
        break;
    }
    default:
        names.clear();
        manager->kill();
        break;
    }
}

void checkFiled(World& world)
{
    world.trace("check filed");
    const ScriptManager* const manager = ScriptManager::getInstance();
    const std::set<std::string>& names = world.managedScripts();
    require(manager->getCount() == names.size(), "the manager has what was filed");
    for (const std::string& name : names)
        require(manager->get(name) != nullptr, "a filed script is found by its name");
    require(!manager->getByIndex(manager->getCount()), "there is nothing behind the last script");
}

void loadDeclaration(World& world)
{
    world.trace("load declaration");
    bool mayLeak = false;
    std::string sources;
    for (const char letter : anyScriptText(world.bytes(), mayLeak))
    {
        if (letter == '\\')
            sources += '\\';
        sources += letter == '\n' ? std::string("\\n") : std::string(1, letter);
    }
    if (mayLeak)
        world.objects().allowLeaks();
    const std::string name = world.bytes().numbered<8>(SCRIPT_NAMES);
    const std::string declaration =
        R"({"name": ")" + name + R"(", "type": "lua", "sources": ")" + sources + R"("})";
    world.managedScripts().insert(name);
    const bool isArray = world.bytes().flag();
    ContentLoader::processScriptSources(
        isArray ? "[" + declaration + "," + declaration + "]" : declaration, world.bytes().flag());
}

void dropOrphans(World& world)
{
    world.trace("drop orphans");
    if (world.isNested())
        return; // a call further out may be loading one of them
    const auto dying = std::exchange(world.orphans(), {});
}

void killEnvironments(World& world)
{
    world.trace("kill environments");
    EnvironmentManager::getInstance()->kill();
    EnvironmentManager* const manager = EnvironmentManager::getInstanceIfExisting();
    if (manager || world.bytes().flag())
        return; // what ended has asked for a new one
    // Silent: the receiver could kill one of the two.
    LogManager::getInstance()->setReceiver(nullptr);
    EnvironmentManager* const original = EnvironmentManager::getInstance();
    Environment* const shared = original->createOrRetrieve("managed");
    {
        EnvironmentManager copy(*original);
        require(copy.createOrRetrieve("managed") == shared, "a copy shares the environments");
        copy.createOrRetrieve("copied")->setEnvironmentFor(INTERPRETER_LUA);
        copy = *original;
    }
    delete original; // the end of the copy has unregistered it
    LogManager::getInstance()->setReceiver(&world);
}

void changeReceiver(World& world)
{
    world.trace("change receiver");
    switch (world.bytes().choice<8>(3))
    {
    case 0:
        LogManager::getInstance()->setReceiver(nullptr);
        break;
    case 1:
        LogManager::getInstance()->kill();
        break;
    default:
        break;
    }
    if (world.bytes().below(4) != 0)
        LogManager::getInstance()->setReceiver(&world);
}

} // namespace

void performScriptCall(World& world)
{
    constexpr auto CALLS = makeCases<16, Call>(
        {{0, &compile},
         {1, &compileAndExecute},
         {2, &compileAndExecute},
         {3, &compileAndExecute},
         {4, &reload},
         {5, &copyScript},
         {6, &destroyScript},
         {7, &loadDeclaration}});
    world.bytes().caseOf(CALLS)(world);
}

void performManagerCall(World& world)
{
    constexpr auto CALLS = makeCases<16, Call>(
        {{0, &file}, {1, &file}, {2, &dropOrphans}, {3, &killEnvironments}, {4, &changeReceiver}});
    world.bytes().caseOf(CALLS)(world);
    if (!world.isNested())
        checkFiled(world);
}

} // namespace tbScripts::fuzz

// Scripts are compiled, declared, saved and loaded while memory is refused.

#include "faults/memory/MemoryFlow.h"

#include <tbScripts/ContentLoader.h>
#include <tbScripts/ProjectLoader.h>
#include <tbScripts/ScriptManager.h>

namespace tbScripts::test
{

namespace
{

bool compile(FlowWorld& world)
{
    return world.script.load();
}

bool compileWrongSources(FlowWorld& world)
{
    world.script.setSources("this is no script, whatever else it may be");
    return !world.script.load();
}

bool fileScripts(FlowWorld& /*world*/)
{
    ScriptManager* const manager = ScriptManager::getInstance();
    manager->createOrRetrieve("a script that has a long name");
    manager->rename("a script that has a long name", "the same with another long name");
    const bool isDone = manager->get("the same with another long name");
    manager->erase("the same with another long name");
    return isDone && manager->getCount() == 0;
}

bool declareScripts(FlowWorld& /*world*/)
{
    const ContentLoadResult<Script> result = ContentLoader::processScriptSources(
        R"([{"name": "a script that has a long name", "type": "lua", "sources": "x = 'text'"},
            {"name": "another script that has a long name", "type": "no interpreter we know"},
            {"sources": "a declaration without a name"}])",
        true);
    return result.status == 1 && result.objects.size() == 2 && result.errors.size() == 1;
}

bool declareWithoutEnd(FlowWorld& /*world*/)
{
    return ContentLoader::processScriptSources(
               R"([{"name": "a script that has a long name", "sources":)", true)
               .status == 2;
}

bool saveProject(FlowWorld& /*world*/)
{
    Script* const script =
        ScriptManager::getInstance()->createOrRetrieve("a script that has a long name");
    script->setTargetInterpreter(INTERPRETER_LUA);
    script->setSources("x = 'a text that needs memory of its own'");
    ProjectSaveQuery query;
    query.path = "another_project_with_a_long_name.project";
    ProjectLoader::save(query);
    return true;
}

bool loadProject(FlowWorld& /*world*/)
{
    ProjectLoadQuery query;
    query.path = "a_project_with_a_long_name_scripts.tbscripts";
    return ProjectLoader::load(query).scripts.size() == 2;
}

bool loadMissingFile(FlowWorld& /*world*/)
{
    return ContentLoader::loadScriptDeclaration("a_file_that_is_not_there.json", true).status == 2;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(
    Loading,
    MemoryFlowTest,
    ::testing::Combine(
        ::testing::Values(
            MemoryFlow{"Compilation", &compile},
            MemoryFlow{"CompilationOfWrongSources", &compileWrongSources},
            MemoryFlow{"ScriptRegistry", &fileScripts},
            MemoryFlow{"Declarations", &declareScripts},
            MemoryFlow{"DeclarationsWithoutEnd", &declareWithoutEnd},
            MemoryFlow{"SavedProject", &saveProject},
            MemoryFlow{"LoadedProject", &loadProject},
            MemoryFlow{"MissingFile", &loadMissingFile}),
        ::testing::Values(RefusedMemory::SPAN::ONE_REQUEST, RefusedMemory::SPAN::ALL_FURTHER)),
    &nameOfFlow);

} // namespace tbScripts::test

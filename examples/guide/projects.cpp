// The code of docs/guide/projects.md.

#include <tbExport/Node.h>
#include <tbScripts/ContentLoader.h>
#include <tbScripts/Environment.h>
#include <tbScripts/EnvironmentManager.h>
#include <tbScripts/LogManager.h>
#include <tbScripts/ProjectLoader.h>
#include <tbScripts/ResourceDeclAugmentCallback.h>
#include <tbScripts/Script.h>
#include <tbScripts/ScriptManager.h>

#include <iostream>
#include <vector>

using namespace tbScripts;

namespace
{

// [shown]
class StartList : public ResourceDeclAugmentCallback
{
public:
    void onScript(Script* script, tbExport::Node* declaration) override
    {
        const tbExport::Node* const start = declaration->getMember("start");
        if (start && start->getBool())
            scripts.push_back(script);
    }

    std::vector<Script*> scripts; // they belong to the script manager
};

// [/shown]

} // namespace

int main()
{
    // [shown]
    ScriptManager* const scripts = ScriptManager::getInstance();
    Script* const patrol = scripts->createOrRetrieve("patrol");
    patrol->setTargetInterpreter(INTERPRETER_LUA);
    patrol->setSources(ContentLoader::inputDataStr("patrol.lua"));
    patrol->load();

    Environment* const level = EnvironmentManager::getInstance()->createOrRetrieve("level 1");
    level->setEnvironmentFor(INTERPRETER_LUA);
    level->execute(*patrol);
    // [/shown]

    // [shown]
    ContentLoader::saveObjectDeclaration(patrol, "patrol.json");

    const ContentLoadResult<Script> loaded =
        ContentLoader::loadScriptDeclaration("patrol.json", true);
    for (const tbMemory::String& error : loaded.errors)
        std::cout << error << '\n';
    std::cout << "status " << loaded.status << ", " << loaded.objects.size() << " script\n";
    std::cout << (loaded.objects[0] == patrol ? "the same script" : "another script") << '\n';
    // [/shown]
    scripts->erase("patrol");

    // [shown]
    StartList startList;
    ProjectLoadQuery query;
    query.path = "level1_scripts.tbscripts";
    query.callback = &startList;
    const ProjectLoadResult project = ProjectLoader::load(query);

    for (const Script* const script : project.scripts)
    {
        const CompilationResult& result = script->getLastCompilationResult();
        std::cout << script->getName() << ": " << (result.success ? "ready" : "broken") << '\n';
    }
    for (const Script* const script : startList.scripts)
        level->execute(*script);
    // [/shown]

    // [shown]
    ProjectSaveQuery saving;
    saving.path = "level1.proj"; // writes level1_scripts.tbscripts
    ProjectLoader::save(saving);
    // [/shown]

    // [shown]
    EnvironmentManager::getInstance()->kill();
    ScriptManager::getInstance()->kill();
    LogManager::getInstance()->kill();
    // [/shown]
}

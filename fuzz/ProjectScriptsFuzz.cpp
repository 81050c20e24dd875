// Files that are loaded as the scripts of a project, by a host that changes the manager meanwhile.
// What was loaded is saved and loaded again, and has to be the same.

#include "support/Bytes.h"
#include "support/Require.h"
#include "support/ScratchFolder.h"

#include <tbResources/ResourceManager.h>
#include <tbScripts/ProjectLoader.h>
#include <tbScripts/ResourceDeclAugmentCallback.h>
#include <tbScripts/Script.h>
#include <tbScripts/ScriptManager.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tbScripts::fuzz
{

namespace
{

// Sources and interpreter by name.
using Scripts = std::map<std::string, std::pair<std::string, INTERPRETER>>;

Scripts filedScripts()
{
    Scripts scripts;
    const ScriptManager* const manager = ScriptManager::getInstance();
    for (unsigned int i = 0; i < manager->getCount(); ++i)
    {
        const Script* const script = manager->getByIndex(i);
        scripts[std::string(std::string_view(script->getName()))] = {
            std::string(std::string_view(script->getSources())), script->getTargetInterpreter()};
    }
    return scripts;
}

// Does to each script what the bytes say: mostly nothing.
class MeddlingHost : public ResourceDeclAugmentCallback
{
public:
    explicit MeddlingHost(Bytes bytes)
        : m_bytes(bytes)
    {
    }

    void onScript(Script* script, tbExport::Node* /*declaration*/) override
    {
        ScriptManager* const manager = ScriptManager::getInstance();
        const std::string name(std::string_view(script->getName()));
        switch (m_bytes.below(8))
        {
        case 1:
            return manager->erase(name);
        case 2:
            return manager->kill();
        case 3:
            return script->setSources("changed = true");
        case 4:
            return script->setTargetInterpreter(INTERPRETER_UNKNOWN);
        case 5:
            return _rename(name, "renamed");
        case 6:
            manager->createOrRetrieve("one more");
            return;
        default:
            return;
        }
    }

private:
    void _rename(const std::string& name, const std::string& newName)
    {
        ScriptManager* const manager = ScriptManager::getInstance();
        Script* const script = manager->get(name);
        manager->rename(name, newName);
        if (script && manager->get(newName) != script)
            m_givenAway.emplace_back(script);
    }

    Bytes m_bytes;
    std::vector<std::unique_ptr<Script>> m_givenAway; // may go only after the loading
};

void loadSaveAndCompare(Bytes bytes)
{
    static const ScratchFolder folder;
    const std::string given = folder.getPath() + "/given";
    const std::string project = folder.getPath() + "/project";
    MeddlingHost host{Bytes(bytes)};
    bytes.text(4); // which the host acts by
    std::ofstream(given, std::ios::binary) << bytes.rest();

    ProjectLoader::load({tbMemory::String(given), &host});
    const Scripts loaded = filedScripts();
    ProjectLoader::save({tbMemory::String(project), nullptr});
    ScriptManager::getInstance()->kill();
    const ProjectLoadResult again =
        ProjectLoader::load({tbMemory::String(project + "_scripts.tbscripts"), nullptr});

    require(again.scripts.size() == loaded.size(), "as many scripts are loaded as were saved");
    require(filedScripts() == loaded, "what was saved is loaded as it was");
    ScriptManager::getInstance()->kill();
}

} // namespace

} // namespace tbScripts::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // Saving puts the working path directly in front of a path.
    tbResources::ResourceManager::getInstance()->setWorkingPath("");
    tbScripts::fuzz::loadSaveAndCompare(tbScripts::fuzz::Bytes(data, size));
    return 0;
}

#include "tbScripts/ProjectLoader.h"

#include "scripts/ScriptRegistry.h"

#include "tbScripts/ContentLoader.h"
#include "tbScripts/ResourceDeclAugmentCallback.h"
#include "tbScripts/Script.h"
#include "tbScripts/ScriptManager.h"

#include <tbExport/JsonExporter.h>
#include <tbExport/Node.h>

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

namespace tbScripts
{

namespace
{

constexpr const char* MEMBER_SCRIPTS = "scripts";
constexpr const char* SCRIPTS_FILE_ENDING = "_scripts.tbscripts";

// Compatibility: the last "." counts wherever it is, also in the name of a folder (decision 0014).
tbMemory::String scriptsFileOf(const tbMemory::String& projectPath)
{
    const std::string_view path = projectPath;
    return tbMemory::String(path.substr(0, path.rfind('.'))) + SCRIPTS_FILE_ENDING;
}

// The array of declarations, null if there is none.
tbExport::Node* findDeclarations(tbExport::ExporterLoadResult& parsed)
{
    tbExport::Node* const root = parsed.getRoot();
    tbExport::Node* const scripts = root ? root->getMember(MEMBER_SCRIPTS) : nullptr;
    return scripts && scripts->isArray() ? scripts : nullptr;
}

using Access = ScriptManagerAccess;

} // namespace

void ProjectLoader::save(const ProjectSaveQuery& query)
{
    tbExport::Node root;
    root.setObject();
    tbExport::Node* declarations = nullptr;
    const ScriptRegistry& registry = Access::getRegistry(ScriptManager::getInstanceRef());
    for (const auto& [name, script] : registry.getScripts())
    {
        if (!declarations)
        {
            declarations = root.addMember(MEMBER_SCRIPTS);
            declarations->setArray();
        }
        tbExport::Node* const declaration = declarations->addElement();
        declaration->setObject();
        script->exportClassToTree(declaration);
    }
    ContentLoader::outputData(
        tbExport::JsonExporter::exportTreeIntoString(&root), scriptsFileOf(query.path));
}

ProjectLoadResult ProjectLoader::load(const ProjectLoadQuery& query)
{
    tbExport::ExporterLoadResult parsed = ContentLoader::inputData(query.path);
    tbExport::Node* const declarations = findDeclarations(parsed);
    // Held until the end of the load: callback and log receiver may erase scripts, or kill the
    // manager.
    std::vector<std::shared_ptr<Script>> scripts;
    for (std::size_t i = 0; declarations && i < declarations->getSize(); ++i)
    {
        tbExport::Node* const declaration = declarations->getElement(i);
        const auto processed = ContentLoader::processScriptTree(declaration, false);
        if (processed.objects.empty())
            continue;
        const std::shared_ptr<Script> script =
            Access::getRegistry(ScriptManager::getInstanceRef()).shareOf(*processed.objects[0]);
        if (!script)
            continue;
        if (query.callback)
            query.callback->onScript(script.get(), declaration);
        scripts.push_back(script);
        script->load();
    }

    ProjectLoadResult result;
    for (const std::shared_ptr<Script>& script : scripts)
    {
        if (Access::hasOwner(script))
            result.scripts.append(script.get());
    }
    return result;
}

} // namespace tbScripts

#include "demo/Project.h"

#include "demo/Binding.h"

#include <tbExport/Node.h>
#include <tbResources/ResourceManager.h>
#include <tbScripts/ContentLoader.h>
#include <tbScripts/ProjectLoader.h>
#include <tbScripts/ResourceDeclAugmentCallback.h>
#include <tbScripts/ScriptManager.h>

#include <algorithm>
#include <iostream>
#include <map>
#include <tuple>

namespace demo
{

namespace
{

using tbScripts::ContentLoader;
using tbScripts::FunctionParameter;
using tbScripts::ProjectLoader;
using tbScripts::Script;
using tbScripts::ScriptManager;

constexpr const char* LIST_ENDING = "_scripts.tbscripts"; // the library's, beside a project

std::string textOf(const tbMemory::StringView& view)
{
    return std::string(view.data(), view.size());
}

std::string textOf(const tbExport::Node& declaration, const char* member)
{
    const tbExport::Node* const node = declaration.getMember(member);
    return node ? textOf(node->getString()) : std::string();
}

// "" for a script that is in no folder.
std::string folderOf(const Script& script)
{
    return std::filesystem::path(textOf(script.getName())).parent_path().string();
}

using Declaration = std::tuple<std::string, std::string>; // type, sources

// What a list declares, by names: their order in it is the script manager's, which is any.
std::map<std::string, Declaration> readList(const std::string& list)
{
    std::map<std::string, Declaration> declarations;
    const tbExport::ExporterLoadResult document = ContentLoader::inputData(list);
    const tbExport::Node* const root = document.getRoot();
    const tbExport::Node* const scripts = root ? root->getMember("scripts") : nullptr;
    for (std::size_t index = 0; scripts && index < scripts->getSize(); ++index)
    {
        const tbExport::Node& declaration = *scripts->getElement(index);
        declarations[textOf(declaration, "name")] = {
            textOf(declaration, "type"), textOf(declaration, "sources")};
    }
    return declarations;
}

} // namespace

// Called for each script before it is compiled, so that its changes are compiled.
class Project::Augmentation : public tbScripts::ResourceDeclAugmentCallback
{
public:
    explicit Augmentation(Project& project)
        : m_project(project)
    {
    }

    void onScript(Script* script, tbExport::Node*) override
    {
        const std::string sources = textOf(script->getSources());
        const std::size_t number = m_project.m_entries.size();
        m_project.m_entries.push_back({script, sources});
        // At the end, so that the lines before it keep their numbers in messages.
        script->setSources(sources + "\nstarted(" + std::to_string(number) + ")\n");
    }

private:
    Project& m_project;
};

Project::Project(const std::filesystem::path& list)
    : m_name(list.filename().string())
{
    // The library finds files from here on: the list, and what is saved beside it.
    tbResources::ResourceManager::getInstance()->setWorkingPath(
        std::filesystem::absolute(list).parent_path().string() + '/');
    Augmentation augmentation(*this);
    ProjectLoader::load({m_name, &augmentation});
}

Project::~Project()
{
    ScriptManager::getInstance()->kill();
}

void Project::declareIn(tbScripts::Environment& environment)
{
    define(
        environment.setFunc("started"),
        {tbScripts::PARAM_TYPE_INT},
        [this](const Parameters& arguments)
        {
            m_started.insert(arguments[0].getInt());
            return FunctionParameter::VOID;
        });
}

void Project::saveAgain(Summary& summary)
{
    // The line that the host has added is not part of the project.
    for (const Entry& entry : m_entries)
        entry.script->setSources(entry.authoredSources);
    const std::string project = m_name.substr(0, m_name.rfind(LIST_ENDING)) + "_copy";
    ProjectLoader::save({project, nullptr});

    const auto loaded = readList(m_name);
    const auto saved = readList(project + LIST_ENDING);
    const auto isUnchanged = [&saved](const auto& declared)
    {
        const auto found = saved.find(declared.first);
        return found != saved.end() && found->second == declared.second;
    };
    const auto unchanged = std::count_if(loaded.begin(), loaded.end(), isUnchanged);
    std::cout << "Saved again as " << project << LIST_ENDING << ": " << unchanged << " of "
              << loaded.size() << " scripts unchanged\n";
    summary.addDifferences(
        static_cast<int>(std::max(loaded.size(), saved.size())) - static_cast<int>(unchanged));
}

// In the order of their names, which is that of the files.
std::vector<const Script*> Project::_findCompiled(const std::string& folder) const
{
    std::vector<const Script*> scripts;
    for (const Entry& entry : m_entries)
    {
        if (folderOf(*entry.script) != folder)
            continue;
        const tbScripts::CompilationResult& result = entry.script->getLastCompilationResult();
        if (result.success)
            scripts.push_back(entry.script);
        else // the log has the message already; here it is at hand without one
            std::cout << "  " << entry.script->getName() << ": left out, error code "
                      << result.errorCode << '\n';
    }
    return scripts;
}

void Project::_report(const Script& script, bool isDone)
{
    ++m_runs;
    std::cout << "  " << script.getName() << (isDone ? "" : ": failed") << '\n';
}

} // namespace demo

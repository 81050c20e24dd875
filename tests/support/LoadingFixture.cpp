#include "support/LoadingFixture.h"

#include <tbExport/JsonExporter.h>
#include <tbResources/ResourceManager.h>
#include <tbScripts/Environment.h>

#include <string_view>

namespace tbScripts::test
{

using tbResources::ResourceManager;

namespace
{

std::string toText(std::string_view view)
{
    return std::string(view);
}

} // namespace

Members membersOf(const tbExport::Node* object)
{
    Members members;
    for (std::size_t i = 0; object && i < object->getSize(); ++i)
    {
        const tbExport::Node* const member = object->getElement(i);
        members.emplace_back(
            toText(object->getMemberName(i)),
            member->isString() ? toText(member->getString()) : "<no text>");
    }
    return members;
}

tbExport::ExporterLoadResult parse(const std::string& document)
{
    tbExport::ExporterLoadResult result = tbExport::JsonExporter::importIntoTree(document);
    EXPECT_NE(result.getRoot(), nullptr) << result.getError();
    return result;
}

std::vector<LogEntry> parseError(const std::string& error, const std::string& context)
{
    return {
        {"", "-"},
        {"Object Declaration parse error :", "ContentLoader::inputDataSources"},
        {error, "ContentLoader::inputDataSources"},
        {"", "-"},
        {context, "ContentLoader::inputDataSources"},
        {"", "-"}};
}

std::vector<std::string> textsOf(const tbMemory::BufferCast<tbMemory::String>& texts)
{
    std::vector<std::string> result;
    for (const tbMemory::String& text : texts)
        result.push_back(toText(text));
    return result;
}

std::vector<std::string> namesOf(const tbMemory::BufferCast<Script*>& scripts)
{
    std::vector<std::string> names;
    for (const Script* script : scripts)
        names.push_back(toText(script->getName()));
    return names;
}

int resultOf(const Script& script)
{
    Environment environment;
    environment.setEnvironmentFor(INTERPRETER_LUA);
    return environment.execute(script) ? environment.getVar("x", -1) : -1;
}

LoadingFixture::LoadingFixture()
    : m_workingPath(ResourceManager::getInstance()->getWorkingPath())
{
    ResourceManager::getInstance()->setWorkingPath(m_folder.pathOf(""));
}

LoadingFixture::~LoadingFixture()
{
    killScripts();
    ResourceManager::getInstance()->setWorkingPath(m_workingPath);
}

Script* LoadingFixture::addScript(const std::string& name, const std::string& sources)
{
    Script* const script = ScriptManager::getInstance()->createOrRetrieve(name);
    script->setTargetInterpreter(INTERPRETER_LUA);
    script->setSources(sources);
    return script;
}

Script* LoadingFixture::getScript(const std::string& name)
{
    return ScriptManager::getInstance()->get(name);
}

unsigned int LoadingFixture::countScripts()
{
    return ScriptManager::getInstance()->getCount();
}

void LoadingFixture::killScripts()
{
    if (ScriptManager* const manager = ScriptManager::getInstanceIfExisting())
        manager->kill();
}

} // namespace tbScripts::test

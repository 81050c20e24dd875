#include "tbScripts/ContentLoader.h"

#include "core/LogSources.h"
#include "loading/FileReplacement.h"
#include "loading/LoadingMessages.h"
#include "port/FileReading.h"
#include "scripts/ScriptRegistry.h"

#include "tbScripts/LogManager.h"
#include "tbScripts/Script.h"
#include "tbScripts/ScriptManager.h"

#include <tbExport/Exportable.h>
#include <tbExport/JsonExporter.h>
#include <tbExport/Node.h>
#include <tbMemory/Buffer.h>
#include <tbResources/ResourceManager.h>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace tbScripts
{

namespace
{

constexpr const char* MEMBER_NAME = "name";

// The system would end a path at its first NUL, and read another file.
bool holdsNul(const tbMemory::String& path)
{
    return std::string_view(path).find('\0') != std::string_view::npos;
}

tbMemory::StringView textOf(const tbMemory::Buffer& bytes)
{
    return tbMemory::StringView(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

void logParseError(const tbExport::ExporterLoadResult& parsed)
{
    const auto log = [](const tbMemory::StringView& message, const char* source)
    { LogManager::getInstance()->log(message, source); };
    log("", LOG_SOURCE_SEPARATOR);
    log(messages::DECLARATION_PARSE_ERROR, LOG_SOURCE_INPUT_DATA_SOURCES);
    log(parsed.getError(), LOG_SOURCE_INPUT_DATA_SOURCES);
    log("", LOG_SOURCE_SEPARATOR);
    log(parsed.getErrorContext(), LOG_SOURCE_INPUT_DATA_SOURCES);
    log("", LOG_SOURCE_SEPARATOR);
}

// `path` is the one that the host gave, `tried` follows from it.
void logNotOpened(const tbMemory::StringView& path, const tbMemory::String& tried)
{
    // Only an absolute path looks as if it were the one that was tried.
    const bool isMisleading = std::filesystem::path(std::string_view(path)).has_root_directory() &&
                              std::string_view(path) != std::string_view(tried);
    LogManager::getInstance()->log(messages::fileNotOpened(path), LOG_SOURCE_CONTENT_LOADER);
    if (isMisleading)
        LogManager::getInstance()->log(
            messages::pathTriedForSaving(tried), LOG_SOURCE_CONTENT_LOADER);
}

ContentLoadResult<Script> failure(const char* error)
{
    ContentLoadResult<Script> result;
    result.errors.append(error);
    result.status = CONTENT_LOAD_FAILURE;
    return result;
}

ContentLoadResult<Script> processArray(tbExport::Node& declarations, bool compile)
{
    ContentLoadResult<Script> result;
    for (std::size_t i = 0; i < declarations.getSize(); ++i)
    {
        const ContentLoadResult<Script> entry =
            ContentLoader::processScriptTree(declarations.getElement(i), compile);
        if (entry.status == CONTENT_LOAD_SUCCESS)
        {
            result.objects.append(entry.objects[0]);
            continue;
        }
        result.errors.append(entry.errors[0]);
        result.status = CONTENT_LOAD_PARTIAL;
    }
    return result;
}

} // namespace

tbExport::ExporterLoadResult ContentLoader::inputData(const tbMemory::StringView& path)
{
    const auto& resources = tbResources::ResourceManager::getInstanceRef();
    const tbMemory::String resolved = resources.getAbsoluteFromWorkingDir(path);
    if (!holdsNul(resolved))
    {
        const tbMemory::Buffer bytes = resources.loadFileIntoMemory(resolved);
        if (!bytes.empty())
            return inputDataSources(textOf(bytes));
        // Empty or missing: that comes from the same look at the file as the bytes it has by now.
        const port::FileContent file = port::readFile(std::string(std::string_view(resolved)));
        if (file.reading == port::READING::DONE)
            return inputDataSources(tbMemory::StringView(file.bytes.data(), file.bytes.size()));
    }
    LogManager::getInstance()->log(
        messages::declarationFileMissing(resolved), LOG_SOURCE_INPUT_DATA);
    return {};
}

tbExport::ExporterLoadResult ContentLoader::inputDataSources(const tbMemory::StringView& text)
{
    tbExport::ExporterLoadResult parsed = tbExport::JsonExporter::importIntoTree(text);
    if (!parsed.hasFailed())
        return parsed;
    logParseError(parsed);
    return {};
}

tbMemory::String ContentLoader::inputDataStr(const tbMemory::StringView& path)
{
    const auto& resources = tbResources::ResourceManager::getInstanceRef();
    return textOf(resources.loadFileIntoMemory(resources.getAbsoluteFromWorkingDir(path)));
}

bool ContentLoader::outputData(const tbMemory::StringView& data, const tbMemory::StringView& path)
{
    const tbMemory::String fullPath =
        tbResources::ResourceManager::getInstanceRef().getWorkingPath() + path;
    if (replaceFile(fullPath, data))
        return true;
    logNotOpened(path, fullPath);
    return false;
}

bool ContentLoader::saveTreeDeclaration(tbExport::Node* tree, const tbMemory::StringView& path)
{
    return tree && outputData(tbExport::JsonExporter::exportTreeIntoString(tree), path);
}

bool ContentLoader::saveObjectDeclaration(
    tbExport::Exportable* object, const tbMemory::StringView& path)
{
    return object && outputData(tbExport::JsonExporter::exportObjectIntoString(object), path);
}

ContentLoadResult<Script>
ContentLoader::loadScriptDeclaration(const tbMemory::StringView& path, bool /*compile*/)
{
    return processScriptSources(inputDataStr(path), true);
}

ContentLoadResult<Script>
ContentLoader::processScriptSources(const tbMemory::StringView& text, bool compile)
{
    tbExport::ExporterLoadResult parsed = inputDataSources(text);
    tbExport::Node* const root = parsed.getRoot();
    if (!root)
        return failure(messages::SCRIPT_NOT_PARSED);
    if (root->isObject())
        return processScriptTree(root, compile);
    if (root->isArray())
        return processArray(*root, compile);
    return failure(messages::SCRIPT_ROOT_OF_WRONG_KIND);
}

ContentLoadResult<Script>
ContentLoader::processScriptTree(tbExport::Node* declaration, bool compile)
{
    if (!declaration || !declaration->isObject())
        return failure(messages::SCRIPT_ENTRY_NO_OBJECT);
    const tbExport::Node* const name = declaration->getMember(MEMBER_NAME);
    if (!name || !name->isString())
        return failure(messages::SCRIPT_ENTRY_WITHOUT_NAME);
    ScriptManager& manager = ScriptManager::getInstanceRef();
    manager.createOrRetrieve(name->getString());
    const std::shared_ptr<Script> script =
        ScriptManagerAccess::getRegistry(manager).share(name->getString());
    script->importClassFromTree(declaration);
    if (compile)
    {
        script->unload();
        script->load();
    }
    if (!ScriptManagerAccess::hasOwner(script))
        return failure(messages::SCRIPT_NOT_CREATED); // the log receiver has erased it

    ContentLoadResult<Script> result;
    result.objects.append(script.get());
    return result;
}

} // namespace tbScripts

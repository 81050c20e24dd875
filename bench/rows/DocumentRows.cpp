#include "rows/BareCompiler.h"
#include "rows/BareJson.h"
#include "rows/ProjectText.h"
#include "rows/Rows.h"
#include "support/Failure.h"

#include <tbExport/JsonExporter.h>
#include <tbScripts/ProjectLoader.h>
#include <tbScripts/ProjectQueries.h>
#include <tbScripts/Script.h>
#include <tbScripts/ScriptManager.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <unistd.h>

namespace bench
{

namespace
{

constexpr const char* SUBJECT = "Scripts and documents";
constexpr std::size_t MEGABYTES = 20;
constexpr std::size_t MEGABYTES_IN_SMOKE = 1;
constexpr std::size_t BYTES_PER_MEGABYTE = 1'000'000;

// A file that goes with the last variant that reads it.
class ProjectFile
{
public:
    explicit ProjectFile(const std::string& text)
        : m_path(
              std::filesystem::temp_directory_path() /
              ("tbScriptsBench" + std::to_string(getpid()) + ".tbscripts"))
    {
        std::ofstream(m_path, std::ios::binary) << text;
    }

    ProjectFile(const ProjectFile&) = delete;
    ProjectFile& operator=(const ProjectFile&) = delete;

    ~ProjectFile()
    {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }

    std::string getPath() const { return m_path.string(); }

    std::string read() const
    {
        std::ifstream file(m_path, std::ios::binary);
        std::string text(std::filesystem::file_size(m_path), '\0');
        file.read(text.data(), static_cast<std::streamsize>(text.size()));
        return text;
    }

private:
    std::filesystem::path m_path;
};

double loadInLibrary(const ProjectFile& file)
{
    tbScripts::ProjectLoadQuery query;
    query.path = file.getPath().c_str();
    const tbScripts::ProjectLoadResult result = tbScripts::ProjectLoader::load(query);
    double compiled = 0.0;
    for (const tbScripts::Script* const script : result.scripts)
        compiled += script->getLastCompilationResult().success ? 1.0 : 0.0;
    return compiled;
}

double loadBare(const ProjectFile& file)
{
    const BareJson document(file.read());
    BareCompiler compiler;
    std::vector<std::string> bytecodes;
    for (std::size_t i = 0; i < document.countScripts(); ++i)
    {
        const std::string sources = document.getSources(i);
        bytecodes.push_back(compiler.compile(sources.c_str(), sources.size()));
    }
    return static_cast<double>(bytecodes.size());
}

std::vector<Variant> makeProjectVariants(std::size_t megabytes)
{
    const auto file =
        std::make_shared<ProjectFile>(makeProjectText(megabytes * BYTES_PER_MEGABYTE));
    return {
        {[file] { return loadInLibrary(*file); },
         [] { tbScripts::ScriptManager::getInstance()->kill(); }},
        {[file] { return loadBare(*file); }, {}}};
}

std::vector<Variant> makeParseVariants(std::size_t megabytes)
{
    const auto text =
        std::make_shared<std::string>(makeProjectText(megabytes * BYTES_PER_MEGABYTE));
    return {
        {[text]
         {
             const tbExport::ExporterLoadResult parsed = tbExport::JsonExporter::importIntoTree(
                 tbMemory::StringView(text->data(), text->size()));
             return parsed.hasFailed() ? 0.0 : 1.0;
         },
         {}},
        {[text]
         {
             const BareJson document(*text);
             return document.countScripts() > 0 ? 1.0 : 0.0;
         },
         {}}};
}

std::vector<Variant> makePrintVariants(std::size_t megabytes)
{
    const std::string text = makeProjectText(megabytes * BYTES_PER_MEGABYTE);
    const auto parsed = std::make_shared<tbExport::ExporterLoadResult>(
        tbExport::JsonExporter::importIntoTree(tbMemory::StringView(text.data(), text.size())));
    const auto bare = std::make_shared<BareJson>(text);
    return {
        {[parsed]
         {
             const tbMemory::String printed =
                 tbExport::JsonExporter::exportTreeIntoString(parsed->getRoot());
             return printed.empty() ? 0.0 : 1.0;
         },
         {}},
        {[bare] { return bare->print().empty() ? 0.0 : 1.0; }, {}}};
}

} // namespace

void addDocumentRows(RowList& rows)
{
    const auto add = [&rows](const char* name, const char* limit, auto make)
    {
        rows.push_back(
            {SUBJECT,
             name,
             {{RIVAL_KIND::LIMIT, limit, 0.0}},
             MEGABYTES,
             MEGABYTES_IN_SMOKE,
             make});
    };
    add("load of a 20 MB project, per MB", "Boost.JSON and bare compiles", &makeProjectVariants);
    add("parse of a 20 MB document, per MB", "Boost.JSON", &makeParseVariants);
    add("print of a 20 MB document, per MB", "Boost.JSON", &makePrintVariants);
}

} // namespace bench

#include "tbscripts/CommandLine.h"
#include "tbscripts/Commands.h"
#include "tbscripts/Console.h"
#include "tbscripts/Document.h"
#include "tbscripts/Failure.h"
#include "tbscripts/FolderWalk.h"
#include "tbscripts/Progress.h"
#include "tbscripts/ScriptFile.h"

#include <cstddef>
#include <filesystem>
#include <system_error>

namespace tool
{

namespace
{

// A file to check. One that was found in a folder may have nothing to do with scripts.
struct Candidate
{
    std::string path;
    bool isFound;
};

struct Counts
{
    std::size_t scripts = 0;
    std::size_t failures = 0;
    std::size_t troubles = 0;
};

void reportFileTrouble(Counts& counts, const std::string& line)
{
    report(line);
    ++counts.troubles;
}

std::vector<Candidate> findCandidates(const std::vector<std::string>& paths, Counts& counts)
{
    std::vector<Candidate> candidates;
    for (const std::string& path : paths)
    {
        std::error_code ignored; // a path that is no folder is read below, which reports errors
        if (!std::filesystem::is_directory(path, ignored))
        {
            candidates.push_back({path, false});
            continue;
        }
        const FolderContent content = walkFolder(path, {".lua", ".json", ".tbscripts"});
        for (const std::string& trouble : content.troubles)
            reportFileTrouble(counts, "tbscripts: " + trouble);
        for (const std::string& file : content.files)
            candidates.push_back({(std::filesystem::path(path) / file).string(), true});
    }
    return candidates;
}

ScriptFile readCandidate(const Candidate& candidate)
{
    if (!isDocumentName(candidate.path))
        return readScriptFile(candidate.path);
    const Document document = readDocument(candidate.path);
    const bool mayBeOther = candidate.isFound && endsWith(candidate.path, ".json");
    return mayBeOther && !isAboutScripts(document) ? ScriptFile()
                                                   : takeScripts(candidate.path, document);
}

void check(const Candidate& candidate, Counts& counts, Progress& progress)
{
    ScriptFile file = readCandidate(candidate);
    for (const std::string& trouble : file.troubles)
    {
        progress.hide();
        reportFileTrouble(counts, trouble);
    }
    for (LabelledScript& entry : file.scripts)
    {
        ++counts.scripts;
        const auto failure = compile(entry.script);
        if (!failure)
            continue;
        progress.hide();
        report(describe(entry.label, *failure));
        ++counts.failures;
    }
    progress.advance();
}

std::string summarise(const Counts& counts)
{
    std::string summary = count(counts.scripts, "script") + " checked";
    if (counts.failures > 0)
        summary += ", " + std::to_string(counts.failures) + " failed";
    if (counts.troubles > 0)
        summary += ", " + count(counts.troubles, "problem") + " with files";
    return summary + '\n';
}

} // namespace

EXIT_STATUS checkScripts(const CommandLine& line)
{
    Counts counts;
    const std::vector<Candidate> candidates = findCandidates(line.paths, counts);
    {
        Progress progress(candidates.size());
        for (const Candidate& candidate : candidates)
            check(candidate, counts, progress);
    }
    print(summarise(counts));
    if (counts.troubles > 0)
        return EXIT_STATUS::TROUBLE;
    return counts.failures > 0 ? EXIT_STATUS::SCRIPT_FAILED : EXIT_STATUS::WELL;
}

} // namespace tool

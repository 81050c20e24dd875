#include "tbscripts/CommandLine.h"
#include "tbscripts/Commands.h"
#include "tbscripts/Console.h"
#include "tbscripts/Document.h"
#include "tbscripts/FileReading.h"
#include "tbscripts/FileWriting.h"
#include "tbscripts/UnpackPlan.h"

#include <filesystem>
#include <system_error>

namespace tool
{

namespace
{

namespace fs = std::filesystem;

std::string pathOf(const std::string& folder, const PlannedFile& file)
{
    return (fs::path(folder) / file.path).string();
}

bool makeFolder(const fs::path& folder)
{
    std::error_code error;
    fs::create_directories(folder, error);
    if (!error && fs::is_directory(folder, error))
        return true;
    reportTrouble(folder.string(), error ? error.message() : "is not a folder");
    return false;
}

bool reportIfAny(const std::string& path, const std::string& trouble)
{
    if (!trouble.empty())
        reportTrouble(path, trouble);
    return !trouble.empty();
}

// Reports the first file that cannot be written and returns whether there was none.
bool writeAll(const UnpackPlan& plan, const std::string& folder)
{
    if (!makeFolder(folder))
        return false;
    for (const PlannedFile& file : plan.files)
    {
        const std::string path = pathOf(folder, file);
        if (!makeFolder(fs::path(path).parent_path()))
            return false;
        if (reportIfAny(path, writeFile(path, file.bytes)))
            return false;
    }
    return !reportIfAny(folder, flushFiles(folder));
}

// Runs after all files were written: where the file system takes two names for one, a later file
// may have replaced an earlier one.
bool readBackAll(const UnpackPlan& plan, const std::string& folder)
{
    bool isSame = true;
    for (const PlannedFile& file : plan.files)
    {
        const std::string path = pathOf(folder, file);
        const FileContent content = readFile(path);
        if (content.trouble.empty() && content.bytes == file.bytes)
            continue;
        reportTrouble(path, "was written, but does not read back the same");
        isSame = false;
    }
    return isSame;
}

bool reportAll(const std::string& path, const UnpackPlan& plan)
{
    for (const std::string& trouble : plan.troubles)
        report("tbscripts: " + show(path) + ": " + trouble);
    return plan.troubles.empty();
}

} // namespace

EXIT_STATUS unpackScripts(const CommandLine& line)
{
    const std::string& path = line.paths[0];
    const Document document = readDocument(path);
    if (!document.trouble.empty())
    {
        report(document.trouble);
        return EXIT_STATUS::TROUBLE;
    }
    UnpackPlan plan = planUnpacking(document);
    if (plan.troubles.empty())
        checkAgainstDisk(plan, line.output, line.mayOverwrite);
    if (!reportAll(path, plan) || !writeAll(plan, line.output) || !readBackAll(plan, line.output))
        return EXIT_STATUS::TROUBLE;
    print(show(line.output) + ": " + count(plan.files.size(), "script") + " unpacked\n");
    return EXIT_STATUS::WELL;
}

} // namespace tool

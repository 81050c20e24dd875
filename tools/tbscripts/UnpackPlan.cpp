#include "tbscripts/UnpackPlan.h"

#include "tbscripts/Console.h"
#include "tbscripts/Document.h"
#include "tbscripts/ScriptPath.h"

#include <tbExport/Node.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <map>
#include <set>
#include <sys/stat.h>

namespace tool
{

namespace
{

std::string placeOf(std::size_t index, std::string_view name)
{
    return "element " + std::to_string(index + 1) + ", " + show(name) + ": ";
}

void planElement(UnpackPlan& plan, std::size_t index, const tbExport::Node& declaration)
{
    const tbExport::Node* const name = declaration.getMember("name");
    const tbExport::Node* const sources = declaration.getMember("sources");
    if (!name || !name->isString() || !sources || !sources->isString())
    {
        plan.troubles.push_back(
            "element " + std::to_string(index + 1) + ": has no \"name\" or no \"sources\"");
        return;
    }
    ScriptPath place = pathOfScript(name->getString());
    if (!place.trouble.empty())
    {
        plan.troubles.push_back(placeOf(index, name->getString()) + place.trouble);
        return;
    }
    plan.files.push_back(
        {std::string(name->getString()), std::move(place.path), sources->getString()});
}

// One path must not be used twice, nor as a file and as a folder.
void findCollisions(UnpackPlan& plan)
{
    std::map<std::string, std::string> nameByPath;
    for (const PlannedFile& file : plan.files)
    {
        const auto [earlier, isNew] = nameByPath.emplace(file.path, file.name);
        if (!isNew)
            plan.troubles.push_back(
                show(file.name) + ": is the same file as " + show(earlier->second));
    }
    for (const PlannedFile& file : plan.files)
    {
        for (const std::string& folder : foldersOf(file.path))
        {
            const auto found = nameByPath.find(folder);
            if (found != nameByPath.end())
                plan.troubles.push_back(
                    show(file.name) + ": lies below the file " + show(found->second));
        }
    }
}

enum class KIND : std::int32_t
{
    MISSING,
    FOLDER,
    FILE,
    LINK,
    OTHER,
    UNKNOWN
};

KIND kindOf(const std::string& path)
{
    struct stat status
    {
    };

    if (::lstat(path.c_str(), &status) != 0)
        return errno == ENOENT || errno == ENOTDIR ? KIND::MISSING : KIND::UNKNOWN;
    if (S_ISDIR(status.st_mode))
        return KIND::FOLDER;
    if (S_ISLNK(status.st_mode))
        return KIND::LINK;
    return S_ISREG(status.st_mode) ? KIND::FILE : KIND::OTHER;
}

std::string troubleAsFolder(const std::string& path)
{
    switch (kindOf(path))
    {
    case KIND::MISSING:
    case KIND::FOLDER:
        return {};
    case KIND::LINK:
        return "is a link, which may lead out of the folder";
    case KIND::FILE:
    case KIND::OTHER:
        return "is in the way of a folder";
    case KIND::UNKNOWN:
        return std::strerror(errno);
    }
    return {};
}

std::string troubleAsFile(const std::string& path, bool mayOverwrite)
{
    switch (kindOf(path))
    {
    case KIND::MISSING:
        return {};
    case KIND::FILE:
        return mayOverwrite ? "" : "exists already; --force overwrites it";
    case KIND::FOLDER:
        return "is a folder, not a file";
    case KIND::LINK:
        return "is a link, which may lead out of the folder";
    case KIND::OTHER:
        return "is not a regular file";
    case KIND::UNKNOWN:
        return std::strerror(errno);
    }
    return {};
}

void addTrouble(UnpackPlan& plan, const std::string& path, const std::string& trouble)
{
    if (!trouble.empty())
        plan.troubles.push_back(show(path) + ": " + trouble);
}

} // namespace

UnpackPlan planUnpacking(const Document& document)
{
    UnpackPlan plan;
    for (std::size_t i = 0; i < document.declarations.size(); ++i)
        planElement(plan, i, *document.declarations[i]);
    findCollisions(plan);
    return plan;
}

void checkAgainstDisk(UnpackPlan& plan, const std::string& folder, bool mayOverwrite)
{
    const std::filesystem::path root(folder);
    std::set<std::string> seen;
    for (const PlannedFile& file : plan.files)
    {
        for (const std::string& passed : foldersOf(file.path))
        {
            const std::string path = (root / passed).string();
            if (seen.insert(passed).second)
                addTrouble(plan, path, troubleAsFolder(path));
        }
        const std::string path = (root / file.path).string();
        addTrouble(plan, path, troubleAsFile(path, mayOverwrite));
    }
}

} // namespace tool

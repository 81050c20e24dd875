#include "tbscripts/UnpackPlan.h"

#include "tbscripts/Console.h"
#include "tbscripts/Document.h"
#include "tbscripts/ScriptPath.h"

#include <tbExport/Node.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <system_error>

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

// Orders paths so that the files below a folder follow it directly: "a", "a/b", "a.lua".
bool isBefore(const PlannedFile* left, const PlannedFile* right)
{
    const auto rank = [](char letter)
    { return letter == '/' ? 0 : static_cast<unsigned char>(letter); };
    return std::lexicographical_compare(
        left->path.begin(),
        left->path.end(),
        right->path.begin(),
        right->path.end(),
        [rank](char one, char other) { return rank(one) < rank(other); });
}

bool isBelow(const std::string& path, const std::string& folder)
{
    return path.size() > folder.size() && path[folder.size()] == '/' &&
           path.compare(0, folder.size(), folder) == 0;
}

// One path must not be used twice, nor as a file and as a folder.
void findCollisions(UnpackPlan& plan)
{
    std::vector<const PlannedFile*> files;
    for (const PlannedFile& file : plan.files)
        files.push_back(&file);
    std::stable_sort(files.begin(), files.end(), isBefore);

    const PlannedFile* earlier = nullptr;
    for (const PlannedFile* file : files)
    {
        if (earlier && file->path == earlier->path)
            plan.troubles.push_back(
                show(file->name) + ": is the same file as " + show(earlier->name));
        else if (earlier && isBelow(file->path, earlier->path))
            plan.troubles.push_back(
                show(file->name) + ": lies below the file " + show(earlier->name));
        else
            earlier = file;
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

// What lies at a path, links not followed. What is below no folder is missing.
struct Place
{
    KIND kind = KIND::UNKNOWN;
    std::error_code reason; // if it is unknown
};

Place placeAt(const std::string& path)
{
    std::error_code error;
    switch (std::filesystem::symlink_status(path, error).type())
    {
    case std::filesystem::file_type::none:
        return {KIND::UNKNOWN, error};
    case std::filesystem::file_type::not_found:
        return {KIND::MISSING, {}};
    case std::filesystem::file_type::directory:
        return {KIND::FOLDER, {}};
    case std::filesystem::file_type::symlink:
        return {KIND::LINK, {}};
    case std::filesystem::file_type::regular:
        return {KIND::FILE, {}};
    default:
        return {KIND::OTHER, {}};
    }
}

std::string troubleAsFolder(const Place& place)
{
    switch (place.kind)
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
        return place.reason.message();
    }
    return {};
}

std::string troubleAsFile(const std::string& path, bool mayOverwrite)
{
    const Place place = placeAt(path);
    switch (place.kind)
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
        return place.reason.message();
    }
    return {};
}

void addTrouble(UnpackPlan& plan, const std::string& path, const std::string& trouble)
{
    if (!trouble.empty())
        plan.troubles.push_back(show(path) + ": " + trouble);
}

// Checks the existing folders on a path, each folder once, and returns whether the path can be
// used.
bool isPassable(
    UnpackPlan& plan,
    const std::filesystem::path& root,
    const std::string& path,
    std::map<std::string, KIND, std::less<>>& seen)
{
    for (const std::string_view passed : foldersOf(path))
    {
        auto folder = seen.find(passed);
        if (folder == seen.end())
        {
            const std::string whole = (root / passed).string();
            const Place place = placeAt(whole);
            if (place.kind == KIND::MISSING)
                return true;
            addTrouble(plan, whole, troubleAsFolder(place));
            folder = seen.emplace(passed, place.kind).first;
        }
        if (folder->second != KIND::FOLDER)
            return false;
    }
    return true;
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
    std::map<std::string, KIND, std::less<>> seen;
    for (const PlannedFile& file : plan.files)
    {
        if (!isPassable(plan, root, file.path, seen))
            continue;
        const std::string path = (root / file.path).string();
        addTrouble(plan, path, troubleAsFile(path, mayOverwrite));
    }
}

} // namespace tool

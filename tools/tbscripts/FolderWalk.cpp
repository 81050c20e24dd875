#include "tbscripts/FolderWalk.h"

#include "tbscripts/Console.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

namespace tool
{

namespace
{

namespace fs = std::filesystem;

// A walk in progress: the folders that are still to be listed, relative to the first one.
struct Walk
{
    fs::path root;
    std::vector<std::string> pending;
    FolderContent content;
};

fs::path placeOf(const Walk& walk, const std::string& relative)
{
    return relative.empty() ? walk.root : walk.root / relative;
}

void addTrouble(Walk& walk, const std::string& relative, const std::error_code& error)
{
    walk.content.troubles.push_back(
        show(placeOf(walk, relative).string()) + ": " + error.message());
}

bool isWanted(const std::string& name, const std::vector<std::string_view>& endings)
{
    return std::any_of(
        endings.begin(),
        endings.end(),
        [&name](std::string_view ending) { return endsWith(name, ending); });
}

void visit(
    Walk& walk,
    const std::string& relative,
    const fs::directory_entry& entry,
    const std::vector<std::string_view>& endings)
{
    std::error_code ignored; // of a broken link, for example: reading the file reports it
    if (entry.is_directory(ignored))
    {
        if (!entry.is_symlink(ignored))
            walk.pending.push_back(relative);
    }
    else if (isWanted(relative, endings))
    {
        walk.content.files.push_back(relative);
    }
}

void listFolder(Walk& walk, const std::string& folder, const std::vector<std::string_view>& endings)
{
    std::error_code error;
    fs::directory_iterator entry(placeOf(walk, folder), error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error))
    {
        const std::string name = (fs::path(folder) / entry->path().filename()).string();
        visit(walk, name, *entry, endings);
    }
    if (error)
        addTrouble(walk, folder, error);
}

} // namespace

FolderContent walkFolder(const std::string& folder, const std::vector<std::string_view>& endings)
{
    Walk walk{folder, {""}, {}};
    while (!walk.pending.empty())
    {
        const std::string next = std::move(walk.pending.back());
        walk.pending.pop_back();
        listFolder(walk, next, endings);
    }
    std::sort(walk.content.files.begin(), walk.content.files.end());
    std::sort(walk.content.troubles.begin(), walk.content.troubles.end());
    return std::move(walk.content);
}

bool endsWith(std::string_view text, std::string_view ending)
{
    return text.size() >= ending.size() && text.substr(text.size() - ending.size()) == ending;
}

} // namespace tool

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tool
{

/// The path below a folder to which a script's name leads.
struct ScriptPath
{
    std::string path;    // without empty parts and "."
    std::string trouble; // why the name is no valid path; empty if it is
};

/// Reads a name as a relative path that stays in its folder.
ScriptPath pathOfScript(std::string_view name);

/// Returns the folders on a relative path, the outermost first: "a" and "a/b" of "a/b/c". They are
/// views of `path`.
std::vector<std::string_view> foldersOf(std::string_view path);

} // namespace tool

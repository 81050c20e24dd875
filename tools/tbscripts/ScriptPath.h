#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tool
{

/// The place below a folder that a script's name stands for.
struct ScriptPath
{
    std::string path;    // without empty parts and "."
    std::string trouble; // why the name stands for no file; empty if it does
};

/// Reads a name as a relative path that stays in its folder.
ScriptPath pathOfScript(std::string_view name);

/// Returns the folders that a relative path passes, the outermost first: "a" and "a/b" of "a/b/c".
/// They are views of `path`.
std::vector<std::string_view> foldersOf(std::string_view path);

} // namespace tool

#pragma once

#include <tbScripts/Script.h>

#include <filesystem>
#include <memory>
#include <vector>

namespace demo
{

/// Compiles every .lua file of `folder`, in the order of their names. A file that cannot be read or
/// compiled is reported and left out; the others are not held up by it.
std::vector<std::unique_ptr<tbScripts::Script>> compileFolder(const std::filesystem::path& folder);

} // namespace demo

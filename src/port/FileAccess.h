#pragma once

#include <string>
#include <system_error>

namespace tbScripts::port
{

/// Returns why the file `path` may not be written; no error if it may, or is missing.
std::error_code refusalToWrite(const std::string& path);

/// Returns why there may be no new files in `folder`; no error if there may.
std::error_code refusalOfNewFiles(const std::string& folder);

} // namespace tbScripts::port

#pragma once

#include <tbMemory/StringView.h>

#include <string>

namespace tbExport
{
class Node;
}

namespace tool
{

/// Replaces the file `path`, whole or not at all, and returns why that failed; empty on success.
/// Links are not followed. Permissions are kept. For many files: what a crash of the machine must
/// not lose needs `flushFiles` afterwards.
std::string writeFile(const std::string& path, std::string_view bytes);

/// Has everything written below `folder` reach the disk, and returns why that failed.
std::string flushFiles(const std::string& folder);

/// The same for one document, at once, as the library saves it. Whether everything arrived is known
/// only by reading it.
std::string writeTree(const std::string& path, tbExport::Node& tree);

/// Returns why `path` cannot become a file that is written, as far as that can be told before;
/// empty if it may be missing or is a regular file.
std::string troubleAsOutput(const std::string& path);

} // namespace tool

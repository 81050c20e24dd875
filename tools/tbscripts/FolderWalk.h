#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tool
{

/// The files below a folder.
struct FolderContent
{
    std::vector<std::string> files;    // relative to the folder, with "/", in byte order
    std::vector<std::string> troubles; // each a path, followed by the error
};

/// Lists the files below `folder`, at any depth, whose names end with one of `endings`. Links to
/// files count, links to folders are not followed.
FolderContent walkFolder(const std::string& folder, const std::vector<std::string_view>& endings);

bool endsWith(std::string_view text, std::string_view ending);

} // namespace tool
